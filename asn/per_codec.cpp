// What the generated codecs share, as far as it is not on the path of every field.
#include "per_codec.h"

void per_out_of_range(const unpack_info_struct *stream)
{
    const auto *const error = static_cast<const PerError *>(stream->err_hndl);
    if (error && error->code == PER_NO_ERROR)
        per_set_error(stream, PER_SOFT_ERROR);
}

namespace {

constexpr std::uint32_t map_bits = 32; // of a word of the bitmap

// The length of an open type in octets.  False after a hard error.
bool get_open_length(unpack_info_struct *stream, std::uint32_t *octets)
{
    if (per_get_8(stream, 1) == 0) {
        *octets = per_get_8(stream, 7);
        return true;
    }
    if (per_get_8(stream, 1) != 0) { // DIFFERS X.691 11.9.3.8: open types in fragments are refused
        per_set_error(stream, PER_HARD_ERROR);
        return false;
    }
    *octets = per_get_16(stream, 14);
    return true;
}

bool get_addition_count(unpack_info_struct *stream, std::uint32_t *count)
{
    if (per_get_8(stream, 1) == 0) {
        *count = per_get_8(stream, 6) + 1;
        return true;
    }
    if (per_get_8(stream, 1) != 0) {
        per_set_error(stream, PER_HARD_ERROR);
        return false;
    }
    *count = per_get_8(stream, 7);
    return true;
}

} // namespace

bool per_get_additions(unpack_info_struct *stream, per_additions *additions)
{
    if (!get_addition_count(stream, &additions->count))
        return false;
    std::uint32_t left = additions->count;
    for (std::uint32_t *word = additions->present; left > 0; ++word) {
        const std::uint32_t n = left < map_bits ? left : map_bits;
        *word                 = per_get_bits(stream, n) << (map_bits - n);
        left -= n;
    }
    return true;
}

bool per_skip_additions(unpack_info_struct *stream, const per_additions *additions, std::uint32_t known)
{
    for (std::uint32_t n = known; n < additions->count; ++n)
        if (per_has_addition(additions, n) && !per_skip_open(stream))
            return false;
    return true;
}

bool per_open_unpack(unpack_info_struct *stream, std::uint32_t *end)
{
    std::uint32_t octets;
    if (!get_open_length(stream, &octets))
        return false;
    *end = stream->bits + octets * 8;
    return true;
}

bool per_skip_open(unpack_info_struct *stream)
{
    std::uint32_t octets;
    if (!get_open_length(stream, &octets))
        return false;
    per_skip_bits(stream, octets * 8);
    return true;
}

void per_open_pack(pack_info_struct *stream, per_open_type *open, std::uint32_t size)
{
    const std::uint32_t estimate = (size + 7) >> 3;
    *open                        = {*stream, 8};
    per_put_8(stream, 8, 0);
    if (estimate >= ASN_SHORT_LENGTH && estimate < ASN_FRAGMENT) {
        per_put_8(stream, 8, 0);
        open->reserved = 16;
    }
}

void per_close_pack(pack_info_struct *stream, const per_open_type *open)
{
    const std::uint32_t written = stream->bits - open->length.bits - open->reserved;
    if ((written & 7) != 0)
        per_put_8(stream, 8 - (written & 7), 0);
    const std::uint32_t octets = (written + 7) >> 3;
    pack_info_struct    length = open->length;
    if (octets < ASN_SHORT_LENGTH && open->reserved == 8)
        per_put_8(&length, 8, octets);
    else if (octets < ASN_FRAGMENT)
        per_put_16(&length, 16, (octets & 0x3FFF) + 0x8000);
}

std::uint32_t per_open_size(std::uint32_t size)
{
    const std::uint32_t octets = (size + 7) >> 3;
    return (octets >= ASN_SHORT_LENGTH && octets < ASN_FRAGMENT ? 16 : 8) + octets * 8;
}

std::uint32_t per_get_extensible_enum(unpack_info_struct *stream, std::uint32_t root_count, std::uint32_t width)
{
    if (per_get_8(stream, 1) != 0)
        return (per_get_8(stream, 7) & 0x3F) + root_count;
    const std::uint32_t value = per_get_bits(stream, width);
    if (value >= root_count)
        per_out_of_range(stream);
    return value;
}

bool per_get_extensible_choice(unpack_info_struct *stream, std::uint32_t root_count, std::uint32_t width,
                               std::uint32_t *index)
{
    if (per_get_8(stream, 1) == 0) {
        *index = per_get_bits(stream, width);
        return true;
    }
    if (per_get_8(stream, 1) == 0) {
        *index = per_get_8(stream, 6) + root_count;
        return true;
    }
    const std::uint32_t octets = per_get_8(stream, 8);
    if (octets > sizeof *index) {
        per_set_error(stream, PER_HARD_ERROR);
        return false;
    }
    *index = per_get_bits(stream, octets * 8) + root_count;
    return true;
}
