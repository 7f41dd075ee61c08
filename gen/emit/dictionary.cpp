// The dictionary of a domain: type, enumeration, structure and member rows, run-time type rules.
//
// Only texts and numbers stand in these sources, no name of the stack is C++ here, so they need no other header.
// All members of a domain are one array, and so are all literals: a row points into it.
#include "emit/emit.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

std::string_view kind_text(kind k)
{
    switch (k) {
    case kind::unsigned_long: return "RW_KIND_UNSIGNED_LONG";
    case kind::signed_long: return "RW_KIND_LONG";
    case kind::unsigned_int: return "RW_KIND_UNSIGNED_INT";
    case kind::signed_int: return "RW_KIND_INT";
    case kind::unsigned_short: return "RW_KIND_UNSIGNED_SHORT";
    case kind::signed_short: return "RW_KIND_SHORT";
    case kind::unsigned_char: return "RW_KIND_UNSIGNED_CHAR";
    case kind::plain_char: return "RW_KIND_CHAR";
    case kind::signed_char: return "RW_KIND_SIGNED_CHAR";
    case kind::structure: return "RW_KIND_STRUCT";
    case kind::union_: return "RW_KIND_UNION";
    case kind::enumeration: return "RW_KIND_ENUM";
    case kind::type_name: return "RW_KIND_TYPEDEF";
    case kind::nothing: return "RW_KIND_VOID";
    case kind::bit_field: return "RW_KIND_BIT_FIELD";
    }
    return {};
}

std::string_view role_text(role r)
{
    switch (r) {
    case role::plain: return "RW_ROLE_PLAIN";
    case role::pointer: return "RW_ROLE_POINTER";
    case role::count: return "RW_ROLE_COUNT";
    case role::array: return "RW_ROLE_ARRAY";
    case role::structure: return "RW_ROLE_STRUCT";
    case role::union_: return "RW_ROLE_UNION";
    case role::selector: return "RW_ROLE_SELECTOR";
    case role::optional: return "RW_ROLE_OPTIONAL";
    case role::presence: return "RW_ROLE_PRESENCE";
    }
    return {};
}

/// A pointer to element `at` of `array`, null when it has no elements.
std::string rows_at(std::string_view array, std::size_t at, std::size_t count)
{
    if (count == 0)
        return "nullptr";
    return std::string(array) + (at == 0 ? "" : " + " + std::to_string(at));
}

// ---------------------------------------------------------------------------------------- types, enumerations

void put_types(std::string &out, const domain &d)
{
    dim_pool   dims;
    cell_table rows;
    for (const type_row &t : d.types) {
        const dim_pool::cells levels = dims.add(t.dims, t.dim_index);
        rows.add({text_literal(t.name), std::to_string(t.rt_tag), std::string(kind_text(t.base)),
                  text_literal(t.base_name), levels.count, levels.rows, index_text(t.type_index)},
                 std::to_string(rows.rows.size()));
    }
    dims.put_rows(out);
    put_array(out, "Types: name, run-time tag, base, levels, row of the base.",
              "const rw_type_row " + table_name(d, "types") + "[]", rows);
}

/// What is known of a literal: a value, or that its initialiser could not be evaluated.
std::string literal_value(const literal &l)
{
    return l.evaluated ? "{RW_VS_VALID_VAL, " + std::to_string(l.value) + "}" : "{RW_VS_INVAL_ASSIGNED, 0}";
}

void put_enums(std::string &out, const model &m, const domain &d)
{
    cell_table  literals;
    cell_table  rows;
    std::size_t at = 0;
    for (const enum_row &e : d.enums) {
        const std::vector<literal> &list = m.enums[e.enum_id].literals;
        rows.add({text_literal(e.name), std::to_string(rows.rows.size()), std::to_string(list.size()),
                  rows_at("literals", at, list.size())});
        literals.heading(std::to_string(rows.rows.size() - 1) + " " + e.name);
        for (const literal &l : list)
            literals.add({text_literal(l.name), literal_value(l)});
        at += list.size();
    }
    if (at != 0)
        put_array(out, "Literals, by enumeration.", "static const rw_literal_row literals[]", literals);
    put_array(out, "Enumerations: name, row number, literals.",
              "const rw_enum_row " + table_name(d, "enums") + "[]", rows);
}

