// Modules as text again: what the parser understood, one member a line.
#pragma once

#include <string>

#include "asn1/tree.h"

namespace solvane::gen::asn1 {

std::string dump_tree(const module &m);

/// A value as ASN.1 writes it.
std::string spelled(const value &v);

} // namespace solvane::gen::asn1
