// Lines of both layouts, from formats and arguments of all kinds, with their edges and failures.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sample_table.h"
#include "tsc_decode.h"
#include "tsc_format.h"

namespace {

constexpr char unknown_id[] = "ERROR: can not find in tsc_db!!!";
constexpr char invalid_data[] = "ERROR: invalid trace id integer data!!!";
const std::string mark = " -- ERROR: arg_num is not match!!! -- ";

/// A table with one format, under id 1.
sample_table table_of(const std::string &format)
{
    sample_table table;
    table.add_module(0, "::SYSTEM");
    table.add_item(1, format, "unit.c", 12);
    table.close();
    return table;
}

using octets = std::vector<std::uint8_t>;

void put_big_endian(octets *data, std::uint32_t word)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        data->push_back(static_cast<std::uint8_t>(word >> shift));
}

octets string_trace(std::uint32_t id, const std::string &arguments)
{
    octets data;
    put_big_endian(&data, id);
    put_big_endian(&data, static_cast<std::uint32_t>(arguments.size()));
    data.insert(data.end(), arguments.begin(), arguments.end());
    return data;
}

octets integer_trace(std::uint32_t id, const std::vector<std::uint32_t> &words)
{
    octets data(4 + 4 * words.size());
    std::memcpy(data.data(), &id, 4);
    if (!words.empty())
        std::memcpy(data.data() + 4, words.data(), 4 * words.size());
    return data;
}

/// Decodes from the end of a block of its own: unaligned by `shift`, and nothing readable behind it.
std::string string_line(const sample_table &table, const octets &trace, tsc_trace_info *info = nullptr,
                        int shift = 0)
{
    octets data(static_cast<std::size_t>(shift));
    data.insert(data.end(), trace.begin(), trace.end());
    data.shrink_to_fit();
    return tsc_decode_string_layout(table.view(), data.data() + shift, info);
}

std::string integer_line(const sample_table &table, const octets &trace, tsc_trace_info *info = nullptr,
                         int shift = 0)
{
    octets data(static_cast<std::size_t>(shift));
    data.insert(data.end(), trace.begin(), trace.end());
    data.shrink_to_fit();
    const auto length = static_cast<std::uint32_t>(trace.size());
    return tsc_decode_integer_layout(table.view(), data.data() + shift, length, info);
}

std::string string_line(const std::string &format, const std::string &arguments)
{
    return string_line(table_of(format), string_trace(1, arguments));
}

std::string integer_line(const std::string &format, const std::vector<std::uint32_t> &words)
{
    return integer_line(table_of(format), integer_trace(1, words));
}

void expect_unknown(const tsc_trace_info &info)
{
    EXPECT_EQ(info.mod_row, 0xFFFFFFFFu);
    EXPECT_EQ(info.mod_name, nullptr);
    EXPECT_EQ(info.file, nullptr);
    EXPECT_EQ(info.line, 0);
}

constexpr tsc_trace_info dirty_info = {7, "dirty", "dirty.c", 7};

// ---------------------------------------------------------------------------------------- string layout

struct string_case {
    const char *name, *format;
    std::string arguments, should;
};

