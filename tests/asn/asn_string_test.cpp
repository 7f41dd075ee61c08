// OCTET STRING and BIT STRING: all three constraint modes, fragments, short frames; runs of octets against the
// octet-by-octet model.
#include "asn_string.h"

#include <gtest/gtest.h>

#include <random>

#include "asn_heap.h"
#include "bit_model.h"
#include "report_catcher.h"

namespace {

octet_list octets_for(std::uint32_t count)
{
    std::mt19937 random(count + 1);
    octet_list   octets(count);
    for (auto &octet : octets)
        octet = static_cast<std::uint8_t>(random());
    return octets;
}

struct bounds {
    std::int32_t  upper;
    std::uint32_t lower, mode;
};

struct unpacked_string {
    octet_list         octets;
    AsnLen             length;
    PerError           error;
    unpack_info_struct stream;
};

// One string of either type: `unit` is 8 for octets, 1 for bits.
unpacked_string unpack_string(std::uint32_t unit, const std::uint8_t *frame, std::uint32_t offset, std::int32_t size,
                              const bounds &by)
{
    unpacked_string is     = {{}, 0, {}, {frame, offset, size, nullptr}};
    is.stream.err_hndl     = &is.error;
    AsnOcts       octets   = {};
    AsnBits       bits     = {};
    std::uint8_t *contents = nullptr;
    if (unit == 8) {
        AsnOcts_unpack(&octets, &is.stream, by.upper, by.lower, by.mode, 1, 4590, 12);
        is.length = octets.octetLen;
        contents  = octets.octs;
    } else {
        AsnBits_unpack(&bits, &is.stream, by.upper, by.lower, by.mode, 1, 4590, 12);
        is.length = bits.bitLen;
        contents  = bits.bits;
    }
    if (contents)
        is.octets.assign(contents, contents + (std::uint64_t{is.length} * unit + 7) / 8);
    AsnMemFree(contents);
    return is;
}

octet_list pack_string(std::uint32_t unit, octet_list octets, AsnLen length, const bounds &by, std::uint32_t offset,
                       std::uint32_t *bits_written)
{
    octet_list       frame(octets.size() + 64);
    pack_info_struct stream = {frame.data(), offset};
    if (unit == 8) {
        const AsnOcts value = {length, octets.data()};
        AsnOcts_pack(&stream, &value, by.upper, by.lower, by.mode);
    } else {
        const AsnBits value = {length, octets.data()};
        AsnBits_pack(&stream, &value, by.upper, by.lower, by.mode);
    }
    EXPECT_EQ(stream.frame - frame.data(), stream.bits / 8);
    *bits_written = stream.bits - offset;
    frame.resize((stream.bits + 7) / 8);
    return frame;
}

// What the length and the contents must come to, bit by bit.
struct expected_stream {
    octet_list    frame;
    std::uint32_t bits;

