// Lengths and whole numbers with a length in front.
#include "asn_len_int.h"

#include "asn_report.h"
#include "per_stream.h"

namespace {

void report_below_lower(const char *opening, const char *name)
{
    AsnErrorPrint(opening);
    AsnErrorPrint(name);
    AsnErrorPrint(" does not lie within the bounds \n\n");
}

// The determinant of lengths that do not reach a fragment: 0 and 7 bits, or 10 and 14 bits.
void put_unfragmented_length(pack_info_struct *stream, AsnLen length)
{
    if (length < ASN_SHORT_LENGTH)
        per_put_8(stream, 8, length & 127);
    else
        per_put_16(stream, 16, (length & 0x3FFF) | 0x8000);
}

// The low octets of `word` behind their count.  AsnInt has four octets at most; the bound is that of the rule.
void put_counted_octets(pack_info_struct *stream, std::uint32_t width, std::uint32_t word)
{
    const AsnLen count = (width + 7) >> 3;
    if (count > ASN_FRAGMENT) {
        AsnAssert(false);
        return;
    }
    put_unfragmented_length(stream, count);
    per_put_bits(stream, count * 8, word);
}

// DIFFERS X.691 11.9.3.8: a count of octets is never fragmented; the prefix 11 reads as a count of 0.
AsnLen get_octet_count(unpack_info_struct *stream)
{
    if (per_get_8_checked(stream, 1) == 0)
        return per_get_8_checked(stream, 7);
    if (per_get_8_checked(stream, 1) == 0)
        return per_get_16_checked(stream, 14);
    return 0;
}

// `first` with `count` octets of the frame shifted in from the right; those that are missing read as 0.
std::uint32_t get_octets(unpack_info_struct *stream, AsnLen count, std::uint32_t first)
{
    for (; count > 0; --count)
        first = first << 8 | per_get_8_checked(stream, 8);
    return first;
}

std::uint32_t counted_octets_size(std::uint32_t width)
{
    const AsnLen count = (width + 7) >> 3;
    if (count > ASN_FRAGMENT) {
        AsnAssert(false);
        return 0;
    }
    return (count < ASN_SHORT_LENGTH ? 8 : 16) + count * 8;
}

std::uint32_t offset_from(AsnInt value, AsnInt lower)
{
    return static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(lower);
}

} // namespace

void AsnLenSemiConstrained_pack(pack_info_struct *stream, AsnLen length, AsnLen lower, const char *name)
{
    if (length < lower)
        report_below_lower("\nAsnLenSemiConstrained_pack : The data passed for packing ", name);
    if (length < ASN_FRAGMENT) {
        put_unfragmented_length(stream, length);
        return;
    }
    const AsnLen units = length < ASN_MAX_FRAGMENT ? length / ASN_FRAGMENT : ASN_MAX_FRAGMENT / ASN_FRAGMENT;
    per_put_8(stream, 8, 0xC0 | units);
}

void AsnLenSemiConstrained_unpack(AsnLen *result, unpack_info_struct *stream, AsnLen /*lower*/, const char * /*name*/)
{
    if (per_get_8_checked(stream, 1) == 0) {
        *result = per_get_8_checked(stream, 7);
        return;
    }
    if (per_get_8_checked(stream, 1) == 0) {
        *result = per_get_16_checked(stream, 14);
        return;
    }
    *result = per_get_8_checked(stream, 6) * ASN_FRAGMENT;
    if (*result > ASN_MAX_FRAGMENT) {
        per_set_error(stream, PER_HARD_ERROR);
        *result = 0;
    }
}

std::uint32_t AsnLenSemiConstrained_size(AsnLen length, AsnLen lower)
{
    AsnLen left = length < lower ? 0 : length - lower;
    if (left < ASN_SHORT_LENGTH)
        return 8;
    if (left < ASN_FRAGMENT)
        return 16;
    std::uint32_t heads = left / ASN_MAX_FRAGMENT; // one octet in front of each fragment
    left %= ASN_MAX_FRAGMENT;
    if (left >= ASN_FRAGMENT) {
        ++heads;
        left %= ASN_FRAGMENT;
    }
    return heads * 8 + (left < ASN_SHORT_LENGTH ? 8 : 16);
}

void AsnIntSemiConstrained_pack(pack_info_struct *stream, AsnInt value, AsnInt lower, const char *name)
{
    if (value < lower) // goes out all the same, as a large offset
        report_below_lower("\nAsnIntSemiConstrained_pack : The data passed for packing ", name);
    const std::uint32_t offset = offset_from(value, lower);
    put_counted_octets(stream, asn_bit_width(offset), offset);
}

void AsnIntSemiConstrained_unpack(AsnInt *result, unpack_info_struct *stream, AsnInt lower)
{
    const AsnLen        count  = get_octet_count(stream);
    const std::uint32_t offset = get_octets(stream, count, static_cast<std::uint32_t>(*result));
    *result                    = static_cast<AsnInt>(offset + static_cast<std::uint32_t>(lower));
}

std::uint32_t AsnIntSemiConstrained_size(AsnInt value, AsnInt lower)
{
    return counted_octets_size(asn_bit_width(offset_from(value, lower)));
}

void AsnIntUnconstrained_pack(pack_info_struct *stream, AsnInt value)
{
    put_counted_octets(stream, asn_signed_bit_width(value), static_cast<std::uint32_t>(value));
}

void AsnIntUnconstrained_unpack(AsnInt *result, unpack_info_struct *stream)
{
    const AsnLen count = get_octet_count(stream);
    if (count == 0 || count > sizeof(AsnInt)) {
        per_set_error(stream, PER_HARD_ERROR);
        *result = 0;
        return;
    }
    const std::uint32_t unused = 32 - count * 8;
    *result                    = static_cast<AsnInt>(get_octets(stream, count, 0) << unused) >> unused;
}

std::uint32_t AsnIntUnconstrained_size(AsnInt value)
{
    return counted_octets_size(asn_signed_bit_width(value));
}
