// Channels over loopback: a raw socket as the peer, an inbox as the host's callback, and a fixture that leaves the
// library as it found it.  Nothing here waits by time: what does not come is for the test's time limit.
#pragma once

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <linux/sockios.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <sched.h>

#include "com_driver.h"
#include "com_frame.h"
#include "com_lch.h"
#include "com_pch.h"
#include "com_tcp.h"

using octets = std::vector<std::uint8_t>;

// ---------------------------------------------------------------------------- the peer

inline std::uint16_t port_of(int socket)
{
    sockaddr_in at{};
    socklen_t   size = sizeof at;
    EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr *>(&at), &size), 0);
    return ntohs(at.sin_port);
}

/// A socket of the test's own.
class raw_socket {
  public:
    explicit raw_socket(int fd = -1) : fd_(fd) {}
    raw_socket(raw_socket &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    raw_socket &operator=(raw_socket &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~raw_socket() { close(); }

    static raw_socket listening(int backlog = 20)
    {
        raw_socket it(::socket(AF_INET, SOCK_STREAM, 0));
        const sockaddr_in at = it.address(0);
        EXPECT_EQ(bind(it.fd_, reinterpret_cast<const sockaddr *>(&at), sizeof at), 0);
        EXPECT_EQ(listen(it.fd_, backlog), 0);
        return it;
    }
    static raw_socket connected(std::uint16_t port)
    {
        raw_socket it(::socket(AF_INET, SOCK_STREAM, 0));
        const sockaddr_in to = it.address(port);
        EXPECT_EQ(connect(it.fd_, reinterpret_cast<const sockaddr *>(&to), sizeof to), 0);
        return it;
    }
    raw_socket accept() const { return raw_socket(::accept(fd_, nullptr, nullptr)); }

    int           fd() const { return fd_; }
    std::uint16_t port() const { return port_of(fd_); }

    void send(const octets &data) const
    {
        for (std::size_t sent = 0; sent < data.size();) {
            const ssize_t taken = ::send(fd_, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
            ASSERT_GT(taken, 0);
            sent += static_cast<std::size_t>(taken);
        }
    }
    /// Exactly `count` octets, fewer when the other side ends.
    octets receive(std::size_t count) const
    {
        octets      data(count);
        std::size_t got = 0;
        while (got < count) {
            const ssize_t piece = recv(fd_, data.data() + got, count - got, 0);
            if (piece <= 0)
                break;
            got += static_cast<std::size_t>(piece);
        }
        data.resize(got);
        return data;
    }
    void close()
    {
        if (fd_ >= 0)
            ::close(std::exchange(fd_, -1));
    }
    /// Ends the connection by a reset.
    void reset()
    {
        const linger at_once{1, 0};
        setsockopt(fd_, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        close();
    }

  private:
    sockaddr_in address(std::uint16_t port) const
    {
        sockaddr_in at{};
        at.sin_family = AF_INET;
        at.sin_port = htons(port);
        at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return at;
    }
    int fd_;
};

/// Waits until the condition holds; what another thread does brings it about.
inline void wait_until(const std::function<bool()> &holds)
{
    while (!holds())
        sched_yield();
}

inline int pending(int socket, unsigned long request)
{
    int octets = -1;
    return ioctl(socket, request, &octets) == 0 ? octets : -1;
}

/// Waits until the reader has taken all that the peer has sent.
inline void wait_until_taken(const raw_socket &peer, std::int32_t desc)
{
    wait_until([&] { return pending(peer.fd(), SIOCOUTQ) == 0; });
    wait_until([&] { return pending(com_tcp_channels_g[desc].client_socket[0], FIONREAD) == 0; });
}

/// Waits until every thread of the process but the calling one sleeps in the kernel.
inline void wait_until_others_sleep()
{
    const std::string self = std::to_string(gettid());
    wait_until([&] {
        for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::string stat;
            std::getline(std::ifstream(task.path() / "stat"), stat);
            const std::size_t name_end = stat.rfind(')');
            if (task.path().filename() != self && name_end != std::string::npos && stat[name_end + 2] != 'S')
                return false;
        }
        return true;
    });
}

// ---------------------------------------------------------------------------- the host

/// Packets as the callback got them.
class inbox {
  public:
    void put(octets packet)
    {
        const std::lock_guard guard(lock_);
        packets_.push_back(std::move(packet));
        come_.notify_all();
    }
    octets next()
    {
        std::unique_lock guard(lock_);
        come_.wait(guard, [&] { return !packets_.empty(); });
        octets packet = std::move(packets_.front());
        packets_.pop_front();
        return packet;
    }
    bool empty()
    {
        const std::lock_guard guard(lock_);
        return packets_.empty();
    }

  private:
    std::mutex              lock_;
    std::condition_variable come_;
    std::deque<octets>      packets_;
};

inline inbox packets;

inline void keep_packet(std::uint8_t *packet, std::uint32_t length, std::uint8_t, std::uint8_t)
{
    packets.put(octets(packet, packet + length));
}

constexpr std::int32_t domain = 3; ///< of the logical channels below
constexpr std::int32_t sender = 5;
constexpr std::int32_t receiver = 6;

class channels : public testing::Test {
  protected:
    channels()
    {
        testing::FLAGS_gtest_death_test_style = "threadsafe";
        com_info_g.initialized = 0;
        std::memset(com_lch_info_g, 0, sizeof com_lch_info_g);
        com_init();
        while (!packets.empty())
            packets.next();
    }
    ~channels() override { remove_all(); }

    static void remove_all()
    {
        for (std::int32_t pch = 0; pch < COM_MAX_PCH; ++pch)
            if (com_pch_info_g[pch].pch_valid)
                remove(pch);
    }

    /// Ends a channel and its sockets; a server's listening one is left to the process otherwise.
    static void remove(std::int32_t pch)
    {
        com_pch_info_struct &info = com_pch_info_g[pch];
        com_pch_stop(pch);
        const int socket = info.attr.driver == COM_DRIVER_TCP ? com_tcp_channels_g[info.ch_desc].socket : -1;
        com_driver_table[info.attr.driver].disconnect(info.ch_desc);
        const bool server = info.attr.driver == COM_DRIVER_TCP && info.attr.u.tcp.server == 1;
        com_pch_remove(pch);
        if (server && socket >= 0)
            close(socket);
    }

    static com_pch_attr tcp(bool server, std::uint16_t port, std::uint32_t direction = COM_BOTH)
    {
        com_pch_attr attr{};
        attr.direction = direction;
        attr.driver = COM_DRIVER_TCP;
        attr.u.tcp.server = server;
        attr.u.tcp.address = "127.0.0.1";
        attr.u.tcp.port = port;
        return attr;
    }

    /// A physical channel with a sender and a receiver on it, as the host opens the agent's.
    std::int32_t open(const com_pch_attr &attr, com_lch_callback callback = keep_packet)
    {
        const std::int32_t pch = com_pch_add(&attr);
        com_lch_add(domain, sender, pch, COM_TRANSMIT, keep_packet, nullptr);
        com_lch_add(domain, receiver, pch, COM_RECEIVE, callback, buffer_.data());
        return pch;
    }
    static void start(std::int32_t pch) { com_pch_start(pch, 0, 223, 10000); }

    static com_tcp_channel &record(std::int32_t pch) { return com_tcp_channels_g[com_pch_info_g[pch].ch_desc]; }
    static std::uint16_t    port_of_server(std::int32_t pch) { return port_of(record(pch).socket); }

    static void write(const octets &data)
    {
        com_lch_write(domain, sender, data.data(), static_cast<std::uint32_t>(data.size()));
    }

    std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(COM_READ_SIZE);
};
