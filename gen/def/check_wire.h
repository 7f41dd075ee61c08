// Wire formats: the members that they imply, and what their items come to.
#pragma once

#include "def/scope.h"

namespace solvane::gen::def {

/// Fills the members of an element or message from its items and makes those that the items imply: presence members,
/// counts and capacities.
void expand_wire(record_def &record);

/// Resolves the items, once the members are checked, and leaves the codec in the tree.
void check_wire(scope &s, const unit_def &unit, record_def &record);

/// The attribute of a member; null where it has none of that kind.
const attribute *find_attribute(const member_def &m, attribute::what kind);

} // namespace solvane::gen::def