TEST(StringLayout, Lines)
{
    const std::vector<string_case> cases = {
        {"nothing", "", "", ""},
        {"plain text", "commlib: com_tcp_open.", "", "commlib: com_tcp_open."},
        {"newline and marker are text", "idx=0x%x@TAG<idx>\n", "2a", "idx=0x2a@TAG<idx>\n"},
        {"two fields", "num(%d),client(%d)", "3\1" "5", "num(3),client(5)"},
        {"last field ended too", "num(%d),client(%d)", "3\1" "5\1", "num(3),client(5)"},
        {"every letter", "%C%X%c%d%i%o%p%s%u%x",
         "0\1" "1\1" "2\1" "3\1" "4\1" "5\1" "6\1" "7\1" "8\1" "9", "0123456789"},
        {"flags and width dropped", "[%08x][%-5.3ld]", "ab\1" "7", "[ab][7]"},
        {"star dropped", "%*d.", "7", "7."},
        {"text between dropped", "%f ms, %d", "1.5", "1.5, ?" + mark},
        {"unknown letters skipped", "a%y%", "z", "a%"},
        {"eight-bit characters skipped", "%\xE9\xFF\x80" "d|", "z", "z|"},
        {"percent", "100%%", "7", "100%"},
        {"percent behind flags", "%-%", "", "%"},
        {"percent behind text", "50% -5%, %d", "7", "50%, 7"},
        {"percent takes nothing", "%%%d%%", "7", "%7%"},
        {"lone percent at the end", "end %", "7", "end "},
        {"unfinished at the end", "end %08l", "7", "end "},
        {"unfinished, nothing left", "end %08l", "", "end "},
        {"empty field", "[%d][%d]", "\1" "5", "[][5]"},
        {"two empty fields", "[%d][%d]", "\1\1", "[][]"},
        {"only a field's end", "[%d]", "\1", "[]"},
        {"none for one", "[%d]", "", "[?]" + mark},
        {"ended field, one more wanted", "[%d][%d]", "3\1", "[3][?]" + mark},
        {"one for three", "%d %d %d", "3", "3 ? ?" + mark},
        {"missing before unfinished", "%d %", "", "? " + mark},
        {"too many", "[%d]", "3\1" "4\1" "5", "[3]"},
        {"arguments of a plain line", "plain", "3\1" "4", "plain"},
        {"percent in a field is text", "%s|%d", "%d\1" "7", "%d|7"},
        {"eight-bit field", "%s", "\xE9\xFF\x80", "\xE9\xFF\x80"},
        {"zero in a field ends the text", "a%sb", std::string("x\0y", 3), "ax"},
        {"the mark stands behind that end", "a%sb%d", std::string("x\0y", 3), "ax" + mark},
        {"long stretches", "0123456789abcdef%s0123456789abcdef0", "0123456789abcdef012345678",
         "0123456789abcdef0123456789abcdef0123456780123456789abcdef0"},
    };
    for (const string_case &row : cases)
        EXPECT_EQ(string_line(row.format, row.arguments), row.should) << row.name;
}

TEST(StringLayout, StretchesOfEveryLengthAreCopied)
{
    std::string text;
    for (int length = 0; length < 100; ++length) {
        EXPECT_EQ(string_line(text, ""), text);
        EXPECT_EQ(string_line(text + "%d" + text, text), text + (text.empty() ? "?" + mark : text + text));
        text += static_cast<char>('0' + length % 75);
        if (text.back() == '%')
            text.back() = '!';
    }
}

/// A line put together from whole stretches of the format: `ends` holds what ends a conversion, and
/// `text_of(n, conversion)` gives the text of the n-th argument.
template <class TextOf>
std::string line_by_stretches(const std::string &format, const char *ends, std::size_t no_arguments, TextOf text_of)
{
    std::string line;
    std::size_t next = 0;
    std::size_t text = 0;
    std::size_t percent = 0;
    while ((percent = format.find('%', text)) != std::string::npos) {
        line += format.substr(text, percent - text);
        const std::size_t end = format.find_first_of(ends, percent + 1);
        text = end == std::string::npos ? format.size() : end + 1;
        if (end == std::string::npos)
            break;
        if (format[end] == '%')
            line += '%';
        else
            line += next++ < no_arguments ? text_of(next - 1, format.substr(percent, text - percent)) : "?";
    }
    return line + format.substr(text) + (next > no_arguments ? mark : "");
}

struct random_source {
    std::mt19937 random;

    std::uint32_t below(std::size_t end) { return static_cast<std::uint32_t>(random() % end); }

    std::string text(std::string_view alphabet, std::size_t longest)
    {
        std::string text;
        for (std::size_t left = below(longest + 1); left != 0; --left)
            text += alphabet[below(alphabet.size())];
        return text;
    }
};

constexpr std::string_view format_alphabet = "%%%%%CXcdiopsuxfnl*$#-+. 0123456789abAB@<>,\x80\xFF";

