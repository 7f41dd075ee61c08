// The agent's end of the connection: a listening socket on loopback and the one host that is served at a time.
#pragma once

#include <cstdint>
#include <span>

#include "text.h"

namespace solvane::tools {

/// A descriptor that is closed with its owner.
class owned_descriptor {
public:
    explicit owned_descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    owned_descriptor(owned_descriptor &&other) noexcept : descriptor_(other.descriptor_) { other.descriptor_ = -1; }
    owned_descriptor &operator=(owned_descriptor &&) = delete;
    ~owned_descriptor();
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

/// Listens on 127.0.0.1; `port` 0 lets the system choose, and holds what it chose afterwards.  Throws `failure`
/// (exit_cannot_open).
owned_descriptor listen_on(std::uint16_t &port);

/// The next host, or -1 when there is none after all.
owned_descriptor accept_host(int listening);

/// Sends all of it; false when the host is gone or the user wants to end.
bool send_all(int connection, std::span<const std::uint8_t> octets);

/// What is there to read, empty when the host is gone.
octets receive_some(int connection);

} // namespace solvane::tools
