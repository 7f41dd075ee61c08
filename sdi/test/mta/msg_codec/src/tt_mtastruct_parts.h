// What the codecs of the service messages share: counted arrays, and lists behind a count of octets.
#pragma once

#include <cstdint>

#include "asn_heap.h"
#include "asn_report.h"
#include "per_error.h"
#include "per_stream.h"
#include "solvane/solvane.h"

/// True when `octets` octets are left; else a hard error stands in the cursor's record.
inline bool tt_has_octets(unpack_info_struct *cursor, std::uint32_t octets)
{
    const bool there = per_has_bits(cursor, octets * 8);
    if (!there)
        per_set_error(cursor, PER_HARD_ERROR);
    return there;
}

/// Number of elements in front of an array, cut to 0 when the elements are not all in the frame.
template <class Count> Count tt_fitting(unpack_info_struct *cursor, std::uint32_t count, std::uint32_t element_octets)
{
    return tt_has_octets(cursor, count * element_octets) ? static_cast<Count>(count) : Count{0};
}

/// Makes room for `needed` elements: the capacity rises by `step`, or to `needed` when `step` is 0; the elements that
/// are there stay.  Returns the capacity before, -1 when nothing had to be done.
template <class Element, class Capacity>
std::int32_t tt_grow(Element **array, Capacity *capacity, std::uint32_t needed, std::uint32_t step)
{
    std::uint32_t      room   = *capacity;
    const std::int32_t before = AsnGrowArray(array, &room, needed, sizeof(Element), step);
    *capacity                 = static_cast<Capacity>(room);
    return before;
}

/// A cleared array of `count` elements and its capacity.
template <class Element, class Capacity> void tt_make_array(Element **array, Capacity *capacity, std::uint32_t count)
{
    *array    = static_cast<Element *>(AsnMemAlloc(count * sizeof(Element)));
    *capacity = static_cast<Capacity>(count);
}

template <class Element, class Capacity> void tt_free_array(Element **array, Capacity *capacity)
{
    AsnFreeArray(array);
    *capacity = 0;
}

/// Clears a structure through the memory slot.
template <class Structure> void tt_clear(Structure *value)
{
    dll_info_version.memset(value, 0, sizeof *value);
}

inline void tt_put_words(pack_info_struct *cursor, const std::uint16_t *words, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count; i++)
        per_put_16(cursor, 16, words[i]);
}

inline void tt_get_words(unpack_info_struct *cursor, std::uint16_t *words, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count; i++)
        words[i] = static_cast<std::uint16_t>(per_get_16(cursor, 16));
}

/// Points `*octets` to the next `count` octets of the frame and passes over them.
inline void tt_borrow(unpack_info_struct *cursor, std::uint8_t **octets, std::uint32_t count)
{
    *octets = const_cast<std::uint8_t *>(cursor->frame);
    per_skip_bits(cursor, count * 8);
}

/// Where the count of octets of a list stands, 16 bits that cannot be known before the entries are written.
struct tt_list_place {
    std::uint8_t *frame;
    std::uint32_t offset; ///< in bits
};

/// Leaves room for the count.
inline tt_list_place tt_open_list(pack_info_struct *cursor)
{
    const tt_list_place place = {cursor->frame, cursor->bits & 7};
    cursor->frame += 2;
    cursor->bits += 16;
    return place;
}

/// Writes the count.  One of 65536 or more goes to the error report as `too_long`, and its low 16 bits to the list.
inline void tt_close_list(const pack_info_struct *cursor, const tt_list_place &place, const char *too_long)
{
    const auto octets = static_cast<std::uint32_t>(cursor->frame - place.frame) - 2;
    if (octets > 0xFFFF)
        AsnErrorPrint(too_long);
    per_poke_16(place.frame, place.offset, 16, octets);
}
