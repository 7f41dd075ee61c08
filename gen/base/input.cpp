// Reads a folder of definitions.
#include "base/input.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace solvane::gen {
namespace {

namespace fs = std::filesystem;

bool is_definition(const fs::path &path)
{
    const fs::path ending = path.extension();
    return ending == ".def" || ending == ".val" || ending == ".tsv" || ending == ".asn";
}

/// Paths below `folder`, relative to it, down to `depth` further folders.
bool collect(const fs::path &folder, const std::string &prefix, int depth, std::vector<std::string> &paths)
{
    std::error_code failed;
    for (fs::directory_iterator at(folder, failed), end; !failed && at != end; at.increment(failed)) {
        const std::string name = prefix + at->path().filename().string();
        if (at->is_directory(failed)) {
            if (depth > 0 && !collect(at->path(), name + "/", depth - 1, paths))
                return false;
        } else if (is_definition(at->path())) {
            paths.push_back(name);
        }
    }
    return !failed;
}

} // namespace

std::optional<std::vector<input_file>> read_folder(const fs::path &folder, std::string &unreadable)
{
    unreadable = folder.generic_string();
    std::vector<std::string> paths;
    if (!collect(folder, "", 1, paths))
        return std::nullopt;
    std::sort(paths.begin(), paths.end());

    std::vector<input_file> files;
    for (std::string &path : paths) {
        unreadable = (folder / path).generic_string();
        std::optional<input_file> file = read_input(folder / path);
        if (!file)
            return std::nullopt;
        files.push_back({std::move(path), std::move(file->text)});
    }
    return files;
}

std::optional<input_file> read_input(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    std::string   text(std::istreambuf_iterator<char>(in), {});
    if (!in.is_open() || in.bad())
        return std::nullopt;
    return input_file{file.filename().string(), std::move(text), file.generic_string()};
}

} // namespace solvane::gen
