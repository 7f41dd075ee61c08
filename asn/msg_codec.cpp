// Bounded parts, digits and the skipping of optional elements for the generated codecs.
#include "msg_codec.h"

#include <cstdio>
#include <cstdlib>

std::uint32_t msg_look(const unpack_info_struct *stream, std::uint32_t offset, std::uint32_t n)
{
    const std::uint32_t at = (stream->bits & 7) + offset;
    if (!msg_has_bits(stream, offset + n))
        return 0;
    return per_peek_bits(stream->frame + (at >> 3), at & 7, n);
}

// ---------------------------------------------------------------------------------------------------------------
// Parts with a length
// ---------------------------------------------------------------------------------------------------------------

namespace {

/// In `aux` of the record that is in force while an element of an array is read.  The caller's own record hears nothing
/// of a length that is too great: such an element stays unread, and that is no error.
enum : std::uint32_t { in_element = 0x454C454D };

bool open_part(unpack_info_struct *stream, msg_part *part, std::uint32_t width)
{
    const std::uint32_t octets = per_peek_bits(stream->frame, stream->bits & 7, width);
    if (static_cast<std::int32_t>(octets) > stream->fr_size) {
        auto *const error = static_cast<PerError *>(stream->err_hndl);
        if (error && error->aux == in_element)
            error->code = PER_HARD_ERROR;
        return false;
    }
    per_pass(stream, width);
    *part = {stream->frame, stream->bits, octets, stream->fr_size - static_cast<std::int32_t>(octets)};
    // From the middle of an octet the part reaches into one more.
    stream->fr_size = static_cast<std::int32_t>(octets + ((stream->bits & 7) != 0 && octets != 0));
    return true;
}

void end_length(pack_info_struct *stream, const msg_length *length, std::uint32_t width, const char *overflow)
{
    per_put_any(stream, (length->bits - stream->bits) & 7, 0);
    const auto octets = static_cast<std::uint32_t>(stream->frame - length->frame) - width / 8;
    if (octets > bit_mask(width)) {
        std::fputs(overflow, stderr);
        std::exit(1);
    }
    per_poke_bits(length->frame, length->bits & 7, width, octets);
}

/// `begin`: the first bit behind the length.
void trim(pack_info_struct *stream, std::uint8_t *frame, std::uint32_t begin, std::uint32_t octets)
{
    if (octets == 0)
        return;
    const std::uint32_t end = begin + octets * 8;
    while (stream->bits < end)
        per_put_any(stream, end - stream->bits < 8 ? end - stream->bits : 8, 0);
    stream->frame = frame + octets;
    stream->bits  = end;
}

} // namespace

void msg_begin_element(unpack_info_struct *stream, msg_element *element)
{
    *element           = {*stream, {}};
    element->error.aux = in_element;
    stream->err_hndl   = &element->error;
}

bool msg_end_element(unpack_info_struct *stream, const msg_element *element)
{
    auto *const outer = static_cast<PerError *>(element->begin.err_hndl);
    const bool  fits  = element->error.code == PER_NO_ERROR && stream->fr_size >= 0 &&
                      stream->bits != element->begin.bits;
    if (outer && element->error.must_understand != 0)
        outer->must_understand = 1;
    stream->err_hndl = outer;
    if (!fits)
        *stream = element->begin;
    return fits;
}

bool msg_open_8(unpack_info_struct *stream, msg_part *part)
{
    return open_part(stream, part, 8);
}

bool msg_open_16(unpack_info_struct *stream, msg_part *part)
{
    return open_part(stream, part, 16);
}

void msg_close(unpack_info_struct *stream, const msg_part *part)
{
    stream->frame   = part->frame + part->octets;
    stream->bits    = part->bits + part->octets * 8;
    stream->fr_size = part->behind;
}

void msg_trim_8(pack_info_struct *stream, const msg_length *length, std::uint32_t octets)
{
    trim(stream, length->frame + 1, length->bits + 8, octets);
}

void msg_trim_16(pack_info_struct *stream, const msg_length *length, std::uint32_t octets)
{
    trim(stream, length->frame + 2, length->bits + 16, octets);
}

void msg_end_8(pack_info_struct *stream, const msg_length *length, const char *overflow)
{
    end_length(stream, length, 8, overflow);
}

void msg_end_16(pack_info_struct *stream, const msg_length *length, const char *overflow)
{
    end_length(stream, length, 16, overflow);
}

unpack_info_struct msg_open_window(unpack_info_struct *stream, msg_window *window, std::uint32_t bits)
{
    const std::uint32_t octets = msg_left(stream);
    const std::uint32_t left   = octets == 0 ? 0 : octets * 8 - (stream->bits & 7);
    const std::uint32_t there  = msg_at_most(bits, left);
    const std::uint32_t taken  = msg_at_most(there, msg_window::room * 8);
    *window                    = {};
    for (std::uint32_t at = 0; at < taken; at += 32) {
        const std::uint32_t n = msg_at_most(taken - at, 32);
        per_poke_bits(window->octets + at / 8, 0, n, per_get_any(stream, n));
    }
    per_skip_bits(stream, there - taken);
    return {window->octets, 0, sizeof window->octets, stream->err_hndl};
}

