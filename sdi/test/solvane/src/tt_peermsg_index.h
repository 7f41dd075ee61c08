// The tables of the peer message classification in the form that is looked up, made of them at compile time.
//
// A classification is a walk over small octet arrays with hardly a branch to mispredict, and the names stand in one
// text that needs no relocation:
//
//     sap_id --groups--+
//                      +--answers[group][number]--> kind and payload --columns, cells--> offset in `names`
//     msg_id --pages---+
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tt_peermsg_tables.h"

namespace tt_peermsg {

/// What an identifier leads to at a group; the two top bits of an answer, the payload stands below them.
enum answer_kind : std::uint16_t {
    BY_TYPE,    ///< payload: two columns of 6 bits each, the one to try first in the low bits; 0 is no answer
    BY_MESSAGE, ///< payload: offset in `names`
    RRC,        ///< UMTS radio resource
    DELIVER     ///< payload: offset in `names`; wants a buffer, whatever its length
};

inline constexpr unsigned payload_bits = 14;
inline constexpr unsigned column_bits  = 6;

/// A column of a type table as looked up: cells `first_cell` and on are for the types `first_type` and on.
struct column {
    std::uint8_t  discriminator_octet;
    std::uint8_t  discriminator_mask;
    std::uint8_t  discriminator;
    std::uint8_t  type_octet;
    std::uint8_t  type_mask;
    std::uint8_t  first_type;
    std::uint16_t no_cells;
    std::uint16_t first_cell;
};

inline constexpr unsigned max_columns = 3; ///< of a protocol
inline constexpr unsigned page_size   = 64; ///< message identifiers

// ------------------------------------------------------------------------------------------ sizes

/// Runs `visit` over every message identifier that leads anywhere; some come twice.
template <class Visitor> constexpr void for_each_message(Visitor visit)
{
    for (const route_row &row : route_rows)
        visit(row.msg_id);
    for (std::uint16_t msg_id : rrc_messages)
        visit(msg_id);
    visit(deliver_message);
    for (const message_list &list : message_lists)
        for (const message_row &row : list.messages)
            visit(row.msg_id);
}

consteval unsigned count_pages()
{
    bool     used[65536 / page_size] = {};
    unsigned count                   = 1; // page 0 of `slots` belongs to no identifier
    for_each_message([&](std::uint16_t msg_id) {
        if (!used[msg_id / page_size])
            count++;
        used[msg_id / page_size] = true;
    });
    return count;
}

constexpr unsigned first_type(const protocol_row &row)
{
    unsigned first = 255;
    for (const type_row &type : row.types)
        first = type.type < first ? type.type : first;
    return first;
}

constexpr unsigned span_of_types(const protocol_row &row)
{
    unsigned last = 0;
    for (const type_row &type : row.types)
        last = type.type > last ? type.type : last;
    return last - first_type(row) + 1;
}

constexpr unsigned count_columns(const protocol_row &row)
{
    unsigned count = 0;
    for (const type_row &type : row.types)
        for (unsigned i = 0; i < max_columns; i++)
            if (type.names[i] != none && count <= i)
                count = i + 1;
    return count;
}

consteval unsigned count_cells()
{
    unsigned count = 0;
    for (const protocol_row &row : protocol_rows)
        count += count_columns(row) * span_of_types(row);
    return count;
}

constexpr bool same_text(const char *one, const char *other)
{
    while (*one != '\0' && *one == *other)
        one++, other++;
    return *one == *other;
}

/// True when the name to the left in the row is the same: the two then share one text.
constexpr bool repeats(const type_row &row, unsigned column)
{
    return column > 0 && row.names[column - 1] != none && same_text(row.names[column - 1], row.names[column]);
}

constexpr unsigned text_size(const char *text)
{
    unsigned size = 1;
    while (*text++ != '\0')
        size++;
    return size;
}

consteval unsigned names_size()
{
    unsigned size = 1 + text_size(deliver_name); // offset 0 is no name
    for (const protocol_row &row : protocol_rows)
        for (const type_row &type : row.types)
            for (unsigned i = 0; i < max_columns; i++)
                if (type.names[i] != none && !repeats(type, i))
                    size += text_size(type.names[i]);
    for (const message_list &list : message_lists)
        for (const message_row &row : list.messages)
            size += text_size(row.name);
    return size;
}

consteval unsigned count_messages()
{
    unsigned count = 0;
    for_each_message([&](std::uint16_t) { count++; });
    return count;
}

// ------------------------------------------------------------------------------------------ the index

struct peer_index {
    std::uint8_t  groups[256];                             ///< by service access point
    std::uint8_t  pages[65536 / page_size];                ///< by msg_id / page_size
    std::uint8_t  slots[count_pages()][page_size];         ///< number of the identifier, 0 for one that leads nowhere
    std::uint16_t answers[NO_GROUPS][count_messages() + 1]; ///< by number
    column        columns[1 + NO_PROTOCOLS * max_columns]; ///< column 0 matches nothing
    std::uint16_t cells[count_cells()];                    ///< offset in `names`, 0 for no name
    char          names[names_size()];
};

static_assert(count_messages() < 256 && 1 + NO_PROTOCOLS * max_columns <= 1u << column_bits);
static_assert(names_size() <= 1u << payload_bits);

constexpr std::uint16_t make_answer(answer_kind kind, unsigned payload)
{
    return static_cast<std::uint16_t>(static_cast<unsigned>(kind) << payload_bits | payload);
}

constexpr unsigned column_number(type_column column)
{
    return column.of == NO_PROTOCOLS ? 0 : 1 + column.of * max_columns + column.column;
}

/// Fills an index; the members tell how far it has come.
struct index_builder {
    peer_index index = {};
    unsigned   no_pages = 1, no_messages = 0, no_cells = 0, no_text = 1;

