#include "asn1_text.h"

#include <algorithm>
#include <cstdlib>

#include <fmt/format.h>

#include "print.h"
#include "text.h"

namespace solvane::tools {

namespace {

constexpr std::size_t step = 4;

const value_node *member(const value_node &of, std::string_view name)
{
    const auto found = std::find_if(of.children.begin(), of.children.end(),
                                    [&](const value_node &each) { return each.name == name; });
    return found != of.children.end() ? &*found : nullptr;
}

std::string schema_name(std::string name)
{
    std::replace(name.begin(), name.end(), '_', '-');
    return name;
}

std::string number(const value_node &node)
{
    if (node.type == "AsnBool") {
        return node.number != 0 ? "TRUE" : "FALSE";
    }
    const std::string prefix = node.type + "_";
    return node.literal.empty()                 ? std::to_string(node.number)
           : node.literal.starts_with(prefix) ? schema_name(node.literal.substr(prefix.size()))
                                                : schema_name(node.literal);
}

/* A bit string as bits, or as hex where it fills whole digits. */
std::string bits(std::int64_t length, const octets &bytes)
{
    if (length % 4 == 0) {
        return fmt::format("'{}'H", to_hex(bytes).substr(0, static_cast<std::size_t>(length / 4)));
    }
    std::string out = "'";
    for (std::int64_t i = 0; i < length && i / 8 < static_cast<std::int64_t>(bytes.size()); ++i) {
        out += (bytes[static_cast<std::size_t>(i / 8)] >> (7 - i % 8) & 1) != 0 ? '1' : '0';
    }
    return out + "'B";
}

std::string value(const value_node &node, std::size_t indent);

std::string braces(const value_node &node, std::size_t indent, bool named)
{
    if (node.children.empty()) {
        return "{ }";
    }
    const std::string margin(indent + step, ' ');
    std::string       out = "{";
    for (const auto &each : node.children) {
        out += (&each != node.children.data() ? "," : "") + std::string("\n") + margin +
               (named ? schema_name(each.name) + " " : "") + value(each, indent + step);
    }
    return out + "\n" + std::string(indent, ' ') + "}";
}

std::string record(const value_node &node, std::size_t indent)
{
    if (const auto *octs = member(node, "octs"); octs != nullptr || member(node, "octetLen") != nullptr) {
        return fmt::format("'{}'H", octs != nullptr ? to_hex(octs->bytes) : "");
    }
    if (const auto *length = member(node, "bitLen"); length != nullptr) {
        const auto *content = member(node, "bits");
        return bits(length->number, content != nullptr ? content->bytes : octets());
    }
    const auto *chosen = member(node, "a");
    if (const auto *selector = member(node, "ChoiceId"); selector != nullptr) {
        return chosen == nullptr || chosen->children.empty()
                   ? fmt::format("-- alternative {}, of a later release --", selector->number)
                   : schema_name(chosen->children[0].name) + " : " + value(chosen->children[0], indent);
    }
    return node.type == "AsnNull" ? "NULL" : braces(node, indent, true);
}

std::string value(const value_node &node, std::size_t indent)
{
    switch (node.form) {
    case shape::number: return number(node);
    case shape::octets: return fmt::format("'{}'H", to_hex(node.bytes));
    case shape::record: return record(node, indent);
    case shape::list: return braces(node, indent, false);
    case shape::pointer:
    case shape::absent:
    case shape::cut: break;
    }
    return "NULL";
}

} // namespace

std::string asn1_text(const value_node &node)
{
    return value(brief(node), 0);
}

} // namespace solvane::tools
