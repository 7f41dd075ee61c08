// Physical channels: the table, the reader thread, the way out through framing and transport.
#include "com_pch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "com_driver.h"
#include "com_frame.h"
#include "com_lch.h"
#include "com_log.h"
#include "com_tcp.h"
#include "pf_thread.h"
#include "tt_assert.h"

com_info_struct     com_info_g;
com_pch_info_struct com_pch_info_g[COM_MAX_PCH];
com_driver_struct   com_driver_table[COM_MAX_DRIVER];

namespace {

constexpr char unit[] = R"(ms_code\ps\sdi\conn\common\src\com_pch)";

// How long a reader that gets nothing would wait; all readers share it.  See wait_idle.
std::uint32_t idle_wait;

// Never created: a write of a channel with several senders goes ahead unguarded.
pf_mutex *write_lock;

bool receives(std::uint32_t direction)
{
    return direction == COM_RECEIVE || direction == COM_BOTH;
}

bool transmits(std::uint32_t direction)
{
    return direction == COM_TRANSMIT || direction == COM_BOTH;
}

/// A one-way channel takes only its own kind.
bool directions_fit(std::uint32_t pch_direction, std::uint32_t lch_direction)
{
    return pch_direction == COM_BOTH || pch_direction == lch_direction;
}

com_pch_info_struct &slot(std::int32_t pch)
{
    tt_assert((pch >= 0) && (pch < COM_MAX_PCH), "(pch >= 0) && (pch < COM_MAX_PCH)", unit, __LINE__);
    return com_pch_info_g[pch];
}

/// The reader does not sleep between two empty reads.
void wait_idle(std::uint32_t) {}

// -------------------------------------------------------------------------------------------- the reader

/// The channel that a reader hands its packets to.
struct receiver {
    com_lch_key key;
    bool        fixed; ///< for the thread's life; otherwise the buffer is taken anew before each read
};

receiver find_receiver(const com_pch_info_struct &pch)
{
    if (pch.no_of_rx_lch != 1)
        return {{0, 0}, false};
    for (std::int32_t n = 0; n < pch.no_of_lch; ++n) {
        const com_lch_key &key = pch.lch_list[n];
        if (receives(com_lch_info_g[key.lch_domain_id][key.lch].direction))
            return {key, true};
    }
    com_error(COM_ERROR_DIRECTION);
    return {{0, 0}, true};
}

/// A packet in the making, on the reader's stack.
struct packet_buffer {
    std::uint32_t length;
    std::uint8_t  octets[MAX_PACKET_SIZE];
};

void append(packet_buffer &packet, const std::uint8_t *decoded, std::uint32_t length)
{
    tt_assert(packet.length + length < MAX_PACKET_SIZE, "(len_to_start+len_to_read) < MAX_PACKET_SIZE", unit,
              __LINE__);
    std::memcpy(packet.octets + packet.length, decoded, length);
    packet.length += length;
}

/// Hands the packet to the host; false when the reader was asked to end meanwhile.
bool deliver(packet_buffer &packet, const com_lch_key &key)
{
    const com_lch_callback callback = com_lch_info_g[key.lch_domain_id][key.lch].callback;
    pf_thread_leave();
    callback(packet.octets, packet.length, static_cast<std::uint8_t>(key.lch_domain_id),
             static_cast<std::uint8_t>(key.lch));
    return pf_thread_return();
}

/// Puts one chunk into the packet, and the packet on its way when its frame is complete.
bool take_chunk(packet_buffer &packet, const std::uint8_t *chunk, std::uint32_t size, const com_lch_key &key)
{
    std::uint8_t *decoded = nullptr;
    std::uint32_t length = 0;
    const bool    complete = DecodeData(chunk, size, &decoded, &length);
    if (length != 0 && decoded != nullptr)
        append(packet, decoded, length);
    if (!complete)
        return true; // the next chunk goes on with this packet
    const bool goes_on = packet.length == 0 || deliver(packet, key);
    packet.length = 0;
    return goes_on;
}

void read_channel(void *argument)
{
    const auto             &pch = *static_cast<com_pch_info_struct *>(argument);
    const com_driver_struct driver = com_driver_table[pch.attr.driver];
    const std::int32_t      ch_desc = pch.ch_desc;
    if (!driver.connect(ch_desc))
        return;

    const receiver       to = find_receiver(pch);
    com_lch_info_struct &lch = com_lch_info_g[to.key.lch_domain_id][to.key.lch];
    std::uint8_t        *read_ptr = lch.buffer;
    packet_buffer        packet;
    packet.length = 0;
    for (std::int32_t got = 0; !pf_thread_stopping();) {
        if (got == 0) {
            idle_wait += idle_wait < 50 ? 5 : 0;
            wait_idle(idle_wait);
        } else {
            idle_wait = 0;
        }
        if (!to.fixed)
            read_ptr = lch.buffer;
        got = driver.read(ch_desc, read_ptr, COM_READ_SIZE);
        // A failed read counts as a chunk of fewer than four octets: it closes the packet in the making.
        if (got != 0 && !take_chunk(packet, read_ptr, static_cast<std::uint32_t>(std::max(got, 0)), to.key))
            return;
    }
}

} // namespace

