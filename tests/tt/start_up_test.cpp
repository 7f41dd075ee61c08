// The library after start-up, on the baseline that it is built with: registry, message index, value texts, slots.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "solvane/solvane.h"

namespace {

class start_up : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (dll_info.no_entities == 0)
            init_dll();
    }
};

std::string text_of(const char *text)
{
    return text == nullptr ? "(null)" : text;
}

// ------------------------------------------------------------------------------------------ registry

struct registry_case {
    std::uint32_t entity;
    const char   *file_code_enum;
    const char   *msg_enum;
    const char   *module_enum;
    const char   *context_struct;
};

const registry_case registry_cases[] = {
    {ENTITY_DEFAULT,      "mta_infra_file_code_enums",        "",                   "infra_module_enum", "mta_infra_global_ptr_struct"},
    {ENTITY_STACK,        "mta_stack_file_code_enums",        "stack_msg_enum",     "stack_module_enum", "stack_context_ptrs_struct"},
    {ENTITY_GSM_STACK,    "mta_gsm_stack_file_code_enums",    "gsm_stack_msg_enum", "stack_module_enum", "gsm_stack_context_ptrs_struct"},
    {ENTITY_W_STACK,      "mta_w_stack_file_code_enums",      "w_stack_msg_enum",   "stack_module_enum", "w_stack_context_ptrs_struct"},
    {ENTITY_SIGNAL,       "mta_signal_file_code_enums",       "signal_msg_enum",    "thread_id_type",    "signal_context_ptrs_struct"},
    {ENTITY_TD_LTE_STACK, "mta_td_lte_stack_file_code_enums", "td_lte_stack_msg_enum", "stack_module_enum", "td_lte_stack_context_ptrs_struct"},
    {ENTITY_IMS_STACK,    "mta_ims_stack_file_code_enums",    "ims_stack_msg_enum", "stack_module_enum", "ims_stack_context_ptrs_struct"},
    {ENTITY_NR_STACK,     "mta_nr_stack_file_code_enums",     "nr_stack_msg_enum",  "stack_module_enum", "nr_stack_context_ptrs_struct"},
};

TEST_F(start_up, fills_the_registry)
{
    for (const registry_case &expected : registry_cases) {
        SCOPED_TRACE(expected.file_code_enum);
        const bool            infrastructure = expected.entity == ENTITY_DEFAULT;
        const tt_entity_info &row = dll_info.entity_info[expected.entity];
        EXPECT_EQ(row.valid, 1);
        EXPECT_EQ(text_of(row.version_text), "Test Version - ..");
        EXPECT_EQ(text_of(row.uuid), "SOLVANE_V2_22C_W23.06.6");
        EXPECT_EQ(text_of(row.file_code_enum), expected.file_code_enum);
        EXPECT_EQ(text_of(row.msg_enum), expected.msg_enum);
        EXPECT_EQ(text_of(row.module_enum), expected.module_enum);
        EXPECT_EQ(text_of(row.context_struct), expected.context_struct);
        EXPECT_EQ(text_of(row.sap_enum), infrastructure ? "" : "stack_sap_enum");
        EXPECT_EQ(text_of(row.channels_enum), infrastructure ? "" : "MTA_CHANNELS");
        EXPECT_EQ(text_of(row.error_actions_enum), infrastructure ? "" : "RPS_PROTOCOL_ERROR_ACTIONS");
        EXPECT_EQ(text_of(row.peer_msg_param_enum), infrastructure ? "" : "RPS_PEER_MSG_PARAM");
        EXPECT_EQ(row.msg_table == nullptr, infrastructure);
        EXPECT_EQ(row.module_states != nullptr, expected.entity == ENTITY_STACK);
        EXPECT_EQ(row.reserved, 0u);
    }
    for (const int entity : {ENTITY_OSA, ENTITY_USER})
        EXPECT_EQ(dll_info.entity_info[entity].valid, 0) << entity;
}

