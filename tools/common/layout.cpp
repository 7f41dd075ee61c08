#include "layout.h"

#include <algorithm>

#include <fmt/format.h>

#include "failure.h"

namespace solvane::tools {

namespace {

[[noreturn]] void broken_member(const domain &in, const rw_struct_row &row, const char *member, const char *what)
{
    throw failure(exit_mismatch,
                  fmt::format("broken dictionary of domain {}: {}.{} {}", in.name, row.name, member, what));
}

void place_bit_field(const domain &in, const rw_struct_row &row, laid_member &member)
{
    const std::uint32_t index = member.row->offsize_index;
    if (in.types->bit_map == nullptr || index >= in.types->no_bit_map) {
        broken_member(in, row, member.row->name, "has no row in the bit map");
    }
    const mta_bit_map_struct &map = in.types->bit_map[index];
    member.width = map.no_bits;
    member.parts = parts_of(map);
    if (member.parts.empty()) {
        broken_member(in, row, member.row->name, "has a place in the bit map that is none");
    }
    std::uint64_t first = member.parts[0].octet;
    std::uint64_t last = first;
    for (const auto &part : member.parts) {
        first = std::min(first, part.octet);
        last = std::max(last, part.octet);
    }
    member.offset = first;
    member.size = last - first + 1;
}

void place_octets(const domain &in, const rw_struct_row &row, laid_member &member)
{
    member.type = resolve(in, use_of(*member.row));
    member.levels = levels_of(in, member.type);
    member.size = size_of(in, member.type);
    if (row.kind != RW_KIND_UNION) {
        member.offset = offsize_at(in, member.row->offsize_index);
    }
}

/* The bits of each octet that members cover. */
std::vector<std::uint8_t> coverage(const domain &in, const laid_record &record)
{
    std::vector<std::uint8_t> covered(static_cast<std::size_t>(record.size));
    for (const auto &member : record.members) {
        if (member.offset + member.size > record.size) {
            broken_member(in, *record.row, member.row->name, "reaches beyond its structure");
        }
        for (const auto &part : member.parts) {
            covered[static_cast<std::size_t>(part.octet)] |=
                static_cast<std::uint8_t>((2U << part.high) - (1U << part.low));
        }
        if (!member.is_bit_field()) {
            std::fill_n(covered.begin() + static_cast<std::ptrdiff_t>(member.offset), member.size,
                        std::uint8_t{0xFF});
        }
    }
    return covered;
}

std::vector<hole> find_holes(const std::vector<std::uint8_t> &covered)
{
    std::vector<hole> holes;
    for (std::size_t i = 0; i < covered.size(); ++i) {
        if (covered[i] == 0xFF) {
            continue;
        }
        if (covered[i] != 0) {
            holes.push_back({i, 0, 8U - static_cast<unsigned>(__builtin_popcount(covered[i]))});
        } else if (!holes.empty() && holes.back().octets != 0 && holes.back().offset + holes.back().octets == i) {
            ++holes.back().octets;
        } else {
            holes.push_back({i, 1, 0});
        }
    }
    return holes;
}

std::string member_name(const laid_record &record, std::uint32_t index)
{
    return index < record.members.size() ? record.members[index].row->name : fmt::format("member {}", index);
}

/* The names of the members of `role` that refer to `member`. */
std::string referring(const laid_record &record, const laid_member &member, std::initializer_list<unsigned> roles)
{
    std::string names;
    for (const auto &each : record.members) {
        const bool fits = std::find(roles.begin(), roles.end(), each.row->role) != roles.end();
        if (fits && each.row->ref == member.index) {
            names += (names.empty() ? "" : ", ") + std::string(each.row->name);
        }
    }
    return names.empty() ? "nothing" : names;
}

std::string role_note(const laid_record &record, const laid_member &member)
{
    const bool tied = member.row->ref != RW_NO_REF;
    switch (member.row->role) {
    case RW_ROLE_POINTER: return tied ? "counted by " + member_name(record, member.row->ref) : "not counted";
    case RW_ROLE_COUNT: return "counts " + referring(record, member, {RW_ROLE_POINTER});
    case RW_ROLE_ARRAY:
    case RW_ROLE_OPTIONAL: return tied ? "present when " + member_name(record, member.row->ref) : "";
    case RW_ROLE_UNION: return tied ? "selected by " + member_name(record, member.row->ref) : "no selector named";
    case RW_ROLE_SELECTOR: return "selects " + referring(record, member, {RW_ROLE_UNION});
    case RW_ROLE_PRESENCE: return "presence of " + referring(record, member, {RW_ROLE_OPTIONAL, RW_ROLE_ARRAY});
    default: return "";
    }
}

/* What the run-time rules add to the declared type. */
std::string rule_note(const domain &in, const laid_record &record, const laid_member &member)
{
    if (member.row->has_rt_rule != 1) {
        const auto element = list_element(in, member.type);
        return element ? fmt::format("list of {}", element->name) : "";
    }
    const auto *rule = find_rule(in, member.row->rt_selector, record.rt_tag);
    if (rule == nullptr) {
        return "type by run-time rules";
    }
    if (rule->length_func != nullptr) {
        return "octets counted at run time";
    }
    const rw_type_row *type = rule_type(in, *rule);
    return type != nullptr ? fmt::format("here {}", type->name) : "type by run-time rules";
}

} // namespace

/* A part's `bit_num` counts the bits still to be placed, so a part is as wide as the drop to the next one's. */
std::vector<bit_part> parts_of(const mta_bit_map_struct &map)
{
    std::vector<bit_part> parts;
    for (unsigned i = 0; i < map.no_touple && i < MTA_MAX_TOUPLE; ++i) {
        const unsigned rest = i + 1U < map.no_touple && i + 1U < MTA_MAX_TOUPLE ? map.touple[i + 1].bit_num : 0U;
        const unsigned width = map.touple[i].bit_num - rest;
        const unsigned high = 7U - map.touple[i].position % 8U;
        if (map.touple[i].bit_num <= rest || width > high + 1U) {
            return {};
        }
        parts.push_back({map.offset + map.touple[i].position / 8U, high, high + 1U - width});
    }
    return parts;
}

laid_record lay_out(const domain &in, const rw_struct_row &row, std::uint32_t rt_tag)
{
    laid_record record{&row, rt_tag, offsize_at(in, row.size_index), {}, {}};
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        laid_member member;
        member.row = &row.members[i];
        member.index = i;
        if (member.is_bit_field()) {
            place_bit_field(in, row, member);
        } else {
            place_octets(in, row, member);
        }
        record.members.push_back(std::move(member));
    }
    const auto covered = coverage(in, record);
    if (!record.is_union()) {
        record.holes = find_holes(covered);
    }
    return record;
}

