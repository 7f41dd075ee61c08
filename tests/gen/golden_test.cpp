// Definitions and the model they become, side by side: NN-subject-ok.def and NN-subject-ok.model.
#include <algorithm>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "harness.h"
#include "model/dump.h"
#include "model/dump_per.h"

namespace solvane::gen::test {
namespace {

/// The part of the model that a case is about: its units, the domains that they or its other files belong to, and
/// what stands outside the domains where the case gives it.
std::string dump_case(const test_case &c, const model &m)
{
    std::string out;
    const auto  own = [&](const std::string &beginning) {
        return std::any_of(c.own_paths.begin(), c.own_paths.end(),
                            [&](const std::string &path) { return path.starts_with(beginning); });
    };
    for (std::uint32_t id = 0; id < m.units.size(); ++id) {
        const unit &u = m.units[id];
        if (own(u.path) || u.path.find("*.asn") != std::string::npos)
            out += dump_unit(m, u) + dump_codecs(m, id) + "\n";
    }
    for (const domain &d : m.domains) {
        if (own(d.name + "/") && !c.name.starts_with("asn1/"))
            out += dump_domain(m, d) + "\n";
    }
    if (own("peers.def"))
        out += dump_peers(m);
    if (own("traces/"))
        out += dump_traces(m);
    return out;
}

class golden : public testing::TestWithParam<std::string> {};

TEST_P(golden, model_is_the_one_beside_it)
{
    const test_case c = read_case(GetParam());
    diagnostics     diag;
    const model     m = run_stages(c.inputs, diag);
    ASSERT_FALSE(diag.failed()) << diag.render();
    const std::string dump = dump_case(c, m);
    if (std::getenv("SOLVANE_RENEW_GOLDENS") != nullptr)
        std::ofstream(case_path(c.name, ".model"), std::ios::binary) << dump;
    EXPECT_EQ(read_text(case_path(c.name, ".model")), dump);
}

std::string test_name(const testing::TestParamInfo<std::string> &info)
{
    std::string name = info.param;
    std::replace_if(name.begin(), name.end(), [](char c) { return c == '-' || c == '/'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(cases, golden, testing::ValuesIn(case_names("-ok")), test_name);

} // namespace
} // namespace solvane::gen::test
