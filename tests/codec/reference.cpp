#include "reference.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>

#include <fnmatch.h>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "peer_message.h"

namespace solvane::test {

using namespace solvane::tools;

namespace {

std::vector<std::string> columns_of(const std::string &line)
{
    std::vector<std::string> columns;
    std::istringstream       in(line);
    for (std::string column; std::getline(in, column, '\t');)
        columns.push_back(column);
    return columns;
}

std::uint32_t number_of(const std::string &text)
{
    return static_cast<std::uint32_t>(parse_number(text).value_or(0));
}

/// A tab-separated line of a family's file; false where it is none that we know.
bool add_rule(family_rules &rules, const std::vector<std::string> &c)
{
    if (c[0] == "message" && c.size() == 6)
        rules.messages.push_back({c[1], c[2], c[3], c[4], c[5]});
    else if (c[0] == "inner" && c.size() == 7)
        rules.inners.push_back({c[1], c[2], c[3], number_of(c[4]), number_of(c[5]), number_of(c[6])});
    else if (c[0] == "field" && (c.size() == 3 || c.size() == 4))
        rules.fields[c[1]].push_back({c[2], c.size() == 4 ? c[3] : "number"});
    else if (c[0] == "ignore" && c.size() == 3)
        rules.ignored[c[1]] = c[2];
    else if (c[0] == "skip" && c.size() == 3)
        rules.skipped[c[1]] = c[2];
    else if (c[0] == "known" && c.size() == 4)
        rules.known[{c[1], c[2]}] = c[3];
    else
        return false;
    return true;
}

} // namespace

// ------------------------------------------------------------------------------------------------ what is read

std::filesystem::path vectors_folder()
{
    const char *folder = std::getenv("SOLVANE_VECTORS");
    return folder != nullptr ? folder : SOLVANE_VECTORS_DEFAULT;
}

std::vector<vector_row> read_vectors(const std::string &family)
{
    std::vector<vector_row> rows;
    std::ifstream           table(vectors_folder() / (family + ".tsv"));
    std::ifstream           decodes(vectors_folder() / "reference" / (family + ".json"));
    if (!table || !decodes)
        return rows;
    const nlohmann::json reference = nlohmann::json::parse(decodes);
    std::string          line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        const std::vector<std::string> c = columns_of(line);
        vector_row                     row{c[0], c[1], c[2], parse_hex(c[3]).value, {}};
        for (const auto &field : reference.at(row.id))
            row.fields.emplace_back(field[0].get<std::string>(), field[1].get<std::string>());
        rows.push_back(std::move(row));
    }
    return rows;
}

static void add_rules(family_rules &rules, const std::filesystem::path &file)
{
    std::ifstream in(file);
    EXPECT_TRUE(in) << file;
    std::size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.empty() || line.front() == '#')
            continue;
        const auto columns = columns_of(line);
        if (columns.size() == 2 && columns[0] == "include")
            add_rules(rules, file.parent_path() / columns[1]);
        else if (!add_rule(rules, columns))
            ADD_FAILURE() << file.string() << ":" << number << ": no rule: " << line;
    }
}

family_rules read_rules(const std::filesystem::path &file)
{
    family_rules rules;
    add_rules(rules, file);
    return rules;
}

const plugin &loaded_plugin()
{
    static const plugin loaded = [] {
        const plugin p = load_plugin(SOLVANE_PLUGIN);
        lend_memory(*p.version);
        start_plugin(p);
        return p;
    }();
    return loaded;
}

// ------------------------------------------------------------------------------------------------ members as leaves

namespace {

/// The count that stands beside an array in its record.
std::optional<std::size_t> count_beside(const value_node &record, const std::string &array)
{
    for (const value_node &child : record.children) {
        if (child.name == "no_" + array)
            return static_cast<std::size_t>(child.number);
    }
    return std::nullopt;
}

void add_leaves(const value_node &node, const std::string &path, std::optional<std::size_t> count,
                std::vector<leaf> &out)
{
    switch (node.form) {
    case shape::number: out.push_back({path, false, node.number, {}}); break;
    case shape::octets: {
        octets bytes = node.bytes;
        if (count && *count < bytes.size())
            bytes.resize(*count);
        if (!count || *count > 0)
            out.push_back({path, true, 0, bytes});
        break;
    }
    case shape::record:
        for (const value_node &child : node.children)
            add_leaves(child, path.empty() ? child.name : path + "." + child.name, count_beside(node, child.name), out);
        break;
    case shape::list: {
        const std::size_t elements = count ? std::min(*count, node.children.size()) : node.children.size();
        for (std::size_t n = 0; n < elements; ++n)
            add_leaves(node.children[n], fmt::format("{}[{}]", path, n), std::nullopt, out);
        break;
    }
    case shape::pointer:
        for (const value_node &child : node.children)
            add_leaves(child, path, count, out);
        break;
    case shape::absent:
    case shape::cut: break;
    }
}

// ------------------------------------------------------------------------------------------------ values

std::optional<std::int64_t> reference_number(const std::string &text)
{
    if (text == "True" || text == "False")
        return text == "True";
    const bool negative = text.starts_with('-');
    const auto number = parse_number(negative ? text.substr(1) : text);
    if (!number)
        return std::nullopt;
    return negative ? -static_cast<std::int64_t>(*number) : static_cast<std::int64_t>(*number);
}

octets bytes_of(const leaf &ours)
{
    if (ours.is_octets)
        return ours.bytes;
    octets bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(ours.number >> shift));
    return bytes;
}

