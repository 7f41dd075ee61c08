// Prints wire formats as text, for --dump=model.
#pragma once

#include <string>

#include "model/model.h"

namespace solvane::gen {

/// The items of a record's codec in the order of the air, a line each; nothing for a record without one.
std::string dump_wire(const model &m, const record &r);

} // namespace solvane::gen
