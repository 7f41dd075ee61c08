#include <algorithm>

#include <fmt/format.h>

#include "print.h"

namespace solvane::tools {

namespace {

constexpr std::size_t indent_step = 4;
constexpr std::size_t widest_name = 32;
constexpr std::size_t longest_octets = 64; /* octets a line of text shows; JSON has them all */

std::string octets_text(const painter &paint, const value_node &node)
{
    const std::span<const std::uint8_t> all = node.bytes;
    const auto                          shown = all.first(std::min(all.size(), longest_octets));
    std::string                         out = paint(ink::number, shown.empty() ? "(none)" : to_hex(shown));
    out += shown.size() < all.size() ? fmt::format("... ({} octets)", all.size()) : "";
    return out + (node.words.empty() ? "" : "  " + paint(ink::text, quoted(node.words)));
}

/* An address means nothing to a reader who sees what stands there. */
std::string pointer_text(const painter &paint, const value_node &node)
{
    if (node.number == 0) {
        return paint(ink::note, "null");
    }
    return node.children.empty() ? paint(ink::number, fmt::format("{:#x}", static_cast<std::uint64_t>(node.number)))
                                 : "";
}

std::string value_text(const painter &paint, const value_node &node)
{
    switch (node.form) {
    case shape::number: return number_text(paint, node);
    case shape::octets: return octets_text(paint, node);
    case shape::pointer: return pointer_text(paint, node);
    case shape::absent: return paint(ink::note, "absent");
    case shape::cut: return paint(ink::bad, "beyond the end of the image");
    case shape::record:
    case shape::list: break;
    }
    return {};
}

std::string with_note(const painter &paint, const value_node &node, std::string text)
{
    return node.note.empty() ? text : text + (text.empty() ? "" : "  ") + paint(ink::note, "(" + node.note + ")");
}

void print_children(session &to, const value_node &node, std::size_t indent);

void print_node(session &to, const value_node &node, const std::string &name, std::size_t indent, std::size_t column)
{
    const std::string text = with_note(to.paint, node, value_text(to.paint, node));
    const bool        empty_list = node.form == shape::list && node.children.empty();
    const std::string shown = empty_list ? to.paint(ink::note, "empty") : text;
    const std::string head = shown.empty() ? to.paint(ink::name, name)
                                           : to.paint.padded(ink::name, name, column) + "  " + shown;
    to.line(std::string(indent, ' ') + head);
    print_children(to, node, indent + indent_step);
}

void print_children(session &to, const value_node &node, std::size_t indent)
{
    std::vector<std::string> names;
    std::size_t              column = 0;
    for (const auto &child : node.children) {
        const bool pointee = node.form == shape::pointer;
        names.push_back(pointee ? "->" : child.name.empty() ? fmt::format("[{}]", names.size()) : child.name);
        column = std::max(column, names.back().size());
    }
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        print_node(to, node.children[i], names[i], indent, std::min(column, widest_name));
    }
}

const value_node *sibling(const value_node &of, std::string_view name)
{
    const auto found = std::find_if(of.children.begin(), of.children.end(),
                                    [&](const value_node &each) { return each.name == name; });
    return found != of.children.end() ? &*found : nullptr;
}

/* Whether `node` only serves another member of `in`: counts it, tells its room or its presence. */
bool serves(const value_node &in, const value_node &node)
{
    const std::string_view name = node.name;
    const auto             of = [&](std::string_view ending) {
        return name.ends_with(ending) && sibling(in, name.substr(0, name.size() - ending.size())) != nullptr;
    };
    return of("_present") || of("Opt") || (name.ends_with("_present") && node.number == 0) ||
           (of("_size") && sibling(in, "no_" + std::string(name.substr(0, name.size() - 5))) != nullptr) ||
           (name.starts_with("no_") && sibling(in, name.substr(3)) != nullptr);
}

bool is_nothing(const value_node &node)
{
    return node.form == shape::absent || (node.form == shape::pointer && node.children.empty() && node.number == 0);
}

/* An array in place holds as many elements as its count says. */
void cut_to_count(const value_node &in, value_node &node)
{
    const value_node *count = sibling(in, "no_" + node.name);
    if (count == nullptr || count->form != shape::number) {
        return;
    }
    const auto wanted = static_cast<std::size_t>(count->number);
    if (node.form == shape::octets && wanted <= node.bytes.size()) {
        node.bytes.resize(wanted);
    } else if (node.form == shape::list && wanted <= node.children.size()) {
        node.children.resize(wanted);
    }
}

bool is_empty(const value_node &node)
{
    return (node.form == shape::octets && node.bytes.empty()) || (node.form == shape::list && node.children.empty());
}

} // namespace

value_node brief(value_node node)
{
    if (node.form == shape::pointer && node.children.size() == 1 && node.children[0].form != shape::number) {
        value_node content = std::move(node.children[0]);
        content.name = node.name;
        return brief(std::move(content));
    }
    std::vector<value_node> kept;
    for (const auto &each : node.children) {
        const bool member = node.form == shape::record;
        if (member && (is_nothing(each) || serves(node, each))) {
            continue;
        }
        value_node copy = each;
        if (member) {
            cut_to_count(node, copy);
        }
        if (!member || !is_empty(copy) || is_empty(each)) {
            kept.push_back(brief(std::move(copy)));
        }
    }
    node.children = std::move(kept);
    return node;
}

std::string number_text(const painter &paint, const value_node &node)
{
    std::string out = paint(ink::number, std::to_string(node.number));
    if (!node.literal.empty()) {
        out.append(" ").append(paint(ink::name, node.literal));
    }
    if (!node.words.empty()) {
        out.append("  ").append(paint(ink::text, quoted(node.words)));
    }
    return out;
}

void print_value(session &to, const value_node &node)
{
    if (node.form != shape::record && node.form != shape::list) {
        to.line(with_note(to.paint, node, value_text(to.paint, node)));
    }
    print_children(to, node, indent_step);
}

} // namespace solvane::tools
