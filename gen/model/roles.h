// Roles of members: what each does in its structure, as the dictionary tells it.
#pragma once

#include <cstdint>
#include <vector>

#include "model/model.h"

namespace solvane::gen {

/// What a definition says of a member: which other members serve it.  Indices into record::members.
struct member_links {
    std::uint32_t counted_by = no_index;
    std::uint32_t present_if = no_index;
    std::uint32_t selected_by = no_index;
    std::uint32_t case_value = no_ref;  ///< of a member of a union
};

/// Decides `role` and `ref` of every member.  `links` goes along with `r.members`; all types of `m` that the
/// members use, but for those behind pointers, are complete.
void assign_roles(const model &m, record &r, const std::vector<member_links> &links);

/// A type with its typedefs looked through; `nothing` where a pointer or array is on the way.
type_use look_through(const model &m, type_use use);

} // namespace solvane::gen
