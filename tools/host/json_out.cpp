#include "json_out.h"

namespace solvane::tools {

namespace {

constexpr int deepest_expansion = 32;

json json_parts(const laid_member &member)
{
    json parts = json::array();
    for (const auto &part : member.parts) {
        parts.push_back({{"octet", part.octet}, {"high", part.high}, {"low", part.low}});
    }
    return parts;
}

json json_levels(const laid_member &member)
{
    json levels = json::array();
    for (const auto &each : member.levels) {
        levels.push_back(each.pointer ? json("pointer") : json(each.count));
    }
    return levels;
}

json json_member(const domain &in, const laid_record &record, const laid_member &member, int expand)
{
    json out;
    out["name"] = member.row->name;
    if (member.is_bit_field()) {
        out["width"] = member.width;
        out["bits"] = json_parts(member);
    } else {
        out["type"] = member.row->type_name != nullptr ? member.row->type_name : "";
        out["octets"] = member.size;
    }
    out["offset"] = member.offset;
    if (!member.levels.empty()) {
        out["dims"] = json_levels(member);
    }
    out["role"] = json_enum(member.row->role, role_word(member.row->role));
    if (member.row->ref != RW_NO_REF) {
        const bool index = !record.is_union() && member.row->ref < record.members.size();
        out[record.is_union() ? "case" : "ref"] =
            index ? json(record.members[member.row->ref].row->name) : json(member.row->ref);
    }
    if (const auto notes = notes_on(in, record, member); !notes.empty()) {
        out["notes"] = notes;
    }
    if (expand > 0 && !member.is_bit_field() && member.levels.empty() && member.type.is_record()) {
        json inner = json::array();
        const laid_record inside = lay_out(in, struct_row(in, member.type), member.type.rt_tag);
        for (const auto &each : inside.members) {
            inner.push_back(json_member(in, inside, each, expand - 1));
        }
        out["members"] = inner;
    }
    return out;
}

json json_number(const value_node &node)
{
    if (node.literal.empty() && node.words.empty()) {
        return node.number;
    }
    json out = json_enum(node.number, node.literal.empty() ? node.words : node.literal);
    if (!node.literal.empty() && !node.words.empty()) {
        out["words"] = node.words;
    }
    return out;
}

json json_pointer(const value_node &node)
{
    json out = {{"address", static_cast<std::uint64_t>(node.number)}};
    if (!node.note.empty()) {
        out["note"] = node.note;
    }
    if (!node.children.empty()) {
        out["points_to"] = json_value(node.children.front());
    }
    return out;
}

} // namespace

json json_object(std::string_view name)
{
    json out;
    out["schema"] = "solvane." + std::string(name) + "/1";
    return out;
}

json json_enum(std::int64_t value, std::string_view text)
{
    json out = {{"value", value}};
    if (!text.empty()) {
        out["text"] = text;
    }
    return out;
}

json json_layout(const domain &in, const laid_record &record, bool expand)
{
    json members = json::array();
    for (const auto &member : record.members) {
        members.push_back(json_member(in, record, member, expand ? deepest_expansion : 0));
    }
    json holes = json::array();
    for (const auto &each : record.holes) {
        holes.push_back(each.octets != 0 ? json{{"offset", each.offset}, {"octets", each.octets}}
                                         : json{{"offset", each.offset}, {"bits", each.bits}});
    }
    return {{"kind", json_enum(record.row->kind, kind_word(record.row->kind))},
            {"octets", record.size},
            {"members", members},
            {"holes", holes}};
}

json json_value(const value_node &node)
{
    switch (node.form) {
    case shape::number: return json_number(node);
    case shape::octets: return to_hex(node.bytes);
    case shape::pointer: return json_pointer(node);
    case shape::absent:
    case shape::cut: return nullptr;
    case shape::list: {
        json list = json::array();
        for (const auto &child : node.children) {
            list.push_back(json_value(child));
        }
        return list;
    }
    case shape::record: break;
    }
    json object = json::object();
    for (const auto &child : node.children) {
        object[child.name] = json_value(child);
    }
    return object;
}

std::string json_line(const json &object)
{
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace solvane::tools
