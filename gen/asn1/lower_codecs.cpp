// The codecs of a schema's types: shapes, constraints as numbers, names of members (X.691).
#include "asn1/lower_codecs.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <limits>

#include <fmt/format.h>

#include "asn1/check.h"
#include "asn1/dump_tree.h"

namespace solvane::gen::asn1 {
namespace {

constexpr std::int64_t int32_high = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t long_list = 65536;  ///< a count with such a bound is coded as if it had none (X.691 11.9.4.1)

std::uint32_t bits_for(std::uint64_t range) { return static_cast<std::uint32_t>(std::bit_width(range)); }

/// A bit field of `width` has no value above the range.
bool fills(std::uint64_t range) { return range == 0 || (range & (range + 1)) == 0; }

per::whole_number whole_number_of(const bounds &b)
{
    per::whole_number n;
    n.has_lower = b.low.has_value();
    n.has_upper = b.low && b.high;
    n.lower = b.low.value_or(0);
    n.upper = b.high.value_or(0);
    if (n.has_upper) {
        const auto range = static_cast<std::uint64_t>(n.upper) - static_cast<std::uint64_t>(n.lower);
        n.width = bits_for(range);
        n.exact = fills(range);
        n.is_unsigned = n.lower >= 0 && n.upper > int32_high;
    }
    return n;
}

per::whole_number count_of(const bounds &size)
{
    bounds b = size;
    b.low = b.low.value_or(0);
    if (b.high && *b.high >= long_list)
        b.high.reset();
    return whole_number_of(b);
}

per::string_limits string_of(const bounds &size)
{
    per::string_limits limits;
    if (!size.low)
        return limits;
    limits.mode = size.high && *size.high <= int32_high ? 2 : 1;
    limits.lower = static_cast<std::uint32_t>(*size.low);
    limits.upper = limits.mode == 2 ? static_cast<std::uint32_t>(*size.high) : 0;
    return limits;
}

per::selection selection_of(std::uint32_t root, std::uint32_t count, bool extensible)
{
    per::selection index;
    index.root_count = root;
    index.count = count;
    index.width = root == 0 ? 0 : bits_for(root - 1);
    index.exact = !extensible && root > 0 && fills(root - 1);
    index.extensible = extensible;
    return index;
}

template <typename Items> per::selection selection_of(const Items &items, bool extensible)
{
    const auto root = std::count_if(items.begin(), items.end(), [](const auto &i) { return !i.is_addition; });
    return selection_of(static_cast<std::uint32_t>(root), static_cast<std::uint32_t>(items.size()), extensible);
}

/// Enumerators in the order of their index (X.691 14.1).
std::vector<named_number> by_index(std::vector<named_number> numbers)
{
    std::stable_sort(numbers.begin(), numbers.end(), [](const named_number &a, const named_number &b) {
        return a.is_addition != b.is_addition ? b.is_addition : a.resolved < b.resolved;
    });
    return numbers;
}

struct codec_maker {
    diagnostics  &diag;
    const schema &s;
    const family &f;
    const layout &types;
    std::uint32_t first;  ///< place of item 0 among the codecs
    std::uint32_t schema_id;
    std::vector<per::codec> &codecs;

