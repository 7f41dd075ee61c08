// The cursor that walks both ways, and copies of bit ranges.
#include "per_cursor.h"

#include "per_stream.h"

void per_cursor_init(PerCursor *c, std::uint8_t *base, std::uint32_t bit_position)
{
    c->cursor = c->start = base + (bit_position >> 3);
    c->offset            = bit_position & 7;
}

std::uint32_t per_cursor_position(const PerCursor *c)
{
    return c->offset + static_cast<std::uint32_t>(c->cursor - c->start) * 8;
}

void per_cursor_back(PerCursor *c, std::uint32_t n)
{
    c->cursor -= (7 - c->offset + n) >> 3;
    c->offset = (c->offset - (n & 7)) & 7;
}

void per_cursor_forward(PerCursor *c, std::uint32_t n)
{
    c->cursor += (c->offset + n) >> 3;
    c->offset = (c->offset + n) & 7;
}

std::uint32_t per_cursor_read(PerCursor *c, std::uint32_t n)
{
    const std::uint32_t value = per_peek_bits(c->cursor, c->offset, n);
    per_cursor_forward(c, n);
    return value;
}

void per_cursor_write(PerCursor *c, std::uint32_t n, std::uint32_t value)
{
    per_poke_bits(c->cursor, c->offset, n, value);
    per_cursor_forward(c, n);
}

std::uint32_t per_cursor_read_back(PerCursor *c, std::uint32_t n)
{
    per_cursor_back(c, n);
    return per_peek_bits(c->cursor, c->offset, n);
}

void per_cursor_write_back(PerCursor *c, std::uint32_t n, std::uint32_t value)
{
    per_cursor_back(c, n);
    per_poke_bits(c->cursor, c->offset, n, value);
}

void per_copy_bits(const std::uint8_t *source, std::uint32_t source_bit, std::uint32_t n, std::uint8_t *destination,
                   std::uint32_t destination_bit)
{
    PerCursor to;
    per_cursor_init(&to, destination, destination_bit);
    source += source_bit >> 3;

    const std::uint32_t offset = source_bit & 7;
    if (offset != 0) { // up to the source's next octet
        const std::uint32_t head = n < 8 - offset ? n : 8 - offset;
        if (head == 0)
            return;
        per_cursor_write(&to, head, per_peek_8(source++, offset, head));
        n -= head;
    }
    for (; n >= 8; n -= 8)
        per_cursor_write(&to, 8, *source++);
    if (n > 0)
        per_cursor_write(&to, n, per_peek_8(source, 0, n));
}

void per_copy_bits_to_start(const std::uint8_t *source, std::uint32_t source_bit, std::uint32_t n,
                            std::uint8_t *destination)
{
    per_copy_bits(source, source_bit, n, destination, 0);
}

void per_copy_octets_to_bits(const std::uint8_t *source, std::uint32_t n, std::uint8_t *destination,
                             std::uint32_t destination_bit)
{
    per_copy_bits(source, 0, n, destination, destination_bit);
}
