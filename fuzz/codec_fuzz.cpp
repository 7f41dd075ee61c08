// The codecs of one family of peer rows on any octets: they end, write nothing outside the structure and the buffer,
// and read no further than a fixed part behind the frame.  What came out of a frame packs, and what was packed comes
// out of its octets and packs the same again.
//
// Input: the number of the row in its family in two octets, then the frame.  SOLVANE_FUZZ_FAMILY is the family's
// identifier, SOLVANE_FUZZ_BEHIND the octets behind a frame that its codecs may look at (docs/trust.md).
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "solvane/solvane.h"
#include "tt_stack_build.h"

namespace {

constexpr std::size_t fixed_part = SOLVANE_FUZZ_BEHIND;
constexpr std::size_t room       = 1 << 20;

std::vector<void *> blocks;

void *lend(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    blocks.push_back(std::calloc(1, size != 0 ? size : 1));
    return blocks.back();
}

/// The old block stays until the end of the run: rows do not carry their release functions.
void *lend_more(void *block, std::size_t size, std::size_t old_size, std::uint8_t flag, std::uint16_t file_code,
                std::uint32_t line)
{
    void *const fresh = lend(size, flag, file_code, line);
    if (block)
        std::memcpy(fresh, block, old_size < size ? old_size : size);
    return fresh;
}

void keep(void *, std::uint8_t, std::uint16_t, std::uint32_t) {}

void use_our_memory()
{
    dll_info_version.alloc = dll_info_version.alloc_clear = lend;
    dll_info_version.realloc = dll_info_version.realloc_clear = lend_more;
    dll_info_version.free = dll_info_version.free_tagged = keep;
}

void give_back()
{
    for (void *block : blocks)
        std::free(block);
    blocks.clear();
}

using octets = std::vector<std::uint8_t>;

/// Unpacks into memory of exactly the row's size and packs what came out.
octets pack_again(const tt_peer_row &row, const std::uint8_t *data, std::size_t size)
{
    octets frame(data, data + size);
    frame.resize(size + fixed_part);
    const std::unique_ptr<void, decltype(&std::free)> value(std::calloc(1, row.size), std::free);
    PerError           error  = {};
    unpack_info_struct reader = {frame.data(), 0, static_cast<std::int32_t>(size), &error};
    row.unpack(value.get(), &reader);

    octets           out(room);
    pack_info_struct writer = {out.data(), 0};
    row.pack(&writer, value.get());
    out.resize((writer.bits + 7) / 8);
    return out;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    use_our_memory();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const tt_peer_family &family = tt_peer_families[SOLVANE_FUZZ_FAMILY];
    if (size < 2 || size > 4000 || family.count == 0)
        return 0;
    const tt_peer_row &row   = family.rows[(data[0] << 8U | data[1]) % family.count];
    const octets       first = pack_again(row, data + 2, size - 2);
    pack_again(row, first.data(), first.size());
    give_back();
    return 0;
}
