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

/// The families of the peer table.
std::string dump_peers(const model &m);

/// Trace modules and items.
std::string dump_traces(const model &m);

} // namespace solvane::gen
