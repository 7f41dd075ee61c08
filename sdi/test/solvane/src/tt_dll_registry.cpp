// The registry of the stack's domains: which enumerations give meaning to the numbers of a trace, and the dense
// index of the message codes.  Filled once by init_dll and constant afterwards.
#include <cstring>

#include "tt_assert.h"
#include "tt_dll.h"

tt_entity_info tt_entity_infos[ENTITY_LAST];

namespace {

// Zero pages until a row is written: `module_states` alone covers 16 MiB of addresses and a handful of pages.
tt_enum_name module_file_codes[TT_NO_MODULES];
tt_enum_name module_peer_msgs[TT_NO_MODULES];
tt_enum_name module_proto_errors[TT_NO_MODULES];
tt_enum_name module_timers[TT_NO_MODULES];
tt_enum_name module_fsms[TT_NO_MODULES];
tt_enum_name module_states[TT_NO_MODULE_STATES];

/// Writes the rows in their order: of two rows for one number the last stays.
void fill_module_table(tt_enum_name *table, std::uint32_t no_rows, const tt_module_enum_list &list)
{
    for (std::uint32_t n = 0; n < list.count; ++n) {
        const tt_module_enum_row &row = list.rows[n];
        const std::size_t         size = std::strlen(row.name) + 1;
        tt_assert(row.index < no_rows && size <= sizeof *table, "row fits its table", "tt_dll", __LINE__);
        std::memset(table[row.index], 0, sizeof *table);
        std::memcpy(table[row.index], row.name, size);
    }
}

void fill_module_tables(tt_entity_info &row, const tt_domain_desc &desc)
{
    fill_module_table(module_file_codes, TT_NO_MODULES, desc.file_codes);
    fill_module_table(module_peer_msgs, TT_NO_MODULES, desc.peer_msgs);
    fill_module_table(module_proto_errors, TT_NO_MODULES, desc.proto_errors);
    fill_module_table(module_timers, TT_NO_MODULES, desc.timers);
    fill_module_table(module_fsms, TT_NO_MODULES, desc.fsms);
    fill_module_table(module_states, TT_NO_MODULE_STATES, desc.states);
    row.module_file_codes = module_file_codes;
    row.module_peer_msgs = module_peer_msgs;
    row.module_proto_errors = module_proto_errors;
    row.module_timers = module_timers;
    row.module_fsms = module_fsms;
    row.module_states = module_states;
}

/// A writable copy of the baseline text, one a row, that lives until the process ends.
char *copy_baseline()
{
    char *copy = strdup(tt_baseline_text);
    tt_assert(copy != nullptr, "copy != 0", "tt_dll", __LINE__);
    return copy;
}

void fill_row(tt_entity_info &row, const tt_domain_desc &desc)
{
    char *const uuid = row.uuid != nullptr ? row.uuid : copy_baseline(); // a second run keeps the text of the first
    row = {}; // with the table pointers, which all rows but that of ENTITY_STACK leave null
    row.valid = 1;
    row.version_text = tt_version_text;
    row.uuid = uuid;
    row.file_code_enum = desc.file_code_enum;
    row.sap_enum = desc.sap_enum;
    row.msg_enum = desc.msg_enum;
    row.module_enum = desc.module_enum;
    row.channels_enum = desc.channels_enum;
    row.error_actions_enum = desc.error_actions_enum;
    row.peer_msg_param_enum = desc.peer_msg_param_enum;
    row.msg_table = desc.msg_table;
    row.context_struct = desc.context_struct;
    if (desc.entity == ENTITY_STACK)
        fill_module_tables(row, desc);
}

} // namespace

void tt_fill_entity_info()
{
    for (const tt_domain_desc &desc : tt_domain_descs)
        fill_row(tt_entity_infos[desc.entity], desc);
}

std::uint32_t tt_msg_code_to_index(const tt_msg_index &table, std::uint16_t msg_code)
{
    const tt_msg_index_range *range = table.ranges;
    const tt_msg_index_range *end = table.ranges + table.no_ranges;
    while (range != end && (msg_code < range->first.msg_code || msg_code > range->last.msg_code))
        ++range;
    if (range == end)
        return 0;

    const auto guess = static_cast<std::uint16_t>(range->first.index + msg_code - range->first.msg_code);
    if (guess <= range->last.index && table.index_rows[guess].msg_code == msg_code)
        return table.index_rows[guess].index;

    // The run has holes, so the code stands below the guess.
    for (std::uint32_t n = range->first.index; n <= range->last.index; ++n)
        if (table.index_rows[n].msg_code == msg_code)
            return table.index_rows[n].index;
    return 0;
}

std::uint32_t tt_msg_index_to_code(const tt_msg_index &table, std::uint16_t index, std::uint32_t miss)
{
    return index == 0 || index >= table.index_count ? miss : table.index_rows[index].msg_code;
}

std::uint32_t signal_msg_code_to_index(std::uint16_t msg_code)
{
    return tt_msg_code_to_index(tt_signal_msg_index, msg_code);
}

// The two operations from an index to a code differ in their answer at a miss, and hosts know both.
std::uint32_t signal_msg_index_to_code(std::uint16_t index)
{
    return tt_msg_index_to_code(tt_signal_msg_index, index, 65535);
}

std::uint32_t lte_msg_code_to_index(std::uint16_t msg_code)
{
    return tt_msg_code_to_index(tt_lte_msg_index, msg_code);
}

std::uint32_t lte_msg_index_to_code(std::uint16_t index)
{
    return tt_msg_index_to_code(tt_lte_msg_index, index, 0);
}
