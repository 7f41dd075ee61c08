// Prints codecs as text: the constraints of every usage as numbers, and what was decided of it.
#pragma once

#include <string>

#include "model/model.h"

namespace solvane::gen {

/// The codecs of a unit; nothing where it has none.
std::string dump_codecs(const model &m, std::uint32_t unit_id);

} // namespace solvane::gen
