// A decoded radio resource message in the value notation of ASN.1 (X.680 (2015) clauses 17 to 38), worked out of the
// dictionary's names: a CHOICE is the structure with `ChoiceId`, a list an AsnList, octets an AsnOcts.
#pragma once

#include <string>

#include "image.h"

namespace solvane::tools {

/// The value, lines broken and indented by four; names with hyphens where the records have underscores, enumerators
/// without the name of their type.
std::string asn1_text(const value_node &node);

} // namespace solvane::tools
