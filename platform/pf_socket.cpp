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

/// True in a thread that may be asked to end: it never waits inside a socket call, but in wait_ready.
bool interruptible()
{
    return pf_thread_wake_descriptor() >= 0;
}

/// Waits until the socket is ready for `events`; false, with ECANCELED, when the thread was asked to end.
bool wait_ready(int socket, short events)
{
    pollfd watched[] = {{socket, events, 0}, {pf_thread_wake_descriptor(), POLLIN, 0}};
    for (;;) {
        const int ready = poll(watched, 2, -1);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready > 0 && watched[0].revents == 0) {
            errno = ECANCELED;
            return false;
        }
        return ready > 0; // what is there already is taken, asked to end or not
    }
}

/// Sets or clears O_NONBLOCK; keeps errno.
void set_blocking(int socket, bool blocking)
{
    const int failure = errno;
    const int flags = fcntl(socket, F_GETFL);
    if (flags >= 0)
        fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
    errno = failure;
}

/// Completes a connect that is under way.
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

/// Takes back a connect that is under way, so that the socket can connect anew; keeps errno.
void call_off_connect(int socket)
{
    const int failure = errno;
    sockaddr  nobody{};
    nobody.sa_family = AF_UNSPEC;
    connect(socket, &nobody, sizeof nobody);
    errno = failure;
}

/// Repeats a transfer that a signal cut off, and in a thread that may be asked to end also one that found the socket
/// not ready for `events`.  Transfers meet data and room most of the time, and the wait costs a second call, so it
/// comes only where there is none.
template <typename Call> std::int32_t transfer(int socket, short events, Call call)
{
    const int flags = interruptible() ? MSG_DONTWAIT : 0;
    for (;;) {
        const ssize_t moved = call(flags);
        if (moved >= 0)
            return static_cast<std::int32_t>(moved);
        const bool not_ready = flags != 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        if (not_ready ? !wait_ready(socket, events) : errno != EINTR)
            return -1;
    }
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
    // A caller may be gone between the wait and the accept, so that the accept must not block either.
    const bool waits = interruptible();
    if (waits)
        set_blocking(socket, false);
    int caller = -1;
    do
        caller = accept4(socket, nullptr, nullptr, SOCK_CLOEXEC);
    while (caller < 0 &&
           (errno == EINTR || (waits && (errno == EAGAIN || errno == EWOULDBLOCK) && wait_ready(socket, POLLIN))));
    if (waits)
        set_blocking(socket, true);
    return caller;
}

bool pf_socket_connect(int socket, const char *address, std::uint16_t port)
{
    const sockaddr_in to = ipv4(inet_addr(address), port);
    const bool        waits = interruptible();
    if (waits)
        set_blocking(socket, false);
    bool connected = connect(socket, reinterpret_cast<const sockaddr *>(&to), sizeof to) == 0;
    if (!connected && (errno == EINPROGRESS || errno == EINTR)) // a signal does not end it either
        connected = finish_connect(socket);
    if (!connected && errno == ECANCELED)
        call_off_connect(socket);
    if (waits)
        set_blocking(socket, true);
    return connected;
}

std::int32_t pf_socket_receive(int socket, std::uint8_t *buffer, std::uint32_t size)
{
    return transfer(socket, POLLIN, [=](int flags) { return recv(socket, buffer, size, flags); });
}

std::int32_t pf_socket_send(int socket, const std::uint8_t *data, std::uint32_t size)
{
    return transfer(socket, POLLOUT, [=](int flags) { return send(socket, data, size, flags | MSG_NOSIGNAL); });
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
    for (std::uint32_t n = 0; n < used; ++n)
        if (found > 0 && (watched[n].revents & POLLNVAL) != 0) {
            errno = EBADF; // one closed socket fails the whole wait
            return -1;
        }
    return found;
}

void pf_socket_shut_down(int socket)
{
    shutdown(socket, SHUT_RDWR);
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
