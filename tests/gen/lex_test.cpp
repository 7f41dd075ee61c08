// Tokens and their places.
#include <gtest/gtest.h>

#include "def/lex.h"

namespace solvane::gen::def {
namespace {

struct row {
    const char *name;
    const char *text;
    const char *tokens;
};

constexpr row rows[] = {
    {"nothing", "", "1:1 end\n"},
    {"words_and_places", "a _b9\n  C", "1:1 identifier a\n1:3 identifier _b9\n2:3 identifier C\n2:4 end\n"},
    {"a_tab_is_one_column", "\ta\tb", "1:2 identifier a\n1:4 identifier b\n1:5 end\n"},
    {"numbers", "0 7 0x1F 4294967296",
     "1:1 number 0\n1:3 number 7\n1:5 number 0x1F\n1:10 number 4294967296\n1:20 end\n"},
    {"a_number_with_a_point_is_three_tokens", "3.10:", "1:1 number 3\n1:2 .\n1:3 number 10\n1:5 :\n1:6 end\n"},
    {"shift_is_one_token", "1<<2", "1:1 number 1\n1:2 <<\n1:4 number 2\n1:5 end\n"},
    {"comments", "a // b\nc /* d\n e */ f /**/ g",
     "1:1 identifier a\n2:1 identifier c\n3:7 identifier f\n3:14 identifier g\n3:15 end\n"},
    {"slash_alone", "a / b", "1:1 identifier a\n1:3 /\n1:5 identifier b\n1:6 end\n"},
    {"text_with_escapes", R"("a \"b\" \\ \n // c")", "1:1 text \"a \\\"b\\\" \\\\ \\n // c\"\n1:21 end\n"},
    {"text_of_other_scripts", "\"\xC3\xA4\"", "1:1 text \"\xC3\xA4\"\n1:5 end\n"},
    {"carriage_returns_are_blanks", "a\r\nb\r\n", "1:1 identifier a\n2:1 identifier b\n3:1 end\n"},
    {"all_punctuation", "{}()[];,:=*+-/|.",
     "1:1 {\n1:2 }\n1:3 (\n1:4 )\n1:5 [\n1:6 ]\n1:7 ;\n1:8 ,\n1:9 :\n1:10 =\n1:11 *\n1:12 +\n1:13 -\n1:14 /\n"
     "1:15 |\n1:16 .\n1:17 end\n"},
};

class lexer : public testing::TestWithParam<row> {};

TEST_P(lexer, tokens)
{
    diagnostics d;
    const auto  tokens = lex(d, d.add_file("case", GetParam().text));
    EXPECT_EQ(dump_tokens(tokens), GetParam().tokens);
    EXPECT_FALSE(d.failed()) << d.render();
}

INSTANTIATE_TEST_SUITE_P(rows, lexer, testing::ValuesIn(rows),
                         [](const testing::TestParamInfo<row> &info) { return std::string(info.param.name); });

TEST(lexer_values, numbers_keep_their_value)
{
    diagnostics d;
    const auto  tokens = lex(d, d.add_file("case", "0xFFFFFFFFFFFFFFFF 18446744073709551615 0X10"));
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_EQ(tokens[0].number, 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(tokens[1].number, 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(tokens[2].number, 16u);
}

TEST(lexer_values, the_end_of_a_token_is_just_behind_it)
{
    diagnostics d;
    const auto  tokens = lex(d, d.add_file("case", "ab  \"c\\\"d\"\n;"));
    EXPECT_EQ(tokens[0].end, (place{0, 1, 3}));
    EXPECT_EQ(tokens[1].end, (place{0, 1, 11}));
    EXPECT_EQ(tokens[2].end, (place{0, 2, 2}));
}

} // namespace
} // namespace solvane::gen::def
