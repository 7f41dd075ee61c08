// Lexer of the definition language.
#include "def/lex.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_word_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_word(char c) { return is_word_start(c) || is_digit(c); }
bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

/// Walks a text and keeps line and column.
struct reader {
    diagnostics     &diag;
    std::string_view text;
    place            where;
    std::size_t      at = 0;

    bool done() const { return at == text.size(); }
    char peek(std::size_t ahead = 0) const { return at + ahead < text.size() ? text[at + ahead] : '\0'; }

    char next()
    {
        const char c = text[at++];
        where.line += c == '\n';
        where.column = c == '\n' ? 1 : where.column + 1;
        return c;
    }

    void skip(std::size_t count)
    {
        while (count-- > 0 && !done())
            next();
    }
};

void skip_line_comment(reader &in)
{
    while (!in.done() && in.peek() != '\n')
        in.next();
}

void skip_block_comment(reader &in)
{
    const place start = in.where;
    for (in.skip(2); !in.done(); in.next()) {
        if (in.peek() == '*' && in.peek(1) == '/') {
            in.skip(2);
            return;
        }
    }
    in.diag.error(start, "the comment does not end");
}

void skip_blanks(reader &in)
{
    while (!in.done()) {
        if (is_blank(in.peek()))
            in.next();
        else if (in.peek() == '/' && in.peek(1) == '/')
            skip_line_comment(in);
        else if (in.peek() == '/' && in.peek(1) == '*')
            skip_block_comment(in);
        else
            return;
    }
}

std::string take_word(reader &in)
{
    std::string word;
    while (is_word(in.peek()))
        word += in.next();
    return word;
}

/// A leading 0 is not read as octal, as C would, but refused: it is a slip more often than meant.
token take_number(reader &in)
{
    token            t{token_kind::number, {}, 0, in.where, {}};
    t.text = take_word(in);
    std::string_view digits = t.text;
    const bool       hex = digits.starts_with("0x") || digits.starts_with("0X");
    if (hex)
        digits.remove_prefix(2);
    const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), t.number, hex ? 16 : 10);
    if (failed == std::errc::result_out_of_range)
        in.diag.error(t.where, fmt::format("'{}' does not fit 64 bits", t.text));
    else if (failed != std::errc() || end != digits.data() + digits.size())
        in.diag.error(t.where, fmt::format("'{}' is not a number: numbers are decimal or 0x", t.text));
    else if (!hex && digits.size() > 1 && digits.front() == '0')
        in.diag.error(t.where, fmt::format("'{}' has a leading 0: there are no octal numbers", t.text));
    return t;
}

std::optional<char> escape_value(char c)
{
    switch (c) {
    case 'n': return '\n';
    case 't': return '\t';
    case '"':
    case '\\': return c;
    default: return std::nullopt;
    }
}

token take_text(reader &in)
{
    token t{token_kind::text, {}, 0, in.where, {}};
    in.next();
    while (!in.done() && in.peek() != '\n') {
        const place here = in.where;
        const char  c = in.next();
        if (c == '"')
            return t;
        if (c != '\\' || in.done() || in.peek() == '\n') {
            t.text += c;
            continue;
        }
        const char written = in.next();
        if (const std::optional<char> value = escape_value(written))
            t.text += *value;
        else
            in.diag.error(here, fmt::format("'\\{}' is no escape: there are \\\", \\\\, \\n and \\t", written));
    }
    in.diag.error(t.where, "the text does not end on its line");
    return t;
}

/// Punctuation, or nothing for a character that belongs to no token.
std::optional<token> take_punctuation(reader &in)
{
    token      t{token_kind::punctuation, {}, 0, in.where, {}};
    const char c = in.next();
    t.text = c;
    constexpr std::array<std::string_view, 7> pairs = {"<<", "==", "!=", "<=", ">=", "&&", ".."};
    const char                                pair[] = {c, in.peek()};
    if (std::find(pairs.begin(), pairs.end(), std::string_view(pair, 2)) != pairs.end()) {
        t.text += in.next();
        return t;
    }
    if (std::string_view("{}()[];,:=*+-/|.&!<>").find(c) != std::string_view::npos)
        return t;
    const bool printable = c > ' ' && c <= '~';
    while (!printable && static_cast<unsigned char>(in.peek()) >= 0x80)
        in.next(); // the rest of a character of several octets
    in.diag.error(t.where, printable ? fmt::format("'{}' begins no token", c)
                                     : fmt::format("octet 0x{:02X} begins no token", static_cast<unsigned char>(c)));
    return std::nullopt;
}

} // namespace

std::vector<token> lex(diagnostics &diag, std::uint32_t file)
{
    const std::string  text = diag.text(file); // a copy: messages do not move it
    reader             in{diag, text, {file, 1, 1}};
    std::vector<token> tokens;
    for (skip_blanks(in); !in.done(); skip_blanks(in)) {
        if (is_word_start(in.peek())) {
            const place where = in.where;
            tokens.push_back({token_kind::identifier, take_word(in), 0, where, {}});
        } else if (is_digit(in.peek())) {
            tokens.push_back(take_number(in));
        } else if (in.peek() == '"') {
            tokens.push_back(take_text(in));
        } else if (std::optional<token> t = take_punctuation(in)) {
            tokens.push_back(*std::move(t));
        } else {
            continue;
        }
        tokens.back().end = in.where;
    }
    tokens.push_back({token_kind::end, {}, 0, in.where, in.where});
    return tokens;
}

std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '"':
        case '\\': out += '\\'; [[fallthrough]];
        default: out += c;
        }
    }
    return out + "\"";
}

std::string dump_tokens(const std::vector<token> &tokens)
{
    std::string out;
    for (const token &t : tokens) {
        out += fmt::format("{}:{} ", t.where.line, t.where.column);
        switch (t.kind) {
        case token_kind::identifier: out += "identifier " + t.text; break;
        case token_kind::number: out += "number " + t.text; break;
        case token_kind::text: out += "text " + quoted(t.text); break;
        case token_kind::punctuation: out += t.text; break;
        case token_kind::end: out += "end"; break;
        }
        out += '\n';
    }
    return out;
}

} // namespace solvane::gen::def
