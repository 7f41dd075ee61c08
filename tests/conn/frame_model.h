// The rules of framing, written octet by octet: what the library is held against.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "com_frame.h"

using octets = std::vector<std::uint8_t>;

struct decoded {
    std::optional<octets> data; ///< none: a null pointer
    bool                  complete = false;

    bool operator==(const decoded &) const = default;
};

inline octets model_encoded(const octets &payload)
{
    octets frame = {0x7E};
    for (const std::uint8_t octet : payload) {
        if (octet == 0x7D || octet == 0x7E) {
            frame.push_back(0x7D);
            frame.push_back(octet ^ 0x20);
        } else {
            frame.push_back(octet);
        }
    }
    frame.push_back(0x7E);
    return frame;
}

inline decoded model_decode(const octets &chunk, std::uint8_t behind = 0)
{
    if (chunk.size() < 4)
        return {std::nullopt, true};
    const auto  at = [&](std::size_t n) { return n < chunk.size() ? chunk[n] : behind; };
    std::size_t index = 1;
    std::size_t count = 0;
    while (index < chunk.size() - 1 && chunk[index] != 0x7E) {
        if (chunk[index] == 0x7D)
            ++index;
        ++count;
        ++index;
    }
    const bool complete = at(index) == 0x7E;
    if (count > 65536)
        return {std::nullopt, true};

    octets stored;
    for (std::size_t n = 0; n < chunk.size(); ++n) {
        if (chunk[n] == 0x7E) {
            if (n == 0)
                continue;
            break;
        }
        if (chunk[n] == 0x7D)
            stored.push_back(at(++n) ^ 0x20);
        else
            stored.push_back(chunk[n]);
    }
    return {stored, complete};
}

/// What a reader makes of chunks: the packets that it hands on, and the one in the making.
struct model_reader {
    std::vector<octets>                     packets;
    octets                                  packet;
    std::array<std::uint8_t, COM_READ_SIZE> buffer{}; ///< each chunk lies over what is left of those before

    void take(const octets &chunk)
    {
        std::copy(chunk.begin(), chunk.end(), buffer.begin());
        const std::uint8_t behind = chunk.size() < buffer.size() ? buffer[chunk.size()] : std::uint8_t{0};
        const decoded      result = model_decode(chunk, behind);
        if (result.data)
            packet.insert(packet.end(), result.data->begin(), result.data->end());
        if (!result.complete)
            return;
        if (!packet.empty())
            packets.push_back(packet);
        packet.clear();
    }
};
