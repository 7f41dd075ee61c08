// A service message read by its wire form into a tree of named values.
#pragma once

#include "image.h"
#include "wire_form.h"

namespace solvane::tools {

struct wire_reading {
    value_node  value;
    std::size_t octets_used = 0;
    bool        ran_short = false; ///< members that were not there are shape::cut
};

wire_reading read_wire(const plugin &loaded, const wire_form &form, std::span<const std::uint8_t> body);

} // namespace solvane::tools
