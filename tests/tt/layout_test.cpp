// The layout step on tables of the test's own: where bit-fields are found, and the basic-type block.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

#include "tt_dll.h"

namespace {

using touples = std::vector<std::pair<int, int>>; ///< bit_num, position

/// A bit-field as a plain range of bits of a little-endian buffer, so that its place is known beforehand.
struct field {
    const char   *name;
    std::uint32_t first_bit; ///< of the field's lowest bit; bit b is bit b % 8 of octet b / 8
    std::uint8_t  width;
    std::uint16_t offset; ///< expected, with the parts
    touples       parts;
};

const std::vector<field> fields = {
    {"one bit at the bottom",           0,             1,  0,     {{1, 7}}},
    {"one bit at the top",              7,             1,  0,     {{1, 0}}},
    {"high nibble of octet 3",          28,            4,  3,     {{4, 0}}},
    {"low nibble of octet 3",           24,            4,  3,     {{4, 4}}},
    {"an octet",                        16,            8,  2,     {{8, 0}}},
    {"high nibble and the next octet",  4,             12, 0,     {{12, 8}, {4, 0}}},
    {"ten bits of a 16-bit unit",       0,             10, 0,     {{10, 14}, {8, 0}}},
    {"32 bits over five octets",        4,             32, 0,     {{32, 36}, {28, 24}, {20, 16}, {12, 8}, {4, 0}}},
    {"29 bits of a unit",               32,            29, 4,     {{29, 27}, {24, 16}, {16, 8}, {8, 0}}},
    {"deep in a large structure",       59000 * 8 + 6, 9,  59000, {{9, 9}, {2, 0}}},
    {"the last bit of the buffer",      60000 * 8 - 1, 1,  59999, {{1, 0}}},
};

void set_field(std::uint8_t *buffer, std::uint32_t index, unsigned value)
{
    const field &f = fields.at(index);
    for (unsigned n = 0; n < f.width; ++n) {
        const std::uint32_t bit = f.first_bit + n;
        const unsigned      mask = 1u << bit % 8;
        buffer[bit / 8] = static_cast<std::uint8_t>((buffer[bit / 8] & ~mask) | (value >> n & 1 ? mask : 0));
    }
}

struct domain_under_test {
    std::vector<std::uint8_t>       widths;
    std::vector<mta_bit_map_struct> bit_map;
    rw_bt_info                      bt_info{};
    std::array<rw_offsize_type, 3>  offsize{4, 8, 0};
    rw_offsize_sup_struct           sup{};
    rw_debug_info_struct            tool{};

    explicit domain_under_test(set_bit_func_ptr_type set_bit)
    {
        for (const field &f : fields)
            widths.push_back(f.width);
        bit_map.resize(fields.size());
        sup = {"build", 3, offsize.data(), static_cast<std::uint32_t>(fields.size()), widths.data(), set_bit};
        tool.no_offsize = 3;
        tool.no_bit_map = 1;
        tool.bit_map = bit_map.data();
        tool.bt_info = &bt_info;
    }

    touples parts(std::size_t n) const
    {
        touples found;
        for (int part = 0; part < bit_map[n].no_touple; ++part)
            found.emplace_back(bit_map[n].touple[part].bit_num, bit_map[n].touple[part].position);
        return found;
    }
};

TEST(layout, finds_each_part_of_each_field)
{
    domain_under_test domain(set_field);
    tt_layout_domain(&domain.tool, &domain.sup);

    ASSERT_EQ(domain.tool.no_bit_map, fields.size());
    EXPECT_EQ(domain.tool.offsize, domain.offsize.data());
    for (std::size_t n = 0; n < fields.size(); ++n) {
        SCOPED_TRACE(fields[n].name);
        EXPECT_EQ(domain.bit_map[n].no_bits, fields[n].width);
        EXPECT_EQ(domain.bit_map[n].offset, fields[n].offset);
        EXPECT_EQ(domain.parts(n), fields[n].parts);
    }
}

/// The walk must not care that the field's high octet comes first in memory.
TEST(layout, finds_the_parts_of_a_field_stored_backwards)
{
    domain_under_test domain([](std::uint8_t *buffer, std::uint32_t, unsigned value) {
        buffer[20] = static_cast<std::uint8_t>((buffer[20] & 0xF0) | (value >> 8 & 0x0F));
        buffer[21] = static_cast<std::uint8_t>(value);
    });
    domain.widths = {12};
    domain.sup.bit_sizes = domain.widths.data();
    domain.sup.no_bit_sizes = 1;
    tt_layout_domain(&domain.tool, &domain.sup);

    EXPECT_EQ(domain.bit_map[0].offset, 20);
    EXPECT_EQ(domain.parts(0), (touples{{12, 4}, {8, 8}}));
}

TEST(layout, describes_the_basic_types_without_any_bit_field)
{
    domain_under_test domain(nullptr);
    domain.sup.no_bit_sizes = 0;
    tt_layout_domain(&domain.tool, &domain.sup);

    EXPECT_EQ(domain.tool.no_bit_map, 0u) << "the 1 of the load image is replaced";
    const std::array<std::uint8_t, RW_BT_INDEX_SIZE> index = {0, 0, 8, 8, 5, 5, 13, 13, 13, 0, 0, 0, 0, 14, 0};
    EXPECT_EQ(std::memcmp(domain.bt_info.index, index.data(), index.size()), 0);

    std::array<std::uint8_t, 15> pattern = {4, 4, 3, 2, 1, 2, 2, 1, 4, 4, 3, 2, 1, 1, sizeof(void *)};
    if (std::endian::native == std::endian::big)
        pattern = {4, 1, 2, 3, 4, 2, 1, 2, 4, 1, 2, 3, 4, 1, sizeof(void *)};
    EXPECT_EQ(std::memcmp(domain.bt_info.pattern, pattern.data(), pattern.size()), 0);
}

TEST(layout, leaves_a_domain_without_offsize_alone)
{
    domain_under_test domain(set_field);
    domain.tool.no_offsize = 0;
    tt_layout_domain(&domain.tool, &domain.sup);
    EXPECT_EQ(domain.tool.no_bit_map, 1u);
    EXPECT_EQ(domain.tool.offsize, nullptr);
}

TEST(layout_death, stops_at_a_setter_that_sets_nothing)
{
    domain_under_test domain([](std::uint8_t *, std::uint32_t, unsigned) {});
    EXPECT_DEATH(tt_layout_domain(&domain.tool, &domain.sup), "Assertion failed: .*, file tt_dll, line");
}

} // namespace
