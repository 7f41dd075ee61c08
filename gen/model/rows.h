// Lays the rows of the domains' tables: the dictionary, the run-time type rules, the message index.
#pragma once

#include "base/diagnostics.h"
#include "model/model.h"

namespace solvane::gen {

/// Fills the tables of every domain from its units, and numbers the trace table.  Reports what does not fit the
/// widths of the rows.
void lay_rows(model &m, diagnostics &diag);

} // namespace solvane::gen
