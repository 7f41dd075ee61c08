#include "port.h"

#include <cerrno>
#include <cstring>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include "failure.h"
#include "interrupt.h"

namespace solvane::tools {

namespace {

constexpr int         backlog = 4;
constexpr std::size_t read_size = 65536;

[[noreturn]] void no_port(std::uint16_t port)
{
    throw failure(exit_cannot_open, fmt::format("cannot listen on 127.0.0.1:{}: {}", port, std::strerror(errno)));
}

} // namespace

owned_descriptor::~owned_descriptor()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

owned_descriptor listen_on(std::uint16_t &port)
{
    owned_descriptor listening(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int        on = 1;
    sockaddr_in      address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto     *where = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    if (listening.get() < 0 || ::setsockopt(listening.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(listening.get(), where, size) != 0 || ::listen(listening.get(), backlog) != 0 ||
        ::getsockname(listening.get(), where, &size) != 0) {
        no_port(port);
    }
    port = ntohs(address.sin_port);
    return listening;
}

owned_descriptor accept_host(int listening)
{
    const int connection = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
    const int on = 1;
    if (connection >= 0) {
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on); /* a frame a segment, at once */
    }
    return owned_descriptor(connection);
}

bool send_all(int connection, std::span<const std::uint8_t> octets)
{
    while (!octets.empty()) {
        const ssize_t done = ::send(connection, octets.data(), octets.size(), MSG_NOSIGNAL);
        if (done < 0 && (errno != EINTR || interrupted())) {
            return false;
        }
        octets = octets.subspan(done > 0 ? static_cast<std::size_t>(done) : 0);
    }
    return true;
}

octets receive_some(int connection)
{
    octets        out(read_size);
    const ssize_t got = ::recv(connection, out.data(), out.size(), MSG_DONTWAIT);
    out.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return out;
}

} // namespace solvane::tools
