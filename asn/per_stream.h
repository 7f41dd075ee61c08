// The bit stream under all codecs: fields of up to 32 bits at any bit of an octet string, as the unaligned variant
// of PER wants them (X.691 (2015) clause 11.5.6; no field is ever aligned or padded).
//
//              octet 0            octet 1            octet 2
//     bit   0 1 2 3 4 5 6 7    0 1 2 3 4 5 6 7    0 1 2 3 ...       0 is the most significant bit
//                     a a a    a a b b b b b b    c ...             a: 5 bits at offset 5, its first bit highest
//
// A cursor (pack_info_struct, unpack_info_struct) stands on the next bit: bit `bits & 7` of the octet at `frame`.
// `bits` counts on from whatever it was set up with.  Nothing here owns memory: frame and error record are the
// caller's.
//
// Reads and writes are unchecked: they never look at `fr_size`, the caller owes the room, and none can fail.  The
// checked reads, made for lengths, integers and strings, record a hard error instead of passing the end
// (per_error.h).  Whatever the width, only octets that hold bits of the field are read or written.
//
// All counts are words of 32 bits and wrap; no function keeps state, so any thread may work on its own cursor.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "per_error.h"
#include "solvane/solvane.h"

/// The low `n` bits set; all of them from 32 on.
constexpr std::uint32_t bit_mask(std::uint32_t n)
{
    return n < 32 ? (std::uint32_t{1} << n) - 1 : ~std::uint32_t{0};
}

// ---------------------------------------------------------------------------------------------------------------
// Octets in network order
// ---------------------------------------------------------------------------------------------------------------

inline std::uint16_t per_swap(std::uint16_t word) { return __builtin_bswap16(word); }
inline std::uint32_t per_swap(std::uint32_t word) { return __builtin_bswap32(word); }
inline std::uint64_t per_swap(std::uint64_t word) { return __builtin_bswap64(word); }

/// The word of 2, 4 or 8 octets at `octets`, which need not be aligned.
template <typename Word> inline Word per_load(const std::uint8_t *octets)
{
    Word word;
    std::memcpy(&word, octets, sizeof word);
    return std::endian::native == std::endian::big ? word : per_swap(word);
}

template <typename Word> inline void per_store(std::uint8_t *octets, Word word)
{
    if (std::endian::native != std::endian::big)
        word = per_swap(word);
    std::memcpy(octets, &word, sizeof word);
}

// ---------------------------------------------------------------------------------------------------------------
// Without a cursor
// ---------------------------------------------------------------------------------------------------------------

/* Stateless reads
 *   octets  the octet that holds the first bit
 *   offset  of the first bit in it, 0 to 7
 *   n       width in bits, inside the band; 0 answers 0, the octet must be there all the same
 *   answer  the field, first bit highest, right-justified in 32 bits
 *
 * A field in a band of 8 k bits lies in k octets or in k + 1.  All take k octets, and then the last one that holds a
 * bit of the field: the one behind those k, or the k-th once more, whose copy the shift drops.  So nothing branches
 * on the offset.  The window is left-justified, and a shift by -end is one by the bits behind the field.  */

inline std::uint32_t per_peek_8(const std::uint8_t *octets, std::uint32_t offset, std::uint32_t n) // 1 to 8
{
    if (__builtin_constant_p(n) && n == 1) // by far the most frequent, and never in a second octet
        return std::uint32_t{octets[0]} >> (~offset & 7) & 1;
    const std::uint32_t end    = offset + n;
    const std::uint32_t window = std::uint32_t{octets[0]} << 24 | std::uint32_t{octets[end > 8]} << 16;
    return window >> (-end & 31) & bit_mask(n);
}

inline std::uint32_t per_peek_16(const std::uint8_t *octets, std::uint32_t offset, std::uint32_t n) // 9 to 16
{
    const std::uint32_t end = offset + n;
    const std::uint32_t window =
        std::uint32_t{per_load<std::uint16_t>(octets)} << 16 | std::uint32_t{octets[1 + (end > 16)]} << 8;
    return window >> (-end & 31) & bit_mask(n);
}

inline std::uint32_t per_peek_24(const std::uint8_t *octets, std::uint32_t offset, std::uint32_t n) // 17 to 24
{
    const std::uint32_t end = offset + n;
    const std::uint32_t window =
        std::uint32_t{per_load<std::uint16_t>(octets)} << 16 | std::uint32_t{octets[2]} << 8 | octets[2 + (end > 24)];
    return window >> (-end & 31) & bit_mask(n);
}

inline std::uint32_t per_peek_32(const std::uint8_t *octets, std::uint32_t offset, std::uint32_t n) // 25 to 32
{
    const std::uint32_t end = offset + n;
    const std::uint64_t window =
        std::uint64_t{per_load<std::uint32_t>(octets)} << 32 | std::uint64_t{octets[3 + (end > 32)]} << 24;
    return static_cast<std::uint32_t>(window >> (-end & 63)) & bit_mask(n);
}

