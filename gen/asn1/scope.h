// Names of ASN.1 modules and what they stand for, as the steps of the checker share them.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "asn1/tree.h"
#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

using symbols = std::unordered_map<std::string, assignment *>;

struct scope {
    diagnostics         &diag;
    schema              &in;
    std::vector<symbols> own;      ///< by module
    std::vector<symbols> visible;  ///< by module: its own and the imported ones
    std::unordered_map<std::string, assignment *> instances;  ///< of parameterised types, by name and arguments

    module &module_of(const assignment &a) const { return in.modules[a.module]; }
};

/// The assignment that a name stands for in a module; null and a message where there is none.  `module` is the one
/// that the reference names itself, or empty.
assignment *find(scope &s, std::uint32_t from, const std::string &module, const name &id);

// ------------------------------------------------------------------------------------------- steps, in their order

void enter_names(scope &s);           ///< own and imported names
void resolve_types(scope &s);         ///< references lead to their types; parameterised ones are made
void find_circles(scope &s);          ///< types that contain themselves
void expand_components(scope &s);     ///< COMPONENTS OF
void evaluate_constraints(scope &s);  ///< numbers, enumerations, tags, bounds, DEFAULT values

} // namespace solvane::gen::asn1
