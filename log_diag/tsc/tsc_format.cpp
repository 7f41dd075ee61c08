// One word through one conversion text: integers and characters directly, by the rules of ISO/IEC 9899:2011
// 7.21.6.1, and what belongs to the C library or its locale through the library, with a text of our making.
#include "tsc_format.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace {

/// A conversion text taken apart.
struct conversion_spec {
    std::string_view flags;
    std::uint32_t    width;
    std::int32_t     precision; /* -1: none */
    std::string_view length;
    char             letter;
    std::string_view rest; /* behind the letter */
};

/// The result so far, never longer than TSC_RESULT_MAX.
struct result_text {
    char         *out;
    std::uint32_t length;
};

void put_fill(result_text *result, char character, std::uint32_t count)
{
    count = std::min(count, TSC_RESULT_MAX - result->length);
    std::memset(result->out + result->length, character, count);
    result->length += count;
}

void put_text(result_text *result, std::string_view text)
{
    const std::uint32_t room = TSC_RESULT_MAX - result->length;
    const std::uint32_t count = std::min(static_cast<std::uint32_t>(text.size()), room);
    std::memcpy(result->out + result->length, text.data(), count);
    result->length += count;
}

/// Takes the characters off the text's front that are of a set.
std::string_view take_set(std::string_view *text, std::string_view set)
{
    const std::size_t      end = std::min(text->find_first_not_of(set), text->size());
    const std::string_view taken = text->substr(0, end);
    text->remove_prefix(end);
    return taken;
}

/// Takes a number off the text's front; none counts as 0, and a width or precision beyond any result as 9999.
std::uint32_t take_number(std::string_view *text)
{
    std::uint32_t number = 0;
    for (const char digit : take_set(text, "0123456789"))
        number = std::min(number * 10 + static_cast<std::uint32_t>(digit - '0'), UINT32_C(9999));
    return number;
}

std::string_view take_length(std::string_view *text)
{
    std::size_t count = 0;
    if (text->starts_with("hh") || text->starts_with("ll"))
        count = 2;
    else if (!text->empty() && std::string_view("hljztqLZ").find(text->front()) != std::string_view::npos)
        count = 1;
    const std::string_view taken = text->substr(0, count);
    text->remove_prefix(count);
    return taken;
}

conversion_spec take_apart(std::string_view conversion)
{
    conversion_spec  spec = {};
    std::string_view text = conversion.substr(1);
    spec.flags = take_set(&text, "-+ #0'I");
    spec.width = take_number(&text);
    spec.precision = -1;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        spec.precision = static_cast<std::int32_t>(take_number(&text));
    }
    spec.length = take_length(&text);
    spec.letter = text.empty() ? '\0' : text.front();
    spec.rest = text.substr(std::min<std::size_t>(text.size(), 1));
    return spec;
}

bool has_flag(const conversion_spec &spec, char flag)
{
    return spec.flags.find(flag) != std::string_view::npos;
}

bool is_signed(const conversion_spec &spec)
{
    return spec.letter == 'd' || spec.letter == 'i';
}

/// The word as the length narrows it: a value of 8, 16 or 32 bits, with its sign carried to 32 bits where it has one.
std::uint32_t narrow(const conversion_spec &spec, std::uint32_t word)
{
    if (spec.length == "hh")
        return is_signed(spec) ? static_cast<std::uint32_t>(static_cast<std::int8_t>(word)) : word & 0xFF;
    if (spec.length == "h")
        return is_signed(spec) ? static_cast<std::uint32_t>(static_cast<std::int16_t>(word)) : word & 0xFFFF;
    return word;
}

std::uint32_t write_digits(char *out, std::uint32_t value, int base)
{
    return static_cast<std::uint32_t>(std::to_chars(out, out + TSC_RESULT_MAX, value, base).ptr - out);
}

std::uint32_t write_hex_capitals(char *out, std::uint32_t value)
{
    const std::uint32_t count = write_digits(out, value, 16);
    for (char *digit = out; digit != out + count; ++digit)
        if (*digit >= 'a')
            *digit = static_cast<char>(*digit - 'a' + 'A');
    return count;
}

std::uint32_t write_signed(char *out, std::uint32_t value)
{
    const auto number = static_cast<std::int32_t>(value);
    return static_cast<std::uint32_t>(std::to_chars(out, out + TSC_RESULT_MAX, number).ptr - out);
}

std::uint32_t write_magnitude(char *out, char letter, std::uint32_t value)
{
    switch (letter) {
    case 'x':
        return write_digits(out, value, 16);
    case 'X':
        return write_hex_capitals(out, value);
    case 'o':
        return write_digits(out, value, 8);
    default:
        return write_digits(out, value, 10);
    }
}

/// What stands in front of the digits: a sign, or the mark of a base.
std::string_view number_prefix(const conversion_spec &spec, std::uint32_t value)
{
    if (is_signed(spec)) {
        if (static_cast<std::int32_t>(value) < 0)
            return "-";
        return has_flag(spec, '+') ? "+" : has_flag(spec, ' ') ? " " : "";
    }
    if (has_flag(spec, '#') && value != 0)
        return spec.letter == 'x' ? "0x" : spec.letter == 'X' ? "0X" : "";
    return "";
}

