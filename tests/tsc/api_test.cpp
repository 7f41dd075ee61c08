// The host's nine operations, over a table of the generated form that stands here in the place of a stack build's.
#include <cstring>

#include <gtest/gtest.h>

#include "tsc_libdb_api.h"
#include "tt_stack_build.h"

namespace {

const tsc_db_item_struct items[] = {
    {0x00000000, "", TSC_DIS_HEAD, "", 0},
    {0x00080000, "SDI", TSC_DIS_HEAD, "", 0},
    {0x00080001, "sdi up", TSC_DIS_SINGLE, "", 31},
    {0x00080002, "odd %d", TSC_DIS_SINGLE, "sdi.c", 32},
    {0x00080003, "commlib: waiting connect, connected_num(%d),support client_num(%d)", TSC_DIS_ARGS, "com_tcp.c",
     153},
    {0x00080006, "commlib: com_tcp_open.", TSC_DIS_SINGLE, "com_tcp.c", 210},
    {0x00100000, "SIM", TSC_DIS_HEAD, "", 0},
    {0xFFFFFFFF, "", TSC_DIS_LAST, "", 0},
};
const tsc_db_mod_struct modules[] = {{0x00000000, "::SYSTEM", 1}, {0x00080000, "SDI", 1}, {0x00100000, "SIM", 1}};

} // namespace

const tsc_db_info_struct tsc_db_info = {"tsc_db", items, std::size(items), modules, std::size(modules)};
const std::uint32_t      tsc_mod_first_item[] = {0, 1, 6};

