// What the parsers of the definition language share: the walk over the tokens, messages and recovery.
//
// A production that does not fit reports its place and throws `syntax_error`; the loop over the statements of a
// block catches it, skips the statement and goes on.
#pragma once

#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "def/lex.h"
#include "def/tree.h"

namespace solvane::gen::def {

/// Thrown behind a message, caught by `parse_statement`.
struct syntax_error {};

struct parser {
    diagnostics              &diag;
    const std::vector<token> &tokens;  ///< closed by an `end`
    std::size_t               at = 0;

    const token &peek(std::size_t ahead = 0) const;
    bool         done() const { return peek().kind == token_kind::end; }
    const token &next();

    bool is(std::string_view punctuation, std::size_t ahead = 0) const;
    bool is_word(std::string_view word, std::size_t ahead = 0) const;
    bool is_identifier(std::size_t ahead = 0) const { return peek(ahead).kind == token_kind::identifier; }
    bool is_text() const { return peek().kind == token_kind::text; }

    bool accept(std::string_view punctuation);
    bool accept_word(std::string_view word);

    void          expect(std::string_view punctuation, std::string_view behind);
    /// Where the next token stands on a further line, the `;` is taken as forgotten and the parse goes on.
    void          expect_semicolon(std::string_view behind);
    void          expect_word(std::string_view word);
    name          expect_identifier(std::string_view what);
    name          expect_text(std::string_view what);
    std::uint64_t expect_number(std::string_view what);

    /// Reports that `what` was expected instead of the token at hand.
    [[noreturn]] void fail(std::string_view what);
};

/// Skips the rest of a statement: up to and with its `;` or its block, or up to the `}` of the block around it.
void skip_statement(parser &in);

/// Runs one production; at a syntax error skips the statement and answers false.
template <typename Production> bool parse_statement(parser &in, Production production)
{
    try {
        production();
        return true;
    } catch (const syntax_error &) {
        skip_statement(in);
        return false;
    }
}

/// block = "{" { statement } "}" ;   `behind` names the block in messages.
template <typename Statement> void parse_block(parser &in, std::string_view behind, Statement statement)
{
    in.expect("{", behind);
    while (!in.is("}") && !in.done())
        parse_statement(in, statement);
    in.expect("}", behind);
}

/// file = { statement } ;   A `}` at which recovery stopped belongs to the statement that failed.
template <typename Statement> void parse_file(parser &in, Statement statement)
{
    while (!in.done()) {
        if (!parse_statement(in, statement) && in.accept("}"))
            in.accept(";");
    }
}

/// The value of a literal, constant, array or selector.
expression parse_expression(parser &in);

} // namespace solvane::gen::def