    per::shape         shape_of(const type &t, const type &base) const;
    std::string        cpp_type_of(const type &t, const per::usage &u) const;
    per::usage         use(const type &t, const std::string &enclosing) const;
    per::default_value fallback_of(const member &m, const type &base) const;
    per::member        make_member(const member &m, const std::string &enclosing, std::uint32_t &additions) const;
    per::alternative   make_alternative(const member &m, const std::string &enclosing) const;
    void               check_alternatives(const item &i) const;
    void               check_constraints(const type &t) const;
    per::codec         make(const item &i) const;
};

bool is_fixed(const type &t) { return t.size.low && t.size.high && *t.size.low == *t.size.high && *t.size.low > 0; }

per::shape codec_maker::shape_of(const type &t, const type &base) const
{
    switch (base.kind) {
    case type_kind::boolean: return per::shape::boolean;
    case type_kind::integer: return per::shape::integer;
    case type_kind::enumerated: return per::shape::enumerated;
    case type_kind::null: return per::shape::null;
    case type_kind::octets: return per::shape::octets;
    case type_kind::bits: return per::shape::bits;
    case type_kind::sequence: return per::shape::sequence;
    case type_kind::choice: return per::shape::choice;
    case type_kind::sequence_of:
        return f.fixed_lists_in_place && is_fixed(base) ? per::shape::array : per::shape::list;
    case type_kind::class_field: return per::shape::unsupported;
    case type_kind::real:
    case type_kind::object_identifier:
    case type_kind::characters:
    case type_kind::any:
    case type_kind::set:
    case type_kind::set_of: diag.error(t.where, "this type is not supported in packed encoding"); break;
    case type_kind::reference: break;
    }
    return per::shape::null;
}

std::string codec_maker::cpp_type_of(const type &t, const per::usage &u) const
{
    if (const auto at = types.index.find(t.target != nullptr ? &t.target->of.front() : &t); at != types.index.end())
        return types.items[at->second].name;
    switch (u.shape) {
    case per::shape::boolean: return "AsnBool";
    case per::shape::integer: return u.number.is_unsigned ? "UAsnInt" : "AsnInt";
    case per::shape::octets: return "AsnOcts";
    case per::shape::bits: return "AsnBits";
    case per::shape::null:
    case per::shape::unsupported: return "AsnNull";
    case per::shape::enumerated:
    case per::shape::sequence:
    case per::shape::choice:
    case per::shape::list:
    case per::shape::array: break;
    }
    return {};
}

/// What packed encoding would have to write otherwise, and does not.
void codec_maker::check_constraints(const type &t) const
{
    if (t.range.extensible || t.size.extensible)
        diag.error(t.constraints.empty() ? t.where : t.constraints.back().where,
                   "an extensible constraint is not supported in packed encoding");
    const type *base = base_type(t);
    const bool  is_list = base->kind == type_kind::sequence_of || base->kind == type_kind::set_of;
    if (is_list && t.target != nullptr && (t.size.low != t.target->of.front().size.low ||
                                           t.size.high != t.target->of.front().size.high))
        diag.error(t.where, "a further SIZE on a list that has a name is not supported");
}

per::usage codec_maker::use(const type &t, const std::string &enclosing) const
{
    const type &base = *base_type(t);
    check_constraints(t);
    per::usage u;
    u.shape = shape_of(t, base);
    const auto own = types.index.find(t.target != nullptr ? &t.target->of.front() : &t);
    u.codec = own == types.index.end() ? no_index : first + own->second;
    u.label = own == types.index.end() ? enclosing : types.items[own->second].name;
    if (u.shape == per::shape::integer)
        u.number = whole_number_of(t.range);
    if (u.shape == per::shape::list || u.shape == per::shape::array)
        u.number = count_of(t.size);
    if (u.shape == per::shape::octets || u.shape == per::shape::bits)
        u.string = string_of(t.size);
    if (u.shape == per::shape::enumerated)
        u.index = selection_of(base.numbers, base.extensible);
    if (u.shape == per::shape::choice)
        u.index = selection_of(base.members, base.extensible);
    u.cpp_type = cpp_type_of(t, u);
    return u;
}

per::default_value codec_maker::fallback_of(const member &m, const type &base) const
{
    const value       &v = *m.fallback;
    per::default_value out;
    out.text = spelled(v);
    out.number = m.fallback_number;
    if (v.kind == value::what::bits || v.kind == value::what::hex) {
        digit_string digits = digits_of(v);
        out.length = base.kind == type_kind::octets ? static_cast<std::uint32_t>(digits.octets.size()) : digits.bits;
        out.octets = std::move(digits.octets);
    }
    for (const name &bit : v.names) { // named bits: as long as the size allows, or up to the last one
        for (const named_number &n : base.numbers) {
            if (n.id.text != bit.text)
                continue;
            const auto at = static_cast<std::uint32_t>(n.resolved);
            out.length = std::max(out.length, at + 1);
            out.octets.resize(std::max<std::size_t>(out.octets.size(), at / 8 + 1));
            out.octets[at / 8] = static_cast<std::uint8_t>(out.octets[at / 8] | 0x80 >> at % 8);
        }
    }
    if (v.kind == value::what::braces && base.size.low) {
        out.length = std::max(out.length, static_cast<std::uint32_t>(*base.size.low));
        out.octets.resize((out.length + 7) / 8);
    }
    return out;
}

/// A single addition has a presence field like an optional member: its bitmap tells of it.
per::member codec_maker::make_member(const member &m, const std::string &enclosing, std::uint32_t &additions) const
{
    per::member out;
    out.asn_name = m.id.text;
    out.name = cpp_name(m.id.text);
    out.where = m.id.where;
    out.is_group = m.is_group;
    out.type = use(m.of.front(), enclosing);
    if (m.is_addition)
        out.addition = additions++;
    if (m.presence == presence::with_default) {
        out.presence = per::presence::with_default;
        out.fallback = fallback_of(m, *base_type(m.of.front()));
    } else if (m.presence == presence::optional || m.is_addition) {
        out.presence = per::presence::optional;
    }
    if (out.presence != per::presence::mandatory)
        out.flag = cpp_name(m.id.text + "Opt");
    return out;
}

per::alternative codec_maker::make_alternative(const member &m, const std::string &enclosing) const
{
    return {m.id.text, cpp_name(m.id.text), use(m.of.front(), enclosing), m.is_addition, m.id.where};
}

/// The index follows the tags (X.691 23.2): those that are given by hand must ascend.
void codec_maker::check_alternatives(const item &i) const
{
    const bool automatic = s.modules[i.owner->module].automatic_tags;
    const tag *last = nullptr;
    for (const member &m : i.of->members) {
        const type &t = m.of.front();
        if (t.tags.empty() && (last != nullptr || !automatic)) {
            diag.error(m.id.where, "an alternative without a tag is supported under AUTOMATIC TAGS alone");
            return;
        }
        if (t.tags.empty())
            continue;
        const tag &own = t.tags.front();
        if (last != nullptr && (own.where_from < last->where_from ||
                                (own.where_from == last->where_from && own.resolved <= last->resolved)))
            diag.error(own.number.where, "the alternatives do not stand in the order of their tags");
        last = &own;
    }
}

per::codec codec_maker::make(const item &i) const
{
    const type &t = *i.of;
    per::codec  c;
    c.name = i.name;
    c.asn_name = i.owner->id.text;
    c.asn_text = i.owner->source;
    c.where = i.is_nested ? t.where : i.owner->id.where;
    c.source = fmt::format("{}:{}", std::filesystem::path(diag.path(c.where.file)).filename().string(), c.where.line);
    c.module = s.modules[i.owner->module].id.text;
    c.is_nested = i.is_nested;
    c.schema = schema_id;
    c.type = use(t, i.name);
    c.type.label = i.name;
    c.is_alias = t.kind == type_kind::reference;
    if (!c.is_alias)
        c.type.codec = static_cast<std::uint32_t>(codecs.size());
    c.is_extensible = t.extensible;
    for (const member &m : t.members) {
        if (t.kind == type_kind::choice)
            c.alternatives.push_back(make_alternative(m, i.name));
        else
            c.members.push_back(make_member(m, i.name, c.no_additions));
    }
    if (t.kind == type_kind::choice)
        check_alternatives(i);
    if (t.kind == type_kind::enumerated) {
        for (const named_number &n : by_index(t.numbers))
            c.enumerators.push_back(n.id.text);
    }
    for (const type &element : t.element)
        c.element.push_back(use(element, i.name));
    return c;
}

} // namespace

void add_codecs(diagnostics &diag, const schema &s, const family &f, const layout &types, std::uint32_t schema_id,
                per::plan &plan)
{
    const codec_maker maker{diag, s, f, types, static_cast<std::uint32_t>(plan.codecs.size()), schema_id, plan.codecs};
    for (const item &i : types.items)
        plan.codecs.push_back(maker.make(i));
}

} // namespace solvane::gen::asn1
