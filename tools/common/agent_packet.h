// The packets that host and agent exchange, as far as this tool reads and makes them: one octet, the report or
// command code, then the body.  Numbers in a body go most significant octet first.  See docs/recordings.md.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "solvane/solvane.h"
#include "text.h"

namespace solvane::tools {

enum report_code : std::uint8_t {
    report_trace = 0,     ///< an inter-layer message
    report_trace_id = 18, ///< a trace statement with its arguments as text
};

/// The string layout of a trace: id, count of argument octets, argument texts each ended by an octet 1.
struct string_trace {
    std::uint32_t                 id = 0;
    std::span<const std::uint8_t> arguments;
    std::size_t                   surplus = 0; ///< octets behind the arguments
};

/// Reads a body; nothing when it is shorter than it says, with the reason in `complaint`.
std::optional<string_trace> parse_string_trace(std::span<const std::uint8_t> body, std::string &complaint);

/// The argument texts; the last one need not be ended.
std::vector<std::string> argument_texts(std::span<const std::uint8_t> arguments);

/// A whole packet.  Every argument is ended, as agents do.
octets make_string_trace(std::uint32_t id, std::span<const std::string> arguments);

/// An inter-layer message as a report carries it; the entities are not in it.
struct layer_message {
    std::uint32_t frame_number = 0;
    std::uint8_t  src_mod_id = 0;
    std::uint8_t  dest_mod_id = 0;
    std::uint8_t  sap_id = 0;
    std::uint16_t msg_id = 0;
    octets        local_params;
    octets        peer;
};

std::optional<layer_message> parse_layer_message(std::span<const std::uint8_t> body, std::string &complaint);

/// A whole packet, with no time stamp.
octets make_layer_message(const layer_message &message);

/// The record that the classification looks at; it points into `message`.
tt_msg_struct as_record(const layer_message &message, std::uint8_t entity);

} // namespace solvane::tools