TEST_F(start_up, gives_every_record_a_baseline_text_of_its_own)
{
    std::vector<const char *> texts;
    for (std::uint32_t domain = 0; domain < TT_NO_DOMAINS; ++domain)
        for (const char *text : {dll_info.entity_info[domain].uuid, dll_info.tool_offsize->records[domain].uuid,
                                 dll_info.target_offsize->records[domain].uuid}) {
            EXPECT_EQ(text_of(text), "SOLVANE_V2_22C_W23.06.6");
            for (const char *other : texts)
                EXPECT_NE(static_cast<const void *>(text), other);
            texts.push_back(text);
        }
}

struct module_case {
    const tt_enum_name *tt_entity_info::*table;
    std::uint32_t                        row;
    const char                          *name;
};

const module_case module_cases[] = {
    {&tt_entity_info::module_file_codes,   0,             ""},
    {&tt_entity_info::module_file_codes,   1,             "nvm_filecodes_enum"},
    {&tt_entity_info::module_file_codes,   52,            "mta_log_rr_protocol_error_enum"},
    {&tt_entity_info::module_file_codes,   203,           "rabm_filecodes_enum"},
    {&tt_entity_info::module_file_codes,   255,           ""},
    {&tt_entity_info::module_peer_msgs,    57,            "rr_peer_msg_type"},
    {&tt_entity_info::module_proto_errors, 201,           "proto_error_type_enum"},
    {&tt_entity_info::module_timers,       26,            "mnm_timer_id_enum"},
    {&tt_entity_info::module_fsms,         58,            "gprs_rr_fsm_enum"},
    {&tt_entity_info::module_states,       9 * 256 + 1,   "gmm_state_enum"},
    {&tt_entity_info::module_states,       18 * 256 + 4,  "mnm_call_intermediate_state_enum"},
    {&tt_entity_info::module_states,       201 * 256,     "sm_pdp_context_state_enum"},
    {&tt_entity_info::module_states,       0xFFFF,        ""},
};

TEST_F(start_up, fills_the_module_tables_of_the_stack)
{
    const tt_entity_info &stack = dll_info.entity_info[ENTITY_STACK];
    for (const module_case &expected : module_cases)
        EXPECT_STREQ((stack.*expected.table)[expected.row], expected.name) << "row " << expected.row;
}

// ------------------------------------------------------------------------------------------ message index

TEST_F(start_up, indexes_the_signals_in_their_documented_runs)
{
    EXPECT_EQ(dll_info.entity_info[ENTITY_SIGNAL].msg_table->count, 429u);
    EXPECT_EQ(dll_info.entity_info[ENTITY_SIGNAL].msg_table->index_count, 431u);
    const std::pair<std::uint16_t, std::uint32_t> ends[] = {
        {0xb101, 1}, {0xb295, 0x174}, {0x1801, 0x175}, {0x1837, 0x1a4}, {0x2b02, 0x1a5}, {0x2b0a, 0x1ad},
    };
    for (const auto &[code, index] : ends)
        EXPECT_EQ(dll_info.signal_msg_code_to_index(code), index) << std::hex << code;
    for (const unsigned code : {0u, 0xb100u, 0xb296u, 0x1838u, 0x2b0bu, 0xffffu})
        EXPECT_EQ(dll_info.signal_msg_code_to_index(static_cast<std::uint16_t>(code)), 0u) << std::hex << code;
    for (const unsigned index : {0u, 431u, 65535u})
        EXPECT_EQ(dll_info.signal_msg_index_to_code(static_cast<std::uint16_t>(index)), 65535u) << index;
    EXPECT_EQ(dll_info.signal_msg_index_to_code(430), 0u);
}

