// The parts of the bit stream that are no one-field hot path: widths known at run time only, checked reads, skips.
#include "per_stream.h"

std::uint32_t per_get_any(unpack_info_struct *stream, std::uint32_t n)
{
    const std::uint32_t value = per_peek_bits(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

void per_put_any(pack_info_struct *stream, std::uint32_t n, std::uint32_t value)
{
    const pack_info_struct at = *stream;
    *stream                   = {at.frame + (((at.bits & 7) + n) >> 3), at.bits + n};
    per_poke_bits(at.frame, at.bits & 7, n, value);
}

namespace {

// A checked read by way of `peek`.  Of 0 bits only the test remains.
template <auto peek> std::uint32_t get_checked(unpack_info_struct *stream, std::uint32_t n)
{
    if (!per_has_bits(stream, n)) {
        per_set_error(stream, PER_HARD_ERROR);
        return 0;
    }
    if (n == 0)
        return 0;
    const std::uint32_t value = peek(stream->frame, stream->bits & 7, n);
    per_pass(stream, n);
    return value;
}

} // namespace

std::uint32_t per_get_8_checked(unpack_info_struct *stream, std::uint32_t n)
{
    return get_checked<per_peek_8>(stream, n);
}

std::uint32_t per_get_16_checked(unpack_info_struct *stream, std::uint32_t n)
{
    return get_checked<per_peek_16>(stream, n);
}

std::uint32_t per_get_24_checked(unpack_info_struct *stream, std::uint32_t n)
{
    return get_checked<per_peek_24>(stream, n);
}

std::uint32_t per_get_32_checked(unpack_info_struct *stream, std::uint32_t n)
{
    return get_checked<per_peek_32>(stream, n);
}

std::uint32_t per_get_bits_checked(unpack_info_struct *stream, std::uint32_t n)
{
    return get_checked<per_peek_bits>(stream, n);
}

void per_get_octets(unpack_info_struct *stream, std::uint8_t *octets, std::uint32_t count)
{
    if (count == 0)
        return;
    const std::uint8_t *from   = stream->frame;
    const std::uint32_t offset = stream->bits & 7;
    stream->bits += count * 8;
    stream->frame += count;
    stream->fr_size = static_cast<std::int32_t>(static_cast<std::uint32_t>(stream->fr_size) - count);

    if (offset == 0) {
        std::memcpy(octets, from, count);
        return;
    }
    for (; count >= 8; count -= 8, from += 8, octets += 8)
        per_store(octets, per_load<std::uint64_t>(from) << offset | from[8] >> (8 - offset));
    for (; count > 0; --count, ++from)
        *octets++ = static_cast<std::uint8_t>(from[0] << offset | from[1] >> (8 - offset));
}

void per_put_octets(pack_info_struct *stream, const std::uint8_t *octets, std::uint32_t count)
{
    if (count == 0)
        return;
    std::uint8_t       *to     = stream->frame;
    const std::uint32_t offset = stream->bits & 7;
    *stream                    = {to + count, stream->bits + count * 8};

    if (offset == 0) {
        std::memcpy(to, octets, count);
        return;
    }
    const std::uint32_t ahead = 8 - offset;                  // bits of each octet that go into the octet begun
    std::uint64_t       begun = std::uint64_t{*to} >> ahead; // the bits that stand in it
    for (; count >= 8; count -= 8, octets += 8, to += 8) {
        const auto word = per_load<std::uint64_t>(octets);
        per_store(to, begun << (56 + ahead) | word >> offset);
        begun = word & bit_mask(offset);
    }
    for (; count > 0; --count) {
        const std::uint32_t octet = *octets++;
        *to++                     = static_cast<std::uint8_t>(begun << ahead | octet >> offset);
        begun                     = octet & bit_mask(offset);
    }
    *to = static_cast<std::uint8_t>(begun << ahead | (*to & bit_mask(ahead)));
}

void per_skip_bits(unpack_info_struct *stream, std::uint32_t n)
{
    const std::int32_t octets = static_cast<std::int32_t>((stream->bits & 7) + n) >> 3;
    stream->bits += n;
    stream->frame += octets;
    stream->fr_size =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(stream->fr_size) - static_cast<std::uint32_t>(octets));
}

void per_skip_bits_checked(unpack_info_struct *stream, std::uint32_t n)
{
    if (per_has_bits(stream, n))
        per_skip_bits(stream, n);
    else
        per_set_error(stream, PER_HARD_ERROR);
}

void per_lh_bit(std::uint32_t bit_value, std::uint32_t bit_position, std::uint8_t *result)
{
    const std::uint32_t padding = PER_PADDING_OCTET >> (~bit_position & 7) & 1;
    *result                     = bit_value < 2 && bit_position < 8 && bit_value != padding;
}
