// SEQUENCE OF and SET OF in memory: a list linked both ways, inline in the record around it, with nodes and elements
// allocated one by one through the memory slots (asn_heap.h).
//
//     AsnList   first ──► node ◄──► node ◄──► node ◄── last          node: data ──► element of dataSize octets
//                                     ▲ curr
//
// `curr` is the list's one cursor: most operations move it, and so do the pack, print and free functions of the types.
// Two walks of one list must not overlap.  The trailing arguments are the allocation tag.
#pragma once

#include <cstdint>

#include "asn_values.h"

/// Empties the record without releasing anything.
void AsnListInit(AsnList *list, std::int32_t data_size);

/// A list of its own, to be released with AsnListFree.
AsnList *AsnListNew(std::int32_t data_size, std::uint8_t flag = 0, std::uint16_t file_code = 0,
                    std::uint32_t line = 0);

/* New elements
 *   answer   the node, whose `data` is a zeroed element; `curr` moves to it and `count` grows
 *   beside   of `curr`; without one nothing is made and the answer is null  */

AsnListNode *AsnListAppend(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
AsnListNode *AsnListPrepend(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
AsnListNode *AsnListInsertAfter(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0,
                                std::uint32_t line = 0);
AsnListNode *AsnListInsertBefore(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0,
                                 std::uint32_t line = 0);

/* Taking out
 *   curr     taken out; moves to the node behind it.  Without one nothing happens
 *   Unlink   releases the node alone: the element is its owner's  */

void AsnListRemove(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
void AsnListUnlink(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);

/// Moves all nodes of `source`, which is empty afterwards, to the end of `target`.
void AsnListConcat(AsnList *target, AsnList *source);

inline std::int32_t AsnListCount(const AsnList *list) { return list->count; }

/// The element at `curr`, or null.
inline void *AsnListCurrData(const AsnList *list) { return list->curr ? list->curr->data : nullptr; }

/* Walking
 *   answer   the element that `curr` has moved to, or null behind either end, where `curr` is null
 *   Next     starts from `first` where there is no `curr`; Prev from `last`  */

void *AsnListFirst(AsnList *list);
void *AsnListLast(AsnList *list);
void *AsnListNext(AsnList *list);
void *AsnListPrev(AsnList *list);

/// Index from 0 of the node that holds this very element, or -1.
std::int32_t AsnListFind(const void *data, AsnList *list);

/// Gives a list that was built by `first` and `next` alone, which is one without `last`, its other links and count.
void AsnListFixLinks(AsnList *list);

/// Releases all elements and nodes, but not what elements own.  An AsnAssert holds `count` against the nodes.
void AsnListFreeElmts(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);

/// The same, and the record that AsnListNew made.
void AsnListFree(AsnList *list, std::uint8_t flag = 0, std::uint16_t file_code = 0, std::uint32_t line = 0);
