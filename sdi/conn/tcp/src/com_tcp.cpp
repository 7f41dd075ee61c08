// The TCP transport.  A server with one client and one with several take different paths in every operation.
#include "com_tcp.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "com_driver.h"
#include "pf_socket.h"
#include "pf_thread.h"
#include "tt_assert.h"

com_tcp_channel com_tcp_channels_g[COM_TCP_MAX_CHANNELS];

namespace {

constexpr char          unit[] = R"(ms_code\ps\sdi\conn\tcp\src\com_tcp)";
constexpr int           backlog = 20;
constexpr std::uint32_t select_microseconds = 55;

std::int32_t no_channels; // records in use

// Once a process, for all channels and whatever becomes of the connection.
bool told_closed_single;
bool told_closed_multi;

const char *no_setting()
{
    return nullptr;
}

com_tcp_channel &channel(std::int32_t ch_desc)
{
    tt_assert(ch_desc >= 0 && ch_desc < COM_TCP_MAX_CHANNELS, "ch_desc < COM_TCP_MAX_CHANNELS", unit, __LINE__);
    return com_tcp_channels_g[ch_desc];
}

bool in_use(const com_tcp_channel &ch, std::int32_t client)
{
    return client < ch.connected_num;
}

/// Hands the socket of a client to `call`; -1 when there is none.  An entry keeps its old value after a disconnect,
/// when that number may belong to another file of the process: the count comes first, then the look at what is in
/// use, and a disconnect does the same the other way round.
template <typename Call> std::int32_t transfer(com_tcp_channel &ch, std::int32_t client, Call call)
{
    if (!in_use(ch, client))
        return -1; // without a count, so that the disconnect sees an end of them
    ++ch.transfers;
    const std::int32_t moved = in_use(ch, client) ? call(ch.client_socket[client]) : -1;
    --ch.transfers;
    return moved;
}

void print_failure(const char *text)
{
    std::printf("%s:%d\n", text, pf_socket_error());
}

void print_closed(const com_tcp_channel &ch, bool &told)
{
    if (!told)
        std::printf("Port number=%d closed by peer\n", ch.ch_attr_p->u.tcp.port);
    told = true;
}

void free_record(com_tcp_channel &ch)
{
    ch.socket = -1;
    for (std::atomic<int> &socket : ch.client_socket)
        socket = -1;
    ch.ch_attr_p = nullptr;
    ch.connected_num = 0;
    ch.connect_failed = 0;
}

// ------------------------------------------------------------------------------------------ open

int create_socket()
{
    const int socket = pf_socket_create();
    if (socket < 0) {
        print_failure("socket creation failed:");
        com_error(COM_ERROR_SOCKET);
    }
    return socket;
}

void set_option(int socket, pf_socket_option option, int value, const char *complaint)
{
    if (!pf_socket_set(socket, option, value)) {
        print_failure(complaint);
        com_error(COM_ERROR_SOCKET);
    }
}

int open_server(std::uint16_t port)
{
    const int socket = create_socket();
    for (const pf_socket_option option : {PF_REUSE_ADDRESS, PF_KEEP_ALIVE, PF_NO_DELAY})
        set_option(socket, option, 1, "setsockopt failed:");
    if (!pf_socket_bind(socket, port)) {
        const int error = pf_socket_error(); // the first print may set another
        std::printf("bind failed on port %d:", port);
        std::printf("%s:%d\n", "", error);
        com_error(COM_ERROR_SOCKET);
    }
    if (!pf_socket_listen(socket, backlog)) {
        print_failure("listen failed:");
        com_error(COM_ERROR_SOCKET);
    }
    return socket;
}

int open_client()
{
    const int socket = create_socket();
    // Off, both of them: Nagle's algorithm stays on towards the target.
    for (const pf_socket_option option : {PF_REUSE_ADDRESS, PF_NO_DELAY})
        set_option(socket, option, 0, "set socket options failed:");
    return socket;
}

// ------------------------------------------------------------------------------------------ connect

/// False when the calling reader was asked to end while it waited: it has to leave as it came.
bool take_mutex(com_tcp_channel &ch)
{
    if (pf_mutex_take(ch.mutex))
        return true;
    if (pf_thread_stopping())
        return false;
    print_failure("Mutex take failed");
    return true; // goes on without
}

/// A failure that is no failure: the reader was asked to end while it waited.
bool was_stopped()
{
    return pf_socket_failure_kind() == PF_STOPPED;
}

enum class attempt { connected, failed, refused, stopped }; // refused: a client tries once

/// One try to connect, with the mutex held.
attempt try_connect(com_tcp_channel &ch)
{
    const com_tcp_attr &attr = ch.ch_attr_p->u.tcp;
    if (ch.connected_num != 0)
        return attempt::connected;
    if (ch.connect_failed)
        return attempt::refused;
    if (ch.client_socket[0] >= 0) { // of a connection that was dropped: the socket is gone
        ch.client_socket[0] = -1;
        ch.socket = open_client();
    }
    std::printf("connecting on %d\n", attr.port);
    if (pf_socket_connect(ch.socket, attr.address, attr.port))
        return attempt::connected;
    if (was_stopped())
        return attempt::stopped;
    ch.connect_failed = 1;
    return attempt::failed;
}

tt_bool connect_client(com_tcp_channel &ch)
{
    if (!take_mutex(ch))
        return 0;
    const attempt result = try_connect(ch);
    if (result == attempt::connected) {
        ch.client_socket[0] = ch.socket;
        ch.connected_num = 1; // behind the entry that it lets others use
    }
    pf_mutex_release(ch.mutex);
    if (result == attempt::failed)
        std::printf("Failed to connect with %s at %d\n", ch.ch_attr_p->u.tcp.address, ch.ch_attr_p->u.tcp.port);
    return result == attempt::connected;
}

/// Waits for a caller with the mutex held, so that a second one waits for the first.  The socket, or -1 after the
/// failure was told; releases the mutex then.
int accept_caller(com_tcp_channel &ch)
{
    const int caller = pf_socket_accept(ch.socket);
    if (caller < 0) {
        const int  error = pf_socket_error();
        const bool stopped = was_stopped();
        pf_mutex_release(ch.mutex);
        if (!stopped)
            std::printf("%s:%d\n", "Connect failed", error);
    }
    return caller;
}

tt_bool connect_single(com_tcp_channel &ch)
{
    if (!take_mutex(ch))
        return 0;
    if (ch.connected_num != 0) {
        ++ch.connected_num; // counts the calls, not the sockets
        pf_mutex_release(ch.mutex);
        return 1;
    }
    const int  caller = pf_socket_accept(ch.socket);
    const int  error = pf_socket_error();
    const bool stopped = caller < 0 && was_stopped();
    if (caller >= 0) {
        ch.client_socket[0] = caller;
        ++ch.connected_num;
    }
    if (!stopped)
        std::printf("Connected on port %d\n", ch.ch_attr_p->u.tcp.port); // after a failure too
    pf_mutex_release(ch.mutex);
    if (caller < 0 && !stopped)
        std::printf("%s:%d\n", "Connect failed", error);
    return caller >= 0;
}

tt_bool connect_multi(com_tcp_channel &ch)
{
    for (;;) {
        if (!take_mutex(ch))
            return 0;
        if (ch.connected_num >= com_tcp_client_num()) {
            pf_mutex_release(ch.mutex);
            return 1;
        }
        const int caller = accept_caller(ch);
        if (caller < 0)
            return 0;
        ch.client_socket[ch.connected_num] = caller;
        ++ch.connected_num;
        std::printf("Connected on port %d\n", ch.ch_attr_p->u.tcp.port);
        pf_mutex_release(ch.mutex);
    }
}

// ------------------------------------------------------------------------------------------ read

std::int32_t read_single(com_tcp_channel &ch, std::uint8_t *buffer, std::uint32_t read_len)
{
    std::int32_t got = 0;
    do
        got = transfer(ch, 0, [=](int socket) { return pf_socket_receive(socket, buffer, read_len); });
    while (got == -1 && !pf_thread_stopping()); // an error that lasts spins here
    // The end that a disconnect on this side makes is not the peer's.
    if (got == 0 && in_use(ch, 0))
        print_closed(ch, told_closed_single);
    return std::max(got, 0);
}

/// The last client that has something to read, or -1; -2 when the wait failed.  To be called within a transfer.
std::int32_t find_ready(const com_tcp_channel &ch)
{
    int  sockets[COM_TCP_MAX_CLIENTS];
    bool ready[COM_TCP_MAX_CLIENTS];
    for (std::int32_t n = 0; n < COM_TCP_MAX_CLIENTS; ++n)
        sockets[n] = in_use(ch, n) ? ch.client_socket[n].load() : -1;
    if (pf_socket_select(sockets, ready, COM_TCP_MAX_CLIENTS, select_microseconds) < 0)
        return -2;
    for (std::int32_t n = COM_TCP_MAX_CLIENTS - 1; n >= 0; --n)
        if (ready[n])
            return n;
    return -1;
}

std::int32_t clients_left(const com_tcp_channel &ch)
{
    std::int32_t left = 0;
    for (const std::atomic<int> &socket : ch.client_socket)
        left += socket >= 0;
    return left;
}

/// Takes a broken client out.  Without any left the process ends.
void drop_client(com_tcp_channel &ch, std::int32_t client)
{
    com_error(COM_ERROR_TRANSFER);
    ch.client_socket[client] = -1;
    if (clients_left(ch) == 0) {
        std::fflush(stdout);
        std::abort();
    }
}

std::int32_t read_multi(com_tcp_channel &ch, std::uint8_t *buffer, std::uint32_t read_len)
{
    while (!pf_thread_stopping()) {
        std::int32_t client = -1;
        transfer(ch, 0, [&](int) { return client = find_ready(ch); });
        if (client == -2)
            continue;
        if (client == -1)
            return 0;
        const std::int32_t got =
            transfer(ch, client, [=](int socket) { return pf_socket_receive(socket, buffer, read_len); });
        if (got > 0)
            return got;
        if (got == 0) {
            print_closed(ch, told_closed_multi);
            return 0;
        }
        if (!in_use(ch, client) || pf_socket_failure_kind() == PF_CONNECTION_RESET || was_stopped())
            continue;
        print_failure("tcp read failed:");
        drop_client(ch, client);
        return -1;
    }
    return 0;
}

// ------------------------------------------------------------------------------------------ write

/// What became of one buffer.
enum class sent { all, broken, called_off };

/// Sends on; a broken connection ends it where `gives_up` says so and is tried again for ever otherwise, but by a
/// reader that was asked to end and after a disconnect.
sent send_all(com_tcp_channel &ch, std::int32_t client, const std::uint8_t *data, std::uint32_t size, bool gives_up)
{
    while (size > 0) {
        const std::int32_t taken =
            transfer(ch, client, [=](int socket) { return pf_socket_send(socket, data, size); });
        if (taken > 0) {
            data += taken;
            size -= static_cast<std::uint32_t>(taken);
            continue;
        }
        if (pf_thread_stopping() || !in_use(ch, client))
            return sent::called_off;
        if (taken < 0 && pf_socket_failure_kind() == PF_WOULD_BLOCK)
            continue;
        if (taken < 0)
            print_failure("COM_WRITE Failed:");
        if (gives_up)
            return sent::broken;
        com_error(COM_ERROR_TRANSFER);
    }
    return sent::all;
}

void write_multi(com_tcp_channel &ch, const std::uint8_t *data, std::uint32_t write_len)
{
    for (std::int32_t n = COM_TCP_MAX_CLIENTS - 1; n >= 0; --n)
        if (in_use(ch, n) && ch.client_socket[n] >= 0 && send_all(ch, n, data, write_len, true) == sent::broken)
            drop_client(ch, n);
}

} // namespace

