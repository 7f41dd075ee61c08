// Parsers of the definition language, one for each kind of file.  Each builds its tree from the tokens of one
// file and judges nothing; what does not fit the grammar is reported and left out of the tree.
#pragma once

#include <string>
#include <vector>

#include "def/lex.h"
#include "def/tree.h"

namespace solvane::gen::def {

/// `.def` of a domain or of `common`; `path` is the file's, from the folder's root.
unit_def parse_unit(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file,
                    const std::string &path);

/// `.val`
values_def parse_values(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file,
                        const std::string &path);

/// `baseline.def`
baseline_def parse_baseline(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file);

/// `peers.def`
peers_def parse_peers(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file);

/// A tree in the language again, in one fixed form.
std::string dump_tree(const unit_def &unit);
std::string dump_tree(const values_def &values);
std::string dump_tree(const baseline_def &baseline);
std::string dump_tree(const peers_def &peers);

} // namespace solvane::gen::def
