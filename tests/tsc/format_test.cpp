// One word through one conversion: the same text as the C library's, and a safe one where the library's would
// depend on what the word points to.
#include <clocale>
#include <cstdarg>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tsc_format.h"

namespace {

/// Formats into a room of exactly TSC_RESULT_MAX characters, so that a longer result is caught.
std::string format(const std::string &conversion, std::uint32_t word)
{
    std::vector<char> room(TSC_RESULT_MAX);
    return {room.data(), tsc_format_word(room.data(), conversion, word)};
}

std::string print(const char *conversion, ...)
{
    char         text[TSC_RESULT_MAX + 1];
    std::va_list words;
    va_start(words, conversion);
    const int length = std::vsnprintf(text, sizeof text, conversion, words);
    va_end(words);
    return length < 0 ? "" : text;
}

/// What the C library makes of the word where `int` and `long` are 32 bits: the argument has the type that the
/// conversion asks for on this build.
std::string library_text(const std::string &conversion, std::uint32_t word)
{
    const char letter = conversion.back();
    const bool is_long = conversion.find('l') != std::string::npos;
    const auto number = static_cast<std::int32_t>(word);
    if (letter == 'p')
        return print(conversion.c_str(), reinterpret_cast<void *>(static_cast<std::uintptr_t>(word)));
    if (letter == 'd' || letter == 'i')
        return is_long ? print(conversion.c_str(), static_cast<long>(number)) : print(conversion.c_str(), number);
    if (is_long && letter != 'c' && letter != 'C')
        return print(conversion.c_str(), static_cast<unsigned long>(word));
    return print(conversion.c_str(), word);
}

constexpr std::uint32_t telling_words[] = {0,          1,          7,          8,          9,         10,
                                           65,         99,         100,        127,        128,       255,
                                           256,        0x7FFF,     0x8000,     0xFFFF,     0x10000,   0x18000,
                                           0xFF80,     123456789,  0x7FFFFFFF, 0x80000000, 0x80000001, 0xDEADBEEF,
                                           0xFFFFFF80, 0xFFFF8000, 0xFFFFFFFF, 4000000000};

struct conversion_source {
    std::mt19937 random;

    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(random()) % end; }

    std::string conversion()
    {
        std::string text = "%";
        for (std::uint32_t count = below(4); count != 0; --count)
            text += "-+ #0'"[below(6)];
        if (below(2) == 0)
            text += std::to_string(1 + below(below(8) == 0 ? 140 : 20));
        if (below(3) == 0)
            text.append(1, '.').append(below(4) == 0 ? "" : std::to_string(below(below(8) == 0 ? 120 : 15)));
        constexpr const char *lengths[] = {"", "", "", "h", "hh", "l"};
        text += lengths[below(6)];
        return text + "diouxXcCp"[below(9)];
    }

    std::uint32_t word()
    {
        return below(2) == 0 ? telling_words[below(std::size(telling_words))] : static_cast<std::uint32_t>(random());
    }
};

TEST(Format, RandomConversionsAreTheLibrarys)
{
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    conversion_source source{std::mt19937(seed)};
    for (int count = 0; count < 200000 && !HasFailure(); ++count) {
        const std::string   conversion = source.conversion();
        const std::uint32_t word = source.word();
        EXPECT_EQ(format(conversion, word), library_text(conversion, word)) << conversion << " of " << word;
    }
}

TEST(Format, BareConversionsAreTheLibrarys)
{
    for (const char letter : std::string("diouxXcp"))
        for (const std::uint32_t word : telling_words) {
            const std::string conversion = {'%', letter};
            EXPECT_EQ(format(conversion, word), library_text(conversion, word)) << conversion << " of " << word;
        }
}

TEST(Format, WideCharactersFollowTheLocale)
{
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    EXPECT_EQ(format("%C", 'A'), "A");
    EXPECT_EQ(format("%C", 0x20AC), "");
    if (std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
        EXPECT_EQ(format("%C", 0x20AC), "\xE2\x82\xAC");
        EXPECT_EQ(format("%5lc", 0x20AC), "  \xE2\x82\xAC");
    }
    std::setlocale(LC_CTYPE, before.c_str());
}

struct format_case {
    const char   *conversion;
    std::uint32_t word;
    std::string   should;
};

void check_cases(const std::vector<format_case> &cases)
{
    for (const format_case &row : cases)
        EXPECT_EQ(format(row.conversion, row.word), row.should) << row.conversion;
}

