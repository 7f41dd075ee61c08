// What the embedded stack build holds, as a host reads it: through the exported records only, from names to members,
// literals, messages and texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "solvane/solvane.h"

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

/// The dictionary of a domain, laid out by the library's own compiler.
const rw_debug_info_struct &tool(sdi_entity_enum domain)
{
    return host().tool_offsize->records[domain];
}

template <typename Row> const Row *find(const Row *rows, std::uint32_t count, std::string_view name)
{
    const Row *end = rows + count;
    const Row *at = std::find_if(rows, end, [&](const Row &row) { return name == row.name; });
    return at == end ? nullptr : at;
}

const rw_type_row *find_type(const rw_debug_info_struct &d, std::string_view name)
{
    return find(d.types, d.no_types, name);
}

/// A structure by any name of it, typedefs followed.
const rw_struct_row *find_struct(const rw_debug_info_struct &d, std::string_view name)
{
    const rw_type_row *type = find_type(d, name);
    while (type != nullptr && type->kind == RW_KIND_TYPEDEF && type->no_dims == 0)
        type = &d.types[type->type_index];
    const bool known = type != nullptr && (type->kind == RW_KIND_STRUCT || type->kind == RW_KIND_UNION);
    return known ? &d.structs[type->type_index] : nullptr;
}

const rw_member_row *find_member(const rw_debug_info_struct &d, std::string_view record, std::string_view name)
{
    const rw_struct_row *row = find_struct(d, record);
    return row == nullptr ? nullptr : find(row->members, row->no_members, name);
}

const rw_literal_row *find_literal(const rw_debug_info_struct &d, std::string_view name)
{
    for (std::uint32_t n = 0; n < d.no_enums; ++n) {
        if (const rw_literal_row *row = find(d.enums[n].literals, d.enums[n].no_literals, name))
            return row;
    }
    return nullptr;
}

std::string text(const char *answer) { return answer == nullptr ? "(null)" : answer; }

// ------------------------------------------------------------------------------------------------- numbers

struct named_value {
    const char  *name;
    std::int32_t value;
};

/// What the classification of inter-layer messages decides by.
const named_value classified[] = {
    {"INVALID_SAP", 0},        {"GMM_SM_SAP", 44},      {"MM_CC_SAP", 49},      {"MNSMS_SAP", 50},
    {"GMM_AS_SAP", 51},        {"MM_SS_SAP", 54},       {"MM_SMS_SAP", 55},     {"LLC_GMM_SAP", 84},
    {"LLC_SMS_SAP", 90},       {"RLC_RRC_SAP", 126},    {"RLC_APP_SAP", 127},   {"RLC_RRCA_SAP", 154},
    {"RRC_RRCA_SAP", 158},     {"LTE_EMM_SAP", 163},    {"LTE_ESM_SAP", 166},   {"NGMM_NGSM_SAP", 197},
    {"NR_NGMM_SAP", 200},      {"UPM_NGMM_SAP", 204},   {"NR_SAP", 249},        {"TD_LTE_SAP", 252},
    {"GSM_CMN_SAP", 255},

    {"MSG_ID_RLC_DATA_REQ", 2},
    {"MSG_ID_AS_RLC_DATA_IND", 3},
    {"MSG_ID_GMMAS_DATA_IND", 21},
    {"MSG_ID_GMM_AS_GPRS_SIG_EST_REQ", 22},
    {"MSG_ID_GMM_AS_GPRS_DATA_REQ", 23},
    {"MSG_ID_GMM_AS_3G_SIG_EST_REQ", 24},
    {"MSG_ID_GMM_AS_3G_DATA_REQ", 25},
    {"MSG_ID_LLGMM_UNITDATA_IND", 26},
    {"MSG_ID_MMCC_DATA_REQ", 27},
    {"MSG_ID_MMSS_DATA_REQ", 28},
    {"MSG_ID_MMSMS_DATA_REQ", 29},
    {"MSG_ID_GMMSM_UNITDATA_REQ", 30},
    {"MSG_ID_MMCC_DATA_IND", 32},
    {"MSG_ID_MMSS_DATA_IND", 33},
    {"MSG_ID_MMSMS_DATA_IND", 35},
    {"MSG_ID_GMMSM_UNITDATA_IND", 36},
    {"MSG_ID_LLGMM_UNITDATA_REQ", 37},
    {"MSG_ID_SMS_DELIVER", 3111},
    {"MSG_ID_EMM_ATTACH_REQUEST", 9556},
    {"MSG_ID_EMM_SERVICE_REQUEST", 9587},
    {"MSG_ID_ESM_ESM_DUMMY_MESAGE", 9674},
    {"MSG_ID_UPM_NGMM_DATA_REQ", 9750},
    {"MSG_ID_NGMM_NGSM_DATA_REQ", 9812},
    {"MSG_ID_UPM_NGMM_DATA_IND", 9837},
    {"MSG_ID_MMCC_EST_IND", 10268},
    {"MSG_ID_MMCC_PROMPT_IND", 10271},
    {"MSG_ID_MMSS_EST_IND", 11273},
    {"MSG_ID_LLSMS_UNITDATA_IND", 12291},
    {"MSG_ID_MMSMS_EST_IND", 12296},
    {"MSG_ID_SMS_SUBMIT", 12307},
    {"MSG_ID_SMS_COMMAND", 12308},
    {"MSG_ID_SMS_DELIVER_REPORT_ACK", 12309},
    {"MSG_ID_SMS_DELIVER_REPORT_NACK", 12310},
    {"MSG_ID_NGMM_NGSM_DATA_IND", 13389},
    {"MSG_ID_LLSMS_UNITDATA_REQ", 17410},
    {"MSG_ID_RRCA_AS_RLC_DATA_IND", 24779},
};

