// A whole folder of definitions as syntax trees and tables.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "base/input.h"
#include "def/tree.h"
#include "def/tsv.h"

namespace solvane::gen::def {

inline constexpr std::string_view common_folder = "common";
inline constexpr std::string_view trace_folder = "traces";

/// Columns of the tables, in the order of their headings.
namespace message_column {
enum : std::size_t { code, name, sap, structure };
}
namespace trace_column {
enum : std::size_t { module, format, file, line, status };
}

struct folder_def {
    std::optional<baseline_def>  baseline;
    std::optional<peers_def>     peers;
    std::vector<unit_def>        units;          ///< in the order of their paths; checked: each behind its imports
    std::vector<values_def>      values;         ///< in the order of their paths
    std::map<std::string, table> messages;       ///< by the folder of the domain
    std::optional<table>         trace_modules;
    std::vector<table>           traces;         ///< in the order of their paths
};

/// Takes every input to the parser that its path asks for.  Messages show a path behind `shown_root`, which ends
/// in '/' or is empty.
folder_def parse_folder(diagnostics &diag, const std::vector<input_file> &inputs, const std::string &shown_root);

} // namespace solvane::gen::def
