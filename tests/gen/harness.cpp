#include "harness.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "model/rows.h"
#include "stages.h"

namespace solvane::gen::test {
namespace {

namespace fs = std::filesystem;

const fs::path folder = SOLVANE_GEN_CASES;

/// Texts behind each `marker` of a line.
std::vector<std::string> marked(const std::string &line, const std::string &marker)
{
    std::vector<std::string> texts;
    for (std::size_t at = line.find(marker); at != std::string::npos;) {
        const std::size_t begin = at + marker.size();
        at = line.find(marker, begin);
        std::string text = line.substr(begin, at == std::string::npos ? at : at - begin);
        text.erase(text.find_last_not_of(' ') + 1);
        texts.push_back(std::move(text));
    }
    return texts;
}

/// `//// path [ABSENT] [ERROR text]`
void begin_file(const std::string &line, test_case &c, std::set<std::string> &absent)
{
    std::istringstream words(line.substr(5));
    std::string        path, word;
    words >> path >> word;
    for (const std::string &text : marked(line, " ERROR "))
        c.errors.push_back({path, 0, text});
    if (word == "ABSENT") {
        absent.insert(path);
        return;
    }
    c.inputs.push_back({path, ""});
    c.own_paths.push_back(path);
}

void add_line(const std::string &line, test_case &c)
{
    input_file         &file = c.inputs.back();
    const std::uint32_t number = 1 + static_cast<std::uint32_t>(std::count(file.text.begin(), file.text.end(), '\n'));
    for (const std::string &text : marked(line, file.path.ends_with(".asn") ? "-- ERROR " : "// ERROR "))
        c.errors.push_back({file.path, number, text});
    if (line.starts_with("# ERROR ")) // of the next row of a table
        c.errors.push_back({file.path, number + 1, line.substr(8)});
    file.text += line + "\n";
}

/// What a case says of itself ahead of its first file is no file.
void drop_preface(test_case &c)
{
    std::istringstream lines(c.inputs.front().text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && !line.starts_with("//") && !line.starts_with("--"))
            return;
    }
    c.inputs.erase(c.inputs.begin());
    c.own_paths.erase(c.own_paths.begin());
}

/// ASN.1 types are made of the value types of the run-time, as the baseline has them.
void take_value_types(test_case &c)
{
    for (input_file &file : c.inputs) {
        if (file.path == "common/base_types.def" || file.path == "common/asn_types.def")
            file.text = read_text(fs::path(SOLVANE_GEN_DB) / file.path);
    }
}

} // namespace

std::string read_text(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

fs::path case_path(const std::string &name, const std::string &extension) { return folder / (name + extension); }

std::vector<std::string> case_names(const std::string &ending)
{
    std::vector<std::string> names;
    const auto add = [&](const fs::path &in, const std::string &extension, const std::string &prefix) {
        for (const fs::directory_entry &entry : fs::directory_iterator(in)) {
            if (entry.path().extension() == extension && entry.path().stem().string().ends_with(ending))
                names.push_back(prefix + entry.path().stem().string());
        }
    };
    add(folder, ".def", "");
    add(folder / "asn1", ".asn", "asn1/");
    std::sort(names.begin(), names.end());
    return names;
}

test_case make_case(const std::string &text, const std::string &first)
{
    test_case             c;
    std::set<std::string> absent;
    std::istringstream    lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("//// ")) {
            begin_file(line, c, absent);
        } else {
            if (c.inputs.empty())
                begin_file("//// " + first, c, absent);
            add_line(line, c);
        }
    }
    drop_preface(c);
    std::string                            unreadable;
    std::optional<std::vector<input_file>> defaults = read_folder(folder / "defaults", unreadable);
    for (input_file &file : *defaults) {
        const bool given = std::find(c.own_paths.begin(), c.own_paths.end(), file.path) != c.own_paths.end();
        if (!given && !absent.contains(file.path))
            c.inputs.push_back(std::move(file));
    }
    std::sort(c.inputs.begin(), c.inputs.end(),
              [](const input_file &a, const input_file &b) { return a.path < b.path; });
    if (std::ranges::any_of(c.own_paths, [](const std::string &path) { return path.ends_with(".asn"); }))
        take_value_types(c);
    return c;
}

test_case read_case(const std::string &name)
{
    const bool schema = name.starts_with("asn1/");
    test_case  c = schema ? make_case(read_text(case_path(name, ".asn")), "lte/case.asn")
                          : make_case(read_text(case_path(name, ".def")));
    c.name = name;
    return c;
}

model run_stages(const std::vector<input_file> &inputs, diagnostics &diag)
{
    parsed_folder folder = parse_all(diag, inputs, {}, "");
    if (diag.failed())
        return {};
    model m = lower_all(diag, std::move(folder));
    if (!diag.failed())
        lay_rows(m, diag);
    return m;
}

} // namespace solvane::gen::test