    constexpr unsigned add_name(const char *name)
    {
        const unsigned offset = no_text;
        for (; *name != '\0'; name++)
            index.names[no_text++] = *name;
        index.names[no_text++] = '\0';
        return offset;
    }

    constexpr void number_message(std::uint16_t msg_id)
    {
        std::uint8_t &page = index.pages[msg_id / page_size];
        if (page == 0)
            page = static_cast<std::uint8_t>(no_pages++);
        std::uint8_t &slot = index.slots[page][msg_id % page_size];
        if (slot == 0)
            slot = static_cast<std::uint8_t>(++no_messages);
    }

    constexpr std::uint16_t &answer(sap_group group, std::uint16_t msg_id)
    {
        return index.answers[group][index.slots[index.pages[msg_id / page_size]][msg_id % page_size]];
    }

    /// Lays out the columns of a protocol one after the other.
    constexpr void add_columns(const protocol_row &row)
    {
        const unsigned first = first_type(row), span = span_of_types(row);
        for (unsigned i = 0; i < count_columns(row); i++)
            index.columns[column_number({row.of, static_cast<std::uint8_t>(i)})] = {
                row.discriminator.octet, row.discriminator.mask, row.discriminator.value, row.type.octet,
                row.type.mask, static_cast<std::uint8_t>(first), static_cast<std::uint16_t>(span),
                static_cast<std::uint16_t>(no_cells + i * span)};
        for (const type_row &type : row.types)
            for (unsigned i = 0; i < max_columns; i++)
                if (type.names[i] != none) {
                    std::uint16_t *cell = &index.cells[no_cells + i * span + type.type - first];
                    *cell = repeats(type, i) ? cell[-static_cast<std::ptrdiff_t>(span)]
                                             : static_cast<std::uint16_t>(add_name(type.names[i]));
                }
        no_cells += count_columns(row) * span;
    }

    constexpr void add_routes()
    {
        for (const sap_row &row : sap_rows)
            index.groups[row.sap] = row.group;
        for (const route_row &row : route_rows)
            answer(row.group, row.msg_id) =
                make_answer(BY_TYPE, column_number(row.first) | column_number(row.second) << column_bits);
        for (std::uint16_t msg_id : rrc_messages)
            answer(RRC_GROUP, msg_id) = make_answer(RRC, 0);
        for (const message_list &list : message_lists)
            for (const message_row &row : list.messages)
                answer(list.group, row.msg_id) = make_answer(BY_MESSAGE, add_name(row.name));
        answer(SMS_TP_GROUP, deliver_message) = make_answer(DELIVER, add_name(deliver_name));
    }
};

consteval peer_index build_index()
{
    index_builder builder;
    builder.index.columns[0].discriminator = 1; // under a mask of 0: never met
    for_each_message([&](std::uint16_t msg_id) { builder.number_message(msg_id); });
    for (const protocol_row &row : protocol_rows)
        builder.add_columns(row);
    builder.add_routes();
    return builder.index;
}

/// True when row n of `protocol_rows` is that of protocol n.
consteval bool protocols_in_order()
{
    for (unsigned i = 0; i < std::size(protocol_rows); i++)
        if (protocol_rows[i].of != i)
            return false;
    return true;
}

static_assert(protocols_in_order());

} // namespace tt_peermsg