/// Digits, the filler of a short MNC left out.
std::string digits_of(const leaf &ours)
{
    std::string text;
    for (const std::uint8_t digit : ours.bytes) {
        if (digit != 15)
            text += "0123456789*#abc"[digit % 15];
    }
    return text;
}

/// Up to two numbers behind the name of a conversion: `mask(7,4)`.
std::pair<std::int64_t, std::int64_t> arguments_of(const std::string &conversion)
{
    const std::size_t open = conversion.find('(');
    if (open == std::string::npos)
        return {0, 0};
    char        *end = nullptr;
    const long   first = std::strtol(conversion.c_str() + open + 1, &end, 0);
    const long   second = *end == ',' ? std::strtol(end + 1, nullptr, 0) : 0;
    return {first, second};
}

bool same_octets(const leaf &ours, const std::string &reference)
{
    const octets wanted = parse_hex(reference).value;
    octets       bytes = bytes_of(ours);
    if (!ours.is_octets && wanted.size() < bytes.size())
        bytes.erase(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(wanted.size()));
    return bytes == wanted;
}

bool same_address(const leaf &ours, const std::string &reference)
{
    std::string text;
    for (const std::uint8_t octet : bytes_of(ours))
        text += fmt::format("{}{}", text.empty() ? "" : ".", octet);
    return text == reference;
}

} // namespace

std::vector<leaf> leaves_of(const value_node &value)
{
    std::vector<leaf> out;
    add_leaves(value, "", std::nullopt, out);
    return out;
}

bool agrees(const leaf &ours, const std::string &conversion, const std::string &reference)
{
    const std::string name = conversion.substr(0, conversion.find('('));
    const auto [first, second] = arguments_of(conversion);
    if (name == "octets")
        return same_octets(ours, reference);
    if (name == "digits")
        return digits_of(ours) == reference;
    if (name == "text")
        return std::string(ours.bytes.begin(), ours.bytes.end()) == reference;
    if (name == "address")
        return same_address(ours, reference);
    const std::optional<std::int64_t> wanted = reference_number(reference);
    if (!wanted)
        return false;
    if (name == "decimal")
        return static_cast<std::int64_t>(std::strtoll(digits_of(ours).c_str(), nullptr, 10)) == *wanted;
    std::int64_t number = ours.number;
    if (ours.is_octets) {
        for (const std::uint8_t octet : ours.bytes)
            number = number << 8 | octet;
    }
    if (name == "mask")
        number = number >> second & first;
    else if (name == "plus")
        number += first;
    else if (name == "times")
        number *= first;
    else if (name == "not")
        number = number == 0;
    else if (name == "byte")
        number = static_cast<std::size_t>(first) < ours.bytes.size() ? ours.bytes[static_cast<std::size_t>(first)] : -1;
    return number == *wanted;
}

// ------------------------------------------------------------------------------------------------ one message

namespace {

const message_rule *rule_for(const family_rules &rules, const vector_row &row)
{
    const auto found = std::ranges::find_if(rules.messages, [&](const message_rule &r) {
        return (r.kind == "*" || r.kind == row.kind) && r.message == row.message;
    });
    return found == rules.messages.end() ? nullptr : &*found;
}

std::int64_t literal_value(const char *enumeration, const std::string &literal)
{
    for (const domain &d : domains_of(loaded_plugin())) {
        const rw_enum_row *row = find_enum(d, enumeration);
        for (std::uint32_t n = 0; row != nullptr && n < row->no_literals; ++n) {
            if (row->literals[n].name == literal)
                return row->literals[n].value.num;
        }
    }
    ADD_FAILURE() << "no literal " << literal << " in " << enumeration;
    return 0;
}

std::string classified(const message_rule &rule, octets message)
{
    tt_msg_struct ilm = {};
    ilm.dest_entity_id = 1;
    ilm.sap_id = static_cast<std::uint8_t>(literal_value("stack_sap_enum", rule.sap));
    ilm.msg_id = static_cast<std::uint16_t>(literal_value("stack_msg_enum", rule.msg));
    ilm.peer_buff.no_peer_buff_ptr = static_cast<std::uint16_t>(message.size());
    message.resize(message.size() + 4);
    ilm.peer_buff.peer_buff_ptr = message.data();
    const char *name = loaded_plugin().info->tt_peer_struct_name(&ilm);
    return name != nullptr ? name : "nothing";
}

/// One structure and those in its octets: their members, and whether they come back bit by bit.
struct reading {
    const family_rules       &rules;
    const std::string         id;
    outcome                  &result;
    std::vector<leaf>         leaves;