TEST(stack_numbers, are_those_that_messages_are_classified_by)
{
    for (const named_value &row : classified) {
        SCOPED_TRACE(row.name);
        const rw_literal_row *literal = find_literal(tool(ENTITY_STACK), row.name);
        ASSERT_NE(literal, nullptr);
        EXPECT_EQ(literal->value.num, row.value);
    }
}

TEST(stack_numbers, have_a_message_row_for_every_air_interface_message)
{
    std::set<std::uint32_t> wanted;
    for (std::uint32_t code = 9556; code <= 9610; ++code)
        wanted.insert(code);
    for (std::uint32_t code = 9680; code <= 9710; ++code)
        if (!(code >= 9691 && code <= 9693) && code != 9708)
            wanted.insert(code);

    const tt_msg_table *table = host().entity_info[ENTITY_STACK].msg_table;
    for (std::uint32_t n = 0; n < table->count; ++n) {
        const std::uint32_t code = table->rows[n].msg_code;
        EXPECT_FALSE((code >= 9691 && code <= 9693) || code == 9708) << table->rows[n].msg_name;
        wanted.erase(code);
    }
    EXPECT_TRUE(wanted.empty()) << "first without a row: " << *wanted.begin();
}

TEST(stack_messages, lead_from_an_id_to_the_structure)
{
    const tt_msg_table *table = host().entity_info[ENTITY_STACK].msg_table;
    const tt_msg_row   *row =
        std::find_if(table->rows, table->rows + table->count, [](const tt_msg_row &r) { return r.msg_code == 2; });
    ASSERT_NE(row, table->rows + table->count);
    EXPECT_STREQ(row->msg_name, "MSG_ID_RLC_DATA_REQ");
    EXPECT_EQ(row->sap_code, 0u);
    EXPECT_STREQ(row->sap_name, "INVALID_SAP");
    EXPECT_STREQ(row->struct_name, "rlc_data_req_struct");

    // Whoever classifies takes the channel from the second octet of the parameters.
    const rw_debug_info_struct &d = tool(ENTITY_STACK);
    for (const char *name : {"rlc_data_req_struct", "as_rlc_data_ind_struct"}) {
        const rw_member_row *channel = find_member(d, name, "channel");
        ASSERT_NE(channel, nullptr) << name;
        EXPECT_EQ(d.offsize[channel->offsize_index], 1) << name;
    }
}

TEST(stack_registry, keeps_the_odd_rows_of_the_module_tables)
{
    const tt_entity_info &stack = host().entity_info[ENTITY_STACK];
    EXPECT_STREQ(stack.module_file_codes[1], "nvm_filecodes_enum"); // the call control name came first
    EXPECT_STREQ(stack.module_file_codes[52], "mta_log_rr_protocol_error_enum");
    EXPECT_STREQ(stack.module_states[201 * 256], "sm_pdp_context_state_enum");
    EXPECT_STREQ(stack.module_states[18 * 256 + 4], "mnm_call_intermediate_state_enum");
    EXPECT_STREQ(stack.module_timers[54], "");
}

// ------------------------------------------------------------------------------------------------- members

struct member_case {
    sdi_entity_enum domain;
    const char     *record;
    const char     *member;
    rw_role         role;
    const char     *refers_to; ///< member at `ref`; null: none
};

