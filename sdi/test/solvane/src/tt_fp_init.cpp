// The service record of the library: version and the slots through which all codecs reach memory and formatted
// printing.  Complete at load time by constant initialisation, so that a host can read it, and put its own
// routines into it, before init_dll.  The library itself never writes to it.
//
// The default memory slots lead to the size-class heap of tt_block.h.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "solvane/solvane.h"
#include "tt_assert.h"
#include "tt_block.h"
#include "tt_fp_init.h"

void *tt_slot_alloc(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *ret_ptr = tt_slots_have_classes ? tt_block_alloc(size) : std::malloc(size);
    tt_assert(ret_ptr != nullptr, "ret_ptr != 0", "tt_fp_init", 33);
    return ret_ptr;
}

void *tt_slot_realloc(void *block, std::size_t new_size, std::size_t, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *ret_ptr = tt_slots_have_classes ? tt_block_resize(block, new_size) : std::realloc(block, new_size);
    tt_assert(ret_ptr != nullptr, "ret_ptr != 0", "tt_fp_init", 42);
    return ret_ptr;
}

void tt_slot_free(void *block, std::uint8_t, std::uint16_t, std::uint32_t)
{
    if (tt_slots_have_classes)
        tt_block_free(block);
    else
        std::free(block);
}

// Each pair shares a function: the second of a pair serves the zeroing wrappers, which clear the block themselves.
constinit dll_info_version_struct dll_info_version = {
    .version_text = "1.0",
    .version_number = 1,
    .alloc = tt_slot_alloc,
    .alloc_clear = tt_slot_alloc,
    .realloc = tt_slot_realloc,
    .realloc_clear = tt_slot_realloc,
    .free = tt_slot_free,
    .free_tagged = tt_slot_free,
    .memset = std::memset,
    .memset_clear = std::memset,
    .memcpy = std::memcpy,
    .memcmp = std::memcmp,
    .exit = std::exit,
    .sprintf = std::sprintf,
};
