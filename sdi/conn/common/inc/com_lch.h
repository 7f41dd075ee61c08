// Logical channels: the users of a physical channel.
//
// This build registers no transport, so no logical channel ever finds a physical one.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// Logical channels in use.
std::int32_t com_lch_add(std::int32_t lch_domain_id, std::int32_t lch, std::int32_t pch, std::uint32_t direction,
                         com_lch_callback callback, std::uint8_t *buffer);
tt_bool com_lch_connect(std::int32_t lch_domain_id, std::int32_t lch);
/// Always `length`: what the transport makes of it is not told.
std::uint32_t com_lch_write(std::int32_t lch_domain_id, std::int32_t lch, const std::uint8_t *data,
                            std::uint32_t length);
void com_lch_disconnect(std::int32_t lch_domain_id, std::int32_t lch);
/// Logical channels in use.
std::int32_t com_lch_remove(std::int32_t lch_domain_id, std::int32_t lch);
