// What the agent plays: packets with the times at which they are due, taken from a recording or made up from the tables
// of a plug-in.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "session.h"
#include "text.h"

namespace solvane::tools {

struct timed_packet {
    std::int64_t at = 0; ///< nanoseconds from the start of the session
    octets       content;
};

/// The packets that a target sent in a recording; traces in integer layout get the report code that carries them.
/// Bad places are findings.  Throws `failure`.
std::vector<timed_packet> recorded_run(session &work, const std::string &path);

/// `count` packets of every kind: traces in both layouts with arguments that fit their formats, inter-layer messages,
/// prints, a log and a failed assertion.  The same seed makes the same run.
std::vector<timed_packet> made_up_run(const plugin &loaded, std::size_t count, std::uint32_t seed);

} // namespace solvane::tools
