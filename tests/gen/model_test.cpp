// Stages on whole folders: the tree printed and parsed again, the limits of the rows, the scaled model.
#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include <fmt/format.h>

#include "def/lex.h"
#include "def/parse.h"
#include "harness.h"
#include "model/dump.h"
#include "model/rows.h"
#include "model/scale.h"
#include "stages.h"

namespace solvane::gen::test {
namespace {

std::vector<input_file> baseline_inputs()
{
    std::string unreadable;
    auto        files = read_folder(SOLVANE_GEN_DB, unreadable);
    return files ? *std::move(files) : std::vector<input_file>();
}

// ------------------------------------------------------------------------------------------- trees

std::string printed_tree(diagnostics &d, const input_file &input)
{
    const std::uint32_t           file = d.add_file(input.path, input.text);
    const std::vector<def::token> tokens = def::lex(d, file);
    if (input.path == "baseline.def")
        return dump_tree(def::parse_baseline(d, tokens, file));
    if (input.path == "peers.def")
        return dump_tree(def::parse_peers(d, tokens, file));
    if (input.path.ends_with(".val"))
        return dump_tree(def::parse_values(d, tokens, file, input.path));
    return dump_tree(def::parse_unit(d, tokens, file, input.path));
}

TEST(tree, printed_and_parsed_again_is_the_same)
{
    std::vector<input_file> inputs = baseline_inputs();
    inputs.push_back({"stack/operators.def", "const A = -(1 + 2) * 3 / 4 - 5 << 6 | 7;\n"
                                             "typedef enum { X = A, Y = unevaluated } E;\n"
                                             "union u { char *a[A][2] case(1) hidden rt_selector(2); }\n"});
    ASSERT_GT(inputs.size(), 1u);
    for (const input_file &input : inputs) {
        if (input.path.ends_with(".tsv") || input.path.ends_with(".asn"))
            continue;
        diagnostics       d;
        const std::string once = printed_tree(d, input);
        EXPECT_EQ(once, printed_tree(d, {input.path, once})) << input.path;
        EXPECT_FALSE(d.failed()) << d.render();
    }
}

TEST(tree, shows_the_precedence_of_operators)
{
    diagnostics d;
    EXPECT_EQ(printed_tree(d, {"stack/a.def", "const A = 1 | 2 << 3 + 4 * -5 - 6 / 7;"}),
              "const A = 1 | (2 << ((3 + (4 * (-5))) - (6 / 7)));\n");
}

// ------------------------------------------------------------------------------------------- limits

std::string many(std::size_t count, const std::string &format)
{
    std::string out;
    for (std::size_t n = 0; n < count; ++n)
        out += fmt::format(fmt::runtime(format), n);
    return out;
}

struct limit_row {
    const char *name;
    std::string most;      ///< definitions that just fit
    std::string too_many;
    const char *error;
};

TEST(limits, what_does_not_fit_the_rows_is_an_error)
{
    const std::string asn = "import \"common/asn_types.def\";\n";
    const limit_row   rows[] = {
        {"literals", "enum e { " + many(65535, "L{}, ") + "}", "enum e { " + many(65536, "L{}, ") + "}",
           "more than 65535 literals"},
        {"enumerations", many(65536, "enum e{0} {{ L{0} }} "), many(65537, "enum e{0} {{ L{0} }} "),
           "'stack' has more than 65536 enumerations"},
        {"members", "struct s { " + many(65534, "char m{}; ") + "}", "struct s { " + many(65535, "char m{}; ") + "}",
           "65535 members or more"},
        {"lists", asn + many(32766, "list L{} of char; "), asn + many(32767, "list L{} of char; "),
           "'stack' has more than 32766 lists"},
    };
    for (const limit_row &row : rows) {
        diagnostics fits, exceeds;
        run_stages(make_case(row.most).inputs, fits);
        EXPECT_FALSE(fits.failed()) << row.name << "\n" << fits.render().substr(0, 500);
        run_stages(make_case(row.too_many).inputs, exceeds);
        ASSERT_EQ(exceeds.count(), 1u) << row.name;
        EXPECT_NE(exceeds.render().find(row.error), std::string::npos) << row.name;
    }
}

// ------------------------------------------------------------------------------------------- rows of the baseline

/// Every index of the rows leads where it should, in every domain of the baseline.
class baseline_rows : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        diagnostics d;
        m_ = run_stages(baseline_inputs(), d);
        ASSERT_FALSE(d.failed()) << d.render();
    }
    static model m_;
};
model baseline_rows::m_;

