// The message table of a domain and, where it is indexed, the dense index of its codes.
#include <fmt/format.h>

#include "emit/emit.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

std::string hex(std::uint32_t code)
{
    return fmt::format("0x{:X}", code);
}

/// The two domains whose index the look-ups of the library name.
bool is_looked_up(const domain &d)
{
    return d.name == "signal" || d.name == "lte";
}

void put_messages(std::string &out, const domain &d)
{
    cell_table rows;
    for (const message_row &r : d.messages)
        rows.add({hex(r.code), text_literal(r.name), std::to_string(r.sap_code), text_literal(r.sap_name),
                  text_literal(r.struct_name)});
    put_array(out, "Messages: code, name, access point, structure.", "static const tt_msg_row messages[]", rows);
}

void put_index_rows(std::string &out, const domain &d)
{
    cell_table rows;
    for (const std::uint32_t code : d.index_codes)
        rows.add({std::to_string(rows.rows.size()), hex(code)});
    put_array(out, "Codes by index; the first row and the last are sentinels.",
              "static const tt_msg_index_row index_rows[]", rows);
}

void put_ranges(std::string &out, const domain &d)
{
    cell_table rows;
    for (const message_range &r : d.ranges)
        rows.add({fmt::format("{{{}, {}}}", r.first_index, hex(r.first_code)),
                  fmt::format("{{{}, {}}}", r.last_index, hex(r.last_code))});
    put_array(out, "Runs of codes by their first and last row of the index.",
              "static const tt_msg_index_range ranges[]", rows);
}

void put_table(std::string &out, const domain &d)
{
    put(out, "const tt_msg_table $table$ = {$messages$, $index$};\n",
        {{"table", table_name(d, "msg_table")},
         {"messages", d.messages.empty() ? "0, nullptr" : "std::size(messages), messages"},
         {"index", d.indexed ? "std::size(index_rows), index_rows" : "0, nullptr"}});
}

void put_index(std::string &out, const domain &d)
{
    out += '\n';
    put(out, "const tt_msg_index $index$ = {$ranges$, $rows$};\n",
        {{"index", table_name(d, "msg_index")},
         {"ranges", d.ranges.empty() ? "0, nullptr" : "std::size(ranges), ranges"},
         {"rows", d.indexed ? "std::size(index_rows), index_rows" : "0, nullptr"}});
}

std::string messages_source(const domain &d)
{
    std::string out;
    put_head(out, "Messages of the domain " + d.name + ".", d.name + "/messages.tsv");
    out += "#include <iterator>\n\n" + tables_include(d) + '\n';
    put_messages(out, d);
    if (d.indexed)
        put_index_rows(out, d);
    if (is_looked_up(d))
        put_ranges(out, d);
    if (d.has_messages)
        put_table(out, d);
    else
        out += "// The domain has no messages.\n";
    if (is_looked_up(d))
        put_index(out, d);
    return out;
}

} // namespace

void emit_messages(const model &m, std::vector<output_file> &files)
{
    for (const domain &d : m.domains)
        files.push_back({"production/" + d.name + "_messages.cpp", messages_source(d)});
}

} // namespace solvane::gen
