#include "text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include <fnmatch.h>
#include <fmt/format.h>

namespace solvane::tools {

namespace {

constexpr std::size_t most_suggestions = 3;

int hex_digit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

bool is_separator(char c)
{
    return c == ' ' || c == '\t' || c == ':' || c == ',' || c == '\r' || c == '\n';
}

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::string escaped(std::string_view text, std::string_view also)
{
    std::string out;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        if (also.find(c) != std::string_view::npos) {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else if (octet < 0x20 || octet == 0x7F) {
            out += fmt::format("\\x{:02x}", octet);
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

std::optional<std::uint64_t> parse_number(std::string_view text)
{
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::uint32_t> parse_word(std::string_view text)
{
    const bool negative = text.starts_with('-');
    const auto value = parse_number(negative ? text.substr(1) : text);
    if (!value || *value > (negative ? UINT64_C(0x80000000) : UINT64_C(0xFFFFFFFF))) {
        return std::nullopt;
    }
    const auto word = static_cast<std::uint32_t>(*value);
    return negative ? 0U - word : word;
}

hex_result parse_hex(std::string_view text)
{
    hex_result result;
    int        high = -1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool prefix = high < 0 && text[i] == '0' && i + 1 < text.size() && (text[i + 1] | 0x20) == 'x';
        if (prefix) {
            ++i;
            continue;
        }
        if (high < 0 && is_separator(text[i])) {
            continue;
        }
        const int digit = hex_digit(text[i]);
        if (digit < 0) {
            result.bad_column = i + 1;
            result.complaint = high < 0 ? "not a hex digit" : "half an octet";
            return result;
        }
        if (high < 0) {
            high = digit;
        } else {
            result.value.push_back(static_cast<std::uint8_t>(high << 4 | digit));
            high = -1;
        }
    }
    if (high >= 0) {
        result.bad_column = text.size();
        result.complaint = "half an octet";
    }
    return result;
}

std::string to_hex(std::span<const std::uint8_t> value)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string           out;
    out.reserve(value.size() * 2);
    for (const std::uint8_t octet : value) {
        out += digits[octet >> 4];
        out += digits[octet & 15];
    }
    return out;
}

std::string one_line(std::string_view text)
{
    return escaped(text, "");
}

std::string quoted(std::string_view text)
{
    return '"' + escaped(text, "\"\\") + '"';
}

std::string lower_case(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), lower);
    return out;
}

bool matches(std::string_view text, const std::string &pattern)
{
    const std::string small = lower_case(text);
    const std::string wanted = lower_case(pattern);
    if (wanted.find_first_of("*?") == std::string::npos) {
        return small.find(wanted) != std::string::npos;
    }
    return fnmatch(wanted.c_str(), small.c_str(), 0) == 0;
}

/* Edits are counted in halves so that a difference in case alone is the nearest of all. */
unsigned distance(std::string_view one, std::string_view other, unsigned limit)
{
    const std::size_t longer = std::max(one.size(), other.size());
    if (longer - std::min(one.size(), other.size()) > limit) {
        return limit + 1;
    }
    std::vector<unsigned> row(other.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) {
        row[j] = static_cast<unsigned>(2 * j);
    }
    for (std::size_t i = 1; i <= one.size(); ++i) {
        unsigned diagonal = row[0];
        row[0] = static_cast<unsigned>(2 * i);
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const bool     same = one[i - 1] == other[j - 1];
            const bool     alike = lower(one[i - 1]) == lower(other[j - 1]);
            const unsigned change = diagonal + (same ? 0U : alike ? 1U : 2U);
            const unsigned drop_one = row[j] + (one[i - 1] == '_' ? 1U : 2U);
            const unsigned drop_other = row[j - 1] + (other[j - 1] == '_' ? 1U : 2U);
            diagonal = row[j];
            row[j] = std::min({change, drop_one, drop_other});
        }
    }
    return (row.back() + 1) / 2;
}

void suggestions::offer(std::string_view name)
{
    const unsigned limit = std::max(2U, static_cast<unsigned>(wanted_.size()) / 4);
    const unsigned edits = distance(wanted_, name, limit);
    const bool     known = std::any_of(best_.begin(), best_.end(), [&](const auto &b) { return b.name == name; });
    if (edits > limit || name.empty() || known) {
        return;
    }
    const auto behind = std::find_if(best_.begin(), best_.end(), [&](const auto &b) { return b.edits > edits; });
    best_.insert(behind, {edits, std::string(name)});
    if (best_.size() > most_suggestions) {
        best_.pop_back();
    }
}

std::string suggestions::text() const
{
    std::string out;
    for (std::size_t i = 0; i < best_.size(); ++i) {
        out += i == 0 ? "; did you mean " : i + 1 == best_.size() ? " or " : ", ";
        out += best_[i].name;
    }
    return out.empty() ? out : out + "?";
}

} // namespace solvane::tools
