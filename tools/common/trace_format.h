// The conversions in the format of a trace statement, by the rule of the library's decoders.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace solvane::tools {

/// From '%' to the first letter of the layout's set, or to a second '%'.
struct conversion {
    std::size_t start = 0;
    std::size_t end = 0;       ///< behind its last character
    bool        takes = false; ///< an argument
};

/// The next conversion from `from` on.  False at the end of the format; an unfinished conversion ends there too.
bool next_conversion(std::string_view format, bool integer_layout, std::size_t from, conversion &into);

/// The conversions in the order in which they take arguments: for each the name of the @TAG<name> marker right behind
/// it, or an empty text.
std::vector<std::string> argument_names(std::string_view format, bool integer_layout);

/// The letters of those conversions.
std::string argument_letters(std::string_view format, bool integer_layout);

} // namespace solvane::tools
