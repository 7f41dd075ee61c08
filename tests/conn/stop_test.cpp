// Stopping a channel whose reader sits in each place where it can wait: the stop returns, and the channel works
// afterwards.  A case that fails does not end, and its time limit tells so.
#include <csignal>

#include <fcntl.h>

#include <atomic>
#include <thread>

#include "frame_model.h"
#include "loopback.h"

namespace {

class stop : public channels {
  protected:
    /// Starts the reader and exchanges a packet each way.
    void expect_works(std::int32_t pch, raw_socket &peer)
    {
        if (com_pch_info_g[pch].thread == nullptr)
            start(pch);
        EXPECT_EQ(com_lch_connect(domain, sender), 1);
        peer.send(model_encoded({1, 2}));
        EXPECT_EQ(packets.next(), (octets{1, 2}));
        write({3, 4});
        EXPECT_EQ(peer.receive(4), model_encoded({3, 4}));
    }
};

TEST_F(stop, ends_a_reader_in_accept)
{
    const std::int32_t pch = open(tcp(true, 0));
    for (int round = 0; round < 20; ++round) {
        start(pch);
        if (round % 2 == 0)
            wait_until_others_sleep(); // else wherever it is by now
        com_pch_stop(pch);
        EXPECT_EQ(com_pch_info_g[pch].thread, nullptr);
    }
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    expect_works(pch, peer);
}

TEST_F(stop, ends_a_reader_in_connect)
{
    // A listener whose queue is full neither takes nor refuses a caller.
    raw_socket         listener = raw_socket::listening(0);
    const raw_socket   queued = raw_socket::connected(listener.port());
    const std::int32_t pch = open(tcp(false, listener.port()));
    for (int round = 0; round < 3; ++round) {
        start(pch);
        wait_until_others_sleep();
        com_pch_stop(pch);
        EXPECT_EQ(record(pch).connect_failed, 0);
        EXPECT_EQ(record(pch).connected_num, 0);
        EXPECT_EQ(fcntl(record(pch).socket, F_GETFL) & O_NONBLOCK, 0);
    }
    listener.accept();
    start(pch);
    raw_socket peer = listener.accept();
    expect_works(pch, peer);
}

TEST_F(stop, ends_a_reader_in_read)
{
    for (const bool closed_by_peer : {false, true}) {
        const std::int32_t pch = open(tcp(true, 0));
        start(pch);
        raw_socket peer = raw_socket::connected(port_of_server(pch));
        EXPECT_EQ(com_lch_connect(domain, sender), 1);
        if (closed_by_peer)
            peer.reset(); // the reader spins
        else
            wait_until_others_sleep();
        com_pch_stop(pch);
        if (!closed_by_peer)
            expect_works(pch, peer);
        remove_all();
        com_lch_remove(domain, sender);
        com_lch_remove(domain, receiver);
    }
}

// The host's thread connects and holds the lock; the reader waits for it.
TEST_F(stop, ends_a_reader_that_waits_for_the_lock)
{
    const std::int32_t pch = open(tcp(true, 0));
    std::thread        host([] { EXPECT_EQ(com_lch_connect(domain, sender), 1); });
    wait_until_others_sleep();
    start(pch);
    wait_until_others_sleep();
    com_pch_stop(pch);
    EXPECT_EQ(record(pch).connected_num, 0);
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    host.join();
    expect_works(pch, peer);
}

// ---------------------------------------------------------------------------- from and beside the callback

std::int32_t      stopped_pch;
std::atomic<bool> inside;
std::atomic<bool> released;
std::atomic<bool> left;

TEST_F(stop, may_come_from_the_callback)
{
    const std::int32_t pch = open(tcp(true, 0), [](std::uint8_t *, std::uint32_t, std::uint8_t, std::uint8_t) {
        com_pch_stop(stopped_pch);
        left = true;
    });
    stopped_pch = pch;
    left = false;
    start(pch);
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    peer.send(model_encoded({1, 2}));
    wait_until([] { return left.load(); });
    EXPECT_EQ(com_pch_info_g[pch].thread, nullptr);
    com_lch_info_g[domain][receiver].callback = keep_packet;
    expect_works(pch, peer);
}

TEST_F(stop, does_not_wait_for_the_callback)
{
    const std::int32_t pch = open(tcp(true, 0), [](std::uint8_t *, std::uint32_t, std::uint8_t, std::uint8_t) {
        inside = true;
        wait_until([] { return released.load(); });
        left = true;
    });
    inside = released = left = false;
    start(pch);
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    peer.send(model_encoded({1, 2}));
    wait_until([] { return inside.load(); });
    com_pch_stop(pch); // the callback waits for what comes after this
    com_lch_info_g[domain][receiver].callback = keep_packet;
    released = true;
    wait_until([] { return left.load(); });
    expect_works(pch, peer);
}

/// Sends until the peer's buffers are full, and on.
void flood(std::uint8_t *, std::uint32_t, std::uint8_t, std::uint8_t)
{
    inside = true;
    const octets much(1 << 20, 0x41);
    while (!released)
        com_lch_write(domain, sender, much.data(), static_cast<std::uint32_t>(much.size()));
    left = true;
}

TEST_F(stop, ends_a_write_on_the_reader)
{
    for (const bool peer_is_dead : {false, true})
        EXPECT_EXIT(
            {
                dup2(::open("/dev/null", O_WRONLY), 1); // a broken connection is told at each try
                const std::int32_t pch = open(tcp(true, 0), flood);
                start(pch);
                raw_socket peer = raw_socket::connected(port_of_server(pch));
                com_lch_connect(domain, sender);
                peer.send(model_encoded({1, 2}));
                wait_until([] { return inside.load(); });
                if (peer_is_dead)
                    peer.reset();
                else
                    wait_until_others_sleep();
                com_pch_stop(pch);
                released = true;
                wait_until([] { return left.load(); });
                std::exit(0);
            },
            testing::ExitedWithCode(0), "")
            << "dead: " << peer_is_dead;
}

// A signal without SA_RESTART ends waits in the kernel, but not those of a channel.
TEST_F(stop, is_not_what_a_signal_does)
{
    struct sigaction action{};
    action.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
    const std::int32_t pch = open(tcp(true, 0));
    start(pch);
    const auto poke = [] {
        wait_until_others_sleep();
        for (const auto &task : std::filesystem::directory_iterator("/proc/self/task"))
            if (const pid_t id = std::stoi(task.path().filename()); id != gettid())
                tgkill(getpid(), id, SIGUSR1);
        wait_until_others_sleep();
    };
    poke();
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    poke();
    expect_works(pch, peer);
}

} // namespace