const char *(*com_tcp_setting)() = no_setting;

std::int32_t com_tcp_client_num()
{
    static const std::int32_t client_num = [] {
        const char *text = com_tcp_setting();
        const int   number = text == nullptr ? 1 : std::atoi(text);
        return number < 1 || number > COM_TCP_MAX_CLIENTS ? 1 : number;
    }();
    return client_num;
}

void com_tcp_init()
{
    for (com_tcp_channel &ch : com_tcp_channels_g)
        free_record(ch);
    com_driver_table[COM_DRIVER_TCP] = {com_tcp_open, com_tcp_connect, com_tcp_disconnect,
                                        com_tcp_read, com_tcp_write,   com_tcp_close};
}

std::int32_t com_tcp_open(const com_pch_attr *attr)
{
    const com_tcp_attr &tcp = attr->u.tcp;
    const int           socket = tcp.server == 1 ? open_server(tcp.port) : open_client();
    std::int32_t        desc = 0;
    while (desc < COM_TCP_MAX_CHANNELS && com_tcp_channels_g[desc].ch_attr_p != nullptr)
        ++desc;
    if (desc == COM_TCP_MAX_CHANNELS) {
        com_error(COM_ERROR_NO_CHANNEL);
        return -1;
    }
    com_tcp_channel &ch = com_tcp_channels_g[desc];
    ch.socket = socket;
    ch.ch_attr_p = attr;
    // The one that the last user of the record left serves again, unless somebody waits in accept with it for ever.
    if (ch.mutex == nullptr || !pf_mutex_is_free(ch.mutex))
        ch.mutex = pf_mutex_create();
    if (ch.mutex == nullptr)
        com_error(COM_ERROR_MUTEX);
    ++no_channels;
    return desc;
}

