#include "chunk_tail.h"

#include <algorithm>

#include "frame_splitter.h"

namespace solvane::tools {

namespace {

constexpr std::uint8_t delimiter = 0x7E;
constexpr std::uint8_t escape = 0x7D;

/* Where the channel stops reading: the first delimiter that is neither the first octet nor escaped. */
std::size_t end_of_first(std::span<const std::uint8_t> buffer)
{
    std::size_t at = 1;
    while (at < buffer.size() && buffer[at] != delimiter) {
        at += buffer[at] == escape ? 2 : 1;
    }
    return std::min(at + 1, buffer.size());
}

} // namespace

chunk_tail tail_of(std::span<const std::uint8_t> buffer)
{
    const auto rest = buffer.subspan(end_of_first(buffer));
    const auto last = std::find(rest.rbegin(), rest.rend(), delimiter);
    chunk_tail out;
    if (last == rest.rend()) {
        return out;
    }
    frame_splitter splitter(buffer.size());
    splitter.feed(rest.first(static_cast<std::size_t>(rest.rend() - last)));
    while (auto packet = splitter.next()) {
        out.packets.push_back(std::move(*packet));
    }
    out.stray = splitter.stray();
    out.cut = splitter.pending() != 0;
    return out;
}

} // namespace solvane::tools