/// Every row of the two tables, there and back; the index is dense and what is not in it is a miss.
TEST_F(start_up, leads_from_message_codes_to_indices_and_back)
{
    for (const int entity : {ENTITY_SIGNAL, ENTITY_TD_LTE_STACK}) {
        const bool            signal = entity == ENTITY_SIGNAL;
        const auto            to_index = signal ? dll_info.signal_msg_code_to_index : dll_info.lte_msg_code_to_index;
        const auto            to_code = signal ? dll_info.signal_msg_index_to_code : dll_info.lte_msg_index_to_code;
        const tt_msg_table   &table = *dll_info.entity_info[entity].msg_table;
        std::vector<unsigned> index_of(65536, 0);
        ASSERT_EQ(table.index_count, table.count + 2);
        for (std::uint32_t n = 0; n < table.index_count; ++n) {
            EXPECT_EQ(table.index_rows[n].index, n);
            if (n > 0 && n <= table.count)
                index_of.at(table.index_rows[n].msg_code) = n;
        }
        for (std::uint32_t n = 0; n < table.count; ++n) {
            EXPECT_EQ(table.rows[n].msg_code, table.index_rows[n + 1].msg_code);
            EXPECT_EQ(to_code(static_cast<std::uint16_t>(n + 1)), table.rows[n].msg_code);
        }
        for (unsigned code = 0; code < 65536; ++code)
            ASSERT_EQ(to_index(static_cast<std::uint16_t>(code)), index_of[code]) << entity << ": " << code;
    }
    const std::uint32_t lte_count = dll_info.entity_info[ENTITY_TD_LTE_STACK].msg_table->index_count;
    EXPECT_EQ(dll_info.lte_msg_index_to_code(0), 0u);
    EXPECT_EQ(dll_info.lte_msg_index_to_code(static_cast<std::uint16_t>(lte_count)), 0u);
}

// ------------------------------------------------------------------------------------------ value texts

struct text_case {
    const char *name;
    const char *found;
    const char *text;
};

TEST_F(start_up, answers_in_words)
{
    const char *const   gprs = "qos_struct";
    const char *const   cause = "cc_peer_cause_struct";
    const auto          field = dll_info.db_field_value_text;
    const auto          by_case = dll_info.db_field_case_value_text;
    const std::int32_t  w = ENTITY_W_STACK;
    const text_case     cases[] = {
        {"a value",                     field(w, gprs, "delay_class", 7),                   "Reserved"},
        {"a value between others",      field(w, gprs, "delay_class", 4),                   "Delay class 4 (best effort)"},
        {"no such value",               field(w, gprs, "delay_class", 5),                   nullptr},
        {"no such field",               field(w, gprs, "delay", 7),                         nullptr},
        {"no such structure",           field(w, "qos", "delay_class", 7),                  nullptr},
        {"another domain",              field(ENTITY_GSM_STACK, gprs, "delay_class", 7),    nullptr},
        {"no such domain",              field(10, gprs, "delay_class", 7),                  nullptr},
        {"a domain with no database",   field(ENTITY_USER, gprs, "delay_class", 7),         nullptr},
        {"no structure",                field(w, nullptr, "delay_class", 7),                nullptr},
        {"the empty name",              field(w, "", "", 0),                                nullptr},
        {"a case",                      by_case(ENTITY_STACK, cause, "value", 1, 129),      "Unassigned (unallocated) number"},
        {"not in its case",             by_case(ENTITY_STACK, cause, "value", 1, 1),        nullptr},
        {"the empty default case",      by_case(ENTITY_STACK, cause, "value", 7, 129),      nullptr},
        {"a field without cases",       by_case(w, gprs, "delay_class", 1, 7),              nullptr},
        {"no text on the structure",    dll_info.db_struct_value_text(w, gprs, 1),          nullptr},
        {"no comment on the structure", dll_info.db_struct_comment(w, gprs),                nullptr},
        {"no comment on the field",     dll_info.db_field_comment(w, gprs, "delay_class"),  nullptr},
    };
    for (const text_case &row : cases)
        EXPECT_EQ(text_of(row.found), text_of(row.text)) << row.name;

    EXPECT_EQ(dll_info.db_struct_known(w, gprs), 1u);
    EXPECT_EQ(dll_info.db_struct_known(ENTITY_GSM_STACK, gprs), 0u);
    EXPECT_EQ(dll_info.db_struct_known(w, ""), 0u);
    const std::string comment = text_of(dll_info.db_field_comment(w, "crlc_tx_um_param_struct", "timer_discard"));
    ASSERT_GT(comment.size(), 2u);
    EXPECT_EQ(comment.front(), '"');
    EXPECT_EQ(comment.back(), '"');
}