    expected_stream(std::uint32_t size, std::uint32_t offset) : frame(size), bits(offset) {}
    void put(std::uint32_t n, std::uint32_t value)
    {
        model_write(frame.data(), bits, n, value);
        bits += n;
    }
};

const struct {
    const char   *name;
    std::uint32_t unit;
    AsnLen        length;
    bounds        by;
    std::uint32_t first_length_bits, first_length; // what stands in front of the first contents
} strings[] = {
    {"empty octets", 8, 0, {0, 0, 0}, 8, 0},
    {"three octets", 8, 3, {0, 0, 0}, 8, 3},
    {"127 octets", 8, 127, {0, 0, 0}, 8, 127},
    {"128 octets", 8, 128, {0, 0, 0}, 16, 0x8080},
    {"16383 octets", 8, 16383, {0, 0, 0}, 16, 0xBFFF},
    {"lower bound does not change the length", 8, 5, {0, 2, 1}, 8, 5},
    {"bounds of 2..9 octets", 8, 5, {9, 2, 2}, 3, 3},
    {"bounds of 0..65535 octets", 8, 600, {65535, 0, 2}, 16, 600},
    {"fixed 6 octets", 8, 6, {6, 6, 2}, 0, 0},
    {"fixed 0 octets", 8, 0, {0, 0, 2}, 0, 0},
    {"upper bound of 65536 counts as none", 8, 20, {65536, 4, 2}, 8, 20},
    {"no bits", 1, 0, {0, 0, 0}, 8, 0},
    {"one bit", 1, 1, {0, 0, 0}, 8, 1},
    {"seven bits", 1, 7, {0, 0, 0}, 8, 7},
    {"nine bits", 1, 9, {0, 0, 0}, 8, 9},
    {"1000 bits", 1, 1000, {0, 0, 0}, 16, 0x83E8},
    {"bounds of 1..160 bits", 1, 33, {160, 1, 2}, 8, 32},
    {"fixed 48 bits", 1, 48, {48, 48, 2}, 0, 0},
    {"fixed 5 bits", 1, 5, {5, 5, 2}, 0, 0},
    {"length outside its bounds is cut to its bits", 8, 20, {9, 2, 2}, 3, 2},
};

TEST(AsnString, PacksLengthAndContents)
{
    for (const auto &row : strings)
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            SCOPED_TRACE(std::string(row.name) + " at offset " + std::to_string(offset));
            const std::uint32_t octet_count = (row.length * row.unit + 7) / 8;
            const octet_list    octets      = octets_for(octet_count);
            expected_stream     should(octet_count + 64, offset);
            should.put(row.first_length_bits, row.first_length);
            for (std::uint32_t i = 0; i < row.length * row.unit; ++i)
                should.put(1, model_bit(octets.data(), i));
            std::uint32_t    bits;
            const octet_list is = pack_string(row.unit, octets, row.length, row.by, offset, &bits);
            EXPECT_EQ(bits, should.bits - offset);
            should.frame.resize(is.size());
            EXPECT_TRUE(is == should.frame);
        }
}

// Lengths in fragments: each row lists the heads and how many units follow each.
TEST(AsnString, Fragments)
{
    const struct {
        AsnLen                                               length;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> rounds; // determinant, units
    } rows[] = {
        {16384, {{0xC1, 16384}, {0x00, 0}}},
        {16385, {{0xC1, 16384}, {0x01, 1}}},
        {40000, {{0xC2, 32768}, {0x9C40, 7232}}},
        {65535, {{0xC3, 49152}, {0xBFFF, 16383}}},
        {65536, {{0xC4, 65536}, {0x00, 0}}},
        {65536 + 16384 + 3, {{0xC4, 65536}, {0xC1, 16384}, {0x03, 3}}},
        {2 * 65536, {{0xC4, 65536}, {0xC4, 65536}, {0x00, 0}}},
    };
    for (const std::uint32_t unit : {8u, 1u})
        for (const auto &row : rows)
            for (const std::uint32_t offset : {0u, 3u}) {
                SCOPED_TRACE(std::to_string(row.length) + " units of " + std::to_string(unit));
                const std::uint32_t octet_count = (row.length * unit + 7) / 8;
                octet_list          octets      = octets_for(octet_count);
                if (row.length * unit % 8 != 0)
                    octets.back() = static_cast<std::uint8_t>(octets.back() & 0xFF << (8 - row.length * unit % 8));
                expected_stream should(octet_count + 64, offset);
                std::uint32_t   at = 0, heads = 0;
                for (const auto &[determinant, units] : row.rounds) {
                    const std::uint32_t width = determinant == 0x9C40 || determinant == 0xBFFF ? 16 : 8;
                    should.put(width, determinant);
                    heads += width;
                    for (std::uint32_t i = 0; i < units * unit; i += 1, at += 1)
                        should.put(1, model_bit(octets.data(), at));
                }
                std::uint32_t    bits;
                const octet_list is = pack_string(unit, octets, row.length, {0, 0, 0}, offset, &bits);
                EXPECT_EQ(bits, should.bits - offset);
                EXPECT_EQ(AsnLenSemiConstrained_size(row.length, 0), heads);
                if (unit == 8) {
                    const AsnOcts value = {row.length, octets.data()};
                    EXPECT_EQ(AsnOcts_size(&value), bits);
                }
                should.frame.resize(is.size());
                EXPECT_TRUE(is == should.frame);

                const tight_octets    frame(is);
                const unpacked_string back =
                    unpack_string(unit, frame.data.get(), offset, static_cast<std::int32_t>(is.size()), {0, 0, 0});
                EXPECT_EQ(back.length, row.length);
                EXPECT_TRUE(back.octets == octets);
                EXPECT_EQ(back.error.code, 0u);
                EXPECT_EQ(back.stream.bits, offset + bits);
            }
}

