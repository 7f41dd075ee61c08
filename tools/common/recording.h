// Recorded runs: packets with time and direction, read from pcapng, from a text script or plain hex, or from a
// .logel file of what was sent; written as pcapng or as a script.  See docs/recordings.md.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "byte_source.h"
#include "pcapng.h"
#include "plugin.h"
#include "text.h"

namespace solvane::tools {

enum class packet_kind {
    agent,    ///< code octet and body
    integers, ///< a trace in integer layout, with no code octet
    note,     ///< what became of the connection, in `note`; no octets
    other     ///< of an interface that is not ours
};

struct packet {
    std::uint64_t               number = 0; ///< in the recording, from 1
    std::optional<std::int64_t> time;       ///< nanoseconds since 1970-01-01 UTC
    direction                   way = direction::unknown;
    packet_kind                 kind = packet_kind::agent;
    octets                      content;
    std::string                 note;
    std::string                 complaint;  ///< not empty: no packet could be made of this place
};

class packet_source {
public:
    virtual ~packet_source() = default;
    /// The next packet, or nothing at the end.  Throws `failure` when the recording itself is damaged.
    virtual std::optional<packet> next() = 0;
    virtual bool                  is_live() const = 0;
};

/// Gives the plug-in to a script that names traces instead of numbering them; called when the first name comes.
using plugin_provider = std::function<const plugin &()>;

/// Opens a recording and finds out what it is.  Throws `failure` (exit_cannot_open).
std::unique_ptr<packet_source> open_recording(const std::string &path, plugin_provider names);
std::unique_ptr<packet_source> read_recording(byte_source from, plugin_provider names);

/// Writes packets as pcapng: interface 0 agent packets and notes, 1 what was decoded, 2 integer traces.
class recording_writer {
public:
    recording_writer(pcapng_writer::sink to, const std::string &tool, const std::string &baseline);
    /// Packets of other kinds are left out: false.
    bool write(const packet &what);
    /// What was made of a packet, as a record of `upper_pdu.h`.
    void write_decoded(const packet &of, const octets &record);

private:
    pcapng_writer writer_;
};

} // namespace solvane::tools
