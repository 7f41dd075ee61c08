// Brings a model to the size of a whole stack build, for benchmarks and stress tests: nothing that large is kept
// in the definitions.
#pragma once

#include <cstdint>

#include "model/model.h"

namespace solvane::gen {

/// Adds made-up trace statements, bit-fields and messages until their numbers are `per_cent` of those of a whole
/// build: 120,846 trace rows, 4,841 bit-fields spread over the domains as there, 8,000 messages.  What exceeds
/// its number already stays as it is, and so do the messages of indexed domains.  Works ahead of `lay_rows`; the
/// same model gets the same additions.
void scale_up(model &m, std::uint32_t per_cent);

} // namespace solvane::gen
