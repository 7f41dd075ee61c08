// The trace table: all items in one array, complete at load time.
#include <fmt/format.h>

#include "emit/emit.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

constexpr std::uint32_t ids_of_module = 0x80000;

std::string_view status_text(std::uint32_t status)
{
    switch (status) {
    case 0x00: return "TSC_DIS_SINGLE";
    case 0x01: return "TSC_DIS_ARGS";
    case 0xFE: return "TSC_DIS_HEAD";
    case 0xFF: return "TSC_DIS_LAST";
    default: return {};
    }
}

// By hand and not by a cell_table: a full stack has more than a hundred thousand items.
void put_items(std::string &out, const model &m)
{
    out += "// Items: id, format, status, file, line.\nstatic const tsc_db_item_struct items[] = {\n";
    for (const trace_item &item : m.traces) {
        const std::string_view status = status_text(item.status);
        fmt::format_to(std::back_inserter(out), "    {{0x{:08X}, {}, {}, {}, {}}},\n", item.id,
                       text_literal(item.format),
                       status.empty() ? std::to_string(item.status) : std::string(status),
                       text_literal(item.file), item.line);
    }
    out += "};\n\n";
}

void put_modules(std::string &out, const model &m)
{
    cell_table rows;
    for (const std::string &name : m.trace_modules) {
        const std::size_t row = rows.rows.size();
        rows.add({fmt::format("0x{:08X}", row * ids_of_module), text_literal(name), "1"}, std::to_string(row));
    }
    put_array(out, "Modules: first id, name, units.", "static const tsc_db_mod_struct modules[]", rows);
}

/// The first item at or behind each module's first id.
void put_first_items(std::string &out, const model &m)
{
    cell_table  rows;
    std::size_t at = 0;
    for (std::size_t module = 0; module < m.trace_modules.size(); ++module) {
        while (at < m.traces.size() && m.traces[at].id < module * ids_of_module)
            ++at;
        rows.add({std::to_string(at)}, m.trace_modules[module]);
    }
    put_array(out, "Where the items of each module begin.", "const std::uint32_t tsc_mod_first_item[]", rows);
}

} // namespace

void emit_traces(const model &m, std::vector<output_file> &files)
{
    std::string out;
    put_head(out, "The trace statements of the stack.", "traces/");
    out += "#include <iterator>\n\n#include \"tt_stack_build.h\"\n\n";
    if (!m.traces.empty())
        put_items(out, m);
    put_modules(out, m);
    put_first_items(out, m);
    put(out, "constinit const tsc_db_info_struct tsc_db_info = {\"tsc_db\", $items$, $modules$};\n",
        {{"items", m.traces.empty() ? "nullptr, 0" : "items, std::size(items)"},
         {"modules", m.trace_modules.empty() ? "nullptr, 0" : "modules, std::size(modules)"}});
    files.push_back({"production/tsc_db.cpp", std::move(out)});
}

} // namespace solvane::gen
