// Elements and messages.
#pragma once

#include "def/parser.h"

namespace solvane::gen::def {

/// An element or a message begins here.
bool begins_wire(const parser &in);

record_def parse_wire(parser &in);

} // namespace solvane::gen::def
