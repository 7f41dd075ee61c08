// What the compiler did with the definitions against what the ABI asks for: sizes, offsets, array sizes, and the
// place of every bit-field, which the layout step measures.  Both sides start at the definitions and share nothing
// behind them.
#include <algorithm>
#include <map>

#include "abi_layout.h"
#include "base/input.h"
#include "dictionary.h"
#include "model/rows.h"
#include "stages.h"
#include "tt_dll.h"

using namespace dictionary;
using solvane::gen::abi_layout;
using solvane::gen::abi_record;

namespace {

namespace gen = solvane::gen;

// The records before any test has run the layout step.
const auto tool_image = std::to_array(tt_tool_records);
const auto target_image = std::to_array(tt_target_records);

gen::model read_model()
{
    std::string      unreadable;
    gen::diagnostics diag;
    const auto       inputs = gen::read_folder(SOLVANE_DB, unreadable);
    EXPECT_TRUE(inputs) << unreadable;
    gen::model m = gen::lower_all(diag, gen::parse_all(diag, *inputs, {}, ""));
    gen::lay_rows(m, diag);
    EXPECT_FALSE(diag.failed()) << diag.render();
    return m;
}

/// The definitions, and the layout that the ABI gives them.
struct definitions {
    gen::model                           model = read_model();
    abi_layout                           layout{model};
    std::map<std::string, std::uint32_t> records;
    std::map<std::string, std::uint32_t> aliases;

    definitions()
    {
        for (std::uint32_t n = 0; n < model.records.size(); ++n)
            records[model.records[n].name] = n;
        for (std::uint32_t n = 0; n < model.aliases.size(); ++n)
            aliases[model.aliases[n].name] = n;
    }
};

class layout : public each_domain {
protected:
    static void SetUpTestSuite()
    {
#if !defined __x86_64__ && !defined __i386__
        GTEST_SKIP() << "the System V ABI of another processor";
#endif
        defined_ = new definitions;
        for (std::uint32_t d = 0; d < TT_NO_DOMAINS; ++d)
            tt_layout_domain(&tt_tool_records[d], tt_offsize_sups[d]);
    }
    static void TearDownTestSuite() { delete defined_; }

    std::uint32_t offsize(std::uint32_t index) const { return tool().offsize[index]; }

    /// Calls `check(row, record id, ABI layout)` for every structure that the definitions have.
    template <typename function> void each_struct(function check)
    {
        for (const rw_struct_row &s : structs(tool()))
            if (const auto found = defined_->records.find(s.name); found != defined_->records.end())
                check(s, found->second, defined_->layout.of_record(found->second));
    }

    /// Calls `check(row, member, place)` for every member.
    template <typename function> void each_member(function check)
    {
        each_struct([&](const rw_struct_row &s, std::uint32_t record, const abi_record &placed) {
            const std::vector<gen::member> &fields = defined_->model.records[record].members;
            for (const rw_member_row &m : members(s)) {
                const auto field = std::ranges::find(fields, m.name, &gen::member::name);
                ASSERT_NE(field, fields.end()) << s.name << "." << m.name;
                check(s, m, *field, placed.members[static_cast<std::size_t>(field - fields.begin())].bit);
            }
        });
    }

    /// Array sizes of a row by the ABI.
    void check_dims(std::span<const rw_dim_row> rows, const gen::type_use &use,
                    const std::vector<gen::dimension> &dims, const std::string &where)
    {
        ASSERT_EQ(rows.size(), dims.size()) << where;
        for (std::size_t level = 0; level < dims.size(); ++level)
            if (!dims[level].pointer) {
                EXPECT_EQ(offsize(rows[level].array_size_index), defined_->layout.of_level(use, dims, level).size)
                    << where << " level " << level;
            }
    }

