#include "faults.h"

#include <algorithm>

#include "agent_packet.h"
#include "frame_splitter.h"

namespace solvane::tools {

namespace {

constexpr std::size_t longest_garbage = 40; /* octets */

/* A bit of the packet is turned round. */
octets flipped(octets packet, std::uint32_t where)
{
    packet[where % packet.size()] ^= static_cast<std::uint8_t>(1U << (where / 7 % 8));
    return frame_of(packet);
}

/* The packet ends in its middle. */
octets shortened(octets packet)
{
    packet.resize(1 + packet.size() / 2);
    return frame_of(packet);
}

/* A frame without its end runs into the next one. */
octets unended(const octets &packet)
{
    octets frame = frame_of(packet);
    frame.resize(1 + frame.size() / 2);
    return frame;
}

/* Octets between the frames. */
octets with_garbage(const octets &packet, std::mt19937 &random)
{
    octets frame(1 + random() % longest_garbage);
    std::generate(frame.begin(), frame.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    const octets whole = frame_of(packet);
    frame.insert(frame.end(), whole.begin(), whole.end());
    return frame;
}

/* An escape in front of the closing delimiter hides it. */
octets hidden_end(const octets &packet)
{
    octets frame = frame_of(packet);
    frame.insert(frame.end() - 1, 0x7D);
    return frame;
}

} // namespace

octets faults::frame(octets packet)
{
    if (one_in_ == 0 || random_() % one_in_ != 0 || packet.empty()) {
        return frame_of(packet);
    }
    ++damaged_;
    switch (random_() % 6) {
    case 0: return flipped(std::move(packet), static_cast<std::uint32_t>(random_()));
    case 1: return shortened(std::move(packet));
    case 2: return unended(packet);
    case 3: return with_garbage(packet, random_);
    case 4: return hidden_end(packet);
    default:
        packet[0] = static_cast<std::uint8_t>(report_trace_words + 1 + random_() % 200); /* no report has such a code */
        return frame_of(packet);
    }
}

} // namespace solvane::tools
