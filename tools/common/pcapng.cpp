#include "pcapng.h"

#include <algorithm>

#include <fmt/format.h>

namespace solvane::tools {

namespace {

constexpr std::uint32_t section_header = 0x0A0D0D0A;
constexpr std::uint32_t interface_description = 1;
constexpr std::uint32_t simple_packet = 3;
constexpr std::uint32_t enhanced_packet = 6;
constexpr std::uint32_t order_magic = 0x1A2B3C4D;
constexpr std::uint32_t largest_block = 16 * 1024 * 1024; /* octets; above it the length is taken for damage */

constexpr std::uint16_t opt_end = 0;
constexpr std::uint16_t opt_comment = 1;
constexpr std::uint16_t shb_userappl = 4;
constexpr std::uint16_t if_name = 2;
constexpr std::uint16_t if_description = 3;
constexpr std::uint16_t if_tsresol = 9;
constexpr std::uint16_t if_tsoffset = 14;
constexpr std::uint16_t epb_flags = 2;

constexpr std::int64_t nanoseconds = 1'000'000'000;

void put_half(std::string &out, std::uint32_t value)
{
    out += static_cast<char>(value);
    out += static_cast<char>(value >> 8);
}

void put_word(std::string &out, std::uint32_t value)
{
    put_half(out, value & 0xFFFF);
    put_half(out, value >> 16);
}

void pad(std::string &out)
{
    out.resize((out.size() + 3) / 4 * 4);
}

void put_option(std::string &out, std::uint16_t code, std::string_view value)
{
    put_half(out, code);
    put_half(out, static_cast<std::uint32_t>(std::min<std::size_t>(value.size(), 0xFFFF)));
    out += value.substr(0, 0xFFFF);
    pad(out);
}

void put_text_option(std::string &out, std::uint16_t code, std::string_view text)
{
    if (!text.empty()) {
        put_option(out, code, text);
    }
}

[[noreturn]] void fault(std::uint64_t offset, const std::string &what)
{
    throw pcapng_error(fmt::format("offset {}: {}", offset, what));
}

} // namespace

void pcapng_writer::block(std::uint32_t type, std::string_view body)
{
    std::string out;
    const auto  length = static_cast<std::uint32_t>(body.size() + 12);
    put_word(out, type);
    put_word(out, length);
    out += body;
    put_word(out, length);
    to_(out);
}

void pcapng_writer::section(std::string_view application, std::string_view comment)
{
    std::string body;
    put_word(body, order_magic);
    put_half(body, 1); /* version 1.0 */
    put_half(body, 0);
    put_word(body, 0xFFFFFFFF); /* the section's length is not told */
    put_word(body, 0xFFFFFFFF);
    put_text_option(body, opt_comment, comment);
    put_text_option(body, shb_userappl, application);
    put_option(body, opt_end, "");
    block(section_header, body);
}

void pcapng_writer::interface(std::uint16_t link_type, std::string_view name, std::string_view description)
{
    std::string body;
    put_half(body, link_type);
    put_half(body, 0);
    put_word(body, 0); /* packets are never cut */
    put_text_option(body, if_name, name);
    put_text_option(body, if_description, description);
    put_option(body, if_tsresol, std::string_view("\x09", 1));
    put_option(body, opt_end, "");
    block(interface_description, body);
}

void pcapng_writer::packet(std::uint32_t interface, std::int64_t time, direction way,
                           std::span<const std::uint8_t> octets, std::string_view comment)
{
    std::string body;
    const auto  units = static_cast<std::uint64_t>(time);
    const auto  length = static_cast<std::uint32_t>(octets.size());
    put_word(body, interface);
    put_word(body, static_cast<std::uint32_t>(units >> 32));
    put_word(body, static_cast<std::uint32_t>(units));
    put_word(body, length);
    put_word(body, length);
    body.append(octets.begin(), octets.end());
    pad(body);
    put_text_option(body, opt_comment, comment);
    if (way != direction::unknown) {
        std::string flags;
        put_word(flags, static_cast<std::uint32_t>(way));
        put_option(body, epb_flags, flags);
    }
    if (way != direction::unknown || !comment.empty()) {
        put_option(body, opt_end, "");
    }
    block(enhanced_packet, body);
}

bool pcapng_reader::recognises(std::string_view head)
{
    return head.starts_with(std::string_view("\x0A\x0D\x0D\x0A", 4));
}

std::uint16_t pcapng_reader::half(std::string_view octets, std::size_t at) const
{
    const auto one = static_cast<std::uint8_t>(octets[at]);
    const auto other = static_cast<std::uint8_t>(octets[at + 1]);
    return static_cast<std::uint16_t>(big_endian_ ? one << 8 | other : other << 8 | one);
}

std::uint32_t pcapng_reader::word(std::string_view octets, std::size_t at) const
{
    const std::uint32_t one = half(octets, at);
    const std::uint32_t other = half(octets, at + 2);
    return big_endian_ ? one << 16 | other : other << 16 | one;
}

/* A section sets the order of its octets by a magic word behind the length, so the length waits for it. */
std::uint32_t pcapng_reader::section_length(std::string_view head)
{
    if (head.size() < 12) {
        fault(from_.offset(), "the section header is cut off");
    }
    big_endian_ = static_cast<std::uint8_t>(head[8]) == order_magic >> 24;
    if (word(head, 8) != order_magic) {
        fault(from_.offset() + 8, "no byte-order magic in the section header");
    }
    interfaces_.clear();
    return word(head, 4);
}

bool pcapng_reader::read_block(raw_block &into)
{
    into.offset = from_.offset();
    const std::string_view head = from_.peek(12);
    if (head.empty()) {
        return false;
    }
    if (head.size() < 12) {
        fault(into.offset, fmt::format("the file ends inside a block ({} octets of it)", head.size()));
    }
    const bool section = recognises(head);
    into.type = section ? section_header : word(head, 0);
    const std::uint32_t length = section ? section_length(head) : word(head, 4);
    if (length < 12 || length % 4 != 0 || length > largest_block) {
        fault(into.offset + 4, fmt::format("a block of {} octets cannot be", length));
    }
    const std::string_view whole = from_.take(length);
    if (whole.size() < length) {
        fault(into.offset, fmt::format("the file ends inside a block ({} of {} octets)", whole.size(), length));
    }
    if (word(whole, length - 4) != length) {
        fault(into.offset + length - 4, "the two lengths of a block differ");
    }
    into.body = whole.substr(8, length - 12);
    return true;
}

std::optional<std::string_view> pcapng_reader::option(const raw_block &block, std::size_t at,
                                                      std::uint16_t code) const
{
    const std::string_view body = block.body;
    while (at + 4 <= body.size()) {
        const std::uint16_t found = half(body, at);
        const std::size_t   length = half(body, at + 2);
        if (found == opt_end) {
            break;
        }
        if (at + 4 + length > body.size()) {
            fault(block.offset + 8 + at, "an option reaches beyond its block");
        }
        if (found == code) {
            return body.substr(at + 4, length);
        }
        at += 4 + (length + 3) / 4 * 4;
    }
    return std::nullopt;
}

void pcapng_reader::add_interface(const raw_block &block)
{
    if (block.body.size() < 8) {
        fault(block.offset, "an interface description is too short");
    }
    interface_info info;
    info.link_type = half(block.body, 0);
    info.snap_length = word(block.body, 4);
    if (const auto value = option(block, 8, if_tsresol); value && value->size() == 1) {
        info.resolution = static_cast<std::uint8_t>(value->front());
    }
    if (const auto value = option(block, 8, if_tsoffset); value && value->size() == 8) {
        const std::uint64_t high = word(*value, big_endian_ ? 0 : 4);
        info.offset_seconds = static_cast<std::int64_t>(high << 32 | word(*value, big_endian_ ? 4 : 0));
    }
    interfaces_.push_back(info);
}

const pcapng_reader::interface_info &pcapng_reader::interface_at(const raw_block &block, std::uint32_t index) const
{
    if (index >= interfaces_.size()) {
        fault(block.offset + 8, fmt::format("a packet of interface {}, which is not described", index));
    }
    return interfaces_[index];
}

/* The top bit of the resolution chooses between powers of two and of ten. */
std::int64_t pcapng_reader::time_of(const interface_info &on, std::uint64_t units) const
{
    const unsigned power = on.resolution & 0x7FU;
    std::uint64_t  time = 0;
    if ((on.resolution & 0x80U) != 0) {
        const std::uint64_t whole = power < 64 ? units >> power : 0;
        std::uint64_t       rest = power < 64 ? units - (whole << power) : units;
        const unsigned      kept = std::min(power, 30U); /* bits of the fraction that the product has room for */
        rest = power - kept < 64 ? rest >> (power - kept) : 0;
        time = whole * nanoseconds + (rest * nanoseconds >> kept);
    } else {
        time = units;
        for (unsigned i = power; i < 9; ++i) {
            time *= 10;
        }
        for (unsigned i = 9; i < power; ++i) {
            time /= 10;
        }
    }
    return static_cast<std::int64_t>(time + static_cast<std::uint64_t>(on.offset_seconds) * nanoseconds);
}

pcapng_packet pcapng_reader::enhanced(const raw_block &block) const
{
    const std::string_view body = block.body;
    if (body.size() < 20 || word(body, 12) > body.size() - 20) {
        fault(block.offset, "a packet reaches beyond its block");
    }
    pcapng_packet packet;
    packet.offset = block.offset;
    packet.interface = word(body, 0);
    const interface_info &on = interface_at(block, packet.interface);
    packet.link_type = on.link_type;
    packet.time = time_of(on, static_cast<std::uint64_t>(word(body, 4)) << 32 | word(body, 8));
    const std::size_t length = word(body, 12);
    packet.original_length = word(body, 16);
    packet.octets.assign(body.begin() + 20, body.begin() + 20 + static_cast<std::ptrdiff_t>(length));
    const std::size_t options = 20 + (length + 3) / 4 * 4;
    packet.comment = option(block, options, opt_comment).value_or("");
    if (const auto flags = option(block, options, epb_flags); flags && flags->size() == 4) {
        const std::uint32_t way = word(*flags, 0) & 3;
        packet.way = way == 3 ? direction::unknown : static_cast<direction>(way);
    }
    return packet;
}

pcapng_packet pcapng_reader::simple(const raw_block &block) const
{
    if (block.body.size() < 4) {
        fault(block.offset, "a packet reaches beyond its block");
    }
    pcapng_packet         packet;
    const interface_info &on = interface_at(block, 0);
    packet.offset = block.offset;
    packet.link_type = on.link_type;
    packet.original_length = word(block.body, 0);
    std::size_t length = std::min<std::size_t>(packet.original_length, block.body.size() - 4);
    length = on.snap_length != 0 ? std::min<std::size_t>(length, on.snap_length) : length;
    packet.octets.assign(block.body.begin() + 4, block.body.begin() + 4 + static_cast<std::ptrdiff_t>(length));
    return packet;
}

std::optional<pcapng_packet> pcapng_reader::next()
{
    raw_block block;
    while (read_block(block)) {
        switch (block.type) {
        case interface_description: add_interface(block); break;
        case enhanced_packet: return enhanced(block);
        case simple_packet: return simple(block);
        default: break; /* statistics, names, custom blocks: not ours */
        }
    }
    return std::nullopt;
}

} // namespace solvane::tools