    static inline definitions *defined_;
};
FOR_EACH_DOMAIN(layout);

TEST_P(layout, enumerations_take_four_octets)
{
    for (const rw_enum_row &e : enums(tool()))
        EXPECT_EQ(offsize(e.ordinal), 4U) << e.name;
}

TEST_P(layout, sizes_are_those_of_the_abi)
{
    each_struct([&](const rw_struct_row &s, std::uint32_t, const abi_record &placed) {
        EXPECT_EQ(offsize(s.size_index), placed.size) << s.name;
    });
}

TEST_P(layout, offsets_are_those_of_the_abi)
{
    each_member([&](const rw_struct_row &s, const rw_member_row &m, const gen::member &, std::uint32_t bit) {
        if (m.kind != RW_KIND_BIT_FIELD && s.kind == RW_KIND_STRUCT) {
            EXPECT_EQ(offsize(m.offsize_index), bit / 8) << s.name << "." << m.name;
        }
    });
}

TEST_P(layout, array_sizes_are_those_of_the_abi)
{
    each_member([&](const rw_struct_row &s, const rw_member_row &m, const gen::member &field, std::uint32_t) {
        check_dims(dims(m), field.type, field.dims, std::string(s.name) + "." + m.name);
    });
    for (const rw_type_row &t : types(tool()))
        if (const auto found = defined_->aliases.find(t.name); found != defined_->aliases.end()) {
            const gen::alias &a = defined_->model.aliases[found->second];
            check_dims(dims(t), a.base, a.dims, t.name);
        }
}

// --------------------------------------------------------------------------------------------------- bit-fields

/// The row for a field of `width` bits whose lowest bit is bit `bit` of a little-endian record.
mta_bit_map_struct row_for(std::uint32_t bit, std::uint32_t width)
{
    mta_bit_map_struct  row{};
    const std::uint32_t lowest = bit / 8;
    row.offset = static_cast<std::uint16_t>(lowest);
    row.no_bits = static_cast<std::uint16_t>(width);
    for (std::uint32_t left = width; left != 0;) {
        const std::uint32_t top = bit + left - 1; // the highest bit that has no part yet
        const std::uint32_t octet = top / 8;
        row.touple[row.no_touple].bit_num = static_cast<std::uint8_t>(left);
        row.touple[row.no_touple].position = static_cast<std::uint8_t>((octet - lowest) * 8 + 7 - top % 8);
        ++row.no_touple;
        left = std::max(octet * 8, bit) - bit;
    }
    return row;
}

std::string text_of(const mta_bit_map_struct &row)
{
    std::string out = std::to_string(row.no_bits) + " bits at octet " + std::to_string(row.offset) + ":";
    for (unsigned n = 0; n < row.no_touple && n < MTA_MAX_TOUPLE; ++n)
        out += " (" + std::to_string(row.touple[n].bit_num) + ", " + std::to_string(row.touple[n].position) + ")";
    return out;
}

TEST_P(layout, bit_fields_are_where_the_abi_puts_them)
{
    std::uint32_t fields = 0;
    each_member([&](const rw_struct_row &s, const rw_member_row &m, const gen::member &field, std::uint32_t bit) {
        if (m.kind != RW_KIND_BIT_FIELD)
            return;
        ++fields;
        const mta_bit_map_struct &row = tool().bit_map[m.offsize_index];
        EXPECT_EQ(text_of(row), text_of(row_for(bit, field.bit_width))) << s.name << "." << m.name;
        EXPECT_EQ(sup().bit_sizes[m.offsize_index], field.bit_width) << s.name << "." << m.name;
    });
    EXPECT_LE(fields, sup().no_bit_sizes); // made-up fields of a scaled build are not in the definitions
    const bool has_types = tool().no_offsize != 0; // else the layout step passes the domain over
    EXPECT_EQ(tool().no_bit_map, has_types ? sup().no_bit_sizes : 1);
}

/// Writes patterns into a field of a record full of ones and of zeros, and looks at every bit of the record.
TEST_P(layout, setters_touch_their_field_alone)
{
    each_struct([&](const rw_struct_row &s, std::uint32_t record, const abi_record &placed) {
        alignas(std::max_align_t) static std::array<std::uint8_t, 60000> block;
        ASSERT_LE(placed.size, block.size()) << s.name;
        const std::vector<gen::member> &fields = defined_->model.records[record].members;
        for (const rw_member_row &m : members(s)) {
            if (m.kind != RW_KIND_BIT_FIELD)
                continue;
            const auto          n = std::ranges::find(fields, m.name, &gen::member::name) - fields.begin();
            const std::uint32_t first = placed.members[static_cast<std::size_t>(n)].bit;
            const std::uint32_t width = fields[static_cast<std::size_t>(n)].bit_width;
            for (const std::uint32_t value : {0x00000000U, 0xFFFFFFFFU, 0xA5A5A5A5U, 0x5A5A5A5AU})
                for (const std::uint8_t around : {std::uint8_t{0x00}, std::uint8_t{0xFF}}) {
                    const auto whole = block.begin() + placed.size;
                    std::fill(block.begin(), whole, around);
                    sup().set_bit_func(block.data(), m.offsize_index, value);
                    for (std::uint32_t bit = 0; bit < width; ++bit) { // takes the field out again
                        std::uint8_t      &octet = block[(first + bit) / 8];
                        const unsigned     mask = 1U << (first + bit) % 8;
                        EXPECT_EQ((octet & mask) != 0, (value >> bit & 1) != 0) << s.name << "." << m.name;
                        octet = static_cast<std::uint8_t>((octet & ~mask) | (around & mask));
                    }
                    EXPECT_TRUE(std::all_of(block.begin(), whole, [&](std::uint8_t o) { return o == around; }))
                        << s.name << "." << m.name << " = " << value << " changed a neighbour";
                }
        }
    });
}

TEST_P(layout, an_index_that_the_domain_does_not_have_sets_nothing)
{
    std::array<std::uint8_t, 64> block{};
    sup().set_bit_func(block.data(), sup().no_bit_sizes, 0xFFFFFFFF);
    sup().set_bit_func(block.data(), 0xFFFFFFFF, 0xFFFFFFFF);
    EXPECT_EQ(block, (std::array<std::uint8_t, 64>{}));
}

// ------------------------------------------------------------------------------------------------- load image

using load_image = each_domain;
FOR_EACH_DOMAIN(load_image);

TEST_P(load_image, both_sides_share_the_type_tables)
{
    const rw_debug_info_struct &tool_side = tool_image[GetParam()];
    const rw_debug_info_struct &target_side = target_image[GetParam()];
    EXPECT_EQ(tool_side.structs, target_side.structs);
    EXPECT_EQ(tool_side.types, target_side.types);
    EXPECT_EQ(tool_side.enums, target_side.enums);
    EXPECT_EQ(tool_side.rt_rules, target_side.rt_rules);
    EXPECT_EQ(tool_side.rt_types, target_side.rt_types);
    EXPECT_EQ(tool_side.no_offsize, target_side.no_offsize);
    EXPECT_EQ(tool_side.reserved, 0U);
    EXPECT_EQ(target_side.reserved, 0U);
}

TEST_P(load_image, the_layouts_are_storage_of_their_own)
{
    const rw_debug_info_struct &tool_side = tool_image[GetParam()];
    const rw_debug_info_struct &target_side = target_image[GetParam()];
    const std::uint32_t         no_fields = sup().no_bit_sizes;
    EXPECT_EQ(tool_side.offsize, nullptr);
    EXPECT_NE(tool_side.bt_info, target_side.bt_info);
    EXPECT_NE(tool_side.bit_map, target_side.bit_map);
    EXPECT_EQ(tool_side.no_bit_map, no_fields == 0 ? 1U : no_fields);
    EXPECT_EQ(target_side.no_bit_map, no_fields);

    const auto is_zero = [](const void *block, std::size_t size) {
        const auto *const octets = static_cast<const std::uint8_t *>(block);
        return std::all_of(octets, octets + size, [](std::uint8_t o) { return o == 0; });
    };
    EXPECT_TRUE(is_zero(target_side.bt_info, sizeof *target_side.bt_info));
    EXPECT_TRUE(is_zero(target_side.offsize, target_side.no_offsize * sizeof *target_side.offsize));
    EXPECT_TRUE(is_zero(target_side.bit_map, no_fields * sizeof *target_side.bit_map));
}

TEST(records, have_a_baseline_text_each_that_can_be_written)
{
    std::vector<char *> texts;
    for (std::uint32_t d = 0; d < TT_NO_DOMAINS; ++d) {
        texts.push_back(tool_image[d].uuid);
        texts.push_back(target_image[d].uuid);
        EXPECT_STREQ(tt_offsize_sups[d]->uuid, tt_baseline_text);
    }
    std::ranges::sort(texts);
    EXPECT_EQ(std::ranges::adjacent_find(texts), texts.end());
    for (char *text : texts) {
        EXPECT_STREQ(text, tt_baseline_text);
        std::memset(text, 'x', std::strlen(text));
        std::strcpy(text, tt_baseline_text);
    }
}

} // namespace
