// What ties the domains together: the debug-info records, the registry rows and the arrays by domain.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "emit/emit.h"
#include "emit/record.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

constexpr std::size_t no_domains = 8;

/// The domains at their entity values; null where the build has none.
std::array<const domain *, no_domains> by_entity(const model &m)
{
    std::array<const domain *, no_domains> rows{};
    for (const domain &d : m.domains)
        rows.at(d.entity_value) = &d;
    return rows;
}

void put_includes(std::string &out, const model &m)
{
    for (const domain &d : m.domains)
        out += tables_include(d);
}

// --------------------------------------------------------------------------------------- debug-info records

/// A table of the record: its count and its pointer.
struct table_cells {
    std::string count = "0";
    std::string rows = "nullptr";
};

table_cells table_of(const domain &d, std::string_view what, std::size_t rows)
{
    if (rows == 0)
        return {};
    const std::string name = table_name(d, what);
    return {"std::size(" + name + ")", name};
}

/// One record.  The tool side has no offsets before the layout step and, where the domain has no bit-fields, the
/// one row that stands for none; the target side has storage for the target's answers.
void put_debug_record(std::string &out, const domain &d, bool tool)
{
    const table_cells structs = table_of(d, "structs", d.structs.size());
    const table_cells types = table_of(d, "types", d.types.size());
    const table_cells enums = table_of(d, "enums", d.enums.size());
    const table_cells rules = table_of(d, "rt_rules", d.rt_rules.size());
    const table_cells rt_types = table_of(d, "rt_types", d.rt_types.size());
    const table_cells offsize = table_of(d, "target_offsize", d.offsize.size());
    const table_cells bit_map = table_of(d, tool ? "tool_bit_map" : "target_bit_map", 1);
    const bool        no_rows = !tool && d.bit_fields.empty();
    put(out, R"(
    {
        // $name$
        .uuid = $side$_uuids[$entity$],
        .no_structs = $no_structs$,
        .structs = $structs$,
        .no_types = $no_types$,
        .types = $types$,
        .no_enums = $no_enums$,
        .enums = $enums$,
        .bt_info = &$bt_info$,
        .no_offsize = $no_offsize$,
        .offsize = $offsize$,
        .no_bit_map = $no_bit_map$,
        .bit_map = $bit_map$,
        .no_rt_rules = $no_rt_rules$,
        .rt_rules = $rt_rules$,
        .no_rt_types = $no_rt_types$,
        .rt_types = $rt_types$,
        .reserved = 0,
    },
)", {{"name", d.name},
     {"side", tool ? "tool" : "target"},
     {"entity", std::to_string(d.entity_value)},
     {"no_structs", structs.count},
     {"structs", structs.rows},
     {"no_types", types.count},
     {"types", types.rows},
     {"no_enums", enums.count},
     {"enums", enums.rows},
     {"bt_info", table_name(d, tool ? "tool_bt_info" : "target_bt_info")},
     {"no_offsize", offsize.count},
     {"offsize", tool ? "nullptr" : offsize.rows},
     {"no_bit_map", no_rows ? "0" : bit_map.count},
     {"bit_map", bit_map.rows},
     {"no_rt_rules", rules.count},
     {"rt_rules", rules.rows},
     {"no_rt_types", rt_types.count},
     {"rt_types", rt_types.rows}});
}

void put_uuids(std::string &out, const model &m, std::string_view side)
{
    put(out, "static char $side$_uuids[TT_NO_DOMAINS][$size$] = {\n",
        {{"side", side}, {"size", std::to_string(m.baseline.size() + 1)}});
    for (std::size_t n = 0; n < no_domains; ++n)
        put(out, "    $baseline$,\n", {{"baseline", text_literal(m.baseline)}});
    out += "};\n";
}

void put_debug_records(std::string &out, const model &m, bool tool)
{
    out += '\n';
    put(out, "constinit rw_debug_info_struct tt_$side$_records[TT_NO_DOMAINS] = {\n",
        {{"side", tool ? "tool" : "target"}});
    for (const domain *d : by_entity(m))
        if (d != nullptr)
            put_debug_record(out, *d, tool);
        else
            out += "    {},\n";
    out += "};\n";
}

std::string debug_info_records(const model &m)
{
    std::string out;
    put_head(out, "The debug-info records of both sides, as they are loaded.", "the definitions of all domains");
    out += "#include <iterator>\n\n";
    put_includes(out, m);
    out += "\n// Each record has a copy of the baseline text that the host may write to.\n";
    put_uuids(out, m, "tool");
    put_uuids(out, m, "target");
    put_debug_records(out, m, true);
    put_debug_records(out, m, false);
    return out;
}

// ------------------------------------------------------------------------------------------------ registry rows

constexpr std::array<std::string_view, no_module_tables> module_table_names = {
    "file_codes", "peer_msgs", "proto_errors", "timers", "fsms", "states"};

