// Physical channels: connections to the target, each driven by a transport, with a reader thread where something
// is to be received.
//
// The calling order is com_init, com_pch_add, com_lch_add, com_pch_start, com_lch_connect; then com_lch_write at
// any time.  All operations are for one thread, the host's; the reader threads read the tables without a lock.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

struct pf_thread;

inline constexpr std::int32_t  COM_MAX_PCH = 8;
inline constexpr std::int32_t  COM_MAX_LCH = 20;       ///< per domain, per physical channel, and in all
inline constexpr std::int32_t  COM_MAX_DOMAIN = 10;
inline constexpr std::uint32_t MAX_PACKET_SIZE = 100000; ///< octets of one reassembled packet

inline constexpr tt_bool OSA_TRUE = 1;

struct com_info_struct {
    std::int32_t no_lch; ///< logical channels in use
    std::int32_t no_pch; ///< physical channels in use
    tt_bool      initialized;
};

/// A logical channel as a physical one knows it.
struct com_lch_key {
    std::uint32_t lch;
    std::uint32_t lch_domain_id;
};

struct com_pch_info_struct {
    tt_bool       pch_valid;
    com_pch_attr  attr;       ///< copy; the transport keeps a pointer to it
    std::uint32_t priority;   ///< stored, not applied to the thread
    std::uint32_t entry;      ///< stored, not used
    std::uint32_t stack_size; ///< octets, for the reader
    pf_thread    *thread;     ///< the reader, or null
    std::int32_t  no_of_lch;
    std::int32_t  no_of_tx_lch;
    std::int32_t  no_of_rx_lch;
    com_lch_key   lch_list[200]; ///< in the order of binding; only the first COM_MAX_LCH are reached
    std::uint8_t  lch_used[200];
    std::int32_t  ch_desc;    ///< what the transport's `open` answered
};

extern com_info_struct     com_info_g;
extern com_pch_info_struct com_pch_info_g[COM_MAX_PCH];

/// Clears all channels and has the transports register.  Once a process.
void com_init();
/// Takes the lowest free channel and opens its transport; its index, or -1.
std::int32_t com_pch_add(const com_pch_attr *attr);
/// Starts the reader of a channel that receives.
void com_pch_start(std::int32_t pch, std::uint32_t entry, std::uint32_t priority, std::uint32_t stack_size);
/// Ends the reader: it has left the library, or will on its return from the host's callback, without touching
/// the channel again.
void com_pch_stop(std::int32_t pch);
void com_pch_remove(std::int32_t pch);

/// Binds a logical channel; directions that do not fit end the process.
void com_pch_bind(std::int32_t pch, std::int32_t lch_domain_id, std::int32_t lch);
/// Records, frames and sends `length` octets; answers `length`, whatever the transport made of them.
std::uint32_t com_pch_write(std::int32_t pch, std::int32_t lch_domain_id, std::int32_t lch, const std::uint8_t *data,
                            std::uint32_t length);
