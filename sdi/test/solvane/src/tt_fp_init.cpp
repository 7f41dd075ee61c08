// The service record of the library: version and the slots through which all codecs reach memory and formatted
// printing.  Complete at load time by constant initialisation, so that a host can read it, and put its own
// routines into it, before init_dll.  The library itself never writes to it.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "solvane/solvane.h"
#include "tt_assert.h"

namespace {

void *alloc_block(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *ret_ptr = std::malloc(size);
    tt_assert(ret_ptr != nullptr, "ret_ptr != 0", "tt_fp_init", 33);
    return ret_ptr;
}

void *resize_block(void *block, std::size_t new_size, std::size_t, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *ret_ptr = std::realloc(block, new_size);
    tt_assert(ret_ptr != nullptr, "ret_ptr != 0", "tt_fp_init", 42);
    return ret_ptr;
}

void free_block(void *block, std::uint8_t, std::uint16_t, std::uint32_t)
{
    std::free(block);
}

} // namespace

// Each pair shares a function: the second of a pair serves the zeroing wrappers, which clear the block themselves.
constinit dll_info_version_struct dll_info_version = {
    .version_text = "1.0",
    .version_number = 1,
    .alloc = alloc_block,
    .alloc_clear = alloc_block,
    .realloc = resize_block,
    .realloc_clear = resize_block,
    .free = free_block,
    .free_tagged = free_block,
    .memset = std::memset,
    .memset_clear = std::memset,
    .memcpy = std::memcpy,
    .memcmp = std::memcmp,
    .exit = std::exit,
    .sprintf = std::sprintf,
};
