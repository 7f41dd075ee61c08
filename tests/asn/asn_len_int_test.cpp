// Lengths and whole numbers: the octets that X.691 gives, the places where ours differ, and all short frames.
#include "asn_len_int.h"

#include <gtest/gtest.h>

#include "bit_model.h"
#include "report_catcher.h"

namespace {

// What `pack` writes at bit offset 0.
template <typename Pack> octet_list packed_by(Pack pack)
{
    octet_list       frame(16);
    pack_info_struct stream = {frame.data(), 0};
    pack(&stream);
    EXPECT_EQ(stream.bits % 8, 0u);
    frame.resize(stream.bits / 8);
    return frame;
}

// What `unpack` reads of `octets` at each bit offset, the rest of the octets around being ones.
template <typename Result> struct unpacked {
    Result        value;
    PerError      error;
    std::uint32_t bits;
};

template <typename Result, typename Unpack>
unpacked<Result> unpacked_by(Unpack unpack, const octet_list &octets, std::uint32_t offset, Result start)
{
    octet_list       frame(octets.size() + (offset != 0), 0xFF);
    pack_info_struct to = {frame.data(), offset};
    per_put_octets(&to, octets.data(), static_cast<std::uint32_t>(octets.size()));
    // A frame that ends inside its last octet: the ones behind must not be taken for more of the value.
    const tight_octets tight(frame);
    unpacked<Result>   is     = {start, {}, 0};
    unpack_info_struct stream = {tight.data.get(), offset, static_cast<std::int32_t>(frame.size()), &is.error};
    unpack(&is.value, &stream);
    is.bits = stream.bits - offset;
    return is;
}

TEST(AsnLenInt, Widths)
{
    const struct {
        std::int32_t  value;
        std::uint32_t width, signed_width;
    } rows[] = {{0, 0, 1},
                {1, 1, 2},
                {2, 2, 3},
                {127, 7, 8},
                {128, 8, 9},
                {255, 8, 9},
                {256, 9, 10},
                {0x7FFFFFFF, 31, 32},
                {-1, 32, 2},
                {-127, 32, 8},
                {-128, 32, 9},
                {-32768, 32, 17},
                {-0x7FFFFFFF, 32, 32},
                {INT32_MIN, 32, 32}};
    for (const auto &row : rows) {
        EXPECT_EQ(asn_bit_width(static_cast<std::uint32_t>(row.value)), row.width) << row.value;
        EXPECT_EQ(asn_signed_bit_width(row.value), row.signed_width) << row.value;
    }
}

const struct {
    const char   *name;
    AsnLen        length;
    octet_list    octets;
    AsnLen        read;
    std::uint32_t size; // bits of all determinants
} lengths[] = {
    {"nothing", 0, {0x00}, 0, 8},
    {"one octet", 5, {0x05}, 5, 8},
    {"last of one octet", 127, {0x7F}, 127, 8},
    {"first of two octets", 128, {0x80, 0x80}, 128, 16},
    {"two octets", 0x1234, {0x92, 0x34}, 0x1234, 16},
    {"last of two octets", 16383, {0xBF, 0xFF}, 16383, 16},
    {"one unit", 16384, {0xC1}, 16384, 16},
    {"one unit and 127", 16384 + 127, {0xC1}, 16384, 16},
    {"one unit and 128", 16384 + 128, {0xC1}, 16384, 24},
    {"last of one unit", 32767, {0xC1}, 16384, 24},
    {"two units", 32768, {0xC2}, 32768, 16},
    {"three units", 49152, {0xC3}, 49152, 16},
    {"last of three units", 65535, {0xC3}, 49152, 24},
    {"four units", 65536, {0xC4}, 65536, 16},
    {"four units and one", 65536 + 16384, {0xC4}, 65536, 24},
    {"X.691 11.9.3.8.1: four, four, one and two", 147456 + 2, {0xC4}, 65536, 32},
    {"more than a word of bits", 0x20000001, {0xC4}, 65536, 0x2000 * 8 + 8},
};

TEST(AsnLenInt, LengthDeterminant)
{
    for (const auto &row : lengths) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(packed_by([&](auto *stream) { AsnLenSemiConstrained_pack(stream, row.length, 0, "T"); }),
                  row.octets);
        EXPECT_EQ(AsnLenSemiConstrained_size(row.length, 0), row.size);
        EXPECT_EQ(AsnLenSemiConstrained_size(row.length + 1000, 1000), row.size);
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            const auto is = unpacked_by<AsnLen>(
                [](AsnLen *length, auto *stream) { AsnLenSemiConstrained_unpack(length, stream, 9, "T"); },
                row.octets, offset, 77);
            EXPECT_EQ(is.value, row.read);
            EXPECT_EQ(is.error.code, 0u);
            EXPECT_EQ(is.bits, row.octets.size() * 8);
        }
    }
    EXPECT_EQ(AsnLenSemiConstrained_size(3, 1000), 8u) << "below the bound: as at the bound";
}

