// Service messages with the agent: what it reports, and texts.
#include "tt_mtastruct.h"

#include "tt_mtastruct_parts.h"

namespace {

constexpr std::uint32_t string_room     = 200;
constexpr std::uint32_t btoffsize_room  = 255;
constexpr std::uint32_t offsize_room    = 65535;
constexpr std::uint32_t bit_map_room    = 32000; ///< and what it grows by: no domain fills it
constexpr std::uint32_t bit_map_octets  = 15;    ///< of an entry on the wire
constexpr const char   *bit_map_too_long = "..\\sdi\\test\\mta\\msg_codec\\src\\tt_mtastruct_rest:"
                                           "length of bit_map will not fit length field with width 16.\n";

} // namespace

// ---------------------------------------------------------------------------------- mta_string_struct

void mta_string_pack(pack_info_struct *cursor, const mta_string_struct *value)
{
    per_put_8(cursor, 8, value->no_str);
    per_put_octets(cursor, value->str, value->no_str);
}

void mta_string_rest(mta_string_struct *value, unpack_info_struct *cursor)
{
    const std::uint32_t length = per_get_8_checked(cursor, 8);
    value->no_str              = tt_fitting<std::uint8_t>(cursor, length, 1);
    tt_grow(&value->str, &value->str_size, value->no_str, 0);
    per_get_octets(cursor, value->str, value->no_str);
}

void mta_string_init(mta_string_struct *value)
{
    tt_clear(value);
    tt_make_array(&value->str, &value->str_size, string_room);
}

void mta_string_free(mta_string_struct *value)
{
    tt_free_array(&value->str, &value->str_size);
}

// ---------------------------------------------------------------------------------- mta_tt_fun_call_resp_struct

void mta_tt_fun_call_resp_pack(pack_info_struct *cursor, const mta_tt_fun_call_resp_struct *value)
{
    per_put_16(cursor, 16, static_cast<std::uint32_t>(value->response << 8)); // and the reserved octet
    per_put_16(cursor, 16, value->no_message);
    per_put_octets(cursor, value->message, value->no_message);
}

void mta_tt_fun_call_resp_rest(mta_tt_fun_call_resp_struct *value, unpack_info_struct *cursor)
{
    value->response   = static_cast<std::uint8_t>(per_get_16_checked(cursor, 16) >> 8);
    const auto length = per_get_16_checked(cursor, 16);
    value->no_message = tt_fitting<std::uint16_t>(cursor, length, 1);
    tt_borrow(cursor, &value->message, value->no_message);
}

void mta_tt_fun_call_resp_init(mta_tt_fun_call_resp_struct *value)
{
    tt_clear(value);
}

/// The structure owns no array.
void mta_tt_fun_call_resp_free(mta_tt_fun_call_resp_struct *) {}

// ---------------------------------------------------------------------------------- mta_bit_map_struct

void mta_bit_map_pack(pack_info_struct *cursor, const mta_bit_map_struct *value)
{
    per_put_32(cursor, 32, static_cast<std::uint32_t>(value->offset) << 16 | value->no_bits);
    per_put_8(cursor, 8, value->no_touple);
    for (const mta_bit_touple_struct &touple : value->touple)
        per_put_16(cursor, 16, static_cast<std::uint32_t>(touple.bit_num << 8 | touple.position));
}

void mta_bit_map_rest(mta_bit_map_struct *value, unpack_info_struct *cursor)
{
    const std::uint32_t place = per_get_32_checked(cursor, 32);
    value->offset             = static_cast<std::uint16_t>(place >> 16);
    value->no_bits            = static_cast<std::uint16_t>(place);
    value->no_touple          = static_cast<std::uint8_t>(per_get_8_checked(cursor, 8));
    for (mta_bit_touple_struct &touple : value->touple) {
        const std::uint32_t part = per_get_16_checked(cursor, 16);
        touple.bit_num           = static_cast<std::uint8_t>(part >> 8);
        touple.position          = static_cast<std::uint8_t>(part);
    }
}

