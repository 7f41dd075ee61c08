// Lowers a checked folder to the model: definitions, registry rows, messages, value texts, trace statements.  The
// rows of the domains' tables are laid in the model, see model/rows.h.
#pragma once

#include "def/check.h"
#include "model/model.h"

namespace solvane::gen::def {

/// The model of a folder that was checked without an error.
model lower(checked_folder folder);

} // namespace solvane::gen::def
