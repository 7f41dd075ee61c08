// What the generated codecs share: extension additions, open types, extensible selections, range errors.
#include "per_codec.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The bits of a text of '0' and '1', blanks skipped, with zero octets behind.
std::vector<std::uint8_t> octets_of(const std::string &bits, std::size_t spare = 64)
{
    std::vector<std::uint8_t> octets;
    std::uint32_t             n = 0;
    for (const char c : bits) {
        if (c == ' ')
            continue;
        if (n % 8 == 0)
            octets.push_back(0);
        if (c == '1')
            octets.back() = static_cast<std::uint8_t>(octets.back() | 0x80 >> n % 8);
        ++n;
    }
    octets.resize(octets.size() + spare);
    return octets;
}

struct reader {
    std::vector<std::uint8_t> octets;
    PerError                  error{};
    unpack_info_struct        stream;

    explicit reader(const std::string &bits, std::size_t spare = 64)
        : octets(octets_of(bits, spare)), stream{octets.data(), 0, static_cast<std::int32_t>(octets.size()), &error}
    {
    }
};

std::string ones(std::size_t n) { return std::string(n, '1'); }

TEST(PerCodec, AdditionBitmap)
{
    const struct {
        const char                *name;
        std::string                bits;
        std::uint32_t              count;
        std::vector<std::uint32_t> present;
        std::uint32_t              read; // bits
    } rows[] = {
        {"one", "0 000000 1", 1, {0}, 8},
        {"only the second of two", "0 000001 01", 2, {1}, 9},
        {"a word", "0 011111 1" + std::string(30, '0') + "1", 32, {0, 31}, 39},
        {"more than a word", "0 100000" + std::string(31, '0') + "11", 33, {31, 32}, 40},
        {"64, the most of the small form", "0 111111" + std::string(63, '0') + "1", 64, {63}, 71},
        {"large form", "1 0 0000010 10", 2, {0}, 11},
        {"127, the most of the large form", "1 0 1111111" + std::string(126, '0') + "1", 127, {126}, 136},
        {"none at all", "1 0 0000000", 0, {}, 9},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        reader        in(row.bits);
        per_additions additions;
        ASSERT_TRUE(per_get_additions(&in.stream, &additions));
        EXPECT_EQ(additions.count, row.count);
        std::vector<std::uint32_t> present;
        for (std::uint32_t n = 0; n < 200; ++n)
            if (per_has_addition(&additions, n))
                present.push_back(n);
        EXPECT_EQ(present, row.present);
        EXPECT_EQ(in.stream.bits, row.read);
        EXPECT_EQ(in.error.code, 0u);
    }
    reader        in("1 1 000000");
    per_additions additions;
    EXPECT_FALSE(per_get_additions(&in.stream, &additions));
    EXPECT_EQ(in.error.code, 2u);
    EXPECT_EQ(in.error.detail, 1u);
}

TEST(PerCodec, UnknownAdditionsAreSkippedByTheirLengths)
{
    // Three of four are there; the first is known.  Lengths 1, 2 and 200 octets.
    reader in("0 000011 1101" "00000001 11111111" "00000010" + ones(16) + "10 00000011001000", 300);
    per_additions additions;
    ASSERT_TRUE(per_get_additions(&in.stream, &additions));
    std::uint32_t end;
    ASSERT_TRUE(per_open_unpack(&in.stream, &end));
    EXPECT_EQ(end, 11u + 16);
    per_get_8(&in.stream, 3); // a child that knows less than there is
    per_close_unpack(&in.stream, end);
    EXPECT_EQ(in.stream.bits, end);
    EXPECT_TRUE(per_skip_additions(&in.stream, &additions, 1));
    EXPECT_EQ(in.stream.bits, end + 8 + 16 + 16 + 200 * 8);
    EXPECT_EQ(in.stream.frame, in.octets.data() + in.stream.bits / 8);

    reader broken("0 000000 1 11 000000");
    ASSERT_TRUE(per_get_additions(&broken.stream, &additions));
    EXPECT_FALSE(per_skip_additions(&broken.stream, &additions, 0));
    EXPECT_EQ(broken.error.code, 2u);
}

