// A connection to the agent through the plug-in's channels, held in a child process.
//
// A process of its own is what the channels ask for: they end the process on a packet that is too long and on a socket
// that cannot be had, they tell only once a process that the peer has gone and read on without a pause, a write to a
// peer that has gone never returns, and the list of channels is resolved against the environment once.  In a child all
// that costs one connection, and the next child starts anew.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

#include "plugin.h"
#include "text.h"

namespace solvane::tools {

/// Where the agent listens; `address` is an IPv4 address in dotted form.
struct endpoint {
    std::string   address = "127.0.0.1";
    std::uint16_t port = 0;

    std::string text() const;
};

/// From a host's name, or a dotted address, and a port number or name.  Throws `failure` (exit_cannot_open).
endpoint find_endpoint(const std::string &host, std::uint64_t port);

enum class link_state {
    nothing,   ///< the time is over, or the user wants to end
    connected,
    refused,   ///< nobody answers there; `text` says more
    packet,    ///< `content` came at `time`
    dropped,   ///< the channel lost octets; `text` says which
    said,      ///< the library printed `text`
    lost,      ///< the peer closed the connection
    died,      ///< the library ended the connection's process; `text` says how
};

struct link_event {
    link_state   state = link_state::nothing;
    octets       content = {};
    std::int64_t time = 0; ///< nanoseconds since 1970-01-01 UTC
    std::string  text = {};
};

class agent_link {
public:
    /// Starts a child that opens the channels on the plug-in's list.  `loaded` has been started and its channels have
    /// not been touched in this process.
    agent_link(const plugin &loaded, const endpoint &to);
    agent_link(const agent_link &) = delete;
    agent_link &operator=(const agent_link &) = delete;
    /// Ends the child: by asking, and after a second by force.
    ~agent_link();

    /// The next thing that happens, waiting until `limit` (steady clock, nanoseconds) at most; `interrupt` becoming
    /// readable ends the wait too.  After `refused`, `lost` or `died` nothing more comes.
    link_event wait(std::int64_t limit, int interrupt);
    /// Hands a packet to the channel.
    void send(const octets &packet);

private:
    std::optional<link_event> from_channel();
    std::optional<link_event> from_library();
    link_event                ended();

    endpoint    to_;
    pid_t       child_ = -1;
    int         channel_ = -1; ///< packets, both ways
    int         speech_ = -1;  ///< what the library prints in the child
    std::string line_;         ///< of it, not yet whole
    std::string last_said_;
    bool        closed_ = false; ///< the library has told that the peer is gone
    bool        parting_ = false; ///< the child was asked to end
    bool        over_ = false;
};

/// The clock of `wait`.
std::int64_t steady_now();

} // namespace solvane::tools
