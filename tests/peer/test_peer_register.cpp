// Registration of the peer table over families made up here: order, first wins, growth by one row.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solvane/solvane.h"
#include "tt_peer_register.h"
#include "tt_stack_build.h"
#include "tt_td_lte_stack_peer_table.h"

// The table and the families, which the frame and the generated code define in the library.
tt_peer_table_struct tt_peer_table;

namespace {

void pack_one(pack_info_struct *, const void *) {}
void unpack_one(void *, unpack_info_struct *) {}

// `reserved` is not 0 here: the registration has to write it.
constexpr tt_peer_row agent_rows[] = {{"mta_string_struct", 8, pack_one, unpack_one, 7}};
constexpr tt_peer_row sm_rows[]    = {{"linked_ti_struct", 2, pack_one, unpack_one, 7},
                                      {"teardown_struct", 1, pack_one, unpack_one, 7}};
constexpr tt_peer_row mm_rows[]    = {{"tc_resp_msg_struct", 8, pack_one, unpack_one, 7},
                                      {"p_tmsi_sign_struct", 3, pack_one, unpack_one, 7}};
constexpr tt_peer_row cc_rows[]    = {{"Component", 40, pack_one, unpack_one, 7}};
constexpr tt_peer_row ciss_rows[]  = {{"Component", 41, nullptr, nullptr, 7}, {"mnss_cause_struct", 12, nullptr, nullptr, 7}};
constexpr tt_peer_row umts_rows[]  = {{"tc_resp_msg_struct", 9, nullptr, nullptr, 7},
                                      {"RAB_Identity", 16, pack_one, unpack_one, 7}};
constexpr tt_peer_row upm_rows[]   = {{"ue_state_indication_struct", 1, pack_one, unpack_one, 7}};
constexpr tt_peer_row lte_rows[]   = {{"Lte_MCCH_Message", 124, pack_one, unpack_one, 7}};
constexpr tt_peer_row nr_rows[]    = {{"Nr_BCCH_BCH_Message", 48, pack_one, unpack_one, 7}};

} // namespace

const tt_peer_family tt_peer_families[TT_NO_PEER_FAMILIES] = {
    {"target_agent", 1, agent_rows}, {"sm", 2, sm_rows},       {"sms", 0, nullptr},
    {"gmm_mm", 2, mm_rows},          {"cc", 1, cc_rows},       {"ciss", 2, ciss_rows},
    {"cbmc", 0, nullptr},            {"ss_operations", 1, cc_rows}, {"stored_items", 0, nullptr},
    {"gsm_rr", 0, nullptr},          {"qos", 0, nullptr},      {"umts_rrc", 2, umts_rows},
    {"emm", 0, nullptr},             {"esm", 0, nullptr},      {"ngmm", 0, nullptr},
    {"ue_policy", 1, upm_rows},      {"lte_rrc", 1, lte_rows}, {"nr_rrc", 1, nr_rows},
};

// The linker sends the calls of realloc here.
static std::vector<std::size_t> &realloc_sizes()
{
    static std::vector<std::size_t> sizes;
    return sizes;
}
static bool realloc_watched = false;
extern "C" void *__real_realloc(void *block, std::size_t size);
extern "C" void *__wrap_realloc(void *block, std::size_t size)
{
    void *result = __real_realloc(block, size);
    if (realloc_watched)
        realloc_sizes().push_back(size);
    return result;
}

namespace {

class PeerRegister : public ::testing::Test
{
protected:
    void SetUp() override { empty_table(); }
    void TearDown() override { empty_table(); }

    static void empty_table()
    {
        std::free(tt_peer_table.rows);
        tt_peer_table = {};
    }
    static std::vector<std::string> names()
    {
        std::vector<std::string> result;
        for (std::uint32_t i = 0; i < tt_peer_table.count; i++)
            result.push_back(tt_peer_table.rows[i].name);
        return result;
    }
    static void register_all()
    {
        tt_register_target_agent_peers();
        tt_register_stack_peers();
        tt_register_lte_peers();
        tt_register_nr_peers();
    }
};

TEST_F(PeerRegister, RowsStandInTheOrderOfTheFamilies)
{
    using list = std::vector<std::string>;

    tt_register_target_agent_peers();
    EXPECT_EQ(names(), list{"mta_string_struct"});
    tt_register_stack_peers();
    EXPECT_EQ(names(), (list{"mta_string_struct", "linked_ti_struct", "teardown_struct", "tc_resp_msg_struct",
                             "p_tmsi_sign_struct", "Component", "mnss_cause_struct", "RAB_Identity",
                             "ue_state_indication_struct"}));
    tt_register_lte_peers();
    EXPECT_EQ(names().back(), "Lte_MCCH_Message");
    tt_register_nr_peers();
    EXPECT_EQ(names().back(), "Nr_BCCH_BCH_Message");
    EXPECT_EQ(tt_peer_table.count, 11u);
}

TEST_F(PeerRegister, FirstRowOfANameStays)
{
    register_all();
    EXPECT_EQ(tt_peer_table.rows[3].size, 8u);
    EXPECT_EQ(tt_peer_table.rows[5].size, 40u);
    EXPECT_EQ(tt_peer_table.rows[5].pack, pack_one);
    EXPECT_EQ(tt_peer_table.rows[5].unpack, unpack_one);
}

TEST_F(PeerRegister, AnotherRunAddsNothing)
{
    register_all();
    const std::vector<std::string> once = names();
    register_all();
    EXPECT_EQ(names(), once);
}

TEST_F(PeerRegister, RowsAreCopiedAndNamesAreNot)
{
    const char   name[] = "apn_struct";
    tt_peer_row  row    = {name, 102, pack_one, unpack_one, 7};
    register_peer_row(row);
    row.size = 0;
    EXPECT_EQ(tt_peer_table.rows[0].name, name);
    EXPECT_EQ(tt_peer_table.rows[0].size, 102u);
    EXPECT_EQ(tt_peer_table.rows[0].reserved, 0u);
}

TEST_F(PeerRegister, NamesAreComparedAsText)
{
    const std::string name = "apn_struct", same = "apn_struct", longer = "apn_structs";
    register_peer_row({name.c_str(), 1, pack_one, unpack_one, 0});
    EXPECT_EQ(tt_peer_row_exists(same.c_str()), 1);
    EXPECT_EQ(tt_peer_row_exists(longer.c_str()), 0);
    EXPECT_EQ(tt_peer_row_exists("apn"), 0);
}

TEST_F(PeerRegister, GrowsByOneRow)
{
    realloc_sizes().clear();
    realloc_watched = true;
    tt_register_stack_peers();
    realloc_watched = false;

    std::vector<std::size_t> expected;
    for (std::size_t n = 1; n <= tt_peer_table.count; n++)
        expected.push_back(n * sizeof(tt_peer_row));
    EXPECT_EQ(realloc_sizes(), expected);
}

TEST_F(PeerRegister, PrintString)
{
    EXPECT_STREQ(tt_print_string(), "TT_PRINT_STRING");
}

} // namespace
