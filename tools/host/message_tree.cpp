#include "message_tree.h"

#include <algorithm>

#include <fmt/format.h>

#include "failure.h"
#include "lookup.h"
#include "wire_value.h"

namespace solvane::tools {

namespace {

constexpr std::size_t longest_list = 12;   /* elements that a line shows */
constexpr std::size_t longest_octets = 32;

std::string remarks_on(std::size_t octets, const decoded_message &found)
{
    std::string out;
    const auto  add = [&](const std::string &text) { out.append(out.empty() ? "" : ", ").append(text); };
    if (found.error.code != 0) {
        add(found.error.code == 1 ? "a value outside its range" : "broken off");
    }
    if (found.error.must_understand != 0) {
        add("an unknown element that has to be understood");
    }
    if (found.octets_used < octets) {
        add(fmt::format("{} of {} octets used", found.octets_used, octets));
    } else if (found.octets_used > octets) {
        add(fmt::format("{} octets wanted, {} there", found.octets_used, octets));
    }
    return out;
}

void read_by_codec(session &work, const tt_peer_row &row, const type_use &use, const octets &message, bool isolate,
                   message_tree &out)
{
    const decoded_message found = decode_peer(row, message, isolate);
    out.died = found.died;
    out.read = !found.died;
    if (out.read) {
        out.value = read_value(work.started(), *out.in, use, found.memory(row), memory::live);
        out.remarks = remarks_on(message.size(), found);
        out.octets_used = found.octets_used;
        out.error = found.error;
    }
    release_memory();
}

void read_by_form(session &work, const std::string &name, const octets &message, message_tree &out)
{
    const auto form = wire_form_of(*out.in, name);
    if (!form) {
        return;
    }
    const wire_reading found = read_wire(work.started(), *form, message);
    out.read = true;
    out.value = found.value;
    out.octets_used = found.octets_used;
    if (found.ran_short) {
        out.remarks = fmt::format("ends too soon, behind {} octets", message.size());
    } else if (found.octets_used < message.size()) {
        out.remarks = fmt::format("{} of {} octets used", found.octets_used, message.size());
    }
}

/* The octets of a member: an array's own, or those of the record that an octet or bit string is. */
const octets *content_of(const value_node &node)
{
    if (node.form == shape::octets) {
        return &node.bytes;
    }
    for (const auto &each : node.children) {
        const bool content = node.form == shape::pointer || each.name == "octs" || each.name == "bits" ||
                             each.name == "message";
        if (content) {
            return content_of(each);
        }
    }
    return nullptr;
}

void open_member(session &work, value_node &node, const std::string &member, const std::string &name, bool isolate)
{
    const octets *content = node.name == member ? content_of(node) : nullptr;
    if (content == nullptr) {
        for (auto &each : node.children) {
            open_member(work, each, member, name, isolate);
        }
        return;
    }
    message_tree inner = tree_of(work, name, *content, isolate);
    if (!inner.read) {
        work.finding(fmt::format("{} holds no {}", member, name));
        return;
    }
    if (!inner.remarks.empty()) {
        work.finding(fmt::format("{} in {}: {}", name, member, inner.remarks));
    }
    inner.value.name = name;
    node.children.push_back(std::move(inner.value));
}

/* What tells nothing that the line does not tell otherwise. */
bool is_bookkeeping(const std::string &name)
{
    return name.starts_with("no_") || name.ends_with("_size") || name == "response" || name == "command_code";
}

std::string list_text(const value_node &node)
{
    if (node.children.size() > longest_list) {
        return fmt::format("({} elements)", node.children.size());
    }
    std::string out = "[";
    for (const auto &child : node.children) {
        out.append(out.size() > 1 ? " " : "");
        out += child.form == shape::record ? fmt::format("{{{}}}", inline_text(child)) : inline_text(child);
    }
    return out + "]";
}

std::string members_text(const value_node &node)
{
    std::string out;
    for (const auto &child : node.children) {
        if (!is_bookkeeping(child.name) && child.form != shape::absent) {
            const std::string text = inline_text(child);
            const bool        group = child.form == shape::record;
            out += (out.empty() ? "" : " ") + child.name + (group ? "{" + text + "}" : "=" + text);
        }
    }
    return out;
}

} // namespace

std::string octets_text(std::span<const std::uint8_t> octets)
{
    if (octets.empty()) {
        return "none";
    }
    const bool text = std::all_of(octets.begin(), octets.end(), [](std::uint8_t b) { return b >= 0x20 && b < 0x7F; });
    if (text) {
        return quoted(std::string(octets.begin(), octets.end()));
    }
    const auto shown = octets.first(std::min(octets.size(), longest_octets));
    return to_hex(shown) + (shown.size() < octets.size() ? fmt::format("... ({} octets)", octets.size()) : "");
}

message_tree tree_of(session &work, const std::string &name, const octets &message, bool isolate)
{
    message_tree out;
    const auto   described = describing_type(work, name);
    if (!described) {
        return out;
    }
    out.in = described->in;
    if (const tt_peer_row *row = peer_row(work.started(), name)) {
        read_by_codec(work, *row, described->use, message, isolate, out);
    } else {
        read_by_form(work, name, message, out);
    }
    return out;
}

std::string inline_text(const value_node &node)
{
    switch (node.form) {
    case shape::number:
        return !node.literal.empty() ? node.literal : std::to_string(node.number);
    case shape::octets: return octets_text(node.bytes);
    case shape::record: return members_text(node);
    case shape::list: return list_text(node);
    case shape::pointer: return node.children.empty() ? "-" : inline_text(node.children.front());
    case shape::absent: return "-";
    case shape::cut: return "?";
    }
    return {};
}

void open_containers(session &work, value_node &in, const std::string &what, bool isolate)
{
    const auto equals = what.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw failure(exit_usage, fmt::format("{}: give the member and the structure, MEMBER=STRUCT", what));
    }
    const std::string name = what.substr(equals + 1);
    find_peer_row(work, name);
    open_member(work, in, what.substr(0, equals), name, isolate);
}

} // namespace solvane::tools