TEST_F(start_up, closes_each_value_table_with_an_end_row)
{
    const std::uint32_t documented[] = {1, 0, 2, 6, 1, 19, 1, 12}; // 0: the stack's own count is its build's
    ASSERT_EQ(dll_info.value_desc_tables->count, std::uint32_t{TT_NO_DOMAINS});
    for (std::uint32_t domain = 0; domain < TT_NO_DOMAINS; ++domain) {
        const tt_value_desc_table &table = *dll_info.value_desc_tables->tables[domain];
        ASSERT_GE(table.count, 1u);
        if (documented[domain] != 0) {
            EXPECT_EQ(table.count, documented[domain]) << domain;
        }
        EXPECT_STREQ(table.rows[table.count - 1].name, "");
        EXPECT_EQ(table.rows[table.count - 1].record, nullptr);
    }
}

// ------------------------------------------------------------------------------------------ slots

TEST_F(start_up, names_its_features)
{
    const std::pair<const char *, int> tags[] = {
        {"CTC Gen", 1},  {"ctc gen ii", 1},       {"Gprs Scheme", 1},      {"OFFSIZE INDEX 32", 1}, {"W Entity", 1},
        {"TRACE ID", 1}, {"trace id integer", 1}, {"DB Item Ext Info", 1}, {"DB Item Full Info", 1}, {"W base SDI", 1},
        {"CTC", 0},      {"CTC Gen I", 0},        {"", 0},                 {nullptr, 0},
    };
    for (const auto &[tag, known] : tags)
        EXPECT_EQ(dll_info.dll_feature_supported(tag), known) << text_of(tag);
}

TEST_F(start_up, hands_hook_values_back)
{
    EXPECT_EQ(dll_info.stack_open_hook(77), 77u);
    EXPECT_EQ(dll_info.tt_comm_info_hook(78), 78u);
    dll_info.stack_close_hook();
    EXPECT_EQ(dll_info.reserved_6 | dll_info.reserved_9 | dll_info.reserved_44 | dll_info.reserved_45, 0u);
}

TEST_F(start_up, knows_no_radio_block_yet)
{
    std::uint8_t       octets[23]{};
    pack_info_struct   to{octets, 0};
    unpack_info_struct from{octets, 0, 23, nullptr};
    EXPECT_EQ(dll_info.gprs_block_pack("NO_SUCH_BLOCK_T", &to, octets), 1u);
    EXPECT_EQ(dll_info.gprs_struct_size("NO_SUCH_BLOCK_T"), 23u);
    EXPECT_STREQ(dll_info.gprs_block_identify(0, &from), "");
}

TEST_F(start_up, a_second_run_adds_no_peer_row)
{
    const std::uint32_t count = tt_peer_table.count;
    init_dll();
    EXPECT_EQ(tt_peer_table.count, count);
}

TEST(exports, the_peer_table_stands_behind_the_interface_record)
{
    EXPECT_EQ(reinterpret_cast<char *>(&dll_info) + sizeof dll_info, reinterpret_cast<char *>(&tt_peer_table));
}

TEST(exports_death, an_allocation_that_fails_ends_the_process)
{
#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer's heap ends the process itself at a size that cannot be had";
#endif
    const std::size_t too_much = SIZE_MAX - 64;
    EXPECT_DEATH(dll_info_version.alloc(too_much, 1, 2, 3), "Assertion failed: ret_ptr != 0, file tt_fp_init, line 33");
    EXPECT_DEATH(dll_info_version.realloc(nullptr, too_much, 0, 1, 2, 3),
                 "Assertion failed: ret_ptr != 0, file tt_fp_init, line 42");
    dll_info_version.free(nullptr, 1, 2, 3);
}

} // namespace