// Every string above on its own frame and on each shorter one, and frames of any contents: value, error record and
// cursor are those of one checked read an octet, and no octet behind the frame is read.
void expect_the_model(std::uint32_t unit, const octet_list &octets, std::uint32_t offset, std::int32_t size,
                      const bounds &by)
{
    const tight_octets frame(std::span<const std::uint8_t>(octets).first(static_cast<std::size_t>(size)));
    PerError           error{};
    unpack_info_struct stream = {frame.data.get(), offset, size, &error};
    const model_string should = model_unpack_string(&stream, by.upper, by.lower, by.mode, unit);
    unpacked_string    is     = unpack_string(unit, frame.data.get(), offset, size, by);
    EXPECT_EQ(is.length, should.length);
    EXPECT_TRUE(is.length == 0 || is.octets == should.octets);
    EXPECT_EQ(is.error.code, error.code);
    EXPECT_EQ(is.error.detail, error.detail);
    EXPECT_EQ(is.stream.bits, stream.bits);
    EXPECT_EQ(is.stream.frame, stream.frame);
    EXPECT_EQ(is.stream.fr_size, stream.fr_size);
}

TEST(AsnString, UnpacksAsTheModelWhereverTheFrameEnds)
{
    for (const auto &row : strings)
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            std::uint32_t    bits;
            const octet_list frame =
                pack_string(row.unit, octets_for((row.length * row.unit + 7) / 8), row.length, row.by, offset, &bits);
            const auto whole = static_cast<std::int32_t>(frame.size());
            for (std::int32_t size = whole; size >= 0; size -= size > 200 && size < whole - 20 ? 97 : 1) {
                SCOPED_TRACE(std::string(row.name) + " at offset " + std::to_string(offset) + ", " +
                             std::to_string(size) + " of " + std::to_string(whole) + " octets");
                expect_the_model(row.unit, frame, offset, size, row.by);
            }
        }
}

TEST(AsnString, UnpacksRandomFramesAsTheModel)
{
    const auto   seed = std::random_device{}();
    std::mt19937 random(seed);
    const auto   pick = [&](std::uint32_t below) { return static_cast<std::uint32_t>(random() % below); };
    for (int round = 0; round < 20000; ++round) {
        octet_list frame(24);
        for (auto &octet : frame)
            octet = static_cast<std::uint8_t>(pick(4) ? pick(256) : 0);
        const auto   size   = static_cast<std::int32_t>(pick(25));
        const bounds by     = {static_cast<std::int32_t>(pick(40)), pick(20), pick(3)};
        const auto   offset = size ? pick(8) : 0;
        const auto   unit   = pick(2) ? 8u : 1u;
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
        expect_the_model(unit, frame, offset, size, by);
        if (HasFailure())
            break;
    }
}