TEST(Format, LongerLengthsTakeOneWord)
{
    check_cases({
        {"%lld", 0xFFFFFFFF, "-1"},
        {"%llu", 0xFFFFFFFF, "4294967295"},
        {"%jx", 0xDEADBEEF, "deadbeef"},
        {"%qd", 5, "5"},
        {"%Ld", 5, "5"},
        {"%zu", 0x80000000, "2147483648"},
        {"%zd", 0x80000000, "-2147483648"},
        {"%td", 0xFFFFFFFE, "-2"},
        {"%08llX", 0xBEEF, "0000BEEF"},
    });
}

TEST(Format, StrayConversionsAreSafe)
{
    check_cases({
        {"%s of c", 0xDEAD, "0xdead of c"},
        {"%-8s|c", 0xDEAD, "0xdead  |c"},
        {"%8.2s, x", 0x12, "    0x12, x"},
        {"%s: i", 0, "0: i"},
        {"%ls d", 0x10, "0x10 d"},
        {"%S d", 0x10, "0x10 d"},
        {"%n d", 0x10, "0x10 d"},
        {"%hhnd", 0x10, "0x10d"},
        {"%f d", 0x3F800000, "0x3f800000 d"},
        {"%+08.3f u", 0x3F800000, "0x3f800000 u"},
        {"%Lf x", 1, "0x1 x"},
        {"%a, %", 1, "0x1, %"},
        {"%g G c", 255, "0xff G c"},
        {"%*d", 5, "%*d"},
        {"%-*.*d", 5, "%-*.*d"},
        {"%.*x", 5, "%.*x"},
        {"%y d", 5, "%y d"},
        {"%1$d", 5, "%1$d"},
        {"%5 d", 5, "%5 d"},
        {"%lhd", 5, "%lhd"},
        {"%m d", 5, "%m d"},
        {"%.-5d", 5, "%.-5d"},
        {"%\xFF\x80 d", 5, "%\xFF\x80 d"},
        {"%", 5, "%"},
    });
}

TEST(Format, ResultKeepsItsFirstCharacters)
{
    check_cases({
        {"%500d", 5, std::string(128, ' ')},
        {"%-500d", 5, std::string("5").append(127, ' ')},
        {"%0500d", 5, std::string(128, '0')},
        {"%+.500d", 5, std::string("+").append(127, '0')},
        {"%128d", 42, std::string(126, ' ') + "42"},
        {"%129d", 42, std::string(127, ' ') + "4"},
        {"%-200c", 'a', std::string("a").append(127, ' ')},
        {"%200c", 'a', std::string(128, ' ')},
        {"%200p", 1, std::string(128, ' ')},
        {"%99999999999999999999d", 5, std::string(128, ' ')},
        {"%.4294967297x", 5, std::string(128, '0')},
        {"%200s-d", 5, std::string(128, ' ')},
    });
    const std::string longest = std::string("%s").append(TSC_CONVERSION_MAX - 3, '-') + "d";
    EXPECT_EQ(format(longest, 0xFFFFFFFF), std::string("0xffffffff").append(longest, 2).substr(0, TSC_RESULT_MAX));
    const std::string flags = std::string("%").append(TSC_CONVERSION_MAX - 2, '\'') + "d";
    EXPECT_EQ(format(flags, 7), "7");
    const std::string pointer = std::string("%").append(TSC_CONVERSION_MAX - 2, '-') + "p";
    EXPECT_EQ(format(pointer, 7), library_text("%p", 7));
}

TEST(Format, ZeroCharacterEndsTheResult)
{
    check_cases({
        {"%c", 0, ""},
        {"%c", 0x100, ""},
        {"%4c", 0, "   "},
        {"%-4c", 0, ""},
        {"%C", 0, ""},
        {"%lc", 0, ""},
    });
}

TEST(Format, AnyConversionTextStaysInItsRoom)
{
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    conversion_source     source{std::mt19937(seed)};
    constexpr std::string_view alphabet = "0123456789-+ #'I.*$hljztqLZsSnfFeEgGaAmby,\x80\xFF";
    for (int count = 0; count < 100000; ++count) {
        std::string conversion = "%";
        for (std::uint32_t left = source.below(TSC_CONVERSION_MAX - 1); left != 0; --left)
            conversion += alphabet[source.below(alphabet.size())];
        conversion += "CXcdiopux"[source.below(9)];
        EXPECT_LE(format(conversion, source.word()).size(), TSC_RESULT_MAX);
    }
}

} // namespace
