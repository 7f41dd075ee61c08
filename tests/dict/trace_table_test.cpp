// The trace table: what the id searches rely on, and its companion of first items.
#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

#include "tt_stack_build.h"

namespace {

constexpr std::uint32_t ids_of_module = 0x80000;

TEST(trace_table, begins_with_id_0_and_ends_with_the_last_item)
{
    EXPECT_STREQ(tsc_db_info.db_name, "tsc_db");
    ASSERT_GE(tsc_db_info.total, 2U);
    const tsc_db_item_struct &first = tsc_db_info.db[0];
    EXPECT_EQ(first.trace_id, 0U);
    EXPECT_EQ(first.status, std::uint32_t{TSC_DIS_HEAD});
    EXPECT_STREQ(first.trace_format, ""); // the head of row 0 alone does not name its module
    const tsc_db_item_struct &last = tsc_db_info.db[tsc_db_info.total - 1];
    EXPECT_EQ(last.trace_id, 0xFFFFFFFFU);
    EXPECT_EQ(last.status, std::uint32_t{TSC_DIS_LAST});
    EXPECT_STREQ(last.trace_format, "");
    EXPECT_STREQ(last.file, "");
    EXPECT_EQ(last.line, 0);
}

TEST(trace_table, modules_own_blocks_of_ids_in_their_order)
{
    ASSERT_EQ(tsc_db_info.mod_num, 88U);
    for (std::uint32_t n = 0; n < tsc_db_info.mod_num; ++n) {
        EXPECT_EQ(tsc_db_info.mod_list[n].start_trace_id, n * ids_of_module);
        EXPECT_EQ(tsc_db_info.mod_list[n].unit_num, 1U);
    }
    EXPECT_STREQ(tsc_db_info.mod_list[0].mod_name, "::SYSTEM");
    EXPECT_STREQ(tsc_db_info.mod_list[1].mod_name, "SDI");
    EXPECT_STREQ(tsc_db_info.mod_list[87].mod_name, "PHYNR_DFE");
}

TEST(trace_table, ids_follow_each_other_behind_the_head_of_their_module)
{
    std::uint32_t module = 0;
    for (std::uint32_t n = 0; n + 1 < tsc_db_info.total; ++n) {
        const tsc_db_item_struct &item = tsc_db_info.db[n];
        if (item.status != TSC_DIS_HEAD) {
            EXPECT_EQ(item.trace_id, tsc_db_info.db[n - 1].trace_id + 1);
            EXPECT_LT(item.trace_id, module * ids_of_module) << "ids of the next module";
            EXPECT_TRUE(item.status == TSC_DIS_SINGLE || item.status == TSC_DIS_ARGS) << item.trace_id;
            continue;
        }
        ASSERT_LT(module, tsc_db_info.mod_num);
        EXPECT_EQ(item.trace_id, tsc_db_info.mod_list[module].start_trace_id);
        EXPECT_STREQ(item.trace_format, module == 0 ? "" : tsc_db_info.mod_list[module].mod_name);
        EXPECT_STREQ(item.file, "");
        EXPECT_EQ(item.line, 0);
        EXPECT_EQ(tsc_mod_first_item[module], n);
        ++module;
    }
    EXPECT_EQ(module, tsc_db_info.mod_num);
}

TEST(trace_table, texts_are_never_null)
{
    for (std::uint32_t n = 0; n < tsc_db_info.total; ++n) {
        ASSERT_NE(tsc_db_info.db[n].trace_format, nullptr) << n;
        ASSERT_NE(tsc_db_info.db[n].file, nullptr) << n;
        EXPECT_EQ(std::strchr(tsc_db_info.db[n].file, '/'), nullptr) << n;
    }
}

TEST(trace_table, has_the_statements_that_hosts_know)
{
    struct known {
        std::uint32_t    id;
        const char      *format;
        std::uint32_t    status;
        const char      *file;
        std::int32_t     line; ///< 0: not told
    };
    for (const known &k :
         {known{0x00080000, "SDI", TSC_DIS_HEAD, "", 0},
          known{0x00080003, "commlib: waiting connect, connected_num(%d),support client_num(%d)", TSC_DIS_ARGS,
                "com_tcp.c", 153},
          known{0x00080006, "commlib: com_tcp_open.", TSC_DIS_SINGLE, "com_tcp.c", 0}}) {
        const tsc_db_item_struct *item = nullptr;
        for (std::uint32_t n = 0; n < tsc_db_info.total && item == nullptr; ++n)
            if (tsc_db_info.db[n].trace_id == k.id)
                item = &tsc_db_info.db[n];
        ASSERT_NE(item, nullptr) << k.format;
        EXPECT_STREQ(item->trace_format, k.format);
        EXPECT_EQ(item->status, k.status) << k.format;
        EXPECT_STREQ(item->file, k.file) << k.format;
        EXPECT_TRUE(k.line == 0 || item->line == k.line) << k.format;
    }
}

} // namespace
