// What a packet costs on its way com_lch_write, framing, loopback, a raw echo, loopback, reader, callback, one packet
// at a time, beside the same octets sent raw: same echo, a reader thread of its own, the same signal to the sender.
//
// All threads run on one CPU: on several, the time is that of waking an idle one, and says nothing of either way.
// Each case alternates short rounds of the two and keeps the fastest of each.  Reported in microseconds a round trip
// and MB of payload a second; `raw_x` is the one time over the other.
#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "com_frame.h"
#include "com_lch.h"
#include "com_pch.h"

namespace {

using octets = std::vector<std::uint8_t>;

constexpr std::uint8_t delimiter = 0x7E;
constexpr int          sender = 0;
constexpr int          receiver = 1;

[[noreturn]] void give_up(const char *what)
{
    std::perror(what);
    std::exit(1);
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_port = htons(port);
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return at;
}

int listener(std::uint16_t &port)
{
    const int   it = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in at = loopback(0);
    socklen_t   size = sizeof at;
    if (bind(it, reinterpret_cast<sockaddr *>(&at), sizeof at) != 0 || listen(it, 2) != 0 ||
        getsockname(it, reinterpret_cast<sockaddr *>(&at), &size) != 0)
        give_up("listen");
    port = ntohs(at.sin_port);
    return it;
}

void send_all(int socket, const std::uint8_t *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t taken = send(socket, data, size, MSG_NOSIGNAL);
        if (taken <= 0)
            return;
        data += taken;
        size -= static_cast<std::size_t>(taken);
    }
}

/// Collects octets to the delimiter at a frame's end and hands each frame to `take`.
template <typename Take> void read_frames(int socket, Take take)
{
    octets      frame(1 << 18);
    std::size_t have = 0;
    for (ssize_t got = 0; (got = recv(socket, frame.data() + have, frame.size() - have, 0)) > 0;) {
        have += static_cast<std::size_t>(got);
        if (have > 1 && frame[have - 1] == delimiter) {
            take(frame.data(), have);
            have = 0;
        }
    }
}

void stay_on_this_cpu()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0)
        give_up("sched_setaffinity");
}

std::atomic<std::uint32_t> arrived;

void signal_arrival()
{
    ++arrived;
    arrived.notify_one();
}

/// Two connections with an echo at the far end of each, for the life of the process: a channel's and a raw one.
struct scene {
    int    raw = -1;
    octets buffer = octets(COM_READ_SIZE);

    scene()
    {
        stay_on_this_cpu();
        std::uint16_t port = 0;
        const int     listening = listener(port);
        const auto    echo = [listening] {
            const int peer = accept(listening, nullptr, nullptr);
            read_frames(peer, [peer](const std::uint8_t *data, std::size_t size) { send_all(peer, data, size); });
        };
        std::thread(echo).detach();
        std::thread(echo).detach();
        open_channel(port);
        raw = socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in to = loopback(port);
        if (connect(raw, reinterpret_cast<const sockaddr *>(&to), sizeof to) != 0)
            give_up("connect");
        std::thread([this] { read_frames(raw, [](const std::uint8_t *, std::size_t) { signal_arrival(); }); }).detach();
    }

    void open_channel(std::uint16_t port)
    {
        com_init();
        com_pch_attr attr{};
        attr.direction = COM_BOTH;
        attr.driver = COM_DRIVER_TCP;
        attr.u.tcp.address = "127.0.0.1";
        attr.u.tcp.port = port;
        const std::int32_t pch = com_pch_add(&attr);
        com_lch_add(0, sender, pch, COM_TRANSMIT, nullptr, nullptr);
        com_lch_add(0, receiver, pch, COM_RECEIVE,
                    [](std::uint8_t *, std::uint32_t, std::uint8_t, std::uint8_t) { signal_arrival(); }, buffer.data());
        com_pch_start(pch, 0, 0, 0);
        if (!com_lch_connect(0, sender))
            give_up("com_lch_connect");
    }
};

void round_trip(benchmark::State &state)
{
    static scene it;
    const auto   size = static_cast<std::size_t>(state.range(0));
    const octets payload(size, 'a');
    octets       framed(size + 2, 'a');
    framed.front() = framed.back() = delimiter;

    constexpr int         times = 50;
    std::array<double, 2> best = {1e18, 1e18};
    const auto            time = [&](std::size_t which, auto &&send) {
        const auto start = std::chrono::steady_clock::now();
        for (int n = 0; n < times; ++n) {
            const std::uint32_t before = arrived;
            send();
            arrived.wait(before);
        }
        const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
        best[which] = std::min(best[which], spent.count() / times);
    };
    for (auto _ : state) {
        time(0, [&] { com_lch_write(0, sender, payload.data(), static_cast<std::uint32_t>(size)); });
        time(1, [&] { send_all(it.raw, framed.data(), framed.size()); });
    }
    state.counters["ours_us"] = best[0];
    state.counters["raw_us"] = best[1];
    state.counters["ours_MB_s"] = static_cast<double>(size) / best[0];
    state.counters["raw_MB_s"] = static_cast<double>(size) / best[1];
    state.counters["raw_x"] = best[0] / best[1];
}

BENCHMARK(round_trip)->Arg(64)->Arg(200)->Arg(1500)->Arg(10000)->Arg(30000)->Arg(60000);

} // namespace
