// The steps of the checker that are about domains: registry rows, literals, messages, value texts; and the peer table.
#pragma once

#include "def/check.h"
#include "def/scope.h"

namespace solvane::gen::def {

/// Reads codes, names and structures of a domain's messages; needs no types.
void read_messages(diagnostics &diag, const table &rows, gen::domain &domain);

/// Gives the domains their entity values and their order.
void check_entities(scope &s, checked_folder &folder);

/// Checks the registry row of a domain, its module tables, its literals and its messages' access points and
/// structures.
void check_domain(scope &s, checked_domain &domain);

/// Checks the value texts of a domain and evaluates them.
void check_values(scope &s, const checked_domain &domain);

/// Checks which structure the target's variables start at.
void check_variables(scope &s, const checked_folder &folder);

/// Checks the rows of the peer table and resolves their structures.
void check_peers(scope &s, const checked_folder &folder);

} // namespace solvane::gen::def
