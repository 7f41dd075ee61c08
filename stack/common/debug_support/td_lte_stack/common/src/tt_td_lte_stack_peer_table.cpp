// LTE rows of the peer table; the tables of air messages and the operations on them by name.
#include "tt_td_lte_stack_peer_table.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "tt_assert.h"
#include "tt_peer_register.h"

#ifdef SOLVANE_MARROWD
#include "marrowd.h"
#include "tt_ctc_codec.h"
#endif

air_msg_table<air_msg_bits_row>   lte_asn_peer_table;
air_msg_table<air_msg_octets_row> lte_nas_peer_table;

namespace {

constexpr std::uint8_t kind_none   = 0;
constexpr std::uint8_t kind_bits   = 1;
constexpr std::uint8_t kind_octets = 2;

constexpr std::uint32_t any_room = 65535; ///< octets that an encoder may write: its caller owes what it needs

/// Row of that name, or null.
template <class Row> const Row *find_row(const air_msg_table<Row> &table, const char *name)
{
    for (std::uint32_t i = 0; i < table.count; i++)
        if (std::strcmp(table.rows[i].name, name) == 0)
            return &table.rows[i];
    return nullptr;
}

/// Grows like the peer table: by one row, from the C library's heap, with no test of the result.
template <class Row> void register_row(air_msg_table<Row> &table, const Row &row)
{
    if (find_row(table, row.name) != nullptr)
        return;
    table.rows = static_cast<Row *>(std::realloc(table.rows, (table.count + std::size_t{1}) * sizeof(Row)));
    table.rows[table.count] = row;
    table.count++;
}

/// A host may keep no more than an octet for the kind.
void tell_kind(std::uint32_t *kind, std::uint8_t value)
{
    *reinterpret_cast<std::uint8_t *>(kind) = value;
}

} // namespace

void register_air_msg_row(const air_msg_bits_row &row)
{
    register_row(lte_asn_peer_table, row);
}

void register_air_msg_row(const air_msg_octets_row &row)
{
    register_row(lte_nas_peer_table, row);
}

// ------------------------------------------------------------------------------------------ start-up

namespace {

#ifdef SOLVANE_MARROWD
#define BITS_ROW(row, octets, stem) {#row, octets, encode_##stem, decode_##stem},
constexpr air_msg_bits_row marrowd_bits_rows[] = {MARROWD_ASN_MESSAGES(BITS_ROW)};
#undef BITS_ROW

#define OCTETS_ROW(row, octets, stem) {#row, octets, stem##_encode, stem##_decode},
constexpr air_msg_octets_row marrowd_octets_rows[] = {MARROWD_NAS_MESSAGES(OCTETS_ROW)};
#undef OCTETS_ROW

static_assert(std::size(marrowd_bits_rows) == 6 && std::size(marrowd_octets_rows) == 95);

// Messages of the test control protocol, which this library codes itself.
#define CTC_ROW(name) {#name, sizeof(name), name##_encode, name##_decode}
constexpr air_msg_octets_row test_control_rows[] = {
    CTC_ROW(CTC_MSG_ACTIVATE_TEST_MODE_s),
    CTC_ROW(CTC_MSG_DEACTIVATE_TEST_MODE_s),
    CTC_ROW(CTC_MSG_CLOSE_UE_TEST_LOOP_s),
    CTC_ROW(CTC_MSG_OPEN_UE_TEST_LOOP_s),
    CTC_ROW(CTC_MSG_NSSAI_DELETE_REQUEST_s),
};
#undef CTC_ROW

void fill_air_msg_tables()
{
    for (const air_msg_bits_row &row : marrowd_bits_rows)
        register_air_msg_row(row);
    for (const air_msg_octets_row &row : marrowd_octets_rows)
        register_air_msg_row(row);
    for (const air_msg_octets_row &row : test_control_rows)
        register_air_msg_row(row);
}
#else
void fill_air_msg_tables() {}
#endif

} // namespace

void tt_register_lte_peers()
{
    tt_register_peer_family(TT_PEER_LTE_RRC);
    fill_air_msg_tables();
}

// ------------------------------------------------------------------------------------------ operations by name

air_msg_encode_bits air_msg_find_encode_bits(const char *name)
{
    const air_msg_bits_row *row = find_row(lte_asn_peer_table, name);
    return row != nullptr ? row->encode : nullptr;
}

air_msg_decode_bits air_msg_find_decode_bits(const char *name)
{
    const air_msg_bits_row *row = find_row(lte_asn_peer_table, name);
    return row != nullptr ? row->decode : nullptr;
}

air_msg_encode_octets air_msg_find_encode_octets(const char *name)
{
    const air_msg_octets_row *row = find_row(lte_nas_peer_table, name);
    return row != nullptr ? row->encode : nullptr;
}

air_msg_decode_octets air_msg_find_decode_octets(const char *name)
{
    const air_msg_octets_row *row = find_row(lte_nas_peer_table, name);
    return row != nullptr ? row->decode : nullptr;
}

std::uint32_t air_msg_pack(const char *name, pack_info_struct *cursor, const void *value, std::uint32_t *kind)
{
    if (const air_msg_encode_bits encode = air_msg_find_encode_bits(name)) {
        tell_kind(kind, kind_bits);
        std::uint32_t bit_count = 0, error_code = 0;
        encode(value, cursor->frame, &bit_count, &error_code);
        cursor->bits += bit_count;
        return (bit_count + 7) >> 3;
    }
    if (const air_msg_encode_octets encode = air_msg_find_encode_octets(name)) {
        tell_kind(kind, kind_octets);
        std::uint32_t octet_count = any_room;
        encode(value, cursor->frame, &octet_count);
        cursor->bits += octet_count * 8;
        return octet_count;
    }
    std::memset(kind, kind_none, sizeof *kind); // the whole word, and only here: the slot has always answered so
    return 0;
}

std::uint32_t air_msg_unpack(const char *name, void *value, unpack_info_struct *cursor, std::uint32_t *kind)
{
    if (const air_msg_decode_bits decode = air_msg_find_decode_bits(name)) {
        tell_kind(kind, kind_bits);
        std::uint32_t bit_count = 0, error_code = 0;
        decode(value, cursor->frame, &bit_count, &error_code);
        if (error_code != 0)
            return 0;
        cursor->bits += bit_count;
        tt_assert(((cursor->bits + 7) >> 3) <= static_cast<std::uint32_t>(cursor->fr_size),
                  "((unpackInfo->bits + 7) >> 3) <= unpackInfo->fr_size", "tt_td_lte_stack_peer_table", 825);
        return (bit_count + 7) >> 3;
    }
    if (const air_msg_decode_octets decode = air_msg_find_decode_octets(name)) {
        tell_kind(kind, kind_octets);
        auto octet_count = static_cast<std::uint32_t>(cursor->fr_size);
        return decode(value, cursor->frame, &octet_count) == 0 ? octet_count : 0;
    }
    tell_kind(kind, kind_none);
    return 0;
}

std::uint32_t air_msg_size(const char *name, std::uint8_t *found)
{
    std::uint32_t size = 0;
    if (const air_msg_bits_row *row = find_row(lte_asn_peer_table, name))
        size = row->size;
    else if (const air_msg_octets_row *octets_row = find_row(lte_nas_peer_table, name))
        size = octets_row->size;
    else
        return 0;
    *found = 1;
    return size;
}