TEST(StringLayout, RandomFormats)
{
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source source{std::mt19937(seed)};
    for (int count = 0; count < 5000 && !HasFailure(); ++count) {
        const std::string        format = source.text(format_alphabet, 120);
        std::vector<std::string> fields;
        std::string              arguments;
        for (std::uint32_t left = source.below(8); left != 0; --left) {
            fields.push_back(source.text("abc%d1", 12));
            arguments += fields.back() + '\1';
        }
        if (!fields.empty() && !fields.back().empty() && source.below(2) == 0)
            arguments.pop_back();
        const auto text_of = [&](std::size_t field, const std::string &) { return fields[field]; };
        const auto should = line_by_stretches(format, "CXcdiopsux%", fields.size(), text_of);
        EXPECT_EQ(string_line(format, arguments), should) << format << "\n" << arguments;
    }
}

// --------------------------------------------------------------------------------------- integer layout

struct integer_case {
    const char                *name, *format;
    std::vector<std::uint32_t> words;
    std::string                should;
};

TEST(IntegerLayout, Lines)
{
    const std::vector<integer_case> cases = {
        {"nothing", "", {}, ""},
        {"plain text", "commlib: com_tcp_open.", {}, "commlib: com_tcp_open."},
        {"signed and unsigned", "%d %i %u", {0xFFFFFFFF, 0x80000000, 0xFFFFFFFF}, "-1 -2147483648 4294967295"},
        {"bases and characters", "%x %X %o %c", {0xBEEF, 0xBEEF, 8, 'a'}, "beef BEEF 10 a"},
        {"flags and width kept", "[%08x][%-5d][%+d]", {0xAB, 7, 7}, "[000000ab][7    ][+7]"},
        {"lengths of 32 bits and below", "%ld %lu %hd %hhu", {0xFFFFFFFF, 0xFFFFFFFF, 0x18000, 0x1FF},
         "-1 4294967295 -32768 255"},
        {"blank is a flag", "100% done", {5}, "100 5one"},
        {"percent", "100%%", {7}, "100%"},
        {"percent behind flags", "%-%", {}, "%"},
        {"lone percent at the end", "end %", {7}, "end "},
        {"no end for %s", "name %s", {7}, "name "},
        {"%s runs on to a percent", "%s, n=%d", {7}, "%d"},
        {"%s runs on to a letter", "%s of %d", {7, 8}, "0x7 of 8"},
        {"%s takes the word with a letter", "%s and c", {7, 8}, "0x7 and c"},
        {"%f runs on to a letter", "%f ms, n=%d", {7, 8}, "%d"},
        {"%f takes the word with a letter", "%5.1f dB, %d", {7, 8}, "  0x7 dB, 8"},
        {"none for two", "%d %d", {}, "? ?" + mark},
        {"one for two", "%d %d", {5}, "5 ?" + mark},
        {"too many", "%d", {5, 6, 7}, "5"},
        {"zero character", "[%c]", {0}, "[]"},
    };
    for (const integer_case &row : cases)
        EXPECT_EQ(integer_line(row.format, row.words), row.should) << row.name;
}

/// Whole lines against the C library, for formats in which every conversion is one that it knows.
TEST(IntegerLayout, RandomLinesAreTheLibrarys)
{
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source         source{std::mt19937(seed)};
    constexpr const char *conversions[] = {"%d",   "%u",   "%x",   "%X",  "%i",  "%o",
                                           "%08x", "%-6d", "%+5i", "%#x", "%hd", "%.4u"};
    for (int count = 0; count < 20000 && !HasFailure(); ++count) {
        std::string                format = source.text("abc: =,\n<>@", 40);
        std::vector<std::uint32_t> words;
        for (std::uint32_t left = source.below(5); left != 0; --left) {
            format += conversions[source.below(std::size(conversions))] + source.text("abc: =,", 30);
            if (source.below(4) == 0)
                format += "%%";
            words.push_back(static_cast<std::uint32_t>(source.random() >> source.below(32)));
        }
        const std::string line = integer_line(format, words);
        words.resize(4);
        char should[TSC_LINE_SIZE];
        std::snprintf(should, sizeof should, format.c_str(), words[0], words[1], words[2], words[3]);
        EXPECT_EQ(line, should) << format;
    }
}