void expect_type_index(const domain &d, const model &m, kind k, const std::string &name, std::uint32_t index)
{
    switch (k) {
    case kind::structure:
    case kind::union_: EXPECT_EQ(m.records[d.structs.at(index).record_id].name, name); break;
    case kind::enumeration: EXPECT_EQ(d.enums.at(index).name, name); break;
    case kind::type_name: EXPECT_EQ(d.types.at(index).name, name); break;
    case kind::bit_field: EXPECT_EQ(index, 0u); break;
    default: EXPECT_EQ(index, no_index) << name; break;
    }
}

TEST_F(baseline_rows, type_indices_lead_to_rows_of_the_name)
{
    for (const domain &d : m_.domains) {
        std::set<std::string> names;
        for (const type_row &row : d.types) {
            expect_type_index(d, m_, row.base, row.base_name, row.type_index);
            EXPECT_TRUE(names.insert(row.name).second) << row.name;
        }
        for (const struct_row &row : d.structs) {
            for (const member_row &member : row.members)
                expect_type_index(d, m_, member.kind, member.type_name, member.type_index);
        }
    }
}

/// Each entry of `offsize` and `bit_map` is used once, in ascending order of the walk over the tables.
TEST_F(baseline_rows, every_offsize_entry_has_its_one_user)
{
    for (const domain &d : m_.domains) {
        std::uint32_t next = static_cast<std::uint32_t>(d.enums.size()), bit_field = 0;
        const auto    take_dims = [&](const std::vector<std::uint32_t> &dims) {
            for (const std::uint32_t index : dims) {
                if (index != no_index) {
                    EXPECT_EQ(index, next++);
                }
            }
        };
        for (const struct_row &row : d.structs) {
            EXPECT_EQ(row.size_index, next++);
            for (const member_row &member : row.members) {
                if (member.kind == kind::bit_field) {
                    EXPECT_EQ(member.offsize_index, bit_field++);
                    continue;
                }
                if (!m_.records[row.record_id].is_union) {
                    EXPECT_EQ(member.offsize_index, next++);
                } else {
                    EXPECT_EQ(member.offsize_index, no_index);
                }
                take_dims(member.dim_index);
            }
        }
        for (const type_row &row : d.types)
            take_dims(row.dim_index);
        EXPECT_EQ(next, d.offsize.size()) << d.name;
        EXPECT_EQ(bit_field, d.bit_fields.size()) << d.name;
    }
}

TEST_F(baseline_rows, run_time_rules_are_one_and_three_a_list)
{
    for (const domain &d : m_.domains) {
        const auto tagged = std::count_if(d.types.begin(), d.types.end(), [](const type_row &row) {
            return row.base_name == "AsnList" && row.rt_tag != 0;
        });
        const bool bits = std::any_of(d.types.begin(), d.types.end(),
                                      [](const type_row &row) { return row.name == "AsnBits"; });
        const auto lists = static_cast<std::size_t>(tagged);
        EXPECT_EQ(d.rt_rules.size(), bits ? 1 + 3 * lists : 0) << d.name;
        EXPECT_EQ(d.rt_types.size(), bits ? 5 * lists + 1 : 0) << d.name;
        for (const rt_rule_row &rule : d.rt_rules)
            EXPECT_EQ(rule.rt_type == 0, rule.has_length_func);
    }
}

