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
    chunk_tail out;
    out.first = out.whole = end_of_first(buffer);
    const auto rest = buffer.subspan(out.first);
    const auto last = std::find(rest.rbegin(), rest.rend(), delimiter);
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
    /* Behind the start of a frame stands the rest of the chunk, else nothing of it. */
    const auto end = out.cut ? std::find_if(rest.rbegin(), last, [](std::uint8_t octet) { return octet != 0; }) : last;
    out.whole += static_cast<std::size_t>(rest.rend() - end);
    return out;
}

} // namespace solvane::tools