std::string declarator_of(const laid_member &member)
{
    if (member.is_bit_field()) {
        return fmt::format("{} : {}", member.row->name, member.width);
    }
    std::string out = member.row->name;
    bool        star_before = false;
    for (std::size_t i = 0; i < member.row->no_dims && i < member.levels.size(); ++i) {
        if (member.levels[i].pointer) {
            out.insert(0, "*");
            star_before = true;
            continue;
        }
        if (star_before) {
            out.insert(0, "(").append(")");
            star_before = false;
        }
        out += fmt::format("[{}]", member.levels[i].count);
    }
    return out;
}

std::vector<std::string> notes_on(const domain &in, const laid_record &record, const laid_member &member)
{
    std::vector<std::string> notes;
    const auto               add = [&](std::string note) {
        if (!note.empty()) {
            notes.push_back(std::move(note));
        }
    };
    if (record.is_union()) {
        add(member.row->ref == RW_NO_REF ? "no case named" : fmt::format("case {}", member.row->ref));
    } else {
        add(role_note(record, member));
    }
    if (!member.is_bit_field()) {
        add(rule_note(in, record, member));
    }
    return notes;
}

std::string place_of(const std::vector<bit_part> &parts)
{
    std::string out;
    for (const auto &part : parts) {
        out += fmt::format("{}{}.{}", out.empty() ? "" : " ", part.octet, part.high);
        out += part.high != part.low ? fmt::format("-{}", part.low) : "";
    }
    return out;
}

} // namespace solvane::tools
