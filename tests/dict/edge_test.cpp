// The tables of edge/: texts that want escapes, functions behind the rows of the peer table.  What the rows and the
// layout owe is tested with the tests of the whole build.
#include <gtest/gtest.h>

#include "bits.h"
#include "dictionary.h"

struct nr_edge_struct;

void edge_pack(pack_info_struct *stream, const edge_bits_struct *value)
{
    stream->bits = value->k;
}
void edge_unpack(edge_bits_struct *value, unpack_info_struct *stream)
{
    value->e = stream->bits & 0x3FF;
}
void nr_edge_pack(pack_info_struct *, const nr_edge_struct *) {}
void nr_edge_unpack(nr_edge_struct *, unpack_info_struct *) {}

namespace {

TEST(edge, a_peer_row_leads_to_its_functions)
{
    const tt_peer_row &row = tt_peer_families[TT_PEER_SM].rows[0];
    EXPECT_STREQ(row.name, "edge_bits_struct");
    EXPECT_EQ(row.size, sizeof(edge_bits_struct));
    edge_bits_struct   value{};
    pack_info_struct   to{};
    unpack_info_struct from{};
    value.k = 0x12345678;
    from.bits = 0x155;
    row.pack(&to, &value);
    row.unpack(&value, &from);
    EXPECT_EQ(to.bits, 0x12345678U);
    EXPECT_EQ(value.e, 0x155);
}

TEST(edge, texts_come_through_as_they_are)
{
    EXPECT_STREQ(tt_baseline_text, "EDGE \"of\" tables");
    const tt_value_desc &desc = *tt_value_tables[ENTITY_STACK]->rows[0].record;
    EXPECT_STREQ(desc.comment, "\"quoted\"");
    EXPECT_STREQ(desc.values[0].text, "as a whole, ?" "?= \\ \t");
    EXPECT_EQ(desc.values[0].value, 0xFFFFFFFF);
    EXPECT_STREQ(desc.fields[0].comment, "\"in ms\"");
    EXPECT_EQ(desc.fields[1].cases[1].selector, TT_DEFAULT_SELECTOR);
    EXPECT_EQ(desc.fields[1].cases[1].values, nullptr);
    EXPECT_EQ(desc.fields[1].cases[2].selector, 0xFFFFFFFE);
    EXPECT_STREQ(tsc_db_info.db[2].trace_format, "%d \"quoted\"\n");
}

TEST(edge, literals_reach_both_ends_of_32_bits)
{
    const rw_debug_info_struct &stack = tt_tool_records[ENTITY_STACK];
    const rw_enum_row          &e = stack.enums[dictionary::find(dictionary::types(stack), "edge_anonymous_type")
                                           ->type_index];
    EXPECT_EQ(e.literals[0].value.num, INT32_MIN);
    EXPECT_EQ(e.literals[1].value.num, INT32_MIN + 1);
    EXPECT_EQ(e.literals[2].value.valstat, std::uint32_t{RW_VS_INVAL_ASSIGNED});
}

TEST(edge, domains_do_not_see_each_others_literals)
{
    const auto value_of = [](std::uint32_t domain, const char *name) {
        for (const rw_enum_row &e : dictionary::enums(tt_tool_records[domain]))
            if (const rw_literal_row *const l = dictionary::find(dictionary::literals(e), name))
                return l->value.num;
        return -1;
    };
    EXPECT_EQ(value_of(ENTITY_STACK, "EDGE_SAP"), 0);
    EXPECT_EQ(value_of(ENTITY_NR_STACK, "EDGE_SAP"), 5);
}

} // namespace