/// One of every role that stands in a structure.
const member_case member_cases[] = {
    {ENTITY_DEFAULT, "var_access_start_struct",    "entity_ctx_ptr",      RW_ROLE_POINTER,  "no_entity_ctx_ptr"},
    {ENTITY_DEFAULT, "var_access_start_struct",    "no_entity_ctx_ptr",   RW_ROLE_COUNT,    nullptr},
    {ENTITY_DEFAULT, "osa_timer_struct",           "expiry",              RW_ROLE_UNION,    "expiry_kind"},
    {ENTITY_STACK,   "tt_pdu_data_struct",         "peer_buff_ptr",       RW_ROLE_POINTER,  "no_peer_buff_ptr"},
    {ENTITY_STACK,   "tt_msg_struct",              "peer_buff",           RW_ROLE_STRUCT,   nullptr},
    {ENTITY_STACK,   "mta_bit_map_struct",         "touple",              RW_ROLE_ARRAY,    nullptr},
    {ENTITY_STACK,   "mta_tt_trace_struct",        "time_stamp",          RW_ROLE_OPTIONAL, "time_stampP"},
    {ENTITY_STACK,   "mta_tt_trace_struct",        "time_stampP",         RW_ROLE_PRESENCE, nullptr},
    {ENTITY_STACK,   "ciss_component_struct",      "u",                   RW_ROLE_UNION,    "kind"},
    {ENTITY_STACK,   "ciss_component_struct",      "kind",                RW_ROLE_SELECTOR, nullptr},
    {ENTITY_STACK,   "csm_group_operation_struct", "scope",               RW_ROLE_UNION,    nullptr},
    {ENTITY_STACK,   "mm_auth_vector_struct",      "autn",                RW_ROLE_ARRAY,    "autn_present"},
    {ENTITY_STACK,   "AsnBits",                    "bits",                RW_ROLE_POINTER,  nullptr},
};

TEST(members, have_the_role_that_the_definition_gives_them)
{
    for (const member_case &row : member_cases) {
        SCOPED_TRACE(std::string(row.record) + "." + row.member);
        const rw_debug_info_struct &d = tool(row.domain);
        const rw_member_row        *member = find_member(d, row.record, row.member);
        ASSERT_NE(member, nullptr);
        EXPECT_EQ(member->role, std::uint32_t{row.role});
        if (row.refers_to == nullptr)
            EXPECT_EQ(member->ref, RW_NO_REF);
        else
            EXPECT_STREQ(find_struct(d, row.record)->members[member->ref].name, row.refers_to);
    }
}

TEST(members, of_a_union_carry_the_selector_value)
{
    const rw_member_row *reject = find_member(tool(ENTITY_STACK), "ciss_component_union", "reject");
    ASSERT_NE(reject, nullptr);
    EXPECT_EQ(reject->ref, 0xA4u);
    EXPECT_EQ(reject->offsize_index, RW_NO_INDEX);
}

TEST(members, of_a_list_are_the_three_that_a_reader_needs)
{
    const rw_debug_info_struct &d = tool(ENTITY_STACK);
    const rw_struct_row        *list = find_struct(d, "AsnList");
    const rw_struct_row        *node = find_struct(d, "AsnListNode");
    ASSERT_EQ(list->no_members, 3u);
    ASSERT_EQ(node->no_members, 2u);

    const rw_member_row *next = find_member(d, "AsnListNode", "next");
    EXPECT_EQ(d.offsize[next->offsize_index], 2 * sizeof(void *)) << "the way back lies between data and next";
    EXPECT_EQ(d.offsize[find_member(d, "AsnList", "dataSize")->offsize_index], 3 * sizeof(void *));
}

struct size_case {
    const char   *record;
    std::uint16_t octets; ///< where words are 32 bits wide
};

const size_case size_cases[] = {
    {"mta_string_struct", 8},           {"mta_tt_fun_call_struct", 16},  {"mta_tt_fun_call_resp_struct", 12},
    {"mta_tt_offsize_resp_struct", 28}, {"mta_bit_map_struct", 16},      {"tt_msg_struct", 32},
    {"AsnList", 20},                    {"AsnBits", 8},                  {"unpack_info_struct", 16},
};

TEST(sizes, of_shared_records_are_those_of_the_target)
{
    if (sizeof(void *) != 4)
        GTEST_SKIP() << "documented for 32-bit words";
    const rw_debug_info_struct &d = tool(ENTITY_STACK);
    for (const size_case &row : size_cases)
        EXPECT_EQ(d.offsize[find_struct(d, row.record)->size_index], row.octets) << row.record;
}