void com_init()
{
    com_info_g.no_lch = 0;
    com_info_g.no_pch = 0;
    tt_assert(com_info_g.initialized != OSA_TRUE, "com_info_g.initialized != OSA_TRUE", unit, __LINE__);
    for (com_pch_info_struct &pch : com_pch_info_g)
        pch.pch_valid = 0;
    for (auto &domain : com_lch_info_g)
        for (com_lch_info_struct &lch : domain)
            lch.lch_valid = 0;
    com_tcp_init();
    com_info_g.initialized = OSA_TRUE;
}

std::int32_t com_pch_add(const com_pch_attr *attr)
{
    if (com_info_g.no_pch >= COM_MAX_PCH)
        com_error(COM_ERROR_NO_CHANNEL);
    std::int32_t pch = 0;
    while (pch < COM_MAX_PCH && com_pch_info_g[pch].pch_valid)
        ++pch;
    if (pch == COM_MAX_PCH) {
        com_error(COM_ERROR_NO_CHANNEL);
        return -1;
    }
    com_pch_info_struct &info = com_pch_info_g[pch];
    info.attr = *attr;
    info.pch_valid = OSA_TRUE;
    info.no_of_lch = 0;
    info.ch_desc = com_driver_table[attr->driver].open(&info.attr);
    ++com_info_g.no_pch;
    return pch;
}

void com_pch_bind(std::int32_t pch, std::int32_t lch_domain_id, std::int32_t lch)
{
    tt_assert((lch >= 0) && (lch < COM_MAX_LCH), "(lch >= 0) && (lch < COM_MAX_LCH)", unit, __LINE__);
    com_pch_info_struct &info = slot(pch);
    tt_assert(info.pch_valid == OSA_TRUE, "com_pch_info_g[pch].pch_valid == OSA_TRUE", unit, __LINE__);
    com_lch_info_struct &user = com_lch_info_g[lch_domain_id][lch];
    tt_assert(user.lch_valid == OSA_TRUE, "com_lch_info_g[lch_domain_id][lch].lch_valid == OSA_TRUE", unit, __LINE__);
    if (!directions_fit(info.attr.direction, user.direction))
        com_error(COM_ERROR_DIRECTION);
    if (info.no_of_lch >= COM_MAX_LCH)
        com_error(COM_ERROR_TOO_MANY_LCH);

    info.lch_list[info.no_of_lch] = {static_cast<std::uint32_t>(lch), static_cast<std::uint32_t>(lch_domain_id)};
    info.lch_used[info.no_of_lch] = 1;
    ++info.no_of_lch;
    info.no_of_tx_lch += transmits(user.direction);
    info.no_of_rx_lch += receives(user.direction);
    user.pch = pch;
}

void com_pch_start(std::int32_t pch, std::uint32_t entry, std::uint32_t priority, std::uint32_t stack_size)
{
    com_pch_info_struct &info = slot(pch);
    info.priority = priority;
    info.entry = entry;
    info.stack_size = stack_size;
    // The packet in the making lies on the reader's stack, which the host's figure does not count in.
    if (receives(info.attr.direction))
        info.thread = pf_thread_start(read_channel, &info, stack_size + sizeof(packet_buffer));
}

void com_pch_stop(std::int32_t pch)
{
    com_pch_info_struct &info = slot(pch);
    if (info.thread != nullptr) {
        pf_thread_stop(info.thread);
        info.thread = nullptr;
    }
}

void com_pch_remove(std::int32_t pch)
{
    com_pch_info_struct &info = slot(pch);
    com_driver_table[info.attr.driver].close(info.ch_desc);
    info.pch_valid = 0;
    info.no_of_lch = 0;
    info.no_of_tx_lch = 0;
    info.no_of_rx_lch = 0;
    --com_info_g.no_pch;
    std::memset(info.lch_used, 0, sizeof info.lch_used);
}

std::uint32_t com_pch_write(std::int32_t pch, std::int32_t lch_domain_id, std::int32_t lch, const std::uint8_t *data,
                            std::uint32_t length)
{
    const com_pch_info_struct &info = slot(pch);
    tt_assert(info.pch_valid == OSA_TRUE, "com_pch_info_g[pch].pch_valid == OSA_TRUE", unit, __LINE__);
    tt_assert(com_lch_info_g[lch_domain_id][lch].lch_valid == OSA_TRUE,
              "com_lch_info_g[lch_domain_id][lch].lch_valid == OSA_TRUE", unit, __LINE__);
    com_log_packet(data, length);

    const bool locked = info.no_of_tx_lch != 1 && write_lock != nullptr && pf_mutex_take(write_lock);
    std::uint8_t *frame = nullptr;
    std::uint32_t framed = 0;
    EncodeData(data, length, &frame, &framed);
    com_driver_table[info.attr.driver].write(info.ch_desc, frame, framed);
    std::free(frame);
    if (locked)
        pf_mutex_release(write_lock);
    return length;
}

void com_error(com_error_code code)
{
    if (com_tcp_client_num() >= 1 && code == COM_ERROR_TRANSFER)
        return;
    std::fflush(stdout); // what led here was told there
    std::abort();
}
