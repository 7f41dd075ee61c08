// The heap behind the default memory slots: what the thread's own lists cannot serve.
//
// A thread has two magazines a class: the list in use and a spare.  After each magazine's worth of releases the list
// becomes the spare, and the spare goes to the central store; an empty list takes the spare back, or a magazine of the
// store.  So the store is asked once in a magazine's worth of blocks at most, and taking a block counts nothing.
#include "tt_block.h"

#include <cstdlib>
#include <mutex>

constinit thread_local tt_block_lists *tt_blocks_here = nullptr;

namespace {

constexpr std::size_t magazine_size = std::size_t{1} << 18; // octets of blocks that make a full magazine
constexpr std::size_t carve_size    = 4096;                 // octets of blocks made at once
constexpr std::size_t area_size     = std::size_t{1} << 16; // octets asked from the C library at once

constexpr std::size_t stride_of(std::size_t size_class)
{
    return (size_class + 1) * TT_BLOCK_STEP;
}

constexpr std::uint32_t magazine_room(std::size_t size_class)
{
    return static_cast<std::uint32_t>(magazine_size / stride_of(size_class));
}

tt_block_head *head_of(void *block)
{
    return static_cast<tt_block_head *>(block) - 1;
}

// ------------------------------------------------------------------------------------------------ central store

// Released blocks of one class: no more than `magazine_room` of them.
struct magazine {
    tt_free_block *blocks = nullptr;
};

// One that no thread has.
struct stored_magazine {
    magazine         blocks;
    stored_magazine *next;
};

constinit std::mutex                                       store_lock;
constinit std::array<stored_magazine *, TT_BLOCK_CLASSES> store{};

// False when there is no memory for the record; the blocks are then still the caller's.
bool store_magazine(std::size_t size_class, magazine blocks)
{
    auto *const stored = static_cast<stored_magazine *>(std::malloc(sizeof(stored_magazine)));
    if (!stored)
        return false;
    const std::lock_guard hold(store_lock);
    *stored           = {blocks, store[size_class]};
    store[size_class] = stored;
    return true;
}

// An empty magazine when there is none.
magazine fetch_magazine(std::size_t size_class)
{
    stored_magazine *stored;
    {
        const std::lock_guard hold(store_lock);
        stored = store[size_class];
        if (!stored)
            return {};
        store[size_class] = stored->next;
    }
    const magazine blocks = stored->blocks;
    std::free(stored);
    return blocks;
}

// ------------------------------------------------------------------------------------------------ of a thread

// Memory that is not carved yet; its first block's head stands at `at`.
struct uncarved {
    unsigned char *at     = nullptr;
    std::size_t    octets = 0;
};

// As many new blocks as `octets` octets of `area` give.
magazine carve(uncarved &area, std::size_t octets, std::size_t size_class)
{
    const std::size_t stride = stride_of(size_class);
    magazine          made;
    for (std::size_t end = octets - octets % stride; end > 0; end -= stride) {
        unsigned char *const contents = area.at + end - stride + sizeof(tt_block_head);
        head_of(contents)->size_class = static_cast<std::uint32_t>(size_class);
        auto *const block             = reinterpret_cast<tt_free_block *>(contents);
        block->next                   = made.blocks;
        made.blocks                   = block;
    }
    area.at += octets - octets % stride;
    area.octets -= octets - octets % stride;
    return made;
}

// All that a thread owns.  What is left at its end goes to the central store; blocks that are released later, by
// destructors that run behind this one, go there one by one.
struct thread_heap {
    tt_block_lists                           lists{};
    std::array<magazine, TT_BLOCK_CLASSES> spare{};
    uncarved                                 area;

    thread_heap()
    {
        for (std::size_t n = 0; n < TT_BLOCK_CLASSES; ++n)
            lists.room[n] = magazine_room(n);
        tt_blocks_here = &lists;
    }
    ~thread_heap()
    {
        tt_blocks_here = nullptr;
        gone           = true;
        for (std::size_t n = 0; n < TT_BLOCK_CLASSES; ++n)
            for (const magazine &left : {magazine{lists.free[n]}, spare[n]})
                if (left.blocks)
                    store_magazine(n, left);
        const magazine rest = carve(area, area.octets, leftover_class);
        if (rest.blocks)
            store_magazine(leftover_class, rest);
    }
    thread_heap(const thread_heap &)            = delete;
    thread_heap &operator=(const thread_heap &) = delete;

