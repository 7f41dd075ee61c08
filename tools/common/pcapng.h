// Writes and reads pcapng, the capture file format of draft-ietf-opsawg-pcapng: section header, interface
// description, enhanced and simple packet blocks; other blocks are passed over.
//
// Times are nanoseconds since 1970-01-01 UTC.  Written in little-endian order; both orders are read.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"

namespace solvane::tools {

enum class direction : std::uint8_t { unknown = 0, in = 1, out = 2 }; ///< as in bits 0 and 1 of epb_flags

class pcapng_writer {
public:
    using sink = std::function<void(std::string_view)>;
    explicit pcapng_writer(sink to) : to_(std::move(to)) {}

    /// The section header; `application` and `comment` go in as options.  Interfaces count from 0 again.
    void section(std::string_view application, std::string_view comment);
    /// The next interface, with times in nanoseconds.
    void interface(std::uint16_t link_type, std::string_view name, std::string_view description);
    /// `comment` is left out when it is empty.
    void packet(std::uint32_t interface, std::int64_t time, direction way, std::span<const std::uint8_t> octets,
                std::string_view comment = {});

private:
    void block(std::uint32_t type, std::string_view body);

    sink to_;
};

struct pcapng_packet {
    std::uint64_t               offset = 0; ///< of its block in the file
    std::uint32_t               interface = 0;
    std::uint16_t               link_type = 0;
    std::optional<std::int64_t> time;
    direction                   way = direction::unknown;
    std::uint32_t               original_length = 0;
    std::vector<std::uint8_t>   octets;
    std::string                 comment;
};

/// A fault in the file; what() names the offset.
class pcapng_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class pcapng_reader {
public:
    /// `from` must stand at a section header.
    explicit pcapng_reader(byte_source &from) : from_(from) {}
    /// The next packet, or nothing at the end.  Throws `pcapng_error`.
    std::optional<pcapng_packet> next();

    /// Whether these octets begin a pcapng file.
    static bool recognises(std::string_view head);

private:
    struct interface_info {
        std::uint16_t link_type = 0;
        std::uint32_t snap_length = 0;
        std::uint8_t  resolution = 6;
        std::int64_t  offset_seconds = 0;
    };
    struct raw_block {
        std::uint64_t offset = 0;
        std::uint32_t type = 0;
        std::string   body;
    };

    bool                 read_block(raw_block &into);
    std::uint32_t        section_length(std::string_view head) ;
    void                 add_interface(const raw_block &block);
    pcapng_packet        enhanced(const raw_block &block) const;
    pcapng_packet        simple(const raw_block &block) const;
    std::int64_t         time_of(const interface_info &on, std::uint64_t units) const;
    const interface_info &interface_at(const raw_block &block, std::uint32_t index) const;
    std::uint32_t        word(std::string_view octets, std::size_t at) const;
    std::uint16_t        half(std::string_view octets, std::size_t at) const;
    /// The value of the first option `code` behind `at`, or nothing.
    std::optional<std::string_view> option(const raw_block &block, std::size_t at, std::uint16_t code) const;

    byte_source                &from_;
    bool                        big_endian_ = false;
    std::vector<interface_info> interfaces_;
};

} // namespace solvane::tools
