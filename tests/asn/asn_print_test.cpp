// The value printer: every universal type to the letter, growth of the text, the limits that end the process.
#include "asn_print.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "report_catcher.h"

namespace {

struct text_buffer : AsnTextBuf {
    explicit text_buffer(std::uint32_t size = 64) : AsnTextBuf{} { EXPECT_EQ(AsnTextBufInit(this, size), 1); }
    ~text_buffer() { AsnTextBufFree(this); }
    text_buffer(const text_buffer &)            = delete;
    text_buffer &operator=(const text_buffer &) = delete;
};

template <typename Value, typename Print> std::string printed(Print print, const Value &value)
{
    text_buffer buffer;
    print(&value, &buffer, 17);
    EXPECT_EQ(std::string(buffer.text).size(), buffer.length);
    return buffer.text;
}

template <typename String> String string_of(std::vector<std::uint8_t> &octets, std::uint32_t length)
{
    return {length, octets.data()};
}

TEST(AsnPrint, Scalars)
{
    EXPECT_EQ(printed(AsnBool_print, AsnBool{0}), "FALSE");
    EXPECT_EQ(printed(AsnBool_print, AsnBool{1}), "TRUE");
    EXPECT_EQ(printed(AsnBool_print, AsnBool{2}), "TRUE");
    EXPECT_EQ(printed(AsnInt_print, AsnInt{INT32_MIN}), "-2147483648");
    EXPECT_EQ(printed(UAsnInt_print, UAsnInt{UINT32_MAX}), "4294967295");
    EXPECT_EQ(printed(AsnEnum_print, std::int32_t{-1}), "-1");
    EXPECT_EQ(printed(AsnNull_print, AsnNull{}), "NULL");
    EXPECT_EQ(printed(AsnReal_print, -1.5), "-1.50000000000000000E+00");
}

TEST(AsnPrint, BitStringsAsAWordAndBack)
{
    struct {
        std::vector<std::uint8_t> octets;
        std::uint32_t             bits;
        std::uint32_t             word;
        const char               *text;
        std::vector<std::uint8_t> back;
    } rows[] = {
        {{}, 0, 0, "0' Hex", {}},
        {{0x80}, 1, 1, "1' Hex", {0x80}},
        {{0xA5}, 8, 0xA5, "a5' Hex", {0xA5}},
        {{0xAB, 0xC0}, 12, 0xABC, "abc' Hex", {0xAB, 0xC0}},
        {{0xFF, 0xFF, 0xFF, 0xFF}, 32, 0xFFFFFFFF, "ffffffff' Hex", {0xFF, 0xFF, 0xFF, 0xFF}},
        {{0x92, 0x34, 0x56, 0x78, 0x80}, 33, 0x2468ACF1, "2468acf1' Hex", {0x12, 0x34, 0x56, 0x78, 0x80}},
        {{0x11, 0x22, 0x33, 0x44, 0x55}, 40, 0x22334455, "22334455' Hex", {0x00, 0x22, 0x33, 0x44, 0x55}},
    };
    for (auto &row : rows) {
        SCOPED_TRACE(row.text);
        auto bits = string_of<AsnBits>(row.octets, row.bits);
        EXPECT_EQ(AsnBits_toWord(&bits), row.word);
        EXPECT_EQ(printed(AsnBits_print, bits), row.text);
        AsnBits_fromWord(&bits, row.word);
        EXPECT_EQ(row.octets, row.back);
    }
}

TEST(AsnPrint, OctetStringsWithTheirCharacters)
{
    std::vector<std::uint8_t> octets = {0x41, 0x00, 0x7E, 0x7F, 0xE9};
    EXPECT_EQ(printed(AsnOcts_print, string_of<AsnOcts>(octets, 2)), "'4100'H -- \"A.\" -- ");
    EXPECT_EQ(printed(AsnOcts_print, string_of<AsnOcts>(octets, 5)), "'41007e7fe9'H -- \"A.~..\" -- ");
    EXPECT_EQ(printed(AsnOcts_print, AsnOcts{0, nullptr}), "''H -- \"\" -- ");
    std::vector<std::uint8_t> longest(167, 0x20);
    EXPECT_EQ(printed(AsnOcts_print, string_of<AsnOcts>(longest, 166)).size(), 511u);
    EXPECT_DEATH(printed(AsnOcts_print, string_of<AsnOcts>(longest, 167)), "Assertion failed: .*, file asn_print");
}

TEST(AsnPrint, ObjectIdentifiers)
{
    struct {
        std::vector<std::uint8_t> octets;
        const char               *text;
    } rows[] = {
        {{}, "{}"},
        {{0x2A, 0x03}, "{1 2 3}"},
        {{0x88, 0x37}, "{2 999}"},
        {{0x00}, "{0 0}"},
        {{0x27}, "{0 39}"},
        {{0x50}, "{2 0}"},
        {{0x04, 0x00, 0x00, 0x01, 0x00}, "{0 4 0 0 1 0}"},
        {{0x2A, 0x86, 0x48}, "{1 2 840}"},
        {{0x2A, 0x86}, "{1 2 6}"}, // ends in the middle of a subidentifier
    };
    for (auto &row : rows)
        EXPECT_EQ(printed(AsnOid_print, string_of<AsnOid>(row.octets, static_cast<AsnLen>(row.octets.size()))),
                  row.text);
}

TEST(AsnPrint, AnyByItsOwnFunction)
{
    AnyInfo info = {};
    int     value;
    EXPECT_EQ(printed(AsnAny_print, AsnAny{nullptr, &value}), " -- ERROR: malformed ANY value --");
    EXPECT_EQ(printed(AsnAny_print, AsnAny{&info, &value}), " -- ERROR: malformed ANY value --");
    info.Print = [](AsnTextBuf *buffer, void *at) { AsnTextBufPut(buffer, at ? "any" : "none"); };
    EXPECT_EQ(printed(AsnAny_print, AsnAny{&info, &value}), "any");
}

TEST(AsnTextBuf, GrowsByStepsAsSoonAsItIsFull)
{
    const struct {
        const char   *name;
        std::uint32_t size, characters, capacity;
    } rows[] = {
        {"empty", 8, 0, 8},          {"one less than full", 8, 7, 8}, {"full", 8, 8, 16},
        {"one step more", 8, 16, 24}, {"several steps", 8, 100, 104},  {"steps of one", 1, 3, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        text_buffer       whole(row.size), pieces(row.size);
        const std::string text(row.characters, 'x');
        AsnTextBufPut(&whole, text.c_str());
        for (std::uint32_t n = 0; n < row.characters; ++n)
            AsnTextBufPut(&pieces, "x");
        for (const text_buffer *buffer : {&whole, &pieces}) {
            EXPECT_EQ(buffer->text, text);
            EXPECT_EQ(buffer->capacity, row.capacity);
            EXPECT_EQ(buffer->length, row.characters);
            EXPECT_EQ(buffer->step, row.size);
        }
        AsnTextBufReset(&whole);
        EXPECT_EQ(whole.capacity, row.size);
        EXPECT_STREQ(whole.text, "");
        EXPECT_EQ(whole.length, 0u);
    }
}

TEST(AsnTextBuf, HoldsWithoutTextOrArgument)
{
    AsnTextBuf none;
    EXPECT_EQ(AsnTextBufInit(&none, 0), 0);
    AsnTextBufPut(&none, "x");
    none.length = 3;
    AsnTextBufReset(&none);
    EXPECT_EQ(none.text, nullptr);
    EXPECT_EQ(none.length, 0u);
    AsnTextBufFree(&none);
    text_buffer some;
    AsnTextBufPut(&some, "a");
    AsnTextBufPut(&some, nullptr);
    EXPECT_STREQ(some.text, "a");
}

TEST(AsnTextBuf, IndentsBelowItsLimit)
{
    text_buffer buffer;
    AsnIndent(&buffer, 0);
    EXPECT_STREQ(buffer.text, "");
    AsnIndent(&buffer, 511);
    EXPECT_EQ(buffer.text, std::string(511, ' '));
    EXPECT_DEATH(AsnIndent(&buffer, 512), "Assertion failed: .*, file asn_print");
}

TEST(AsnPrint, JoinsMembersWithLeadingCommas)
{
    text_buffer buffer;
    AsnPrintSequence(&buffer);
    bool first = true;
    AsnPrintMaybeFirst(&buffer, 4, "a ", &first);
    AsnPrintMaybeFirst(&buffer, 4, "b ", &first);
    AsnPrintNext(&buffer, 4, "c ");
    AsnPrintEnd(&buffer, 4);
    EXPECT_STREQ(buffer.text, "{ -- SEQUENCE --\n        a ,\n        b ,\n        c \n    }");
    AsnTextBufReset(&buffer);
    AsnPrintList(&buffer);
    AsnPrintFirst(&buffer, 0, "");
    AsnPrintEnd(&buffer, 0);
    EXPECT_STREQ(buffer.text, "{ -- SEQUENCE OF -- \n    \n}");
}

int copy_format(char *text, const char *format, ...)
{
    std::strcpy(text, format);
    return 0;
}

TEST(AsnPrint, NumbersGoThroughTheSprintfSlot)
{
    const report_catcher slots;
    dll_info_version.sprintf = copy_format;
    EXPECT_EQ(printed(AsnInt_print, AsnInt{5}), "%d");
    EXPECT_EQ(printed(UAsnInt_print, UAsnInt{5}), "%u");
}

} // namespace
