// The value types that all ASN.1 records are made of (ITU-T X.680).  Plain records, shared with the host's view of a
// decoded value: names, order and widths are those that the dictionary describes, db/common/asn_types.def,
// which the generator holds against this header.  Words are 32 bits wide on every build; an INTEGER wider than that
// has no representation here.
//
// A value is a tree: the unpack functions allocate the contents of strings and lists and nothing else, and the free
// function of the enclosing type releases exactly those.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

using AsnInt    = std::int32_t;
using UAsnInt   = std::uint32_t;
using AsnLen    = std::uint32_t; ///< the only length type: octets, bits or elements
using AsnBool   = std::uint8_t;  ///< 0 or 1
using asn_uint8 = std::uint8_t;

/// NULL: a member has an address and no content.
struct AsnNull {};

/// OCTET STRING.  An unpack allocates `octs`.
struct AsnOcts {
    AsnLen        octetLen; ///< octets
    std::uint8_t *octs;
};
SOLVANE_ILP32_SIZE(AsnOcts, 8);

/// BIT STRING.  The first bit is the most significant bit of `bits[0]`; the unused low bits of the last octet are
/// zero after an unpack.
struct AsnBits {
    AsnLen        bitLen; ///< bits
    std::uint8_t *bits;
};
SOLVANE_ILP32_SIZE(AsnBits, 8);

/// OBJECT IDENTIFIER: its subidentifiers as X.690 clause 8.19 codes them.
using AsnOid = AsnOcts;

struct AsnListNode {
    void        *data; ///< the element, a block of its own
    AsnListNode *prev;
    AsnListNode *next;
};
SOLVANE_ILP32_SIZE(AsnListNode, 12);

/// SEQUENCE OF and SET OF (asn_list.h).  The walks of pack, print and free move `curr`.
struct AsnList {
    AsnListNode *first;
    AsnListNode *last;
    AsnListNode *curr;
    std::int32_t dataSize; ///< octets of an element
    std::int32_t count;
};
SOLVANE_ILP32_SIZE(AsnList, 20);
