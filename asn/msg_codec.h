// What the generated codecs of layer 3 messages and elements call: bounded parts, counted arrays, the loop over
// optional elements (3GPP TS 24.007 clause 11.2).
//
// A cursor stands on the next bit (per_stream.h).  Inside a part with a length `fr_size` is what is left of that part,
// so "octets are left" reads the same there and in the frame.  Arrays belong to the record, whose memory is cleared or
// was filled by an earlier unpack; they grow through the slots of `dll_info_version` and are released by the
// record's release function.
//
// Reads of a record's fixed part are unchecked (per_stream.h); arrays and bounded parts stop at what is left.
#pragma once

#include <cstdint>

#include "asn_heap.h"
#include "per_stream.h"

/// The low `n` bits of a member, as a word to be shifted.
template <typename Member> constexpr std::uint32_t msg_bits(Member member, std::uint32_t n)
{
    return static_cast<std::uint32_t>(member) & bit_mask(n);
}

/// A count that an array in place has room for.
template <typename Count> constexpr std::uint32_t msg_at_most(Count count, std::uint32_t room)
{
    return static_cast<std::uint32_t>(count) < room ? static_cast<std::uint32_t>(count) : room;
}

// ---------------------------------------------------------------------------------------------------------------
// What is left
// ---------------------------------------------------------------------------------------------------------------

/// Whole octets that are left, 0 behind the end.
inline std::uint32_t msg_left(const unpack_info_struct *stream)
{
    return stream->fr_size > 0 ? static_cast<std::uint32_t>(stream->fr_size) : 0;
}

/// Tells whether `n` bits are left.
inline bool msg_has_bits(const unpack_info_struct *stream, std::uint32_t n)
{
    return static_cast<std::int32_t>(((stream->bits & 7) + n + 7) >> 3) <= stream->fr_size;
}

/// Moves over `n` bits, or to the end where fewer are left.
inline void msg_pass_over(unpack_info_struct *stream, std::uint32_t n)
{
    const std::uint32_t left = msg_left(stream) * 8;
    per_skip_bits(stream, n < left ? n : left);
}

/// `n` bits, at most 32, that stand `offset` bits behind the cursor, which stays; 0 where they are not all left.
std::uint32_t msg_look(const unpack_info_struct *stream, std::uint32_t offset, std::uint32_t n);

// ---------------------------------------------------------------------------------------------------------------
// Parts with a length
// ---------------------------------------------------------------------------------------------------------------

/// A bounded part that is being read: where it begins, and what the frame holds behind it.
struct msg_part {
    const std::uint8_t *frame;
    std::uint32_t       bits;
    std::uint32_t       octets;
    std::int32_t        behind; ///< octets
};

/* Reading
 *   open    reads the length and bounds the cursor by it; false where the length is greater than what is left of the
 *           frame, the length itself included: the cursor stays at it
 *   close   moves behind the part, wherever the cursor stands  */
bool msg_open_8(unpack_info_struct *stream, msg_part *part);
bool msg_open_16(unpack_info_struct *stream, msg_part *part);
void msg_close(unpack_info_struct *stream, const msg_part *part);

/// A length that cannot be known yet: where it stands.
struct msg_length {
    std::uint8_t *frame;
    std::uint32_t bits;
};

/* Writing
 *   begin   steps over the length, whose bits stay as they are
 *   end     fills the part up to a whole octet with zeros and writes the length.  One that does not fit writes
 *           `overflow` to standard error and ends the process with status 1  */
inline msg_length msg_begin(pack_info_struct *stream, std::uint32_t octets)
{
    const msg_length length = {stream->frame, stream->bits};
    stream->frame += octets;
    stream->bits += octets * 8;
    return length;
}

/// Cuts what stands behind the length to `octets`, or fills it up with zeros; 0 leaves it as it is.
void msg_trim_8(pack_info_struct *stream, const msg_length *length, std::uint32_t octets);
void msg_trim_16(pack_info_struct *stream, const msg_length *length, std::uint32_t octets);

