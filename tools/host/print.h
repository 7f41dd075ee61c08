// Layouts and values as text for people.
#pragma once

#include <string>

#include "image.h"
#include "layout.h"
#include "session.h"

namespace solvane::tools {

/// A structure member by member in the way of C with offsets and sizes behind; `expand` opens the structures that
/// are held in place.
void print_layout(session &to, const domain &in, const laid_record &record, bool expand);

/// Name and value a line, indented by depth.
void print_value(session &to, const value_node &node);

/// The tree as a reader wants it: without what is absent, without the members that only count, guard or size others,
/// arrays cut to their count, and what a pointer leads to in the pointer's place.  By the stack's names: `no_x` counts
/// `x`, `x_size` is its capacity, `x_present` or `xOpt` tells whether it is there.
value_node brief(value_node node);

/// "number LITERAL "words"" of a number, painted.
std::string number_text(const painter &paint, const value_node &node);

/// "1 octet", "3 octets".
std::string counted(std::uint64_t count, const char *what);

} // namespace solvane::tools
