// solvane-host as data: its commands and the options that all of them take.
#include "commands.h"

namespace solvane::tools {

namespace {

std::vector<command> commands()
{
    return {info_command(),      domains_command(), types_command(),      type_command(),    enum_command(),
            messages_command(),  message_command(), value_command(),      record_command(),  statements_command(),
            connect_command(),   show_command(),    layout_command(),     trace_command(),   peers_command(),
            classify_command(),  decode_command(),  encode_command(),     roundtrip_command(), convert_command(),
            check_command(),     completion_command(), man_command()};
}

std::vector<option_spec> common(common_settings &into)
{
    auto                           options = basic_options(into);
    const std::vector<option_spec> more = {
        {"--domain", "D", "only this domain: stack, lte, ..., its number or ENTITY_ name", &into.domain, {},
         completes::domain_name},
        {"--json", "", "one JSON object a line", &into.json},
        {"--color", "WHEN", "auto, always or never; NO_COLOR is heeded", &into.colour, {"auto", "always", "never"}},
    };
    options.insert(options.begin() + 1, more.begin(), more.end());
    return options;
}

} // namespace

const tool_spec &host_tool()
{
    static const tool_spec tool = {
        "solvane-host",
        "reads a modem stack's debug information out of its plug-in",
        commands,
        common,
        {{"0", "done"},
         {"1", "done with findings: an unknown name, a bad frame, a difference"},
         {"2", "usage"},
         {"3", "cannot load, open or connect"},
         {"4", "interface or baseline mismatch"},
         {"5", "an expectation was not met in time"},
         {"6", "the decoder died in isolation"},
         {"130", "interrupted"}},
        {{"SOLVANE_LIB", "the plug-in, where --lib does not name it"}, {"NO_COLOR", "no colours"}},
    };
    return tool;
}

} // namespace solvane::tools
