// The wrappers over the memory slots, and the reports: which slot with which arguments, and the texts to the letter.
#include "asn_heap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "asn_report.h"
#include "report_catcher.h"

namespace {

// The last call of a memory slot.
struct slot_call {
    std::string                name;
    const void                *block = nullptr;
    std::array<std::size_t, 5> arguments{}; // sizes as the slot has them, then the tag
    bool                       operator==(const slot_call &) const = default;
};
slot_call last_call;
bool      memory_left; // whether the slots have any

template <const char *name>
void *watched_alloc(std::size_t size, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    last_call = {name, nullptr, {size, 0, flag, file_code, line}};
    return memory_left && size ? std::memset(std::malloc(size), 0xEE, size) : nullptr;
}

template <const char *name>
void *watched_realloc(void *block, std::size_t size, std::size_t old_size, std::uint8_t flag, std::uint16_t file_code,
                      std::uint32_t line)
{
    last_call = {name, block, {size, old_size, flag, file_code, line}};
    if (!memory_left || size == 0)
        return nullptr;
    auto *const grown = static_cast<std::uint8_t *>(std::realloc(block, size));
    if (size > old_size)
        std::memset(grown + old_size, 0xEE, size - old_size);
    return grown;
}

template <const char *name>
void watched_free(void *block, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    last_call = {name, block, {0, 0, flag, file_code, line}};
    std::free(block);
}

constexpr char alloc_name[] = "alloc", alloc_clear_name[] = "alloc_clear", realloc_name[] = "realloc",
               realloc_clear_name[] = "realloc_clear", free_name[] = "free", free_tagged_name[] = "free_tagged";

class AsnHeap : public testing::Test
{
protected:
    AsnHeap()
    {
        memory_left                    = true;
        last_call                      = {};
        dll_info_version.alloc         = watched_alloc<alloc_name>;
        dll_info_version.alloc_clear   = watched_alloc<alloc_clear_name>;
        dll_info_version.realloc       = watched_realloc<realloc_name>;
        dll_info_version.realloc_clear = watched_realloc<realloc_clear_name>;
        dll_info_version.free          = watched_free<free_name>;
        dll_info_version.free_tagged   = watched_free<free_tagged_name>;
    }
    report_catcher catcher;
};

TEST_F(AsnHeap, AllocatesZeroedBlocks)
{
    auto *const block = static_cast<std::uint8_t *>(AsnMemAlloc(9, 1, 4590, 70000));
    EXPECT_EQ(last_call, (slot_call{"alloc_clear", nullptr, {9, 0, 1, 4590, 70000}}));
    EXPECT_EQ(std::vector<std::uint8_t>(block, block + 9), std::vector<std::uint8_t>(9, 0));
    AsnMemFree(block, 1, 4587, 5);
    EXPECT_EQ(last_call, (slot_call{"free_tagged", block, {0, 0, 1, 4587, 5}}));
    AsnMemFree(nullptr);
    EXPECT_EQ(last_call, (slot_call{"free_tagged", nullptr, {}}));
    EXPECT_EQ(catcher.reports.size(), 0u);
}

TEST_F(AsnHeap, ResizesAndZeroesWhatIsNew)
{
    auto *block = static_cast<std::uint8_t *>(AsnMemRealloc(nullptr, 2, 0, 1, 2, 3));
    EXPECT_EQ(last_call, (slot_call{"realloc_clear", nullptr, {2, 0, 1, 2, 3}}));
    block[0] = 7, block[1] = 8;
    const void *const before = block;
    block                    = static_cast<std::uint8_t *>(AsnMemRealloc(block, 5, 2));
    EXPECT_EQ(last_call, (slot_call{"realloc_clear", before, {5, 2, 0, 0, 0}}));
    EXPECT_EQ(std::vector<std::uint8_t>(block, block + 5), (std::vector<std::uint8_t>{7, 8, 0, 0, 0}));
    block = static_cast<std::uint8_t *>(AsnMemRealloc(block, 1, 5));
    EXPECT_EQ(block[0], 7);
    AsnMemFree(block);
}

TEST_F(AsnHeap, NoMemoryIsReportedAndEndsTheProcessUnlessNoneWasAskedFor)
{
    memory_left = false;
    EXPECT_EQ(AsnMemAlloc(0), nullptr);
    EXPECT_EQ(AsnMemRealloc(nullptr, 0, 0), nullptr);
    EXPECT_EQ(catcher.reports.size() + catcher.exits.size(), 0u);
    EXPECT_EQ(AsnMemAlloc(1), nullptr);
    EXPECT_EQ(AsnMemRealloc(nullptr, 1, 0), nullptr);
    const report_catcher::report report = {"memory allocation error!!\n", 1};
    EXPECT_EQ(catcher.reports, (std::vector<report_catcher::report>{report, report}));
    EXPECT_EQ(catcher.exits, (std::vector<int>{1, 1}));
}

TEST_F(AsnHeap, GrowsArrays)
{
    const struct {
        const char   *name;
        std::uint32_t capacity, needed, step;
        std::int32_t  answer;
        std::uint32_t capacity_then;
    } rows[] = {
        {"enough", 4, 4, 8, -1, 4},
        {"one step", 4, 5, 8, 4, 12},
        {"step too small is not repeated", 4, 50, 8, 4, 12},
        {"without a step, exactly", 4, 50, 0, 4, 50},
        {"from nothing", 0, 3, 2, 0, 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        auto       *array  = row.capacity ? static_cast<std::uint32_t *>(std::malloc(row.capacity * 4)) : nullptr;
        auto *const before = array;
        if (array)
            array[row.capacity - 1] = 0xABCD;
        last_call           = {};
        auto       capacity = row.capacity;
        const auto answer   = AsnGrowArray(&array, &capacity, row.needed, 4, row.step, 1, 2, 3);
        EXPECT_EQ(answer, row.answer);
        EXPECT_EQ(capacity, row.capacity_then);
        if (answer < 0)
            EXPECT_EQ(last_call, slot_call{});
        else
            EXPECT_EQ(last_call, (slot_call{"realloc", before, {capacity * 4, row.capacity * 4, 1, 2, 3}}));
        if (row.capacity) {
            EXPECT_EQ(array[row.capacity - 1], 0xABCDu);
        }
        AsnFreeArray(&array, 4, 5, 6);
        EXPECT_EQ(array, nullptr);
        EXPECT_EQ(last_call.name, "free_tagged");
        EXPECT_EQ(last_call.arguments, (std::array<std::size_t, 5>{0, 0, 4, 5, 6}));
        last_call = {};
        AsnFreeArray(&array);
        EXPECT_EQ(last_call, slot_call{}) << "nothing to free";
    }
    std::uint8_t *octets   = nullptr;
    std::uint32_t capacity = 0;
    EXPECT_EQ(AsnGrowBytes(&octets, &capacity, 7), 0);
    EXPECT_EQ(capacity, 7u);
    EXPECT_EQ(last_call, (slot_call{"realloc", nullptr, {7, 0, 0, 0, 0}}));
    EXPECT_EQ(AsnGrowBytes(&octets, &capacity, 7), -1);
    AsnFreeArray(&octets);
}

TEST(AsnReport, GoesToTheSinkWithItsSeverity)
{
    const report_catcher catcher;
    AsnErrorPrint("one");
    AsnWarnPrint("two");
    AsnAssert(true);
    AsnAssert(false);
    report_out_of_bounds("Lte_UL_AM_RLCEnum");
    EXPECT_EQ(catcher.reports,
              (std::vector<report_catcher::report>{
                  {"one", 1},
                  {"two", 0},
                  {"Assertion failed !\n", 1},
                  {"\nThe data passed for packing Lte_UL_AM_RLCEnum does not lie within bounds\n\n", 1}}));
    EXPECT_EQ(catcher.exits, std::vector<int>{1});
}

int print_the_format(char *buffer, const char *format, ...)
{
    return static_cast<int>(std::strlen(std::strcpy(buffer, format)));
}

TEST(AsnReport, BuildsItsTextThroughTheSprintfSlotAndWithinItsBuffer)
{
    const report_catcher catcher;
    report_out_of_bounds(std::string(5000, 'x').c_str());
    ASSERT_EQ(catcher.reports.size(), 1u);
    EXPECT_EQ(catcher.reports[0].text.size(), 1023u);
    EXPECT_TRUE(catcher.reports[0].text.ends_with("xxx does not lie within bounds\n\n"));
    dll_info_version.sprintf = print_the_format;
    report_out_of_bounds("T");
    EXPECT_EQ(catcher.reports[1].text, "%s%s%s");
}

TEST(AsnReport, SinkIsReplacedAndHandedBack)
{
    static std::string    seen;
    const AsnErrorHandler mine    = [](const char *text, int) { seen += text; };
    const AsnErrorHandler initial = AsnSetErrorHandler(mine);
    EXPECT_NE(initial, nullptr);
    AsnErrorPrint("a %s b");
    EXPECT_EQ(AsnSetErrorHandler(nullptr), mine);
    testing::internal::CaptureStderr();
    AsnErrorPrint("error %d%% ");
    AsnWarnPrint("warning");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error %d%% warning");
    EXPECT_EQ(AsnSetErrorHandler(initial), initial) << "null brought the default back";
    EXPECT_EQ(seen, "a %s b");
}

TEST(AsnReportDeathTest, AssertionEndsTheProcess)
{
    EXPECT_EXIT(AsnAssert(false), testing::ExitedWithCode(1), "Assertion failed !");
}

} // namespace
