// Lays `offsize` and `bit_map` in the order that host and target share, so that a target can send its own values
// for the whole of them.
#include "model/lay.h"

namespace solvane::gen {
namespace {

using what = offsize_entry::what;

std::uint32_t push(domain &d, const offsize_entry &entry)
{
    d.offsize.push_back(entry);
    return static_cast<std::uint32_t>(d.offsize.size() - 1);
}

void lay_bit_field(domain &d, const struct_row &row, member_row &member, const record &r)
{
    member.offsize_index = static_cast<std::uint32_t>(d.bit_fields.size());
    d.bit_fields.push_back({row.record_id, member.member, r.members[member.member].bit_width});
}

/// A member's offset, but for a union's, all of which begin at 0; then the size of each array level.
void lay_member(domain &d, const struct_row &row, member_row &member, const record &r)
{
    if (!r.is_union)
        member.offsize_index = push(d, {what::member_offset, row.record_id, member.member, 0});
    const std::vector<dimension> &dims = r.members[member.member].dims;
    for (std::uint32_t level = 0; level < dims.size(); ++level) {
        if (!dims[level].pointer)
            member.dim_index[level] = push(d, {what::array_size, row.record_id, member.member, level});
    }
}

} // namespace

void lay_offsize(const model &m, domain &d)
{
    for (const enum_row &row : d.enums)
        push(d, {what::enum_size, row.enum_id, 0, 0});

    for (struct_row &row : d.structs) {
        const record &r = m.records[row.record_id];
        row.size_index = push(d, {what::record_size, row.record_id, 0, 0});
        for (member_row &member : row.members) {
            if (member.kind == kind::bit_field)
                lay_bit_field(d, row, member, r);
            else
                lay_member(d, row, member, r);
        }
    }

    for (type_row &row : d.types) {
        for (std::uint32_t level = 0; level < row.dims.size(); ++level) {
            if (!row.dims[level].pointer)
                row.dim_index[level] = push(d, {what::alias_array_size, row.alias_id, 0, level});
        }
    }
}

} // namespace solvane::gen