TEST_F(baseline_rows, message_ranges_cover_the_index)
{
    for (const domain &d : m_.domains) {
        if (!d.indexed)
            continue;
        ASSERT_EQ(d.index_codes.size(), d.messages.size() + 2);
        EXPECT_EQ(d.index_codes.front(), 0u);
        EXPECT_EQ(d.index_codes.back(), 0u);
        std::uint32_t next = 1;
        for (std::size_t n = 0; n + 1 < d.ranges.size(); ++n) {
            const message_range &r = d.ranges[n];
            EXPECT_EQ(r.first_index, next);
            EXPECT_EQ(r.first_code, d.index_codes[r.first_index]);
            EXPECT_EQ(r.last_code, d.index_codes[r.last_index]);
            next = r.last_index + 1;
        }
        EXPECT_EQ(next, d.messages.size() + 1);
        EXPECT_EQ(d.ranges.back().last_index, next);
        EXPECT_EQ(d.ranges.back().last_code, 0u);
    }
}

// ------------------------------------------------------------------------------------------- scale

struct sizes {
    std::size_t traces = 0, messages = 0, bit_fields = 0;
};

model scaled(std::uint32_t per_cent)
{
    diagnostics d;
    model       m = lower_all(d, parse_all(d, baseline_inputs(), {}, ""));
    if (per_cent != 0)
        scale_up(m, per_cent);
    lay_rows(m, d);
    EXPECT_FALSE(d.failed()) << d.render();
    return m;
}

sizes sizes_of(const model &m)
{
    sizes s{m.traces.size(), 0, 0};
    for (const domain &d : m.domains) {
        s.messages += d.messages.size();
        s.bit_fields += d.bit_fields.size();
    }
    return s;
}

TEST(scale, full_is_the_size_of_a_whole_build)
{
    const model m = scaled(100);
    const sizes s = sizes_of(m);
    EXPECT_EQ(s.traces, 120846u);
    EXPECT_EQ(s.messages, 8000u);
    EXPECT_EQ(s.bit_fields, 4841u);
    const std::size_t by_domain[] = {0, 2496, 238, 327, 21, 1263, 0, 496};
    for (std::size_t n = 0; n < m.domains.size(); ++n)
        EXPECT_EQ(m.domains[n].bit_fields.size(), by_domain[n]) << m.domains[n].name;
}

TEST(scale, keeps_every_invariant_of_the_tables)
{
    const model m = scaled(100);
    const model own = scaled(0);
    EXPECT_TRUE(std::is_sorted(m.traces.begin(), m.traces.end(),
                               [](const trace_item &a, const trace_item &b) { return a.id < b.id; }));
    for (std::size_t n = 0; n < m.domains.size(); ++n) {
        const domain           &d = m.domains[n];
        std::set<std::uint32_t> codes;
        for (const message_row &row : d.messages)
            EXPECT_TRUE(codes.insert(row.code).second) << row.name;
        if (d.indexed) {
            EXPECT_EQ(d.messages.size(), own.domains[n].messages.size());
        }
        for (const enum_row &row : d.enums) {
            if (row.name == d.messages_enum) {
                EXPECT_EQ(m.enums[row.enum_id].literals.size(), d.messages.size()) << d.name;
            }
        }
        for (const bit_field_row &row : d.bit_fields)
            EXPECT_TRUE(row.width >= 1 && row.width <= 32);
    }
}

TEST(scale, a_part_is_a_part_and_the_same_each_time)
{
    const model once = scaled(10);
    EXPECT_EQ(sizes_of(once).traces, std::max<std::size_t>(12084, sizes_of(scaled(0)).traces));
    EXPECT_EQ(dump_model(once), dump_model(scaled(10)));
}

} // namespace
} // namespace solvane::gen::test
