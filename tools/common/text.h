// Numbers, octets and names as people type and read them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace solvane::tools {

using octets = std::vector<std::uint8_t>;

/// A whole number in decimal or with 0x in hexadecimal; nothing when `text` is not exactly that or too large.
std::optional<std::uint64_t> parse_number(std::string_view text);

/// The same with a sign allowed, cut to the 32 bits that a trace argument has.
std::optional<std::uint32_t> parse_word(std::string_view text);

struct hex_result {
    octets      value;
    std::size_t bad_column = 0; ///< counted from 1; 0 when all of it was read
    std::string complaint;
};

/// Pairs of hex digits in either case; blanks, ':', ',' and a leading 0x between pairs are passed over.
hex_result parse_hex(std::string_view text);

/// Lower case, two digits an octet, nothing between.
std::string to_hex(std::span<const std::uint8_t> value);

/// One line of printable text: control characters become \n, \t, \r or \xHH, a backslash stays as it is.
std::string one_line(std::string_view text);

/// `one_line` that can be read back by `unquoted`: in double quotes, with \" and \\ .
std::string quoted(std::string_view text);

std::string lower_case(std::string_view text);

/// Whether `text` matches: with * or ? in `pattern` as a whole, otherwise wherever it stands; case is ignored.
bool matches(std::string_view text, const std::string &pattern);

/// How many edits lead from one name to the other, stopping above `limit`; case and '_' count half an edit.
unsigned distance(std::string_view one, std::string_view other, unsigned limit);

/// Collects the names nearest to a wanted one, for "did you mean".
class suggestions {
public:
    explicit suggestions(std::string wanted) : wanted_(std::move(wanted)) {}
    void offer(std::string_view name);
    /// "; did you mean a, b or c?", or nothing.
    std::string text() const;

private:
    struct near_name {
        unsigned    edits;
        std::string name;
    };
    std::string            wanted_;
    std::vector<near_name> best_;
};

} // namespace solvane::tools
