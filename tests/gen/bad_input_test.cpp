// Bad input: every error that NN-subject-bad.def marks is told at its line, and no other.
#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "harness.h"

namespace solvane::gen::test {
namespace {

/// `path:line:column: error: text` or `path: error: text`
std::vector<expected_error> parse_messages(const std::string &rendered)
{
    std::vector<expected_error> errors;
    std::istringstream          lines(rendered);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t at = line.find(": error: ");
        if (line.starts_with(" ") || at == std::string::npos)
            continue;
        const std::string where = line.substr(0, at);
        const std::size_t colon = where.find(':');
        const bool        whole = colon == std::string::npos;
        errors.push_back({where.substr(0, colon),
                          whole ? 0 : static_cast<std::uint32_t>(std::stoul(where.substr(colon + 1))),
                          line.substr(at + 9)});
    }
    return errors;
}

class bad_input : public testing::TestWithParam<std::string> {};

TEST_P(bad_input, is_told_at_its_line)
{
    const test_case c = read_case(GetParam());
    ASSERT_FALSE(c.errors.empty());
    diagnostics diag;
    run_stages(c.inputs, diag);
    std::vector<expected_error> told = parse_messages(diag.render());
    for (const expected_error &wanted : c.errors) {
        const auto at = std::find_if(told.begin(), told.end(), [&](const expected_error &e) {
            return e.path == wanted.path && e.line == wanted.line && e.text.find(wanted.text) != std::string::npos;
        });
        if (at == told.end())
            ADD_FAILURE() << wanted.path << ":" << wanted.line << ": not told: " << wanted.text;
        else
            told.erase(at);
    }
    for (const expected_error &extra : told)
        ADD_FAILURE() << extra.path << ":" << extra.line << ": not expected: " << extra.text;
}

std::string test_name(const testing::TestParamInfo<std::string> &info)
{
    std::string name = info.param;
    std::replace_if(name.begin(), name.end(), [](char c) { return c == '-' || c == '/'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(cases, bad_input, testing::ValuesIn(case_names("-bad")), test_name);

} // namespace
} // namespace solvane::gen::test
