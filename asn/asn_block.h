// Blocks of decoded values on the hot paths: what AsnMemAlloc and AsnMemFree do, inlined where the memory slots hold
// the defaults (tt_fp_init.h) and the thread has a block at hand.  In all other cases the slots are called.
#pragma once

#include <cstring>

#include "asn_heap.h"
#include "solvane/solvane.h"
#include "tt_block.h"
#include "tt_fp_init.h"

/// The trailing arguments of an allocation.
struct asn_tag {
    std::uint8_t  flag;
    std::uint16_t file_code;
    std::uint32_t line;
};

/// AsnMemAlloc by the slots alone.
void *asn_alloc_by_slot(std::size_t size, const asn_tag &tag);

inline bool asn_alloc_is_default()
{
    return tt_slots_have_classes && dll_info_version.alloc_clear == tt_slot_alloc &&
           dll_info_version.memset_clear == std::memset;
}

inline bool asn_realloc_is_default()
{
    return asn_alloc_is_default() && dll_info_version.realloc_clear == tt_slot_realloc;
}

inline bool asn_free_is_default()
{
    return tt_slots_have_classes && dll_info_version.free_tagged == tt_slot_free;
}

/// AsnMemAlloc; `is_default` is the answer of asn_alloc_is_default.
inline void *asn_alloc(bool is_default, std::size_t size, const asn_tag &tag)
{
    if (is_default) {
        const std::size_t size_class = tt_block_class(size);
        if (void *const block = tt_block_take(size_class)) {
            tt_block_clear(block, size_class);
            return block;
        }
    }
    return asn_alloc_by_slot(size, tag);
}

/// AsnMemFree; `is_default` is the answer of asn_free_is_default.
inline void asn_free(bool is_default, void *block, const asn_tag &tag)
{
    if (is_default && (!block || tt_block_give(block)))
        return;
    dll_info_version.free_tagged(block, tag.flag, tag.file_code, tag.line);
}
