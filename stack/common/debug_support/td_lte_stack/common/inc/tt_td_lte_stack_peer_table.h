// LTE rows of the peer table, and the air messages: structures that the closed library marrowd codes, by name.
//
// The air messages stand in two tables apart from the peer table, since their functions have other shapes: one table
// counts bits, the other octets.  A build without the library has no rows in them, see SOLVANE_MARROWD.  The tables
// grow inside init_dll and are read-only afterwards.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// Writes `value` to `frame` and the bits written to `bit_count`; `error_code` is not looked at.
using air_msg_encode_bits = void (*)(const void *value, std::uint8_t *frame, std::uint32_t *bit_count,
                                     std::uint32_t *error_code);
/// Fills `value` and writes the bits read to `bit_count`; any `error_code` but 0 is a failure.
using air_msg_decode_bits = void (*)(void *value, const std::uint8_t *frame, std::uint32_t *bit_count,
                                     std::uint32_t *error_code);
/// Takes the room for `value` in `octet_count` and leaves the octets written there.
using air_msg_encode_octets = void (*)(const void *value, std::uint8_t *frame, std::uint32_t *octet_count);
/// Takes the octets of `frame` in `octet_count` and leaves those read there; any result but 0 is a failure.
using air_msg_decode_octets = std::int32_t (*)(void *value, const std::uint8_t *frame, std::uint32_t *octet_count);

template <class Encode, class Decode> struct AirMsgRow {
    const char   *name;   ///< of the structure; unique in its table, compared with strcmp
    std::uint32_t size;   ///< octets of the structure in memory
    Encode        encode;
    Decode        decode;
};

template <class Row> struct air_msg_table {
    std::uint32_t count;
    Row          *rows; ///< from the C library's heap, moved by every growth
};

using air_msg_bits_row   = AirMsgRow<air_msg_encode_bits, air_msg_decode_bits>;
using air_msg_octets_row = AirMsgRow<air_msg_encode_octets, air_msg_decode_octets>;
SOLVANE_ILP32_SIZE(air_msg_bits_row, 16);
SOLVANE_ILP32_SIZE(air_msg_octets_row, 16);

extern air_msg_table<air_msg_bits_row>   lte_asn_peer_table; ///< LTE RRC channels
extern air_msg_table<air_msg_octets_row> lte_nas_peer_table; ///< LTE NAS and test control

/// Appends a row to its table unless the name stands there.  The name is not copied.
void register_air_msg_row(const air_msg_bits_row &row);
void register_air_msg_row(const air_msg_octets_row &row);

/// Registers the LTE RRC types in the peer table and fills the two tables above.
void tt_register_lte_peers();

// Functions of a row, or null for a name that the table does not hold.
air_msg_encode_bits   air_msg_find_encode_bits(const char *name);
air_msg_decode_bits   air_msg_find_decode_bits(const char *name);
air_msg_encode_octets air_msg_find_encode_octets(const char *name);
air_msg_decode_octets air_msg_find_decode_octets(const char *name);

/// Writes the structure `name` at `cursor->frame`, whose room the caller owes, and adds what it took to
/// `cursor->bits`.  Returns the octets written.  `kind` tells the table: its first octet becomes 1 for bits, 2 for
/// octets; for an unknown name, result 0, the whole word becomes 0.
std::uint32_t air_msg_pack(const char *name, pack_info_struct *cursor, const void *value, std::uint32_t *kind);

/// Fills the structure `name` from `cursor->frame` and returns the octets read, 0 at a failure.  The first octet of
/// `kind` becomes 1 for bits, 2 for octets, 0 for an unknown name.
/// `frame` and `fr_size` stay as they are.  Messages counted in bits add up in `cursor->bits`, which may not pass
/// `fr_size`: that is an assertion.  Messages counted in octets leave `bits` alone.
std::uint32_t air_msg_unpack(const char *name, void *value, unpack_info_struct *cursor, std::uint32_t *kind);

/// Octets of the structure `name` in memory, and 1 in `found`; 0 for an unknown name, and `found` is left alone.
std::uint32_t air_msg_size(const char *name, std::uint8_t *found);
