// A printed value taken apart again: its leaves, selectors and counts in the order of the wire.
//
// The text is that of the generated print functions, with strings printed whole (whole_strings.cpp).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace solvane::test {

struct printed_item {
    enum class what { leaf, selector, count } kind;
    std::string name;       ///< of the member, as the schema spells it; of an element that of its list, with a '*'
    std::string text;       ///< value, alternative, or number of elements
};

/// Complains through GoogleTest of a text that is not one.
std::vector<printed_item> take_apart(std::string_view text);

} // namespace solvane::test
