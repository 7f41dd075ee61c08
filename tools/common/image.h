// A structure's memory laid out through the dictionary: octets in, a tree of named values out.
//
// A plain image is a copy of octets from somewhere else, so a pointer in it is a number and no more.  Live memory is
// our own, as a codec filled it, and its pointers are followed to what their counts promise.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "dictionary.h"
#include "plugin.h"

namespace solvane::tools {

enum class shape {
    number,  ///< `number`, with `literal` and `words` where there are any
    octets,  ///< an array of octets: `bytes`
    record,  ///< members as children
    list,    ///< elements as children, named by position
    pointer, ///< `number` is the address; what it points to is the child, where it was followed
    absent,  ///< an optional member whose presence flag is 0, or a union with no case for its selector
    cut      ///< the image ends before it
};

struct value_node {
    std::string             name; ///< of the member; empty at the top and for elements
    std::string             type; ///< as declared
    shape                   form = shape::number;
    std::int64_t            number = 0;
    std::string             literal;
    std::string             words;
    std::string             note;
    octets                  bytes;
    bool                    partial = false; ///< `bytes` are fewer than the type has
    std::vector<value_node> children;
};

enum class memory { image, live };

/// The value of type `use` that starts at `at`.  With memory::live the octets must be the library's own and whole.
value_node read_value(const plugin &loaded, const domain &in, const type_use &use, std::span<const std::uint8_t> at,
                      memory kind = memory::image);

/// Whether some part of the tree was cut off.
bool is_cut(const value_node &node);

} // namespace solvane::tools
