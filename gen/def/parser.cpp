// The walk over the tokens, recovery, and the one production that all parsers use: expressions.
#include "def/parser.h"

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

std::string spelled(const token &t)
{
    switch (t.kind) {
    case token_kind::end: return "the end of the file";
    case token_kind::text: return quoted(t.text);
    case token_kind::identifier:
    case token_kind::number:
    case token_kind::punctuation: return "'" + t.text + "'";
    }
    return {};
}

expression joined(expression::what kind, const place &where, expression left, expression right)
{
    expression e{kind, 0, {}, {}, where};
    e.operands.push_back(std::move(left));
    e.operands.push_back(std::move(right));
    return e;
}

// primary = number | name | "(" expression ")" ;
expression parse_primary(parser &in)
{
    const token &t = in.peek();
    if (t.kind == token_kind::number) {
        in.next();
        return {expression::what::number, t.number, {}, {}, t.where};
    }
    if (t.kind == token_kind::identifier) {
        in.next();
        return {expression::what::name, 0, t.text, {}, t.where};
    }
    if (in.accept("(")) {
        expression e = parse_expression(in);
        in.expect(")", "the value");
        return e;
    }
    in.fail("a value");
}

// unary = "-" unary | primary ;
expression parse_unary(parser &in)
{
    const place where = in.peek().where;
    if (!in.accept("-"))
        return parse_primary(in);
    expression e{expression::what::negate, 0, {}, {}, where};
    e.operands.push_back(parse_unary(in));
    return e;
}

// product = unary { ( "*" | "/" ) unary } ;
expression parse_product(parser &in)
{
    expression e = parse_unary(in);
    while (in.is("*") || in.is("/")) {
        const token &sign = in.next();
        e = joined(sign.text == "*" ? expression::what::multiply : expression::what::divide, sign.where,
                   std::move(e), parse_unary(in));
    }
    return e;
}

// sum = product { ( "+" | "-" ) product } ;
expression parse_sum(parser &in)
{
    expression e = parse_product(in);
    while (in.is("+") || in.is("-")) {
        const token &sign = in.next();
        e = joined(sign.text == "+" ? expression::what::add : expression::what::subtract, sign.where, std::move(e),
                   parse_product(in));
    }
    return e;
}

// shift = sum { "<<" sum } ;
expression parse_shift(parser &in)
{
    expression e = parse_sum(in);
    while (in.is("<<")) {
        const place where = in.next().where;
        e = joined(expression::what::shift_left, where, std::move(e), parse_sum(in));
    }
    return e;
}

} // namespace

// expression = shift { "|" shift } ;
expression parse_expression(parser &in)
{
    expression e = parse_shift(in);
    while (in.is("|")) {
        const place where = in.next().where;
        e = joined(expression::what::bit_or, where, std::move(e), parse_shift(in));
    }
    return e;
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
    return peek(ahead).kind == token_kind::punctuation && peek(ahead).text == punctuation;
}

bool parser::is_word(std::string_view word, std::size_t ahead) const
{
    return is_identifier(ahead) && peek(ahead).text == word;
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
        fail(fmt::format("'{}' {} {}", punctuation, punctuation == "}" ? "at the end of" : "behind", behind));
}

void parser::expect_semicolon(std::string_view behind)
{
    if (accept(";"))
        return;
    const place &end = tokens[at > 0 ? at - 1 : 0].end;
    if (peek().where.line == end.line)
        fail(fmt::format("';' behind {}", behind));
    diag.error(end, fmt::format("expected ';' behind {}", behind));
}

void parser::expect_word(std::string_view word)
{
    if (!accept_word(word))
        fail(fmt::format("'{}'", word));
}

name parser::expect_identifier(std::string_view what)
{
    if (!is_identifier())
        fail(what);
    const token &t = next();
    return {t.text, t.where};
}

name parser::expect_text(std::string_view what)
{
    if (!is_text())
        fail(what);
    const token &t = next();
    return {t.text, t.where};
}

std::uint64_t parser::expect_number(std::string_view what)
{
    if (peek().kind != token_kind::number)
        fail(what);
    return next().number;
}

void skip_statement(parser &in)
{
    std::size_t depth = 0;
    while (!in.done()) {
        if (depth == 0 && in.is("}"))
            return;
        const token &t = in.next();
        if (t.kind != token_kind::punctuation)
            continue;
        if (t.text == "{") {
            ++depth;
        } else if (t.text == "}" && --depth == 0) {
            if (in.is_identifier() && in.is(";", 1)) // the name behind the block of a typedef
                in.next();
            in.accept(";");
            return;
        } else if (t.text == ";" && depth == 0) {
            return;
        }
    }
}

} // namespace solvane::gen::def
