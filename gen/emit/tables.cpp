// `<domain>_tables.h`: what the sources of a domain define for the records that tie the domains together.
#include "emit/tables.h"

#include <algorithm>

#include "emit/text.h"

namespace solvane::gen {

std::string table_name(const domain &d, std::string_view what)
{
    return "tt_" + d.name + "_" + std::string(what);
}

std::string tables_include(const domain &d)
{
    return "#include \"" + d.name + "_tables.h\"\n";
}

std::string domain_input(const domain &d)
{
    return d.name + "/ and what it imports";
}

std::string tables_header(const domain &d)
{
    cell_table arrays;
    const auto declare = [&](std::string_view type, std::string_view what, std::size_t rows) {
        if (rows != 0)
            arrays.add({"extern " + std::string(type), table_name(d, what) + "[" + std::to_string(rows) + "];"});
    };
    const std::size_t bit_map_rows = std::max<std::size_t>(d.bit_fields.size(), 1);
    declare("const rw_struct_row", "structs", d.structs.size());
    declare("const rw_type_row", "types", d.types.size());
    declare("const rw_enum_row", "enums", d.enums.size());
    declare("const rw_rt_rule_row", "rt_rules", d.rt_rules.size());
    declare("const rw_rt_type_row", "rt_types", d.rt_types.size());
    declare("rw_offsize_type", "target_offsize", d.offsize.size());
    declare("mta_bit_map_struct", "tool_bit_map", bit_map_rows);
    declare("mta_bit_map_struct", "target_bit_map", bit_map_rows);

    const auto declare_one = [&](std::string_view type, std::string_view what) {
        arrays.add({"extern " + std::string(type), table_name(d, what) + ";"});
    };
    declare_one("rw_bt_info", "tool_bt_info");
    declare_one("rw_bt_info", "target_bt_info");
    declare_one("const rw_offsize_sup_struct", "offsize_sup");
    if (d.has_messages)
        declare_one("const tt_msg_table", "msg_table");
    declare_one("const tt_value_desc_table", "value_table");

    std::string out;
    put_head(out, "Tables of the domain " + d.name + ".", domain_input(d));
    out += "#pragma once\n\n#include \"tt_stack_build.h\"\n\n";
    put_columns(out, arrays, "");
    if (std::ranges::any_of(d.rt_rules, &rt_rule_row::has_length_func))
        out += "\nrw_rt_length tt_asn_bits_length(const void *value);\n";
    return out;
}

} // namespace solvane::gen
