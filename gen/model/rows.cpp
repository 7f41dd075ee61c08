// The driver of the laying of rows, and the dictionary's rows.
#include "model/rows.h"

#include <fmt/format.h>

#include "model/lay.h"
#include "model/traces.h"

namespace solvane::gen {
namespace {

constexpr std::uint32_t first_anonymous = 15000;
constexpr std::size_t   most_ordinals = 0x10000;   // `ordinal` and `no_literals` have 16 bits
constexpr std::size_t   most_literals = 0xFFFF;
constexpr std::uint32_t bits_tag = 1;              // run-time tag of AsnBits

/// Every definition of a domain in the order of its units.
template <typename Visit> void for_each_definition(const model &m, const domain &d, Visit visit)
{
    for (const std::uint32_t unit_id : d.units) {
        for (const definition &what : m.units[unit_id].definitions)
            visit(what);
    }
}

bool is_record(kind base) { return base == kind::structure || base == kind::union_; }

/// The run-time tag of a type: a typedef has the tag of its base.
std::uint32_t tag_of(const row_numbers &rows, const type_use &use)
{
    if (is_record(use.base))
        return rows.record_tags[use.id];
    return use.base == kind::type_name ? rows.alias_tags[use.id] : 0;
}

/// AsnBits has tag 1; each list family has two, one of its list and one of its nodes.
void number_tags(const model &m, const domain &d, row_numbers &rows)
{
    rows.record_tags.assign(m.records.size(), 0);
    rows.alias_tags.assign(m.aliases.size(), 0);
    if (rows.bits_record != no_index)
        rows.record_tags[rows.bits_record] = bits_tag;
    std::uint32_t next = bits_tag + 1;
    for (const std::uint32_t id : rows.lists) {
        const list_family &family = m.lists[id];
        rows.alias_tags[family.list_alias] = next;
        for (const std::uint32_t node : {family.node_alias, family.pointer_alias, family.rt_node_alias})
            rows.alias_tags[node] = next + 1;
        next += 2;
    }
    // A base stands ahead of its typedef.
    for_each_definition(m, d, [&](const definition &what) {
        if (what.kind == definition::what::alias && rows.alias_tags[what.id] == 0)
            rows.alias_tags[what.id] = tag_of(rows, m.aliases[what.id].base);
    });
}

std::string row_name(const model &m, const domain &d, const row_numbers &rows, const type_use &use)
{
    switch (use.base) {
    case kind::structure:
    case kind::union_: return m.records[use.id].name;
    case kind::enumeration: return d.enums[rows.enums[use.id]].name;
    case kind::type_name: return m.aliases[use.id].name;
    default: return std::string(basic_name(use.base));
    }
}

std::uint32_t row_number(const row_numbers &rows, const type_use &use)
{
    switch (use.base) {
    case kind::structure:
    case kind::union_: return rows.structs[use.id];
    case kind::enumeration: return rows.enums[use.id];
    case kind::type_name: return rows.types[use.id];
    default: return no_index;
    }
}

member_row make_member_row(const model &m, const domain &d, const row_numbers &rows, const member &member,
                           std::uint32_t index)
{
    member_row row;
    row.member = index;
    row.role = member.role;
    row.ref = member.ref;
    if (member.bit_width != 0) {
        row.kind = kind::bit_field;
        row.type_index = 0;
        return row;
    }
    row.rt_selector = member.rt_selector;
    row.rt_tag = tag_of(rows, member.type);
    row.kind = member.type.base;
    row.type_name = row_name(m, d, rows, member.type);
    row.dim_index.assign(member.dims.size(), no_index);
    row.type_index = row_number(rows, member.type);
    return row;
}

struct_row make_struct_row(const model &m, const domain &d, const row_numbers &rows, std::uint32_t record_id)
{
    struct_row    row{record_id, 0, {}};
    const record &r = m.records[record_id];
    for (std::uint32_t n = 0; n < r.members.size(); ++n) {
        if (!r.members[n].hidden)
            row.members.push_back(make_member_row(m, d, rows, r.members[n], n));
    }
    return row;
}

type_row make_type_row(const model &m, const domain &d, const row_numbers &rows, std::string name, const type_use &base,
                       const std::vector<dimension> &dims, std::uint32_t tag)
{
    type_row row;
    row.name = std::move(name);
    row.rt_tag = tag;
    row.base = base.base;
    row.base_name = row_name(m, d, rows, base);
    row.dims = dims;
    row.dim_index.assign(dims.size(), no_index);
    row.type_index = row_number(rows, base);
    row.cpp_name = cpp_type(m, base);
    return row;
}

/// Row of the type table that a typedef leads to when its base has a name there; no_index for the others.
std::uint32_t named_base(const row_numbers &rows, const type_use &base)
{
    if (is_record(base.base))
        return rows.record_types[base.id];
    return base.base == kind::enumeration ? rows.enum_types[base.id] : no_index;
}

/// A typedef of a tag leads to the tag's row, not behind it.
type_row make_alias_row(const model &m, const domain &d, const row_numbers &rows, std::uint32_t alias_id)
{
    const alias &a = m.aliases[alias_id];
    type_row     row = make_type_row(m, d, rows, a.name, a.base, a.dims, rows.alias_tags[alias_id]);
    row.alias_id = alias_id;
    if (const std::uint32_t base = named_base(rows, a.base); base != no_index) {
        row.base = kind::type_name;
        row.type_index = base;
    }
    return row;
}

/// A tag is a name of its own type; an anonymous enumeration has its typedef's row only.
void add_type_row(const model &m, domain &d, const row_numbers &rows, const definition &what)
{
    if (what.kind == definition::what::alias) {
        d.types.push_back(make_alias_row(m, d, rows, what.id));
    } else if (what.kind == definition::what::record) {
        const record  &r = m.records[what.id];
        const type_use use{r.is_union ? kind::union_ : kind::structure, what.id};
        d.types.push_back(make_type_row(m, d, rows, r.name, use, {}, rows.record_tags[what.id]));
    } else if (what.kind == definition::what::enumeration && !m.enums[what.id].name.empty()) {
        d.types.push_back(make_type_row(m, d, rows, m.enums[what.id].name, {kind::enumeration, what.id}, {}, 0));
    }
}

void check_widths(const model &m, const domain &d, diagnostics &diag)
{
    if (d.enums.size() > most_ordinals)
        diag.error(m.enums[d.enums[most_ordinals].enum_id].where,
                   fmt::format("'{}' has more than {} enumerations", d.name, most_ordinals));
    for (const enum_row &row : d.enums) {
        if (m.enums[row.enum_id].literals.size() > most_literals)
            diag.error(m.enums[row.enum_id].where, fmt::format("more than {} literals", most_literals));
    }
    for (const struct_row &row : d.structs) {
        if (row.members.size() >= no_ref)
            diag.error(m.records[row.record_id].where, fmt::format("{} members or more", no_ref));
    }
}

} // namespace

row_numbers number_rows(const model &m, const domain &d)
{
    row_numbers rows;
    rows.structs.assign(m.records.size(), no_index);
    rows.enums.assign(m.enums.size(), no_index);
    rows.types.assign(m.aliases.size(), no_index);
    rows.record_types.assign(m.records.size(), no_index);
    rows.enum_types.assign(m.enums.size(), no_index);
    std::uint32_t no_structs = 0, no_enums = 0, no_types = 0;
    for_each_definition(m, d, [&](const definition &what) {
        switch (what.kind) {
        case definition::what::enumeration:
            rows.enums[what.id] = no_enums++;
            if (!m.enums[what.id].name.empty())
                rows.enum_types[what.id] = no_types++;
            break;
        case definition::what::record:
            rows.structs[what.id] = no_structs++;
            rows.record_types[what.id] = no_types++;
            if (m.records[what.id].name == "AsnBits")
                rows.bits_record = what.id;
            break;
        case definition::what::alias:
            rows.types[what.id] = no_types++;
            if (m.aliases[what.id].list_id != no_index && m.lists[m.aliases[what.id].list_id].list_alias == what.id)
                rows.lists.push_back(m.aliases[what.id].list_id);
            break;
        case definition::what::constant: break;
        }
    });
    number_tags(m, d, rows);
    return rows;
}

void lay_dictionary(const model &m, domain &d, const row_numbers &rows)
{
    std::uint32_t anonymous = first_anonymous;
    for_each_definition(m, d, [&](const definition &what) {
        if (what.kind == definition::what::enumeration) {
            const std::string &name = m.enums[what.id].name;
            d.enums.push_back({what.id, name.empty() ? std::to_string(anonymous++) : name});
        }
    });
    for_each_definition(m, d, [&](const definition &what) {
        if (what.kind == definition::what::record)
            d.structs.push_back(make_struct_row(m, d, rows, what.id));
        add_type_row(m, d, rows, what);
    });
}

void lay_rows(model &m, diagnostics &diag)
{
    for (domain &d : m.domains) {
        const row_numbers rows = number_rows(m, d);
        lay_dictionary(m, d, rows);
        check_widths(m, d, diag);
        lay_offsize(m, d);
        lay_rt_rules(m, d, rows, diag);
        lay_message_index(d);
    }
    lay_traces(m);
}

} // namespace solvane::gen
