#include "layout_compare.h"

#include <algorithm>

#include <fmt/format.h>

#include "layout.h"

namespace solvane::tools {

namespace {

/* The tables are read as they are: a target's layout that makes no sense is to be shown, not refused. */
member_place place_in(const domain &in, const rw_struct_row &row, const rw_member_row &member)
{
    member_place place;
    if (member.kind == RW_KIND_BIT_FIELD) {
        if (member.offsize_index < in.types->no_bit_map) {
            const auto parts = parts_of(in.types->bit_map[member.offsize_index]);
            place.bits = parts.empty() ? "nowhere" : place_of(parts);
        }
        return place;
    }
    place.offset = row.kind == RW_KIND_UNION ? 0 : offsize_at(in, member.offsize_index);
    place.size = size_of(in, resolve(in, use_of(member)));
    return place;
}

} // namespace

bool compared_record::differs() const
{
    return target_size != tool_size ||
           std::any_of(members.begin(), members.end(), [](const compared_member &each) { return each.differs(); });
}

domain on_target(const plugin &loaded, const domain &in)
{
    domain out = in;
    out.types = &loaded.info->target_offsize->records[in.number];
    return out;
}

compared_record compare_layouts(const domain &target, const domain &tool, const rw_struct_row &row)
{
    compared_record out;
    out.row = &row;
    out.target_size = offsize_at(target, row.size_index);
    out.tool_size = offsize_at(tool, row.size_index);
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        const rw_member_row &member = row.members[i];
        out.members.push_back({&member, place_in(target, row, member), place_in(tool, row, member)});
    }
    return out;
}

std::string basic_types_text(const domain &in)
{
    return fmt::format("long {}, int {}, short {}, pointer {}, {}-endian", basic_size(in, RW_KIND_LONG),
                       basic_size(in, RW_KIND_INT), basic_size(in, RW_KIND_SHORT), basic_size(in, RW_KIND_VOID),
                       little_endian(in) ? "little" : "big");
}

} // namespace solvane::tools
