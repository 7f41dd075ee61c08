// Numbers: values, enumerations, tags, the bounds of constraints, DEFAULT values.
#include <algorithm>
#include <map>
#include <set>

#include <fmt/format.h>

#include "asn1/check.h"
#include "asn1/dump_tree.h"
#include "asn1/scope.h"

namespace solvane::gen::asn1 {
namespace {

using number = std::optional<std::int64_t>;

/// Evaluates what belongs to the types and values of one module.
struct evaluator {
    scope        &s;
    std::uint32_t module;

    number evaluate(const value &v, const type *context);
    number value_of(assignment &a);

    void   number_names(type &t);
    void   walk(type &t);
    void   bound(type &t);
    bounds hull(const std::vector<constraint_set> &sets, constraint::what wanted, const type &t);
    bounds hull_of(const constraint_set &set, constraint::what wanted, const type &t);
    void   enumerate(type &t);
    void   check_default(member &m);
    void   check_named_default(member &m, const type &base);
    void   check_tags(type &t);
};

/// Enumerator or named number of a type.
const named_number *find_number(const type *t, const std::string &id)
{
    if (t == nullptr)
        return nullptr;
    for (const named_number &n : t->numbers) {
        if (n.id.text == id)
            return &n;
    }
    return nullptr;
}

/// The number of a value assignment, computed when it is first asked for.
number evaluator::value_of(assignment &a)
{
    const bool may_be_one = a.kind == assignment_kind::value && a.content &&
                            (a.content->kind == value::what::number || a.content->kind == value::what::reference);
    if (!may_be_one || a.state == 2)
        return a.number;
    if (a.state == 1) {
        s.diag.error(a.id.where, fmt::format("'{}' is defined by itself", a.id.text));
        return std::nullopt;
    }
    a.state = 1;
    a.number = evaluator{s, a.module}.evaluate(*a.content, base_type(a.of.front()));
    a.state = 2;
    return a.number;
}

/// The number that a value stands for; nothing, and a message, where it is none.
number evaluator::evaluate(const value &v, const type *context)
{
    if (v.kind == value::what::number)
        return v.number;
    if (v.kind != value::what::reference) {
        s.diag.error(v.where, fmt::format("{} is no number", spelled(v)));
        return std::nullopt;
    }
    if (const named_number *named = v.module.empty() ? find_number(context, v.text) : nullptr)
        return named->resolved;
    assignment *found = find(s, module, v.module, {v.text, v.where});
    if (found == nullptr)
        return std::nullopt;
    const number answer = value_of(*found);
    const bool   told = found->content && found->content->kind == value::what::reference;
    if (!answer && !told)
        s.diag.conflict(v.where, fmt::format("'{}' is no number", v.text), found->id.where, "it is defined here");
    return answer;
}

// ------------------------------------------------------------------------------------------- bounds

number lower_of(const number &a, const number &b) { return a && b ? number(std::min(*a, *b)) : std::nullopt; }
number upper_of(const number &a, const number &b) { return a && b ? number(std::max(*a, *b)) : std::nullopt; }

/// Both must hold.
bounds joined(const bounds &a, const bounds &b)
{
    bounds out;
    out.low = a.low && b.low ? upper_of(a.low, b.low) : a.low ? a.low : b.low;
    out.high = a.high && b.high ? lower_of(a.high, b.high) : a.high ? a.high : b.high;
    out.extensible = a.extensible || b.extensible;
    return out;
}

/// From the lowest to the highest value that one element of the set allows (X.691 10.3.21).
bounds evaluator::hull_of(const constraint_set &set, constraint::what wanted, const type &t)
{
    bounds out;
    bool   first = true, bounded = false;
    for (const constraint &c : set.any_of) {
        if (c.kind != wanted)
            continue;
        bounds one;
        if (wanted == constraint::what::size) {
            one = hull(c.inner, constraint::what::range, t);
            if (one.low.value_or(0) < 0)
                s.diag.error(c.where, "a size is not negative");
            one.low = std::max<std::int64_t>(one.low.value_or(0), 0);
        } else {
            const type *context = base_type(t);
            one.low = c.low ? evaluate(*c.low, context) : std::nullopt;
            one.high = c.high ? evaluate(*c.high, context) : std::nullopt;
            if (one.low && one.high && *one.low > *one.high) {
                s.diag.error(c.where, fmt::format("the range {}..{} is empty", *one.low, *one.high));
                one = {};
            }
        }
        out.low = first ? one.low : lower_of(out.low, one.low);
        out.high = first ? one.high : upper_of(out.high, one.high);
        out.extensible = out.extensible || one.extensible;
        first = false;
        bounded = true;
    }
    out.extensible = out.extensible || (bounded && set.extensible);
    return out;
}

bounds evaluator::hull(const std::vector<constraint_set> &sets, constraint::what wanted, const type &t)
{
    bounds out;
    for (const constraint_set &set : sets)
        out = joined(out, hull_of(set, wanted, t));
    if (out.low && out.high && *out.low > *out.high)
        s.diag.error(sets.front().where, fmt::format("nothing is left between {} and {}", *out.low, *out.high));
    return out;
}

bool has_size(type_kind kind)
{
    return kind == type_kind::octets || kind == type_kind::bits || kind == type_kind::characters ||
           kind == type_kind::sequence_of || kind == type_kind::set_of;
}

/// Bounds of a type: those of the type that it refers to, and its own.
void evaluator::bound(type &t)
{
    const type *base = base_type(t);
    if (base == nullptr)
        return;
    if (t.target != nullptr) {
        type &referred = t.target->of.front();
        if (t.target->state != 3) // its bounds are not known yet
            evaluator{s, t.target->module}.bound(referred);
        t.range = referred.range;
        t.size = referred.size;
    }
    for (const constraint_set &set : t.constraints) {
        for (const constraint &c : set.any_of) {
            if (c.kind == constraint::what::size && !has_size(base->kind))
                s.diag.error(c.where, "SIZE goes with strings and lists");
            if (c.kind == constraint::what::range && base->kind != type_kind::integer)
                s.diag.error(c.where, "a constraint by values is supported for INTEGER alone");
        }
    }
    if (base->kind == type_kind::integer)
        t.range = joined(t.range, hull(t.constraints, constraint::what::range, t));
    if (has_size(base->kind))
        t.size = joined(t.size, hull(t.constraints, constraint::what::size, t));
}

// ------------------------------------------------------------------------------------------- enumerations, tags

/// Numbers of an ENUMERATED: those without one take the next free (X.680 20.3, 20.6); of the other types as given.
void evaluator::enumerate(type &t)
{
    std::map<std::int64_t, place> taken;
    const auto                    take = [&](named_number &n, std::int64_t resolved) {
        n.resolved = resolved;
        const auto [at, fresh] = taken.emplace(resolved, n.id.where);
        if (!fresh && t.kind == type_kind::enumerated)
            s.diag.conflict(n.id.where, fmt::format("the number {} is taken", resolved), at->second, "by this one");
    };
    for (named_number &n : t.numbers) {
        if (n.number)
            take(n, evaluate(*n.number, nullptr).value_or(0));
        else if (t.kind != type_kind::enumerated)
            s.diag.error(n.id.where, fmt::format("'{}' wants a number", n.id.text));
    }
    std::int64_t next = 0;
    for (named_number &n : t.numbers) {
        if (t.kind != type_kind::enumerated || n.number)
            continue;
        while (taken.contains(next))
            ++next;
        take(n, next);
    }
}

void evaluator::check_tags(type &t)
{
    for (tag &g : t.tags) {
        const std::int64_t resolved = evaluate(g.number, nullptr).value_or(0);
        if (resolved < 0 || resolved > 0xFFFFFFF)
            s.diag.error(g.number.where, fmt::format("the tag is {}, outside 0 to {}", resolved, 0xFFFFFFF));
        g.resolved = static_cast<std::uint32_t>(resolved);
    }
}

// ------------------------------------------------------------------------------------------- DEFAULT

/// Enumerators of the root come first and those behind the marker follow, each by their numbers (X.691 14.1).
std::int64_t enumerator_index(const type &base, const named_number &wanted)
{
    return std::count_if(base.numbers.begin(), base.numbers.end(), [&](const named_number &n) {
        return n.is_addition != wanted.is_addition ? wanted.is_addition : n.resolved < wanted.resolved;
    });
}

void evaluator::check_named_default(member &m, const type &base)
{
    const value &v = *m.fallback;
    if (base.kind == type_kind::enumerated) {
        const named_number *named = v.kind == value::what::reference ? find_number(&base, v.text) : nullptr;
        if (named == nullptr)
            s.diag.conflict(v.where, fmt::format("{} is no enumerator", spelled(v)), base.where, "of this type");
        else
            m.fallback_number = enumerator_index(base, *named);
    }
    for (const name &bit : v.names) {
        if (base.kind == type_kind::bits && !find_number(&base, bit.text))
            s.diag.conflict(bit.where, fmt::format("there is no bit '{}'", bit.text), base.where, "in this type");
    }
}

void evaluator::check_default(member &m)
{
    const type &t = m.of.front();
    const type *base = base_type(t);
    if (base == nullptr || !m.fallback)
        return;
    const value &v = *m.fallback;
    const auto   wants = [&](bool fits, std::string_view what) {
        if (!fits)
            s.diag.error(v.where, fmt::format("{} is no {}", spelled(v), what));
    };
    switch (base->kind) {
    case type_kind::integer: {
        const number n = evaluate(v, base);
        if (n && ((t.range.low && *n < *t.range.low) || (t.range.high && *n > *t.range.high)))
            s.diag.error(v.where, fmt::format("{} is outside the range of '{}'", *n, m.id.text));
        m.fallback_number = n.value_or(0);
        break;
    }
    case type_kind::boolean:
        wants(v.kind == value::what::boolean, "BOOLEAN");
        m.fallback_number = v.number;
        break;
    case type_kind::null: wants(v.kind == value::what::null, "NULL"); break;
    case type_kind::octets: wants(v.kind == value::what::bits || v.kind == value::what::hex, "OCTET STRING"); break;
    case type_kind::bits:
        wants(v.kind == value::what::bits || v.kind == value::what::hex || v.kind == value::what::braces,
              "BIT STRING");
        check_named_default(m, *base);
        break;
    case type_kind::enumerated: check_named_default(m, *base); break;
    default: break;
    }
}

/// Numbers that bounds and DEFAULT values may name.
void evaluator::number_names(type &t)
{
    check_tags(t);
    enumerate(t);
    for (member &m : t.members)
        number_names(m.of.front());
    for (type &element : t.element)
        number_names(element);
}

void evaluator::walk(type &t)
{
    bound(t);
    for (constraint_set &set : t.constraints) {
        for (constraint &c : set.any_of) {
            for (type &contained : c.types)
                walk(contained);
        }
    }
    for (member &m : t.members) {
        walk(m.of.front());
        check_default(m);
    }
    for (type &element : t.element)
        walk(element);
}

template <typename Visit> void for_each_assignment(scope &s, Visit visit)
{
    for (std::uint32_t n = 0; n < s.in.modules.size(); ++n) {
        module   &m = s.in.modules[n];
        evaluator at{s, n};
        for (std::list<assignment> *all : {&m.assignments, &m.instances}) {
            for (assignment &a : *all)
                visit(at, a);
        }
    }
}

bool is_plain_type(const assignment &a) { return a.kind == assignment_kind::type && a.parameters.empty(); }

} // namespace

void evaluate_constraints(scope &s)
{
    for_each_assignment(s, [](evaluator &at, assignment &a) {
        if (is_plain_type(a))
            at.number_names(a.of.front());
    });
    for_each_assignment(s, [](evaluator &at, assignment &a) {
        if (a.kind == assignment_kind::value && a.of.front().kind == type_kind::integer)
            at.value_of(a);
        if (!is_plain_type(a))
            return;
        at.walk(a.of.front());
        a.state = 3;
    });
}

} // namespace solvane::gen::asn1
