// What the productions of the ASN.1 parser share: the walk over the tokens, messages and recovery.
//
// A production that does not fit reports its place and throws `syntax_error`; the loop over the assignments of a
// module catches it, goes to the next assignment and on from there.
#pragma once

#include <string_view>
#include <vector>

#include "asn1/lex.h"
#include "asn1/tree.h"
#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

/// Thrown behind a message, caught by the loop over the assignments.
struct syntax_error {};

struct parser {
    diagnostics              &diag;
    const std::vector<token> &tokens;  ///< closed by an `end`
    std::size_t               at = 0;

    const token &peek(std::size_t ahead = 0) const;
    bool         done() const { return peek().kind == token_kind::end; }
    const token &next();

    bool is(std::string_view punctuation, std::size_t ahead = 0) const;
    bool is_word(std::string_view word, std::size_t ahead = 0) const;  ///< a reserved word
    bool is_kind(token_kind kind, std::size_t ahead = 0) const { return peek(ahead).kind == kind; }
    /// A word that begins with a capital and is not reserved: the name of a type, class or module.
    bool is_type_name(std::size_t ahead = 0) const;

    bool accept(std::string_view punctuation);
    bool accept_word(std::string_view word);

    void expect(std::string_view punctuation, std::string_view behind);
    void expect_word(std::string_view word, std::string_view behind);
    name expect_identifier(std::string_view what);  ///< begins with a small letter
    name expect_type_name(std::string_view what);

    /// Reports that `what` was expected instead of the token at hand.
    [[noreturn]] void fail(std::string_view what);

    /// From the opening brace at hand to behind its closing one.
    void skip_braces();
};

/// True for the reserved words of X.680 12.38 that could be taken for the name of a type.
bool is_reserved(std::string_view word);

// Productions that several files need.
type                        parse_type(parser &in);
value                       parse_value(parser &in);
std::vector<constraint_set> parse_constraints(parser &in);

/// All modules of a file.
std::vector<module> parse_modules(diagnostics &diag, std::uint32_t file);

} // namespace solvane::gen::asn1