void put_module_rows(std::string &out, const domain &d)
{
    for (std::size_t n = 0; n < no_module_tables; ++n) {
        if (d.module_tables[n].empty())
            continue;
        cell_table rows;
        for (const module_enum_row &row : d.module_tables[n]) {
            const bool state = static_cast<module_table>(n) == module_table::states;
            rows.add({state ? fmt::format("{} * 256 + {}", row.index / 256, row.index % 256)
                            : std::to_string(row.index),
                      text_literal(row.name)});
        }
        put_array(out, fmt::format("By module of the domain {}.", d.name),
                  fmt::format("static const tt_module_enum_row {}_{}[]", d.name, module_table_names[n]), rows);
    }
}

void put_domain_desc(std::string &out, const domain &d)
{
    put(out, R"(
    {
        .entity = $value$, // $entity$
        .file_code_enum = $file_codes$,
        .sap_enum = $saps$,
        .msg_enum = $messages$,
        .module_enum = $modules$,
        .channels_enum = $channels$,
        .error_actions_enum = $error_actions$,
        .peer_msg_param_enum = $peer_params$,
        .msg_table = $msg_table$,
        .context_struct = $context$,
)", {{"value", std::to_string(d.entity_value)},
     {"entity", d.entity},
     {"file_codes", text_literal(d.file_codes)},
     {"saps", text_literal(d.saps)},
     {"messages", text_literal(d.messages_enum)},
     {"modules", text_literal(d.modules)},
     {"channels", text_literal(d.channels)},
     {"error_actions", text_literal(d.error_actions)},
     {"peer_params", text_literal(d.peer_params)},
     {"msg_table", d.has_messages ? fmt::format("&{}", table_name(d, "msg_table")) : "nullptr"},
     {"context", text_literal(d.context)}});
    for (std::size_t n = 0; n < no_module_tables; ++n) {
        const std::string rows = d.name + "_" + std::string(module_table_names[n]);
        const bool        empty = d.module_tables[n].empty();
        put(out, "        .$table$ = {$list$},\n",
            {{"table", module_table_names[n]}, {"list", empty ? "0, nullptr" : fmt::format("std::size({0}), {0}", rows)}});
    }
    out += "    },\n";
}

/// An array of one pointer a domain.
void put_pointers(std::string &out, const model &m, std::string_view definition, std::string_view what)
{
    out += '\n';
    put(out, "$definition$[TT_NO_DOMAINS] = {\n", {{"definition", definition}});
    for (const domain *d : by_entity(m))
        out += d != nullptr ? fmt::format("    &{},\n", table_name(*d, what)) : "    nullptr,\n";
    out += "};\n";
}

void put_texts(std::string &out, const model &m)
{
    put(out, R"(
const char tt_baseline_text[] = $baseline$;
const char tt_version_text[] = $version$;
const char tt_variables_root[] = $variables$;
const char tt_entities_enum[] = $entities$;

)", {{"baseline", text_literal(m.baseline)},
     {"version", text_literal(m.version_text)},
     {"variables", text_literal(m.variables_root)},
     {"entities", text_literal(m.entities_enum)}});
}

// ------------------------------------------------------------------------------------- the one length function

/// The record that the rule with a length function is about: the one whose member has the rule's selector.
const record *length_record(const model &m)
{
    for (const domain &d : m.domains) {
        const auto rule = std::ranges::find(d.rt_rules, true, &rt_rule_row::has_length_func);
        if (rule == d.rt_rules.end())
            continue;
        for (const struct_row &s : d.structs)
            if (std::ranges::find(s.members, rule->selector, &member_row::rt_selector) != s.members.end())
                return &m.records[s.record_id];
    }
    return nullptr;
}

void put_length_function(std::string &out, const record &bits)
{
    put(out, R"(
/// A bit string is counted in bits: the octets behind its pointer.
rw_rt_length tt_asn_bits_length(const void *value)
{
    return {{0, 16, (static_cast<const $record$ *>(value)->$length$ + 7) / 8, 0}};
}

)", {{"record", bits.name}, {"length", bits.members.front().name}});
}

std::string stack_build(const model &m)
{
    const record *const bits = length_record(m);
    std::string         out;
    put_head(out, "The registry rows of the stack's domains and its texts.", "baseline.def");
    out += "#include <iterator>\n\n";
    put_includes(out, m);
    if (bits != nullptr)
        put(out, "#include \"$stem$.h\"\n", {{"stem", m.units[bits->unit_id].stem}});
    out += '\n';
    put_texts(out, m);
    if (bits != nullptr)
        put_length_function(out, *bits);
    for (const domain &d : m.domains)
        put_module_rows(out, d);
    out += "const tt_domain_desc tt_domain_descs[TT_NO_DOMAINS] = {\n";
    for (const domain *d : by_entity(m))
        if (d != nullptr)
            put_domain_desc(out, *d);
        else
            out += "    {},\n";
    out += "};\n";
    put_pointers(out, m, "const rw_offsize_sup_struct *const tt_offsize_sups", "offsize_sup");
    put_pointers(out, m, "const tt_value_desc_table *const tt_value_tables", "value_table");
    return out;
}

} // namespace

void emit_registry(const model &m, std::vector<output_file> &files)
{
    for (const domain &d : m.domains)
        files.push_back({"production/" + d.name + "_tables.h", tables_header(d)});
    files.push_back({"production/debug_info_records.cpp", debug_info_records(m)});
    files.push_back({"production/stack_build.cpp", stack_build(m)});
}

} // namespace solvane::gen
