// The packets that host and agent exchange: one octet, the report or command code, then the body, which is the wire
// form of the structure that belongs to the code.  Numbers in a body go most significant octet first.  Traces and
// inter-layer messages are read and made here, all other bodies by wire_form.h.  See docs/recordings.md.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "mta_service_def.h"
#include "solvane/solvane.h"
#include "text.h"

namespace solvane::tools {

enum report_code : std::uint8_t {
    report_trace = MTA_TT_TRACE,      ///< an inter-layer message
    report_trace_id = MTA_TT_TRACEID, ///< a trace statement with its arguments as text
    /// A trace statement with its arguments as words.  The target's list has no code for this layout, so the one
    /// behind its last is taken; the body is the layout itself.
    report_trace_words = MTA_NUM_OF_RESPS,
};

/// The structure behind a code octet, or null for a code that there is none of.
const char *report_struct(std::uint8_t code);
const char *command_struct(std::uint8_t code);

/// Numbers appended to a body, most significant octet first; `size` in octets.
void put_number(octets &out, std::uint64_t value, unsigned size);

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