void msg_end_8(pack_info_struct *stream, const msg_length *length, const char *overflow);
void msg_end_16(pack_info_struct *stream, const msg_length *length, const char *overflow);

/// Room for a content that ends elsewhere than its items do, as CSN.1 has it: what is not there is zero.
struct msg_window {
    static constexpr std::uint32_t room = 64; ///< octets of content
    std::uint8_t                   octets[room + 8];
};

/* Reading
 *   open    takes `bits` out of the stream, or as many as are left of it, and answers a cursor on their copy
 * Writing
 *   begin   answers a cursor on an empty copy
 *   put     writes the first `bits` of it
 * What a content has behind the room is passed over, and not written.  */
unpack_info_struct msg_open_window(unpack_info_struct *stream, msg_window *window, std::uint32_t bits);
pack_info_struct   msg_begin_window(msg_window *window);
void               msg_put_window(pack_info_struct *stream, const msg_window *window, std::uint32_t bits);

/// Zero bits up to a whole octet.
void msg_put_align(pack_info_struct *stream);

/// Passes over the bits up to a whole octet.
inline void msg_get_align(unpack_info_struct *stream)
{
    per_pass(stream, -stream->bits & 7);
}

// ---------------------------------------------------------------------------------------------------------------
// Arrays
// ---------------------------------------------------------------------------------------------------------------

/// Who grows or releases an array, for a host that tracks memory.
struct msg_tag {
    std::uint16_t file_code;
    std::uint32_t line;
};

/// Makes room for `needed` elements, in steps of `step`; new ones are cleared.  False where there is no memory.
template <typename Element, typename Capacity>
bool msg_grow(Element **array, Capacity *capacity, std::uint32_t needed, std::uint32_t step, msg_tag tag)
{
    std::uint32_t      room   = *capacity;
    const std::int32_t before = AsnGrowArray(array, &room, needed, sizeof(Element), step, 1, tag.file_code, tag.line);
    if (before < 0)
        return true;
    if (!*array) {
        *capacity = 0;
        return false;
    }
    dll_info_version.memset(*array + before, 0, (room - static_cast<std::uint32_t>(before)) * sizeof(Element));
    *capacity = static_cast<Capacity>(room);
    return true;
}

/// Releases an array and forgets it.
template <typename Element, typename Capacity> void msg_release(Element **array, Capacity *capacity, msg_tag tag)
{
    AsnFreeArray(array, 1, tag.file_code, tag.line);
    *capacity = 0;
}

/// An element of an array that is being read, and where it begins.
struct msg_element {
    unpack_info_struct begin;
    PerError           error; ///< in force meanwhile
};

/* Elements of varying size
 *   begin   puts an error record of its own in force
 *   end     false where the element does not fit: a length in it is greater than what was left, it passes the end, or
 *           it took nothing.  The cursor is then back at its beginning  */
void msg_begin_element(unpack_info_struct *stream, msg_element *element);
bool msg_end_element(unpack_info_struct *stream, const msg_element *element);

/// Reads up to `count` octets, as many as are left, into an array that grows to one more.  Answers how many.
template <typename Octet, typename Capacity>
std::uint32_t msg_get_octets(unpack_info_struct *stream, std::uint32_t count, Octet **array, Capacity *capacity,
                             msg_tag tag)
{
    static_assert(sizeof(Octet) == 1);
    const std::uint32_t octets = msg_at_most(count, msg_left(stream));
    if (!msg_grow(array, capacity, octets + 1, 0, tag))
        return 0;
    per_get_octets(stream, reinterpret_cast<std::uint8_t *>(*array), octets);
    return octets;
}

/// The same into an array in place; what it has no room for is passed over.
template <typename Octet>
std::uint32_t msg_get_octets(unpack_info_struct *stream, std::uint32_t count, Octet *array, std::uint32_t room)
{
    static_assert(sizeof(Octet) == 1);
    const std::uint32_t there  = msg_at_most(count, msg_left(stream));
    const std::uint32_t octets = msg_at_most(there, room);
    per_get_octets(stream, reinterpret_cast<std::uint8_t *>(array), octets);
    per_skip_bits(stream, (there - octets) * 8);
    return octets;
}