TEST(IntegerLayout, RandomFormats)
{
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source source{std::mt19937(seed)};
    for (int count = 0; count < 5000 && !HasFailure(); ++count) {
        const std::string          format = source.text(format_alphabet, 120);
        std::vector<std::uint32_t> words(source.below(5));
        for (std::uint32_t &word : words)
            word = static_cast<std::uint32_t>(source.random());
        const auto text_of = [&](std::size_t word, const std::string &conversion) {
            char room[TSC_RESULT_MAX];
            return std::string(room, tsc_format_word(room, conversion, words[word]));
        };
        const auto should = line_by_stretches(format, "CXcdiopux%", words.size(), text_of);
        EXPECT_EQ(integer_line(format, words), should) << format;
    }
}

// ---------------------------------------------------------------------------------- failures and records

TEST(Decode, UnknownIdGivesTextAndDefaultInfo)
{
    const sample_table table = table_of("text");
    for (const std::uint32_t id : {2u, 0x80000u, 0xFFFFFFFEu}) {
        tsc_trace_info info = dirty_info;
        EXPECT_EQ(string_line(table, string_trace(id, "1"), &info), unknown_id);
        expect_unknown(info);
        info = dirty_info;
        EXPECT_EQ(integer_line(table, integer_trace(id, {1}), &info), unknown_id);
        expect_unknown(info);
        EXPECT_EQ(string_line(table, string_trace(id, "1")), unknown_id);
        EXPECT_EQ(integer_line(table, integer_trace(id, {1})), unknown_id);
    }
}

TEST(Decode, InvalidLengthComesBeforeAllElse)
{
    const sample_table table = table_of("text");
    octets             trace = integer_trace(1, {5});
    for (const std::uint32_t length : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 0xFFFFFFFFu}) {
        tsc_trace_info info = dirty_info;
        EXPECT_STREQ(tsc_decode_integer_layout(table.view(), trace.data(), length, &info), invalid_data) << length;
        expect_unknown(info);
        EXPECT_STREQ(tsc_decode_integer_layout({nullptr, nullptr}, nullptr, length, nullptr), invalid_data);
    }
    EXPECT_STREQ(tsc_decode_integer_layout(table.view(), trace.data(), 4, nullptr), "text");
}

TEST(Decode, InfoIsFilledEvenWhenArgumentsAreMissing)
{
    const sample_table table = table_of("%d");
    for (const bool integers : {false, true}) {
        tsc_trace_info    info = dirty_info;
        const std::string line = integers ? integer_line(table, integer_trace(1, {}), &info)
                                          : string_line(table, string_trace(1, ""), &info);
        EXPECT_EQ(line, "?" + mark);
        EXPECT_EQ(info.mod_row, 0u);
        EXPECT_STREQ(info.mod_name, "::SYSTEM");
        EXPECT_STREQ(info.file, "unit.c");
        EXPECT_EQ(info.line, 12);
    }
}

TEST(Decode, DataNeedNotBeAligned)
{
    const sample_table table = table_of("[%s %d]");
    for (int shift = 0; shift < 8; ++shift) {
        EXPECT_EQ(string_line(table, string_trace(1, "3\1" "5"), nullptr, shift), "[3 5]");
        EXPECT_EQ(integer_line(table_of("[%x %d]"), integer_trace(1, {0xABCD, 5}), nullptr, shift), "[abcd 5]");
    }
}

TEST(Decode, OneTextBufferServesBothLayouts)
{
    const sample_table table = table_of("line");
    const octets       one = string_trace(1, "");
    const octets       two = integer_trace(0, {});
    const char *const  first = tsc_decode_string_layout(table.view(), one.data(), nullptr);
    EXPECT_STREQ(first, "line");
    EXPECT_EQ(tsc_decode_integer_layout(table.view(), two.data(), 4, nullptr), first);
    EXPECT_STREQ(first, "");
}

// ------------------------------------------------------------------------------------------------ limits

