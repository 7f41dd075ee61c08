// The user's wish to end, as a descriptor that a tool can wait on beside its others.
#pragma once

namespace solvane::tools {

/// From here on SIGINT and SIGTERM do not end the process: they make the descriptor readable that this answers.
int watch_interrupts();

/// Whether one of them came.
bool interrupted();

} // namespace solvane::tools
