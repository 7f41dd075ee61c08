// Decoded messages and traces for Wireshark: records of the link type "upper PDU" (252), each of which names the
// dissector that is to read it.
//
// A record is a list of tags: two octets for the tag, two for the length of the value, and the value filled up to a
// multiple of four; all most significant octet first, tag 0 at the end, then the octets themselves.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "text.h"
#include "trace_line.h"

namespace solvane::tools {

/// The dissector that reads the octets of this peer structure; empty when Wireshark has none for it.
std::string_view dissector_of(std::string_view structure);

/// A message for that dissector (tag 12).
octets upper_pdu(std::string_view dissector, std::span<const std::uint8_t> message);

/// A trace as a log record of type 16 of the GSMTAP dissectors (tags 14 and 32): time, module, file, line and text.
octets log_record(const trace_line &line, std::optional<std::int64_t> time);

} // namespace solvane::tools
