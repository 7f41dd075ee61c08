// Lexer of ASN.1.
#include "asn1/lex.h"

#include <array>
#include <charconv>
#include <string_view>

#include <fmt/format.h>

namespace solvane::gen::asn1 {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
bool is_letter(char c) { return is_upper(c) || is_lower(c); }
bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Walks a text and keeps line and column.
struct reader {
    diagnostics     *diag;
    std::string_view text;
    place            where;
    std::size_t      at = 0;

    bool done() const { return at >= text.size(); }
    char peek(std::size_t ahead = 0) const { return at + ahead < text.size() ? text[at + ahead] : '\0'; }
    bool is(std::string_view start) const { return text.substr(at).starts_with(start); }

    void skip(std::size_t count = 1)
    {
        for (; count > 0 && !done(); --count, ++at) {
            const bool line = text[at] == '\n';
            where.line += line;
            where.column = line ? 1 : where.column + 1;
        }
    }
};

/// `-- up to the end of the line or the next --`
void skip_line_comment(reader &in)
{
    in.skip(2);
    while (!in.done() && in.peek() != '\n') {
        if (in.is("--")) {
            in.skip(2);
            return;
        }
        in.skip();
    }
}

/// A block comment holds others.
void skip_block_comment(reader &in)
{
    const place start = in.where;
    int         depth = 0;
    do {
        const bool opens = in.is("/*");
        const bool closes = in.is("*/");
        depth += opens - closes;
        in.skip(opens || closes ? 2 : 1);
    } while (depth > 0 && !in.done());
    if (depth > 0 && in.diag != nullptr)
        in.diag->error(start, "the comment does not end");
}

bool skip_comment(reader &in)
{
    if (in.is("--"))
        skip_line_comment(in);
    else if (in.is("/*"))
        skip_block_comment(in);
    else
        return false;
    return true;
}

void skip_blanks(reader &in)
{
    while (!in.done()) {
        if (is_blank(in.peek()))
            in.skip();
        else if (!skip_comment(in))
            return;
    }
}

/// Letters, digits and single hyphens between them.
std::size_t word_length(const reader &in)
{
    std::size_t n = 0;
    for (;; ++n) {
        const char c = in.peek(n);
        const bool hyphen = c == '-' && (is_letter(in.peek(n + 1)) || is_digit(in.peek(n + 1)));
        if (!is_letter(c) && !is_digit(c) && !hyphen)
            return n;
    }
}

void take_word(reader &in, token &t)
{
    t.kind = is_upper(in.peek()) ? token_kind::upper : token_kind::lower;
    const std::size_t n = word_length(in);
    t.text = in.text.substr(in.at, n);
    in.skip(n);
}

void take_number(reader &in, token &t)
{
    t.kind = token_kind::number;
    std::size_t n = 0;
    while (is_digit(in.peek(n)))
        ++n;
    t.text = in.text.substr(in.at, n);
    in.skip(n);
    const auto [end, failed] = std::from_chars(t.text.data(), t.text.data() + t.text.size(), t.number);
    if (failed != std::errc())
        in.diag->error(t.where, fmt::format("'{}' does not fit 64 bits", t.text));
    else if (t.text.size() > 1 && t.text.front() == '0')
        in.diag->error(t.where, fmt::format("'{}' has a leading 0", t.text));
    if (is_letter(in.peek()))
        in.diag->error(t.where, "a word does not begin with a digit");
}

/// 'digits'B or 'digits'H, blanks between the digits left out.
void take_digits(reader &in, token &t)
{
    in.skip();
    while (!in.done() && in.peek() != '\'') {
        if (!is_blank(in.peek()))
            t.text += in.peek();
        in.skip();
    }
    const char kind = in.peek(1);
    in.skip(2);
    t.kind = kind == 'B' ? token_kind::bits : token_kind::hex;
    const std::string_view digits = kind == 'B' ? "01" : "0123456789ABCDEF";
    if (kind != 'B' && kind != 'H')
        in.diag->error(t.where, "a string of digits ends in 'B or 'H");
    else if (t.text.find_first_not_of(digits) != std::string::npos)
        in.diag->error(t.where, fmt::format("'{}' has digits other than {}", t.text, digits));
}

/// "text", a double quote inside written twice.
void take_text(reader &in, token &t)
{
    t.kind = token_kind::text;
    for (in.skip(); !in.done(); in.skip()) {
        if (in.peek() == '"') {
            in.skip();
            if (in.peek() != '"')
                return;
        }
        t.text += in.peek();
    }
    in.diag->error(t.where, "the text does not end");
}

/// False for a character that begins no token.
bool take_punctuation(reader &in, token &t)
{
    static constexpr std::array<std::string_view, 4> longer = {"::=", "...", "..", "[["};
    t.kind = token_kind::punctuation;
    for (const std::string_view sign : longer) {
        if (in.is(sign)) {
            t.text = sign;
            in.skip(sign.size());
            return true;
        }
    }
    if (in.is("]]")) {
        t.text = "]]";
        in.skip(2);
        return true;
    }
    const char c = in.peek();
    if (std::string_view("{}()[]<>,;:.|&@!^-*=").find(c) != std::string_view::npos) {
        t.text = c;
        in.skip();
        return true;
    }
    const bool printable = c > ' ' && c <= '~';
    in.diag->error(t.where, printable ? fmt::format("'{}' begins no token", c)
                                      : fmt::format("octet 0x{:02X} begins no token", static_cast<unsigned char>(c)));
    do
        in.skip();
    while (!printable && static_cast<unsigned char>(in.peek()) >= 0x80);
    return false;
}

bool take_token(reader &in, token &t)
{
    if (is_letter(in.peek()))
        take_word(in, t);
    else if (is_digit(in.peek()))
        take_number(in, t);
    else if (in.peek() == '\'')
        take_digits(in, t);
    else if (in.peek() == '"')
        take_text(in, t);
    else
        return take_punctuation(in, t);
    return true;
}

std::string_view kind_name(token_kind kind)
{
    switch (kind) {
    case token_kind::upper: return "upper ";
    case token_kind::lower: return "lower ";
    case token_kind::number: return "number ";
    case token_kind::bits: return "bits ";
    case token_kind::hex: return "hex ";
    case token_kind::text: return "text ";
    case token_kind::end: return "end";
    case token_kind::punctuation: break;
    }
    return {};
}

} // namespace

