// What a field of 1, 8, 13 or 32 bits costs at random bit positions, beside two yardsticks in the same run: the
// textbook loop over the bits, and plain loads or stores of the same count from the octets in question.
//
// Each case alternates short rounds of the three and keeps the fastest of each, so that a noisy neighbour does not
// decide.  Reported per field in nanoseconds, with `loop_x` = loop / ours and `plain_x` = ours / plain.  The `walk`
// cases read or write fields one behind the other, as codecs do; the `run` cases move octets.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <random>
#include <vector>

#include "per_stream.h"

namespace {

constexpr std::uint32_t fields       = 2048;
constexpr std::uint32_t frame_octets = 4096;

struct scene {
    std::vector<std::uint8_t>  frame = std::vector<std::uint8_t>(frame_octets + 8);
    std::vector<std::uint32_t> positions;

    scene()
    {
        std::mt19937 random(20);
        for (auto &octet : frame)
            octet = static_cast<std::uint8_t>(random());
        for (std::uint32_t i = 0; i < fields; ++i)
            positions.push_back(random() % (frame_octets * 8));
    }
};

std::uint32_t loop_read(const std::uint8_t *frame, std::uint32_t bit, std::uint32_t n)
{
    std::uint32_t value = 0;
    for (std::uint32_t end = bit + n; bit < end; ++bit)
        value = value << 1 | (frame[bit >> 3] >> (7 - (bit & 7)) & 1u);
    return value;
}

void loop_write(std::uint8_t *frame, std::uint32_t bit, std::uint32_t n, std::uint32_t value)
{
    for (std::uint32_t end = bit + n; bit < end; ++bit) {
        const auto at = static_cast<std::uint8_t>(0x80 >> (bit & 7));
        if (value >> (end - bit - 1) & 1)
            frame[bit >> 3] = static_cast<std::uint8_t>(frame[bit >> 3] | at);
        else
            frame[bit >> 3] = static_cast<std::uint8_t>(frame[bit >> 3] & ~at);
    }
}

template <std::uint32_t n>
using plain_word =
    std::conditional_t<(n > 16), std::uint32_t, std::conditional_t<(n > 8), std::uint16_t, std::uint8_t>>;

// Alternates rounds of the three and leaves the fastest of each, in ns a field.
template <typename Ours, typename Loop, typename Plain>
void race(benchmark::State &state, Ours ours, Loop loop, Plain plain)
{
    std::array<double, 3> best = {1e9, 1e9, 1e9};
    const auto            time = [&](std::size_t which, auto &&run) {
        const auto start = std::chrono::steady_clock::now();
        run();
        const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
        best[which] = std::min(best[which], spent.count() / fields);
    };
    for (auto _ : state) {
        time(0, ours);
        time(1, loop);
        time(2, plain);
    }
    state.counters["ours_ns"]  = best[0];
    state.counters["loop_ns"]  = best[1];
    state.counters["plain_ns"] = best[2];
    state.counters["loop_x"]   = best[1] / best[0];
    state.counters["plain_x"]  = best[0] / best[2];
}

template <std::uint32_t n> void random_read(benchmark::State &state)
{
    const scene               it;
    const std::uint8_t *const frame = it.frame.data();
    race(
        state,
        [&] {
            for (const std::uint32_t bit : it.positions) {
                unpack_info_struct stream = {frame + (bit >> 3), bit, frame_octets, nullptr};
                benchmark::DoNotOptimize(per_get_bits(&stream, n));
            }
        },
        [&] {
            for (const std::uint32_t bit : it.positions)
                benchmark::DoNotOptimize(loop_read(frame, bit, n));
        },
        [&] {
            for (const std::uint32_t bit : it.positions) {
                plain_word<n> word;
                std::memcpy(&word, frame + (bit >> 3), sizeof word);
                benchmark::DoNotOptimize(word);
            }
        });
}

template <std::uint32_t n> void random_write(benchmark::State &state)
{
    scene               it;
    std::uint8_t *const frame = it.frame.data();
    race(
        state,
        [&] {
            for (const std::uint32_t bit : it.positions) {
                pack_info_struct stream = {frame + (bit >> 3), bit};
                per_put_bits(&stream, n, bit);
                benchmark::ClobberMemory();
            }
        },
        [&] {
            for (const std::uint32_t bit : it.positions) {
                loop_write(frame, bit, n, bit);
                benchmark::ClobberMemory();
            }
        },
        [&] {
            for (const std::uint32_t bit : it.positions) {
                const auto word = static_cast<plain_word<n>>(bit);
                std::memcpy(frame + (bit >> 3), &word, sizeof word);
                benchmark::ClobberMemory();
            }
        });
}

// Through a cursor that lives in memory, as it does in the codecs.
template <std::uint32_t n> void walk_read(benchmark::State &state)
{
    const std::vector<std::uint8_t> frame(fields * 4 + 8, 0x5A);
    race(
        state,
        [&] {
            unpack_info_struct stream = {frame.data(), 3, frame_octets, nullptr};
            for (std::uint32_t i = 0; i < fields; ++i) {
                benchmark::DoNotOptimize(per_get_bits(&stream, n));
                benchmark::DoNotOptimize(&stream);
                benchmark::ClobberMemory();
            }
        },
        [&] {
            for (std::uint32_t i = 0; i < fields; ++i)
                benchmark::DoNotOptimize(loop_read(frame.data(), i * n, n));
        },
        [&] {
            for (std::uint32_t i = 0; i < fields; ++i) {
                plain_word<n> word;
                std::memcpy(&word, frame.data() + i * sizeof word, sizeof word);
                benchmark::DoNotOptimize(word);
            }
        });
}

template <std::uint32_t n> void walk_write(benchmark::State &state)
{
    std::vector<std::uint8_t> frame(fields * 4 + 8);
    race(
        state,
        [&] {
            pack_info_struct stream = {frame.data(), 3};
            for (std::uint32_t i = 0; i < fields; ++i) {
                per_put_bits(&stream, n, i);
                benchmark::DoNotOptimize(&stream);
                benchmark::ClobberMemory();
            }
        },
        [&] {
            for (std::uint32_t i = 0; i < fields; ++i) {
                loop_write(frame.data(), i * n, n, i);
                benchmark::ClobberMemory();
            }
        },
        [&] {
            for (std::uint32_t i = 0; i < fields; ++i) {
                const auto word = static_cast<plain_word<n>>(i);
                std::memcpy(frame.data() + i * sizeof word, &word, sizeof word);
                benchmark::ClobberMemory();
            }
        });
}

// Runs of octets at a bit offset, per octet: beside one read or write an octet, and a copy.
template <std::uint32_t offset> void run_read(benchmark::State &state)
{
    const std::vector<std::uint8_t> frame(fields + 1, 0x5A);
    std::vector<std::uint8_t>       octets(fields);
    const unpack_info_struct        start = {frame.data(), offset, frame_octets, nullptr};
    race(
        state,
        [&] {
            unpack_info_struct stream = start;
            per_get_octets(&stream, octets.data(), fields);
            benchmark::ClobberMemory();
        },
        [&] {
            unpack_info_struct stream = start;
            for (auto &octet : octets)
                octet = static_cast<std::uint8_t>(per_get_8(&stream, 8));
            benchmark::ClobberMemory();
        },
        [&] {
            std::memcpy(octets.data(), frame.data(), fields);
            benchmark::ClobberMemory();
        });
}

template <std::uint32_t offset> void run_write(benchmark::State &state)
{
    std::vector<std::uint8_t>       frame(fields + 1);
    const std::vector<std::uint8_t> octets(fields, 0x5A);
    const pack_info_struct          start = {frame.data(), offset};
    race(
        state,
        [&] {
            pack_info_struct stream = start;
            per_put_octets(&stream, octets.data(), fields);
            benchmark::ClobberMemory();
        },
        [&] {
            pack_info_struct stream = start;
            for (const auto octet : octets)
                per_put_8(&stream, 8, octet);
            benchmark::ClobberMemory();
        },
        [&] {
            std::memcpy(frame.data(), octets.data(), fields);
            benchmark::ClobberMemory();
        });
}

BENCHMARK(random_read<1>);
BENCHMARK(random_read<8>);
BENCHMARK(random_read<13>);
BENCHMARK(random_read<32>);
BENCHMARK(random_write<1>);
BENCHMARK(random_write<8>);
BENCHMARK(random_write<13>);
BENCHMARK(random_write<32>);
BENCHMARK(walk_read<1>);
BENCHMARK(walk_read<8>);
BENCHMARK(walk_read<13>);
BENCHMARK(walk_read<32>);
BENCHMARK(walk_write<1>);
BENCHMARK(walk_write<8>);
BENCHMARK(walk_write<13>);
BENCHMARK(walk_write<32>);
BENCHMARK(run_read<0>);
BENCHMARK(run_read<3>);
BENCHMARK(run_write<0>);
BENCHMARK(run_write<3>);

} // namespace
