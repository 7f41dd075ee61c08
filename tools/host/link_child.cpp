#include "link_child.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include "chunk_tail.h"
#include "com_frame.h"
#include "frame_splitter.h"
#include "octets_read.h"

namespace solvane::tools {

namespace {

constexpr std::int32_t  lch_domain = ENTITY_DEFAULT; /* the agent belongs to the infrastructure */
constexpr std::uint32_t reader_stack = 256 * 1024;   /* octets, for our callback */
constexpr std::size_t   longest_command = 65536;     /* octets */
constexpr std::uint64_t least_told = 8;              /* octets: the system may count the end of the stream as one */
constexpr std::uint8_t  delimiter = 0x7E;

/* The callback has no argument of ours, so what it needs stands here; the child serves one link only. */
int                       parent = -1;
std::vector<std::uint8_t> buffer(COM_READ_SIZE + 1); /* an escape at a chunk's end takes in the octet behind it */
bool                      remainder_comes = false;   /* the next packet lacks its beginning */
int                       connection = -1;           /* the channel's, once it is known */
endpoint                  agent;
std::uint64_t             accounted = 0;             /* octets read that became packets or were told */

/* Blocks while the parent is busy; without a parent there is nobody to tell. */
void tell(link_state state, const void *content, std::size_t size)
{
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    link_head  head = {static_cast<std::uint32_t>(state), 0,
                       std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()};
    iovec      parts[] = {{&head, sizeof head}, {const_cast<void *>(content), size}};
    msghdr     message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    [[maybe_unused]] const auto sent = ::sendmsg(parent, &message, MSG_NOSIGNAL);
}

void tell(link_state state, const std::string &text)
{
    tell(state, text.data(), text.size());
}

/* Tells of octets that were read and that nobody saw: a chunk that begins with the end of a frame is dropped whole. */
void account(std::span<const std::uint8_t> packet, const chunk_tail &tail)
{
    const std::size_t frame = frame_of(packet).size();
    accounted += tail.whole + (frame > tail.first ? frame - tail.first : 0); /* earlier chunks held the rest */
    connection = connection < 0 ? connection_to(agent) : connection;
    const auto read = connection < 0 ? std::nullopt : octets_read(connection);
    if (!read) {
        return;
    }
    if (*read >= accounted + least_told) {
        tell(link_state::dropped,
             fmt::format("{} octets of a read that began with the end of a frame", *read - accounted));
    }
    accounted = *read;
}

/* On the reader thread, for every packet. */
void received(std::uint8_t *packet, std::uint32_t length, std::uint8_t, std::uint8_t)
{
    const chunk_tail tail = tail_of(std::span(buffer).first(COM_READ_SIZE));
    account({packet, length}, tail);
    if (remainder_comes && buffer[0] != delimiter) {
        tell(link_state::dropped, fmt::format("a packet lost its beginning, its last {} octets are left out", length));
    } else {
        tell(link_state::packet, packet, length);
    }
    for (const auto &each : tail.packets) {
        tell(link_state::packet, each.data(), each.size());
    }
    if (tail.stray != 0) {
        tell(link_state::dropped, fmt::format("{} octets outside of frames", tail.stray));
    }
    remainder_comes = tail.cut;
    std::memset(buffer.data(), 0, buffer.size());
}

/* Behind the last packet the buffer was zeroed: what stands there now never became one. */
void tell_leftover()
{
    const auto last = std::find_if(buffer.rbegin(), buffer.rend(), [](std::uint8_t octet) { return octet != 0; });
    const auto size = buffer.rend() - last;
    if (remainder_comes || size != 0) {
        tell(link_state::dropped, fmt::format("the connection ended in a packet{}",
                                              size != 0 ? fmt::format(", behind {} octets or more", size) : ""));
    }
}

/* Adds a channel of the list with its users; the logical channel that sends, or -1. */
std::int32_t open_channel(const dll_info_struct &info, const ttcore_pch &row, std::vector<std::int32_t> &opened)
{
    std::int32_t       sender = -1;
    const std::int32_t pch = info.com_pch_add(row.attr);
    if (pch < 0) {
        return sender;
    }
    for (std::uint32_t i = 0; i < row.no_of_lch; ++i) {
        const ttcore_lch &user = row.lch_list[i];
        const auto        lch = static_cast<std::int32_t>(user.lch_desc_index);
        info.com_lch_add(lch_domain, lch, pch, user.direction, received, buffer.data());
        sender = user.direction == COM_RECEIVE ? sender : lch;
    }
    info.com_pch_start(pch, 0, 0, reader_stack);
    opened.push_back(pch);
    return sender;
}

void pass_commands(const dll_info_struct &info, std::int32_t sender)
{
    std::vector<std::uint8_t> packet(longest_command);
    for (;;) {
        const ssize_t got = ::recv(parent, packet.data(), packet.size(), 0);
        if (got <= 0) {
            return;
        }
        info.com_lch_write(lch_domain, sender, packet.data(), static_cast<std::uint32_t>(got));
    }
}

} // namespace

void serve_link(const plugin &loaded, const endpoint &to, int channel)
{
    const dll_info_struct    &info = *loaded.info;
    std::vector<std::int32_t> opened;
    std::int32_t              sender = -1;
    parent = channel;
    agent = to;
    ::setenv("MS_ADDR", to.address.c_str(), 1);
    ::setenv("MS_MTA_RECV_PORT", std::to_string(to.port).c_str(), 1);
    const comm_info_struct &list = *info.tt_comm_info_get();
    info.com_init();
    for (std::uint32_t i = 0; i < list.no_of_pch; ++i) {
        const ttcore_pch &row = list.ttcore_pch_list[i];
        if (row.attr->driver == COM_DRIVER_TCP) { /* the plug-in has no other driver */
            sender = std::max(sender, open_channel(info, row, opened));
        }
    }
    if (sender < 0 || info.com_lch_connect(lch_domain, sender) == 0) {
        tell(link_state::refused, sender < 0 ? "the plug-in lists no channel to an agent" : "nobody answers there");
    } else {
        tell(link_state::connected, "");
        pass_commands(info, sender);
        for (const std::int32_t pch : opened) {
            info.com_pch_stop(pch);
        }
        info.com_lch_disconnect(lch_domain, sender);
        tell_leftover();
    }
    std::fflush(nullptr); /* a recording of what was sent may be open */
    ::_exit(0);
}

} // namespace solvane::tools
