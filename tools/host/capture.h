// Recordings as solvane-host writes them: who made them, and what Wireshark is to see in them.
#pragma once

#include <optional>
#include <string>

#include "recording.h"
#include "session.h"

namespace solvane::tools {

/// The baseline of the plug-in.
std::string baseline_of(const plugin &loaded);

/// A writer whose section header names the tool and the plug-in's interface and baseline, so that a reader years later
/// knows which plug-in to take.
recording_writer recording_to(pcapng_writer::sink to, session &work);

/// What Wireshark dissects of a packet: a trace as a log record, a message as that of its structure's dissector; other
/// packets have none.
std::optional<octets> decoded_record(session &work, const packet &what);

} // namespace solvane::tools