TEST(PerCodec, OpenTypeGoesBackWhenTheChildHasReadTooMuch)
{
    reader        in("00000001" + ones(40));
    std::uint32_t end;
    ASSERT_TRUE(per_open_unpack(&in.stream, &end));
    per_get_32(&in.stream, 27);
    per_close_unpack(&in.stream, end);
    EXPECT_EQ(in.stream.bits, 16u);
    EXPECT_EQ(in.stream.frame, in.octets.data() + 2);
    EXPECT_EQ(in.stream.fr_size, static_cast<std::int32_t>(in.octets.size()) - 2);
}

// Contents of `octets` octets of 0xFF and `odd` bits, estimated at `estimate` bits.
struct open_row {
    const char               *name;
    std::uint32_t             estimate, octets, odd;
    std::vector<std::uint8_t> head; // what the open type begins with
    std::uint32_t             bits; // written in all
};

TEST(PerCodec, OpenTypeLengthFollowsEstimateAndContents)
{
    const open_row rows[] = {
        {"empty", 0, 0, 0, {0}, 8},
        {"padded", 3, 0, 3, {1, 0xFF}, 16},
        {"127 octets", 127 * 8, 127, 0, {127, 0xFF}, 128 * 8},
        {"128 octets", 128 * 8, 128, 0, {0x80, 0x80, 0xFF}, 130 * 8},
        {"16383 octets", 16383 * 8, 16383, 0, {0xBF, 0xFF, 0xFF}, 16385 * 8},
        {"outgrows its estimate: the length overwrites an octet", 127 * 8, 128, 0, {0x80, 0x80, 0xFF}, 129 * 8},
        {"smaller than its estimate: two octets of length", 128 * 8, 5, 0, {0x80, 5, 0xFF}, 7 * 8},
        {"from 16384 octets on the room stays zero", 16384 * 8, 16384, 0, {0, 0xFF}, 16385 * 8},
    };
    for (const open_row &row : rows) {
        SCOPED_TRACE(row.name);
        for (std::uint32_t offset = 0; offset < 8; offset += 3) {
            std::vector<std::uint8_t> octets(row.octets + 100);
            pack_info_struct          stream = {octets.data(), offset};
            per_open_type             open;
            per_open_pack(&stream, &open, row.estimate);
            for (std::uint32_t n = 0; n < row.octets; ++n)
                per_put_8(&stream, 8, 0xFF);
            if (row.odd != 0)
                per_put_8(&stream, row.odd, 0xFF);
            per_close_pack(&stream, &open);
            EXPECT_EQ(stream.bits, offset + row.bits);
            for (std::size_t n = 0; n < row.head.size(); ++n) {
                const auto expected = n == 1 && row.odd != 0 ? 0xFF << (8 - row.odd) & 0xFF : row.head[n];
                EXPECT_EQ(per_peek_8(octets.data() + n, offset, 8), std::uint32_t(expected)) << n;
            }
        }
        if (row.estimate == row.octets * 8) {
            EXPECT_EQ(per_open_size(row.estimate), row.bits);
        }
    }
    EXPECT_EQ(per_open_size(3), 16u);
}

TEST(PerCodec, ExtensibleEnumerated)
{
    const struct {
        const char   *bits;
        std::uint32_t value, code, read;
    } rows[] = {
        {"0 10", 2, 0, 3},          {"0 11", 3, 1, 3}, // of three
        {"1 0 000000", 3, 0, 8},    {"1 0 000101", 8, 0, 8},
        {"1 1 000001", 4, 0, 8}, // the bit that tells of a large number is not looked at
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.bits);
        reader in(row.bits);
        EXPECT_EQ(per_get_extensible_enum(&in.stream, 3, 2), row.value);
        EXPECT_EQ(in.error.code, row.code);
        EXPECT_EQ(in.stream.bits, row.read);
    }
}

