// solvane-agent as data: its commands and the options that all of them take.
#include "agent.h"

namespace solvane::tools {

const tool_spec &agent_tool()
{
    static const tool_spec tool = {
        "solvane-agent",
        "stands in for the agent of a target and plays a session to the host that connects",
        [] { return std::vector<command>{play_command(), completion_command(), man_command()}; },
        basic_options,
        {{"0", "done"},
         {"1", "done with findings: a bad packet in the recording"},
         {"2", "usage"},
         {"3", "cannot load, open or listen"},
         {"4", "interface mismatch"},
         {"130", "interrupted"}},
        {{"SOLVANE_LIB", "the plug-in, where --lib does not name it"}},
        "play",
    };
    return tool;
}

} // namespace solvane::tools
