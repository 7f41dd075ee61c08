// JSON as all our tools write it: one object a line, "schema" (name and version) first, enumerations as
// {"value":2,"text":"..."}, octets as lower-case hex.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "image.h"
#include "layout.h"

namespace solvane::tools {

using json = nlohmann::ordered_json;

/// An object that begins with its schema, "solvane.<name>/1".
json json_object(std::string_view name);

/// {"value":..,"text":".."}, the text left out when it is empty.
json json_enum(std::int64_t value, std::string_view text);

/// The members of a laid-out structure, with expanded ones nested.
json json_layout(const domain &in, const laid_record &record, bool expand);

/// A value tree: records as objects, lists as arrays, octets as hex.
json json_value(const value_node &node);

/// On one line; octets that are no UTF-8 become the replacement character.
std::string json_line(const json &object);

} // namespace solvane::tools
