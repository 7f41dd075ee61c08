// What the items of a wire format come to: places, widths, arrays, lines of message tables.
#include "def/check_wire.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "def/parse_members.h"

namespace solvane::gen::def {
namespace {

using what = wire_item_def::what;
using items = std::vector<wire_item>;

/// What a value is on the wire: so many bits, an element, or a union.
struct value_kind {
    enum class what : std::uint8_t { none, bits, record, choice } kind = what::none;
    std::uint32_t width = 0;
    std::uint32_t record_id = 0;
    std::uint32_t holds = 0;  ///< bits that the member has
};

/// Bits of items that always take as many.
std::optional<std::uint32_t> fixed_bits(const scope &s, const items &list);

struct wire_check {
    scope          &s;
    const unit_def &unit;
    record_def     &record;
    std::set<std::string>                 displaced;  ///< members that a `wire` names
    std::vector<bool>                     known;      ///< members that earlier items have read
    std::map<std::uint32_t, place>        identifiers;
    std::set<std::string>                 windows;    ///< names of those so far
    std::optional<wire_item_def>          half;       ///< the first line of a pair of half octets
    wire_codec                            out;

    const std::vector<bool> &sees() const { return s.visible[unit.unit_id]; }
    member_def              &at(std::uint32_t n) { return record.members[n]; }
    void error(const place &where, std::string text) const { s.diag.error(where, std::move(text)); }

    std::optional<std::uint32_t> index_of(const std::string &id) const;
    std::uint32_t                find(const name &id);
    std::uint32_t                find_known(const name &id, const char *role);
    wire_place                   place_of(std::uint32_t n) const { return {{{record.record_id, n, std::nullopt}}}; }
    wire_place                   count_of(const std::string &array);
    void                         know(const name &id);

    std::uint32_t number(const expression &e, std::int64_t low, std::int64_t high, const char *name)
    {
        return static_cast<std::uint32_t>(evaluate(s, e, sees(), low, high, name).value_or(low));
    }

    value_kind classify(const member_def &m, const type_ref &type);

    wire_condition              condition(const condition_def &c, bool reading);
    std::vector<wire_condition> conditions(const std::vector<condition_def> &all, bool reading);

    void member(std::uint32_t n, items &to, bool bounded, std::uint32_t width = 0);
    void single(const member_def &m, std::uint32_t n, items &to, std::uint32_t width);
    void choice(const member_def &m, wire_item item, items &to);
    void array(const member_def &m, std::uint32_t n, items &to, bool bounded);
    void array_count(const member_def &m, wire_item &item);
    void parts(const wire_item_def &item, items &to);
    void part(const wire_item_def::part &p, items &to);
    const member_def *member_of(const member_def &m, const name &id, wire_place::step &step);
    const member_def *walk_part(const part_ref &ref, std::uint32_t n, wire_place &to);
    void flag(const wire_item_def &item, items &to);
    void group(wire_item_def &item, items &to, bool bounded);
    wire_place trim(const std::optional<name> &member);
    void guard(const std::vector<wire_item_def> &list, std::uint32_t presence);
    void block(wire_item_def &item, items &to);
    void within(wire_item_def &item, items &to);
    void item(wire_item_def &item, items &to, bool bounded);
    void walk(std::vector<wire_item_def> &list, items &to, bool bounded);

    void  line(const wire_item_def &line, items &to);
    void  half_line(const wire_item_def &line, items &to);
    void  half_value(const wire_item_def &line, items &to);
    void  option(const wire_item_def &line);
    void  identifier(const wire_item_def &line);
    items value(const wire_item_def &line);
    void  check_length(const wire_item_def &line, const items &value, std::uint32_t ahead);

