// Damage done to what the agent sends, so that a host's manners can be tried.  All of it follows from the seed.
#pragma once

#include <cstdint>
#include <random>

#include "text.h"

namespace solvane::tools {

class faults {
public:
    /// About one frame in `one_in` is damaged, none with 0.
    faults(std::uint64_t one_in, std::uint32_t seed) : one_in_(one_in), random_(seed) {}

    /// The octets that go out for a packet: its frame, whole or damaged.
    octets frame(octets packet);
    std::uint64_t damaged() const { return damaged_; }

private:
    std::uint64_t one_in_;
    std::mt19937  random_;
    std::uint64_t damaged_ = 0;
};

} // namespace solvane::tools
