// The step of the checker that reads the trace modules and statements.
#pragma once

#include <string>
#include <vector>

#include "def/check.h"

namespace solvane::gen::def {

/// Names of the trace modules; row n owns the ids from n times `ids_of_a_module` on.
std::vector<std::string> read_trace_modules(diagnostics &diag, const table &rows);

/// The statements of all tables in their order.
std::vector<trace_item> read_statements(diagnostics &diag, const std::vector<table> &tables,
                                        const std::vector<std::string> &modules);

} // namespace solvane::gen::def
