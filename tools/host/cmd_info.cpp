#include <array>

#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

/* The capabilities that a host may ask a build for. */
constexpr std::array<const char *, 10> feature_tags = {
    "CTC Gen",  "CTC Gen II", "Gprs Scheme",      "offsize index 32", "W Entity",
    "TRACE ID", "W base SDI", "TRACE ID Integer", "DB Item Ext Info", "DB Item Full Info"};

struct info_options {
    bool        no_init = false;
    std::string baseline;
};

std::string baseline_of(const std::vector<domain> &domains)
{
    return domains.empty() || domains[0].row->uuid == nullptr ? "" : domains[0].row->uuid;
}

/* All domains of one library come from one stack build. */
void check_baselines(session &work, const std::string &expected)
{
    const auto        all = domains_of(work.started());
    const std::string first = baseline_of(all);
    for (const auto &each : all) {
        for (const char *text :
             {static_cast<const char *>(each.row->uuid), static_cast<const char *>(each.types->uuid)}) {
            if (text == nullptr || first != text) {
                work.finding(fmt::format("domain {} is of baseline {}, {} of {}", each.name,
                                         text != nullptr ? text : "(none)", all[0].name, first));
            }
        }
    }
    if (!expected.empty() && expected != first) {
        throw failure(exit_mismatch,
                      fmt::format("{} is of baseline {}, expected was {}", work.started().path, first, expected));
    }
}

json features_of(const plugin &loaded)
{
    json out = json::object();
    for (const char *tag : feature_tags) {
        out[tag] = loaded.info->dll_feature_supported(tag) != 0;
    }
    return out;
}

json collect(session &work, bool no_init)
{
    const plugin &loaded = work.loaded();
    json          out = json_object("info");
    out["library"] = loaded.path;
    out["interface"] = loaded.version->version_text;
    out["interface_number"] = loaded.version->version_number;
    out["started"] = !no_init;
    if (no_init) {
        return out;
    }
    const auto   &info = *work.started().info;
    const auto    all = domains_of(loaded);
    std::uint64_t structs = 0, types = 0, enums = 0, messages = 0, fields = 0;
    for (const auto &each : all) {
        structs += each.types->no_structs;
        types += each.types->no_types;
        enums += each.types->no_enums;
        messages += each.messages().size();
        fields += each.types->no_bit_map;
    }
    out["baseline"] = baseline_of(all);
    out["version"] = all.empty() || all[0].row->version_text == nullptr ? "" : all[0].row->version_text;
    out["pointer_octets"] = all.empty() ? 0 : basic_size(all[0], RW_KIND_VOID);
    out["byte_order"] = all.empty() ? "" : little_endian(all[0]) ? "little-endian" : "big-endian";
    out["domains"] = all.size();
    out["structures"] = structs;
    out["types"] = types;
    out["enumerations"] = enums;
    out["bit_fields"] = fields;
    out["messages"] = messages;
    out["peers"] = loaded.peers->count;
    out["trace_statements"] = info.tsc_db_total();
    out["trace_modules"] = info.tsc_db_mod_num();
    out["variables_root"] = info.var_access_root != nullptr ? info.var_access_root : "";
    out["entities"] = info.entity_enum_name != nullptr ? info.entity_enum_name : "";
    out["features"] = features_of(loaded);
    return out;
}

void print_info(session &work, const json &all)
{
    for (const auto &[key, value] : all.items()) {
        if (key == "schema" || value.is_object()) {
            continue;
        }
        std::string label = key;
        std::replace(label.begin(), label.end(), '_', ' ');
        const std::string text = value.is_string() ? value.get<std::string>()
                                 : value.is_boolean() ? (value.get<bool>() ? "yes" : "no") : value.dump();
        work.line(work.paint.padded(ink::name, label, 18) + text);
    }
    const auto features = all.find("features");
    for (auto it = features != all.end() ? features->begin() : json::const_iterator();
         features != all.end() && it != features->end(); ++it) {
        work.line(work.paint.padded(ink::name, "feature", 18) + fmt::format("{:<18}", it.key()) +
                  (it.value().get<bool>() ? "yes" : work.paint(ink::bad, "no")));
    }
}

int run(session &work, const info_options &options)
{
    const json all = collect(work, options.no_init);
    if (work.settings.json) {
        work.line(json_line(all));
    } else {
        print_info(work, all);
    }
    if (!options.no_init) {
        check_baselines(work, options.baseline);
    }
    return work.result();
}

} // namespace

command info_command()
{
    const auto options = std::make_shared<info_options>();
    return {
        "info",
        "versions, baseline, counts and features of the plug-in",
        "",
        {{"info", "everything about the library next to the tool"},
         {"--lib build/libsolvane.so info --no-init", "only what it says before it is started"},
         {"info --expect SOLVANE_V2_22C_W23.06.6", "exit code 4 when it is of another stack build"}},
        {},
        {{"--no-init", "", "do not start the library", &options->no_init},
         {"--expect", "BASELINE", "the stack build that it must be of", &options->baseline}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