    void displace(const std::vector<wire_item_def> &list);
};

std::optional<std::uint32_t> record_bits(const scope &s, std::uint32_t id)
{
    const record_def &r = *s.records[id];
    return r.wire && r.wire->codec ? r.wire->codec->bits : std::nullopt;
}

std::optional<std::uint32_t> item_bits(const scope &s, const wire_item &i)
{
    using kind = wire_item::what;
    switch (i.kind) {
    case kind::field:
    case kind::constant: return i.width;
    case kind::presence:
    case kind::any:
    case kind::low_high: return 1;
    case kind::derive:
    case kind::look: return 0;
    case kind::record: return record_bits(s, i.record_id);
    case kind::array: {
        if (i.extent != wire_extent::fixed)
            return std::nullopt;
        const std::optional<std::uint32_t> element = i.width != 0 ? i.width : record_bits(s, i.record_id);
        return element ? std::optional(*element * (i.count - i.first)) : std::nullopt;
    }
    case kind::choice:
    case kind::group:
    case kind::block:
    case kind::window:
    case kind::align:
    case kind::word: break;
    }
    return std::nullopt;
}

std::optional<std::uint32_t> fixed_bits(const scope &s, const items &list)
{
    std::uint32_t total = 0;
    for (const wire_item &i : list) {
        const std::optional<std::uint32_t> bits = item_bits(s, i);
        if (!bits)
            return std::nullopt;
        total += *bits;
    }
    return total;
}

bool owns_memory(const scope &s, const items &list)
{
    using kind = wire_item::what;
    const auto record_owns = [&](std::uint32_t id) {
        const record_def &r = *s.records[id];
        return r.wire && r.wire->codec && r.wire->codec->owns;
    };
    return std::any_of(list.begin(), list.end(), [&](const wire_item &i) {
        const bool element = i.kind == kind::record || (i.kind == kind::array && i.width == 0);
        return (i.kind == kind::array && i.is_pointer) || (element && record_owns(i.record_id)) ||
               owns_memory(s, i.items) || owns_memory(s, i.otherwise);
    });
}

// ------------------------------------------------------------------------------------------------ members by name

std::optional<std::uint32_t> wire_check::index_of(const std::string &id) const
{
    for (std::uint32_t n = 0; n < record.members.size(); ++n) {
        if (record.members[n].decl.id.text == id)
            return n;
    }
    return std::nullopt;
}

std::uint32_t wire_check::find(const name &id)
{
    const std::optional<std::uint32_t> found = index_of(id.text);
    if (!found)
        error(id.where, fmt::format("'{}' has no member '{}'", record.id.text, id.text));
    return found.value_or(no_index);
}

std::uint32_t wire_check::find_known(const name &id, const char *role)
{
    const std::uint32_t n = find(id);
    if (n != no_index && !known[n])
        error(id.where, fmt::format("'{}' {} here, but stands on the wire only later, or not at all", id.text, role));
    return n;
}


wire_place wire_check::count_of(const std::string &array)
{
    const std::optional<std::uint32_t> n = index_of("no_" + array);
    return n ? place_of(*n) : wire_place{};
}

// ------------------------------------------------------------------------------------------------ values

value_kind wire_check::classify(const member_def &m, const type_ref &type)
{
    using kind = value_kind::what;
    const resolved_type real = look_through(s, type.use);
    if (!type.basic && type.use.base == gen::kind::nothing)
        return {}; // unknown, told before
    if (!real.plain) {
        error(m.decl.id.where, fmt::format("'{}' is a pointer or array by its typedef and has no wire format",
                                           type.written.text));
        return {};
    }
    if (const std::uint32_t octets = integer_size(real.use.base); octets != 0)
        return {kind::bits, m.bit_width != 0 ? m.bit_width : octets * 8, 0,
                m.bit_width != 0 ? m.bit_width : octets * 8};
    if (real.use.base == gen::kind::enumeration)
        return {kind::bits, 8, 0, 32};
    if (real.use.base == gen::kind::union_)
        return {kind::choice, 0, real.use.id, 0};
    if (real.use.base != gen::kind::structure)
        return {};
    const record_def &r = *s.records[real.use.id];
    if (!r.wire) {
        s.diag.conflict(type.written.where, fmt::format("'{}' has no wire format", type.written.text), r.id.where,
                        "write it as an element");
        return {};
    }
    if (!r.wire->codec) {
        error(type.written.where, fmt::format("the wire format of '{}' must be complete here", type.written.text));
        return {};
    }
    return {kind::record, 0, real.use.id, 0};
}

void wire_check::member(std::uint32_t n, items &to, bool bounded, std::uint32_t width)
{
    const member_def &m = at(n);
    if (find_attribute(m, attribute::what::off_wire) != nullptr)
        return;
    if (m.type.written.text == "opt_present" && m.decl.dims.empty())
        return;
    if (m.decl.dims.size() > 1)
        error(m.decl.id.where, fmt::format("'{}' has more than one array level: put the inner one into an element",
                                           m.decl.id.text));
    else if (!m.decl.dims.empty())
        array(m, n, to, bounded);
    else
        single(m, n, to, width);
    known[n] = true;
}

void wire_check::single(const member_def &m, std::uint32_t n, items &to, std::uint32_t width)
{
    const value_kind value = classify(m, m.type);
    wire_item        item;
    item.member = place_of(n);
    item.width = value.width;
    if (const attribute *minus = find_attribute(m, attribute::what::minus))
        item.minus = number(*minus->value, 1, 0xFFFF, "what the wire has less");
    const attribute *bits = find_attribute(m, attribute::what::bits);
    if (bits != nullptr && value.kind == value_kind::what::bits)
        item.width = number(*bits->value, 1, 32, "the width");
    else if (width != 0 && value.kind == value_kind::what::bits && m.bit_width == 0)
        item.width = width;
    if (value.kind == value_kind::what::bits && item.width > value.holds)
        error(m.decl.id.where, fmt::format("'{}' holds {} bits, the wire has {}", m.decl.id.text, value.holds,
                                           item.width));
    switch (value.kind) {
    case value_kind::what::none: return;
    case value_kind::what::bits:
        if (const attribute *peek = find_attribute(m, attribute::what::peek)) {
            item.kind = wire_item::what::look;
            item.value = number(*peek->value, 0, 2040, "the offset");
            item.width = number(*peek->second, 1, 32, "the width");
        } else if (find_attribute(m, attribute::what::lh) != nullptr) {
            item.kind = wire_item::what::low_high;
            item.width = 1;
        }
        break;
    case value_kind::what::record:
        item.kind = wire_item::what::record;
        item.record_id = value.record_id;
        break;
    case value_kind::what::choice:
        item.record_id = value.record_id;
        choice(m, std::move(item), to);
        return;
    }
    to.push_back(std::move(item));
}

/// One item a member of the union; its `value` is the case.
void wire_check::choice(const member_def &m, wire_item item, items &to)
{
    if (m.selected_by == no_index) {
        error(m.decl.id.where, fmt::format("union '{}' has no selector: say selected(m)", m.decl.id.text));
        return;
    }
    find_known(at(m.selected_by).decl.id, "selects a union");
    item.kind = wire_item::what::choice;
    item.other = place_of(m.selected_by);
    const record_def &u = *s.records[item.record_id];
    for (std::uint32_t n = 0; n < u.members.size(); ++n) {
        const member_def &branch = u.members[n];
        const value_kind  value = classify(branch, branch.type);
        wire_item         one;
        one.member = item.member;
        one.member.steps.push_back({item.record_id, n, std::nullopt});
        one.value = branch.case_value;
        one.width = value.width;
        one.record_id = value.record_id;
        if (const attribute *bits = find_attribute(branch, attribute::what::bits))
            one.width = number(*bits->value, 1, 32, "the width");
        if (branch.decl.dims.size() == 1 && !branch.decl.dims.front().pointer) {
            one.kind = wire_item::what::array;
            one.count = branch.decl.dims.front().count;
            one.octets = one.width == 8 && integer_size(look_through(s, branch.type.use).use.base) == 1;
        } else if (!branch.decl.dims.empty()) {
            error(branch.decl.id.where, fmt::format("'{}' cannot stand in a union on the wire: put it into an "
                                                    "element", branch.decl.id.text));
        } else if (value.kind == value_kind::what::choice) {
            error(branch.decl.id.where, "a union in a union has no selector: put it into an element");
        } else {
            one.kind = value.kind == value_kind::what::record ? wire_item::what::record : wire_item::what::field;
        }
        if (value.kind != value_kind::what::none)
            item.items.push_back(std::move(one));
    }
    to.push_back(std::move(item));
}

// ------------------------------------------------------------------------------------------------ arrays

/// Where the count and the capacity of an array stand that is not fixed.
void wire_check::array_count(const member_def &m, wire_item &item)
{
    const std::string &id = m.decl.id.text;
    if (const attribute *counted = find_attribute(m, attribute::what::counted)) {
        const std::uint32_t n = find_known(*counted->target, "counts an array");
        item.other = n == no_index ? wire_place{} : place_of(n);
        item.extent = wire_extent::counted;
    } else {
        item.other = count_of(id);
        const std::optional<std::uint32_t> n = index_of("no_" + id);
        const bool open = find_attribute(m, attribute::what::to_end) != nullptr ||
                          find_attribute(m, attribute::what::length) != nullptr;
        if (find_attribute(m, attribute::what::chained) != nullptr)
            item.extent = wire_extent::chained;
        else if (find_attribute(m, attribute::what::linked) != nullptr)
            item.extent = wire_extent::linked;
        else if (n && known[*n] && !open)
            item.extent = wire_extent::counted;
        else
            item.extent = wire_extent::to_end;
    }
    if (item.other.steps.empty())
        error(m.decl.id.where, fmt::format("array '{}' has no count", id));
    if (item.is_pointer) {
        const std::optional<std::uint32_t> size = index_of(id + "_size");
        if (size)
            item.capacity = place_of(*size);
        else
            error(m.decl.id.where, fmt::format("pointer '{}' has no capacity '{}_size'", id, id));
    }
}

void wire_check::array(const member_def &m, std::uint32_t n, items &to, bool bounded)
{
    const value_kind value = classify(m, m.type);
    wire_item        item;
    item.kind = wire_item::what::array;
    item.member = place_of(n);
    item.is_pointer = m.decl.dims.front().pointer;
    item.count = m.decl.dims.front().count;
    item.width = value.width;
    item.record_id = value.record_id;
    if (value.kind == value_kind::what::none)
        return;
    if (value.kind == value_kind::what::choice) {
        error(m.decl.id.where, fmt::format("unions in an array have no selectors: put '{}' into an element",
                                           m.decl.id.text));
        return;
    }
    if (const attribute *bits = find_attribute(m, attribute::what::bits))
        item.width = number(*bits->value, 1, 32, "the width");
    item.octets = item.width == 8 && integer_size(look_through(s, m.type.use).use.base) == 1;
    if (const attribute *bcd = find_attribute(m, attribute::what::bcd)) {
        item.bcd = true;
        item.width = 4;
        item.first = bcd->value ? number(*bcd->value, 0, 0xFFFF, "the digits that stand elsewhere") : 0;
        if (integer_size(look_through(s, m.type.use).use.base) != 1)
            error(bcd->where, "digits are kept in octets");
    }
    const attribute *length = find_attribute(m, attribute::what::length);
    const bool       varies = bounded || item.is_pointer || item.bcd || length != nullptr ||
                        find_attribute(m, attribute::what::counted) != nullptr ||
                        find_attribute(m, attribute::what::to_end) != nullptr ||
                        find_attribute(m, attribute::what::chained) != nullptr ||
                        find_attribute(m, attribute::what::linked) != nullptr || index_of("no_" + m.decl.id.text);
    if (varies)
        array_count(m, item);
    if (length == nullptr) {
        to.push_back(std::move(item));
        return;
    }
    wire_item block;
    block.kind = wire_item::what::block;
    block.width = number(*length->value, 8, 16, "the width of a length");
    block.name = m.decl.id.text;
    block.items.push_back(std::move(item));
    to.push_back(std::move(block));
}

// ------------------------------------------------------------------------------------------------ items

wire_condition wire_check::condition(const condition_def &c, bool reading)
{
    using kind = condition_def::what;
    wire_condition cond;
    cond.kind = static_cast<wire_condition::what>(c.kind); // ORDER conditions
    if (c.kind == kind::left) {
        if (!reading)
            error(c.member.where, "'left' goes with a flag: packing cannot tell");
        cond.value = c.value ? number(*c.value, 1, 0xFFFF, "the number of octets") : 1;
        return cond;
    }
    const std::uint32_t n = find_known(c.member, "is asked for");
    if (n != no_index)
        cond.member = place_of(n);
    if (c.value)
        cond.value = static_cast<std::uint32_t>(evaluate(s, *c.value, sees(), 0, 0xFFFFFFFF, "the value").value_or(0));
    return cond;
}

std::vector<wire_condition> wire_check::conditions(const std::vector<condition_def> &all, bool reading)
{
    std::vector<wire_condition> list;
    for (const condition_def &c : all)
        list.push_back(condition(c, reading));
    return list;
}

void wire_check::part(const wire_item_def::part &p, items &to)
{
    const part_ref::step &root = p.ref.steps.front();
    const std::uint32_t   n = find(root.member);
    if (n == no_index)
        return;
    const bool whole = p.ref.steps.size() == 1 && !root.index;
    if (whole && !p.width) {
        member(n, to, false);
        return;
    }
    wire_item         item;
    const member_def *m = walk_part(p.ref, n, item.member);
    if (m == nullptr)
        return;
    const value_kind value = classify(*m, m->type);
    item.width = value.width;
    item.record_id = value.record_id;
    if (value.kind == value_kind::what::record)
        item.kind = wire_item::what::record;
    else if (value.kind != value_kind::what::bits)
        return;
    if (p.width)
        item.width = number(*p.width, 1, 32, "the width");
    known[n] = true;
    to.push_back(std::move(item));
}

/// A member of a structure that `m` is; null and a message where it has none of that name.
const member_def *wire_check::member_of(const member_def &m, const name &id, wire_place::step &step)
{
    const resolved_type real = look_through(s, m.type.use);
    if (real.use.base == kind::structure) {
        const std::vector<member_def> &members = s.records[real.use.id]->members;
        for (std::uint32_t n = 0; n < members.size(); ++n) {
            if (members[n].decl.id.text == id.text) {
                step = {real.use.id, n, std::nullopt};
                return &members[n];
            }
        }
    }
    error(id.where, fmt::format("'{}' has no member '{}'", m.type.written.text, id.text));
    return nullptr;
}

/// Follows a part from member `n` down; null and a message where there is no such part.
const member_def *wire_check::walk_part(const part_ref &ref, std::uint32_t n, wire_place &to)
{
    const member_def *m = &at(n);
    wire_place::step  at_step{record.record_id, n, std::nullopt};
    for (std::size_t k = 0; k < ref.steps.size(); ++k) {
        const part_ref::step &step = ref.steps[k];
        if (k > 0)
            m = member_of(*m, step.member, at_step);
        if (m == nullptr)
            return nullptr;
        const bool is_array = m->decl.dims.size() == 1 && !m->decl.dims.front().pointer;
        if (is_array != step.index.has_value()) {
            error(step.member.where, is_array ? "an element of the array is wanted" : "this is no array");
            return nullptr;
        }
        if (step.index)
            at_step.index = number(*step.index, 0, m->decl.dims.front().count - 1, "the index");
        to.steps.push_back(at_step);
    }
    return m;
}

void wire_check::parts(const wire_item_def &item, items &to)
{
    for (const wire_item_def::part &p : item.parts)
        part(p, to);
}

void wire_check::flag(const wire_item_def &item, items &to)
{
    wire_item out_item;
    out_item.inverse = item.inverse;
    if (item.any) {
        const std::uint32_t n = find(item.id);
        if (n == no_index)
            return;
        if (find_attribute(at(n), attribute::what::chained) == nullptr &&
            find_attribute(at(n), attribute::what::linked) == nullptr)
            error(item.id.where, fmt::format("'{}' is no chained array", item.id.text));
        out_item.kind = wire_item::what::any;
        out_item.member = count_of(item.id.text);
        to.push_back(std::move(out_item));
        return;
    }
    const std::uint32_t n = find(item.id);
    if (n == no_index)
        return;
    if (at(n).type.written.text != "opt_present" || !at(n).decl.dims.empty())
        error(item.id.where, fmt::format("'{}' is not of type opt_present", item.id.text));
    out_item.member = place_of(n);
    out_item.kind = item.conditions.empty() ? wire_item::what::presence : wire_item::what::derive;
    out_item.conditions = conditions(item.conditions, true);
    known[n] = true;
    to.push_back(std::move(out_item));
}

/// Members that presence member `presence` alone guards: the dictionary tells them to be optional.
void wire_check::guard(const std::vector<wire_item_def> &list, std::uint32_t presence)
{
    const auto serves = [&](std::uint32_t n) {
        return std::any_of(record.members.begin(), record.members.end(), [&](const member_def &m) {
            return m.counted_by == n || m.present_if == n || m.selected_by == n;
        });
    };
    for (const wire_item_def &i : list) {
        if (i.member_id == no_index)
            continue;
        member_def         &m = at(i.member_id);
        const resolved_type real = look_through(s, m.type.use);
        const bool          pointer = !m.decl.dims.empty() && m.decl.dims.front().pointer;
        const bool          is_union = m.decl.dims.empty() && real.use.base == kind::union_;
        if (!pointer && !is_union && !m.hidden && m.present_if == no_index && !serves(i.member_id))
            m.present_if = presence;
    }
}

void wire_check::group(wire_item_def &item, items &to, bool bounded)
{
    wire_item out_item;
    out_item.kind = wire_item::what::group;
    out_item.conditions = conditions(item.conditions, false);
    if (item.conditions.size() == 1 && item.conditions.front().kind == condition_def::what::set) {
        const std::optional<std::uint32_t> n = index_of(item.conditions.front().member.text);
        if (n && at(*n).type.written.text == "opt_present")
            guard(item.items, *n);
    }
    walk(item.items, out_item.items, bounded);
    walk(item.otherwise, out_item.otherwise, bounded);
    to.push_back(std::move(out_item));
}

/// The member that keeps the length of a content: off the wire, an integer.
wire_place wire_check::trim(const std::optional<name> &member)
{
    const std::uint32_t n = member ? find(*member) : no_index;
    if (n == no_index)
        return {};
    if (find_attribute(at(n), attribute::what::off_wire) == nullptr || !at(n).decl.dims.empty() ||
        integer_size(look_through(s, at(n).type.use).use.base) == 0)
        error(member->where, fmt::format("'{}' must be an integer that is off the wire", member->text));
    return place_of(n);
}

void wire_check::block(wire_item_def &item, items &to)
{
    wire_item out_item;
    out_item.kind = wire_item::what::block;
    out_item.width = number(*item.width, 8, 16, "the width of a length");
    if (out_item.width != 8 && out_item.width != 16)
        error(item.width->where, "a length has 8 or 16 bits");
    out_item.name = item.id.text;
    out_item.trim = trim(item.trim);
    walk(item.items, out_item.items, false);
    to.push_back(std::move(out_item));
}

/// The most bits of items without open arrays.
std::uint64_t most_bits(const scope &s, const items &list)
{
    using kind = wire_item::what;
    const auto of_record = [&](std::uint32_t id) {
        const record_def &r = *s.records[id];
        return r.wire && r.wire->codec ? r.wire->codec->length_width + 7 + most_bits(s, r.wire->codec->items) : 0;
    };
    std::uint64_t total = 0;
    for (const wire_item &i : list) {
        switch (i.kind) {
        case kind::record: total += of_record(i.record_id); break;
        case kind::array:
            total += ((i.width != 0 ? i.width : of_record(i.record_id)) + (i.extent == wire_extent::linked)) * i.count;
            break;
        case kind::group: total += std::max(most_bits(s, i.items), most_bits(s, i.otherwise)); break;
        case kind::window: total += i.width; break;
        case kind::align: total += 7; break;
        default: total += item_bits(s, i).value_or(0) + most_bits(s, i.items); break;
        }
    }
    return total;
}

/// Arrays that end where the content does have no end in a window, which is filled up with zeros.
const wire_item *open_array(const items &list)
{
    for (const wire_item &i : list) {
        if (i.kind == wire_item::what::array &&
            (i.extent == wire_extent::to_end || i.extent == wire_extent::chained || i.is_pointer))
            return &i;
        const wire_item *inside = open_array(i.items);
        inside = inside == nullptr ? open_array(i.otherwise) : inside;
        if (inside != nullptr)
            return inside;
    }
    return nullptr;
}

void wire_check::within(wire_item_def &item, items &to)
{
    wire_item out_item;
    out_item.kind = wire_item::what::window;
    const std::uint32_t n = find(item.id);
    if (n == no_index)
        return;
    out_item.keeps = find_attribute(at(n), attribute::what::off_wire) != nullptr;
    if (!out_item.keeps)
        find_known(item.id, "is the number of bits");
    if (!at(n).decl.dims.empty() || integer_size(look_through(s, at(n).type.use).use.base) == 0)
        error(item.id.where, fmt::format("'{}' is no integer", item.id.text));
    out_item.member = place_of(n);
    const name &title = item.title.text.empty() ? item.id : item.title;
    out_item.name = title.text;
    if (!windows.insert(title.text).second)
        error(title.where, fmt::format("'within' of '{}' stands here twice: a name behind it tells which it is",
                                       title.text));
    const std::uint32_t size = out_item.keeps ? 32 : classify(at(n), at(n).type).width;
    out_item.width = size < 9 ? (1u << size) - 1 : window_octets * 8;
    walk(item.items, out_item.items, false);
    if (const wire_item *open = open_array(out_item.items))
        error(at(open->member.steps.back().member).decl.id.where,
              "an array inside 'within' stands in place and has a size, is counted or linked");
    else if (most_bits(s, out_item.items) > window_octets * 8)
        error(item.where, fmt::format("what stands 'within' takes up to {} octets of {}",
                                      (most_bits(s, out_item.items) + 7) / 8, window_octets));
    to.push_back(std::move(out_item));
}

void wire_check::item(wire_item_def &item, items &to, bool bounded)
{
    if (half && !(item.kind == what::line && item.format == wire_format::half)) {
        error(half->where, "a half octet stands alone: its other half follows it, or 'spare M V1;'");
        half.reset();
    }
    switch (item.kind) {
    case what::member:
        if (!displaced.contains(item.member->decl.id.text))
            member(item.member_id, to, bounded);
        break;
    case what::spare: {
        wire_item spare;
        spare.kind = wire_item::what::constant;
        spare.width = number(*item.width, 1, 32, "the width");
        if (item.value)
            spare.value = number(*item.value, 0, (std::int64_t{1} << spare.width) - 1, "the value of the bits");
        to.push_back(std::move(spare));
        break;
    }
    case what::parts: parts(item, to); break;
    case what::flag: flag(item, to); break;
    case what::group: group(item, to, bounded); break;
    case what::block: block(item, to); break;
    case what::within: within(item, to); break;
    case what::align: {
        wire_item align;
        align.kind = wire_item::what::align;
        to.push_back(std::move(align));
        break;
    }
    case what::line: line(item, to); break;
    }
}

void wire_check::walk(std::vector<wire_item_def> &list, items &to, bool bounded)
{
    for (wire_item_def &i : list)
        item(i, to, bounded);
}

// ------------------------------------------------------------------------------------------------ lines

bool is_tagged(wire_format format)
{
    return format >= wire_format::tag;
}

std::uint32_t length_width(wire_format format)
{
    switch (format) {
    case wire_format::length_value:
    case wire_format::tag_length_value: return 8;
    case wire_format::length_value_e:
    case wire_format::tag_length_value_e: return 16;
    case wire_format::value:
    case wire_format::half:
    case wire_format::tag:
    case wire_format::tag_value:
    case wire_format::tag_half: break;
    }
    return 0;
}

/// The value of a line behind its identifier, with its length.
items wire_check::value(const wire_item_def &line)
{
    const std::uint32_t width = length_width(line.format);
    const member_def   &m = at(line.member_id);
    const resolved_type real = look_through(s, m.type.use);
    const record_def   *r = m.decl.dims.empty() && real.use.base == kind::structure ? s.records[real.use.id] : nullptr;
    const std::uint32_t own = r != nullptr && r->wire && r->wire->codec ? r->wire->codec->length_width : 0;
    items               list;
    if (own != 0 && own != width)
        error(line.where, fmt::format("'{}' has a length of {} bits of its own, which is not the format of the line",
                                      m.type.written.text, own));
    if (width == 0 || own != 0) {
        member(line.member_id, list, false);
        return list;
    }
    wire_item block;
    block.kind = wire_item::what::block;
    block.width = width;
    block.name = line.id.text;
    member(line.member_id, block.items, !m.decl.dims.empty());
    list.push_back(std::move(block));
    return list;
}

/// The length column against what the type takes; `ahead`: octets of the identifier.
void wire_check::check_length(const wire_item_def &line, const items &value, std::uint32_t ahead)
{
    std::optional<std::uint32_t> bits = fixed_bits(s, value);
    if (value.size() == 1 && value[0].kind == wire_item::what::block) {
        bits = fixed_bits(s, value[0].items);
        if (bits)
            *bits += value[0].width;
    }
    if (!line.shortest || !bits)
        return;
    const std::uint64_t octets = ahead + (*bits + 7) / 8;
    const std::uint64_t low = line.shortest->number;
    const bool          fits = line.exact ? octets == low
                                          : octets >= low && (!line.longest || octets <= line.longest->number);
    if (!fits)
        error(line.shortest->where, fmt::format("the line takes {} octet{}", octets, octets == 1 ? "" : "s"));
}

/// Four bits: of an integer, or of an element.
void wire_check::half_value(const wire_item_def &line, items &to)
{
    items list;
    if (line.is_spare) {
        wire_item spare;
        spare.kind = wire_item::what::constant;
        spare.width = 4;
        list.push_back(std::move(spare));
    } else {
        member(line.member_id, list, false, 4);
        const std::optional<std::uint32_t> bits = fixed_bits(s, list);
        if (!list.empty() && bits != 4)
            error(line.where, fmt::format("'{}' is no half octet", line.id.text));
    }
    for (wire_item &i : list)
        to.push_back(std::move(i));
}

/// The second line of a pair goes first: it is the high half.
void wire_check::half_line(const wire_item_def &line, items &to)
{
    if (!half) {
        half = line;
        return;
    }
    half_value(line, to);
    half_value(*half, to);
    half.reset();
}

void wire_check::identifier(const wire_item_def &line)
{
    const bool          half_octet = line.format == wire_format::tag_half;
    const std::uint64_t high = half_octet ? 15 : 255;
    if (*line.identifier == 0 || *line.identifier > high)
        return error(line.identifier_where, fmt::format("the identifier is {}, outside 1 to {}", *line.identifier,
                                                        high));
    for (const auto &[other, where] : identifiers) {
        const bool other_half = other >= 0x100; // half octets are kept above
        const auto full = static_cast<std::uint32_t>(*line.identifier);
        const bool clash = half_octet ? !other_half && other >> 4 == full : other_half && full >> 4 == other - 0x100;
        if (clash)
            s.diag.conflict(line.identifier_where, "this identifier is taken for that of a half octet, or the other "
                                                   "way round", where, "by this line");
    }
    for (const wire_option &o : out.options) {
        if (o.identifier == *line.identifier && o.half == half_octet && o.format != line.format)
            error(line.identifier_where, "lines with one identifier have one format");
    }
    identifiers.emplace(static_cast<std::uint32_t>(*line.identifier) + (half_octet ? 0x100 : 0), line.identifier_where);
}

void wire_check::option(const wire_item_def &line)
{
    identifier(line);
    wire_option o;
    o.identifier = static_cast<std::uint32_t>(*line.identifier);
    o.half = line.format == wire_format::tag_half;
    o.order = static_cast<std::uint32_t>(out.options.size() + 1);
    o.format = line.format;
    o.name = line.id.text;
    o.clause = line.clause;
    if (const std::optional<std::uint32_t> present = index_of(line.id.text + "_present"))
        o.present = place_of(*present);
    o.length_width = length_width(line.format);
    o.bare = line.format == wire_format::tag;
    if (o.half) {
        half_value(line, o.items);
    } else if (line.member_id != no_index) {
        o.items = value(line);
        const std::optional<std::uint32_t> bits = fixed_bits(s, o.items);
        if (line.format == wire_format::tag_value && (!bits || *bits % 8 != 0))
            error(line.where, fmt::format("the value of '{}' is of no fixed number of octets: the format is TLV",
                                          line.id.text));
        o.octets = bits.value_or(0) / 8;
    }
    if (!o.half)
        check_length(line, o.items, 1);
    if (line.member_id != no_index && !o.present.steps.empty())
        guard({line}, o.present.steps.front().member);
    out.options.push_back(std::move(o));
}

void wire_check::line(const wire_item_def &line, items &to)
{
    const bool mandatory = line.need == wire_item_def::presence::mandatory;
    if (!record.wire->is_message) {
        error(line.where, "lines of a table stand in a message");
    } else if (is_tagged(line.format) != line.identifier.has_value()) {
        error(line.where, line.identifier ? "this format has no identifier" : "this format has an identifier");
    } else if (mandatory == line.identifier.has_value()) {
        error(line.where, fmt::format("what is {}mandatory has {} identifier", mandatory ? "" : "not ",
                                      mandatory ? "no" : "an"));
    } else if ((line.format == wire_format::tag) != !line.member && !line.is_spare) {
        error(line.where, line.member ? "an identifier alone has no type" : "the line has no type");
    } else if (line.identifier) {
        option(line);
    } else if (!out.options.empty()) {
        error(line.where, "lines with an identifier come last");
    } else if (line.format == wire_format::half) {
        half_line(line, to);
    } else {
        items list = value(line);
        check_length(line, list, 0);
        for (wire_item &i : list) {
            i.clause = line.clause;
            to.push_back(std::move(i));
        }
    }
}

// ------------------------------------------------------------------------------------------------ the whole

void wire_check::displace(const std::vector<wire_item_def> &list)
{
    for (const wire_item_def &i : list) {
        for (const wire_item_def::part &p : i.parts) {
            const std::optional<std::uint32_t> n = index_of(p.ref.steps.front().member.text);
            const attribute *bcd = n ? find_attribute(record.members[*n], attribute::what::bcd) : nullptr;
            if (bcd == nullptr || !bcd->value)
                displaced.insert(p.ref.steps.front().member.text);
        }
        displace(i.items);
        displace(i.otherwise);
    }
}

} // namespace

void check_wire(scope &s, const unit_def &unit, record_def &record)
{
    wire_def  &wire = *record.wire;
    wire_check check{s, unit, record, {}, std::vector<bool>(record.members.size()), {}, {}, std::nullopt, {}};
    check.displace(wire.items);
    check.out.is_message = wire.is_message;
    check.out.direction = wire.direction;
    check.out.where = record.id.where;
    if (wire.length) {
        check.out.length_width = check.number(*wire.length, 8, 16, "the width of a length");
        if (check.out.length_width != 8 && check.out.length_width != 16)
            s.diag.error(wire.length->where, "a length has 8 or 16 bits");
        check.out.length_name = wire.length_name ? wire.length_name->text : stem_of(record.id.text);
        check.out.trim = check.trim(wire.trim);
    }
    check.walk(wire.items, check.out.items, false);
    if (check.half)
        s.diag.error(check.half->where, "a half octet stands alone: its other half follows it, or 'spare M V1;'");
    wire_codec &codec = check.out;
    if (codec.length_width != 0 && !codec.options.empty())
        s.diag.error(wire.length->where, "a structure with a length of its own has no lines with an identifier");
    codec.bits = codec.options.empty() && codec.trim.steps.empty() ? fixed_bits(s, codec.items) : std::nullopt;
    if (codec.bits && codec.length_width != 0)
        codec.bits = (*codec.bits + 7) / 8 * 8 + codec.length_width;
    codec.owns = owns_memory(s, codec.items) ||
                 std::any_of(codec.options.begin(), codec.options.end(),
                             [&](const wire_option &o) { return owns_memory(s, o.items); });
    wire.codec = std::move(codec);
}

} // namespace solvane::gen::def