    static constexpr std::size_t         leftover_class = 1; // the one of list nodes
    static constinit thread_local bool gone;
};
constinit thread_local bool thread_heap::gone = false;

// Null at the end of a thread.
thread_heap *own_heap()
{
    if (thread_heap::gone)
        return nullptr;
    static thread_local thread_heap heap;
    return &heap;
}

// New blocks out of the thread's area; none when there is no memory.
magazine new_blocks(uncarved &area, std::size_t size_class)
{
    constexpr std::size_t first_head = TT_BLOCK_STEP - sizeof(tt_block_head);
    if (area.octets < stride_of(size_class)) {
        auto *const octets = static_cast<unsigned char *>(std::aligned_alloc(TT_BLOCK_STEP, area_size));
        if (!octets)
            return {};
        area = {octets + first_head, area_size - TT_BLOCK_STEP};
    }
    return carve(area, area.octets < carve_size ? area.octets : carve_size, size_class);
}

// Fills the thread's empty list: from its spare, the central store or new memory.
bool refill(thread_heap &heap, std::size_t size_class)
{
    magazine found = heap.spare[size_class];
    if (found.blocks)
        heap.spare[size_class] = {};
    else
        found = fetch_magazine(size_class);
    if (!found.blocks)
        found = new_blocks(heap.area, size_class);
    heap.lists.free[size_class] = found.blocks;
    return found.blocks != nullptr;
}

// Moves the thread's list, which may be full, to its spare, and that into the central store.  Without memory for that
// the list simply goes on growing.
void drain(thread_heap &heap, std::size_t size_class)
{
    magazine &spare = heap.spare[size_class];
    if (!spare.blocks || store_magazine(size_class, spare)) {
        spare.blocks                = heap.lists.free[size_class];
        heap.lists.free[size_class] = nullptr;
    }
    heap.lists.room[size_class] = magazine_room(size_class);
}

// ------------------------------------------------------------------------------------------------ large blocks

constexpr std::size_t large_offset = TT_BLOCK_STEP; // of the contents

void *contents_of_large(void *base)
{
    if (!base)
        return nullptr;
    void *const contents          = static_cast<unsigned char *>(base) + large_offset;
    head_of(contents)->size_class = TT_BLOCK_LARGE;
    return contents;
}

void *base_of_large(void *block)
{
    return static_cast<unsigned char *>(block) - large_offset;
}

bool is_large(void *block)
{
    return head_of(block)->size_class >= TT_BLOCK_CLASSES;
}

void *alloc_large(std::size_t size)
{
    return size > PTRDIFF_MAX ? nullptr : contents_of_large(std::malloc(size + large_offset));
}

std::size_t room_of_small(void *block)
{
    return stride_of(head_of(block)->size_class) - sizeof(tt_block_head);
}

} // namespace

void *tt_block_alloc(std::size_t size)
{
    const std::size_t size_class = tt_block_class(size);
    if (void *const block = tt_block_take(size_class))
        return block;
    if (size_class >= TT_BLOCK_CLASSES)
        return alloc_large(size);
    thread_heap *const heap = own_heap();
    if (!heap)
        return alloc_large(size);
    return heap->lists.free[size_class] || refill(*heap, size_class) ? tt_block_take(size_class) : nullptr;
}

void *tt_block_resize(void *block, std::size_t size)
{
    if (!block)
        return tt_block_alloc(size);
    if (is_large(block))
        return size > PTRDIFF_MAX ? nullptr
                                  : contents_of_large(std::realloc(base_of_large(block), size + large_offset));
    const std::size_t room = room_of_small(block);
    if (size <= room && size > room / 2)
        return block;
    void *const moved = tt_block_alloc(size);
    if (!moved)
        return nullptr;
    std::memcpy(moved, block, size < room ? size : room);
    tt_block_free(block);
    return moved;
}

void tt_block_free(void *block)
{
    if (!block || tt_block_give(block))
        return;
    if (is_large(block)) {
        std::free(base_of_large(block));
        return;
    }
    const std::uint32_t size_class = head_of(block)->size_class;
    if (thread_heap *const heap = own_heap()) {
        if (heap->lists.room[size_class] == 0)
            drain(*heap, size_class);
        tt_block_give(block);
        return;
    }
    auto *const last = static_cast<tt_free_block *>(block);
    last->next       = nullptr;
    store_magazine(size_class, {last}); // without memory for the record the block is lost
}