pack_info_struct msg_begin_window(msg_window *window)
{
    *window = {};
    return {window->octets, 0};
}

void msg_put_window(pack_info_struct *stream, const msg_window *window, std::uint32_t bits)
{
    const std::uint32_t written = msg_at_most(bits, msg_window::room * 8);
    for (std::uint32_t at = 0; at < written; at += 32) {
        const std::uint32_t n = msg_at_most(written - at, 32);
        per_put_any(stream, n, per_peek_bits(window->octets + at / 8, 0, n));
    }
}

void msg_put_align(pack_info_struct *stream)
{
    per_put_any(stream, -stream->bits & 7, 0);
}

// ---------------------------------------------------------------------------------------------------------------
// Digits
// ---------------------------------------------------------------------------------------------------------------

namespace {

enum : std::uint32_t { filler = 15 };

void keep_digit(std::uint8_t *digits, std::uint32_t at, std::uint32_t room, std::uint32_t digit)
{
    if (at < room)
        digits[at] = static_cast<std::uint8_t>(digit);
}

} // namespace

std::uint32_t msg_get_digits(unpack_info_struct *stream, std::uint8_t *digits, std::uint32_t first,
                             std::uint32_t room)
{
    std::uint32_t count = first;
    std::uint32_t last  = 0;
    while (msg_has_bits(stream, 8)) {
        const std::uint32_t octet = per_get_8(stream, 8);
        last                      = octet >> 4;
        keep_digit(digits, count++, room, octet & 15);
        keep_digit(digits, count++, room, last);
    }
    return msg_at_most(last == filler ? count - 1 : count, room);
}

std::uint32_t msg_get_counted_digits(unpack_info_struct *stream, std::uint8_t *digits, std::uint32_t first,
                                     std::uint32_t count, std::uint32_t room)
{
    std::uint32_t at = first;
    while (at < count && msg_has_bits(stream, 8)) {
        const std::uint32_t octet = per_get_8(stream, 8);
        keep_digit(digits, at++, room, octet & 15);
        if (at < count)
            keep_digit(digits, at++, room, octet >> 4);
    }
    return msg_at_most(at, room);
}

void msg_put_digits(pack_info_struct *stream, const std::uint8_t *digits, std::uint32_t first, std::uint32_t count)
{
    for (std::uint32_t at = first; at < count; at += 2) {
        const std::uint32_t second = at + 1 < count ? digits[at + 1] : std::uint32_t{filler};
        per_put_8(stream, 8, second << 4 | msg_bits(digits[at], 4));
    }
}

// ---------------------------------------------------------------------------------------------------------------
// Optional elements
// ---------------------------------------------------------------------------------------------------------------

namespace {

void skip(msg_options *options, unpack_info_struct *stream, std::uint32_t octets)
{
    per_pass(stream, octets * 8);
    options->skipped += octets * 8;
}

void skip_length(msg_options *options, unpack_info_struct *stream, std::uint32_t width)
{
    const std::uint32_t octets = per_peek_bits(stream->frame, stream->bits & 7, width);
    if (static_cast<std::int32_t>(octets) <= stream->fr_size)
        skip(options, stream, width / 8 + octets);
}

} // namespace

void msg_skip_fixed(msg_options *options, unpack_info_struct *stream, std::uint32_t octets)
{
    options->skipped += 8;
    skip(options, stream, octets);
}

void msg_skip_bare(msg_options *options, unpack_info_struct *stream)
{
    msg_skip_fixed(options, stream, 1);
}

void msg_skip_8(msg_options *options, unpack_info_struct *stream)
{
    options->skipped += 8;
    skip_length(options, stream, 8);
}

void msg_skip_16(msg_options *options, unpack_info_struct *stream)
{
    options->skipped += 8;
    skip_length(options, stream, 16);
}

void msg_skip_unknown(msg_options *options, unpack_info_struct *stream)
{
    const std::uint32_t identifier = *stream->frame;
    skip(options, stream, 1);
    if (identifier >= 0x80)
        return;
    if (identifier >> 4 == 0) {
        if (auto *const error = static_cast<PerError *>(stream->err_hndl))
            error->must_understand = 1;
    }
    skip_length(options, stream, 8);
}

/// `fr_size` goes down together with the cursor: what was skipped is taken off it twice.  The host relies on it.
void msg_end_options(unpack_info_struct *stream, const msg_options *options)
{
    if (options->skipped == 0)
        return;
    const auto octets = static_cast<std::int32_t>(options->skipped - (stream->bits & 7)) >> 3;
    stream->frame -= octets;
    stream->fr_size -= octets;
    stream->bits -= options->skipped;
}
