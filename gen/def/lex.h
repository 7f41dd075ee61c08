// Lexer of the definition language: one for .def and .val files, baseline.def and peers.def.
//
// Tokens are C's: identifiers, decimal and 0x numbers, texts in double quotes, single characters of punctuation
// (and `<<`).  Comments and blanks end a token and are gone behind this stage.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/diagnostics.h"

namespace solvane::gen::def {

enum class token_kind : std::uint8_t { identifier, number, text, punctuation, end };

struct token {
    token_kind    kind = token_kind::end;
    std::string   text;        ///< as written; of a text its content with the escapes resolved
    std::uint64_t number = 0;  ///< value of a number
    place         where;
    place         end;         ///< just behind it
};

/// Tokens of input `file`, the closing `end` included.  What is no token is reported and left out.
std::vector<token> lex(diagnostics &diag, std::uint32_t file);

/// One token a line: line, column, kind and spelling.
std::string dump_tokens(const std::vector<token> &tokens);

/// A text as it is written in a definition: in double quotes, with escapes.
std::string quoted(const std::string &text);

} // namespace solvane::gen::def
