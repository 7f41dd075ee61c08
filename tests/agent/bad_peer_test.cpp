// The host against a port that does not behave as an agent does: what each case gets, and that nothing is lost in
// silence.
#include <functional>
#include <thread>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "run_tool.h"

namespace solvane::tools::test {
namespace {

/// Listens on loopback and does something to the one who comes.
class bad_peer {
public:
    explicit bad_peer(std::function<void(int connection)> act)
    {
        listening_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto     *where = reinterpret_cast<sockaddr *>(&address);
        EXPECT_EQ(::bind(listening_, where, size), 0);
        EXPECT_EQ(::listen(listening_, 1), 0);
        ::getsockname(listening_, where, &size);
        port_ = std::to_string(ntohs(address.sin_port));
        thread_ = std::thread([this, act] {
            const int connection = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
            act(connection);
            ::close(connection);
        });
    }
    ~bad_peer()
    {
        ::shutdown(listening_, SHUT_RDWR); /* in case nobody came */
        thread_.join();
        ::close(listening_);
    }
    const std::string &port() const { return port_; }

private:
    int         listening_ = -1;
    std::string port_;
    std::thread thread_;
};

void send_text(int connection, const std::string &octets)
{
    for (std::size_t at = 0; at < octets.size();) {
        const ssize_t done = ::send(connection, octets.data() + at, octets.size() - at, MSG_NOSIGNAL);
        if (done <= 0) {
            return;
        }
        at += static_cast<std::size_t>(done);
    }
}

/* A frame around octets that need no escapes. */
std::string framed(const std::string &octets)
{
    return "~" + octets + "~";
}

/* A packet of `size` octets with a code that no report has. */
std::string big(std::size_t size)
{
    std::string packet(size, '\x01');
    packet[0] = '\xC8';
    return packet;
}

tool_result connect_to(const std::string &port)
{
    return run_tool({"--lib", SOLVANE_PLUGIN, "connect", "--port", port, "--silent", "--once", "-t", "none"});
}

std::string repeated(const std::string &what)
{
    std::string all;
    for (int i = 0; i < 100; ++i) {
        all += what;
    }
    return all;
}

const std::string response("\x03\x03\x00\x00\x00\x07", 6); /* MTA_TT_RESPONSE */
const std::string response_line = "agent     MTA_TT_RESPONSE  ret_val=7\n";
const std::string dropped = "link      the channel dropped something: ";
const std::string no_such_code = "  a code that there is no structure for\n";

std::string big_line(std::size_t size)
{
    std::string hex;
    for (int i = 0; i < 32; ++i) {
        hex += "01";
    }
    return "agent     200  " + hex + "... (" + std::to_string(size - 1) + " octets)" + no_such_code;
}

TEST(bad_peer, gets_what_it_sends_told)
{
    struct row {
        const char *name;
        std::string sent;
        std::string shown; ///< between the connection and its loss
        int         code;
    };
    const row rows[] = {
        {"nothing", "", "", 0},
        {"two frames at once", framed(response) + framed(response), response_line + response_line, 0},
        {"a hundred frames at once", repeated(framed(response)), repeated(response_line), 0},
        {"empty frames in front", "~~~~" + framed(response) + framed(response), "", -1},
        {"no frame at all", "hello there", dropped + "the connection ended in a packet, behind 11 octets or more\n", 1},
        {"half a frame", framed(response) + framed(response).substr(0, 5),
         response_line + dropped + "the connection ended in a packet\n", 1},
        {"octets between frames", framed(response) + "abc" + framed(response),
         response_line + response_line + dropped + "3 octets outside of frames\n", 1},
        {"65537 octets", framed(big(65537)), big_line(65537), 1},
        {"the longest packet", framed(big(99999)), big_line(99999), 1},
    };
    for (const auto &row : rows) {
        bad_peer   peer([&](int connection) { send_text(connection, row.sent); });
        const auto result = connect_to(peer.port());
        const std::string start = "link      connected to 127.0.0.1:" + peer.port() + "\n";
        const std::string end = "link      lost 127.0.0.1:" + peer.port() + ": the agent closed the connection\n";
        if (row.code >= 0) {
            EXPECT_EQ(result.out, start + row.shown + end) << row.name;
            EXPECT_EQ(result.code, row.code) << row.name << "\n" << result.err;
        } else {
            EXPECT_EQ(result.code, 1) << row.name << ": not in silence\n" << result.out;
            EXPECT_NE(result.out.find(row.shown), std::string::npos) << row.name << "\n" << result.out;
        }
    }
}

TEST(bad_peer, that_sends_too_long_a_packet_ends_the_library_and_not_the_host)
{
    bad_peer peer([](int connection) {
        char answer;
        send_text(connection, framed(big(100000)));
        [[maybe_unused]] const auto got = ::recv(connection, &answer, 1, 0); /* until the other end is gone */
    });
    const auto result = connect_to(peer.port());
    EXPECT_EQ(result.code, 6);
    EXPECT_NE((result.out + result.err).find("the library ended the connection's process, signal 6: Assertion failed: "
                              "(len_to_start+len_to_read) < MAX_PACKET_SIZE"),
              std::string::npos) << result.out;
}

TEST(bad_peer, that_breaks_the_connection_is_lost_like_any_other)
{
    bad_peer peer([](int connection) {
        const linger at_once = {1, 0};
        char         question;
        EXPECT_EQ(::recv(connection, &question, 1, 0), 1);
        ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    });
    const auto result = run_tool({"--lib", SOLVANE_PLUGIN, "connect", "--port", peer.port(), "--once"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("lost"), std::string::npos) << result.out;
}

TEST(bad_peer, that_never_answers_is_not_waited_for)
{
    bad_peer   peer([](int connection) {
        char octet;
        while (::recv(connection, &octet, 1, 0) > 0) {
        }
    });
    const auto result = run_tool({"--lib", SOLVANE_PLUGIN, "layout", "--port", peer.port(), "--within", "1"});
    EXPECT_EQ(result.code, 5);
    EXPECT_NE(result.err.find("the time is over: no layout of infrastructure, stack"), std::string::npos) << result.err;
}

TEST(bad_peer, that_is_not_there_is_refused_in_one_line)
{
    std::string port;
    {
        bad_peer gone([](int) {}); /* its port is free again */
        port = gone.port();
    }
    const std::vector<std::vector<std::string>> commands = {{"connect"}, {"layout"}, {"connect", "--patience", "1"}};
    for (const auto &command : commands) {
        std::vector<std::string> all = {"--lib", SOLVANE_PLUGIN, "--port", port};
        all.insert(all.begin() + 2, command.begin(), command.end());
        const auto result = run_tool(all);
        EXPECT_EQ(result.code, 3) << command.back();
        EXPECT_EQ(result.err, "solvane-host: cannot connect to 127.0.0.1:" + port + ": nobody answers there\n");
        EXPECT_EQ(result.out, "");
    }
}

} // namespace
} // namespace solvane::tools::test
