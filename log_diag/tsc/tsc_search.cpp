// Finding a trace id and its module in a trace table: the direct way, and the searches that it stands in for.
#include "tsc_search.h"

#include "tt_assert.h"

namespace {

void require_table(const tsc_db_info_struct *db_info)
{
    tt_assert(db_info != nullptr, "db_info != NULL", TSC_UNIT, __LINE__);
    tt_assert(db_info->total >= 2, "db_info->total >= 2", TSC_UNIT, __LINE__);
}

/// The item where a table without gaps holds the id; null when another one stands there.
const tsc_db_item_struct *item_by_position(const tsc_table &table, std::uint32_t trace_id)
{
    const tsc_db_info_struct &db_info = *table.db_info;
    const std::uint32_t       mod_row = trace_id >> TSC_MODULE_ID_BITS;
    if (table.mod_first_item == nullptr || mod_row >= db_info.mod_num)
        return nullptr;

    const std::uint32_t offset = trace_id & ((UINT32_C(1) << TSC_MODULE_ID_BITS) - 1);
    const std::uint32_t row = table.mod_first_item[mod_row] + offset;
    if (row >= db_info.total || db_info.db[row].trace_id != trace_id)
        return nullptr;
    return &db_info.db[row];
}

/// The middle rounds up.  An id below that of item 0, which the first item's id of 0 rules out, ends the search
/// before `high` would wrap.
const tsc_db_item_struct *search_item(const tsc_db_info_struct &db_info, std::uint32_t trace_id)
{
    std::uint32_t low = 0;
    std::uint32_t high = db_info.total - 1;
    while (low <= high) {
        const std::uint32_t       mid = (low + high + 1) >> 1;
        const tsc_db_item_struct &item = db_info.db[mid];
        if (item.trace_id == trace_id)
            return &item;
        if (item.trace_id < trace_id)
            low = mid + 1;
        else if (mid == 0)
            break;
        else
            high = mid - 1;
    }
    return nullptr;
}

/// Whether a row is the last one that starts at or below the id.
bool module_holds(const tsc_db_info_struct &db_info, std::uint32_t mod_row, std::uint32_t trace_id)
{
    return db_info.mod_list[mod_row].start_trace_id <= trace_id &&
           (mod_row + 1 == db_info.mod_num || db_info.mod_list[mod_row + 1].start_trace_id > trace_id);
}

std::uint32_t search_module(const tsc_db_info_struct &db_info, std::uint32_t trace_id)
{
    std::uint32_t low = 0;
    std::uint32_t high = db_info.mod_num - 1;
    while (low < high) {
        const std::uint32_t mid = (low + high + 1) >> 1;
        const std::uint32_t start = db_info.mod_list[mid].start_trace_id;
        if (start == trace_id)
            return mid;
        if (start < trace_id)
            low = mid;
        else
            high = mid - 1;
    }
    return low;
}

} // namespace

const tsc_db_item_struct *tsc_find_item(const tsc_table &table, std::uint32_t trace_id)
{
    require_table(table.db_info);
    const tsc_db_item_struct *item = item_by_position(table, trace_id);
    return item != nullptr ? item : search_item(*table.db_info, trace_id);
}

std::uint32_t tsc_find_module(const tsc_table &table, std::uint32_t trace_id)
{
    require_table(table.db_info);
    const tsc_db_info_struct &db_info = *table.db_info;
    if (db_info.mod_num == 0)
        return TSC_NO_MODULE;
    const std::uint32_t block = trace_id >> TSC_MODULE_ID_BITS;
    const std::uint32_t mod_row = block < db_info.mod_num ? block : db_info.mod_num - 1;
    return module_holds(db_info, mod_row, trace_id) ? mod_row : search_module(db_info, trace_id);
}
