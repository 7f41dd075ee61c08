// Lengths and whole numbers with a length in front: X.691 (2015) clauses 11.7 to 11.9, unaligned variant, for numbers
// of up to 32 bits.
//
// The unpack functions read by checked reads: a frame that ends early leaves a hard error at the cursor, and the
// missing bits read as 0.  The pack functions never fail: a value below its bound is reported and goes out.  `name`
// is the label of the ASN.1 type in that report.  Sizes are in bits.
#pragma once

#include <bit>
#include <cstdint>

#include "asn_values.h"
#include "solvane/solvane.h"

enum : std::uint32_t {
    ASN_SHORT_LENGTH = 128,   ///< from here on a length takes two octets
    ASN_FRAGMENT     = 16384, ///< from here on it comes in fragments of 1 to 4 times this
    ASN_MAX_FRAGMENT = 65536
};

/// Bits up to the highest one bit; 0 for 0.
constexpr std::uint32_t asn_bit_width(std::uint32_t value)
{
    return static_cast<std::uint32_t>(std::bit_width(value));
}

/// Bits of the magnitude and one for the sign; 1 for 0.  The magnitude of the most negative word is that word
/// again and gives 32.
constexpr std::uint32_t asn_signed_bit_width(std::int32_t value)
{
    const auto          word      = static_cast<std::uint32_t>(value);
    const std::uint32_t magnitude = value < 0 ? 0 - word : word;
    const std::uint32_t width     = asn_bit_width(magnitude) + 1;
    return width < 32 ? width : 32;
}

/* General length determinant                                      X.691 (2015) 11.9.3.5 to 11.9.3.8
 *   length   up to 16383 the whole; from 16384 on the head of a fragment, whose units the caller writes, and then
 *            a further length for what is left
 *   lower    least length of the constraint: tested at pack, else ignored  */

void AsnLenSemiConstrained_pack(pack_info_struct *stream, AsnLen length, AsnLen lower, const char *name);

/// A hard error, and a length of 0, for a fragment of more than four units; a fragment of none is a length of 0.
void AsnLenSemiConstrained_unpack(AsnLen *result, unpack_info_struct *stream, AsnLen lower, const char *name);

/// Bits of all determinants that `length - lower` units need, fragments included.
/// DIFFERS X.691 11.9.3.5: pack writes `length` itself, so a caller who wants the size of that gives 0 for `lower`.
std::uint32_t AsnLenSemiConstrained_size(AsnLen length, AsnLen lower);

/* Semi-constrained whole number                                    X.691 (2015) 11.7
 * An octet count and `value - lower` as an unsigned number.
 * DIFFERS X.691 11.7: an offset of 0 takes no octet, only the count 0; both directions accept it  */

void AsnIntSemiConstrained_pack(pack_info_struct *stream, AsnInt value, AsnInt lower, const char *name);

/// Shifts what it reads into `*result`, which the caller has set to 0, and adds `lower`; all modulo 2^32.
void AsnIntSemiConstrained_unpack(AsnInt *result, unpack_info_struct *stream, AsnInt lower);

std::uint32_t AsnIntSemiConstrained_size(AsnInt value, AsnInt lower);

/* Unconstrained whole number                                       X.691 (2015) 11.8
 * An octet count and `value` in two's complement.
 * DIFFERS X.691 11.8: the count comes from the magnitude, so -128 takes two octets, as -32768 takes three  */

void AsnIntUnconstrained_pack(pack_info_struct *stream, AsnInt value);

/// A hard error, and 0, for a count of 0 or of more than four octets.
void AsnIntUnconstrained_unpack(AsnInt *result, unpack_info_struct *stream);

std::uint32_t AsnIntUnconstrained_size(AsnInt value);