// ------------------------------------------------------------------------------------------------- bit-fields

/// Widths of a domain's bit-fields with how many have them.
std::map<std::uint32_t, std::uint32_t> widths(sdi_entity_enum domain)
{
    std::map<std::uint32_t, std::uint32_t> out;
    for (std::uint32_t n = 0; n < tool(domain).no_bit_map; ++n)
        ++out[tool(domain).bit_map[n].no_bits];
    return out;
}

TEST(bit_fields, have_every_width_from_1_to_29_in_the_stack)
{
    const auto found = widths(ENTITY_STACK);
    EXPECT_EQ(found.size(), 29u);
    EXPECT_EQ(found.begin()->first, 1u);
    EXPECT_EQ(found.rbegin()->first, 29u);
}

TEST(bit_fields, of_the_signal_domain_are_flags_and_nibbles)
{
    for (const auto &[width, count] : widths(ENTITY_SIGNAL))
        EXPECT_TRUE(width == 1 || width == 4) << count << " of " << width << " bits";
}

TEST(bit_fields, lie_in_parts_that_make_up_their_width)
{
    std::size_t most = 0;
    for (int domain = 0; domain < TT_NO_DOMAINS; ++domain) {
        const rw_debug_info_struct &d = host().tool_offsize->records[domain];
        for (std::uint32_t n = 0; n < d.no_bit_map; ++n) {
            const mta_bit_map_struct &field = d.bit_map[n];
            ASSERT_GE(field.no_touple, 1);
            ASSERT_LE(field.no_touple, MTA_MAX_TOUPLE);
            EXPECT_EQ(field.touple[0].bit_num, field.no_bits);
            for (int part = 1; part < field.no_touple; ++part)
                EXPECT_LT(field.touple[part].bit_num, field.touple[part - 1].bit_num);
            most = std::max<std::size_t>(most, field.no_touple);
        }
    }
    EXPECT_EQ(most, 4u) << "the widest fields run over four octets";
}

// ------------------------------------------------------------------------------------------------- value texts

TEST(value_texts, of_a_call_cause_hold_for_one_case)
{
    const auto cause = [](std::uint32_t selector, std::uint32_t value) {
        return text(host().db_field_case_value_text(ENTITY_STACK, "cc_peer_cause_struct", "value", selector, value));
    };
    EXPECT_EQ(cause(1, 129), "Unassigned (unallocated) number");
    EXPECT_EQ(cause(1, 131), "No route to destination");
    EXPECT_EQ(cause(7, 129), "(null)");

    int texts = 0;
    for (std::uint32_t value = 0; value < 256; ++value)
        texts += cause(1, value) != "(null)";
    EXPECT_EQ(texts, 49);
}

TEST(value_texts, stand_in_the_domain_of_the_structure)
{
    EXPECT_EQ(host().db_struct_known(ENTITY_W_STACK, "qos_struct"), 1u);
    EXPECT_EQ(host().db_struct_known(ENTITY_GSM_STACK, "qos_struct"), 0u);
    EXPECT_EQ(text(host().db_field_value_text(ENTITY_W_STACK, "qos_struct", "delay_class", 7)), "Reserved");
    EXPECT_EQ(text(host().db_field_value_text(ENTITY_W_STACK, "qos_struct", "delay_class", 5)), "(null)");
    EXPECT_EQ(host().value_desc_tables->tables[ENTITY_DEFAULT]->count, 1u);

    const std::string comment =
        text(host().db_field_comment(ENTITY_W_STACK, "crlc_tx_um_param_struct", "timer_discard"));
    ASSERT_GE(comment.size(), 2u);
    EXPECT_EQ(comment.front(), '"');
    EXPECT_EQ(comment.back(), '"');
}

TEST(value_texts, of_two_domains_have_records_of_their_own)
{
    const auto record = [](sdi_entity_enum domain) -> const tt_value_desc * {
        const tt_value_desc_table *table = host().value_desc_tables->tables[domain];
        const tt_value_desc_row   *row = find(table->rows, table->count, "gmmas_establish_cnf_struct");
        return row == nullptr ? nullptr : row->record;
    };
    ASSERT_NE(record(ENTITY_TD_LTE_STACK), nullptr);
    ASSERT_NE(record(ENTITY_NR_STACK), nullptr);
    EXPECT_NE(record(ENTITY_TD_LTE_STACK), record(ENTITY_NR_STACK));
}

} // namespace
