// The checker of ASN.1 modules: resolves every name, evaluates every number, makes the parameterised types that are
// asked for, and refuses what the language does not allow.  It adds what it finds to the tree, see the members
// marked `checked`.
#pragma once

#include "asn1/tree.h"
#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

/// Checks the modules of one schema.  The answer is good for lowering only where `diag` holds no error.
void check(diagnostics &diag, schema &s);

/// The type behind all references; null where one leads to no type.
const type *base_type(const type &t);

/// Octets of a string of binary or hexadecimal digits, the last one filled up with zero bits, and its bits.
struct digit_string {
    std::vector<std::uint8_t> octets;
    std::uint32_t             bits = 0;
};
digit_string digits_of(const value &v);

} // namespace solvane::gen::asn1
