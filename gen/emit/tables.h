// Names and declarations that the generated sources of a domain share.
#pragma once

#include <string>
#include <string_view>

#include "model/model.h"

namespace solvane::gen {

/// Name of a table with external linkage: "tt_stack_structs".
std::string table_name(const domain &d, std::string_view what);

/// The include line of the header that declares the tables of a domain.
std::string tables_include(const domain &d);

/// What a generated source of a domain is made from, as told in its head.
std::string domain_input(const domain &d);

/// `<domain>_tables.h`, with the extents of the dictionary's arrays.
std::string tables_header(const domain &d);

} // namespace solvane::gen
