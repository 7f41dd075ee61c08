// The value types that all ASN.1 records are made of.  Plain records, shared with the host's view of a decoded
// value: names, order and widths are those that the dictionary describes.  Words are 32 bits wide on every
// build; an INTEGER wider than that has no representation here.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

using AsnInt  = std::int32_t;
using UAsnInt = std::uint32_t;
using AsnLen  = std::uint32_t; ///< the only length type: octets, bits or elements
using AsnBool = std::uint8_t;  ///< 0 or 1

/// OCTET STRING.  An unpack allocates `octs`, the free function of the enclosing type releases it.
struct AsnOcts {
    AsnLen        octetLen; ///< octets
    std::uint8_t *octs;
};
SOLVANE_ILP32_SIZE(AsnOcts, 8);

/// BIT STRING.  The first bit is the most significant bit of `bits[0]`; the unused low bits of the last octet are
/// zero after an unpack.  Ownership as for AsnOcts.
struct AsnBits {
    AsnLen        bitLen; ///< bits
    std::uint8_t *bits;
};
SOLVANE_ILP32_SIZE(AsnBits, 8);
