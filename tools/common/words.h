// What the stack's authors wrote down about the numbers of a field.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "dictionary.h"
#include "plugin.h"

namespace solvane::tools {

/// The unconditional text of a value, or one of a case as "text (case n)"; empty when there is none.  A field's table
/// does not say which member its cases go by, so every case that knows the value is told.
std::string words_of(const plugin &loaded, const domain &in, const char *structure, const char *field,
                     std::uint32_t value);

/// The rows that describe a structure's fields, or null.
const tt_value_desc *description_of(const plugin &loaded, const domain &in, std::string_view structure);

/// The row of a field, or null.
const tt_value_field *field_of(const tt_value_desc &described, std::string_view field);

} // namespace solvane::tools
