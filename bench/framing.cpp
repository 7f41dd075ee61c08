// Framing in octets of payload a second: EncodeData and DecodeData over random octets, over text without a special
// octet, and over nothing but special octets, beside memcpy of the payload and the rules as a loop over octets.
//
// Each case alternates short rounds of the three and keeps the fastest of each, so that a noisy neighbour does not
// decide.  The block that EncodeData allocates is in its figure.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "com_frame.h"

namespace {

using octets = std::vector<std::uint8_t>;

enum kind { random_octets, text, all_special };

octets payload_of(kind what, std::size_t size)
{
    std::mt19937 random(4);
    octets       payload(size);
    for (std::uint8_t &octet : payload)
        switch (what) {
        case random_octets: octet = static_cast<std::uint8_t>(random()); break;
        case text:          octet = static_cast<std::uint8_t>(' ' + random() % 91); break;
        case all_special:   octet = static_cast<std::uint8_t>(0x7D + random() % 2); break;
        }
    return payload;
}

std::size_t loop_encode(const octets &payload, octets &frame)
{
    std::uint8_t *to = frame.data();
    *to++ = 0x7E;
    for (const std::uint8_t octet : payload)
        if (octet == 0x7D || octet == 0x7E) {
            *to++ = 0x7D;
            *to++ = octet ^ 0x20;
        } else {
            *to++ = octet;
        }
    *to++ = 0x7E;
    return static_cast<std::size_t>(to - frame.data());
}

std::size_t loop_decode(const octets &frame, octets &payload)
{
    std::uint8_t *to = payload.data();
    for (std::size_t n = 1; n < frame.size() && frame[n] != 0x7E; ++n)
        *to++ = frame[n] == 0x7D ? frame[++n] ^ 0x20 : frame[n];
    return static_cast<std::size_t>(to - payload.data());
}

/// Alternates rounds of the three and leaves the fastest of each, in GB of payload a second.
template <typename Ours, typename Loop>
void race(benchmark::State &state, std::size_t size, Ours ours, Loop loop)
{
    const octets from(size, 1);
    octets       to(size);
    const auto   copy = [&] {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    };
    const std::size_t     times = 1 + (1 << 18) / size;
    std::array<double, 3> best = {1e18, 1e18, 1e18};
    const auto            time = [&](std::size_t which, auto &&run) {
        const auto start = std::chrono::steady_clock::now();
        for (std::size_t n = 0; n < times; ++n)
            run();
        const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
        best[which] = std::min(best[which], spent.count() / static_cast<double>(times * size));
    };
    for (auto _ : state) {
        time(0, ours);
        time(1, loop);
        time(2, copy);
    }
    state.counters["ours_GB_s"] = 1 / best[0];
    state.counters["loop_GB_s"] = 1 / best[1];
    state.counters["memcpy_GB_s"] = 1 / best[2];
}

template <kind what> void encode(benchmark::State &state)
{
    const octets payload = payload_of(what, static_cast<std::size_t>(state.range(0)));
    octets       frame(2 * payload.size() + 2);
    race(
        state, payload.size(),
        [&] {
            std::uint8_t *out = nullptr;
            std::uint32_t length = 0;
            EncodeData(payload.data(), static_cast<std::uint32_t>(payload.size()), &out, &length);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
            std::free(out);
        },
        [&] {
            benchmark::DoNotOptimize(loop_encode(payload, frame));
            benchmark::ClobberMemory();
        });
}

template <kind what> void decode(benchmark::State &state)
{
    const octets payload = payload_of(what, static_cast<std::size_t>(state.range(0)));
    octets       frame(2 * payload.size() + 2);
    frame.resize(loop_encode(payload, frame));
    octets       decoded(payload.size());
    race(
        state, payload.size(),
        [&] {
            std::uint8_t *out = nullptr;
            std::uint32_t length = 0;
            DecodeData(frame.data(), static_cast<std::uint32_t>(frame.size()), &out, &length);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        },
        [&] {
            benchmark::DoNotOptimize(loop_decode(frame, decoded));
            benchmark::ClobberMemory();
        });
}

#define SIZES ->Arg(200)->Arg(1500)->Arg(30000)
BENCHMARK(encode<random_octets>) SIZES;
BENCHMARK(encode<text>) SIZES;
BENCHMARK(encode<all_special>) SIZES;
BENCHMARK(decode<random_octets>) SIZES;
BENCHMARK(decode<text>) SIZES;
BENCHMARK(decode<all_special>) SIZES;

} // namespace
