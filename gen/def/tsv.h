// Tab-separated tables: a heading, then one row a line.  Lines that begin with `#` and empty lines are passed over.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"

namespace solvane::gen::def {

struct cell {
    std::string text;
    place       where;
};

struct table {
    std::uint32_t                  file = 0;
    std::string                    path;
    std::vector<std::vector<cell>> rows;  ///< each as long as the heading
};

/// Reads input `file` as a table with the heading `columns`.  A row with another number of cells is reported and
/// left out; without the heading there are no rows.
table read_table(diagnostics &diag, std::uint32_t file, std::string path,
                 const std::vector<std::string_view> &columns);

/// A decimal or 0x number that fills the text.
std::optional<std::uint64_t> parse_number(std::string_view text);

} // namespace solvane::gen::def
