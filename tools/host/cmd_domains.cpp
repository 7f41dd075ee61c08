#include <fmt/format.h>

#include "commands.h"
#include "json_out.h"
#include "session.h"

namespace solvane::tools {

namespace {

/* The texts of a registry row under the names of its fields. */
struct row_text {
    const char *name;
    const char *tt_entity_info::*field;
};

constexpr row_text row_texts[] = {
    {"file_code_enum", &tt_entity_info::file_code_enum},
    {"sap_enum", &tt_entity_info::sap_enum},
    {"msg_enum", &tt_entity_info::msg_enum},
    {"module_enum", &tt_entity_info::module_enum},
    {"channels_enum", &tt_entity_info::channels_enum},
    {"error_actions_enum", &tt_entity_info::error_actions_enum},
    {"peer_msg_param_enum", &tt_entity_info::peer_msg_param_enum},
    {"context_struct", &tt_entity_info::context_struct},
};

struct module_table {
    const char         *name;
    const tt_enum_name *tt_entity_info::*rows;
    std::uint32_t       count;
};

constexpr module_table module_tables[] = {
    {"module_file_codes", &tt_entity_info::module_file_codes, TT_NO_MODULES},
    {"module_peer_msgs", &tt_entity_info::module_peer_msgs, TT_NO_MODULES},
    {"module_proto_errors", &tt_entity_info::module_proto_errors, TT_NO_MODULES},
    {"module_timers", &tt_entity_info::module_timers, TT_NO_MODULES},
    {"module_fsms", &tt_entity_info::module_fsms, TT_NO_MODULES},
    {"module_states", &tt_entity_info::module_states, TT_NO_MODULE_STATES},
};

const char *text_or_empty(const char *text)
{
    return text != nullptr ? text : "";
}

/* States are numbered module x 256 + machine and shown as module.machine. */
std::string row_number(std::uint32_t index, std::uint32_t count)
{
    return count == TT_NO_MODULES ? std::to_string(index) : fmt::format("{}.{}", index / 256, index % 256);
}

json describe(const domain &each)
{
    json out = json_object("domain");
    out["domain"] = json_enum(each.number, each.name);
    out["baseline"] = text_or_empty(each.row->uuid);
    out["structures"] = each.types->no_structs;
    out["types"] = each.types->no_types;
    out["enumerations"] = each.types->no_enums;
    out["bit_fields"] = each.types->no_bit_map;
    out["layout_entries"] = each.types->no_offsize;
    out["run_time_rules"] = each.types->no_rt_rules;
    out["run_time_types"] = each.types->no_rt_types;
    out["messages"] = each.messages().size();
    out["indexed_messages"] = each.row->msg_table != nullptr ? each.row->msg_table->index_count : 0;
    for (const auto &text : row_texts) {
        out[text.name] = text_or_empty(each.row->*text.field);
    }
    return out;
}

json describe_modules(const domain &each)
{
    json out = json::object();
    for (const auto &table : module_tables) {
        const tt_enum_name *rows = each.row->*table.rows;
        for (std::uint32_t i = 0; rows != nullptr && i < table.count; ++i) {
            if (rows[i][0] != '\0') {
                out[table.name][row_number(i, table.count)] = rows[i];
            }
        }
    }
    return out;
}

void print_summary(session &work)
{
    work.line(
        work.paint(ink::name, fmt::format("{:>2} {:<15}{:>8}{:>8}{:>8}{:>11}{:>9}  {}", "", "domain", "structs",
                                          "types", "enums", "bit-fields", "messages", "messages are named by")));
    for (const auto &each : work.domains()) {
        work.line(fmt::format("{:>2} ", each.number) + work.paint.padded(ink::module, each.name, 15) +
                  fmt::format("{:>8}{:>8}{:>8}{:>11}{:>9}  {}", each.types->no_structs, each.types->no_types,
                              each.types->no_enums, each.types->no_bit_map, each.messages().size(),
                              text_or_empty(each.row->msg_enum)));
    }
}

void print_details(session &work, const json &all)
{
    for (const auto &[key, value] : all.items()) {
        if (key == "schema") {
            continue;
        }
        if (key == "domain") {
            work.line(work.paint(ink::module, value["text"].get<std::string>()));
        } else if (!value.is_object()) {
            const auto text = value.is_string() ? value.get<std::string>() : value.dump();
            work.line("    " + work.paint.padded(ink::name, key, 22) + text);
        } else {
            for (const auto &[table, rows] : value.items()) {
                for (const auto &[number, name] : rows.items()) {
                    work.line("    " + work.paint.padded(ink::name, fmt::format("{} {}", table, number), 30) +
                              name.get<std::string>());
                }
            }
        }
    }
}

int run(session &work, bool details)
{
    if (!work.settings.json && !details) {
        print_summary(work);
        return work.result();
    }
    for (const auto &each : work.domains()) {
        json all = describe(each);
        if (details) {
            all["modules"] = describe_modules(each);
        }
        if (work.settings.json) {
            work.line(json_line(all));
        } else {
            print_details(work, all);
        }
    }
    return work.result();
}

} // namespace

command domains_command()
{
    const auto details = std::make_shared<bool>(false);
    return {
        "domains",
        "the stack's domains and the sizes of their dictionaries",
        "",
        {{"domains", "a line a domain"},
         {"domains --details --domain stack", "the names that its registry row gives, per-module tables included"}},
        {},
        {{"--details", "", "all of a registry row", details.get()}},
        [details](session &work) { return run(work, *details); },
    };
}

} // namespace solvane::tools