void put_rt_tables(std::string &out, const domain &d)
{
    cell_table keys;
    cell_table rules;
    for (const rt_rule_row &r : d.rt_rules) {
        rules.add({std::to_string(2), "rt_keys[" + std::to_string(keys.rows.size()) + "]",
                   r.has_length_func ? "tt_asn_bits_length" : "nullptr", std::to_string(r.rt_type)});
        keys.add({std::to_string(r.selector), std::to_string(r.tag)}, std::to_string(keys.rows.size()));
    }
    cell_table types;
    for (const rt_type_row &t : d.rt_types)
        types.add({std::to_string(t.id), "RW_KIND_TYPEDEF", text_literal(t.name)});

    put_array(out, "Keys of the run-time type rules: selector, tag of the enclosing type.",
              "static const std::uint16_t rt_keys[][2]", keys);
    put_array(out, "Run-time type rules: key, length function, type.",
              "const rw_rt_rule_row " + table_name(d, "rt_rules") + "[]", rules);
    put_array(out, "Run-time types.", "const rw_rt_type_row " + table_name(d, "rt_types") + "[]", types);
}

std::string types_source(const model &m, const domain &d)
{
    std::string out;
    put_head(out, "Dictionary of the domain " + d.name + ": types, enumerations, run-time type rules.",
             domain_input(d));
    out += tables_include(d) + '\n';
    put_types(out, d);
    put_enums(out, m, d);
    put_rt_tables(out, d);
    out.pop_back();
    return out;
}

// ------------------------------------------------------------------------------------------------- structures

std::vector<std::string> member_cells(const member &field, const member_row &row, dim_pool &dims)
{
    const dim_pool::cells levels = dims.add(field.dims, row.dim_index);
    return {text_literal(field.name),
            index_text(row.offsize_index),
            std::string(role_text(row.role)),
            ref_text(row.ref),
            row.rt_selector != 0 ? "1" : "0",
            std::to_string(row.rt_selector),
            std::to_string(row.rt_tag),
            std::string(kind_text(row.kind)),
            row.kind == kind::bit_field ? "nullptr" : text_literal(row.type_name),
            levels.count,
            levels.rows,
            index_text(row.type_index)};
}

std::string structs_source(const model &m, const domain &d)
{
    dim_pool    dims;
    cell_table  members;
    cell_table  rows;
    std::size_t at = 0;
    for (const struct_row &s : d.structs) {
        const record &r = m.records[s.record_id];
        const auto    number = std::to_string(rows.rows.size());
        rows.add({text_literal(r.name), r.is_union ? "RW_KIND_UNION" : "RW_KIND_STRUCT",
                  std::to_string(s.size_index), "0", std::to_string(s.members.size()),
                  rows_at("members", at, s.members.size())},
                 number);
        members.heading(number + " " + r.name);
        for (const member_row &row : s.members)
            members.add(member_cells(r.members[row.member], row, dims));
        at += s.members.size();
    }

    std::string out;
    put_head(out, "Dictionary of the domain " + d.name + ": structures, unions and their members.", domain_input(d));
    out += tables_include(d) + '\n';
    dims.put_rows(out);
    if (at != 0)
        put_array(out,
                 "Members, by structure: name, offset, role, reference, run-time rule, selector and tag, type.",
                 "static const rw_member_row members[]", members);
    put_array(out, "Structures and unions: name, kind, size, members.",
              "const rw_struct_row " + table_name(d, "structs") + "[]", rows);
    out.pop_back();
    return out;
}

} // namespace

void emit_dictionary(const model &m, std::vector<output_file> &files)
{
    for (const domain &d : m.domains) {
        files.push_back({"production/" + d.name + "_types.cpp", types_source(m, d)});
        files.push_back({"production/" + d.name + "_structs.cpp", structs_source(m, d)});
    }
}

} // namespace solvane::gen
