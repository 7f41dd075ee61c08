// Writes generated files, their list and their dependencies.
#include "base/output.h"

#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

namespace solvane::gen {
namespace {

bool holds(const std::filesystem::path &path, const std::string &text)
{
    std::error_code failed;
    if (std::filesystem::file_size(path, failed) != text.size() || failed)
        return false;
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {}) == text;
}

/// A path as make and ninja read it in a rule.
std::string escaped(std::string_view path)
{
    std::string out;
    for (const char c : path) {
        if (c == ' ' || c == '#')
            out += '\\';
        if (c == '$')
            out += '$';
        out += c;
    }
    return out;
}

} // namespace

std::optional<std::string> write_outputs(const std::filesystem::path &directory,
                                         const std::vector<output_file> &files)
{
    for (const output_file &file : files) {
        const std::filesystem::path path = directory / file.path;
        if (holds(path, file.text))
            continue;
        std::error_code failed;
        std::filesystem::create_directories(path.parent_path(), failed);
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << file.text;
        out.close();
        if (!out)
            return fmt::format("cannot write '{}'", path.generic_string());
    }
    return std::nullopt;
}

std::string list_outputs(const std::filesystem::path &directory, const std::vector<output_file> &files)
{
    std::string out;
    for (const output_file &file : files)
        out += (directory / file.path).generic_string() + "\n";
    return out;
}

std::string make_depfile(const std::vector<std::string> &targets, const std::vector<std::string> &inputs)
{
    std::string out;
    for (const std::string &target : targets)
        out += escaped(target) + " ";
    if (!out.empty())
        out.back() = ':';
    for (const std::string &input : inputs)
        out += " \\\n  " + escaped(input);
    return out + "\n";
}

} // namespace solvane::gen
