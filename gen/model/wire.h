// Wire formats: how the records of elements and messages stand on the air, bit by bit.
//
// A front end lowers its definitions to these items; `lay_wire` merges neighbouring fields into the words that are
// read and written at once.  An item names the members that it codes by their places in the record.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"

namespace solvane::gen {

/// Formats of the lines of a message table (3GPP TS 24.007 clause 11.2.1.1); `half` is a V of half an octet.
enum class wire_format : std::uint8_t {
    value, half, length_value, length_value_e, tag, tag_value, tag_half, tag_length_value, tag_length_value_e
};

/// Who sends a message: what the network alone sends is packed by the library's side of the stack only.
enum class wire_direction : std::uint8_t { none, uplink, downlink };

/// A member, or an element of an array member, from the record down.
struct wire_place {
    struct step {
        std::uint32_t                record_id = 0;
        std::uint32_t                member = 0;
        std::optional<std::uint32_t> index;
    };
    std::vector<step> steps;
};

/// One term of a condition; the terms of a list must all hold.
struct wire_condition {
    enum class what : std::uint8_t {
        set, clear, equal, unequal, less, less_equal, greater, greater_equal, mask, left
    };
    what          kind = what::set;
    wire_place    member;     ///< not of `left`
    std::uint32_t value = 0;  ///< to compare with; of `left` the octets
};

/// How an array stands on the wire.
enum class wire_extent : std::uint8_t {
    fixed,    ///< `count` elements
    counted,  ///< as many as the member `counter` says
    to_end,   ///< up to the end of what bounds it
    chained,  ///< a bit ahead of each element: 0 while another follows
    linked    ///< a bit behind each element: 1 while another follows
};

struct wire_item {
    enum class what : std::uint8_t {
        field,     ///< `width` bits of an integer or enumeration
        constant,  ///< `width` bits of `value`
        presence,  ///< one bit: the presence member, or its inverse
        any,       ///< one bit: the array has elements, or its inverse; `member` is its count
        derive,    ///< no bits: reading sets the presence member to the conditions
        look,      ///< no bits: reading looks at `width` bits, `value` bits ahead
        low_high,  ///< one bit, L or H
        record,    ///< an element
        choice,    ///< a union
        array,
        group,     ///< items under conditions
        block,     ///< items behind the number of their octets
        window,    ///< items that take as many bits as the member says, or as many octets as are left
        align,     ///< zero bits up to a whole octet
        word       ///< laid by `lay_wire`: fields, constants and presences that are coded at once
    };

    what          kind = what::field;
    wire_place    member;
    std::uint32_t width = 0;      ///< bits; of a block, those of its length field; of a window, those it takes at most
    std::uint32_t value = 0;
    std::uint32_t minus = 0;      ///< the wire has the value less this
    bool          inverse = false;
    bool          keeps = false;  ///< window: the member is not on the wire and keeps the octets
    std::uint32_t record_id = 0;  ///< record; choice: the union; array of elements: the element
    wire_place    other;          ///< choice: the selector; array: its count, where it has one
    std::string   name;           ///< block: of what stands in it
    std::string   clause;         ///< of the line that it comes from
    std::string   line;           ///< "LV", "TLV": format of the line that it comes from

    // array; `width` is that of an element that is no record (0: a record)
    wire_extent   extent = wire_extent::fixed;
    bool          is_pointer = false;
    bool          octets = false;     ///< elements of one octet each, kept in octets
    bool          bcd = false;
    std::uint32_t first = 0;          ///< elements that stand elsewhere
    std::uint32_t count = 0;          ///< elements of an array in place
    wire_place    capacity;           ///< of a pointer
    wire_place    trim;               ///< block: member with the octets of its content; no steps: none

    std::vector<wire_condition> conditions;
    std::vector<wire_item>      items;      ///< group, block, window, word
    std::vector<wire_item>      otherwise;  ///< group
};

/// A line with an identifier.
struct wire_option {
    std::uint32_t              identifier = 0;
    bool                       half = false;       ///< the identifier is the high half of its octet
    std::uint32_t              order = 0;          ///< from 1
    wire_place                 present;
    std::vector<wire_item>     items;              ///< the value, its length included; none for a bare identifier
    std::uint32_t              length_width = 0;   ///< bits of the length that the value begins with; 0: none
    std::uint32_t              octets = 0;         ///< of a value without a length
    bool                       bare = false;       ///< nothing stands behind the identifier
    wire_format                format = wire_format::tag;
    std::string                name;
    std::string                clause;
};

/// Octets that a window has room for; its items never take more.
inline constexpr std::uint32_t window_octets = 64;

/// The codec of one record.
struct wire_codec {
    bool                         is_message = false;
    wire_direction               direction = wire_direction::none;
    std::uint32_t                length_width = 0;  ///< bits of the length field of its own; 0: none
    std::string                  length_name;       ///< what an overflow of it is told of
    wire_place                   trim;              ///< member with the octets of the content; no steps: none
    std::vector<wire_item>       items;             ///< inside that length
    std::vector<wire_option>     options;
    std::optional<std::uint32_t> bits;              ///< of a record that always takes as many, the length included
    bool                         owns = false;      ///< it has arrays of its own, or an element that has
    place                        where;
};

struct model;

/// Bits of items that always take as many.
std::optional<std::uint32_t> fixed_bits(const model &m, const std::vector<wire_item> &items);

/// Octets that items can take at most; nothing where there is no such number.
std::optional<std::uint32_t> most_octets(const model &m, const std::vector<wire_item> &items);

/* Merges neighbouring fields into words of up to 32 bits, for writing or reading.  Written lengths of parts of a fixed
 * size are constants and go into the words too. */
std::vector<wire_item> lay_packing(const model &m, const std::vector<wire_item> &items);
std::vector<wire_item> lay_unpacking(const model &m, const std::vector<wire_item> &items);

/// A record's name without the ending `_struct`.
std::string stem_of(const std::string &record);

/// The function of a record's codec: `X_pack` of `X_struct`.
std::string wire_function(const std::string &record, const char *operation);

} // namespace solvane::gen
