// Octets read in order from a file, standard input or memory, with a look ahead.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace solvane::tools {

class byte_source {
public:
    /// Opens a file; "-" is standard input.  Throws `failure` (exit_cannot_open).
    static byte_source open(const std::string &path);
    static byte_source from_memory(std::string octets);

    byte_source(byte_source &&other) noexcept;
    byte_source &operator=(byte_source &&) = delete;
    ~byte_source();

    /// Up to `count` octets ahead; fewer only at the end.
    std::string_view peek(std::size_t count);
    /// The same, passed over.  The view lasts until the next call.
    std::string_view take(std::size_t count);
    /// The next line without its end; false at the end of the source.
    bool line(std::string &into);

    std::uint64_t      offset() const { return offset_; } ///< of the next octet
    const std::string &name() const { return name_; }
    bool               is_live() const { return live_; }  ///< a pipe or terminal: more may come later

private:
    explicit byte_source(std::string name) : name_(std::move(name)) {}
    bool fill();

    std::string   name_;
    int           descriptor_ = -1;
    bool          live_ = false;
    std::string   buffer_;
    std::size_t   used_ = 0;
    std::uint64_t offset_ = 0;
};

/// All that a source has left.
std::string whole(byte_source from);

/// Octets given as words of hex digits, "-" standing for hex digits on standard input.  Throws `failure` (exit_usage)
/// that calls the octets `what` ("the message").
std::vector<std::uint8_t> hex_words(const std::vector<std::string> &words, const char *what);

} // namespace solvane::tools
