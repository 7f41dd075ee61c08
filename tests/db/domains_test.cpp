// What the radio, signal and IMS domains of the embedded stack build promise to a host: messages and their index,
// value texts, widths of bit-fields, shapes of the ASN.1 records.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "solvane/solvane.h"
#include "tt_stack_build.h"

namespace {

/// init_dll is called once a process.
const dll_info_struct &host()
{
    static const bool ready = [] {
        init_dll();
        return true;
    }();
    (void)ready;
    return dll_info;
}

const rw_debug_info_struct &tool(sdi_entity_enum domain) { return host().tool_offsize->records[domain]; }

const tt_msg_table &messages(sdi_entity_enum domain) { return *host().entity_info[domain].msg_table; }

std::string text(const char *answer) { return answer == nullptr ? "(none)" : answer; }

// ------------------------------------------------------------------------------------------------- message index

struct index_case {
    std::uint32_t index;
    std::uint16_t code;
};

/// First and last message of each run of the application signals.
const index_case signal_ends[] = {
    {0x001, 0xb101}, {0x174, 0xb295},
    {0x175, 0x1801}, {0x1a4, 0x1837},
    {0x1a5, 0x2b02}, {0x1ad, 0x2b0a},
};

TEST(signal_index, has_three_runs)
{
    for (const index_case &end : signal_ends) {
        EXPECT_EQ(host().signal_msg_code_to_index(end.code), end.index);
        EXPECT_EQ(host().signal_msg_index_to_code(static_cast<std::uint16_t>(end.index)), end.code);
    }
    EXPECT_EQ(messages(ENTITY_SIGNAL).count, 429u);
    EXPECT_EQ(messages(ENTITY_SIGNAL).index_count, 431u);
}

TEST(signal_index, misses_outside_the_runs)
{
    for (const unsigned code : {0x0000u, 0x1800u, 0x1838u, 0x2b01u, 0x2b0bu, 0xb100u, 0xb296u, 0xffffu})
        EXPECT_EQ(host().signal_msg_code_to_index(static_cast<std::uint16_t>(code)), 0u) << std::hex << code;
    EXPECT_EQ(host().signal_msg_index_to_code(0), 65535u);
    EXPECT_EQ(host().signal_msg_index_to_code(431), 65535u);
}

TEST(lte_index, misses_at_its_ends)
{
    const std::uint32_t count = messages(ENTITY_TD_LTE_STACK).index_count;
    EXPECT_EQ(count, messages(ENTITY_TD_LTE_STACK).count + 2);
    EXPECT_EQ(host().lte_msg_index_to_code(0), 0u);
    EXPECT_EQ(host().lte_msg_index_to_code(static_cast<std::uint16_t>(count)), 0u);
    EXPECT_EQ(host().lte_msg_code_to_index(9611), 0u) << "a hole inside a run";
    EXPECT_EQ(host().lte_msg_code_to_index(9675), 0u) << "behind a run";
}

struct indexed_domain {
    const char     *name;
    sdi_entity_enum domain;
    uint32_t (*dll_info_struct::*to_index)(uint16_t);
    uint32_t (*dll_info_struct::*to_code)(uint16_t);
};

void PrintTo(const indexed_domain &row, std::ostream *out) { *out << row.name; }

class index : public testing::TestWithParam<indexed_domain> {};

TEST_P(index, leads_there_and_back_for_every_message)
{
    const tt_msg_table &table = messages(GetParam().domain);
    for (std::uint32_t n = 0; n < table.count; ++n) {
        SCOPED_TRACE(table.rows[n].msg_name);
        const auto code = static_cast<std::uint16_t>(table.rows[n].msg_code);
        EXPECT_EQ((host().*GetParam().to_index)(code), n + 1);
        EXPECT_EQ((host().*GetParam().to_code)(static_cast<std::uint16_t>(n + 1)), code);
    }
}

INSTANTIATE_TEST_SUITE_P(domains, index,
                         testing::Values(indexed_domain{"signal", ENTITY_SIGNAL,
                                                        &dll_info_struct::signal_msg_code_to_index,
                                                        &dll_info_struct::signal_msg_index_to_code},
                                         indexed_domain{"lte", ENTITY_TD_LTE_STACK,
                                                        &dll_info_struct::lte_msg_code_to_index,
                                                        &dll_info_struct::lte_msg_index_to_code}),
                         [](const auto &info) { return info.param.name; });

/// Air messages have one number and one name in every domain that knows them.
TEST(messages, are_named_alike_in_the_stack_and_the_radio_domains)
{
    std::map<std::uint32_t, std::string> stack;
    for (std::uint32_t n = 0; n < messages(ENTITY_STACK).count; ++n)
        stack[messages(ENTITY_STACK).rows[n].msg_code] = messages(ENTITY_STACK).rows[n].msg_name;

    std::set<std::uint32_t> seen;
    for (const sdi_entity_enum domain : {ENTITY_TD_LTE_STACK, ENTITY_NR_STACK}) {
        for (std::uint32_t n = 0; n < messages(domain).count; ++n) {
            const tt_msg_row &row = messages(domain).rows[n];
            if (row.msg_code >= 9556 && row.msg_code <= 9837) {
                EXPECT_EQ(stack[row.msg_code], row.msg_name);
                seen.insert(row.msg_code);
            }
        }
    }
    EXPECT_EQ(seen.size(), 55u + 1 + 27 + 3) << "EPS, its dummy, 5GS, transfers";
}

// ------------------------------------------------------------------------------------------------- value texts

TEST(value_texts, have_the_documented_number_of_rows)
{
    const std::map<sdi_entity_enum, std::uint32_t> rows = {
        {ENTITY_DEFAULT, 1},      {ENTITY_GSM_STACK, 2}, {ENTITY_W_STACK, 6},   {ENTITY_SIGNAL, 1},
        {ENTITY_TD_LTE_STACK, 19}, {ENTITY_IMS_STACK, 1}, {ENTITY_NR_STACK, 12},
    };
    for (const auto &[domain, count] : rows) {
        SCOPED_TRACE(domain);
        const tt_value_desc_table &table = *host().value_desc_tables->tables[domain];
        ASSERT_EQ(table.count, count);
        EXPECT_STREQ(table.rows[count - 1].name, "");
        EXPECT_EQ(table.rows[count - 1].record, nullptr);
    }
}

struct text_case {
    sdi_entity_enum domain;
    const char     *record;
    const char     *field;
    std::uint32_t   value;
    const char     *text;
};

const text_case texts[] = {
    {ENTITY_W_STACK,      "qos_struct",                    "delay_class",     0,  "Subscribed delay class"},
    {ENTITY_W_STACK,      "qos_struct",                    "delay_class",     4,  "Delay class 4 (best effort)"},
    {ENTITY_W_STACK,      "qos_struct",                    "delay_class",     5,  "(none)"},
    {ENTITY_W_STACK,      "qos_struct",                    "delay_class",     7,  "Reserved"},
    {ENTITY_W_STACK,      "qos_struct",                    "peak_throughput", 1,  "Up to 1000 octet/s"},
    {ENTITY_GSM_STACK,    "qos_struct",                    "delay_class",     0,  "(none)"},
    {ENTITY_GSM_STACK,    "grr_gprs_cell_options_struct",  "nmo",             2,  "Network mode of operation III"},
    {ENTITY_TD_LTE_STACK, "gmmas_establish_req_struct",    "call_type",       0,  "originating signalling"},
    {ENTITY_NR_STACK,     "gmmas_establish_req_struct",    "call_type",       0,  "mobile terminated access"},
    {ENTITY_TD_LTE_STACK, "lnas_pdn_connect_cnf_struct",   "cause",           27, "Unknown or missing APN"},
};

TEST(value_texts, say_what_a_number_means)
{
    for (const text_case &row : texts) {
        SCOPED_TRACE(std::string(row.record) + "." + row.field);
        EXPECT_EQ(text(host().db_field_value_text(row.domain, row.record, row.field, row.value)), row.text);
    }
}

TEST(value_texts, of_the_quality_of_service_cover_its_17_fields)
{
    const tt_value_desc_table &table = *host().value_desc_tables->tables[ENTITY_W_STACK];
    const auto                 rows = std::span(table.rows, table.count);
    const auto                 qos = std::ranges::find(rows, std::string("qos_struct"), &tt_value_desc_row::name);
    ASSERT_NE(qos, rows.end());
    EXPECT_EQ(qos->record->no_fields, 17u);
    EXPECT_EQ(host().db_struct_known(ENTITY_W_STACK, "qos_struct"), 1u);
    EXPECT_EQ(host().db_struct_known(ENTITY_GSM_STACK, "qos_struct"), 0u);
}

TEST(value_texts, keep_the_quotes_of_a_remark)
{
    const std::string remark =
        text(host().db_field_comment(ENTITY_W_STACK, "crlc_tx_um_param_struct", "timer_discard"));
    EXPECT_EQ(remark.front(), '"');
    EXPECT_EQ(remark.back(), '"');
}

// ------------------------------------------------------------------------------------------------- dictionary

TEST(bit_fields, have_the_widths_of_their_domain)
{
    const std::map<sdi_entity_enum, std::uint16_t> widest = {
        {ENTITY_GSM_STACK, 29}, {ENTITY_W_STACK, 28}, {ENTITY_TD_LTE_STACK, 20}, {ENTITY_NR_STACK, 27}};
    for (const auto &[domain, width] : widest) {
        SCOPED_TRACE(domain);
        const auto fields = std::span(tool(domain).bit_map, tool(domain).no_bit_map);
        const auto [low, high] = std::ranges::minmax(fields, {}, &mta_bit_map_struct::no_bits);
        EXPECT_EQ(low.no_bits, 1);
        EXPECT_EQ(high.no_bits, width);
        EXPECT_TRUE(std::ranges::any_of(fields, [](const auto &f) { return f.no_touple > 2; }));
    }
    const auto signal = std::span(tool(ENTITY_SIGNAL).bit_map, tool(ENTITY_SIGNAL).no_bit_map);
    EXPECT_EQ(signal.size(), 21u);
    EXPECT_TRUE(std::ranges::all_of(signal, [](const auto &f) { return f.no_bits == 1 || f.no_bits == 4; }));
    EXPECT_EQ(tool(ENTITY_IMS_STACK).no_bit_map, 0u);
}

TEST(run_time_rules, stand_where_there_are_lists)
{
    for (const sdi_entity_enum domain : {ENTITY_W_STACK, ENTITY_TD_LTE_STACK, ENTITY_NR_STACK}) {
        EXPECT_GT(tool(domain).no_rt_rules, 1u) << domain;
        EXPECT_EQ((tool(domain).no_rt_rules - 1) % 3, 0u) << domain;
    }
    for (const sdi_entity_enum domain : {ENTITY_GSM_STACK, ENTITY_SIGNAL, ENTITY_IMS_STACK}) {
        EXPECT_EQ(tool(domain).no_rt_rules, 0u) << domain;
        EXPECT_EQ(tool(domain).rt_rules, nullptr) << domain;
    }
}

struct shape_case {
    sdi_entity_enum          domain;
    const char              *record;
    std::vector<std::string> members;
};

/// ASN.1 records: order and names are the schema's, presence flags and selectors added.
const shape_case shapes[] = {
    {ENTITY_TD_LTE_STACK, "Lte_RSTD_InterFreqInfo_r10",
     {"carrierFreq_r10", "measPRS_Offset_r10", "bracket_1Opt", "bracket_1", "bracket_2Opt", "bracket_2"}},
    {ENTITY_TD_LTE_STACK, "Lte_RSTD_InterFreqInfo_r10_bracket_2Choice", {"ChoiceId", "a"}},
    {ENTITY_W_STACK, "ReqDataBitAssistance",
     {"ganssSignalID", "ganssDataBitInterval", "ganssSatelliteInfoOpt", "ganssSatelliteInfo"}},
    {ENTITY_NR_STACK, "Nr_MeasResultNR", {"physCellIdOpt", "physCellId", "measResult", "bracket_1Opt", "bracket_1"}},
};

TEST(asn1_records, have_the_members_of_their_type)
{
    for (const shape_case &row : shapes) {
        SCOPED_TRACE(row.record);
        const rw_debug_info_struct &d = tool(row.domain);
        const auto                  all = std::span(d.structs, d.no_structs);
        const auto                  found = std::ranges::find(all, std::string(row.record), &rw_struct_row::name);
        ASSERT_NE(found, all.end());
        std::vector<std::string> names;
        for (const rw_member_row &member : std::span(found->members, found->no_members))
            names.emplace_back(member.name);
        EXPECT_EQ(names, row.members);
    }
}

/// Families of ASN.1 types: how many rows are tried, and the first names.
struct family_case {
    tt_peer_family_id        family;
    std::size_t              rows;
    std::vector<std::string> first;
};

const family_case families[] = {
    {TT_PEER_UMTS_RRC,
     732,
     {"tc_resp_msg_struct", "tc_loop_back_setup_struct", "tc_close_ue_test_loop_struct", "rrcc_plmn_list_struct",
      "RAB_Identity", "CompressedModeMeasCapabMC", "UE_Positioning_GPS_UTC_Model"}},
    {TT_PEER_LTE_RRC, 20, {"Lte_MCCH_Message", "Lte_DL_CCCH_Message", "Lte_DL_DCCH_Message", "Lte_UL_CCCH_Message"}},
    {TT_PEER_NR_RRC, 19, {"Nr_BCCH_BCH_Message", "Nr_DL_DCCH_Message", "Nr_UL_DCCH_Message", "Nr_RadioBearerConfig"}},
};

TEST(asn1_peer_rows, stand_in_their_order_and_are_in_the_dictionary)
{
    std::set<std::string> known;
    for (const sdi_entity_enum domain : {ENTITY_W_STACK, ENTITY_TD_LTE_STACK, ENTITY_NR_STACK}) {
        for (const rw_type_row &type : std::span(tool(domain).types, tool(domain).no_types))
            known.insert(type.name);
    }
    for (const family_case &c : families) {
        const tt_peer_family    &family = tt_peer_families[c.family];
        std::vector<std::string> names;
        for (const tt_peer_row &row : std::span(family.rows, family.count)) {
            names.emplace_back(row.name);
            EXPECT_GT(row.size, 0u) << row.name;
            EXPECT_TRUE(known.contains(row.name) || names.back().starts_with("tc_")) << row.name;
        }
        EXPECT_EQ(names.size(), c.rows);
        EXPECT_EQ(std::vector(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(c.first.size())), c.first);
        EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size());
    }
}

} // namespace
