// The error chain: which error reaches the outer record, and when the walk ends.
#include "per_error.h"

#include <gtest/gtest.h>

namespace {

TEST(PerError, MergesTheFirstSoftAndTheLastHardError)
{
    const struct {
        const char   *name;
        PerError      local, outer;
        std::uint32_t answer, code, detail;
        std::uint8_t  flag;
    } rows[] = {
        {"no error leaves the outer alone", {0, 9, 9, 1}, {1, 3, 4, 0}, 0, 1, 3, 7},
        {"first soft error", {1, 5, 9, 1}, {0, 3, 4, 0}, 0, 1, 5, 1},
        {"later soft error is dropped", {1, 5, 9, 1}, {1, 3, 4, 0}, 0, 1, 3, 1},
        {"soft error does not hide a hard one", {1, 5, 9, 1}, {2, 3, 4, 0}, 0, 2, 3, 1},
        {"hard error", {2, 5, 9, 1}, {0, 3, 4, 0}, 1, 2, 5, 1},
        {"hard error over a soft one", {2, 5, 9, 1}, {1, 3, 4, 0}, 1, 2, 5, 1},
        {"last hard error stays", {2, 5, 9, 1}, {2, 3, 4, 0}, 1, 2, 5, 1},
        {"unknown code is dropped", {3, 5, 9, 1}, {0, 3, 4, 0}, 0, 0, 3, 7},
    };
    const std::uint8_t presence = 7;
    for (const auto &row : rows) {
        const auto check = [&](const PerError &local, const PerError &outer, std::uint32_t answer) {
            SCOPED_TRACE(row.name);
            EXPECT_EQ(answer, row.answer);
            EXPECT_EQ(local.code, 0u);
            EXPECT_EQ(outer.code, row.code);
            EXPECT_EQ(outer.detail, row.detail);
            EXPECT_EQ(outer.aux, 4u);
            EXPECT_EQ(outer.must_understand, 0u);
        };
        PerError      local = row.local, outer = row.outer;
        std::uint32_t answer = per_merge_error(&local, &outer);
        check(local, outer, answer);

        local = row.local, outer = row.outer;
        answer = per_merge_error_opt(&local, &outer, &presence);
        check(local, outer, answer);

        local = row.local, outer = row.outer;
        std::uint8_t flag = 7;
        answer            = per_merge_error_flag(&local, &outer, &flag);
        check(local, outer, answer);
        EXPECT_EQ(flag, row.flag) << row.name;

        local = row.local;
        EXPECT_EQ(per_merge_error(&local, nullptr), row.answer) << row.name;
    }
}

TEST(PerError, UnderrunIsASignOfTheBitCount)
{
    const struct {
        const char   *name;
        std::int32_t  size;
        std::uint32_t code, code_then, aux_then;
    } rows[] = {
        {"inside the frame", 1, 0, 0, 3},       {"at the end", 0, 0, 0, 3},
        {"one octet past", -1, 0, 2, 42},       {"over a soft error", -1, 1, 2, 42},
        {"not over a hard error", -1, 2, 2, 3}, {"bits count to 2^31", 0x10000000, 0, 2, 42},
        {"bits wrap to 0", INT32_MIN, 0, 0, 3},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        PerError                 error  = {row.code, 5, 3, 6};
        const unpack_info_struct stream = {nullptr, 0, row.size, &error};
        per_check_underrun(&stream, 42);
        EXPECT_EQ(error.code, row.code_then);
        EXPECT_EQ(error.aux, row.aux_then);
        EXPECT_EQ(error.detail, 5u);
        EXPECT_EQ(error.must_understand, 6u);
    }
}

} // namespace
