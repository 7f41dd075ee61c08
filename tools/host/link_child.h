// The child's side of a link: walks the plug-in's list of channels, opens them, and passes on what comes.
#pragma once

#include <cstdint>

#include "link.h"

namespace solvane::tools {

/// What stands in front of each message from the child: what it is, and when it happened.
struct link_head {
    std::uint32_t state = 0; ///< link_state
    std::uint32_t unused = 0;
    std::int64_t  time = 0;
};

/// Serves the link until the parent closes `channel`, a socket that keeps messages apart.  Does not return.
[[noreturn]] void serve_link(const plugin &loaded, const endpoint &to, int channel);

} // namespace solvane::tools
