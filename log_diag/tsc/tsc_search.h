// Finding a trace id and its module in a trace table.
//
// The binary searches that stand in tsc_search.cpp define the answers.  A table whose modules hold ids without
// gaps, each in its block of 0x80000, is answered without searching: the row follows from the id, and what
// stands there is compared with the id before it is believed.  Reads constant data only: any thread may call.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// A trace table and, where its maker tells it, the item row at which each module starts.
struct tsc_table {
    const tsc_db_info_struct *db_info;
    const std::uint32_t      *mod_first_item; ///< `mod_num` rows of `db`, or null: always search
};

/// Ids in the block of a module, as a number of bits.
inline constexpr std::uint32_t TSC_MODULE_ID_BITS = 19;

/// What a row of `mod_list` is called when there is none.
inline constexpr std::uint32_t TSC_NO_MODULE = UINT32_C(0xFFFFFFFF);

/// The source unit that assertions name.
inline constexpr char TSC_UNIT[] = R"(..\..\MS_System\MS_Ref\source\log_diag\tsc\tsc_libdb_api)";

/// The item of an id, or null when the table does not have it.  Ends the process on an absent table and on one
/// of fewer than two items.
const tsc_db_item_struct *tsc_find_item(const tsc_table &table, std::uint32_t trace_id);

/// Row of the last module that starts at or below an id; 0 for an id below them all.  The id is one that was
/// found.  TSC_NO_MODULE when the table has no modules.  Ends the process as tsc_find_item does.
std::uint32_t tsc_find_module(const tsc_table &table, std::uint32_t trace_id);
