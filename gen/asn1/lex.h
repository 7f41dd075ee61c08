// Lexer of ASN.1 (ITU-T X.680 clause 12): text to tokens with their place.
//
// Words that begin with a capital letter are `upper` (types, modules, classes, reserved words), all others `lower`.
// Reserved words are not told apart here: the parser knows where one may stand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

enum class token_kind : std::uint8_t { upper, lower, number, bits, hex, text, punctuation, end };

struct token {
    token_kind    kind = token_kind::end;
    std::string   text;        ///< of a string without its quotes
    std::uint64_t number = 0;
    place         where;
    place         end;         ///< behind its last character
    std::size_t   begin_at = 0, end_at = 0;  ///< octets from the beginning of the file
};

/// Tokens of a file, closed by an `end`.
std::vector<token> lex(diagnostics &diag, std::uint32_t file);

/// `line:column kind text`, one a line.
std::string dump_tokens(const std::vector<token> &tokens);

/// The text between two offsets of a file without its comments, each line without the blanks at its end, lines that
/// hold nothing left out.
std::string text_without_comments(std::string_view text);

} // namespace solvane::gen::asn1
