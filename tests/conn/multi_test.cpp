// The TCP transport as a server of several clients.  The number is asked for once a process, so this is a program of
// its own; nothing but the seam of com_tcp.h makes a process take this path.
#include <csignal>

#include "frame_model.h"
#include "loopback.h"

namespace {

const char *clients = "2";

const bool prepared = [] {
    com_tcp_setting = [] { return clients; };
    return true;
}();

class multi : public channels {
  protected:
    /// A server channel with its clients, the reader running.
    std::int32_t serve(raw_socket (&peers)[2])
    {
        const std::int32_t pch = open(tcp(true, 0));
        start(pch);
        for (std::int32_t n = 0; n < 2; ++n) {
            peers[n] = raw_socket::connected(port_of_server(pch));
            wait_until([=] { return record(pch).connected_num == n + 1; });
        }
        EXPECT_EQ(com_lch_connect(domain, sender), 1);
        EXPECT_EQ(record(pch).connected_num, 2); // sockets, not calls
        return pch;
    }
};

TEST_F(multi, carries_frames_of_all_and_to_all)
{
    raw_socket         peers[2];
    const std::int32_t pch = serve(peers);
    for (const std::size_t n : {0, 1, 1, 0}) {
        const auto mark = static_cast<std::uint8_t>(n);
        peers[n].send(model_encoded({mark, 0x7D}));
        EXPECT_EQ(packets.next(), (octets{mark, 0x7D}));
    }
    write({0x7E});
    for (const raw_socket &peer : peers)
        EXPECT_EQ(peer.receive(4), model_encoded({0x7E}));
    com_pch_stop(pch);

    // Of two that have sent, the last comes first.
    std::uint8_t octet = 0;
    peers[0].send({10});
    peers[1].send({11});
    for (const int socket : record(pch).client_socket)
        wait_until([=] { return socket < 0 || pending(socket, FIONREAD) == 1; });
    for (const int expected : {11, 10}) {
        EXPECT_EQ(com_tcp_read(com_pch_info_g[pch].ch_desc, &octet, 1), 1);
        EXPECT_EQ(octet, expected);
    }
    EXPECT_EQ(com_tcp_read(com_pch_info_g[pch].ch_desc, &octet, 1), 0); // nothing there
}

TEST_F(multi, serves_anew_after_a_disconnect)
{
    raw_socket         peers[2];
    const std::int32_t pch = serve(peers);
    com_pch_stop(pch);
    const int old = record(pch).client_socket[1];
    com_lch_disconnect(domain, sender);
    EXPECT_EQ(record(pch).connected_num, 0);
    EXPECT_EQ(record(pch).client_socket[1], old);
    for (raw_socket &peer : peers)
        EXPECT_TRUE(peer.receive(1).empty());
    for (raw_socket &peer : peers)
        peer = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    start(pch);
    peers[1].send(model_encoded({5, 6}));
    EXPECT_EQ(packets.next(), (octets{5, 6}));
}

TEST_F(multi, ends_a_reader_in_accept_and_in_read)
{
    const std::int32_t pch = open(tcp(true, 0));
    start(pch);
    wait_until_others_sleep();
    com_pch_stop(pch);
    start(pch);
    const raw_socket one = raw_socket::connected(port_of_server(pch));
    wait_until([=] { return record(pch).connected_num == 1; });
    com_pch_stop(pch);
    EXPECT_EQ(record(pch).connected_num, 1);
    start(pch);
    const raw_socket two = raw_socket::connected(port_of_server(pch));
    EXPECT_EQ(com_lch_connect(domain, sender), 1);
    com_pch_stop(pch);
    start(pch);
    two.send(model_encoded({1, 2}));
    EXPECT_EQ(packets.next(), (octets{1, 2}));
}

/// Runs `scenario` in a child with standard output where a death test looks.
void told(const std::function<void()> &scenario)
{
    std::fflush(stdout);
    dup2(2, 1);
    scenario();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST_F(multi, tells_what_becomes_of_a_client)
{
    constexpr char met[] = "^Connected on port 0\nConnected on port 0\n";
    // Closed: told once, and the entry stays.
    EXPECT_EXIT(told([&] {
                    raw_socket         peers[2];
                    const std::int32_t pch = serve(peers);
                    com_pch_stop(pch);
                    std::uint8_t octet = 0;
                    for (raw_socket &peer : peers) {
                        peer.close();
                        wait_until_others_sleep();
                        EXPECT_EQ(com_tcp_read(com_pch_info_g[pch].ch_desc, &octet, 1), 0);
                    }
                    EXPECT_GE(record(pch).client_socket[1], 0);
                }),
                testing::ExitedWithCode(0), met + std::string("Port number=0 closed by peer\n$"));
    // Reset: read again, and found closed.
    EXPECT_EXIT(told([&] {
                    raw_socket         peers[2];
                    const std::int32_t pch = serve(peers);
                    com_pch_stop(pch);
                    std::uint8_t octet = 0;
                    peers[1].reset();
                    EXPECT_EQ(com_tcp_read(com_pch_info_g[pch].ch_desc, &octet, 1), 0);
                }),
                testing::ExitedWithCode(0), met + std::string("Port number=0 closed by peer\n$"));
    // Another failure takes a client out; without any left the process ends.
    EXPECT_EXIT(told([&] {
                    raw_socket         peers[2];
                    const std::int32_t pch = serve(peers);
                    com_pch_stop(pch);
                    for (int n = 1; n >= 0; --n) {
                        peers[n].send({1});
                        wait_until([&] { return pending(record(pch).client_socket[n], FIONREAD) == 1; });
                        EXPECT_EQ(com_tcp_read(com_pch_info_g[pch].ch_desc, nullptr, 1), -1);
                        EXPECT_EQ(record(pch).client_socket[n], -1);
                    }
                }),
                testing::KilledBySignal(SIGABRT), met + std::string("tcp read failed::14\ntcp read failed::14\n$"));
    // The same for writes, and the others still get theirs.
    EXPECT_EXIT(told([&] {
                    raw_socket         peers[2];
                    const std::int32_t pch = serve(peers);
                    com_pch_stop(pch);
                    shutdown(record(pch).client_socket[1], SHUT_WR);
                    write({1, 2});
                    EXPECT_EQ(record(pch).client_socket[1], -1);
                    EXPECT_EQ(peers[0].receive(4), model_encoded({1, 2}));
                    shutdown(record(pch).client_socket[0], SHUT_WR);
                    write({3, 4});
                }),
                testing::KilledBySignal(SIGABRT), met + std::string("COM_WRITE Failed::32\nCOM_WRITE Failed::32\n$"));
}

TEST_F(multi, has_one_to_four_clients)
{
    const std::pair<const char *, int> settings[] = {{nullptr, 1}, {"", 1}, {"x", 1}, {"-2", 1}, {"0", 1}, {"1", 1},
                                                     {"4", 4},     {"4x", 4}, {"5", 1}};
    for (const auto &[text, number] : settings)
        EXPECT_EXIT((clients = text, std::exit(com_tcp_client_num())), testing::ExitedWithCode(number), "")
            << (text == nullptr ? "none" : text);
}

} // namespace
