// The layout of a structure on the target beside that of the plug-in's own compiler.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dictionary.h"
#include "json_out.h"

namespace solvane::tools {

/// Where a member lies: octets, or a bit-field's place as text.
struct member_place {
    std::uint64_t offset = 0;
    std::uint64_t size = 0; ///< 0 for a bit-field
    std::string   bits;     ///< "3.7-4", or empty

    bool operator==(const member_place &) const = default;
};

struct compared_member {
    const rw_member_row *row = nullptr;
    member_place         target, tool;

    bool differs() const { return target != tool; }
};

struct compared_record {
    const rw_struct_row         *row = nullptr;
    std::uint64_t                target_size = 0, tool_size = 0;
    std::vector<compared_member> members;

    bool differs() const;
};

/// The same domain with the types as the target lays them out.  Its record must have been filled.
domain on_target(const plugin &loaded, const domain &in);

compared_record compare_layouts(const domain &target, const domain &tool, const rw_struct_row &row);

/// "unsigned long 4, pointer 8, little-endian": what the basic-type block tells.
std::string basic_types_text(const domain &in);

} // namespace solvane::tools
