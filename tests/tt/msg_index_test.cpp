// The dense message index on a table with every kind of run: with holes, without, and the closing run of code 0.
#include <gtest/gtest.h>

#include <initializer_list>

#include "tt_dll.h"

namespace {

constexpr tt_msg_index_row rows[] = {
    {0, 0}, {1, 0x100}, {2, 0x101}, {3, 0x104}, {4, 0x109}, {5, 0x10A}, {6, 0x20}, {7, 0x21}, {8, 0},
};
constexpr tt_msg_index_range ranges[] = {
    {{1, 0x100}, {5, 0x10A}},
    {{6, 0x20}, {7, 0x21}},
    {{0, 0}, {8, 0}},
};
constexpr tt_msg_index table = {3, ranges, 9, rows};

TEST(msg_index, leads_from_every_code_to_its_row_and_back)
{
    for (std::uint16_t n = 1; n <= 7; ++n) {
        const auto code = static_cast<std::uint16_t>(rows[n].msg_code);
        EXPECT_EQ(tt_msg_code_to_index(table, code), n);
        EXPECT_EQ(tt_msg_index_to_code(table, n, 7777), code);
    }
}

TEST(msg_index, misses)
{
    for (const std::uint16_t code : std::initializer_list<std::uint16_t>{0x102, 0x103, 0x108, 0x1F, 0x22, 0x10B, 0xFFFF, 0})
        EXPECT_EQ(tt_msg_code_to_index(table, code), 0u) << code;
    for (const std::uint16_t index : std::initializer_list<std::uint16_t>{0, 9, 10, 0xFFFF})
        EXPECT_EQ(tt_msg_index_to_code(table, index, 7777), 7777u) << index;
    EXPECT_EQ(tt_msg_index_to_code(table, 8, 7777), 0u) << "the closing sentinel is a row";
}

} // namespace
