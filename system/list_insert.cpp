// Listing a node: first, last, before another, after another.
//
// A node that outlived its list's closing still names it, and passes for one of the list's own once that is made anew.
// As a neighbour it does no harm while the list is empty, because head and tail are looked at first; later its old
// links would be followed, so that the caller has to d_ListInitNode it.
#include "dlist.h"
#include "system/list.h"

namespace kv::system {
namespace {

/// Links a claimed node between two neighbours, null standing for the end on that side.
void link(d_List& list, d_ListNode* before, d_ListNode& node, d_ListNode* after) {
    node.prev = before;
    node.next = after;
    (before == nullptr ? list.head : before->next) = &node;
    (after == nullptr ? list.tail : after->prev) = &node;
    ++list.count;
}

/// Whether a node may be named as a neighbour: none at all, or one of this list.
bool isOfList(d_ListNode* neighbour, const d_List& list) {
    return neighbour == nullptr || parentOf(*neighbour) == &list;
}

}  // namespace
}  // namespace kv::system

namespace lists = kv::system;

uint32_t d_ListAddHead(d_List* pList, d_ListNode* pNode) {
    if (!lists::isUsable(pList) || pNode == nullptr) return 0;
    const CDAutoLock held(&pList->lock);
    if (!lists::claim(*pNode, *pList)) return 0;
    lists::link(*pList, nullptr, *pNode, pList->head);
    return 1;
}

uint32_t d_ListAddTail(d_List* pList, d_ListNode* pNode) {
    if (!lists::isUsable(pList) || pNode == nullptr) return 0;
    const CDAutoLock held(&pList->lock);
    if (!lists::claim(*pNode, *pList)) return 0;
    lists::link(*pList, pList->tail, *pNode, nullptr);
    return 1;
}

d_ListNode* d_ListInsertAt(d_List* pList, d_ListNode* pAt, d_ListNode* pNode) {
    if (!lists::isUsable(pList) || pNode == nullptr) return nullptr;
    const CDAutoLock held(&pList->lock);
    if (!lists::isOfList(pAt, *pList) || !lists::claim(*pNode, *pList)) return nullptr;
    if (pAt == nullptr) {
        lists::link(*pList, pList->tail, *pNode, nullptr);
    } else if (pAt == pList->head || pList->head == nullptr) {
        lists::link(*pList, nullptr, *pNode, pList->head);
    } else {
        lists::link(*pList, pAt->prev, *pNode, pAt);
    }
    return pNode;
}

d_ListNode* d_ListInsert(d_List* pList, d_ListNode* pAfter, d_ListNode* pNode) {
    if (!lists::isUsable(pList) || pNode == nullptr) return nullptr;
    const CDAutoLock held(&pList->lock);
    if (!lists::isOfList(pAfter, *pList) || !lists::claim(*pNode, *pList)) return nullptr;
    // Head and tail are the same in an empty list, too: there, last is first.
    if (pAfter == nullptr || pAfter == pList->tail || pList->head == pList->tail) {
        lists::link(*pList, pList->tail, *pNode, nullptr);
    } else {
        lists::link(*pList, pAfter, *pNode, pAfter->next);
    }
    return pNode;
}
