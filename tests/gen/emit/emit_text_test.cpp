// Blocks, texts, declarators and rows of generated text.
#include <gtest/gtest.h>

#include "emit/text.h"

namespace solvane::gen {
namespace {

TEST(emit_text, blocks_take_named_values)
{
    std::string out = "x";
    put(out, "\n$a$ of $b$, $a$\n", {{"a", "$b$"}, {"b", "2"}});
    EXPECT_EQ(out, "x$b$ of 2, $b$\n"); // a value is not looked through
}

TEST(emit_text_death, a_missing_name_ends_the_generator)
{
    std::string out;
    EXPECT_DEATH(put(out, "$a$ $b$", {{"a", "1"}}), "no value for \\$b\\$");
    EXPECT_DEATH(put(out, "cost: 5$", {}), "a lone '\\$'");
}

TEST(emit_text, literals_hold_any_octet)
{
    struct row {
        std::string text;
        const char *literal;
    };
    for (const row &r : {row{"", R"("")"}, row{"a\"b\\c", R"("a\"b\\c")"}, row{"line\n\ttab", R"("line\n\ttab")"},
                         row{"\x01" "1\x7F\xE9", R"("\0011\177\351")"}, row{"a?" "?=b", R"("a?\?=b")"},
                         row{"?" "?" "?", R"("?\?\?")"}, row{std::string("\0z", 2), R"("\000z")"}})
        EXPECT_EQ(text_literal(r.text), r.literal);
}

TEST(emit_text, words_of_cpp_are_no_names)
{
    for (const char *word : {"alignas", "class", "new", "reinterpret_cast", "thread_local", "xor_eq", "operator"})
        EXPECT_EQ(cpp_identifier(word), std::string(word) + "_");
    for (const char *word : {"klass", "New", "type", "module", "final"})
        EXPECT_EQ(cpp_identifier(word), word);
}

TEST(emit_text, declarators_read_from_the_outermost_level)
{
    const dimension pointer{true, 0};
    const dimension four{false, 4};
    const dimension two{false, 2};
    EXPECT_EQ(declarator("x", {}), "x");
    EXPECT_EQ(declarator("x", {pointer, pointer}), "**x");
    EXPECT_EQ(declarator("x", {four, two}), "x[4][2]");
    EXPECT_EQ(declarator("x", {four, two, pointer}), "*x[4][2]");
    EXPECT_EQ(declarator("x", {pointer, four}), "(*x)[4]");
    EXPECT_EQ(declarator("", {four, two}, 1), "[2]");
    EXPECT_EQ(declarator("", {four, pointer}, 1), "*");
}

TEST(emit_text, columns_are_as_wide_as_their_cells)
{
    cell_table table{.rows = {}, .widest = 6};
    table.heading("rows");
    table.add({"1", "ab", "x"}, "note");
    table.add({"longer than all", "c", "yz"});
    std::string out;
    put_initialisers(out, table);
    EXPECT_EQ(out, "    // rows\n"
                   "    {1, ab, x},  // note\n"
                   "    {longer than all, c,  yz},\n");
    out.clear();
    table.rows.erase(table.rows.begin());
    put_columns(out, table, "");
    EXPECT_EQ(out, "1 ab x  // note\nlonger than all c  yz\n");
}

TEST(emit_text, levels_that_only_point_are_shared)
{
    const dimension pointer{true, 0};
    const dimension four{false, 4};
    dim_pool        pool;
    EXPECT_EQ(pool.add({}, {}).rows, "nullptr");
    EXPECT_EQ(pool.add({pointer}, {no_index}).rows, "dims");
    EXPECT_EQ(pool.add({four}, {7}).rows, "dims + 1");
    EXPECT_EQ(pool.add({pointer}, {no_index}).rows, "dims");
    EXPECT_EQ(pool.add({pointer, pointer}, {no_index, no_index}).rows, "dims + 2");
    EXPECT_EQ(pool.add({four, pointer}, {8, no_index}).rows, "dims + 4");
    EXPECT_EQ(pool.add({pointer, pointer}, {no_index, no_index}).count, "2");
}

} // namespace
} // namespace solvane::gen
