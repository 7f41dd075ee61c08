// Logical channels: the users of a physical channel, each with a receive buffer and a callback of its own.
//
// For the host's thread; the callback runs on the reader thread of the physical channel.
#pragma once

#include <cstdint>

#include "com_pch.h"
#include "solvane/solvane.h"

struct com_lch_info_struct {
    tt_bool          lch_valid;
    std::uint32_t    direction; ///< com_direction
    std::uint8_t    *buffer;    ///< the transport reads into it; the caller's, COM_READ_SIZE octets at least
    com_lch_callback callback;
    std::int32_t     pch;
};

extern com_lch_info_struct com_lch_info_g[COM_MAX_DOMAIN][COM_MAX_LCH];

/// Logical channels in use, with the new one.
std::int32_t com_lch_add(std::int32_t lch_domain_id, std::int32_t lch, std::int32_t pch, std::uint32_t direction,
                         com_lch_callback callback, std::uint8_t *buffer);
/// The transport's answer: true when connected.
tt_bool com_lch_connect(std::int32_t lch_domain_id, std::int32_t lch);
/// Always `length`: what the transport makes of it is not told.
std::uint32_t com_lch_write(std::int32_t lch_domain_id, std::int32_t lch, const std::uint8_t *data,
                            std::uint32_t length);
void com_lch_disconnect(std::int32_t lch_domain_id, std::int32_t lch);
/// Logical channels in use, without this one.  Its binding on the physical channel stays as it is.
std::int32_t com_lch_remove(std::int32_t lch_domain_id, std::int32_t lch);
/// Replaces the receive buffer of a valid channel.
void com_lch_set_buffer(std::int32_t lch_domain_id, std::int32_t lch, std::uint8_t *buffer);
