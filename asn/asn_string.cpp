// OCTET STRING and BIT STRING.  Both are strings of units, of eight bits and of one.
#include "asn_string.h"

#include <cstring>

#include "asn_block.h"
#include "asn_len_int.h"
#include "per_stream.h"

namespace {

enum string_unit : std::uint32_t { OF_BITS = 1, OF_OCTETS = 8 };

struct size_constraint {
    std::uint32_t lower;
    std::uint32_t width;   // of the length, where it is a constrained whole number
    bool          in_bits; // X.691 11.9.4.1: it is one, and the string is never fragmented
    const char   *name;    // label of the type in reports
};

size_constraint constraint_of(std::int32_t upper, std::uint32_t lower, std::uint32_t mode, const char *name)
{
    const bool in_bits = mode == ASN_BOTH_SIZES && upper < static_cast<std::int32_t>(ASN_MAX_FRAGMENT);
    return {mode == ASN_NO_SIZE ? 0 : lower, asn_bit_width(static_cast<std::uint32_t>(upper) - lower), in_bits, name};
}

AsnLen octets_of(AsnLen units, string_unit unit)
{
    return unit == OF_OCTETS ? units : (units >> 3) + ((units & 7) != 0);
}

// Bits behind the last whole octet.
AsnLen odd_bits_of(AsnLen units, string_unit unit)
{
    return unit == OF_OCTETS ? 0 : units & 7;
}

void put_length(pack_info_struct *stream, AsnLen length, const size_constraint &size)
{
    if (size.in_bits)
        per_put_bits(stream, size.width, length - size.lower);
    else
        AsnLenSemiConstrained_pack(stream, length, size.lower, size.name);
}

void put_string(pack_info_struct *stream, const std::uint8_t *octets, AsnLen left, string_unit unit,
                const size_constraint &size)
{
    for (;;) {
        put_length(stream, left, size);
        if (size.in_bits || left < ASN_FRAGMENT)
            break;
        const AsnLen chunk = left < ASN_MAX_FRAGMENT ? left & ~(ASN_FRAGMENT - 1) : ASN_MAX_FRAGMENT;
        per_put_octets(stream, octets, octets_of(chunk, unit));
        octets += octets_of(chunk, unit);
        left -= chunk;
    }
    const AsnLen odd_bits = odd_bits_of(left, unit);
    const AsnLen whole    = octets_of(left, unit) - (odd_bits != 0);
    per_put_octets(stream, octets, whole);
    if (odd_bits != 0)
        per_put_8(stream, odd_bits, std::uint32_t{octets[whole]} >> (8 - odd_bits));
}

AsnLen get_length(unpack_info_struct *stream, const size_constraint &size)
{
    if (size.in_bits && size.width == 0 && per_has_bits(stream, 0))
        return size.lower;
    if (size.in_bits)
        return per_get_bits_checked(stream, size.width) + size.lower;
    AsnLen length = 0;
    AsnLenSemiConstrained_unpack(&length, stream, size.lower, size.name);
    return length;
}

// What `count` checked reads of an octet into zeroed memory come to.
void get_octets_checked(unpack_info_struct *stream, std::uint8_t *octets, std::uint32_t count)
{
    const std::uint32_t offset = stream->bits & 7;
    const std::uint32_t room   = static_cast<std::uint32_t>(stream->fr_size) * 8;
    const std::uint32_t sure   = room > offset ? (room - offset) >> 3 : 0;
    per_get_octets(stream, octets, count < sure ? count : sure);
    if (count > sure)
        per_set_error(stream, PER_HARD_ERROR);
}

// The contents of one round.
void get_units(unpack_info_struct *stream, std::uint8_t *octets, AsnLen length, string_unit unit)
{
    const AsnLen odd_bits = odd_bits_of(length, unit);
    const AsnLen whole    = octets_of(length, unit) - (odd_bits != 0);
    get_octets_checked(stream, octets, whole);
    if (odd_bits != 0)
        octets[whole] = static_cast<std::uint8_t>(per_get_8_checked(stream, odd_bits) << (8 - odd_bits));
}

// Whether `octets` more octets can be there: fr_size as a signed number, so nothing fits once the end is passed.
bool fits_frame(const unpack_info_struct *stream, std::uint32_t octets)
{
    return stream->fr_size >= 0 && octets <= static_cast<std::uint32_t>(stream->fr_size);
}

// Resizes the block from `held` octets by `more`, which become zero.  No block is made for an empty string.
bool grow(std::uint8_t **block, std::uint32_t held, std::uint32_t more, const asn_tag &tag)
{
    if (more == 0)
        return true;
    void *const grown = *block || !asn_realloc_is_default()
                            ? AsnMemRealloc(*block, std::size_t{held} + more, held, tag.flag, tag.file_code, tag.line)
                            : asn_alloc(true, more, tag);
    if (!grown)
        return false;
    *block = static_cast<std::uint8_t *>(grown);
    return true;
}

// A string of a known number of units, up to 32 bits and sure to be in the frame: one read.
void get_short_string(std::uint8_t *octets, unpack_info_struct *stream, std::uint32_t bits)
{
    std::uint32_t word = per_get_any(stream, bits) << (32 - bits);
    for (std::uint32_t left = (bits + 7) >> 3; left > 0; --left, word <<= 8)
        *octets++ = static_cast<std::uint8_t>(word >> 24);
}

// Answers the length of the string, in units.
AsnLen get_string(std::uint8_t **block, unpack_info_struct *stream, string_unit unit, const size_constraint &size,
                  const asn_tag &tag)
{
    for (AsnLen total = 0;;) {
        const AsnLen length = get_length(stream, size);
        const AsnLen held   = octets_of(total, unit);
        const AsnLen more   = octets_of(length, unit);
        if (!fits_frame(stream, more) || !grow(block, held, more, tag)) {
            per_set_error(stream, PER_HARD_ERROR);
            return 0;
        }
        const AsnLen bits = length * unit;
        if (more != 0 && more <= 4 && per_has_bits(stream, bits))
            get_short_string(*block + held, stream, bits);
        else if (more != 0)
            get_units(stream, *block + held, length, unit);
        total += length;
        if (size.in_bits || length < ASN_FRAGMENT)
            return total;
    }
}

} // namespace

