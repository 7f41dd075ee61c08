// Where the compiler of this library places bit-fields and basic types.
//
// Bit-fields have no portable layout and the language has no operator that tells it, so it is measured: compiled
// code sets one bit of a field in a zeroed buffer, and the bit is looked for.  The walk is driven by the value
// alone and needs no knowledge of the byte order.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "tt_assert.h"
#include "tt_dll.h"

namespace {

// The largest structure with a bit-field fits; the generated layout tables assert it.
constexpr std::uint32_t work_size = 60000;

// How far below an octet of a field the rest of it can lie, in octets, on a machine that stores it backwards.
constexpr std::uint32_t search_reach = 8;

struct work_buffer {
    alignas(std::max_align_t) std::array<std::uint8_t, work_size> octets;
};

/// Number of the first octet from `base` on that is not zero.
std::uint32_t first_set_octet(const work_buffer &work, std::uint32_t base)
{
    std::uint32_t octet = base;
    for (std::uint64_t word = 0; octet + sizeof word <= work_size; octet += sizeof word) {
        std::memcpy(&word, &work.octets[octet], sizeof word);
        if (word != 0)
            break;
    }
    while (octet < work_size && work.octets[octet] == 0)
        ++octet;
    // A set_bit_func that sets nothing is a fault of the stack build; the search does not leave the buffer for it.
    tt_assert(octet < work_size, "octet < work_size", "tt_dll", __LINE__);
    return octet;
}

/// Position of the highest bit set from octet `base` on, counted from bit 7 of octet 0.  Clears its octet.
std::uint32_t take_position(work_buffer &work, std::uint32_t base)
{
    const std::uint32_t octet = first_set_octet(work, base);
    const auto          shifts = static_cast<std::uint32_t>(std::countl_zero(work.octets[octet]));
    work.octets[octet] = 0;
    return octet * 8 + shifts;
}

/// Places bit-field `index`, `width` bits wide.  The buffer is all zero on entry and on exit.
mta_bit_map_struct probe_field(work_buffer &work, set_bit_func_ptr_type set_bit, std::uint32_t index,
                               std::uint32_t width)
{
    std::array<std::uint32_t, MTA_MAX_TOUPLE> positions{};
    mta_bit_map_struct                        row{};
    std::uint32_t                             base = 0;
    std::uint32_t                             lowest = UINT32_MAX;
    std::uint32_t                             parts = 0;
    std::uint32_t                             left = width;

    // From the field's highest bit downwards: each round finds the octet of one part.
    for (std::uint32_t bit = UINT32_C(1) << (width - 1); bit != 0; ++parts) {
        tt_assert(parts < MTA_MAX_TOUPLE, "parts < MTA_MAX_TOUPLE", "tt_dll", __LINE__);
        set_bit(work.octets.data(), index, bit);
        const std::uint32_t position = take_position(work, base);
        if (parts == 0 && position / 8 > search_reach)
            base = position / 8 - search_reach;

        row.touple[parts].bit_num = static_cast<std::uint8_t>(left);
        positions[parts] = position;
        lowest = std::min(lowest, position);

        const std::uint32_t held = 8 - position % 8; // bits of the field in this octet
        bit >>= held;
        left -= held;
    }

    lowest &= ~UINT32_C(7);
    for (std::uint32_t part = 0; part < parts; ++part)
        row.touple[part].position = static_cast<std::uint8_t>(positions[part] - lowest);
    row.no_touple = static_cast<std::uint8_t>(parts);
    row.offset = static_cast<std::uint16_t>(lowest / 8);
    row.no_bits = static_cast<std::uint16_t>(width);
    return row;
}

/// Writes a size octet and the test value 01 02 … in memory order of its integer; answers the end.
template <typename integer> std::uint8_t *put_pattern(std::uint8_t *to)
{
    integer value = 0;
    for (unsigned step = 1; step <= sizeof value; ++step)
        value = static_cast<integer>(value << 8 | static_cast<integer>(step));
    *to++ = sizeof value;
    std::memcpy(to, &value, sizeof value);
    return to + sizeof value;
}

/// The pattern of the basic-type block: long, short, int, char and pointer.  Answers its length in octets.
std::uint32_t put_basic_types(std::uint8_t *to)
{
    const std::uint8_t *const start = to;
    to = put_pattern<std::uint32_t>(to); // the stack's long has 32 bits on every build
    to = put_pattern<std::uint16_t>(to);
    to = put_pattern<std::uint32_t>(to);
    *to++ = sizeof(char);
    *to++ = sizeof(void *);
    return static_cast<std::uint32_t>(to - start);
}

/// Copies the pattern behind its index and has the index point at the entry of each basic kind.
bool build_bt_info(rw_bt_info *info, const std::uint8_t *pattern, std::uint32_t length)
{
    if (length > RW_BT_PATTERN_MAX)
        return false;
    std::memcpy(info->pattern, pattern, length);

    enum { LONG, SHORT, INT, CHAR, POINTER, ENTRIES };
    std::uint8_t entry[ENTRIES]{};
    for (int n = SHORT; n <= CHAR; ++n)
        entry[n] = static_cast<std::uint8_t>(entry[n - 1] + pattern[entry[n - 1]] + 1);
    entry[POINTER] = static_cast<std::uint8_t>(entry[CHAR] + 1);

    std::uint8_t *const index = info->index;
    index[RW_KIND_UNSIGNED_LONG] = index[RW_KIND_LONG] = entry[LONG];
    index[RW_KIND_UNSIGNED_SHORT] = index[RW_KIND_SHORT] = entry[SHORT];
    index[RW_KIND_UNSIGNED_INT] = index[RW_KIND_INT] = entry[INT];
    index[RW_KIND_UNSIGNED_CHAR] = index[RW_KIND_CHAR] = index[RW_KIND_SIGNED_CHAR] = entry[CHAR];
    index[RW_KIND_VOID] = entry[POINTER];
    return true;
}

} // namespace

void tt_layout_domain(rw_debug_info_struct *tool, const rw_offsize_sup_struct *sup)
{
    if (tool->no_offsize == 0)
        return;
    tool->no_offsize = sup->no_offsize;
    tool->offsize = sup->offsize;

    work_buffer work{};
    // Replaces the 1 that the load image holds in the domains that have no bit-fields.
    tool->no_bit_map = sup->no_bit_sizes;
    for (std::uint32_t index = 0; index < tool->no_bit_map; ++index)
        tool->bit_map[index] = probe_field(work, sup->set_bit_func, index, sup->bit_sizes[index]);

    const std::uint32_t length = put_basic_types(work.octets.data());
    const bool          init_success = build_bt_info(tool->bt_info, work.octets.data(), length);
    tt_assert(init_success, "init_success == true", "tt_dll", 354);
}
