#include "model/dump_wire.h"

#include <array>

#include <fmt/format.h>

namespace solvane::gen {
namespace {

using what = wire_item::what;

std::string place_text(const model &m, const wire_place &p)
{
    std::string text;
    for (const wire_place::step &s : p.steps) {
        text += (text.empty() ? "" : ".") + m.records[s.record_id].members[s.member].name;
        if (s.index)
            text += fmt::format("[{}]", *s.index);
    }
    return text;
}

std::string conditions_text(const model &m, const std::vector<wire_condition> &conditions)
{
    constexpr std::array signs = {"set", "clear", "==", "!=", "<", "<=", ">", ">=", "&", "left"}; // ORDER conditions
    std::string          text;
    for (const wire_condition &c : conditions) {
        const std::string member = place_text(m, c.member);
        text += fmt::format("{}{}{}{} {}", text.empty() ? "" : ", ", member, member.empty() ? "" : " ",
                            signs[static_cast<std::size_t>(c.kind)], c.value);
    }
    return text;
}

std::string element_text(const model &m, const wire_item &i)
{
    return i.width != 0 ? fmt::format("{} bits", i.width) : m.records[i.record_id].name;
}

std::string array_text(const model &m, const wire_item &i)
{
    constexpr std::array extents = {"fixed", "counted", "to the end", "chained", "linked"};
    std::string text = fmt::format("array {} {} of {}{}", place_text(m, i.member),
                                   extents[static_cast<std::size_t>(i.extent)], i.bcd ? "digits, " : "",
                                   element_text(m, i));
    if (i.extent == wire_extent::fixed)
        return text + fmt::format(", {}", i.count);
    text += ", count " + place_text(m, i.other);
    return text + (i.is_pointer ? ", capacity " + place_text(m, i.capacity) : fmt::format(", room {}", i.count));
}

std::string items_text(const model &m, const std::vector<wire_item> &items, const std::string &margin);

std::string item_text(const model &m, const wire_item &i, const std::string &margin)
{
    const std::string member = place_text(m, i.member);
    const std::string inside = margin + "  ";
    switch (i.kind) {
    case what::field:
        return fmt::format("field {} {}{}\n", member, i.width, i.minus ? fmt::format(" less {}", i.minus) : "");
    case what::constant: return fmt::format("constant {} {}\n", i.value, i.width);
    case what::presence: return fmt::format("presence {}{}\n", i.inverse ? "not " : "", member);
    case what::any: return fmt::format("any {}{}\n", i.inverse ? "not " : "", member);
    case what::derive: return fmt::format("derive {} from {}\n", member, conditions_text(m, i.conditions));
    case what::look: return fmt::format("look {} {} at {}\n", member, i.width, i.value);
    case what::low_high: return fmt::format("low_high {}\n", member);
    case what::record: return fmt::format("record {} {}\n", member, m.records[i.record_id].name);
    case what::array: return array_text(m, i) + "\n";
    case what::align: return "align\n";
    case what::choice: {
        std::string text = fmt::format("choice {} by {}\n", member, place_text(m, i.other));
        for (const wire_item &branch : i.items)
            text += fmt::format("{}case {} {}", inside, branch.value, item_text(m, branch, inside));
        return text;
    }
    case what::group:
        return fmt::format("if {}\n{}{}{}", conditions_text(m, i.conditions), items_text(m, i.items, inside),
                           i.otherwise.empty() ? "" : margin + "else\n", items_text(m, i.otherwise, inside));
    case what::block:
        return fmt::format("length {} {}{}\n", i.width, i.name,
                           i.trim.steps.empty() ? "" : " trim " + place_text(m, i.trim)) +
               items_text(m, i.items, inside);
    case what::window:
        return fmt::format("window {} of {}{}\n", i.name, i.keeps ? "all octets, kept in " : "bits in ", member) +
               items_text(m, i.items, inside);
    case what::word: return fmt::format("word {}\n{}", i.width, items_text(m, i.items, inside));
    }
    return {};
}

std::string items_text(const model &m, const std::vector<wire_item> &items, const std::string &margin)
{
    std::string text;
    for (const wire_item &i : items)
        text += margin + item_text(m, i, margin);
    return text;
}

std::string option_text(const model &m, const wire_option &o)
{
    std::string text = fmt::format("  option {} 0x{:02X} {}, present {}", o.order, o.identifier, o.name,
                                   place_text(m, o.present));
    if (o.bare)
        text += ", bare";
    else if (o.half)
        text += ", half octet";
    else
        text += o.length_width != 0 ? fmt::format(", length {}", o.length_width) : fmt::format(", {} octets", o.octets);
    return text + "\n" + items_text(m, o.items, "    ");
}

} // namespace

std::string dump_wire(const model &m, const record &r)
{
    if (!r.wire)
        return {};
    const wire_codec &w = *r.wire;
    std::string       text = w.is_message ? "wire message" : "wire element";
    if (w.length_width != 0)
        text += fmt::format(", length {} {}", w.length_width, w.length_name);
    if (!w.trim.steps.empty())
        text += ", trim " + place_text(m, w.trim);
    text += w.bits ? fmt::format(", {} bits", *w.bits) : "";
    text += w.owns ? ", owns memory\n" : "\n";
    text += items_text(m, w.items, "  ");
    for (const wire_option &o : w.options)
        text += option_text(m, o);
    return text;
}

} // namespace solvane::gen
