// Definitions and the code they become, side by side: NN-subject.def and NN-subject.cpp.golden.
//
// The line `// Becomes file…` of a case names the outputs that it is about.  Domains that the case has no file of
// are left out, so that a golden can be read.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "emit/emit.h"
#include "harness.h"

namespace solvane::gen::test {
namespace {

namespace fs = std::filesystem;

const fs::path folder = SOLVANE_EMIT_CASES;

std::vector<std::string> cases()
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".def")
            names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> shown_outputs(const std::string &text)
{
    constexpr std::string_view marker = "// Becomes ";
    const std::size_t          at = text.find(marker);
    std::vector<std::string>   paths;
    if (at == std::string::npos)
        return paths;
    std::istringstream words(text.substr(at + marker.size(), text.find('\n', at) - at - marker.size()));
    for (std::string path; words >> path;)
        paths.push_back(path.find('/') == std::string::npos ? "production/" + path : path);
    return paths;
}

/// The named outputs in one text.
std::string shown(const std::vector<output_file> &files, const std::vector<std::string> &paths)
{
    std::string out;
    for (const std::string &path : paths) {
        const auto file = std::ranges::find(files, path, &output_file::path);
        out += "//// " + path + "\n" + (file == files.end() ? "is no output\n" : file->text);
    }
    return out;
}

void drop_other_domains(model &m, const test_case &c)
{
    std::erase_if(m.domains, [&](const domain &d) {
        return std::ranges::none_of(c.own_paths, [&](const std::string &p) { return p.starts_with(d.name + "/"); });
    });
}

class emit_golden : public testing::TestWithParam<std::string> {};

TEST_P(emit_golden, code_is_the_one_beside_it)
{
    const fs::path    path = folder / (GetParam() + ".cpp.golden");
    const std::string text = read_text(folder / (GetParam() + ".def"));
    const test_case   c = make_case(text);
    diagnostics       diag;
    model             m = run_stages(c.inputs, diag);
    ASSERT_FALSE(diag.failed()) << diag.render();
    drop_other_domains(m, c);
    const std::string code = shown(emit_all(m), shown_outputs(text));
    if (std::getenv("SOLVANE_RENEW_GOLDENS") != nullptr)
        std::ofstream(path, std::ios::binary) << code;
    EXPECT_EQ(read_text(path), code);
}

std::string test_name(const testing::TestParamInfo<std::string> &info)
{
    std::string name = info.param;
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(cases, emit_golden, testing::ValuesIn(cases()), test_name);

/// Outputs that a build can name ahead of the run: one header a unit, a fixed list a domain, and four files more.
TEST(emit, files_follow_from_the_names_of_the_definitions)
{
    diagnostics              diag;
    const model              m = run_stages(make_case("//// nr/own.def\nstruct own { int a; }").inputs, diag);
    std::vector<std::string> paths;
    for (const output_file &file : emit_all(m))
        paths.push_back(file.path);
    std::vector<std::string> expected;
    for (const std::string name : {"debug_info_records.cpp", "peer_rows.cpp", "stack_build.cpp", "tsc_db.cpp"})
        expected.push_back("production/" + name);
    for (const unit &u : m.units)
        expected.push_back("production/" + u.stem + ".h");
    for (const std::string domain : {"infrastructure", "stack", "gsm", "umts", "signal", "lte", "ims", "nr"}) {
        expected.push_back("production/" + domain + "_tables.h");
        for (const std::string table : {"types", "structs", "layout", "messages", "values", "peers"})
            expected.push_back("production/" + domain + "_" + table + ".cpp");
    }
    std::ranges::sort(paths);
    std::ranges::sort(expected);
    EXPECT_EQ(paths, expected);
}

} // namespace
} // namespace solvane::gen::test
