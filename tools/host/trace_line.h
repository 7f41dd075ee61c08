// A recorded trace as a line: text, module and source place, from the library's trace decoders.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugin.h"
#include "recording.h"
#include "trace_format.h"

namespace solvane::tools {

/// An argument of a trace; `name` is that of an @TAG<name> marker behind its conversion.
struct trace_argument {
    std::string name;
    std::string value;
};

struct trace_line {
    std::uint32_t               id = 0;
    bool                        integer_layout = false;
    bool                        known = false;
    std::string                 text;      ///< as the library answers it, error words included
    std::string                 complaint; ///< not empty: the packet holds no whole trace
    std::uint32_t               module_row = 0xFFFFFFFF;
    std::string                 module;
    std::string                 file;
    std::int32_t                line = 0;
    std::string                 format;
    std::vector<trace_argument> arguments;
    bool                        wrong_count = false; ///< fewer arguments than the format wants
    bool                        died = false;        ///< the decoder did not survive it
};

/// Decodes the trace in `what`; nothing when it is another packet.  A line that the library would not survive (it
/// ends the process on lines of 1024 characters and more) is decoded in a child process.
std::optional<trace_line> decode_trace(const plugin &loaded, const packet &what, bool isolate_all = false);

} // namespace solvane::tools
