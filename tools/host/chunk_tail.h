// What a channel of the plug-in passes over in the octets that it read at once.
//
// The channel hands out the first frame of a chunk and drops what stands behind it, and it tells nobody.  The receive
// buffer is the host's own, so when a packet comes the dropped octets still stand there: whole frames among them are
// packets like any other, and what cannot be had back can at least be told.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "text.h"

namespace solvane::tools {

struct chunk_tail {
    std::vector<octets> packets; ///< of the whole frames behind the first one
    std::uint64_t       stray = 0; ///< octets there that belong to no frame
    bool                cut = false; ///< a frame began and did not end: the channel drops its beginning
    std::size_t         first = 0;   ///< octets of the chunk that the first frame takes, its delimiters included
    std::size_t         whole = 0;   ///< octets of the chunk as far as they are known
};

/// Looks at the receive buffer behind the first frame.  The buffer must have been zeroed before the chunks of this
/// packet were read into it; octets of earlier chunks behind the last one do not matter, since a delimiter in them
/// would have ended the packet.
chunk_tail tail_of(std::span<const std::uint8_t> buffer);

} // namespace solvane::tools