/// d i o u x X with everything: blanks, prefix, zeros, digits, blanks.
void put_number(result_text *result, const conversion_spec &spec, std::uint32_t word)
{
    const std::uint32_t    value = narrow(spec, word);
    const std::string_view prefix = number_prefix(spec, value);
    char                   digits[TSC_RESULT_MAX];
    std::uint32_t no_digits = write_magnitude(digits, spec.letter, prefix == "-" ? 0 - value : value);
    if (value == 0 && spec.precision == 0)
        no_digits = 0;

    const auto    least = static_cast<std::uint32_t>(std::max(spec.precision, 0));
    std::uint32_t no_zeros = least > no_digits ? least - no_digits : 0;
    if (spec.letter == 'o' && has_flag(spec, '#') && no_zeros == 0 && (no_digits == 0 || digits[0] != '0'))
        no_zeros = 1;

    const auto    body = static_cast<std::uint32_t>(prefix.size()) + no_zeros + no_digits;
    std::uint32_t no_blanks = spec.width > body ? spec.width - body : 0;
    const bool    left = has_flag(spec, '-');
    if (has_flag(spec, '0') && !left && spec.precision < 0) {
        no_zeros += no_blanks;
        no_blanks = 0;
    }
    put_fill(result, ' ', left ? 0 : no_blanks);
    put_text(result, prefix);
    put_fill(result, '0', no_zeros);
    put_text(result, {digits, no_digits});
    put_fill(result, ' ', left ? no_blanks : 0);
}

/// A zero ends the result where it stands.
void put_character(result_text *result, const conversion_spec &spec, std::uint32_t word)
{
    const auto          character = static_cast<char>(word);
    const std::uint32_t no_blanks = spec.width > 1 ? spec.width - 1 : 0;
    const bool          left = has_flag(spec, '-');
    put_fill(result, ' ', left ? 0 : no_blanks);
    if (character == 0)
        return;
    put_fill(result, character, 1);
    put_fill(result, ' ', left ? no_blanks : 0);
}

/// What the C library or its locale decides: pointers, wide characters, grouped and foreign digits.  The text is
/// made of checked pieces; its two `*` take width and precision, and a precision of -1 is none.
void put_by_library(result_text *result, const conversion_spec &spec, std::uint32_t word)
{
    const bool wide = spec.letter == 'C' || spec.letter == 'c';
    char       format[TSC_CONVERSION_MAX + sizeof "%*.*lc"];
    std::snprintf(format, sizeof format, "%%%.*s*.*%s%c", static_cast<int>(spec.flags.size()), spec.flags.data(),
                  wide ? "l" : "", wide ? 'c' : spec.letter);

    char       text[TSC_RESULT_MAX + 1];
    const auto width = static_cast<int>(spec.width);
    const int  precision = spec.precision;
    int        written;
    if (spec.letter == 'p')
        written = std::snprintf(text, sizeof text, format, width, precision,
                                reinterpret_cast<const void *>(static_cast<std::uintptr_t>(word)));
    else if (wide)
        written = std::snprintf(text, sizeof text, format, width, precision, static_cast<std::wint_t>(word));
    else
        written = std::snprintf(text, sizeof text, format, width, precision, narrow(spec, word));
    if (written >= 0)
        put_text(result, text);
}

/// Stands for what would take the word for an address or a floating-point number.
void put_hex(result_text *result, const conversion_spec &spec, std::uint32_t word)
{
    conversion_spec hex = spec;
    hex.flags = has_flag(spec, '-') ? "-#" : "#";
    hex.precision = -1;
    hex.length = "";
    hex.letter = 'x';
    put_number(result, hex, word);
    put_text(result, spec.rest);
}

std::uint32_t format_any(char *out, std::string_view conversion, std::uint32_t word)
{
    const conversion_spec spec = take_apart(conversion);
    result_text           result = {out, 0};
    switch (spec.letter) {
    case 'd': case 'i': case 'o': case 'u': case 'x': case 'X':
        if (has_flag(spec, '\'') || has_flag(spec, 'I'))
            put_by_library(&result, spec, word);
        else
            put_number(&result, spec, word);
        break;
    case 'c':
        if (spec.length == "l")
            put_by_library(&result, spec, word);
        else
            put_character(&result, spec, word);
        break;
    case 'C': case 'p':
        put_by_library(&result, spec, word);
        break;
    case 's': case 'S': case 'n':
    case 'a': case 'A': case 'e': case 'E': case 'f': case 'F': case 'g': case 'G':
        put_hex(&result, spec, word);
        break;
    default:
        put_text(&result, conversion);
        break;
    }
    return result.length;
}

} // namespace

/// The bare conversions are nearly all there are; they take the short way.
std::uint32_t tsc_format_word(char *out, std::string_view conversion, std::uint32_t word)
{
    if (conversion.size() != 2)
        return format_any(out, conversion, word);
    switch (conversion[1]) {
    case 'd': case 'i':
        return write_signed(out, word);
    case 'u': case 'x': case 'X': case 'o':
        return write_magnitude(out, conversion[1], word);
    default:
        return format_any(out, conversion, word);
    }
}