tt_bool com_tcp_connect(std::int32_t ch_desc)
{
    com_tcp_channel &ch = channel(ch_desc);
    tt_assert(ch.ch_attr_p != nullptr, "com_tcp_channels_g[ ch_desc ].ch_attr_p != NULL", unit, __LINE__);
    if (ch.ch_attr_p->u.tcp.server != 1)
        return connect_client(ch);
    return com_tcp_client_num() == 1 ? connect_single(ch) : connect_multi(ch);
}

void com_tcp_disconnect(std::int32_t ch_desc)
{
    com_tcp_channel   &ch = channel(ch_desc);
    const std::int32_t open = std::min(ch.connected_num.load(), com_tcp_client_num());
    // The entries keep their old values, and a server goes on listening.
    ch.connected_num = 0;
    ch.connect_failed = 0;
    for (std::int32_t n = 0; n < open; ++n)
        pf_socket_shut_down(ch.client_socket[n]);
    while (ch.transfers > 0) // which end now
        pf_thread_yield();
    for (std::int32_t n = 0; n < open; ++n)
        pf_socket_close(ch.client_socket[n]);
}

std::int32_t com_tcp_read(std::int32_t ch_desc, std::uint8_t *buffer, std::uint32_t read_len)
{
    tt_assert(static_cast<std::int32_t>(read_len) >= 0, "(int)read_len >= 0", unit, __LINE__);
    com_tcp_channel &ch = channel(ch_desc);
    return com_tcp_client_num() == 1 ? read_single(ch, buffer, read_len) : read_multi(ch, buffer, read_len);
}

std::int32_t com_tcp_write(std::int32_t ch_desc, const std::uint8_t *data, std::uint32_t write_len)
{
    tt_assert(static_cast<std::int32_t>(write_len) > 0, "(int)write_len > 0", unit, __LINE__);
    com_tcp_channel &ch = channel(ch_desc);
    if (com_tcp_client_num() == 1) {
        if (!in_use(ch, 0) || ch.client_socket[0] < 0)
            return -1;
        send_all(ch, 0, data, write_len, false);
    } else {
        write_multi(ch, data, write_len);
    }
    return static_cast<std::int32_t>(write_len);
}

void com_tcp_close(std::int32_t ch_desc)
{
    // Sockets and mutex are not released here: the caller has disconnected before, and what listens is left to the
    // end of the process.
    free_record(channel(ch_desc));
    --no_channels;
}
