// Takes a stream of octets apart into the packets of its frames, undoing the escapes with the plug-in's own code.
//
// A channel of the plug-in looks at the first frame of what it reads at once; here every frame counts, so the octets
// that a channel passes over can be had, and an agent can read a host that writes fast.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "text.h"

namespace solvane::tools {

/// A frame around `packet`, as a channel sends it.
octets frame_of(std::span<const std::uint8_t> packet);

class frame_splitter {
public:
    /// Longest packet; a frame that holds more counts as octets outside of frames.
    explicit frame_splitter(std::size_t longest) : longest_(longest) {}

    void feed(std::span<const std::uint8_t> octets);
    /// The next whole packet; empty frames are passed over.
    std::optional<octets> next();

    /// Octets so far that belong to no frame: between frames, or of a frame that was too long.
    std::uint64_t stray() const { return stray_; }
    /// Octets of a frame that has begun and not ended, its delimiter included.
    std::size_t pending() const { return waiting_.size(); }

private:
    octets        waiting_; ///< from an opening delimiter on
    std::size_t   longest_;
    std::uint64_t stray_ = 0;
};

} // namespace solvane::tools
