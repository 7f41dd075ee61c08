// Registration of the peer table: which structures the library turns into bits and back.
//
// Runs on the thread of init_dll and never afterwards; the table is read-only from then on and lives until the
// process ends.  What stands in the families is generated from peers.def.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"
#include "tt_stack_build.h"

/// 1 when a row of that name stands in the table, else 0.
std::uint8_t tt_peer_row_exists(const char *name);

/// Appends a copy of `row` with a `reserved` word of 0; drops it in silence when its name stands in the table.
/// The name is not copied: it is to live as long as the table.  `rows` of the table moves.
void register_peer_row(const tt_peer_row &row);

/// Registers the rows of a family in their order.
void tt_register_peer_family(tt_peer_family_id family);

/// The service messages of the target agent.
void tt_register_target_agent_peers();

/// The families of the stack, from session management to UE policy.
void tt_register_stack_peers();

/// The NR RRC types.
void tt_register_nr_peers();

/// "TT_PRINT_STRING".  Part of this layer in name only: nothing calls it.
const char *tt_print_string();
