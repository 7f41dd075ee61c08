// The cursor that walks both ways, and copies of bit ranges, against the bit-by-bit model.
#include "per_cursor.h"

#include <gtest/gtest.h>

#include "bit_model.h"

namespace {

octet_list counting_octets(std::uint32_t count)
{
    octet_list octets;
    for (std::uint32_t i = 0; i < count; ++i)
        octets.push_back(static_cast<std::uint8_t>(i * 89 + 23));
    return octets;
}

TEST(PerCursor, WalksAndReadsBothWays)
{
    octet_list frame = counting_octets(16);
    for (std::uint32_t bit = 0; bit < 40; ++bit)
        for (std::uint32_t n = 0; n <= 32; ++n) {
            SCOPED_TRACE(std::to_string(n) + " bits at " + std::to_string(bit));
            PerCursor c;
            per_cursor_init(&c, frame.data(), bit);
            EXPECT_EQ(c.start, frame.data() + bit / 8);
            EXPECT_EQ(per_cursor_position(&c), bit % 8);
            EXPECT_EQ(per_cursor_read(&c, n), model_read(frame.data(), bit, n));
            EXPECT_EQ(per_cursor_position(&c), bit % 8 + n);
            EXPECT_LT(c.offset, 8u);
            EXPECT_EQ(per_cursor_read_back(&c, n), model_read(frame.data(), bit, n));
            EXPECT_EQ(c.cursor, frame.data() + bit / 8);
            EXPECT_EQ(c.offset, bit % 8);
            per_cursor_forward(&c, 3 * n);
            per_cursor_back(&c, 2 * n);
            EXPECT_EQ(per_cursor_position(&c), bit % 8 + n);
        }
}

TEST(PerCursor, WritesBothWays)
{
    for (std::uint32_t bit = 0; bit < 16; ++bit)
        for (std::uint32_t n = 1; n <= 32; ++n) {
            octet_list forth = counting_octets(8), back = forth, should = forth;
            model_write(should.data(), bit, n, 0xC53A9671);
            PerCursor c;
            per_cursor_init(&c, forth.data(), bit);
            per_cursor_write(&c, n, 0xC53A9671);
            EXPECT_EQ(forth, should);
            EXPECT_EQ(per_cursor_position(&c), bit % 8 + n);

            per_cursor_init(&c, back.data(), bit + n);
            per_cursor_write_back(&c, n, 0xC53A9671);
            EXPECT_EQ(back, should);
            EXPECT_EQ(c.cursor, back.data() + bit / 8);
            EXPECT_EQ(c.offset, bit % 8);
        }
}

TEST(PerCursor, CopiesBitRanges)
{
    const octet_list source = counting_octets(9);
    for (std::uint32_t from = 0; from < 18; ++from)
        for (std::uint32_t to = 0; to < 18; ++to)
            for (std::uint32_t n : {0u, 1u, 4u, 7u, 8u, 9u, 20u, 47u}) {
                SCOPED_TRACE(std::to_string(n) + " bits from " + std::to_string(from) + " to " + std::to_string(to));
                const octet_list held(9, 0xA6);
                octet_list       should = held, is = held;
                for (std::uint32_t i = 0; i < n; ++i)
                    model_set_bit(should.data(), to + i, model_bit(source.data(), from + i));
                per_copy_bits(source.data(), from, n, is.data(), to);
                EXPECT_EQ(is, should);
                if (to == 0) {
                    is = held;
                    per_copy_bits_to_start(source.data(), from, n, is.data());
                    EXPECT_EQ(is, should);
                }
                if (from == 0) {
                    is = held;
                    per_copy_octets_to_bits(source.data(), n, is.data(), to);
                    EXPECT_EQ(is, should);
                }
            }
}

} // namespace
