#include "recording.h"

#include <cstring>

#include <fmt/format.h>

#include "failure.h"
#include "script.h"

namespace solvane::tools {

namespace {

/* Link types that the capture format leaves to their users, and the one for text of decoded packets. */
constexpr std::uint16_t link_agent = 147;
constexpr std::uint16_t link_decoded = 252;
constexpr std::uint16_t link_integers = 148;

constexpr std::uint32_t interface_agent = 0;
constexpr std::uint32_t interface_decoded = 1;
constexpr std::uint32_t interface_integers = 2;

constexpr std::size_t   look_ahead = 4096;
constexpr std::uint32_t largest_sent = 16 * 1024 * 1024; /* octets of a .logel record */

packet_kind kind_of(std::uint16_t link_type)
{
    switch (link_type) {
    case link_agent: return packet_kind::agent;
    case link_integers: return packet_kind::integers;
    default: return packet_kind::other;
    }
}

class pcapng_recording : public packet_source {
public:
    explicit pcapng_recording(byte_source from) : from_(std::move(from)), reader_(from_) {}

    std::optional<packet> next() override
    {
        try {
            auto found = reader_.next();
            return found ? std::optional(as_packet(*found)) : std::nullopt;
        } catch (const pcapng_error &error) {
            throw failure(exit_findings, fmt::format("{}: {}", from_.name(), error.what()));
        }
    }

    bool is_live() const override { return from_.is_live(); }

private:
    packet as_packet(pcapng_packet &found)
    {
        packet out;
        out.number = ++count_;
        out.time = found.time;
        out.way = found.way;
        out.kind = kind_of(found.link_type);
        if (out.kind == packet_kind::agent && found.octets.empty() && !found.comment.empty()) {
            out.kind = packet_kind::note;
            out.note = std::move(found.comment);
        }
        if (found.octets.size() < found.original_length) {
            out.complaint = fmt::format("recorded only in part, {} of {} octets", found.octets.size(),
                                        found.original_length);
        }
        out.content = std::move(found.octets);
        return out;
    }

    byte_source   from_;
    pcapng_reader reader_;
    std::uint64_t count_ = 0;
};

/* Length in the writer's byte order, which is taken to be ours, then the packet; nothing else. */
class logel_recording : public packet_source {
public:
    explicit logel_recording(byte_source from) : from_(std::move(from)) {}

    std::optional<packet> next() override
    {
        const auto    at = from_.offset();
        std::uint32_t length = 0;
        const auto    head = from_.take(sizeof length);
        if (head.empty()) {
            return std::nullopt;
        }
        if (head.size() == sizeof length) {
            std::memcpy(&length, head.data(), sizeof length);
        }
        const auto body = length <= largest_sent ? from_.take(length) : std::string_view();
        if (head.size() < sizeof length || body.size() < length) {
            throw failure(exit_findings,
                          fmt::format("{}: offset {}: the file ends inside a packet", from_.name(), at));
        }
        packet out;
        out.number = ++count_;
        out.way = direction::out;
        out.content.assign(body.begin(), body.end());
        return out;
    }

    bool is_live() const override { return from_.is_live(); }

private:
    byte_source   from_;
    std::uint64_t count_ = 0;
};

/* A .logel file has no mark: its first length must be one that a packet can have. */
bool looks_like_logel(std::string_view head)
{
    std::uint32_t length = 0;
    if (head.size() < sizeof length) {
        return false;
    }
    std::memcpy(&length, head.data(), sizeof length);
    return length > 0 && length <= largest_sent &&
           (head.size() == look_ahead || length + sizeof length <= head.size());
}

} // namespace

std::unique_ptr<packet_source> read_recording(byte_source from, plugin_provider names)
{
    const std::string_view head = from.peek(from.is_live() ? 4 : look_ahead);
    if (pcapng_reader::recognises(head)) {
        return std::make_unique<pcapng_recording>(std::move(from));
    }
    if (head.empty() || looks_like_script(head)) {
        return std::make_unique<script_reader>(std::move(from), std::move(names));
    }
    if (looks_like_logel(from.peek(look_ahead))) {
        return std::make_unique<logel_recording>(std::move(from));
    }
    throw failure(exit_cannot_open, from.name() + " is no recording: neither pcapng nor text nor .logel");
}

std::unique_ptr<packet_source> open_recording(const std::string &path, plugin_provider names)
{
    return read_recording(byte_source::open(path), std::move(names));
}

recording_writer::recording_writer(pcapng_writer::sink to, const std::string &tool, const std::string &baseline)
    : writer_(std::move(to))
{
    writer_.section(tool, baseline);
    writer_.interface(link_agent, "agent", "packets between host and agent, framing taken off");
    writer_.interface(link_decoded, "decoded", "what was decoded");
    writer_.interface(link_integers, "integer traces", "traces in integer layout");
}

bool recording_writer::write(const packet &what)
{
    if (what.kind == packet_kind::other || !what.complaint.empty()) {
        return false;
    }
    const bool integers = what.kind == packet_kind::integers;
    writer_.packet(integers ? interface_integers : interface_agent, what.time.value_or(0), what.way, what.content,
                   what.note);
    return true;
}

void recording_writer::write_decoded(const packet &of, const octets &record)
{
    writer_.packet(interface_decoded, of.time.value_or(0), of.way, record);
}

} // namespace solvane::tools
