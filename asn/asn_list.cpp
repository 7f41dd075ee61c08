// Lists of allocated elements.
#include "asn_list.h"

#include <new>

#include "asn_block.h"
#include "asn_report.h"

namespace {

constexpr std::size_t node_class = tt_block_class(sizeof(AsnListNode));

// Node and element through the slots.  Null without memory, as far as the exit slot returns.
AsnListNode *new_node_by_slot(const AsnList *list, const asn_tag &tag)
{
    auto *const node = static_cast<AsnListNode *>(AsnMemAlloc(sizeof(AsnListNode), tag.flag, tag.file_code, tag.line));
    if (node)
        node->data = AsnMemAlloc(static_cast<std::size_t>(list->dataSize), tag.flag, tag.file_code, tag.line);
    return node;
}

// Node and element out of the thread's own lists; null when one of them has run out or the slots are a host's.
inline AsnListNode *take_node(const AsnList *list)
{
    tt_block_lists *const lists      = tt_blocks_here;
    const std::size_t     size_class = tt_block_class(static_cast<std::size_t>(list->dataSize));
    if (!asn_alloc_is_default() || !lists || size_class >= TT_BLOCK_CLASSES || !lists->free[node_class])
        return nullptr;
    tt_free_block *const node = lists->free[node_class];
    tt_free_block *const data = size_class == node_class ? node->next : lists->free[size_class];
    if (!data)
        return nullptr;
    lists->free[node_class] = node->next;
    lists->free[size_class] = data->next;
    tt_block_clear(data, size_class);
    return new (node) AsnListNode{data, nullptr, nullptr};
}

// A node outside of any list, with its element.
inline AsnListNode *new_node(const AsnList *list, const asn_tag &tag)
{
    AsnListNode *const node = take_node(list);
    return node ? node : new_node_by_slot(list, tag);
}

// Puts `node` between two neighbours, each of which may be the list's end.
AsnListNode *link_between(AsnList *list, AsnListNode *before, AsnListNode *node, AsnListNode *behind)
{
    if (!node)
        return nullptr;
    node->prev                            = before;
    node->next                            = behind;
    (before ? before->next : list->first) = node;
    (behind ? behind->prev : list->last)  = node;
    list->curr                            = node;
    ++list->count;
    return node;
}

__attribute__((noinline)) AsnListNode *append_by_slot(AsnList *list, std::uint8_t flag, std::uint16_t file_code,
                                                      std::uint32_t line)
{
    return link_between(list, list->last, new_node_by_slot(list, {flag, file_code, line}), nullptr);
}

// Takes `curr` out; answers its element.
void *take_out(AsnList *list, const asn_tag &tag)
{
    AsnListNode *const node = list->curr;
    if (!node)
        return nullptr;
    void *const data                              = node->data;
    (node->prev ? node->prev->next : list->first) = node->next;
    (node->next ? node->next->prev : list->last)  = node->prev;
    list->curr                                    = node->next;
    --list->count;
    asn_free(asn_free_is_default(), node, tag);
    return data;
}

// Releases elements and nodes from the front on, as long as they are those that the thread's own lists take, and
// answers the node that it stopped at; its elements are counted off `count`.  `one_class`: the elements' size class
// is that of the nodes.
template <bool one_class>
AsnListNode *free_to_own_lists(AsnListNode *node, std::size_t element_class, std::int32_t *count)
{
    tt_block_lists *const lists = tt_blocks_here;
    tt_free_block        *nodes = lists->free[node_class], *elements = lists->free[element_class];
    const std::uint32_t   room  = one_class                                                ? lists->room[node_class] / 2
                                  : lists->room[node_class] < lists->room[element_class] ? lists->room[node_class]
                                                                                         : lists->room[element_class];
    std::uint32_t left = room;
    while (node && left > 0 && tt_block_is(node, node_class) && node->data && tt_block_is(node->data, element_class)) {
        AsnListNode *const   next = node->next;
        tt_free_block *const data = new (node->data) tt_free_block{one_class ? nodes : elements};
        elements                  = data;
        nodes                     = new (node) tt_free_block{one_class ? data : nodes};
        node                      = next;
        --left;
    }
    lists->free[element_class] = elements;
    lists->free[node_class]    = nodes;
    lists->room[element_class] -= room - left;
    lists->room[node_class] -= room - left;
    *count -= static_cast<std::int32_t>(room - left);
    return node;
}

void *move_to(AsnList *list, AsnListNode *node)
{
    list->curr = node;
    return AsnListCurrData(list);
}

} // namespace

