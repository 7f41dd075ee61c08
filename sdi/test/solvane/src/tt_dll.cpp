// Start-up of the plug-in: the exported records and the order in which init_dll fills everything.
//
// init_dll runs alone, once, on the host's thread.  Nothing is ever torn down: all tables live until the process
// ends.
#include <strings.h>

#include "com_lch.h"
#include "com_pch.h"
#include "tsc_libdb_api.h"
#include "tt_comm_info.h"
#include "tt_dll.h"
#include "tt_gprs_block.h"
#include "tt_infra_comm_init.h"
#include "tt_peer_register.h"
#include "tt_peermsg.h"
#include "tt_td_lte_stack_peer_table.h"
#include "tt_ue_stack_comm_init.h"

// The two records that start-up fills, in one object: hosts know the peer table to stand directly behind the
// interface record.  The exported names are given to its parts by the assembler.
struct exported_records {
    dll_info_struct      info;
    tt_peer_table_struct peers;
};
static_assert(offsetof(exported_records, peers) == sizeof(dll_info_struct));
static_assert(sizeof(tt_peer_table_struct) == 2 * sizeof(void *));

extern "C" {
[[gnu::used]] exported_records tt_exported_records;
}

#define TEXT_OF(value) #value
#define WORD_TEXT(value) TEXT_OF(value)
#define WORD WORD_TEXT(__SIZEOF_POINTER__)
asm(".globl dll_info\n"
    ".type dll_info, %object\n"
    ".size dll_info, 61*" WORD "\n"
    ".set dll_info, tt_exported_records\n"
    ".globl tt_peer_table\n"
    ".type tt_peer_table, %object\n"
    ".size tt_peer_table, 2*" WORD "\n"
    ".set tt_peer_table, tt_exported_records + 61*" WORD "\n");

namespace {

const tt_offsize_table     tool_offsize = {tt_tool_records, TT_NO_DOMAINS};
const tt_offsize_table     target_offsize = {tt_target_records, TT_NO_DOMAINS};
const tt_value_desc_tables value_desc_tables = {tt_value_tables, TT_NO_DOMAINS};

/// A constant list by which a host of another age finds out what it may use.
tt_bool dll_feature_supported(const char *tag)
{
    static constexpr const char *tags[] = {
        "CTC Gen",     "CTC Gen II", "Gprs Scheme",      "offsize index 32", "W Entity",
        "TRACE ID",    "W base SDI", "TRACE ID Integer", "DB Item Ext Info", "DB Item Full Info",
    };
    if (tag != nullptr)
        for (const char *known : tags)
            if (strcasecmp(tag, known) == 0)
                return 1;
    return 0;
}

// Hooks of the channel start: no stack of this build has one.
std::uintptr_t stack_open_hook(std::uintptr_t value)
{
    return value;
}

void stack_close_hook() {}

void layout_domain(sdi_entity_enum domain)
{
    tt_layout_domain(&tt_tool_records[domain], tt_offsize_sups[domain]);
}

void fill_dll_info()
{
    dll_info = {
        .no_entities = ENTITY_LAST,
        .tool_offsize = &tool_offsize,
        .entity_info = tt_entity_infos,
        .var_access_root = tt_variables_root,
        .entity_enum_name = tt_entities_enum,
        .reserved_6 = 0,
        .target_offsize = &target_offsize,
        .tt_peer_struct_name = tt_peer_struct_name,
        .reserved_9 = 0,
        .stack_open_hook = stack_open_hook,
        .stack_close_hook = stack_close_hook,
        .com_init = com_init,
        .com_pch_add = com_pch_add,
        .com_pch_start = com_pch_start,
        .com_pch_stop = com_pch_stop,
        .com_pch_remove = com_pch_remove,
        .com_lch_add = com_lch_add,
        .com_lch_connect = com_lch_connect,
        .com_lch_write = com_lch_write,
        .com_lch_disconnect = com_lch_disconnect,
        .com_lch_remove = com_lch_remove,
        .parse_baud_rate = parse_baud_rate,
        .parse_parity = parse_parity,
        .parse_stop_bits = parse_stop_bits,
        .parse_flow_control = parse_flow_control,
        .parse_input_mode = parse_input_mode,
        .parse_char_size = parse_char_size,
        .tt_comm_info_get = tt_comm_info_get,
        .tt_comm_info_free = tt_comm_info_free,
        .tt_comm_info_reset = tt_comm_info_reset,
        .tt_comm_info_hook = tt_comm_info_hook,
        .gprs_block_pack = gprs_block_pack,
        .gprs_block_unpack = gprs_block_unpack,
        .gprs_struct_size = gprs_struct_size,
        .gprs_block_identify = gprs_block_identify,
        .value_desc_tables = &value_desc_tables,
        .db_struct_known = db_struct_known,
        .db_struct_value_text = db_struct_value_text,
        .db_field_value_text = db_field_value_text,
        .db_field_case_value_text = db_field_case_value_text,
        .dll_feature_supported = dll_feature_supported,
        .db_struct_comment = db_struct_comment,
        .db_field_comment = db_field_comment,
        .reserved_44 = 0,
        .reserved_45 = 0,
        .tsc_trace_text = tsc_trace_text,
        .signal_msg_code_to_index = signal_msg_code_to_index,
        .signal_msg_index_to_code = signal_msg_index_to_code,
        .lte_msg_code_to_index = lte_msg_code_to_index,
        .lte_msg_index_to_code = lte_msg_index_to_code,
        .air_msg_pack = air_msg_pack,
        .air_msg_unpack = air_msg_unpack,
        .air_msg_size = air_msg_size,
        .tsc_trace_text_int = tsc_trace_text_int,
        .tsc_trace_text_info = tsc_trace_text_info,
        .tsc_trace_text_int_info = tsc_trace_text_int_info,
        .tsc_trace_lookup = tsc_trace_lookup,
        .tsc_trace_lookup_full = tsc_trace_lookup_full,
        .tsc_db_get = tsc_db_get,
        .tsc_db_total = tsc_db_total,
        .tsc_db_mod_num = tsc_db_mod_num,
    };
}

} // namespace

// The order binds: the peer table and the layouts of the domains are made in turns, and nothing shows in
// `dll_info` before all domains are done.
void init_dll(void)
{
    tt_infra_comm_init();
    tt_register_target_agent_peers();
    layout_domain(ENTITY_DEFAULT);

    tt_ue_stack_comm_init();
    tt_register_stack_peers();
    layout_domain(ENTITY_STACK);
    layout_domain(ENTITY_GSM_STACK);
    layout_domain(ENTITY_W_STACK);
    layout_domain(ENTITY_SIGNAL);

    tt_register_lte_peers();
    layout_domain(ENTITY_TD_LTE_STACK);

    tt_register_nr_peers();
    layout_domain(ENTITY_NR_STACK);
    layout_domain(ENTITY_IMS_STACK);

    tt_fill_entity_info();
    fill_dll_info();
    tt_build_value_maps();
}

void deinit_dll(void) {}
