// Definitions whose records are written by hand: the header must be what the definition says.
#pragma once

#include <string>

#include "model/model.h"

namespace solvane::gen {

/// Compile-time comparisons of `u`, which is declared in a header, with that header: the size of every type, the
/// offset and size of every member that has one, the value of every literal and constant.
void put_checks(std::string &out, const model &m, const unit &u);

/// The first domain that has the unit, whose sources hold its checks; null when no domain has it.
const domain *checking_domain(const model &m, std::uint32_t unit_id);

} // namespace solvane::gen
