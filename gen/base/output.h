// The output sink: files are made in memory and written only where their content differs.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace solvane::gen {

/// A generated file.
struct output_file {
    std::string path;  ///< below the output directory, '/' between the parts
    std::string text;
};

/// Writes the files below `directory`, which is made where it is missing.  A file that already holds its text
/// keeps its time, so that nothing is rebuilt for it.  Answers a message when a file cannot be written.
std::optional<std::string> write_outputs(const std::filesystem::path &directory,
                                         const std::vector<output_file> &files);

/// Paths of the files below `directory`, one a line, in their order.
std::string list_outputs(const std::filesystem::path &directory, const std::vector<output_file> &files);

/// A make rule: all `targets` depend on all `inputs`.
std::string make_depfile(const std::vector<std::string> &targets, const std::vector<std::string> &inputs);

} // namespace solvane::gen
