// The commands of solvane-agent, one a file: cmd_<name>.cpp.
#pragma once

#include "command.h"

namespace solvane::tools {

command play_command();

/// All of them, as the tool's description.
const tool_spec &agent_tool();

} // namespace solvane::tools