void AsnListInit(AsnList *list, std::int32_t data_size)
{
    *list = {nullptr, nullptr, nullptr, data_size, 0};
}

AsnList *AsnListNew(std::int32_t data_size, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    auto *const list = static_cast<AsnList *>(AsnMemAlloc(sizeof(AsnList), flag, file_code, line));
    if (list)
        AsnListInit(list, data_size);
    return list;
}

// All that the most frequent operation needs in place: it calls nothing as long as the thread has blocks.
AsnListNode *AsnListAppend(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnListNode *const node = take_node(list);
    if (!node)
        return append_by_slot(list, flag, file_code, line);
    AsnListNode *const last             = list->last;
    node->prev                          = last;
    (last ? last->next : list->first)   = node;
    list->last = list->curr             = node;
    ++list->count;
    return node;
}

AsnListNode *AsnListPrepend(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    return link_between(list, nullptr, new_node(list, {flag, file_code, line}), list->first);
}

AsnListNode *AsnListInsertAfter(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnListNode *const at = list->curr;
    return at ? link_between(list, at, new_node(list, {flag, file_code, line}), at->next) : nullptr;
}

AsnListNode *AsnListInsertBefore(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnListNode *const at = list->curr;
    return at ? link_between(list, at->prev, new_node(list, {flag, file_code, line}), at) : nullptr;
}

void AsnListRemove(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnMemFree(take_out(list, {flag, file_code, line}), flag, file_code, line);
}

void AsnListUnlink(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    take_out(list, {flag, file_code, line});
}

void AsnListConcat(AsnList *target, AsnList *source)
{
    if (!source->first)
        return;
    source->first->prev                                 = target->last;
    (target->last ? target->last->next : target->first) = source->first;
    target->last                                        = source->last;
    target->count += source->count;
    AsnListInit(source, source->dataSize);
}

void *AsnListFirst(AsnList *list)
{
    return move_to(list, list->first);
}

void *AsnListLast(AsnList *list)
{
    return move_to(list, list->last);
}

void *AsnListNext(AsnList *list)
{
    return move_to(list, list->curr ? list->curr->next : list->first);
}

void *AsnListPrev(AsnList *list)
{
    return move_to(list, list->curr ? list->curr->prev : list->last);
}

std::int32_t AsnListFind(const void *data, AsnList *list)
{
    std::int32_t index = 0;
    for (const AsnListNode *node = list->first; node && node->data; node = node->next, ++index)
        if (node->data == data)
            return index;
    return -1;
}

void AsnListFixLinks(AsnList *list)
{
    if (list->last)
        return;
    AsnListNode *before = nullptr;
    list->count         = 0;
    for (AsnListNode *node = list->first; node; before = node, node = node->next) {
        node->prev = before;
        ++list->count;
    }
    list->last = before;
}

void AsnListFreeElmts(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    const asn_tag tag        = {flag, file_code, line};
    const bool    is_default = asn_free_is_default();
    std::int32_t  count      = list->count;
    AsnListNode  *node       = list->first;
    const auto    size_class = tt_block_class(static_cast<std::size_t>(list->dataSize));
    if (is_default && tt_blocks_here && size_class < TT_BLOCK_CLASSES)
        node = size_class == node_class ? free_to_own_lists<true>(node, size_class, &count)
                                        : free_to_own_lists<false>(node, size_class, &count);
    for (; node; --count) {
        AsnListNode *const next = node->next;
        asn_free(is_default, node->data, tag);
        asn_free(is_default, node, tag);
        node = next;
        if (node)
            node->prev = nullptr;
    }
    *list = {nullptr, nullptr, nullptr, list->dataSize, count};
    AsnAssert(count == 0);
    list->count = 0;
}

void AsnListFree(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnListFreeElmts(list, flag, file_code, line);
    AsnMemFree(list, flag, file_code, line);
}
