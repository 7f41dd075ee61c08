// Lists: links both ways, cursor and count after each operation, the tag of each allocation, and what is released.
#include "asn_list.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <vector>

#include "asn_heap.h"
#include "report_catcher.h"

namespace {

int &number(void *data)
{
    return *static_cast<int *>(data);
}

// The elements, by both directions, whose links must agree.
std::vector<int> numbers_of(const AsnList &list)
{
    std::vector<int>   forward, backward;
    const AsnListNode *before = nullptr;
    for (const AsnListNode *node = list.first; node; before = node, node = node->next) {
        EXPECT_EQ(node->prev, before);
        forward.push_back(number(node->data));
    }
    EXPECT_EQ(list.last, before);
    EXPECT_EQ(AsnListCount(&list), static_cast<std::int32_t>(forward.size()));
    return forward;
}

int curr_of(const AsnList &list)
{
    return list.curr ? number(AsnListCurrData(&list)) : 0;
}

AsnList list_of(const std::vector<int> &numbers)
{
    AsnList list;
    AsnListInit(&list, sizeof(int));
    for (const int n : numbers)
        number(AsnListAppend(&list)->data) = n;
    return list;
}

// Puts `curr` on the element, or on none for 0.
void stand_on(AsnList &list, int n)
{
    list.curr = list.first;
    while (list.curr && number(list.curr->data) != n)
        list.curr = list.curr->next;
}

TEST(AsnList, OperationsLeaveLinksCountAndCursor)
{
    const auto fill = [](AsnListNode *node) {
        if (node)
            number(node->data) = 9;
    };
    const struct {
        const char                    *name;
        std::vector<int>               before;
        int                            curr;
        std::function<void(AsnList *)> operation;
        std::vector<int>               after;
        int                            curr_then;
    } rows[] = {
        {"append to none", {}, 0, [&](AsnList *l) { fill(AsnListAppend(l)); }, {9}, 9},
        {"append", {1, 2}, 1, [&](AsnList *l) { fill(AsnListAppend(l)); }, {1, 2, 9}, 9},
        {"prepend to none", {}, 0, [&](AsnList *l) { fill(AsnListPrepend(l)); }, {9}, 9},
        {"prepend", {1, 2}, 2, [&](AsnList *l) { fill(AsnListPrepend(l)); }, {9, 1, 2}, 9},
        {"insert after", {1, 2}, 1, [&](AsnList *l) { fill(AsnListInsertAfter(l)); }, {1, 9, 2}, 9},
        {"insert after the last", {1, 2}, 2, [&](AsnList *l) { fill(AsnListInsertAfter(l)); }, {1, 2, 9}, 9},
        {"insert after nothing", {1}, 0, [&](AsnList *l) { EXPECT_FALSE(AsnListInsertAfter(l)); }, {1}, 0},
        {"insert before", {1, 2}, 2, [&](AsnList *l) { fill(AsnListInsertBefore(l)); }, {1, 9, 2}, 9},
        {"insert before the first", {1, 2}, 1, [&](AsnList *l) { fill(AsnListInsertBefore(l)); }, {9, 1, 2}, 9},
        {"insert before nothing", {1}, 0, [&](AsnList *l) { EXPECT_FALSE(AsnListInsertBefore(l)); }, {1}, 0},
        {"remove the first", {1, 2, 3}, 1, [](AsnList *l) { AsnListRemove(l); }, {2, 3}, 2},
        {"remove", {1, 2, 3}, 2, [](AsnList *l) { AsnListRemove(l); }, {1, 3}, 3},
        {"remove the last", {1, 2, 3}, 3, [](AsnList *l) { AsnListRemove(l); }, {1, 2}, 0},
        {"remove the only one", {1}, 1, [](AsnList *l) { AsnListRemove(l); }, {}, 0},
        {"remove nothing", {1}, 0, [](AsnList *l) { AsnListRemove(l); }, {1}, 0},
        {"next from nowhere", {1, 2}, 0, [](AsnList *l) { EXPECT_EQ(number(AsnListNext(l)), 1); }, {1, 2}, 1},
        {"next", {1, 2}, 1, [](AsnList *l) { EXPECT_EQ(number(AsnListNext(l)), 2); }, {1, 2}, 2},
        {"next behind the end", {1, 2}, 2, [](AsnList *l) { EXPECT_EQ(AsnListNext(l), nullptr); }, {1, 2}, 0},
        {"previous from nowhere", {1, 2}, 0, [](AsnList *l) { EXPECT_EQ(number(AsnListPrev(l)), 2); }, {1, 2}, 2},
        {"previous", {1, 2}, 2, [](AsnList *l) { EXPECT_EQ(number(AsnListPrev(l)), 1); }, {1, 2}, 1},
        {"first", {1, 2}, 2, [](AsnList *l) { EXPECT_EQ(number(AsnListFirst(l)), 1); }, {1, 2}, 1},
        {"last", {1, 2}, 1, [](AsnList *l) { EXPECT_EQ(number(AsnListLast(l)), 2); }, {1, 2}, 2},
        {"first of none", {}, 0, [](AsnList *l) { EXPECT_EQ(AsnListFirst(l), nullptr); }, {}, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        AsnList list = list_of(row.before);
        stand_on(list, row.curr);
        row.operation(&list);
        EXPECT_EQ(numbers_of(list), row.after);
        EXPECT_EQ(curr_of(list), row.curr_then);
        AsnListFreeElmts(&list);
    }
}

TEST(AsnList, UnlinkLeavesTheElementToItsOwner)
{
    AsnList     list = list_of({1, 2});
    void *const data = AsnListFirst(&list);
    AsnListUnlink(&list);
    EXPECT_EQ(numbers_of(list), std::vector<int>{2});
    EXPECT_EQ(number(data), 1);
    AsnMemFree(data);
    AsnListFreeElmts(&list);
}

TEST(AsnList, FindsAnElementByItsAddressUpToANodeWithoutOne)
{
    AsnList list = list_of({1, 2, 3});
    stand_on(list, 2);
    EXPECT_EQ(AsnListFind(list.first->data, &list), 0);
    EXPECT_EQ(AsnListFind(list.last->data, &list), 2);
    int elsewhere = 1;
    EXPECT_EQ(AsnListFind(&elsewhere, &list), -1);
    EXPECT_EQ(curr_of(list), 2);
    AsnMemFree(list.curr->data);
    list.curr->data = nullptr;
    EXPECT_EQ(AsnListFind(list.last->data, &list), -1);
    AsnListFreeElmts(&list);
}

TEST(AsnList, ConcatenatesEmptyAndFilledLists)
{
    for (const auto &[target, source, both] : std::vector<std::array<std::vector<int>, 3>>{
             {{{}, {}, {}}}, {{{1}, {}, {1}}}, {{{}, {2}, {2}}}, {{{1, 2}, {3, 4}, {1, 2, 3, 4}}}}) {
        AsnList to = list_of(target), from = list_of(source);
        AsnListConcat(&to, &from);
        EXPECT_EQ(numbers_of(to), both);
        EXPECT_EQ(numbers_of(from), std::vector<int>{});
        EXPECT_EQ(from.dataSize, 4);
        AsnListFreeElmts(&to);
    }
}

TEST(AsnList, FixesTheLinksOfAForwardList)
{
    AsnList list = list_of({1, 2, 3});
    for (AsnListNode *node = list.first; node; node = node->next)
        node->prev = nullptr;
    AsnList forward = {list.first, nullptr, nullptr, 4, 77};
    AsnListFixLinks(&forward);
    EXPECT_EQ(numbers_of(forward), (std::vector<int>{1, 2, 3}));
    forward.count = 77;
    AsnListFixLinks(&forward);
    EXPECT_EQ(forward.count, 77) << "a list with a last node stays as it is";
    AsnListFreeElmts(&list);
}

// ----------------------------------------------------------------------------------------------- through the slots

std::vector<std::vector<std::uint32_t>> calls; // size or 0 for a release, then the tag
std::set<void *>                        live;

struct watched_slots : report_catcher {
    watched_slots()
    {
        calls.clear();
        dll_info_version.alloc_clear = [](std::size_t size, std::uint8_t flag, std::uint16_t file, std::uint32_t line) {
            calls.push_back({static_cast<std::uint32_t>(size), flag, file, line});
            return static_cast<void *>(*live.insert(std::memset(std::malloc(size), 0xEE, size)).first);
        };
        dll_info_version.free_tagged = [](void *block, std::uint8_t flag, std::uint16_t file, std::uint32_t line) {
            calls.push_back({0, flag, file, line});
            EXPECT_EQ(live.erase(block), 1u);
            std::free(block);
        };
    }
};

TEST(AsnList, AllocatesNodeAndZeroedElementWithTheTagAndReleasesBoth)
{
    constexpr auto node_size = static_cast<std::uint32_t>(sizeof(AsnListNode));
    constexpr auto list_size = static_cast<std::uint32_t>(sizeof(AsnList));
    const watched_slots slots;
    AsnList *const      list = AsnListNew(100, 1, 4590, 7);
    AsnListAppend(list, 1, 4590, 8);
    const auto *const octets = static_cast<const std::uint8_t *>(AsnListAppend(list, 1, 4590, 9)->data);
    EXPECT_EQ(std::vector<std::uint8_t>(octets, octets + 100), std::vector<std::uint8_t>(100, 0));
    AsnListFree(list, 1, 4587, 10);
    const std::vector<std::uint32_t> released = {0, 1, 4587, 10};
    EXPECT_EQ(calls, (std::vector<std::vector<std::uint32_t>>{{list_size, 1, 4590, 7},
                                                              {node_size, 1, 4590, 8},
                                                              {100, 1, 4590, 8},
                                                              {node_size, 1, 4590, 9},
                                                              {100, 1, 4590, 9},
                                                              released,
                                                              released,
                                                              released,
                                                              released,
                                                              released}));
    EXPECT_EQ(live.size(), 0u);
    EXPECT_EQ(report_catcher::exits.size(), 0u);
}

// Elements of every size class, the nodes' own among them, and blocks that are no longer of the list's size.
TEST(AsnList, ReleasesElementsOfAllSizesToTheHeap)
{
    for (const std::int32_t size : {0, 4, 8, 9, 24, 25, 400, 504, 1016, 1017, 3000}) {
        SCOPED_TRACE(size);
        for (int round = 0; round < 3; ++round) {
            AsnList list;
            AsnListInit(&list, size);
            for (int n = 0; n < 300; ++n)
                std::memset(AsnListAppend(&list)->data, n, static_cast<std::size_t>(size));
            std::int32_t n = 0;
            for (const AsnListNode *node = list.first; node; node = node->next, ++n) {
                const auto *const octets = static_cast<const std::uint8_t *>(node->data);
                EXPECT_EQ(std::count(octets, octets + size, static_cast<std::uint8_t>(n)), size);
            }
            EXPECT_EQ(n, 300);
            AsnListFirst(&list);
            list.curr->data = AsnMemRealloc(list.curr->data, 5000, static_cast<std::size_t>(size));
            AsnListNext(&list);
            AsnMemFree(list.curr->data);
            list.curr->data = nullptr;
            AsnListFreeElmts(&list);
            EXPECT_EQ(list.first, nullptr);
            EXPECT_EQ(list.count, 0);
        }
    }
}

TEST(AsnList, ACountThatIsNotThatOfTheNodesIsFoundAtTheRelease)
{
    const report_catcher catcher;
    AsnList              list = list_of({1, 2});
    list.count                = 1;
    AsnListFreeElmts(&list);
    EXPECT_EQ(report_catcher::take_text(), "Assertion failed !\n");
    EXPECT_EQ(report_catcher::exits, std::vector<int>{1});
}

} // namespace
