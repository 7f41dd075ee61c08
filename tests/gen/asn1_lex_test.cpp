// Tokens of ASN.1 and their places; comments.
#include <gtest/gtest.h>

#include "asn1/check.h"
#include "asn1/lex.h"

namespace solvane::gen::asn1 {
namespace {

struct row {
    const char *name;
    const char *text;
    const char *tokens;
};

constexpr row rows[] = {
    {"words", "Ab-c d-1e", "1:1 upper Ab-c\n1:6 lower d-1e\n1:10 end\n"},
    {"a_hyphen_ends_no_word", "a- b", "1:1 lower a\n1:2 -\n1:4 lower b\n1:5 end\n"},
    {"two_hyphens_begin_a_comment", "a--b--c", "1:1 lower a\n1:7 lower c\n1:8 end\n"},
    {"a_comment_ends_with_its_line", "a -- b\nc", "1:1 lower a\n2:1 lower c\n2:2 end\n"},
    {"block_comments_nest", "a /* /* b */ -- */ c", "1:1 lower a\n1:20 lower c\n1:21 end\n"},
    {"ranges", "0..10", "1:1 number 0\n1:2 ..\n1:4 number 10\n1:6 end\n"},
    {"markers_and_groups", "...,[[]]", "1:1 ...\n1:4 ,\n1:5 [[\n1:7 ]]\n1:9 end\n"},
    {"digits", "'01 1'B 'AF'H", "1:1 bits 011\n1:9 hex AF\n1:14 end\n"},
    {"text", "\"a\"\"b\"", "1:1 text a\"b\n1:7 end\n"},
    {"signs", "::= {}()[]<,;:.|&@!^", "1:1 ::=\n1:5 {\n1:6 }\n1:7 (\n1:8 )\n1:9 [\n1:10 ]\n1:11 <\n1:12 ,\n1:13 ;\n"
                                     "1:14 :\n1:15 .\n1:16 |\n1:17 &\n1:18 @\n1:19 !\n1:20 ^\n1:21 end\n"},
};

class asn1_lexer : public testing::TestWithParam<row> {};

TEST_P(asn1_lexer, tokens)
{
    diagnostics d;
    EXPECT_EQ(dump_tokens(lex(d, d.add_file("case", GetParam().text))), GetParam().tokens);
    EXPECT_FALSE(d.failed()) << d.render();
}

INSTANTIATE_TEST_SUITE_P(cases, asn1_lexer, testing::ValuesIn(rows), [](const auto &info) { return info.param.name; });

TEST(asn1_text, loses_comments_and_empty_lines)
{
    EXPECT_EQ(text_without_comments("A ::= -- x --  B  -- y\n   -- z\n\t/* a\n b */ C\n"), "A ::=   B\n\t C");
}

TEST(asn1_digits, fill_octets_from_the_left)
{
    const auto octets = [](value::what kind, const char *digits) {
        value v;
        v.kind = kind;
        v.text = digits;
        return digits_of(v);
    };
    const digit_string bits = octets(value::what::bits, "101000001");
    EXPECT_EQ(bits.bits, 9u);
    EXPECT_EQ(bits.octets, (std::vector<std::uint8_t>{0xA0, 0x80}));
    const digit_string hex = octets(value::what::hex, "A1F");
    EXPECT_EQ(hex.bits, 12u);
    EXPECT_EQ(hex.octets, (std::vector<std::uint8_t>{0xA1, 0xF0}));
}

} // namespace
} // namespace solvane::gen::asn1
