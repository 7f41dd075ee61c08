// Lines of a stream for people and for programs: traces, and what could not be read.
#pragma once

#include <string>

#include "json_out.h"
#include "session.h"
#include "trace_line.h"

namespace solvane::tools {

inline constexpr std::size_t module_column = 8; ///< characters

/// "[time] MODULE  text  (file.c:153)"; `time` is that of time_format.
std::string trace_text(const session &work, const std::string &time, const trace_line &line);
json        trace_json(const packet &what, const trace_line &line);

/// A packet that could not be read, in the place where its text would have stood.
std::string bad_packet_line(const session &work, const std::string &time, const packet &what, const std::string &why);
json        bad_packet_json(std::string_view schema, const packet &what, const std::string &why);

/// Any line: time, a word in the module's column, text, and a remark behind it or none.
std::string stream_line(const session &work, const std::string &time, ink colour, const std::string &head,
                        const std::string &text, const std::string &remark);

/// An object with the packet's number, time and direction.
json packet_json(std::string_view schema, const packet &what);

} // namespace solvane::tools
