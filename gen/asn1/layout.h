// Which types of a schema become definitions, under which names and in which order.
//
// A named type is one, and so is every SEQUENCE, CHOICE, ENUMERATED and SEQUENCE OF that is written where it is used.
// Such a nested type takes the name of the type around it with the ending Seq, SeqOf, Choice or Enum, and a number
// from 1 for the second of a kind directly inside one type.  A [[ ]] group counts as a Seq; what stands in group N of T
// is named T_bracket_N... .
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "asn1/family.h"
#include "asn1/tree.h"
#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

/// A type that becomes a definition.
struct item {
    type        *of = nullptr;
    assignment  *owner = nullptr;     ///< the named type in which it stands
    std::string  name;                ///< its C++ name
    bool         is_nested = false;
    std::uint32_t weight = 1;         ///< lines that its text takes, roughly
};

struct layout {
    std::vector<item>                             items;    ///< each behind those that it holds or lists
    std::unordered_map<const type *, std::uint32_t> index;  ///< into items
};

/// Lays out the types of all modules that are generated.
layout lay_out(diagnostics &diag, schema &s, const family &f);

/// A name of ASN.1 as one of C++: '_' for '-', and one more behind a word of C++.
std::string cpp_name(std::string_view id);

} // namespace solvane::gen::asn1
