// The checker: resolves every name of the trees, evaluates every value and refuses what the language does not
// allow.  It adds what it finds to the trees, see the members marked `checked`.
#pragma once

#include "base/diagnostics.h"
#include "def/folder.h"

namespace solvane::gen::def {

/// A domain of the baseline with its registry row, its units and its messages, as the model holds them.
struct checked_domain {
    domain_def  def;
    gen::domain out;
};

struct checked_folder {
    folder_def                  tree;
    std::vector<checked_domain> domains;     ///< in the order of their entity values
    std::vector<std::string>    trace_modules;
    std::vector<trace_item>     statements;  ///< in the order of the files; the id is the first of its module
};

/// Checks a whole folder.  The answer is good for lowering only where `diag` holds no error.
checked_folder check(diagnostics &diag, folder_def tree);

} // namespace solvane::gen::def
