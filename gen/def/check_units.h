// First step of the checker: imports, the order of the units and what belongs to which domain.
#pragma once

#include <vector>

#include "base/diagnostics.h"
#include "def/folder.h"

namespace solvane::gen::def {

/// Puts the units into an order in which each stands behind its imports, numbers them, and refuses imports that
/// lead nowhere, in a circle or into another domain.  Answers false when there is no such order.
bool order_units(diagnostics &diag, folder_def &folder);

/// Ids of the units of a domain: those of its folder in the order of their paths, each behind its imports.
std::vector<std::uint32_t> units_of_domain(const folder_def &folder, const std::string &domain);

} // namespace solvane::gen::def
