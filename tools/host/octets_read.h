// How many octets a process has read from its connection, as the system counts them.
//
// The channels do not tell, and a chunk that begins with the end of a frame they drop as a whole without a call.  The
// count shows that more was read than can be accounted for.
#pragma once

#include <cstdint>
#include <optional>

#include "link.h"

namespace solvane::tools {

/// The descriptor of this process that is connected to `to`, or -1.
int connection_to(const endpoint &to);

/// Octets read from it since it was made; nothing while so much arrives that the count does not stand still.
std::optional<std::uint64_t> octets_read(int connection);

} // namespace solvane::tools