// ---------------------------------------------------------------------------------- mta_tt_offsize_resp_struct

static void bitf_info_pack(pack_info_struct *cursor, const mta_bitf_info_struct *value)
{
    const tt_list_place count = tt_open_list(cursor);
    for (std::uint32_t i = 0; i < value->no_bit_map; i++)
        mta_bit_map_pack(cursor, &value->bit_map[i]);
    tt_close_list(cursor, count, bit_map_too_long);
}

/// The entries need not end where the count says: one that passes it is taken, and ends the list.
static void bitf_info_rest(mta_bitf_info_struct *value, unpack_info_struct *cursor)
{
    const std::uint32_t octets = per_get_16_checked(cursor, 16);
    const std::uint32_t end    = cursor->bits + octets * 8;

    value->no_bit_map = 0;
    while (cursor->bits < end && tt_has_octets(cursor, bit_map_octets)) {
        tt_grow(&value->bit_map, &value->bit_map_size, value->no_bit_map + 1u, bit_map_room);
        mta_bit_map_rest(&value->bit_map[value->no_bit_map], cursor);
        value->no_bit_map++;
    }
}

void mta_tt_offsize_resp_pack(pack_info_struct *cursor, const mta_tt_offsize_resp_struct *value)
{
    per_put_32(cursor, 32,
               static_cast<std::uint32_t>(value->response) << 24 | static_cast<std::uint32_t>(value->seg_id << 16) |
                   static_cast<std::uint32_t>(value->entity_id << 8) | value->no_btoffsize);
    per_put_octets(cursor, value->btoffsize, value->no_btoffsize);
    per_put_16(cursor, 16, value->no_offsize * 2u);
    tt_put_words(cursor, value->offsize, value->no_offsize);
    bitf_info_pack(cursor, &value->bitf_offsize);
}

void mta_tt_offsize_resp_rest(mta_tt_offsize_resp_struct *value, unpack_info_struct *cursor)
{
    // The first two octets hold numbers below 16 and are cut to that on this side only.
    const std::uint32_t head = per_get_24_checked(cursor, 24);
    value->response          = head >> 16 & 0x0F;
    value->seg_id            = head >> 8 & 0x0F;
    value->entity_id         = static_cast<std::uint8_t>(head);

    const std::uint32_t octets = per_get_8_checked(cursor, 8);
    value->no_btoffsize        = tt_fitting<std::uint8_t>(cursor, octets, 1);
    tt_grow(&value->btoffsize, &value->btoffsize_size, value->no_btoffsize, 0);
    per_get_octets(cursor, value->btoffsize, value->no_btoffsize);

    const std::uint32_t words = per_get_16_checked(cursor, 16) >> 1;
    value->no_offsize         = tt_fitting<std::uint16_t>(cursor, words, 2);
    tt_grow(&value->offsize, &value->offsize_size, value->no_offsize, 0);
    tt_get_words(cursor, value->offsize, value->no_offsize);

    bitf_info_rest(&value->bitf_offsize, cursor);
}

void mta_tt_offsize_resp_init(mta_tt_offsize_resp_struct *value)
{
    tt_clear(value);
    tt_make_array(&value->btoffsize, &value->btoffsize_size, btoffsize_room);
    tt_make_array(&value->offsize, &value->offsize_size, offsize_room);
    tt_make_array(&value->bitf_offsize.bit_map, &value->bitf_offsize.bit_map_size, bit_map_room);
}

void mta_tt_offsize_resp_free(mta_tt_offsize_resp_struct *value)
{
    tt_free_array(&value->btoffsize, &value->btoffsize_size);
    tt_free_array(&value->offsize, &value->offsize_size);
    tt_free_array(&value->bitf_offsize.bit_map, &value->bitf_offsize.bit_map_size);
}