/* Digits, two an octet with the first one low, one an element of the array (3GPP TS 24.008 clause 10.5.1.4)
 *   first    elements that stand elsewhere: reading begins behind them
 *   room     elements of the array; further digits are passed over
 *   count    of digits in all; an odd number is filled up with 15
 *   answers  the count, a filler at the end left out  */
std::uint32_t msg_get_digits(unpack_info_struct *stream, std::uint8_t *digits, std::uint32_t first,
                             std::uint32_t room);
std::uint32_t msg_get_counted_digits(unpack_info_struct *stream, std::uint8_t *digits, std::uint32_t first,
                                     std::uint32_t count, std::uint32_t room);
/// All digits up to the end, `most` of them, in an array that grows.
template <typename Capacity>
std::uint32_t msg_get_digits(unpack_info_struct *stream, std::uint8_t **digits, Capacity *capacity,
                             std::uint32_t first, std::uint32_t most, msg_tag tag)
{
    const std::uint32_t room = msg_at_most(first + 2 * msg_left(stream), most);
    return msg_grow(digits, capacity, room, 0, tag) ? msg_get_digits(stream, *digits, first, room) : 0;
}

void          msg_put_digits(pack_info_struct *stream, const std::uint8_t *digits, std::uint32_t first,
                             std::uint32_t count);

// ---------------------------------------------------------------------------------------------------------------
// L and H bits
// ---------------------------------------------------------------------------------------------------------------

/// The bit that means L at the cursor.
inline std::uint32_t msg_low_bit(std::uint32_t bits)
{
    return PER_PADDING_OCTET >> (~bits & 7) & 1;
}

/// Writes L for 0 and H for 1; nothing for any other tag.
template <typename Tag> void msg_put_low_high(pack_info_struct *stream, Tag tag)
{
    const auto high = static_cast<std::uint32_t>(tag);
    if (high <= 1)
        per_put_8(stream, 1, msg_low_bit(stream->bits) ^ high);
}

/// 0 for an L, 1 for an H.
inline std::uint32_t msg_get_low_high(unpack_info_struct *stream)
{
    const std::uint32_t low = msg_low_bit(stream->bits);
    return per_get_8(stream, 1) ^ low;
}

// ---------------------------------------------------------------------------------------------------------------
// Optional elements
// ---------------------------------------------------------------------------------------------------------------

/// The walk over the optional elements of a message.
struct msg_options {
    std::uint32_t position; ///< order number of the last element that was read
    std::uint32_t skipped;  ///< bits
    std::uint32_t taken;    ///< elements that were read
};

/// Steps over an identifier that is known.
inline void msg_step(unpack_info_struct *stream)
{
    per_pass(stream, 8);
}

/// Whether the element `order` is read now: it has not come yet, and none behind it has.
inline bool msg_takes(msg_options *options, std::uint32_t order, std::uint8_t *present)
{
    if (*present || options->position >= order)
        return false;
    options->position = order;
    options->taken++;
    *present = 1;
    return true;
}

/* Elements that come twice or out of order, behind their identifiers
 *   fixed   a value of so many octets; a half octet has 0
 *   bare    an identifier alone: the octet behind it goes with it
 *   8, 16   a length and so many octets.  Where it is greater than what is left, the cursor stays at the length, which
 *           is then looked at as an identifier
 * What is skipped counts together with its identifier.  */
void msg_skip_fixed(msg_options *options, unpack_info_struct *stream, std::uint32_t octets);
void msg_skip_bare(msg_options *options, unpack_info_struct *stream);
void msg_skip_8(msg_options *options, unpack_info_struct *stream);
void msg_skip_16(msg_options *options, unpack_info_struct *stream);

/// An element that is not known, the cursor on its identifier.  One whose high half is 0 must be understood: the fourth
/// word of the error record becomes 1.
void msg_skip_unknown(msg_options *options, unpack_info_struct *stream);

/// Takes what was skipped out of the cursor, so that `bits` counts what was understood.
void msg_end_options(unpack_info_struct *stream, const msg_options *options);
