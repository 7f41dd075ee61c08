// The TCP transport over loopback, both roles, one client: connecting, both directions, what a cut does, and each
// line on standard output.
#include <csignal>

#include <fcntl.h>

#include "frame_model.h"
#include "loopback.h"

namespace {

/// A channel and its peer, connected, in either role of the host.
struct link {
    std::int32_t pch = -1;
    raw_socket   peer;
    raw_socket   listener; ///< the peer's, when the host is the client
};

class tcp_channel : public channels {
  protected:
    link connected(bool server, com_lch_callback callback = keep_packet)
    {
        link it;
        if (!server)
            it.listener = raw_socket::listening();
        it.pch = open(tcp(server, server ? std::uint16_t{0} : it.listener.port()), callback);
        start(it.pch);
        meet(it);
        return it;
    }

    /// Connects the peer, and has the host wait for that.
    static void meet(link &it)
    {
        if (record(it.pch).ch_attr_p->u.tcp.server)
            it.peer = raw_socket::connected(port_of_server(it.pch));
        EXPECT_EQ(com_lch_connect(domain, sender), 1);
        if (!record(it.pch).ch_attr_p->u.tcp.server)
            it.peer = it.listener.accept();
    }
};

TEST_F(tcp_channel, carries_frames_in_both_roles)
{
    for (const bool server : {false, true}) {
        SCOPED_TRACE(server ? "server" : "client");
        link         it = connected(server);
        const octets out = {0x7D, 0x7E, 0x41};
        write(out);
        EXPECT_EQ(it.peer.receive(7), model_encoded(out));
        it.peer.send({0x7E, 0x7D, 0x5D, 0x42, 0x7E});
        EXPECT_EQ(packets.next(), (octets{0x7D, 0x42}));
        // The server counts the calls of reader and host, the client its one socket.
        EXPECT_EQ(record(it.pch).connected_num, server ? 2 : 1);
        remove_all();
        com_lch_remove(domain, sender);
        com_lch_remove(domain, receiver);
        EXPECT_TRUE(it.peer.receive(1).empty()) << "the connection is still up";
    }
}

TEST_F(tcp_channel, follows_the_rules_at_every_cut)
{
    link         it = connected(true);
    const octets frame = model_encoded({0x7D, 0x41, 0x7E, 0x42, 0x43, 0x7E, 0x7D, 0x44, 0x45, 0x46});
    model_reader model;
    for (std::size_t cut = 1; cut < frame.size(); ++cut) {
        const auto middle = frame.begin() + static_cast<std::ptrdiff_t>(cut);
        const octets chunks[] = {octets(frame.begin(), middle), octets(middle, frame.end()), model_encoded({9, 9})};
        for (const octets &chunk : chunks) {
            it.peer.send(chunk);
            wait_until_taken(it.peer, com_pch_info_g[it.pch].ch_desc);
            model.take(chunk);
        }
        for (const octets &packet : std::exchange(model.packets, {}))
            ASSERT_EQ(packets.next(), packet) << "cut at " << cut;
    }
    EXPECT_TRUE(packets.empty());
}

// Larger than one read: plain octets, so that it does not matter where the stream is divided, and sizes that leave
// no chunk of fewer than four octets.
TEST_F(tcp_channel, carries_large_frames)
{
    link it = connected(false);
    for (const std::size_t size : {70000, 99000}) {
        const octets payload(size, 0x41);
        it.peer.send(model_encoded(payload));
        ASSERT_EQ(packets.next(), payload) << size;
        write(payload);
        ASSERT_EQ(it.peer.receive(size + 2), model_encoded(payload)) << size;
    }
}

TEST_F(tcp_channel, connects_again_after_a_cut_in_a_frame)
{
    for (const bool server : {false, true})
        for (const bool restarts : {false, true}) {
            SCOPED_TRACE(testing::Message() << (server ? "server" : "client") << (restarts ? ", new reader" : ""));
            link it = connected(server);
            it.peer.send({0x7E, 1, 2, 3, 4});
            wait_until_taken(it.peer, com_pch_info_g[it.pch].ch_desc);
            it.peer.close();
            if (restarts)
                com_pch_stop(it.pch);
            com_lch_disconnect(domain, sender);
            EXPECT_EQ(record(it.pch).connected_num, 0);
            meet(it);
            if (restarts)
                start(it.pch);
            // A reader that lived through the cut still has the first half.
            it.peer.send(model_encoded({5, 6}));
            EXPECT_EQ(packets.next(), restarts ? (octets{5, 6}) : (octets{1, 2, 3, 4, 5, 6}));
            it.peer.send(model_encoded({7, 8}));
            EXPECT_EQ(packets.next(), (octets{7, 8}));
            write({9});
            EXPECT_EQ(it.peer.receive(3), (octets{0x7E, 9, 0x7E}));
            remove_all();
            com_lch_remove(domain, sender);
            com_lch_remove(domain, receiver);
        }
}

// Readers share the buffer that they decode in, so that two of them can but take turns.
TEST_F(tcp_channel, takes_turns_with_another)
{
    std::vector<std::uint8_t> buffers[2] = {octets(COM_READ_SIZE), octets(COM_READ_SIZE)};
    std::int32_t              pchs[2];
    raw_socket                peers[2];
    for (std::int32_t n = 0; n < 2; ++n) {
        const com_pch_attr attr = tcp(true, 0);
        pchs[n] = com_pch_add(&attr);
        com_lch_add(n, receiver, pchs[n], COM_BOTH,
                    [](std::uint8_t *packet, std::uint32_t length, std::uint8_t lch_domain, std::uint8_t) {
                        packets.put(octets(packet, packet + length));
                        packets.put({lch_domain});
                    },
                    buffers[n].data());
        start(pchs[n]);
        peers[n] = raw_socket::connected(port_of_server(pchs[n]));
    }
    for (std::uint8_t n = 0; n < 20; ++n) {
        peers[n % 2].send(model_encoded({n, 0x7E}));
        EXPECT_EQ(packets.next(), (octets{n, 0x7E}));
        EXPECT_EQ(packets.next(), octets(1, n % 2));
    }
    for (raw_socket &peer : peers)
        peer.close();
}

TEST_F(tcp_channel, drops_the_connection_under_its_reader)
{
    link it = connected(true);
    wait_until_others_sleep(); // the reader waits for data
    const int old = record(it.pch).client_socket[0];
    com_lch_disconnect(domain, sender);
    EXPECT_TRUE(it.peer.receive(1).empty());
    EXPECT_EQ(record(it.pch).client_socket[0], old);

    // The number goes to another file now, which the channel must leave alone.
    std::vector<raw_socket> others;
    do
        others.push_back(raw_socket::connected(port_of_server(it.pch)));
    while (others.back().fd() < old);
    EXPECT_EQ(others.back().fd(), old);
    write({1, 2, 3});
    com_lch_disconnect(domain, sender);
    EXPECT_EQ(fcntl(old, F_GETFD), 0) << "closed a second time";
}

TEST_F(tcp_channel, writes_nothing_before_it_is_connected)
{
    const std::int32_t pch = open(tcp(true, 0));
    const std::uint8_t one = 1;
    EXPECT_EQ(com_tcp_write(com_pch_info_g[pch].ch_desc, &one, 1), -1);
    EXPECT_EQ(com_lch_write(domain, sender, &one, 1), 1U);
    raw_socket peer = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    write({7});
    EXPECT_EQ(peer.receive(3), (octets{0x7E, 7, 0x7E}));
}

TEST_F(tcp_channel, sets_its_sockets_up)
{
    const auto option = [](int socket, int level, int name) {
        int       value = -1;
        socklen_t size = sizeof value;
        EXPECT_EQ(getsockopt(socket, level, name, &value, &size), 0);
        return value != 0;
    };
    const std::int32_t server = open(tcp(true, 0));
    com_pch_attr       attr = tcp(false, 1);
    const std::int32_t client = com_pch_add(&attr);
    EXPECT_TRUE(option(record(server).socket, SOL_SOCKET, SO_REUSEADDR));
    EXPECT_TRUE(option(record(server).socket, SOL_SOCKET, SO_KEEPALIVE));
    EXPECT_TRUE(option(record(server).socket, IPPROTO_TCP, 1 /* no delay */));
    EXPECT_FALSE(option(record(client).socket, SOL_SOCKET, SO_REUSEADDR));
    EXPECT_FALSE(option(record(client).socket, IPPROTO_TCP, 1 /* no delay */));
    close(record(client).socket);
}

// ---------------------------------------------------------------------------- what is printed

/// Runs `scenario` with standard output where a death test looks, and ends the process with 0.
void told(const std::function<void()> &scenario)
{
    std::fflush(stdout);
    dup2(2, 1);
    scenario();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST_F(tcp_channel, tries_once_as_a_client)
{
    std::uint16_t refusing = 0;
    {
        const raw_socket gone = raw_socket::listening();
        refusing = gone.port();
    }
    const auto scenario = [&] {
        open(tcp(false, refusing));
        for (int n = 0; n < 3; ++n)
            EXPECT_EQ(com_lch_connect(domain, sender), 0);
        std::puts("--");
        com_lch_disconnect(domain, sender);
        EXPECT_EQ(com_lch_connect(domain, sender), 0);
    };
    // In a child the port may differ: each run of this case looks for one of its own.
    EXPECT_EXIT(told(scenario), testing::ExitedWithCode(0),
                "^connecting on ([0-9]+)\nFailed to connect with 127.0.0.1 at ([0-9]+)\n--\n"
                "connecting on ([0-9]+)\nFailed to connect with 127.0.0.1 at ([0-9]+)\n$");
}

TEST_F(tcp_channel, tells_that_it_is_connected)
{
    EXPECT_EXIT(told([&] {
                    const std::int32_t pch = open(tcp(true, 0));
                    raw_socket         peer = raw_socket::connected(port_of_server(pch));
                    EXPECT_EQ(com_lch_connect(domain, sender), 1);
                    EXPECT_EQ(com_lch_connect(domain, sender), 1);
                    EXPECT_EQ(record(pch).connected_num, 2);
                }),
                testing::ExitedWithCode(0), "^Connected on port 0\n$");
    EXPECT_EXIT(told([&] {
                    const std::int32_t pch = open(tcp(true, 0));
                    shutdown(record(pch).socket, SHUT_RDWR);
                    EXPECT_EQ(com_lch_connect(domain, sender), 0);
                }),
                testing::ExitedWithCode(0), "^Connected on port 0\nConnect failed:22\n$");
}

TEST_F(tcp_channel, tells_once_that_a_peer_has_closed)
{
    EXPECT_EXIT(told([&] {
                    for (const bool server : {true, true}) {
                        link it = connected(server);
                        com_pch_stop(it.pch);
                        it.peer.close();
                        std::uint8_t octet = 0;
                        for (int n = 0; n < 3; ++n)
                            EXPECT_EQ(com_tcp_read(com_pch_info_g[it.pch].ch_desc, &octet, 1), 0);
                        com_lch_remove(domain, sender);
                        com_lch_remove(domain, receiver);
                    }
                }),
                testing::ExitedWithCode(0),
                "^Connected on port 0\nPort number=0 closed by peer\nConnected on port 0\n$");
}

TEST_F(tcp_channel, tells_nothing_of_its_own_disconnect)
{
    EXPECT_EXIT(told([&] {
                    link it = connected(true);
                    wait_until_others_sleep();
                    com_lch_disconnect(domain, sender);
                    com_pch_stop(it.pch);
                }),
                testing::ExitedWithCode(0), "^Connected on port 0\n$");
}

TEST_F(tcp_channel, ends_the_process_when_a_socket_cannot_be_set_up)
{
    EXPECT_EXIT(told([&] {
                    const raw_socket taken = raw_socket::listening();
                    open(tcp(true, taken.port()));
                }),
                testing::KilledBySignal(SIGABRT), "^bind failed on port [0-9]+::98\n$");
    EXPECT_EXIT(told([&] {
                    int last = 0;
                    for (int fd = 0; fd >= 0; fd = dup(0))
                        last = fd;
                    EXPECT_GT(last, 0);
                    com_pch_attr attr = tcp(false, 1);
                    com_pch_add(&attr);
                }),
                testing::KilledBySignal(SIGABRT), "^socket creation failed::24\n$");
}

} // namespace
