// An inter-layer message on its way through the library: which structure its octets hold, and their decoding into it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "agent_packet.h"
#include "plugin.h"
#include "recording.h"

namespace solvane::tools {

/// Whether a packet is the report of an inter-layer message.
bool carries_message(const packet &what);

/// What the library made of a message.
struct verdict {
    bool        died = false;
    std::string name; ///< empty: no peer structure applies
};

/// Asks for the structure of a message to `entity`.  What the library may not survive is asked in a child process.
verdict classify(const plugin &loaded, layer_message message, std::uint8_t entity);

/// The row of the peer table with that name, or null.
const tt_peer_row *peer_row(const plugin &loaded, const std::string &name);

/// Gives the library's codecs memory of ours, to be called before the start.  `release_memory` takes back all that
/// they took since, so a decoded value needs no function of its own to be released.
void lend_memory(dll_info_version_struct &slots);
void release_memory();

/// A decoded message.  It lives until `release_memory`, and as long as this object.
struct decoded_message {
    octets                     message; ///< with zero octets behind it, for reads that do not look at its end
    std::vector<std::uint64_t> value;   ///< the structure, aligned
    std::size_t                octets_used = 0;
    PerError                   error = {};
    bool                       died = false;

    std::span<const std::uint8_t> memory(const tt_peer_row &row) const
    {
        return {reinterpret_cast<const std::uint8_t *>(value.data()), row.size};
    }
    std::span<std::uint8_t> memory(const tt_peer_row &row)
    {
        return {reinterpret_cast<std::uint8_t *>(value.data()), row.size};
    }
};

/// Decodes octets of the air interface.  With `isolate` a child process tries it first.
decoded_message decode_peer(const tt_peer_row &row, const octets &message, bool isolate);

/// A structure as octets of the air interface, the last one filled up with zero bits.
struct encoded_message {
    octets      message;
    std::size_t bits = 0;
    bool        died = false;
};

/// Encodes the structure in `value`, which is aligned and may be changed by the codec (values out of range are put
/// right).  `room` is the number of octets that the codec may write.  With `isolate` a child process tries it first.
encoded_message encode_peer(const tt_peer_row &row, std::span<std::uint8_t> value, std::size_t room, bool isolate);

} // namespace solvane::tools
