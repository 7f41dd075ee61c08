// What the attributes of the members say, and whether it holds.
#include "def/check_members.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "def/parse_members.h"

namespace solvane::gen::def {
namespace {

using what = attribute::what;

/// The members of one structure or union.
struct member_check {
    scope          &s;
    const unit_def &unit;
    record_def     &record;

    const member_def &at(std::uint32_t n) const { return record.members[n]; }

    bool is_pointer(const member_def &m) const { return !m.decl.dims.empty() && m.decl.dims.front().pointer; }

    /// The kind of a member that is neither pointer nor array, typedefs looked through.
    kind plain_kind(const member_def &m) const
    {
        const resolved_type type = look_through(s, m.type.use);
        return m.decl.dims.empty() && type.plain ? type.use.base : kind::nothing;
    }

    bool is_integer(const member_def &m) const { return integer_size(plain_kind(m)) != 0; }

    /// The type was not found: that has been told, nothing more is to be said of it.
    bool is_unknown(const member_def &m) const { return !m.type.basic && m.type.use.base == kind::nothing; }

    void error(const attribute &a, std::string text) const { s.diag.error(a.where, std::move(text)); }

    std::optional<std::uint32_t> find(const std::string &id) const;
    std::uint32_t                target(const attribute &a, std::uint32_t self) const;
    bool                         goes_with(const attribute &a, const member_def &m) const;
    void                         counted(const attribute &a, std::uint32_t self);
    void                         optional(const attribute &a, std::uint32_t self);
    void                         selected(const attribute &a, std::uint32_t self);
    void                         apply(const attribute &a, std::uint32_t self);
    void                         check_pairs(const member_def &m) const;
    void                         count_by_name(std::uint32_t self);
    void                         check_guarded() const;
    void                         number_cases();
};

std::optional<std::uint32_t> member_check::find(const std::string &id) const
{
    for (std::uint32_t n = 0; n < record.members.size(); ++n) {
        if (at(n).decl.id.text == id)
            return n;
    }
    return std::nullopt;
}

/// The member that an attribute names; no_index and a message where it cannot serve.
std::uint32_t member_check::target(const attribute &a, std::uint32_t self) const
{
    const std::optional<std::uint32_t> found = find(a.target->text);
    if (!found) {
        s.diag.error(a.target->where, fmt::format("'{}' has no member '{}'", record.id.text, a.target->text));
    } else if (*found == self) {
        s.diag.error(a.target->where, "a member cannot serve itself");
    } else if (at(*found).hidden) {
        s.diag.error(a.target->where, fmt::format("'{}' is hidden: the dictionary cannot name it", a.target->text));
    } else {
        return *found;
    }
    return no_index;
}

/// Whether an attribute may stand on this kind of member at all.
bool member_check::goes_with(const attribute &a, const member_def &m) const
{
    const bool for_structure = a.kind == what::counted || a.kind == what::uncounted || a.kind == what::optional ||
                               a.kind == what::selected;
    if (record.is_union && for_structure) {
        error(a, fmt::format("'{}' goes with a member of a structure", spelled(a.kind)));
        return false;
    }
    if (!record.is_union && a.kind == what::case_) {
        error(a, "'case' goes with a member of a union");
        return false;
    }
    const bool wire_array = record.wire && a.kind == what::counted && !m.decl.dims.empty();
    if ((a.kind == what::counted || a.kind == what::uncounted) && !is_pointer(m) && !wire_array) {
        error(a, fmt::format("'{}' goes with a pointer", spelled(a.kind)));
        return false;
    }
    if (a.kind >= what::bits && !record.wire && !(record.is_union && a.kind == what::bits)) {
        error(a, fmt::format("'{}' goes with a member of an element or message", spelled(a.kind)));
        return false;
    }
    if (a.kind == what::optional && record.wire) {
        error(a, "on the wire a flag or a line tells what is optional");
        return false;
    }
    if (m.hidden && a.kind != what::hidden) {
        error(a, fmt::format("'{}' has no effect on a hidden member", spelled(a.kind)));
        return false;
    }
    return true;
}

void member_check::counted(const attribute &a, std::uint32_t self)
{
    const std::uint32_t count = target(a, self);
    if (count == no_index)
        return;
    if (!is_unknown(at(count)) && !is_integer(at(count)))
        s.diag.error(a.target->where, fmt::format("'{}' is no integer and cannot count", a.target->text));
    if (is_pointer(at(self))) // the dictionary counts pointers alone
        record.members[self].counted_by = count;
}

void member_check::optional(const attribute &a, std::uint32_t self)
{
    if (is_pointer(at(self)) || plain_kind(at(self)) == kind::union_) {
        error(a, "'optional' does not go with a pointer or a union: put it into a structure");
        return;
    }
    if (!a.target && (self == 0 || at(self - 1).hidden)) {
        error(a, "no member stands before this one to tell whether it is present");
        return;
    }
    const std::uint32_t presence = a.target ? target(a, self) : self - 1;
    if (presence == no_index)
        return;
    const member_def &flag = at(presence);
    const place      &where = a.target ? a.target->where : a.where;
    if (flag.type.written.text != "opt_present" || !flag.decl.dims.empty())
        s.diag.error(where, fmt::format("'{}' is not of type opt_present", flag.decl.id.text));
    else if (presence > self)
        s.diag.error(where, fmt::format("'{}' must stand ahead of the member that it guards", flag.decl.id.text));
    record.members[self].present_if = presence;
}

void member_check::selected(const attribute &a, std::uint32_t self)
{
    if (is_unknown(at(self)))
        return;
    if (plain_kind(at(self)) != kind::union_) {
        error(a, "'selected' goes with a member of union type");
        return;
    }
    const std::uint32_t selector = target(a, self);
    if (selector == no_index)
        return;
    const member_def &m = at(selector);
    if (!is_unknown(m) && !is_integer(m) && plain_kind(m) != kind::enumeration)
        s.diag.error(a.target->where, fmt::format("'{}' is neither integer nor enumeration and cannot select",
                                                  a.target->text));
    record.members[self].selected_by = selector;
}

void member_check::apply(const attribute &a, std::uint32_t self)
{
    const std::vector<bool> &sees = s.visible[unit.unit_id];
    member_def              &m = record.members[self];
    if (!goes_with(a, m))
        return;
    switch (a.kind) {
    case what::counted: counted(a, self); break;
    case what::optional: optional(a, self); break;
    case what::selected: selected(a, self); break;
    case what::case_:
        m.case_value = static_cast<std::uint32_t>(
            evaluate(s, *a.value, sees, 0, no_ref - 1, "the case").value_or(no_ref));
        break;
    case what::rt_selector:
        m.rt_selector = static_cast<std::uint32_t>(
            evaluate(s, *a.value, sees, 1, 0xFFFF, "the selector").value_or(1));
        if (m.width)
            error(a, "'rt_selector' does not go with a bit-field");
        break;
    case what::uncounted:
    case what::hidden:
    case what::bits: // of a wire format
    case what::minus:
    case what::peek:
    case what::lh:
    case what::off_wire:
    case what::length:
    case what::to_end:
    case what::chained:
    case what::bcd:
    case what::linked: break;
    }
}

void member_check::check_pairs(const member_def &m) const
{
    std::array<const attribute *, no_attributes> seen{};
    for (const attribute &a : m.attributes) {
        const attribute *&first = seen[static_cast<std::size_t>(a.kind)];
        if (first != nullptr)
            s.diag.conflict(a.where, fmt::format("'{}' stands here twice", spelled(a.kind)), first->where, "the first");
        first = &a;
    }
    const attribute *counted = seen[static_cast<std::size_t>(what::counted)];
    const attribute *uncounted = seen[static_cast<std::size_t>(what::uncounted)];
    if (counted != nullptr && uncounted != nullptr)
        error(*uncounted, "the pointer is counted and uncounted");
}

/// A pointer that nothing is said of is counted by the member `no_` and its own name.
void member_check::count_by_name(std::uint32_t self)
{
    member_def &m = record.members[self];
    const bool  said = std::any_of(m.attributes.begin(), m.attributes.end(), [](const attribute &a) {
        return a.kind == what::counted || a.kind == what::uncounted;
    });
    if (said || m.hidden || !is_pointer(m))
        return;
    const std::optional<std::uint32_t> count = find("no_" + m.decl.id.text);
    if (count && is_integer(at(*count)) && !at(*count).hidden)
        m.counted_by = *count;
}

/// A member has one role: what counts, selects or guards cannot be told to be optional as well.
void member_check::check_guarded() const
{
    std::vector<bool> serves(record.members.size());
    for (const member_def &m : record.members) {
        for (const std::uint32_t n : {m.counted_by, m.present_if, m.selected_by}) {
            if (n != no_index)
                serves[n] = true;
        }
    }
    for (std::uint32_t n = 0; n < record.members.size(); ++n) {
        const member_def &m = at(n);
        if (m.present_if != no_index && serves[n])
            s.diag.error(m.decl.id.where, fmt::format("'{}' is optional and serves another member: put both into a "
                                                      "structure", m.decl.id.text));
    }
}

/// A case is one above the one before it, 0 for the first, unless it is given.
void member_check::number_cases()
{
    std::uint32_t                  next = 0;
    std::map<std::uint32_t, place> taken;
    for (member_def &m : record.members) {
        if (m.hidden)
            continue;
        m.case_value = m.case_value == no_ref ? next : m.case_value;
        next = m.case_value + 1;
        if (m.case_value >= no_ref)
            s.diag.error(m.decl.id.where, fmt::format("the case is {}, outside 0 to {}", m.case_value, no_ref - 1));
        const auto [at, fresh] = taken.emplace(m.case_value, m.decl.id.where);
        if (!fresh)
            s.diag.conflict(m.decl.id.where, fmt::format("case {} is taken", m.case_value), at->second,
                            "by this member");
    }
}

} // namespace

void check_attributes(scope &s, const unit_def &unit, record_def &record)
{
    member_check check{s, unit, record};
    for (member_def &m : record.members) {
        m.hidden = std::any_of(m.attributes.begin(), m.attributes.end(),
                               [](const attribute &a) { return a.kind == what::hidden; });
        check.check_pairs(m);
    }
    for (std::uint32_t n = 0; n < record.members.size(); ++n) {
        for (const attribute &a : record.members[n].attributes)
            check.apply(a, n);
    }
    if (record.is_union) {
        check.number_cases();
        return;
    }
    for (std::uint32_t n = 0; n < record.members.size(); ++n)
        check.count_by_name(n);
    check.check_guarded();
}

} // namespace solvane::gen::def
