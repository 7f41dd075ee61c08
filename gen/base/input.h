// The input files of a run, read into memory: the stages behind see paths and texts, never the file system.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace solvane::gen {

/// A file below the folder of the definitions.
struct input_file {
    std::string path;  ///< from the folder's root, '/' between the parts
    std::string text;
    std::string shown{}; ///< path in messages; empty: `path` behind that of the folder
};

/// The files at the top of `folder` and one folder below it that have one of the endings `.def`, `.val`,
/// `.tsv` and `.asn`, in the order of their paths by octet value.  Answers nothing when one of them cannot be read and puts
/// its path into `unreadable`.
std::optional<std::vector<input_file>> read_folder(const std::filesystem::path &folder, std::string &unreadable);

/// Reads one file from anywhere, `shown` by its path.  Answers nothing when it cannot be read.
std::optional<input_file> read_input(const std::filesystem::path &file);

} // namespace solvane::gen
