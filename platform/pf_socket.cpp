// TCP sockets over the BSD interface of the platform.
#include "pf_socket.h"

#include <cerrno>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "pf_thread.h"

namespace {

constexpr std::uint32_t max_select = 64;

sockaddr_in ipv4(in_addr_t address, std::uint16_t port)
{
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = address;
    return to;
}

/// Waits until the socket is ready for `events`; false, with ECANCELED, when the thread was asked to end.
bool wait_ready(int socket, short events)
{
    const int wake = pf_thread_wake_descriptor();
    if (wake < 0)
        return true; // not a reader: the call itself may block
    pollfd watched[] = {{socket, events, 0}, {wake, POLLIN, 0}};
    for (;;) {
        const int ready = poll(watched, 2, -1);
        if (ready < 0 && errno == EINTR)
            continue;
        if (watched[1].revents != 0) {
            errno = ECANCELED;
            return false;
        }
        return ready > 0;
    }
}

/// Completes a connect that was started without blocking.
bool finish_connect(int socket)
{
    if (!wait_ready(socket, POLLOUT))
        return false;
    int       failure = 0;
    socklen_t size = sizeof failure;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &failure, &size) != 0)
        return false;
    errno = failure;
    return failure == 0;
}

} // namespace

int pf_socket_create()
{
    return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

bool pf_socket_set(int socket, pf_socket_option option, int value)
{
    switch (option) {
    case PF_REUSE_ADDRESS:
        return setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &value, sizeof value) == 0;
    case PF_KEEP_ALIVE:
        return setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &value, sizeof value) == 0;
    case PF_NO_DELAY:
        return setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &value, sizeof value) == 0;
    }
    return false;
}

bool pf_socket_bind(int socket, std::uint16_t port)
{
    const sockaddr_in to = ipv4(htonl(INADDR_ANY), port);
    return bind(socket, reinterpret_cast<const sockaddr *>(&to), sizeof to) == 0;
}

bool pf_socket_listen(int socket, int backlog)
{
    return listen(socket, backlog) == 0;
}

int pf_socket_accept(int socket)
{
    for (;;) {
        if (!wait_ready(socket, POLLIN))
            return -1;
        const int caller = accept4(socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (caller >= 0 || errno != EINTR)
            return caller;
    }
}

bool pf_socket_connect(int socket, const char *address, std::uint16_t port)
{
    const sockaddr_in to = ipv4(inet_addr(address), port);
    const int         flags = fcntl(socket, F_GETFL);
    const bool        interruptible = pf_thread_wake_descriptor() >= 0;
    if (interruptible && fcntl(socket, F_SETFL, flags | O_NONBLOCK) != 0)
        return false;
    bool connected = connect(socket, reinterpret_cast<const sockaddr *>(&to), sizeof to) == 0;
    if (!connected && errno == EINPROGRESS)
        connected = finish_connect(socket);
    const int failure = errno;
    if (interruptible)
        fcntl(socket, F_SETFL, flags);
    errno = failure;
    return connected;
}

std::int32_t pf_socket_receive(int socket, std::uint8_t *buffer, std::uint32_t size)
{
    // Readers meet data most of the time, and the wait costs a second call, so it comes only where there is none.
    ssize_t received = recv(socket, buffer, size, pf_thread_wake_descriptor() < 0 ? 0 : MSG_DONTWAIT);
    while (received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) && wait_ready(socket, POLLIN))
        received = recv(socket, buffer, size, MSG_DONTWAIT);
    return static_cast<std::int32_t>(received);
}

std::int32_t pf_socket_send(int socket, const std::uint8_t *data, std::uint32_t size)
{
    return static_cast<std::int32_t>(send(socket, data, size, MSG_NOSIGNAL));
}

int pf_socket_select(const int *sockets, bool *ready, std::uint32_t count, std::uint32_t microseconds)
{
    pollfd        watched[max_select];
    std::uint32_t used = count < max_select ? count : max_select;
    for (std::uint32_t n = 0; n < used; ++n)
        watched[n] = {sockets[n], POLLIN, 0}; // a negative descriptor is passed over
    const timespec limit{0, static_cast<long>(microseconds) * 1000};
    const int      found = ppoll(watched, used, &limit, nullptr);
    for (std::uint32_t n = 0; n < count; ++n)
        ready[n] = found > 0 && n < used && sockets[n] >= 0 && watched[n].revents != 0;
    return found;
}

void pf_socket_close(int socket)
{
    close(socket);
}

pf_socket_failure pf_socket_failure_kind()
{
    switch (errno) {
    case EAGAIN:
        return PF_WOULD_BLOCK;
    case ECONNRESET:
        return PF_CONNECTION_RESET;
    case ECANCELED:
        return PF_STOPPED;
    default:
        return PF_OTHER;
    }
}

int pf_socket_error()
{
    return errno;
}