TEST(AsnString, UnpackRefuses)
{
    const struct {
        const char   *name;
        std::uint32_t unit, offset;
        octet_list    frame;
        std::int32_t  size;
        bounds        by;
        AsnLen        length;
        octet_list    octets;
    } rows[] = {
        {"one octet short", 8, 0, {3, 0xAA, 0xBB}, 3, {0, 0, 0}, 0, {}},
        {"no length", 8, 0, {}, 0, {0, 0, 0}, 0, {}},
        {"the last octet does not fit behind the offset", 8, 4, {0xF1, 0x2F}, 2, {2, 2, 2}, 2, {0x12, 0x00}},
        {"the last bits do not fit behind the offset", 1, 4, {0xF1, 0x2F}, 2, {13, 13, 2}, 13, {0x12, 0x00}},
        {"bits that just fit behind the offset", 1, 4, {0xF1, 0x2F}, 2, {12, 12, 2}, 12, {0x12, 0xF0}},
        {"end of the frame already passed", 8, 0, {0, 0}, -1, {0, 0, 0}, 0, {}},
        {"fixed length past the end", 8, 0, {0, 0}, -3, {2, 2, 2}, 0, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const unpacked_string is = unpack_string(row.unit, row.frame.data(), row.offset, row.size, row.by);
        EXPECT_EQ(is.length, row.length);
        EXPECT_EQ(is.octets, row.octets);
        EXPECT_EQ(is.error.code, row.length == 12 ? 0u : 2u);
        EXPECT_EQ(is.error.detail, row.length == 12 ? 0u : 1u);
    }
}

// The fragments before the one that is too long stay in the record, for its owner to release.
TEST(AsnString, KeepsWhatWasAllocatedBeforeTheError)
{
    octet_list frame(1 + 16384 + 1 + 4);
    frame[0]         = 0xC1;
    frame[1]         = 0x77;
    frame[1 + 16384] = 5;
    PerError           error{};
    unpack_info_struct stream = {frame.data(), 0, static_cast<std::int32_t>(frame.size()), &error};
    AsnOcts            octets = {};
    AsnOcts_unpack(&octets, &stream, 0, 0, 0);
    EXPECT_EQ(octets.octetLen, 0u);
    ASSERT_NE(octets.octs, nullptr);
    EXPECT_EQ(octets.octs[0], 0x77);
    EXPECT_EQ(error.code, 2u);
    AsnMemFree(octets.octs);
}

TEST(AsnString, PassesTheTagAndMakesNoBlockForAnEmptyString)
{
    static std::vector<std::uint32_t> calls;
    const report_catcher              catcher;
    dll_info_version.realloc_clear = [](void *block, std::size_t size, std::size_t old_size, std::uint8_t flag,
                                        std::uint16_t file_code, std::uint32_t line) {
        calls = {static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(old_size), flag, file_code, line};
        return std::realloc(block, size);
    };
    dll_info_version.free_tagged = [](void *block, std::uint8_t, std::uint16_t, std::uint32_t) { std::free(block); };
    const std::uint8_t empty[] = {0}, three[] = {3, 1, 2, 3};
    unpack_string(8, empty, 0, 1, {0, 0, 0});
    EXPECT_EQ(calls, (std::vector<std::uint32_t>{}));
    unpack_string(8, three, 0, 4, {0, 0, 0});
    EXPECT_EQ(calls, (std::vector<std::uint32_t>{3, 0, 1, 4590, 12}));
}

TEST(AsnString, ReportsALengthBelowItsBoundInEachRound)
{
    const report_catcher catcher;
    std::uint32_t        bits;
    const std::string    report = "\nAsnLenSemiConstrained_pack : The data passed for packing ";
    const std::string    end    = " does not lie within the bounds \n\n";
    pack_string(8, octets_for(3), 3, {0, 4, 1}, 0, &bits);
    EXPECT_EQ(catcher.take_text(), report + "OCTET STRING" + end);
    pack_string(1, octets_for(2048 + 1), 16384 + 3, {0, 4, 1}, 0, &bits);
    EXPECT_EQ(catcher.take_text(), report + "BIT STRING" + end) << "the first round is long enough";
    pack_string(8, octets_for(3), 3, {0, 4, 0}, 0, &bits);
    EXPECT_EQ(catcher.take_text(), "") << "without a constraint there is no bound";
}

TEST(AsnString, CopiesABitString)
{
    std::uint8_t  contents[] = {0x12, 0x34, 0x50};
    const AsnBits sources[]  = {{24, contents}, {20, contents}, {0, nullptr}};
    for (const AsnBits &source : sources) {
        AsnBits copy = {99, nullptr};
        AsnBits_copy(&copy, &source);
        EXPECT_EQ(copy.bitLen, source.bitLen);
        if (source.bitLen) {
            EXPECT_NE(copy.bits, source.bits);
            EXPECT_EQ(octet_list(copy.bits, copy.bits + 3), octet_list(contents, contents + 3));
        }
        AsnMemFree(copy.bits);
    }
}

} // namespace
