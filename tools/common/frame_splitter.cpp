#include "frame_splitter.h"

#include <algorithm>
#include <cstdlib>

#include "com_frame.h"

namespace solvane::tools {

namespace {

constexpr std::uint8_t delimiter = 0x7E;
constexpr std::size_t  least_decoded = 4; /* octets; the plug-in passes over frames that are shorter */

/* `frame` goes from delimiter to delimiter.  What is too short for the plug-in holds one octet that needs no escape. */
octets packet_of(std::span<const std::uint8_t> frame)
{
    if (frame.size() < least_decoded) {
        return {frame.begin() + 1, frame.end() - 1};
    }
    std::uint8_t *packet = nullptr;
    std::uint32_t length = 0;
    DecodeData(frame.data(), static_cast<std::uint32_t>(frame.size()), &packet, &length);
    return packet != nullptr ? octets(packet, packet + length) : octets();
}

} // namespace

octets frame_of(std::span<const std::uint8_t> packet)
{
    std::uint8_t *frame = nullptr;
    std::uint32_t length = 0;
    if (EncodeData(packet.data(), static_cast<std::uint32_t>(packet.size()), &frame, &length) == 0) {
        std::abort(); /* no memory */
    }
    octets out(frame, frame + length);
    std::free(frame);
    return out;
}

void frame_splitter::feed(std::span<const std::uint8_t> octets)
{
    waiting_.insert(waiting_.end(), octets.begin(), octets.end());
}

std::optional<octets> frame_splitter::next()
{
    for (;;) {
        const auto open = std::find(waiting_.begin(), waiting_.end(), delimiter);
        stray_ += static_cast<std::uint64_t>(open - waiting_.begin());
        waiting_.erase(waiting_.begin(), open);
        const auto close = waiting_.size() < 2 ? waiting_.end()
                                               : std::find(waiting_.begin() + 1, waiting_.end(), delimiter);
        if (close == waiting_.end()) {
            return std::nullopt;
        }
        const auto size = static_cast<std::size_t>(close - waiting_.begin()) + 1;
        octets     packet = packet_of(std::span(waiting_).first(size));
        const bool fits = packet.size() <= longest_ && !packet.empty();
        stray_ += fits || size == 2 ? 0 : size;
        waiting_.erase(waiting_.begin(), close + 1);
        if (fits) {
            return packet;
        }
    }
}

} // namespace solvane::tools