TEST(Decode, LinesUpTo1023CharactersKeepTheirMark)
{
    for (const std::size_t length : {std::size_t{1000}, std::size_t{1022}, std::size_t{1023}}) {
        const std::string text(length - 1, 'a');
        EXPECT_EQ(string_line(text + "b", ""), text + "b");
        EXPECT_EQ(string_line("%s", text + "b"), text + "b");
        EXPECT_EQ(string_line(text + "%d", ""), text + "?" + mark);
        EXPECT_EQ(integer_line(text + "%d", {}), text + "?" + mark);
        EXPECT_EQ(integer_line(text + "%d", {7}), text + "7");
        EXPECT_EQ(integer_line(text + "%%", {7}), text + "%");
        EXPECT_EQ(integer_line(text.substr(127) + "%128d", {7}), text.substr(127) + std::string(127, ' ') + "7");
    }
}

const std::string line_overrun = assertion_text(R"(line->length \+ count < TSC_LINE_SIZE)");
const std::string conversion_overrun = assertion_text("length <= TSC_CONVERSION_MAX");

using DecodeDeathTest = testing::Test;

TEST(DecodeDeathTest, LongerLinesEndTheProcess)
{
    const std::string text(1023, 'a');
    EXPECT_DEATH(string_line(text + "b", ""), line_overrun);
    EXPECT_DEATH(string_line(std::string(5000, 'a'), ""), line_overrun);
    EXPECT_DEATH(string_line("%s", text + "b"), line_overrun);
    EXPECT_DEATH(string_line("%s", std::string(100000, 'b')), line_overrun);
    EXPECT_DEATH(string_line("%s%s", text + "\1" "b"), line_overrun);
    EXPECT_DEATH(string_line(text + "%d", ""), line_overrun);
    EXPECT_DEATH(string_line(text + "%%", ""), line_overrun);
    EXPECT_DEATH(integer_line(text + "%d", {}), line_overrun);
    EXPECT_DEATH(integer_line(text + "%d", {7}), line_overrun);
    EXPECT_DEATH(integer_line(text + "%500d", {7}), line_overrun);
    EXPECT_DEATH(integer_line(text.substr(0, 1022) + "%d", {42}), line_overrun);
}

TEST(DecodeDeathTest, CountThatTellsMoreThanALineTakesIsNotFollowed)
{
    octets trace = string_trace(1, std::string(1024, 'b'));
    std::memset(trace.data() + 4, 0xFF, 4);
    trace.shrink_to_fit();
    EXPECT_DEATH(string_line(table_of("%s"), trace), line_overrun);
}

TEST(DecodeDeathTest, ConversionTextsOf129CharactersEndTheProcess)
{
    const std::string longest = std::string("%").append(126, '0') + "d";
    const std::string longer = std::string("%").append(127, '0') + "d";
    EXPECT_EQ(integer_line(longest, {7}), "7");
    EXPECT_DEATH(integer_line(longer, {7}), conversion_overrun);
    EXPECT_DEATH(integer_line(std::string("%s").append(500, '-') + "d", {7}), conversion_overrun);
    EXPECT_EQ(integer_line(longer, {}), "?" + mark);
    EXPECT_EQ(integer_line(std::string("%").append(500, '0') + "%", {7}), "%");
    EXPECT_EQ(string_line(longer, "7"), "7");
}

TEST(DecodeDeathTest, AbsentAndTooSmallTablesEndTheProcess)
{
    sample_table   table = table_of("text");
    const octets   text = string_trace(1, ""), words = integer_trace(1, {});
    tsc_trace_info info;
    table.db_info.total = 1;
    EXPECT_DEATH(tsc_decode_string_layout({nullptr, nullptr}, text.data(), &info), assertion_text("db_info != NULL"));
    EXPECT_DEATH(tsc_decode_string_layout(table.view(), text.data(), &info), assertion_text("db_info->total >= 2"));
    EXPECT_DEATH(tsc_decode_integer_layout(table.view(), words.data(), 4, &info),
                 assertion_text("db_info->total >= 2"));
    EXPECT_DEATH(tsc_look_up(table.view(), 1, nullptr), assertion_text("db_info->total >= 2"));
    EXPECT_DEATH(tsc_look_up_full(table.view(), 1, nullptr), assertion_text("db_info->total >= 2"));
}

} // namespace