void AsnOcts_pack(pack_info_struct *stream, const AsnOcts *octets, std::int32_t upper, std::uint32_t lower,
                  std::uint32_t mode)
{
    put_string(stream, octets->octs, octets->octetLen, OF_OCTETS, constraint_of(upper, lower, mode, "OCTET STRING"));
}

void AsnBits_pack(pack_info_struct *stream, const AsnBits *bit_string, std::int32_t upper, std::uint32_t lower,
                  std::uint32_t mode)
{
    put_string(stream, bit_string->bits, bit_string->bitLen, OF_BITS,
               constraint_of(upper, lower, mode, "BIT STRING"));
}

void AsnOcts_unpack(AsnOcts *result, unpack_info_struct *stream, std::int32_t upper, std::uint32_t lower,
                    std::uint32_t mode, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    result->octetLen = get_string(&result->octs, stream, OF_OCTETS, constraint_of(upper, lower, mode, "OCTET STRING"),
                                  {flag, file_code, line});
}

void AsnBits_unpack(AsnBits *result, unpack_info_struct *stream, std::int32_t upper, std::uint32_t lower,
                    std::uint32_t mode, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    result->bitLen = get_string(&result->bits, stream, OF_BITS, constraint_of(upper, lower, mode, "BIT STRING"),
                                {flag, file_code, line});
}

std::uint32_t AsnOcts_size(const AsnOcts *octets)
{
    return AsnLenSemiConstrained_size(octets->octetLen, 0) + octets->octetLen * 8;
}

void AsnBits_copy(AsnBits *result, const AsnBits *source, std::uint8_t flag, std::uint16_t file_code,
                  std::uint32_t line)
{
    const AsnLen octets = octets_of(source->bitLen, OF_BITS);
    result->bits        = octets ? static_cast<std::uint8_t *>(AsnMemAlloc(octets, flag, file_code, line)) : nullptr;
    result->bitLen      = result->bits ? source->bitLen : 0;
    if (result->bits)
        std::memcpy(result->bits, source->bits, octets);
}

namespace {

void free_string(std::uint8_t **block, const asn_tag &tag)
{
    if (*block)
        asn_free(asn_free_is_default(), *block, tag);
    *block = nullptr;
}

} // namespace

void AsnOctsAlloc(AsnOcts *octets, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    octets->octs = static_cast<std::uint8_t *>(AsnMemAlloc(octets->octetLen, flag, file_code, line));
}

void AsnOctsFree(AsnOcts *octets, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    free_string(&octets->octs, {flag, file_code, line});
}

void AsnBitsAlloc(AsnBits *bits, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    bits->bits = static_cast<std::uint8_t *>(AsnMemAlloc(bits->bitLen, flag, file_code, line));
}

void AsnBitsFree(AsnBits *bits, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    free_string(&bits->bits, {flag, file_code, line});
}

void AsnOidAlloc(AsnOid *oid, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnOctsAlloc(oid, flag, file_code, line);
}

void AsnOidFree(AsnOid *oid, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnOctsFree(oid, flag, file_code, line);
}
