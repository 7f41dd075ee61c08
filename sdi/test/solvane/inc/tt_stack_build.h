// What a stack build supplies: the constant tables that solvane-gen makes of the definitions.
//
// Declared here by hand, defined in the generated sources only.  Everything is constant data but the debug-info
// records, which `init_dll` completes, and the storage of the tool side's layout.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// Assigns `value` to bit-field `index` of the structure that starts at `buffer`, leaving the other bits alone;
/// does nothing for an index that the domain does not have.
using set_bit_func_ptr_type = void (*)(std::uint8_t *buffer, std::uint32_t index, unsigned value);

/// How this library's own compiler lays out the types of a domain.
struct rw_offsize_sup_struct {
    const char            *uuid;
    std::uint32_t          no_offsize;
    const rw_offsize_type *offsize;
    std::uint32_t          no_bit_sizes;
    const std::uint8_t    *bit_sizes; ///< declared width of each bit-field, 1 to 32 bits
    set_bit_func_ptr_type  set_bit_func;
};
SOLVANE_ILP32_SIZE(rw_offsize_sup_struct, 24);

/// A filled row of a per-module table.
struct tt_module_enum_row {
    std::uint32_t index; ///< module number; for states module number x 256 + machine number
    const char   *name;
};

struct tt_module_enum_list {
    std::uint32_t             count;
    const tt_module_enum_row *rows; ///< in the order of filling: the last of two rows for a number stays
};

/// What the registry row of a domain is filled from.
struct tt_domain_desc {
    std::uint32_t       entity; ///< sdi_entity_enum
    const char         *file_code_enum;
    const char         *sap_enum;
    const char         *msg_enum;
    const char         *module_enum;
    const char         *channels_enum;
    const char         *error_actions_enum;
    const char         *peer_msg_param_enum;
    const tt_msg_table *msg_table; ///< or null
    const char         *context_struct;
    tt_module_enum_list file_codes, peer_msgs, proto_errors, timers, fsms, states; ///< empty but in ENTITY_STACK
};

/// A run of message codes by its first and last row of the dense index.
struct tt_msg_index_range {
    tt_msg_index_row first;
    tt_msg_index_row last;
};

/// The dense message index of a domain.
struct tt_msg_index {
    std::uint32_t             no_ranges;
    const tt_msg_index_range *ranges;
    std::uint32_t             index_count;
    const tt_msg_index_row   *index_rows;
};

/// Rows of the peer table that are registered together, in their order; their `reserved` word is 0.
struct tt_peer_family {
    const char        *name;
    std::uint32_t      count;
    const tt_peer_row *rows;
};

/// Families in the order of registration: the target agent's rows, then those of the stack.
enum tt_peer_family_id {
    TT_PEER_TARGET_AGENT,
    TT_PEER_SM,
    TT_PEER_SMS,
    TT_PEER_GMM_MM,
    TT_PEER_CC,
    TT_PEER_CISS,
    TT_PEER_CBMC,
    TT_PEER_SS_OPERATIONS,
    TT_PEER_STORED_ITEMS,
    TT_PEER_GSM_RR,
    TT_PEER_QOS,
    TT_PEER_UMTS_RRC,
    TT_PEER_EMM,
    TT_PEER_ESM,
    TT_PEER_NGMM,
    TT_PEER_UE_POLICY,
    TT_PEER_LTE_RRC,
    TT_PEER_NR_RRC,
    TT_NO_PEER_FAMILIES
};

extern const tt_peer_family tt_peer_families[TT_NO_PEER_FAMILIES];

extern const char tt_baseline_text[];
extern const char tt_version_text[];
extern const char tt_variables_root[];
extern const char tt_entities_enum[];

// One row a domain, in the order of sdi_entity_enum.
extern const tt_domain_desc               tt_domain_descs[TT_NO_DOMAINS];
extern rw_debug_info_struct               tt_tool_records[TT_NO_DOMAINS];
extern rw_debug_info_struct               tt_target_records[TT_NO_DOMAINS];
extern const rw_offsize_sup_struct *const tt_offsize_sups[TT_NO_DOMAINS];
extern const tt_value_desc_table *const   tt_value_tables[TT_NO_DOMAINS];

extern const tt_msg_index tt_signal_msg_index;
extern const tt_msg_index tt_lte_msg_index;

// The trace table, complete at load time.
extern const tsc_db_info_struct tsc_db_info;

/// Row in `tsc_db_info.db` of each module's head item, one entry a row of `tsc_db_info.mod_list`.  From it the
/// row of an id is one addition away where ids have no gaps.  A hint: what it leads to is compared with the id.
extern const std::uint32_t tsc_mod_first_item[];
