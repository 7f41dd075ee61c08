// Which channels there are: descriptors written from the target's point of view, and the list that they become
// for the host, with every server turned into a client and every sender into a receiver.
//
// Runs on the host's thread before any channel is started; nothing is locked.
#pragma once

#include <cstdint>
#include <span>

#include "solvane/solvane.h"

/// A physical channel.  The first tt_comm_info_get resolves it in place: from then on `port_var`, `attr.u.tcp.address`
/// hold values instead of variable names, and `attr` is the host's side.
struct com_pch_desc {
    const char   *name;       ///< the key
    const char   *port_var;   ///< environment variable that holds the port, then its text
    tt_bool       from_env;   ///< 1: still to be resolved against the environment
    com_pch_attr  attr;       ///< `address` too starts as the name of a variable
    std::uint32_t stack_size; ///< octets, for the reader of the channel
    std::uint32_t priority;   ///< for the reader of the channel
    std::uint16_t com_port;   ///< number of the serial port, for COM_DRIVER_SERIAL
};

/// A logical channel on a physical one.
struct com_lch_desc {
    const char   *pch_name;
    std::uint32_t direction; ///< com_direction, as the target sees it
    std::uint8_t  kind;
    tt_bool       valid;
};

/// The descriptors of one group of channels.
struct tt_comm_group {
    std::span<com_pch_desc> pchs; ///< filled rows only
    std::span<com_lch_desc> lchs; ///< all rows
};

/// Row of `group` whose name equals `name`, or -1; a null name has no row.
std::int32_t tt_find_pch(const tt_comm_group &group, const char *name);

/// Appends logical row `lch` of `group`, on its physical row `pch`, to the list; a physical channel that is not
/// on the list yet is resolved against the environment and turned round.  Ends the process with status -1 and a
/// line on standard output when a setting is missing.  The new row, whose `lch_ready` is left to the caller.
ttcore_lch *tt_comm_info_add(comm_info_struct *comm_info, const tt_comm_group &group, std::int32_t pch,
                             std::uint32_t lch, std::uint8_t lch_flag, std::uint32_t lch_word);

// Indices of serial settings; a bad text prints one line on standard output and gives the number named here.
std::uint32_t parse_baud_rate(const char *text);    // 23
std::uint32_t parse_parity(const char *text);       // 5
std::uint32_t parse_stop_bits(const char *text);    // 3
std::uint32_t parse_flow_control(const char *text); // 4
std::uint32_t parse_input_mode(const char *text);   // 2
std::uint32_t parse_char_size(const char *text);    // 5

/// The list of channels, built at the first call.
comm_info_struct *tt_comm_info_get();
/// Releases the list; it is not built again.  True.
tt_bool tt_comm_info_free();
/// True.
tt_bool tt_comm_info_reset();
/// Hands its argument back.
std::uintptr_t tt_comm_info_hook(std::uintptr_t value);
