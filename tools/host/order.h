// A command to the target from words: its code's name or number and its values, or a packet in hex.
#pragma once

#include <string>

#include "session.h"

namespace solvane::tools {

/// "MTA_TT_VERSION_REQ", "33", "MTA_TT_SET_VAR_REQ {\"from\":1,\"ral\":[2,0],\"value\":[7]}" or "packet 2121".  The
/// values are JSON by the names of the structure's members; what is left out is 0, counts follow.  Throws `failure`
/// (exit_usage).
octets order_of(session &work, const std::string &words);

/// A command without values.
octets bare_order(std::uint8_t code);

} // namespace solvane::tools
