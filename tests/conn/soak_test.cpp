// Many packets of every kind through a channel and back, with stops, cuts and changes of role in between.
//
// SOLVANE_SOAK says how many rounds, 1000 unless told; a round is one connection with fifty packets.
#include <cinttypes>
#include <random>
#include <thread>

#include "frame_model.h"
#include "loopback.h"

namespace {

constexpr int packets_a_round = 50;

/// Sends each frame back as it came, until the connection ends.
void echo(const raw_socket &peer)
{
    octets                    frame;
    std::vector<std::uint8_t> piece(1 << 16);
    for (ssize_t got = 0; (got = recv(peer.fd(), piece.data(), piece.size(), 0)) > 0;) {
        frame.insert(frame.end(), piece.begin(), piece.begin() + got);
        if (frame.size() > 1 && frame.back() == 0x7E) {
            peer.send(frame);
            frame.clear();
        }
    }
}

octets random_packet(std::mt19937 &random)
{
    octets         packet(2 + random() % (random() % 10 == 0 ? 6000 : 200));
    const auto share = random() % 3; // of special octets: none to speak of, many, nothing else
    for (std::uint8_t &octet : packet)
        octet = static_cast<std::uint8_t>(share == 2 || (share == 1 && random() % 2 == 0) ? 0x7D + random() % 2
                                                                                          : random());
    return packet;
}

class soak : public channels {
  protected:
    /// One connection, in one role, with a stop of the reader in its middle.
    void round(std::mt19937 &random)
    {
        const bool         server = random() % 2 == 0;
        const raw_socket   listener = raw_socket::listening();
        const std::int32_t pch = open(tcp(server, server ? std::uint16_t{0} : listener.port()));
        start(pch);
        if (server && random() % 2 == 0) { // called off, and started again
            com_pch_stop(pch);
            start(pch);
        }
        raw_socket peer;
        if (server)
            peer = raw_socket::connected(port_of_server(pch));
        EXPECT_EQ(com_lch_connect(domain, sender), 1);
        if (!server)
            peer = listener.accept();
        std::thread other_side([&] { echo(peer); });
        const int   stop_at = static_cast<int>(random() % (2 * packets_a_round));
        for (int n = 0; n < packets_a_round && !HasFailure(); ++n) {
            if (n == stop_at) {
                com_pch_stop(pch);
                start(pch);
            }
            const octets packet = random_packet(random);
            write(packet);
            EXPECT_EQ(packets.next(), packet);
        }
        remove_all();
        com_lch_remove(domain, sender);
        com_lch_remove(domain, receiver);
        other_side.join();
    }
};

TEST_F(soak, loses_nothing)
{
    const char    *told = std::getenv("SOLVANE_SOAK");
    const long     rounds = told == nullptr ? 1000 : std::atol(told);
    const unsigned seed = std::random_device{}();
    ASSERT_GT(rounds, 0);
    std::fprintf(stderr, "seed %u, %ld rounds\n", seed, rounds);
    std::mt19937 random(seed);
    for (long n = 0; n < rounds && !HasFailure(); ++n) {
        SCOPED_TRACE(testing::Message() << "round " << n << " of seed " << seed);
        round(random);
    }
    EXPECT_TRUE(packets.empty());
}

} // namespace
