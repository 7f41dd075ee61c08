// A structure laid out: where each member of it lies, what it is for, and what lies between the members.
//
// Works on the tables alone, so it tells the layout that the library's own compiler chose (or, over a target's
// record, the one that the target reported).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dictionary.h"

namespace solvane::tools {

/// Bits `high` down to `low` of an octet; bit 7 is the most significant one.
struct bit_part {
    std::uint64_t octet = 0; ///< from the start of the structure
    unsigned      high = 7;
    unsigned      low = 0;
};

struct laid_member {
    const rw_member_row  *row = nullptr;
    std::uint32_t         index = 0;
    resolved_type         type;    ///< undefined for a bit-field
    std::vector<level>    levels;
    std::uint64_t         offset = 0; ///< octets from the start of the structure; 0 in a union
    std::uint64_t         size = 0;   ///< octets; for a bit-field those that it touches
    unsigned              width = 0;  ///< bits of a bit-field, else 0
    std::vector<bit_part> parts;      ///< of a bit-field, most significant first

    bool is_bit_field() const { return row->kind == RW_KIND_BIT_FIELD; }
};

/// Octets, or bits of one octet, that no member covers.
struct hole {
    std::uint64_t offset = 0;
    std::uint64_t octets = 0; ///< 0: the hole is `bits` within the octet at `offset`
    unsigned      bits = 0;
};

struct laid_record {
    const rw_struct_row     *row = nullptr;
    std::uint32_t            rt_tag = 0;
    std::uint64_t            size = 0;
    std::vector<laid_member> members;
    std::vector<hole>        holes; ///< by offset; empty for a union

    bool is_union() const { return row->kind == RW_KIND_UNION; }
};

/// `rt_tag` is the run-time tag under which the structure is used, 0 for none.
laid_record lay_out(const domain &in, const rw_struct_row &row, std::uint32_t rt_tag = 0);

/// The declarator in C's way: `*name`, `name[5][2]`, `(*name)[4]`, `pd : 4`.
std::string declarator_of(const laid_member &member);

/// How the member depends on its neighbours, in words: "counts str", "present when yP", "case 4", ...; a member can
/// have several.
std::vector<std::string> notes_on(const domain &in, const laid_record &record, const laid_member &member);

/// The parts of a bit-field, most significant first; none for a row that is no place.
std::vector<bit_part> parts_of(const mta_bit_map_struct &map);

/// "3.7-4", for parts "1.7-0 0.7-4": octet, dot, highest bit to lowest.
std::string place_of(const std::vector<bit_part> &parts);

} // namespace solvane::tools
