// Sizes of ASN.1 records that an independent source tells: they become assertions in the generated code.
#pragma once

#include <cstdint>
#include <string>

#include "base/diagnostics.h"
#include "model/model.h"

namespace solvane::gen {

/// Reads a table with the columns `type`, `ilp32`, `lp64`, `module` and perhaps `kind`, input `file` of `diag`, and
/// notes the sizes with the codecs.  A row of a module that is not generated is passed over; that a type of a
/// generated module is missing is told.
void read_record_sizes(diagnostics &diag, std::uint32_t file, model &m);

} // namespace solvane::gen
