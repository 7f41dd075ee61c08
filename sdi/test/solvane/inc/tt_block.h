// The heap behind the default memory slots: small blocks from free lists by size class, large ones from the C library.
//
//     block:   | size class, 8 octets | contents, 16-octet aligned ... |      a class is 16 octets of the sum
//
// Each thread keeps lists of its own and takes no lock for a block that it has; whole magazines of blocks move between
// the threads through one central store.  A block may be released by any thread.  Memory of small blocks is reused
// and never handed back to the system.
//
// The inline functions are the fast path for callers that know that the slots hold the defaults (tt_fp_init.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

enum : std::uint32_t {
    TT_BLOCK_STEP    = 16, ///< octets from one size class to the next
    TT_BLOCK_CLASSES = 64,
    TT_BLOCK_LARGE   = TT_BLOCK_CLASSES ///< what the head of a larger block says
};

/// Stands ahead of every block.
struct alignas(8) tt_block_head {
    std::uint32_t size_class;
};

/// A released block.
struct tt_free_block {
    tt_free_block *next;
};

/// The lists of a thread.
struct tt_block_lists {
    std::array<tt_free_block *, TT_BLOCK_CLASSES> free;
    std::array<std::uint32_t, TT_BLOCK_CLASSES>   room; ///< blocks that may join `free` until it is looked after
};

/// Null in a thread that has not had a block yet or is about to end.
extern constinit thread_local tt_block_lists *tt_blocks_here __attribute__((tls_model("initial-exec")));

/* The heap
 *   size     octets, 0 for a block of its own all the same
 *   answer   16-octet aligned contents, not zeroed; null when there is no memory
 *   resize   null for a new block; the contents stay as far as both sizes reach; on null the old block stays
 *   release  null is ignored  */

void *tt_block_alloc(std::size_t size);
void *tt_block_resize(void *block, std::size_t size);
void  tt_block_free(void *block);

/// The size class of `size` octets; TT_BLOCK_CLASSES or above for a large block.
constexpr std::size_t tt_block_class(std::size_t size)
{
    constexpr std::size_t fits = TT_BLOCK_STEP - sizeof(tt_block_head);
    return size / TT_BLOCK_STEP + (size % TT_BLOCK_STEP > fits);
}

/// A block from the thread's own list, or null when that is empty or the block is large.
inline void *tt_block_take(std::size_t size_class)
{
    tt_block_lists *const lists = tt_blocks_here;
    if (size_class >= TT_BLOCK_CLASSES || !lists || !lists->free[size_class])
        return nullptr;
    tt_free_block *const block = lists->free[size_class];
    lists->free[size_class]    = block->next;
    return block;
}

/// Whether `block` is one of `size_class`.
inline bool tt_block_is(const void *block, std::size_t size_class)
{
    return (static_cast<const tt_block_head *>(block) - 1)->size_class == size_class;
}

/// Puts `block`, which is not null, back into the thread's own list.  False when that is full or the block is large.
inline bool tt_block_give(void *block)
{
    tt_block_lists *const lists      = tt_blocks_here;
    const std::uint32_t   size_class = (static_cast<tt_block_head *>(block) - 1)->size_class;
    if (size_class >= TT_BLOCK_CLASSES || !lists || lists->room[size_class] == 0)
        return false;
    auto *const freed       = static_cast<tt_free_block *>(block);
    freed->next             = lists->free[size_class];
    lists->free[size_class] = freed;
    --lists->room[size_class];
    return true;
}

/// Zeroes a block of `size_class`, which is not large: to its end, in steps of 16 octets.
inline void tt_block_clear(void *block, std::size_t size_class)
{
    auto *at = static_cast<unsigned char *>(block);
    if (size_class > 7) {
        std::memset(block, 0, size_class * TT_BLOCK_STEP + sizeof(tt_block_head));
        return;
    }
    std::memset(at, 0, 8);
    for (at += 8; size_class > 0; --size_class, at += TT_BLOCK_STEP)
        std::memset(at, 0, TT_BLOCK_STEP);
}
