// Prints the model as text: definitions with what was decided of them, and the rows of the tables.
#pragma once

#include <string>

#include "model/model.h"

namespace solvane::gen {

/// The whole model.
std::string dump_model(const model &m);

/// The definitions of a unit.
std::string dump_unit(const model &m, const unit &u);

/// The registry row and the tables of a domain.
std::string dump_domain(const model &m, const domain &d);

} // namespace solvane::gen