std::vector<token> lex(diagnostics &diag, std::uint32_t file)
{
    const std::string  text = diag.text(file); // a copy: messages do not move it
    reader             in{&diag, text, {file, 1, 1}};
    std::vector<token> tokens;
    for (skip_blanks(in); !in.done(); skip_blanks(in)) {
        token t;
        t.where = in.where;
        t.begin_at = in.at;
        if (!take_token(in, t))
            continue;
        t.end = in.where;
        t.end_at = in.at;
        tokens.push_back(std::move(t));
    }
    token end;
    end.where = end.end = in.where;
    end.begin_at = end.end_at = in.at;
    tokens.push_back(end);
    return tokens;
}

std::string dump_tokens(const std::vector<token> &tokens)
{
    std::string out;
    for (const token &t : tokens)
        out += fmt::format("{}:{} {}{}\n", t.where.line, t.where.column, kind_name(t.kind), t.text);
    return out;
}

std::string text_without_comments(std::string_view text)
{
    std::string out, line;
    reader      in{nullptr, text, {0, 1, 1}};
    const auto  flush = [&] {
        line.erase(line.find_last_not_of(" \t\r") + 1);
        if (!line.empty())
            out += (out.empty() ? "" : "\n") + line;
        line.clear();
    };
    while (!in.done()) {
        if (skip_comment(in))
            continue;
        if (in.peek() == '\n')
            flush();
        else
            line += in.peek();
        in.skip();
    }
    flush();
    return out;
}

} // namespace solvane::gen::asn1
