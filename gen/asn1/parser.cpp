// The walk over the tokens of an ASN.1 file.
#include "asn1/parser.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace solvane::gen::asn1 {
namespace {

constexpr auto reserved = std::to_array<std::string_view>({
    "ABSENT", "ALL", "ANY", "APPLICATION", "AUTOMATIC", "BEGIN", "BIT", "BOOLEAN", "BY", "CHARACTER", "CHOICE", "CLASS",
    "COMPONENT", "COMPONENTS", "CONSTRAINED", "CONTAINING", "DEFAULT", "DEFINED", "DEFINITIONS", "EMBEDDED", "ENCODED",
    "END", "ENUMERATED", "EXCEPT", "EXPLICIT", "EXPORTS", "EXTENSIBILITY", "EXTERNAL", "FALSE", "FROM", "IDENTIFIER",
    "IMPLICIT", "IMPLIED", "IMPORTS", "INCLUDES", "INSTANCE", "INTEGER", "INTERSECTION", "MAX", "MIN", "NULL",
    "OBJECT", "OCTET", "OF", "OPTIONAL", "PATTERN", "PRESENT", "PRIVATE", "REAL", "SEQUENCE", "SET", "SIZE", "STRING",
    "SYNTAX", "TAGS", "TRUE", "UNION", "UNIQUE", "UNIVERSAL", "WITH",
});
static_assert(std::is_sorted(reserved.begin(), reserved.end()));

std::string spelled(const token &t)
{
    switch (t.kind) {
    case token_kind::end: return "the end of the file";
    case token_kind::text: return "\"" + t.text + "\"";
    case token_kind::bits: return "'" + t.text + "'B";
    case token_kind::hex: return "'" + t.text + "'H";
    case token_kind::upper:
    case token_kind::lower:
    case token_kind::number:
    case token_kind::punctuation: break;
    }
    return "'" + t.text + "'";
}

} // namespace

bool is_reserved(std::string_view word)
{
    return std::binary_search(reserved.begin(), reserved.end(), word);
}

const token &parser::peek(std::size_t ahead) const
{
    return at + ahead < tokens.size() ? tokens[at + ahead] : tokens.back();
}

const token &parser::next()
{
    const token &t = peek();
    if (at + 1 < tokens.size())
        ++at;
    return t;
}

bool parser::is(std::string_view punctuation, std::size_t ahead) const
{
    return is_kind(token_kind::punctuation, ahead) && peek(ahead).text == punctuation;
}

bool parser::is_word(std::string_view word, std::size_t ahead) const
{
    return is_kind(token_kind::upper, ahead) && peek(ahead).text == word;
}

bool parser::is_type_name(std::size_t ahead) const
{
    return is_kind(token_kind::upper, ahead) && !is_reserved(peek(ahead).text);
}

bool parser::accept(std::string_view punctuation)
{
    const bool fits = is(punctuation);
    if (fits)
        next();
    return fits;
}

bool parser::accept_word(std::string_view word)
{
    const bool fits = is_word(word);
    if (fits)
        next();
    return fits;
}

void parser::fail(std::string_view what)
{
    const place &where = done() && at > 0 ? tokens[at - 1].end : peek().where;
    diag.error(where, fmt::format("expected {}, found {}", what, spelled(peek())));
    throw syntax_error{};
}

void parser::expect(std::string_view punctuation, std::string_view behind)
{
    if (!accept(punctuation))
        fail(fmt::format("'{}' behind {}", punctuation, behind));
}

void parser::expect_word(std::string_view word, std::string_view behind)
{
    if (!accept_word(word))
        fail(fmt::format("'{}' behind {}", word, behind));
}

name parser::expect_identifier(std::string_view what)
{
    if (!is_kind(token_kind::lower))
        fail(what);
    const token &t = next();
    return {t.text, t.where};
}

name parser::expect_type_name(std::string_view what)
{
    if (!is_type_name())
        fail(what);
    const token &t = next();
    return {t.text, t.where};
}

void parser::skip_braces()
{
    const place open = peek().where;
    int         depth = 0;
    do {
        depth += is("{") - is("}");
        if (done()) {
            diag.error(open, "this '{' is not closed");
            throw syntax_error{};
        }
        next();
    } while (depth > 0);
}

} // namespace solvane::gen::asn1
