// The commands of solvane-host, one a file: cmd_<name>.cpp.
#pragma once

#include "command.h"

namespace solvane::tools {

command info_command();
command domains_command();
command types_command();
command type_command();
command enum_command();
command messages_command();
command message_command();
command value_command();
command record_command();
command connect_command();
command layout_command();
command show_command();
command trace_command();
command statements_command();
command classify_command();
command decode_command();
command encode_command();
command roundtrip_command();
command peers_command();
command convert_command();
command check_command();

/// All of them, as the tool's description.
const tool_spec &host_tool();

} // namespace solvane::tools
