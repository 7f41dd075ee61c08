// Published modules whole: what they hold, counted, and the sizes that are told of their records.  They are read from
// the folder that SOLVANE_RRC_SCHEMAS names; where there is none the tests are skipped.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "asn1/check.h"
#include "asn1/folder.h"
#include "asn1/layout.h"
#include "asn1/parser.h"
#include "harness.h"

namespace solvane::gen::asn1 {
namespace {

namespace fs = std::filesystem;
using test::read_text;

fs::path schema_folder()
{
    const char *named = std::getenv("SOLVANE_RRC_SCHEMAS");
    return named != nullptr ? named : SOLVANE_DEFAULT_SCHEMAS;
}

/// Counts by kind, in the order of the members.
struct counts {
    int modules, types, values, sequences, choices, lists, integers, enumerations, bits, octets;

    friend bool operator==(const counts &, const counts &) = default;
};

std::ostream &operator<<(std::ostream &out, const counts &c)
{
    return out << c.modules << " modules, " << c.types << " types, " << c.values << " values: " << c.sequences << ' '
               << c.choices << ' ' << c.lists << ' ' << c.integers << ' ' << c.enumerations << ' ' << c.bits << ' '
               << c.octets;
}

counts count(const schema &s)
{
    counts                   c{};
    std::map<type_kind, int> kinds;
    c.modules = static_cast<int>(s.modules.size());
    for (const module &m : s.modules) {
        for (const assignment &a : m.assignments) {
            c.values += a.kind == assignment_kind::value;
            c.types += a.kind == assignment_kind::type;
            if (a.kind == assignment_kind::type && a.parameters.empty())
                ++kinds[a.of.front().kind];
            if (a.kind == assignment_kind::type && !a.parameters.empty())
                ++kinds[type_kind::choice];
        }
    }
    c.sequences = kinds[type_kind::sequence];
    c.choices = kinds[type_kind::choice];
    c.lists = kinds[type_kind::sequence_of];
    c.integers = kinds[type_kind::integer];
    c.enumerations = kinds[type_kind::enumerated];
    c.bits = kinds[type_kind::bits];
    c.octets = kinds[type_kind::octets];
    return c;
}

struct published {
    const char *name;    ///< file, or folder of files
    const char *domain;  ///< family whose rules lay it out; null: none
    counts      wanted;
    int         lists;   ///< lists and arrays, nested ones included, of all modules
};

constexpr published schemas[] = {
    {"lte-rrc.asn", "lte", {8, 2390, 184, 1534, 142, 458, 122, 88, 21, 5}, 458 + 156},
    {"nr-rrc.asn", "nr", {3, 778, 164, 512, 33, 90, 93, 40, 7, 1}, 90 + 208},
    {"umts-rrc.asn", "umts", {5, 3619, 162, 2078, 273, 554, 293, 347, 42, 11}, 554 + 127},
    {"ss-24080", nullptr, {20, 796, 468, 328, 32, 81, 59, 100, 50, 132}, 0},
};

schema parse(diagnostics &diag, const fs::path &path)
{
    schema                s;
    std::vector<fs::path> files;
    if (fs::is_directory(path)) {
        for (const fs::directory_entry &entry : fs::directory_iterator(path))
            files.push_back(entry.path());
    } else {
        files.push_back(path);
    }
    for (const fs::path &file : files) {
        for (module &m : parse_modules(diag, diag.add_file(file.string(), read_text(file))))
            s.modules.push_back(std::move(m));
    }
    return s;
}

int count_lists(const layout &types)
{
    int n = 0;
    for (const item &i : types.items)
        n += i.of->kind == type_kind::sequence_of;
    return n;
}

class published_modules : public testing::TestWithParam<published> {};

TEST_P(published_modules, go_through_whole)
{
    const fs::path path = schema_folder() / GetParam().name;
    if (!fs::exists(path))
        GTEST_SKIP() << "no " << path << ": SOLVANE_RRC_SCHEMAS names the folder";
    diagnostics diag;
    schema      s = parse(diag, path);
    ASSERT_FALSE(diag.failed()) << diag.render();
    EXPECT_EQ(count(s), GetParam().wanted);
    check(diag, s);
    ASSERT_FALSE(diag.failed()) << diag.render();
    if (GetParam().domain == nullptr)
        return;
    const layout types = lay_out(diag, s, *family_of(GetParam().domain));
    ASSERT_FALSE(diag.failed()) << diag.render();
    EXPECT_EQ(count_lists(types), GetParam().lists);
    std::map<std::string, int> names;
    for (const item &i : types.items)
        EXPECT_EQ(++names[i.name], 1) << i.name;
}

INSTANTIATE_TEST_SUITE_P(schemas, published_modules, testing::ValuesIn(schemas), [](const auto &info) {
    std::string name = fs::path(info.param.name).stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

/// Names of the two tables that an independent program made of the same modules.
TEST(published_names, are_those_of_the_table)
{
    std::map<std::string, std::string> modules; // of each name
    for (const char *domain : {"lte", "nr"}) {
        const fs::path path = schema_folder() / (std::string(domain) + "-rrc.asn");
        if (!fs::exists(path) || !fs::exists(schema_folder() / "nested-sizes.tsv"))
            GTEST_SKIP() << "no " << path << ", or no table beside it";
        diagnostics diag;
        schema      s = parse(diag, path);
        check(diag, s);
        const layout types = lay_out(diag, s, *family_of(domain));
        ASSERT_FALSE(diag.failed()) << diag.render();
        for (const item &i : types.items) {
            if (!i.owner->is_instance)
                modules[i.name] = s.modules[i.owner->module].id.text;
        }
    }
    for (const char *table : {"record-sizes.tsv", "nested-sizes.tsv"}) {
        std::istringstream lines(read_text(schema_folder() / table));
        std::string        line, name, skipped, module;
        for (std::getline(lines, line); std::getline(lines, line);) {
            std::istringstream(line) >> name >> skipped >> skipped >> module;
            const auto at = modules.find(name);
            ASSERT_NE(at, modules.end()) << name;
            EXPECT_EQ(at->second, module) << name;
            modules.erase(at);
        }
    }
    EXPECT_TRUE(modules.empty()) << modules.begin()->first;
}

} // namespace
} // namespace solvane::gen::asn1