TEST(AsnLenInt, LengthUnpackRefuses)
{
    const struct {
        const char   *name;
        octet_list    octets;
        AsnLen        value;
        std::uint32_t code, bits;
    } rows[] = {
        {"no units", {0xC0}, 0, 0, 8},
        {"five units", {0xC5}, 0, 2, 8},
        {"sixty-three units", {0xFF}, 0, 2, 8},
        {"empty frame", {}, 0, 2, 0},
        {"second octet missing", {0xBF}, 0, 2, 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const auto is = unpacked_by<AsnLen>(
            [](AsnLen *length, auto *stream) { AsnLenSemiConstrained_unpack(length, stream, 0, "T"); }, row.octets, 0,
            77);
        EXPECT_EQ(is.value, row.value);
        EXPECT_EQ(is.error.code, row.code);
        EXPECT_EQ(is.error.detail, row.code ? 1u : 0u);
        EXPECT_EQ(is.bits, row.bits);
    }
}

TEST(AsnLenInt, LengthBelowItsBoundIsReportedAndWritten)
{
    const report_catcher catcher;
    EXPECT_EQ(packed_by([](auto *stream) { AsnLenSemiConstrained_pack(stream, 5, 8, "Some-Type"); }), octet_list{5});
    const std::vector<report_catcher::report> should = {
        {"\nAsnLenSemiConstrained_pack : The data passed for packing ", 1},
        {"Some-Type", 1},
        {" does not lie within the bounds \n\n", 1}};
    EXPECT_EQ(catcher.reports, should);
}

TEST(AsnLenInt, SemiConstrainedNumber)
{
    const struct {
        const char *name;
        AsnInt      value, lower;
        octet_list  octets;
        bool        reported;
    } rows[] = {
        {"at the bound: no content octet", 7, 7, {0}, false},
        {"one above", 8, 7, {1, 1}, false},
        {"X.691 A.1.2: 4096 from 0", 4096, 0, {2, 0x10, 0x00}, false},
        {"127", 127, 0, {1, 0x7F}, false},
        {"255 needs no sign", 255, 0, {1, 0xFF}, false},
        {"256", 256, 0, {2, 0x01, 0x00}, false},
        {"257 from -1", 256, -1, {2, 0x01, 0x01}, false},
        {"whole word", INT32_MAX, INT32_MIN, {4, 0xFF, 0xFF, 0xFF, 0xFF}, false},
        {"below the bound goes out as a large offset", 6, 7, {4, 0xFF, 0xFF, 0xFF, 0xFF}, true},
        {"far below the bound", INT32_MIN, 1, {4, 0x7F, 0xFF, 0xFF, 0xFF}, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const report_catcher catcher;
        EXPECT_EQ(packed_by([&](auto *stream) { AsnIntSemiConstrained_pack(stream, row.value, row.lower, "T"); }),
                  row.octets);
        EXPECT_EQ(catcher.take_text(), row.reported ? "\nAsnIntSemiConstrained_pack : The data passed for packing T"
                                                      " does not lie within the bounds \n\n"
                                                    : "");
        EXPECT_EQ(AsnIntSemiConstrained_size(row.value, row.lower), row.octets.size() * 8);
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            const auto is = unpacked_by<AsnInt>(
                [&](AsnInt *value, auto *stream) { AsnIntSemiConstrained_unpack(value, stream, row.lower); },
                row.octets, offset, 0);
            EXPECT_EQ(is.value, row.value);
            EXPECT_EQ(is.error.code, 0u);
            EXPECT_EQ(is.bits, row.octets.size() * 8);
        }
    }
}

TEST(AsnLenInt, UnconstrainedNumber)
{
    const struct {
        const char *name;
        AsnInt      value;
        octet_list  octets;
    } rows[] = {
        {"0 takes an octet", 0, {1, 0}},
        {"X.691 A.1.2: -1", -1, {1, 0xFF}},
        {"127", 127, {1, 0x7F}},
        {"128", 128, {2, 0x00, 0x80}},
        {"-127", -127, {1, 0x81}},
        {"-128 is not minimal", -128, {2, 0xFF, 0x80}},
        {"32767", 32767, {2, 0x7F, 0xFF}},
        {"-32768 is not minimal", -32768, {3, 0xFF, 0x80, 0x00}},
        {"three octets", 0x123456, {3, 0x12, 0x34, 0x56}},
        {"largest", INT32_MAX, {4, 0x7F, 0xFF, 0xFF, 0xFF}},
        {"smallest", INT32_MIN, {4, 0x80, 0x00, 0x00, 0x00}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(packed_by([&](auto *stream) { AsnIntUnconstrained_pack(stream, row.value); }), row.octets);
        EXPECT_EQ(AsnIntUnconstrained_size(row.value), row.octets.size() * 8);
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            const auto is = unpacked_by<AsnInt>(AsnIntUnconstrained_unpack, row.octets, offset, 99);
            EXPECT_EQ(is.value, row.value);
            EXPECT_EQ(is.error.code, 0u);
            EXPECT_EQ(is.bits, row.octets.size() * 8);
        }
    }
}

// Both unpack functions on counts that no pack function writes, and on frames that end early.
TEST(AsnLenInt, NumbersOfOddCounts)
{
    const struct {
        const char   *name;
        octet_list    octets;
        AsnInt        semi; // started at 0, lower bound 100
        std::uint32_t semi_code;
        AsnInt        unconstrained;
        std::uint32_t unconstrained_code, bits, unconstrained_bits;
    } rows[] = {
        {"count 0", {0}, 100, 0, 0, 2, 8, 8},
        {"minimal -128", {1, 0x80}, 228, 0, -128, 0, 16, 16},
        {"leading zeros", {3, 0, 0, 5}, 105, 0, 5, 0, 32, 32},
        {"long form of the count", {0x80, 0x01, 0xFF}, 355, 0, -1, 0, 24, 24},
        {"five octets lose the first", {5, 9, 0, 0, 0, 7}, 107, 0, 0, 2, 48, 8},
        {"fragment prefix ends the count", {0xC1, 0x55}, 100, 0, 0, 2, 2, 2},
        {"empty frame", {}, 100, 2, 0, 2, 0, 0},
        {"no content", {2}, 100, 2, 0, 2, 8, 8},
        {"half the content", {2, 0x80}, 100 + 0x8000, 2, -0x8000, 2, 16, 16},
        {"half the count", {0xBF}, 100, 2, 0, 2, 2, 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const auto semi = unpacked_by<AsnInt>(
            [](AsnInt *value, auto *stream) { AsnIntSemiConstrained_unpack(value, stream, 100); }, row.octets, 0, 0);
        EXPECT_EQ(semi.value, row.semi);
        EXPECT_EQ(semi.error.code, row.semi_code);
        EXPECT_EQ(semi.bits, row.bits);
        const auto unconstrained = unpacked_by<AsnInt>(AsnIntUnconstrained_unpack, row.octets, 0, 99);
        EXPECT_EQ(unconstrained.value, row.unconstrained);
        EXPECT_EQ(unconstrained.error.code, row.unconstrained_code);
        EXPECT_EQ(unconstrained.bits, row.unconstrained_bits);
    }
}

TEST(AsnLenInt, SemiConstrainedUnpackAddsToTheResult)
{
    const auto is = unpacked_by<AsnInt>(
        [](AsnInt *value, auto *stream) { AsnIntSemiConstrained_unpack(value, stream, 1); }, {1, 0x34}, 0, 0x12);
    EXPECT_EQ(is.value, 0x1235);
}

} // namespace
