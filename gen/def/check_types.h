// Second step of the checker: the definitions of all units.
#pragma once

#include "def/check.h"
#include "def/scope.h"

namespace solvane::gen::def {

/// Gives every definition its id, enters all names into the scope, then resolves types, values and attributes.
/// The rows of the message tables and the trace modules must be known by now: enumerations are made of them.
void check_types(scope &s, const checked_folder &tables);

} // namespace solvane::gen::def