namespace {

const std::uint8_t with_two_fields[] = {0, 8, 0, 3, 0, 0, 0, 3, '3', 1, '5'};
const std::uint8_t unknown[] = {0, 8, 0, 4, 0, 0, 0, 0};

TEST(Api, Accessors)
{
    EXPECT_EQ(tsc_db_get(), &tsc_db_info);
    EXPECT_EQ(tsc_db_total(), 8u);
    EXPECT_EQ(tsc_db_mod_num(), 3u);
}

TEST(Api, StringLayout)
{
    constexpr char line[] = "commlib: waiting connect, connected_num(3),support client_num(5)";
    tsc_trace_info info;
    EXPECT_STREQ(tsc_trace_text(with_two_fields), line);
    EXPECT_STREQ(tsc_trace_text_info(with_two_fields, &info), line);
    EXPECT_EQ(info.mod_row, 1u);
    EXPECT_STREQ(info.mod_name, "SDI");
    EXPECT_STREQ(info.file, "com_tcp.c");
    EXPECT_EQ(info.line, 153);
    EXPECT_STREQ(tsc_trace_text(unknown), "ERROR: can not find in tsc_db!!!");
    EXPECT_STREQ(tsc_trace_text_info(unknown, nullptr), "ERROR: can not find in tsc_db!!!");
}

TEST(Api, IntegerLayout)
{
    constexpr char      line[] = "commlib: waiting connect, connected_num(3),support client_num(-5)";
    const std::uint32_t words[] = {0x00080003, 3, 0xFFFFFFFB};
    std::uint8_t        data[sizeof words];
    std::memcpy(data, words, sizeof words);
    tsc_trace_info info;
    EXPECT_STREQ(tsc_trace_text_int(data, sizeof data), line);
    EXPECT_STREQ(tsc_trace_text_int_info(data, sizeof data, &info), line);
    EXPECT_EQ(info.mod_row, 1u);
    EXPECT_STREQ(tsc_trace_text_int_info(data, 4, nullptr),
                 "commlib: waiting connect, connected_num(?),support client_num(?)"
                 " -- ERROR: arg_num is not match!!! -- ");
    EXPECT_STREQ(tsc_trace_text_int(data, 6), "ERROR: invalid trace id integer data!!!");
}

struct look_up_case {
    std::uint32_t id, status, mod_row;
    const char   *format, *mod_name, *file;
    std::int32_t  line;
};
const look_up_case look_up_cases[] = {
    {0x00000000, 0xFE, 0, "",       "::SYSTEM", "",      0},
    {0x00080000, 0xFE, 1, "SDI",    "SDI",      "",      0},
    {0x00080001, 0,    1, "sdi up", "SDI",      "",      31},
    {0x00080002, 0,    1, "odd %d", "SDI",      "sdi.c", 32},
    {0x00100000, 0xFE, 2, "SIM",    "SIM",      "",      0},
    {0xFFFFFFFF, 0xFF, 2, "",       "SIM",      "",      0},
};

TEST(Api, LookUpsOfKnownIds)
{
    for (const look_up_case &row : look_up_cases) {
        SCOPED_TRACE(row.id);
        tsc_trace_info      info;
        tsc_trace_full_info full;
        EXPECT_EQ(tsc_trace_lookup(row.id, &info), 1);
        EXPECT_EQ(info.mod_row, row.mod_row);
        EXPECT_STREQ(info.mod_name, row.mod_name);
        EXPECT_STREQ(info.file, row.file);
        EXPECT_EQ(info.line, row.line);
        EXPECT_EQ(tsc_trace_lookup_full(row.id, &full), 1);
        EXPECT_STREQ(full.trace_format, row.format);
        EXPECT_EQ(full.status, row.status);
        EXPECT_EQ(full.mod_row, row.mod_row);
        EXPECT_STREQ(full.mod_name, row.mod_name);
        EXPECT_STREQ(full.file, row.file);
        EXPECT_EQ(full.line, row.line);
        EXPECT_EQ(tsc_trace_lookup(row.id, nullptr), 1);
        EXPECT_EQ(tsc_trace_lookup_full(row.id, nullptr), 1);
    }
}

TEST(Api, LookUpsOfUnknownIds)
{
    for (const std::uint32_t id : {0x00000001u, 0x00080004u, 0x00080005u, 0x00080007u, 0x00180000u, 0xFFFFFFFEu}) {
        SCOPED_TRACE(id);
        tsc_trace_info      info = {1, "dirty", "dirty", 1};
        tsc_trace_full_info full = {"dirty", 1, 1, "dirty", "dirty", 1};
        EXPECT_EQ(tsc_trace_lookup(id, &info), 0);
        EXPECT_EQ(info.mod_row, 0xFFFFFFFFu);
        EXPECT_EQ(info.mod_name, nullptr);
        EXPECT_EQ(info.file, nullptr);
        EXPECT_EQ(info.line, 0);
        EXPECT_EQ(tsc_trace_lookup_full(id, &full), 0);
        EXPECT_EQ(full.trace_format, nullptr);
        EXPECT_EQ(full.status, 0u);
        EXPECT_EQ(full.mod_row, 0xFFFFFFFFu);
        EXPECT_EQ(full.mod_name, nullptr);
        EXPECT_EQ(full.file, nullptr);
        EXPECT_EQ(full.line, 0);
        EXPECT_EQ(tsc_trace_lookup(id, nullptr), 0);
        EXPECT_EQ(tsc_trace_lookup_full(id, nullptr), 0);
    }
}

/// Every item of the table decodes by itself, the closing one and those whose status says "no arguments" included.
TEST(Api, StatusDoesNotSteerTheDecoders)
{
    const std::uint8_t odd[] = {0, 8, 0, 2, 0, 0, 0, 1, '7'};
    const std::uint8_t last[] = {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0};
    const std::uint8_t first[] = {0, 0, 0, 0, 0, 0, 0, 0};
    tsc_trace_info     info;
    EXPECT_STREQ(tsc_trace_text(odd), "odd 7");
    EXPECT_STREQ(tsc_trace_text_info(last, &info), "");
    EXPECT_STREQ(info.mod_name, "SIM");
    EXPECT_STREQ(tsc_trace_text_info(first, &info), "");
    EXPECT_EQ(info.mod_row, 0u);
}

} // namespace
