// GPRS RLC/MAC blocks by structure name (3GPP TS 44.060).  This build knows no block, so every name is an
// unknown one.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// 0 when the block was written, 1 for a name it does not know.
std::uint32_t gprs_block_pack(const char *struct_name, pack_info_struct *cursor, const void *value);
/// 0, or 1 when the block is not one that it decodes.
std::uint32_t gprs_block_unpack(const char *struct_name, void *value, unpack_info_struct *cursor);
/// Octets of the structure; those of a radio block for an unknown name.
std::uint32_t gprs_struct_size(const char *struct_name);
/// Structure name of a downlink block, valid to the next call; empty when it has none.
const char *gprs_block_identify(std::uintptr_t ignored, unpack_info_struct *cursor);
