// What the generated codecs share: the error chain round a call, range errors, extension additions, open types and
// the reduced forms of small numbers.  X.691 (2015), unaligned variant.
//
// A generated unpack function reads fields of known width straight from the stream (per_stream.h), unchecked, and calls
// the children that can fail through the error chain:
//
//     void *const outer = stream->err_hndl;
//     PerError    local;
//     per_enter(stream, &local);
//     Child_unpack(&value->child, stream);
//     if (per_leave(stream, &local, outer))
//         return;
//
// Whatever the frame holds, no function here reads or writes outside of its own arguments but through the stream's
// unchecked reads, for which the caller of a codec owes spare room behind the frame.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn_heap.h"
#include "asn_len_int.h"
#include "asn_list.h"
#include "asn_report.h"
#include "asn_string.h"
#include "per_error.h"
#include "per_stream.h"

// ---------------------------------------------------------------------------------------------------------------
// Errors
// ---------------------------------------------------------------------------------------------------------------

/// Puts an empty `local` record in force for a call.
inline void per_enter(unpack_info_struct *stream, PerError *local)
{
    local->code      = PER_NO_ERROR;
    stream->err_hndl = local;
}

/* Behind the call
 *   puts `outer` in force again and merges what the call left in `local`
 *   answer  true: return at once
 *   opt     the same, after an optional member
 *   flag    the same, after a member with a DEFAULT of string type, which then applies  */

inline bool per_leave(unpack_info_struct *stream, PerError *local, void *outer)
{
    stream->err_hndl = outer;
    return per_merge_error(local, outer) != 0;
}

inline bool per_leave_opt(unpack_info_struct *stream, PerError *local, void *outer, const std::uint8_t *presence)
{
    stream->err_hndl = outer;
    return per_merge_error_opt(local, outer, presence) != 0;
}

inline bool per_leave_flag(unpack_info_struct *stream, PerError *local, void *outer, std::uint8_t *flag)
{
    stream->err_hndl = outer;
    return per_merge_error_flag(local, outer, flag) != 0;
}

/// A decoded number outside its range, in a member or an ENUMERATED: a soft error unless there is an error already.
void per_out_of_range(const unpack_info_struct *stream) __attribute__((cold));

// ---------------------------------------------------------------------------------------------------------------
// Extension additions
// ---------------------------------------------------------------------------------------------------------------

/// Which additions a SEQUENCE on the wire has.
struct per_additions {
    std::uint32_t count;
    std::uint32_t present[6]; ///< the first addition is the most significant bit of the first word
};

/// Reads count and bitmap.  False after a hard error, for a count in more than one octet (X.691 11.6, 11.9.3.4).
bool per_get_additions(unpack_info_struct *stream, per_additions *additions);

/// Whether the addition `n`, from 0, is there; those behind the count are not.
inline bool per_has_addition(const per_additions *additions, std::uint32_t n)
{
    return n < additions->count && (additions->present[n / 32] >> (31 - n % 32) & 1) != 0;
}

/// Skips the additions from `known` on that are there.  False after a hard error.
bool per_skip_additions(unpack_info_struct *stream, const per_additions *additions, std::uint32_t known);

// ---------------------------------------------------------------------------------------------------------------
// Open types                                                                                     X.691 11.2, 11.9
// ---------------------------------------------------------------------------------------------------------------

/// Reads the length and tells where the contents end, in bits of the stream.  False after a hard error, for a length
/// in fragments.
bool per_open_unpack(unpack_info_struct *stream, std::uint32_t *end);

/// Moves behind the contents, wherever in them or behind them the child has stopped.
inline void per_close_unpack(unpack_info_struct *stream, std::uint32_t end)
{
    per_skip_bits(stream, end - stream->bits);
}

/// per_open_unpack and per_close_unpack of contents that are not known.
bool per_skip_open(unpack_info_struct *stream);

/// An open type that is being written.
struct per_open_type {
    pack_info_struct length;   ///< where the length goes
    std::uint32_t    reserved; ///< bits of it
};

/// Leaves room for the length of contents of `size` bits, as the size function says.
void per_open_pack(pack_info_struct *stream, per_open_type *open, std::uint32_t size);

/// Pads the contents to whole octets and writes their length.  Contents that outgrew their estimate across 128 octets
/// have their first octet overwritten by it; from 16384 octets on the room stays zero.
void per_close_pack(pack_info_struct *stream, const per_open_type *open);

/// Bits of an open type with contents of `size` bits.
std::uint32_t per_open_size(std::uint32_t size);

// ---------------------------------------------------------------------------------------------------------------
// Selections with an extension marker
// ---------------------------------------------------------------------------------------------------------------

/// ENUMERATED: a root index in `width` bits, tested against `root_count`, or the index of an addition.
/// DIFFERS X.691 11.6: the bit that tells a small number from a large one is not looked at, six bits follow it.
std::uint32_t per_get_extensible_enum(unpack_info_struct *stream, std::uint32_t root_count, std::uint32_t width);

/// CHOICE: index of the alternative.  False after a hard error, for a number of more than four octets.
bool per_get_extensible_choice(unpack_info_struct *stream, std::uint32_t root_count, std::uint32_t width,
                               std::uint32_t *index);

// ---------------------------------------------------------------------------------------------------------------
// Numbers and strings
// ---------------------------------------------------------------------------------------------------------------

/// A number of more than 32 bits, of which the record keeps the low 32.
inline std::uint32_t per_get_wide(unpack_info_struct *stream, std::uint32_t n)
{
    per_skip_bits(stream, n - 32);
    return per_get_32(stream, 32);
}

inline void per_put_wide(pack_info_struct *stream, std::uint32_t n, std::uint32_t value)
{
    for (; n > 64; n -= 32)
        per_put_32(stream, 32, 0);
    per_put_bits(stream, n - 32, 0);
    per_put_32(stream, 32, value);
}

/// Bits of a BIT STRING and of its length, which takes `width` bits.
inline std::uint32_t per_bits_size(const AsnBits *bits, std::uint32_t width)
{
    return width + bits->bitLen;
}

inline std::uint32_t per_bits_size(const AsnBits *bits)
{
    return AsnLenSemiConstrained_size(bits->bitLen, 0) + bits->bitLen;
}
