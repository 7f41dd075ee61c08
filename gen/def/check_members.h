// The attributes of a structure's or union's members: what counts, guards and selects what.
#pragma once

#include "def/scope.h"

namespace solvane::gen::def {

/// Checks the attributes and fills in the links between the members.  Types and dimensions are resolved.
void check_attributes(scope &s, const unit_def &unit, record_def &record);

} // namespace solvane::gen::def
