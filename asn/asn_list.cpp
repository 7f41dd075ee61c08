// Lists of allocated elements.
#include "asn_list.h"

#include "asn_block.h"
#include "asn_report.h"

namespace {

// A node outside of any list, with its element.  Null without memory, as far as the exit slot returns.
AsnListNode *new_node(const AsnList *list, const asn_tag &tag)
{
    const bool  is_default = asn_alloc_is_default();
    auto *const node       = static_cast<AsnListNode *>(asn_alloc(is_default, sizeof(AsnListNode), tag));
    if (node)
        node->data = asn_alloc(is_default, static_cast<std::size_t>(list->dataSize), tag);
    return node;
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

AsnListNode *AsnListAppend(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    return link_between(list, list->last, new_node(list, {flag, file_code, line}), nullptr);
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
    for (AsnListNode *node = list->first; node;) {
        AsnListNode *const next = node->next;
        asn_free(is_default, node->data, tag);
        asn_free(is_default, node, tag);
        --list->count;
        node = next;
        if (node)
            node->prev = nullptr;
    }
    AsnAssert(list->count == 0);
    AsnListInit(list, list->dataSize);
}

void AsnListFree(AsnList *list, std::uint8_t flag, std::uint16_t file_code, std::uint32_t line)
{
    AsnListFreeElmts(list, flag, file_code, line);
    AsnMemFree(list, flag, file_code, line);
}
