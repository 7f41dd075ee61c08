// Every family that has a file in fields/: its real messages, field by field against the reference decodes.
#include <algorithm>
#include <cstdio>
#include <map>

#include <gtest/gtest.h>

#include "reference.h"

namespace solvane::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> families()
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(SOLVANE_FIELD_RULES))
        if (entry.path().extension() == ".tsv")
            names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

/// A listed difference that no longer shows is listed in vain.
void check_known(const family_rules &rules, const std::vector<vector_row> &rows)
{
    family_rules strict = rules;
    strict.known.clear();
    std::map<std::pair<std::string, std::string>, bool> shows;
    for (const vector_row &row : rows) {
        if (rules.skipped.contains(row.kind))
            continue;
        for (const std::string &text : try_message(strict, row).differences) {
            const std::string rest = text.substr(row.id.size() + 1);
            const std::string field = rest.substr(0, rest.find(": "));
            shows[{row.id, field}] = true;
            shows[{"*", field}] = true;
        }
    }
    for (const auto &[where, reason] : rules.known) {
        const bool is_row = where.first == "*" || std::ranges::any_of(rows, [&](const vector_row &row) {
                                return row.id == where.first;
                            });
        EXPECT_TRUE(!is_row || shows[where])
            << where.first << " " << where.second << " is listed as a difference and is none";
    }
}

class reference : public testing::TestWithParam<std::string> {};

TEST_P(reference, messages_agree)
{
    const std::vector<vector_row> rows = read_vectors(GetParam());
    if (rows.empty())
        GTEST_SKIP() << "no messages of " << GetParam() << " in " << vectors_folder();
    const family_rules rules = read_rules(fs::path(SOLVANE_FIELD_RULES) / (GetParam() + ".tsv"));
    std::size_t        tried = 0, decoded = 0, repacked = 0, fields = 0, agreeing = 0;
    for (const vector_row &row : rows) {
        if (rules.skipped.contains(row.kind))
            continue;
        const outcome o = try_message(rules, row);
        ++tried;
        decoded += o.decoded;
        repacked += o.repacked;
        fields += o.fields;
        agreeing += o.agreeing;
        for (const std::string &text : o.differences)
            ADD_FAILURE() << row.message << ": " << text;
    }
    check_known(rules, rows);
    std::printf("%s: %zu of %zu messages decoded, %zu of %zu fields agree, %zu packed again bit by bit, %zu known "
                "differences\n", GetParam().c_str(), decoded, tried, agreeing, fields, repacked, rules.known.size());
}

INSTANTIATE_TEST_SUITE_P(family, reference, testing::ValuesIn(families()),
                         [](const auto &info) { return info.param; });

} // namespace
} // namespace solvane::test
