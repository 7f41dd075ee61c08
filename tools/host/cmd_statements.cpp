#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "session.h"
#include "trace_filter.h"

namespace solvane::tools {

namespace {

struct statements_options {
    std::string         id;
    bool                modules = false;
    trace_filter_words  filter;
};

const char *status_word(std::uint32_t status)
{
    switch (status) {
    case TSC_DIS_SINGLE: return "single";
    case TSC_DIS_ARGS: return "args";
    case TSC_DIS_RESERVED: return "reserved";
    case TSC_DIS_HEAD: return "head";
    case TSC_DIS_LAST: return "last";
    default: return "unknown";
    }
}

std::string place_text(const tsc_trace_full_info &full)
{
    const std::string file = full.file != nullptr ? full.file : "";
    return file.empty() ? "" : fmt::format("({}:{})", file, full.line);
}

void show(session &work, std::uint32_t id, const tsc_trace_full_info &full)
{
    const tsc_db_mod_struct &module = work.started().info->tsc_db_get()->mod_list[full.mod_row];
    if (work.settings.json) {
        json out = json_object("statement");
        out["id"] = id;
        out["module"] = json_enum(full.mod_row, full.mod_name);
        out["number"] = id - module.start_trace_id;
        out["format"] = full.trace_format;
        out["status"] = json_enum(full.status, status_word(full.status));
        out["file"] = full.file;
        out["line"] = full.line;
        work.line(json_line(out));
        return;
    }
    work.line(work.paint(ink::number, fmt::format("{:#010x}", id)) + " " +
              work.paint.padded(ink::module, fmt::format("{}+{}", full.mod_name, id - module.start_trace_id), 14) + " " +
              fmt::format("{:<6} ", status_word(full.status)) + one_line(full.trace_format) + "  " +
              work.paint(ink::note, place_text(full)));
}

int show_modules(session &work)
{
    const tsc_db_info_struct &db = *work.started().info->tsc_db_get();
    for (std::uint32_t i = 0; i < db.mod_num; ++i) {
        const tsc_db_mod_struct &row = db.mod_list[i];
        if (work.settings.json) {
            json out = json_object("trace-module");
            out["module"] = json_enum(i, row.mod_name);
            out["start_id"] = row.start_trace_id;
            out["units"] = row.unit_num;
            work.line(json_line(out));
        } else {
            work.line(fmt::format("{:>3} ", i) + work.paint(ink::number, fmt::format("{:#010x}", row.start_trace_id)) +
                      " " + work.paint(ink::module, row.mod_name));
        }
    }
    return work.result();
}

int show_one(session &work, const std::string &text)
{
    const auto          id = parse_number(text);
    tsc_trace_full_info full = {};
    if (!id || *id > 0xFFFFFFFFU) {
        throw failure(exit_usage, fmt::format("{} is no trace id", text));
    }
    if (work.started().info->tsc_trace_lookup_full(static_cast<std::uint32_t>(*id), &full) == 0) {
        throw failure(exit_findings, fmt::format("no trace statement {:#x}", *id));
    }
    show(work, static_cast<std::uint32_t>(*id), full);
    return work.result();
}

int run(session &work, const statements_options &options)
{
    if (options.modules) {
        return show_modules(work);
    }
    if (!options.id.empty()) {
        return show_one(work, options.id);
    }
    const auto                &info = *work.started().info;
    const tsc_db_info_struct  &db = *info.tsc_db_get();
    const trace_filter         filter(options.filter, work.started());
    bool                       any = false;
    for (std::uint32_t i = 0; i < db.total; ++i) {
        tsc_trace_full_info full = {};
        info.tsc_trace_lookup_full(db.db[i].trace_id, &full);
        if (filter.passes({db.db[i].trace_id, {full.mod_name}, full.file, full.trace_format})) {
            show(work, db.db[i].trace_id, full);
            any = true;
        }
    }
    if (!any) {
        work.finding("no trace statement fits");
    }
    return work.result();
}

} // namespace

command statements_command()
{
    const auto options = std::make_shared<statements_options>();
    command    out = {
        "statements",
        "the target's trace statements: ids, formats, source places",
        "",
        {{"statements 0x80003", "one statement by its id"},
         {"statements --module SDI --grep connect", "those of a module whose format fits"},
         {"statements --modules", "the modules with their first ids"}},
        {{"ID", "a trace id", &options->id, false}},
        {{"--modules", "", "the modules instead", &options->modules}},
        [options](session &work) { return run(work, *options); },
    };
    const auto filters = filter_options(options->filter);
    out.options.insert(out.options.end(), filters.begin(), filters.end());
    return out;
}

} // namespace solvane::tools
