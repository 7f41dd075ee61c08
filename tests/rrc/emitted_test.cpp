// Emitted codecs at work: the types of edge/ from bits to text and back, bit by bit by X.691, with every error, report
// and correction.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../asn/report_catcher.h"
#include "rrc_codecs.h"

namespace {

struct codec {
    const char *name;
    std::size_t record_size;
    std::function<void(void *, unpack_info_struct *)>       unpack;
    std::function<void(pack_info_struct *, void *)>         pack;
    std::function<std::uint32_t(void *)>                    size;
    std::function<int(void *, AsnTextBuf *, std::uint16_t)> print;
    std::function<void(void *)>                             free, clear;
};

#define CODEC(type)                                                                                                   \
    codec                                                                                                             \
    {                                                                                                                 \
        #type, sizeof(type), [](void *v, auto *s) { type##_unpack(static_cast<type *>(v), s); },                      \
            [](auto *s, void *v) { type##_pack(s, static_cast<type *>(v)); },                                         \
            [](void *v) { return type##_size(static_cast<type *>(v)); },                                              \
            [](void *v, auto *b, std::uint16_t i) { return type##_print(static_cast<type *>(v), b, i); },             \
            [](void *v) { type##_free(static_cast<type *>(v)); }, [](void *v) { type##_clear(static_cast<type *>(v)); } \
    }

std::string without_blanks(std::string bits)
{
    std::erase(bits, ' ');
    return bits;
}

std::vector<std::uint8_t> octets_of(const std::string &bits)
{
    std::vector<std::uint8_t> octets((bits.size() + 7) / 8);
    for (std::size_t n = 0; n < bits.size(); ++n)
        if (bits[n] == '1')
            octets[n / 8] = static_cast<std::uint8_t>(octets[n / 8] | 0x80 >> n % 8);
    return octets;
}

std::string bits_of(const std::vector<std::uint8_t> &octets, std::uint32_t count)
{
    std::string bits;
    for (std::uint32_t n = 0; n < count; ++n)
        bits += (octets[n / 8] & 0x80 >> n % 8) != 0 ? '1' : '0';
    return bits;
}

std::string printed(const codec &c, void *value)
{
    AsnTextBuf buffer;
    AsnTextBufInit(&buffer, 64);
    EXPECT_EQ(c.print(value, &buffer, 0), 1);
    std::string text = buffer.text;
    AsnTextBufFree(&buffer);
    // One line, single blanks: how values are laid out is asn_print_test's.
    std::string line;
    for (const char ch : text)
        if (ch != '\n' && (ch != ' ' || (!line.empty() && line.back() != ' ')))
            line += ch;
    return line;
}

struct row {
    const char   *name;
    codec         of;
    std::string   bits;
    std::uint32_t code;       // of the decode
    std::string   text;       // of the value
    std::string   again = ""; // the encoding, where it is another one; "-" after an error that leaves none
    std::string   reported = "";
    std::uint32_t size_above = 0; // what size counts beyond the encoding: lengths of strings of fixed size
};

const std::string body = "00000010 00000001 01011000"; // open type: a Body of one octet, X

const std::vector<row> rows = {
    {"range", CODEC(Lte_Age), "0000101", 0, "5"},
    {"above its range", CODEC(Lte_Age), "1100101", 1, "101", "0000000", "Lte_Age"},
    {"absent member", CODEC(Lte_Pair), "0 000100", 0, "{ -- SEQUENCE -- a 5}"},
    {"string", CODEC(Lte_Pair), "1 000100 01000001 01000010", 0,
     "{ -- SEQUENCE -- a 5, b '4142'H -- \"AB\" -- }", "", "", 8},
    {"member above its range", CODEC(Lte_Pair), "0 111111", 1, "{ -- SEQUENCE -- a 64}", "0 000000", "Lte_Pair"},
    {"string cut off", CODEC(Lte_Pair), "1 000100 01000001", 2,
     "{ -- SEQUENCE -- a 5, b '4100'H -- \"A.\" -- }", "-"},
    {"defaults", CODEC(Lte_Flat), "000 01 0101 1 0 000000", 0,
     "{ -- SEQUENCE -- kind 1, level -3, on TRUE, pair { -- SEQUENCE -- a 1 }}"},
    {"all present", CODEC(Lte_Flat), "111 10 0000 0 1000110 11110000 0 000000", 0,
     "{ -- SEQUENCE -- kind 2, level -8, on FALSE, one 0, speed 70, map f0' Hex, pair { -- SEQUENCE -- a 1 }}"},
    {"index above the last", CODEC(Lte_Flat), "000 11 1000 1 0 000000", 1,
     "{ -- SEQUENCE -- kind 3, level 0, on TRUE, pair { -- SEQUENCE -- a 1 }}", "000 00 1000 1 0 000000",
     "Lte_FlatEnum"},
    {"numbers", CODEC(Lte_Numbers),
     std::string(36, '0') + "101" + std::string(32, '1') + std::string(32, '0') + "00000001 11111111 00000000", 0,
     "{ -- SEQUENCE -- time 5, id 4294967295, high 1, free -1, above 3}"},
    {"number of no octets", CODEC(Lte_Numbers), std::string(39 + 64, '0') + "00000000", 2,
     "{ -- SEQUENCE -- time 0, id 0, high 1, free 0, above 0}", "-"},
    {"nothing present", CODEC(Lte_Empty), "00", 0, "{ -- SEQUENCE --}"},
    {"second present alone", CODEC(Lte_Empty), "01 1", 0, "{ -- SEQUENCE -- b TRUE}"},

    {"no additions", CODEC(Lte_Release3), "0 101", 0, "{ -- SEQUENCE -- a 5}"},
    {"all additions", CODEC(Lte_Release3),
     "1 101 0 000010 111" + body + "00000001 11101100 00000010 0000010100000000", 0,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text '58'H -- \"X\" -- }, "
     "bracket_1 { -- SEQUENCE -- c 5, d TRUE }, f a' Hex}"},
    {"additions of later releases", CODEC(Lte_Release1),
     "1 101 0 000010 111" + body + "00000001 11101100 00000010 0000010100000000", 0,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text '58'H -- \"X\" -- }}", "1 101 0 000000 1" + body},
    {"the second addition alone", CODEC(Lte_Release2), "1 101 0 000001 01 00000001 11101100", 0,
     "{ -- SEQUENCE -- a 5, bracket_1 { -- SEQUENCE -- c 5, d TRUE }}"},
    {"addition longer than it is known", CODEC(Lte_Release2),
     "1 101 0 000001 01 00000011 11101100 11111111 11111111", 0,
     "{ -- SEQUENCE -- a 5, bracket_1 { -- SEQUENCE -- c 5, d TRUE }}", "1 101 0 000001 01 00000001 11101100"},
    {"fewer additions than are known", CODEC(Lte_Release2), "1 101 0 000000 1" + body, 0,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text '58'H -- \"X\" -- }}", "1 101 0 000001 10" + body},
    {"count of additions in one octet", CODEC(Lte_Release1), "1 101 1 0 0000001 1" + body, 0,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text '58'H -- \"X\" -- }}", "1 101 0 000000 1" + body},
    {"count of additions in fragments", CODEC(Lte_Release1), "1 101 1 1 0000000", 2, "{ -- SEQUENCE -- a 5}", "-"},
    {"open type in fragments", CODEC(Lte_Release1), "1 101 0 000000 1 11 000000", 2,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text ''H -- \"\" -- }}", "-"},
    {"string in an addition cut off", CODEC(Lte_Release1), "1 101 0 000000 1 00000010 01111111", 2,
     "{ -- SEQUENCE -- a 5, b { -- SEQUENCE -- text ''H -- \"\" -- }}", "-"},

    {"root of an extensible ENUMERATED", CODEC(Lte_Mode), "0 10", 0, "2"},
    {"above its root", CODEC(Lte_Mode), "0 11", 1, "3", "0 00", "Lte_Mode"},
    {"addition to it", CODEC(Lte_Mode), "1 0 000000", 0, "3", "0 00", "Lte_Mode"},

    {"NULL alternative", CODEC(Lte_Shape), "00", 0, "nothing NULL"},
    {"number", CODEC(Lte_Shape), "01 0101", 0, "level 5"},
    {"selector beyond the last", CODEC(Lte_Shape), "11", 0, "", "00", "Lte_Shape"},
    {"one alternative", CODEC(Lte_Only), "1", 0, "one TRUE"},
    {"root alternative", CODEC(Lte_Wide1), "0 1", 0, "b NULL"},
    {"addition", CODEC(Lte_Wide1), "1 0 000000 00000001 0000100 0", 0, "c { -- SEQUENCE -- a 5 }"},
    {"addition of a later release", CODEC(Lte_Wide1), "1 0 000001 00000010 11111111 11111111", 0, "", "0 0 0",
     "Lte_Wide1"},
    {"the same, known", CODEC(Lte_Wide2), "1 0 000001" + body, 0, "d { -- SEQUENCE -- text '58'H -- \"X\" -- }"},
    {"number of an alternative in octets", CODEC(Lte_Wide2), "1 1 00000001 00000001" + body, 0,
     "d { -- SEQUENCE -- text '58'H -- \"X\" -- }", "1 0 000001" + body},
    {"number of an alternative in five octets", CODEC(Lte_Wide2), "1 1 00000101 00000001", 2, "a FALSE", "-"},

    {"list of one", CODEC(Lte_Items), "000 0", 0, "{ -- SEQUENCE OF -- { -- SEQUENCE -- }}"},
    {"list of two", CODEC(Lte_Items), "001 1 00000001 01000001 0", 0,
     "{ -- SEQUENCE OF -- { -- SEQUENCE -- name '41'H -- \"A\" -- }, { -- SEQUENCE -- }}"},
    {"list ends at an error", CODEC(Lte_Items), "010 0 1 01111111 0", 2,
     "{ -- SEQUENCE OF -- { -- SEQUENCE -- }, { -- SEQUENCE -- name ''H -- \"\" -- }}", "-"},
    {"empty list", CODEC(Lte_Ages), "00", 0, "{ -- SEQUENCE OF -- }"},
    {"element above its range", CODEC(Lte_Ages), "10 0000001 1100101", 1, "{ -- SEQUENCE OF -- 1, 101}",
     "10 0000001 0000000", "Lte_Age"},
    {"general count", CODEC(Lte_Many), "00000010 10", 0, "{ -- SEQUENCE OF -- TRUE, FALSE}"},

    {"array in place", CODEC(Holder), "01 0001 0010 0011 1", 0,
     "{ -- SEQUENCE -- shape digits { -- SEQUENCE OF -- 1, 2, 3 }, on TRUE}"},
    {"selector beyond the last, as UMTS takes it", CODEC(Holder), "11 1", 2, "{ -- SEQUENCE -- shape , on FALSE}", "-"},
};

TEST(EmittedCodecs, FromBitsToTextAndBack)
{
    for (const row &r : rows) {
        SCOPED_TRACE(std::string(r.of.name) + ": " + r.name);
        const report_catcher      catcher;
        const std::string         bits   = without_blanks(r.bits);
        std::vector<std::uint8_t> octets = octets_of(bits);
        const auto                length = static_cast<std::int32_t>(octets.size());
        octets.resize(octets.size() + 256); // what a codec may read behind a frame
        std::vector<std::uint64_t> record((r.of.record_size + 7) / 8);
        PerError                   error{};
        unpack_info_struct         in = {octets.data(), 0, length, &error};
        r.of.unpack(record.data(), &in);
        EXPECT_EQ(error.code, r.code);
        EXPECT_EQ(error.detail, r.code == 0 ? 0u : 1u);
        EXPECT_EQ(in.err_hndl, &error);
        EXPECT_EQ(printed(r.of, record.data()), r.text);
        if (r.again != "-") {
            EXPECT_EQ(in.bits, bits.size());
            std::vector<std::uint8_t> written(256);
            pack_info_struct          out = {written.data(), 0};
            r.of.pack(&out, record.data());
            EXPECT_EQ(bits_of(written, out.bits), without_blanks(r.again.empty() ? r.bits : r.again));
            EXPECT_EQ(r.of.size(record.data()), out.bits + r.size_above);
            const std::string report = "\nThe data passed for packing " + r.reported + " does not lie within bounds\n\n";
            EXPECT_EQ(report_catcher::take_text(), r.reported.empty() ? "" : report);
            r.of.pack(&out, record.data());
            EXPECT_EQ(report_catcher::take_text(), "") << "the value stays corrected";
        }
        r.of.free(record.data());
        r.of.clear(record.data());
        std::vector<std::uint8_t> zero(r.of.record_size);
        EXPECT_EQ(std::memcmp(record.data(), zero.data(), zero.size()), 0);
    }
}

TEST(EmittedCodecs, DefaultsAreInstalledAndReleased)
{
    auto               octets = octets_of(without_blanks("000 01 0101 1 0 000000"));
    Lte_Flat           value{};
    PerError           error{};
    unpack_info_struct in = {octets.data(), 0, static_cast<std::int32_t>(octets.size()), &error};
    Lte_Flat_unpack(&value, &in);
    EXPECT_EQ(value.speedOpt, 1);
    EXPECT_EQ(value.speed, 50);
    EXPECT_EQ(value.mapOpt, 1);
    EXPECT_EQ(value.map.bitLen, 8u);
    EXPECT_EQ(value.map.bits[0], 0xA0);
    EXPECT_EQ(value.oneOpt, 0);
    Lte_Flat_free(&value);
    EXPECT_EQ(value.map.bits, nullptr);
    EXPECT_EQ(value.speed, 50) << "free leaves the other fields";
}

TEST(EmittedCodecs, AListWithAnotherCountPacksAllItsNodes)
{
    const report_catcher catcher;
    Lte_Items            list;
    AsnListInit(&list, sizeof(Lte_Item));
    for (int n = 0; n < 2; ++n)
        AsnListAppend(&list);
    list.count = 9;
    std::vector<std::uint8_t> octets(8);
    pack_info_struct          out = {octets.data(), 0};
    Lte_Items_pack(&out, &list);
    EXPECT_EQ(bits_of(octets, out.bits), "00000") << "count 1, two elements";
    EXPECT_EQ(list.count, 1);
    EXPECT_EQ(report_catcher::take_text(), "\nThe data passed for packing Lte_Items does not lie within bounds\n\n");
    list.count = 2;
    Lte_Items_free(&list);
}

TEST(EmittedCodecs, NullValues)
{
    AsnTextBuf buffer;
    AsnTextBufInit(&buffer, 8);
    EXPECT_EQ(Lte_Pair_print(nullptr, &buffer, 0), 0);
    EXPECT_EQ(Lte_Items_print(nullptr, &buffer, 0), 0);
    EXPECT_STREQ(buffer.text, "");
    AsnTextBufFree(&buffer);
    Lte_Pair_free(nullptr);
    Lte_Items_free(nullptr);
    EXPECT_EQ(Lte_Items_size(nullptr), 3u);
}

TEST(EmittedCodecs, EntriesAnswerTheLastMerge)
{
    const struct {
        const char   *bits;
        std::uint32_t answer, code;
    } cases[] = {{"0 000100", 0, 0}, {"0 111111", 0, 1}, {"1 000100 01000001", 1, 2}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bits);
        auto               octets = octets_of(without_blanks(c.bits));
        Lte_Pair           value{};
        PerError           error{};
        unpack_info_struct in = {octets.data(), 0, static_cast<std::int32_t>(octets.size()), &error};
        EXPECT_EQ(Lte_Pair_decode(&value, &in), c.answer);
        EXPECT_EQ(error.code, c.code);
        EXPECT_EQ(in.err_hndl, &error);
        Lte_Pair_free(&value);
    }
    Lte_Pair                  value = {3, 0, {}};
    std::vector<std::uint8_t> octets(2);
    pack_info_struct          out = {octets.data(), 0};
    Lte_Pair_encode(&out, &value);
    EXPECT_EQ(bits_of(octets, out.bits), "0000010");
}

// The tag of an allocation is the line of the emitted source that makes it, and the family's file code.
TEST(EmittedCodecs, TagTheirAllocations)
{
    static std::vector<std::uint32_t> tags;
    tags.clear();
    const report_catcher slots;
    dll_info_version.alloc_clear = [](std::size_t size, std::uint8_t flag, std::uint16_t file, std::uint32_t line) {
        tags.insert(tags.end(), {flag, file, line});
        return std::malloc(size);
    };
    dll_info_version.free_tagged = [](void *block, std::uint8_t flag, std::uint16_t file, std::uint32_t line) {
        tags.insert(tags.end(), {flag, file, line});
        std::free(block);
    };
    auto               octets = octets_of("0000");
    Lte_Items          list{};
    unpack_info_struct in = {octets.data(), 0, 1, nullptr};
    Lte_Items_unpack(&list, &in);
    Lte_Items_free(&list);
    ASSERT_EQ(tags.size(), 12u);
    for (std::size_t n = 0; n < tags.size(); n += 3) {
        EXPECT_EQ(tags[n], 1u);
        EXPECT_EQ(tags[n + 1], n < 6 ? 1708u : 1706u);
        EXPECT_GT(tags[n + 2], 10u);
    }
}

} // namespace