inline std::uint32_t per_peek_bits(const std::uint8_t *octets, std::uint32_t offset, std::uint32_t n) // 0 to 32
{
    return n < 9    ? per_peek_8(octets, offset, n)
           : n < 17 ? per_peek_16(octets, offset, n)
           : n < 25 ? per_peek_24(octets, offset, n)
                    : per_peek_32(octets, offset, n);
}

/* Stateless writes
 *   octets, offset, n   as for the reads
 *   value               its low n bits are stored, higher ones are masked off
 *   keeps               all bits outside the field
 *
 * The first octet keeps its bits above the field and the last one those below it.  Octets between are assigned
 * without a look, and so is the k-th when the field ends in it, before it gets its last bits: what the next write
 * waits for is one octet that went through two operations.  */

inline void per_poke_8(std::uint8_t *octets, std::uint32_t offset, std::uint32_t n, std::uint32_t value) // 1 to 8
{
    if (__builtin_constant_p(n) && n == 1) {
        const std::uint32_t at = ~offset & 7;
        octets[0]              = static_cast<std::uint8_t>((octets[0] & ~(1u << at)) | (value & 1) << at);
        return;
    }
    const std::uint32_t end   = offset + n;
    const std::uint32_t field = bit_mask(n) << (-end & 31);
    const std::uint32_t bits  = value << (-end & 31) & field;
    std::uint8_t *const last  = octets + (end > 8);
    const std::uint32_t first = octets[0];
    *last                     = static_cast<std::uint8_t>((*last & ~(field >> 16)) | bits >> 16);
    octets[0]                 = static_cast<std::uint8_t>((first & ~(field >> 24)) | bits >> 24);
}

inline void per_poke_16(std::uint8_t *octets, std::uint32_t offset, std::uint32_t n, std::uint32_t value) // 9 to 16
{
    const std::uint32_t end    = offset + n;
    const std::uint32_t bits   = (value & bit_mask(n)) << (-end & 31);
    std::uint8_t *const last   = octets + 1 + (end > 16);
    const std::uint32_t before = octets[0] & ~bit_mask(8 - offset);
    const std::uint32_t behind = *last & bit_mask(-end & 7);
    octets[0]                  = static_cast<std::uint8_t>(before | bits >> 24);
    octets[1]                  = static_cast<std::uint8_t>(bits >> 16);
    *last                      = static_cast<std::uint8_t>(behind | value << (-end & 7));
}

inline void per_poke_24(std::uint8_t *octets, std::uint32_t offset, std::uint32_t n, std::uint32_t value) // 17 to 24
{
    const std::uint32_t end    = offset + n;
    const std::uint32_t bits   = (value & bit_mask(n)) << (-end & 31);
    std::uint8_t *const last   = octets + 2 + (end > 24);
    const std::uint32_t before = octets[0] & ~bit_mask(8 - offset);
    const std::uint32_t behind = *last & bit_mask(-end & 7);
    octets[0]                  = static_cast<std::uint8_t>(before | bits >> 24);
    per_store(octets + 1, static_cast<std::uint16_t>(bits >> 8));
    *last = static_cast<std::uint8_t>(behind | value << (-end & 7));
}

inline void per_poke_32(std::uint8_t *octets, std::uint32_t offset, std::uint32_t n, std::uint32_t value) // 25 to 32
{
    const std::uint32_t end    = offset + n;
    const std::uint64_t bits   = std::uint64_t{value & bit_mask(n)} << (-end & 63);
    std::uint8_t *const last   = octets + 3 + (end > 32);
    const std::uint32_t before = octets[0] & ~bit_mask(8 - offset);
    const std::uint32_t behind = *last & bit_mask(-end & 7);
    per_store(octets, before << 24 | static_cast<std::uint32_t>(bits >> 32));
    *last = static_cast<std::uint8_t>(behind | value << (-end & 7));
}

/// 0 to 32 bits; 0 touches nothing.
inline void per_poke_bits(std::uint8_t *octets, std::uint32_t offset, std::uint32_t n, std::uint32_t value)
{
    if (n == 0)
        return;
    if (n < 9)
        per_poke_8(octets, offset, n, value);
    else if (n < 17)
        per_poke_16(octets, offset, n, value);
    else if (n < 25)
        per_poke_24(octets, offset, n, value);
    else
        per_poke_32(octets, offset, n, value);
}

// ---------------------------------------------------------------------------------------------------------------
// Reads with a cursor
// ---------------------------------------------------------------------------------------------------------------

/// Moves the cursor over `n` bits that have been read.
inline void per_pass(unpack_info_struct *stream, std::uint32_t n)
{
    const std::uint32_t octets = ((stream->bits & 7) + n) >> 3;
    stream->bits += n;
    stream->frame += octets;
    stream->fr_size = static_cast<std::int32_t>(static_cast<std::uint32_t>(stream->fr_size) - octets);
}

/* Stateful reads
 *   n       width in bits, inside the band; 0 answers 0 and moves nothing, the octet must be there all the same
 *   answer  as for the stateless reads
 *   moves   bits by n; frame and fr_size by the whole octets passed
 *   errors  none  */

