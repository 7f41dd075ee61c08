// Ids and modules are found as a walk over the whole table finds them, whatever the table looks like and whatever
// its maker tells of where modules start.
#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "sample_table.h"

namespace {

constexpr std::uint32_t block = UINT32_C(1) << TSC_MODULE_ID_BITS;

/// The generated form: each module in its block, ids without gaps.
sample_table dense_table()
{
    sample_table table;
    for (std::uint32_t module = 0; module < 9; ++module) {
        table.add_module(module * block, "MODULE_" + std::to_string(module));
        for (std::uint32_t id = 1; id <= module * 5 % 8; ++id)
            table.add_item(module * block + id, "text");
    }
    table.close();
    return table;
}

/// Ids left out inside modules, so that positions lead astray behind each of them.
sample_table gapped_table()
{
    sample_table table;
    for (std::uint32_t module = 0; module < 5; ++module) {
        table.add_module(module * block, "MODULE_" + std::to_string(module));
        for (std::uint32_t id = 1; id < 200; id += 1 + id % 3)
            table.add_item(module * block + id, "text");
    }
    table.close();
    return table;
}

/// Modules that do not start at multiples of the block, share one, or leave blocks out; ids of the next module's
/// block that belong to the one before.
sample_table shifted_table()
{
    sample_table table;
    for (const std::uint32_t start :
         {UINT32_C(0), UINT32_C(10), UINT32_C(20), block + 7, 3 * block, 7 * block - 1, 100 * block}) {
        table.add_module(start, "MODULE_" + std::to_string(start));
        for (const std::uint32_t id : {1u, 2u, 3u, 5u, 9u})
            table.add_item(start + id, "text");
    }
    table.add_item(200 * block, "text");
    table.close();
    return table;
}

sample_table smallest_table()
{
    sample_table table;
    table.add_module(0, "::SYSTEM");
    table.close();
    return table;
}

struct table_case {
    const char *name;
    sample_table (*make)();
};
constexpr table_case table_cases[] = {
    {"dense", dense_table}, {"gapped", gapped_table}, {"shifted", shifted_table}, {"smallest", smallest_table}};

/// All ids near an item or a block's edge, and some anywhere.
std::vector<std::uint32_t> telling_ids(const sample_table &table)
{
    std::vector<std::uint32_t> ids;
    for (const tsc_db_item_struct &item : table.items)
        ids.insert(ids.end(), {item.trace_id - 1, item.trace_id, item.trace_id + 1});
    for (std::uint32_t row = 0; row < 16; ++row)
        ids.insert(ids.end(), {row * block - 1, row * block, row * block + 1});
    std::mt19937 random(7);
    for (int count = 0; count < 500; ++count)
        ids.push_back(static_cast<std::uint32_t>(random()));
    return ids;
}

const tsc_db_item_struct *walk_to_item(const sample_table &table, std::uint32_t id)
{
    for (const tsc_db_item_struct &item : table.items)
        if (item.trace_id == id)
            return &item;
    return nullptr;
}

std::uint32_t walk_to_module(const sample_table &table, std::uint32_t id)
{
    std::uint32_t found = 0;
    for (std::uint32_t row = 0; row < table.modules.size(); ++row)
        if (table.modules[row].start_trace_id <= id)
            found = row;
    return found;
}

void check_table(const sample_table &table, const tsc_table &view)
{
    for (const std::uint32_t id : telling_ids(table)) {
        const tsc_db_item_struct *const item = tsc_find_item(view, id);
        EXPECT_EQ(item, walk_to_item(table, id)) << "id " << std::hex << id;
        if (item != nullptr) {
            EXPECT_EQ(tsc_find_module(view, id), walk_to_module(table, id)) << "id " << std::hex << id;
        }
    }
}

TEST(Search, FindsWhatAWalkFinds)
{
    for (const table_case &row : table_cases) {
        SCOPED_TRACE(row.name);
        const sample_table table = row.make();
        check_table(table, table.view());
        check_table(table, table.view_without_positions());
    }
}

TEST(Search, WrongPositionsCostOnlyTime)
{
    for (const table_case &row : table_cases) {
        SCOPED_TRACE(row.name);
        const sample_table table = row.make();
        for (const std::uint32_t position : {UINT32_C(0), UINT32_C(3), UINT32_C(0x7FFFFFFF), UINT32_C(0xFFFFFFFF)}) {
            const std::vector<std::uint32_t> positions(table.modules.size(), position);
            check_table(table, {&table.db_info, positions.data()});
        }
    }
}

TEST(Search, IdBelowTheFirstItemIsNotFound)
{
    sample_table table;
    table.add_module(100, "LATE");
    table.add_item(101, "text");
    table.close();
    EXPECT_EQ(tsc_find_item(table.view(), 99), nullptr);
    EXPECT_EQ(tsc_find_item(table.view(), 0), nullptr);
    EXPECT_EQ(tsc_find_module(table.view(), 99), 0u);
}

TEST(Search, TableWithoutModulesHasNoModuleRow)
{
    sample_table table;
    table.add_item(0, "text");
    table.close();
    EXPECT_NE(tsc_find_item(table.view(), 0), nullptr);
    EXPECT_EQ(tsc_find_module(table.view(), 0), TSC_NO_MODULE);
}

using SearchDeathTest = testing::Test;

TEST(SearchDeathTest, AbsentAndTooSmallTablesEndTheProcess)
{
    sample_table table = smallest_table();
    EXPECT_DEATH(tsc_find_item({nullptr, nullptr}, 0), assertion_text("db_info != NULL"));
    EXPECT_DEATH(tsc_find_module({nullptr, nullptr}, 0), assertion_text("db_info != NULL"));
    for (const std::uint32_t total : {0u, 1u}) {
        table.db_info.total = total;
        EXPECT_DEATH(tsc_find_item(table.view(), 0), assertion_text("db_info->total >= 2"));
        EXPECT_DEATH(tsc_find_module(table.view(), 0), assertion_text("db_info->total >= 2"));
    }
}

} // namespace