TEST(PerCodec, ExtensibleChoice)
{
    const struct {
        const char   *bits;
        bool          read;
        std::uint32_t index, code, bits_read;
    } rows[] = {
        {"0 01", true, 1, 0, 3},
        {"1 0 000010", true, 5, 0, 8},
        {"1 1 00000001 00000100", true, 7, 0, 18},
        {"1 1 00000100 00000000 00000000 00000001 00000000", true, 259, 0, 42},
        {"1 1 00000101 00000000", false, 99, 2, 10},
        {"1 1 00000000", true, 3, 0, 10},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.bits);
        reader        in(row.bits);
        std::uint32_t index = 99;
        EXPECT_EQ(per_get_extensible_choice(&in.stream, 3, 2, &index), row.read);
        EXPECT_EQ(index, row.index);
        EXPECT_EQ(in.error.code, row.code);
        EXPECT_EQ(in.stream.bits, row.bits_read);
    }
}

TEST(PerCodec, NumbersAboveAWordKeepTheirLowBits)
{
    std::vector<std::uint8_t> octets(16, 0xFF);
    pack_info_struct          out = {octets.data(), 3};
    per_put_wide(&out, 39, 0x80000001);
    EXPECT_EQ(out.bits, 42u);
    PerError           error{};
    unpack_info_struct in = {octets.data(), 3, 16, &error};
    EXPECT_EQ(per_get_8(&in, 7), 0u);
    in = {octets.data(), 3, 16, &error};
    EXPECT_EQ(per_get_wide(&in, 39), 0x80000001u);
    EXPECT_EQ(in.bits, 42u);
}

TEST(PerCodec, ARangeErrorIsSoftAndGivesWay)
{
    reader in("0");
    per_out_of_range(&in.stream);
    EXPECT_EQ(in.error.code, 1u);
    EXPECT_EQ(in.error.detail, 1u);
    in.error = {2, 7, 0, 0};
    per_out_of_range(&in.stream);
    EXPECT_EQ(in.error.code, 2u);
    EXPECT_EQ(in.error.detail, 7u);
    in.stream.err_hndl = nullptr;
    per_out_of_range(&in.stream);
}

TEST(PerCodec, ChainCarriesTheFirstSoftAndTheLastHardError)
{
    reader      in("0");
    void *const outer = in.stream.err_hndl;
    PerError    local{9, 9, 9, 9};
    std::uint8_t flag = 0;
    for (const auto &[code, detail] : {std::pair{1u, 5u}, {1u, 6u}, {2u, 7u}}) {
        per_enter(&in.stream, &local);
        EXPECT_EQ(in.stream.err_hndl, &local);
        EXPECT_EQ(local.code, 0u);
        local.code   = code;
        local.detail = detail;
        EXPECT_EQ(per_leave_flag(&in.stream, &local, outer, &flag), code == 2);
        EXPECT_EQ(in.stream.err_hndl, outer);
        EXPECT_EQ(flag, 1);
        EXPECT_EQ(in.error.code, code);
        EXPECT_EQ(in.error.detail, code == 2 ? 7u : 5u);
    }
    per_enter(&in.stream, &local);
    EXPECT_FALSE(per_leave_opt(&in.stream, &local, outer, &flag));
}

TEST(PerCodec, SizesOfBitStrings)
{
    const AsnBits bits = {200, nullptr};
    EXPECT_EQ(per_bits_size(&bits), 216u);
    EXPECT_EQ(per_bits_size(&bits, 5), 205u);
}

TEST(AsnStringMemory, AllocatesByLengthAndReleasesToNull)
{
    AsnOcts octets = {3, nullptr};
    AsnOctsAlloc(&octets);
    octets.octs[2] = 1;
    AsnOctsFree(&octets);
    EXPECT_EQ(octets.octs, nullptr);
    EXPECT_EQ(octets.octetLen, 3u);
    AsnOctsFree(&octets);
    AsnBits bits = {20, nullptr};
    AsnBitsAlloc(&bits);
    bits.bits[19] = 1; // an octet a bit
    AsnBitsFree(&bits);
    EXPECT_EQ(bits.bits, nullptr);
    AsnOid oid = {2, nullptr};
    AsnOidAlloc(&oid);
    EXPECT_EQ(oid.octs[0] + oid.octs[1], 0);
    AsnOidFree(&oid);
    EXPECT_EQ(oid.octs, nullptr);
}

} // namespace