    void read(const std::string &structure, const octets &message, const std::string &prefix);
    void differs(const std::string &field, const std::string &text);
};

/// A difference, unless the family's file gives a reason for it.
void reading::differs(const std::string &field, const std::string &text)
{
    if (!rules.known.contains({id, field}) && !rules.known.contains({"*", field}))
        result.differences.push_back(fmt::format("{} {}: {}", id, field, text));
}

void reading::read(const std::string &structure, const octets &message, const std::string &prefix)
{
    const tt_peer_row *row = peer_row(loaded_plugin(), structure);
    if (row == nullptr) {
        differs("row", structure + " has no row");
        return;
    }
    decoded_message found = decode_peer(*row, message, false);
    result.decoded = true;
    for (const domain &d : domains_of(loaded_plugin())) {
        const std::optional<type_use> use = find_type(d, structure);
        if (!use)
            continue;
        std::vector<leaf> own = leaves_of(read_value(loaded_plugin(), d, *use, found.memory(*row), memory::live));
        for (leaf &l : own)
            l.path = prefix + l.path;
        leaves.insert(leaves.end(), own.begin(), own.end());
        break;
    }
    const octets again = encode_peer(*row, found.memory(*row), 65536, false).message;
    result.repacked = again == message;
    if (!result.repacked)
        differs("repack", fmt::format("{} {} comes back as {}", structure, to_hex(message), to_hex(again)));
    for (const inner_rule &inner : rules.inners) {
        const auto at = std::ranges::find(leaves, prefix + inner.path, &leaf::path);
        if (inner.structure != structure || at == leaves.end() || at->bytes.size() <= inner.offset ||
            (at->bytes[inner.offset] & inner.mask) != inner.value)
            continue;
        const octets content = at->bytes;
        const bool   outer = result.repacked;
        read(inner.inner, content, prefix + inner.path + ".");
        result.repacked = result.repacked && outer;
        break;
    }
}

std::string text_of(const leaf &l)
{
    return l.is_octets ? to_hex(l.bytes) : std::to_string(l.number);
}

/// Members that a field of the reference may be, in the order of the record.
std::vector<std::pair<const leaf *, const field_rule *>> candidates(const std::vector<leaf>       &leaves,
                                                                    const std::vector<field_rule> &paths)
{
    std::vector<std::pair<const leaf *, const field_rule *>> found;
    for (const leaf &l : leaves) {
        for (const field_rule &rule : paths) {
            if (fnmatch(rule.path.c_str(), l.path.c_str(), 0) == 0) {
                found.emplace_back(&l, &rule);
                break;
            }
        }
    }
    return found;
}

bool is_ignored(const family_rules &rules, const std::string &field)
{
    return std::ranges::any_of(rules.ignored, [&](const auto &rule) {
        return fnmatch(rule.first.c_str(), field.c_str(), 0) == 0;
    });
}

/// The n-th occurrence of a field is the n-th member that it may be.
void compare(const family_rules &rules, const vector_row &row, reading &ours)
{
    std::map<std::string, std::size_t> seen;
    for (const auto &[field, value] : row.fields) {
        const auto rule = rules.fields.find(field);
        if (rule == rules.fields.end() && is_ignored(rules, field))
            continue;
        if (rule == rules.fields.end()) {
            ours.result.unmapped.push_back(field);
            ours.differs(field, "no rule names it, value " + value);
            continue;
        }
        ++ours.result.fields;
        const auto        members = candidates(ours.leaves, rule->second);
        const std::size_t n = seen[field]++;
        if (n >= members.size())
            ours.differs(field, fmt::format("missing, occurrence {}, {}", n + 1, value));
        else if (!agrees(*members[n].first, members[n].second->conversion, value))
            ours.differs(field, fmt::format("{} is {}, wanted {}", members[n].first->path,
                                            text_of(*members[n].first), value));
        else
            ++ours.result.agreeing;
    }
}

} // namespace

outcome try_message(const family_rules &rules, const vector_row &row)
{
    outcome             result;
    reading             ours{rules, row.id, result, {}};
    const message_rule *rule = rule_for(rules, row);
    if (rule == nullptr) {
        ours.differs("message", fmt::format("no rule for {} {}", row.kind, row.message));
        return result;
    }
    if (rule->sap != "-") {
        const std::string name = classified(*rule, row.hex);
        if (name != rule->structure)
            ours.differs("classify", fmt::format("{} in place of {}", name, rule->structure));
    }
    ours.read(rule->structure, row.hex, "");
    compare(rules, row, ours);
    release_memory();
    return result;
}

} // namespace solvane::test
