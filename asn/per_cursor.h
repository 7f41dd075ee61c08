// A cursor that can also walk back, and copies of bit ranges.  No codec here needs them; they complete the bit
// stream for code that edits an encoding in place.
//
// A PerCursor stands on bit `offset` of the octet at `cursor`; nothing is checked, and bits are counted as in
// per_stream.h.  Widths are 0 to 32 bits.
#pragma once

#include <cstdint>

struct PerCursor {
    std::uint8_t *cursor;
    std::uint8_t *start;  ///< octet from which positions count
    std::uint32_t offset; ///< 0 to 7, 0 the most significant bit
};

/// Stands on bit `bit_position` from `base` on; positions count from the start of that bit's octet.
void per_cursor_init(PerCursor *c, std::uint8_t *base, std::uint32_t bit_position);

/// Bits from the start of the octet at `start` to the cursor.
std::uint32_t per_cursor_position(const PerCursor *c);

void per_cursor_back(PerCursor *c, std::uint32_t n);
void per_cursor_forward(PerCursor *c, std::uint32_t n);

/// Read or write `n` bits and move behind them.
std::uint32_t per_cursor_read(PerCursor *c, std::uint32_t n);
void          per_cursor_write(PerCursor *c, std::uint32_t n, std::uint32_t value);

/// Read or write the `n` bits before the cursor, and stay at their start.
std::uint32_t per_cursor_read_back(PerCursor *c, std::uint32_t n);
void          per_cursor_write_back(PerCursor *c, std::uint32_t n, std::uint32_t value);

/// Copies `n` bits octet by octet from the front on, in steps that begin where the source begins an octet; bits of
/// the destination outside the range stay.  The bit positions are not limited to the first octet.
void per_copy_bits(const std::uint8_t *source, std::uint32_t source_bit, std::uint32_t n, std::uint8_t *destination,
                   std::uint32_t destination_bit);

/// per_copy_bits to the first bit of `destination`.
void per_copy_bits_to_start(const std::uint8_t *source, std::uint32_t source_bit, std::uint32_t n,
                            std::uint8_t *destination);

/// per_copy_bits from the first bit of `source`.
void per_copy_octets_to_bits(const std::uint8_t *source, std::uint32_t n, std::uint8_t *destination,
                             std::uint32_t destination_bit);
