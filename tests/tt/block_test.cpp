// The heap behind the default slots: blocks keep apart, are reused, and pass between threads without getting lost.
#include "tt_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "solvane/solvane.h"
#include "tt_fp_init.h"

namespace {

struct filled_block {
    unsigned char *at;
    std::size_t    size;
    unsigned char  mark;
};

filled_block fill(void *block, std::size_t size, unsigned char mark)
{
    std::memset(block, mark, size);
    return {static_cast<unsigned char *>(block), size, mark};
}

bool holds(const filled_block &block)
{
    return std::all_of(block.at, block.at + block.size, [&](unsigned char octet) { return octet == block.mark; });
}

TEST(Block, OfEverySizeIsAlignedAndApartFromTheOthers)
{
    std::vector<filled_block> blocks;
    for (std::size_t size = 0; size < 2000; ++size)
        blocks.push_back(fill(tt_block_alloc(size), size, static_cast<unsigned char>(size)));
    for (const filled_block &block : blocks) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.at) % 16, 0u) << block.size;
        EXPECT_TRUE(holds(block)) << block.size;
    }
    for (const filled_block &block : blocks)
        tt_block_free(block.at);
    tt_block_free(nullptr);
}

TEST(Block, ResizeKeepsTheContentsBetweenAllKindsOfSizes)
{
    const std::size_t sizes[] = {0, 1, 8, 9, 24, 25, 300, 504, 1016, 1017, 5000, 100000};
    for (const std::size_t from : sizes)
        for (const std::size_t to : sizes) {
            auto *const block = static_cast<unsigned char *>(tt_block_resize(nullptr, from));
            fill(block, from, 0x5A);
            auto *const resized = static_cast<unsigned char *>(tt_block_resize(block, to));
            EXPECT_TRUE(holds({resized, std::min(from, to), 0x5A})) << from << " to " << to;
            fill(resized, to, 0xA5);
            tt_block_free(resized);
        }
}

TEST(Block, ClearsToTheEndOfItsClassAndNoFurther)
{
    for (std::size_t size_class = 0; size_class < TT_BLOCK_CLASSES; ++size_class) {
        const std::size_t          room = size_class * 16 + 8;
        std::vector<unsigned char> octets(room + 1, 0xEE);
        tt_block_clear(octets.data(), size_class);
        EXPECT_EQ(std::count(octets.begin(), octets.end(), 0), static_cast<std::ptrdiff_t>(room));
        EXPECT_EQ(octets.back(), 0xEE);
        EXPECT_EQ(tt_block_class(room), size_class);
        EXPECT_EQ(tt_block_class(room + 1), size_class + 1);
    }
}

TEST(Block, ReleasedBlocksAreReused)
{
    std::set<void *> first, second;
    for (std::set<void *> *blocks : {&first, &second}) {
        for (int n = 0; n < 1000; ++n)
            blocks->insert(tt_block_alloc(40));
        EXPECT_EQ(blocks->size(), 1000u);
        for (void *const block : *blocks)
            tt_block_free(block);
    }
    EXPECT_EQ(first, second);
}

TEST(Block, NoMemoryAnswersNull)
{
    EXPECT_EQ(tt_block_alloc(SIZE_MAX), nullptr);
    EXPECT_EQ(tt_block_alloc(SIZE_MAX - 20), nullptr);
    void *const block = tt_block_alloc(9);
    EXPECT_EQ(tt_block_resize(block, SIZE_MAX), nullptr);
    tt_block_free(block);
}

// More blocks than the lists of a thread hold are made in one thread and released in the other, round after round:
// they come back through the store, so the count of different blocks stays that of one round or little more.
TEST(Block, ReleasedByAnotherThreadComesBack)
{
    constexpr std::size_t   round = 40000;
    std::set<void *>        seen;
    std::vector<void *>     blocks;
    std::mutex              lock;
    std::condition_variable changed;
    int                     turn = 0, rounds_left = 5;
    std::thread             other([&] {
        for (;;) {
            std::unique_lock hold(lock);
            changed.wait(hold, [&] { return turn == 1 || rounds_left == 0; });
            if (rounds_left == 0)
                return;
            for (void *const block : blocks)
                tt_block_free(block);
            turn = 0;
            changed.notify_all();
        }
    });
    for (; rounds_left > 0;) {
        std::unique_lock hold(lock);
        changed.wait(hold, [&] { return turn == 0; });
        blocks.clear();
        for (std::size_t n = 0; n < round; ++n)
            blocks.push_back(tt_block_alloc(24));
        seen.insert(blocks.begin(), blocks.end());
        turn = 1;
        changed.notify_all();
        changed.wait(hold, [&] { return turn == 0; });
        --rounds_left;
        changed.notify_all();
    }
    other.join();
    EXPECT_LT(seen.size(), 2 * round);
}

// Threads that come and go leave nothing behind: what they had is had again by those that follow.
TEST(Block, OfAThreadThatEndedIsReused)
{
    std::set<void *> seen;
    for (int n = 0; n < 50; ++n)
        std::thread([&] {
            std::vector<void *> blocks;
            for (int count = 0; count < 500; ++count)
                blocks.push_back(tt_block_alloc(56));
            seen.insert(blocks.begin(), blocks.end());
            for (void *const block : blocks)
                tt_block_free(block);
        }).join();
    EXPECT_LT(seen.size(), 1500u);
}

// Random sizes in several threads, every block released by whichever thread comes across it.
TEST(Block, HoldsUnderThreads)
{
    std::mutex                lock;
    std::vector<filled_block> shared;
    std::vector<std::thread>  threads;
    const unsigned            seed = std::random_device{}();
    SCOPED_TRACE(seed);
    for (unsigned id = 0; id < 4; ++id)
        threads.emplace_back([&, id] {
            std::mt19937 random(seed + id);
            for (int n = 0; n < 20000; ++n) {
                const std::size_t  size  = random() % 64 == 0 ? random() % 3000 : random() % 100;
                const filled_block mine  = fill(tt_block_alloc(size), size, static_cast<unsigned char>(random()));
                filled_block       other = {};
                {
                    const std::lock_guard hold(lock);
                    shared.push_back(mine);
                    std::swap(shared[random() % shared.size()], shared.back());
                    if (shared.size() > 2000) {
                        other = shared.back();
                        shared.pop_back();
                    }
                }
                if (other.at) {
                    ASSERT_TRUE(holds(other));
                    tt_block_free(other.at);
                }
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const filled_block &block : shared) {
        EXPECT_TRUE(holds(block));
        tt_block_free(block.at);
    }
}

TEST(BlockSlots, AreTheDefaultsAndEndTheProcessWithoutMemory)
{
    EXPECT_EQ(dll_info_version.alloc, tt_slot_alloc);
    EXPECT_EQ(dll_info_version.alloc_clear, tt_slot_alloc);
    EXPECT_EQ(dll_info_version.realloc_clear, tt_slot_realloc);
    EXPECT_EQ(dll_info_version.free_tagged, tt_slot_free);
    if (tt_slots_have_classes) {
        EXPECT_DEATH(dll_info_version.alloc(SIZE_MAX, 0, 0, 0),
                     "Assertion failed: ret_ptr != 0, file tt_fp_init, line 33");
        EXPECT_DEATH(dll_info_version.realloc(nullptr, SIZE_MAX, 0, 0, 0, 0),
                     "Assertion failed: ret_ptr != 0, file tt_fp_init, line 42");
    }
}

} // namespace