inline std::uint32_t per_get_8(unpack_info_struct *stream, std::uint32_t n) // 1 to 8
{
    const std::uint32_t value = per_peek_8(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

inline std::uint32_t per_get_16(unpack_info_struct *stream, std::uint32_t n) // 9 to 16
{
    const std::uint32_t value = per_peek_16(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

inline std::uint32_t per_get_24(unpack_info_struct *stream, std::uint32_t n) // 17 to 24
{
    const std::uint32_t value = per_peek_24(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

inline std::uint32_t per_get_32(unpack_info_struct *stream, std::uint32_t n) // 25 to 32
{
    const std::uint32_t value = per_peek_32(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

/// per_get_bits for a width that the compiler does not know.
std::uint32_t per_get_any(unpack_info_struct *stream, std::uint32_t n);

/// The stateful read of any width, 0 to 32: a literal one becomes the read of its band on the spot.
inline std::uint32_t per_get_bits(unpack_info_struct *stream, std::uint32_t n)
{
    if (!__builtin_constant_p(n))
        return per_get_any(stream, n);
    const std::uint32_t value = per_peek_bits(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

/// Tells whether `n` bits are left.  fr_size counts as an unsigned word, in bits, so one that unchecked reads
/// have taken below 0 passes.
inline bool per_has_bits(const unpack_info_struct *stream, std::uint32_t n)
{
    return (stream->bits & 7) + n <= static_cast<std::uint32_t>(stream->fr_size) * 8;
}

/* Checked reads
 *   n, answer, moves   as for the stateful reads; 0 bits touch nothing
 *   errors             fewer than n bits left: hard error, answers 0 and moves nothing  */

std::uint32_t per_get_8_checked(unpack_info_struct *stream, std::uint32_t n);    // 1 to 8
std::uint32_t per_get_16_checked(unpack_info_struct *stream, std::uint32_t n);   // 9 to 16
std::uint32_t per_get_24_checked(unpack_info_struct *stream, std::uint32_t n);   // 17 to 24
std::uint32_t per_get_32_checked(unpack_info_struct *stream, std::uint32_t n);   // 25 to 32
std::uint32_t per_get_bits_checked(unpack_info_struct *stream, std::uint32_t n); // 0 to 32

/// `count` unchecked 8-bit reads into `octets`: a copy when the cursor stands on an octet, else eight at a time.
void per_get_octets(unpack_info_struct *stream, std::uint8_t *octets, std::uint32_t count);

/// Moves over `n` bits without a look at the end.  `n` is a distance modulo 2^32: one below 0 goes back, as it
/// does behind a child that has read more than its open type holds.
void per_skip_bits(unpack_info_struct *stream, std::uint32_t n);

/// The same; a hard error, and no move, when fewer than `n` bits are left.
void per_skip_bits_checked(unpack_info_struct *stream, std::uint32_t n);

// ---------------------------------------------------------------------------------------------------------------
// Writes with a cursor
// ---------------------------------------------------------------------------------------------------------------

/* Stateful writes
 *   n, value   as for the stateless writes
 *   moves      bits by n; frame by the whole octets passed
 *   errors     none: neither room nor value is tested  */

inline void per_put_8(pack_info_struct *stream, std::uint32_t n, std::uint32_t value) // 1 to 8
{
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_8(at.frame, at.bits & 7, n, value);
}

inline void per_put_16(pack_info_struct *stream, std::uint32_t n, std::uint32_t value) // 9 to 16
{
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_16(at.frame, at.bits & 7, n, value);
}

inline void per_put_24(pack_info_struct *stream, std::uint32_t n, std::uint32_t value) // 17 to 24
{
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_24(at.frame, at.bits & 7, n, value);
}

inline void per_put_32(pack_info_struct *stream, std::uint32_t n, std::uint32_t value) // 25 to 32
{
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_32(at.frame, at.bits & 7, n, value);
}

/// per_put_bits for a width that the compiler does not know.
void per_put_any(pack_info_struct *stream, std::uint32_t n, std::uint32_t value);

/// The stateful write of any width, 0 to 32: a literal one becomes the write of its band on the spot.
inline void per_put_bits(pack_info_struct *stream, std::uint32_t n, std::uint32_t value)
{
    if (!__builtin_constant_p(n))
        return per_put_any(stream, n, value);
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_bits(at.frame, at.bits & 7, n, value);
}

/// `count` 8-bit writes out of `octets`, which does not overlap the frame; done as the reads of per_get_octets.
void per_put_octets(pack_info_struct *stream, const std::uint8_t *octets, std::uint32_t count);

// ---------------------------------------------------------------------------------------------------------------
// L and H bits
// ---------------------------------------------------------------------------------------------------------------

/// What GSM pads its blocks with (3GPP TS 44.006 clause 5.2).  A bit is L where it equals the padding, else H.
enum : std::uint32_t { PER_PADDING_OCTET = 0x2B };

/// Stores 1 in `*result` when a bit of value `bit_value`, 0 or 1, is H at `bit_position` of its octet, 0 to 7 from
/// the most significant bit on; else 0, as for any other value or position.
void per_lh_bit(std::uint32_t bit_value, std::uint32_t bit_position, std::uint8_t *result);
