// TCP sockets of the plug-in, IPv4.  A socket is a descriptor, -1 when there is none.
//
// Calls answer as the sockets interface does, and pf_socket_error tells the reason of the last failure in the
// calling thread.  Those that can block end with PF_STOPPED in a thread that was asked to end (pf_thread.h).
#pragma once

#include <cstdint>

enum pf_socket_failure : int {
    PF_OTHER,
    PF_WOULD_BLOCK,
    PF_CONNECTION_RESET,
    PF_STOPPED ///< the calling thread was asked to end
};

enum pf_socket_option { PF_REUSE_ADDRESS, PF_KEEP_ALIVE, PF_NO_DELAY };

/// A new TCP socket, or -1.
int pf_socket_create();
bool pf_socket_set(int socket, pf_socket_option option, int value);
/// Binds to `port` on all addresses.
bool pf_socket_bind(int socket, std::uint16_t port);
bool pf_socket_listen(int socket, int backlog);
/// The socket of the next caller, or -1.
int pf_socket_accept(int socket);
/// Connects to a dotted address.
bool pf_socket_connect(int socket, const char *address, std::uint16_t port);
/// Octets received, 0 when the peer has closed, -1.
std::int32_t pf_socket_receive(int socket, std::uint8_t *buffer, std::uint32_t size);
/// Octets taken, or -1.
std::int32_t pf_socket_send(int socket, const std::uint8_t *data, std::uint32_t size);
/// Marks in `ready` which of `count` sockets (-1: none) can be read within `microseconds`; how many, or -1.
int pf_socket_select(const int *sockets, bool *ready, std::uint32_t count, std::uint32_t microseconds);
/// Ends the connection; what waits on the socket returns.
void pf_socket_shut_down(int socket);
void pf_socket_close(int socket);

/// Why the last call failed, and the platform's own number for it.
pf_socket_failure pf_socket_failure_kind();
int               pf_socket_error();
