#include "octets_read.h"

#include <arpa/inet.h>
#include <cstddef>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace solvane::tools {

namespace {

constexpr int most_descriptors = 256;
constexpr int most_tries = 20;

std::optional<std::uint64_t> octets_received(int connection)
{
    tcp_info  info = {};
    socklen_t size = sizeof info;
    const bool told = ::getsockopt(connection, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 &&
                      size >= offsetof(tcp_info, tcpi_bytes_received) + sizeof info.tcpi_bytes_received;
    return told ? std::optional<std::uint64_t>(info.tcpi_bytes_received) : std::nullopt;
}

} // namespace

int connection_to(const endpoint &to)
{
    for (int descriptor = 3; descriptor < most_descriptors; ++descriptor) {
        sockaddr_in peer = {};
        socklen_t   size = sizeof peer;
        if (::getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer), &size) == 0 && peer.sin_family == AF_INET &&
            peer.sin_port == htons(to.port) && peer.sin_addr.s_addr == ::inet_addr(to.address.c_str())) {
            return descriptor;
        }
    }
    return -1;
}

std::optional<std::uint64_t> octets_read(int connection)
{
    for (int tries = 0; tries < most_tries; ++tries) {
        int        waiting = 0;
        const auto before = octets_received(connection);
        if (!before || ::ioctl(connection, FIONREAD, &waiting) != 0) {
            return std::nullopt;
        }
        if (octets_received(connection) == before) {
            return *before - static_cast<std::uint64_t>(waiting);
        }
    }
    return std::nullopt;
}

} // namespace solvane::tools
