// Taking a node off: the first, the last, any one.
//
// A node that outlived its list's closing still names it, and passes for one of the list's own once that is made anew.
// It is then neither head nor tail, has old neighbours or none, and the header's count may already be 0: hence checks
// that a sound list would not need. They follow the old links; that those still lead to nodes is the caller's duty.
#include <cstdint>

#include "dlist.h"
#include "errlog.h"
#include "system/list.h"

namespace kv::system {
namespace {

void countOneLess(d_List& list) {
    if (list.count != 0) --list.count;
}

d_ListNode* takeHead(d_List& list) {
    d_ListNode* node = list.head;
    if (node == nullptr) return nullptr;
    list.head = node->next;
    if (list.head == nullptr) {
        list.tail = nullptr;
        list.count = 0;
    } else {
        list.head->prev = nullptr;
        countOneLess(list);
    }
    setFree(*node);
    return node;
}

d_ListNode* takeTail(d_List& list) {
    d_ListNode* node = list.tail;
    if (node == nullptr) return nullptr;
    list.tail = node->prev;
    if (list.tail == nullptr) {
        list.head = nullptr;
        list.count = 0;
    } else {
        list.tail->next = nullptr;
        countOneLess(list);
    }
    setFree(*node);
    return node;
}

d_ListNode* take(d_List& list, d_ListNode& node) {
    if (&node == list.head) return takeHead(list);
    if (&node == list.tail) return takeTail(list);
    if (node.prev != nullptr) node.prev->next = node.next;
    if (node.next != nullptr) node.next->prev = node.prev;
    countOneLess(list);
    setFree(node);
    return &node;
}

/// The low half of an address, as messages show it.
std::uint32_t shown(const void* address) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address));
}

}  // namespace
}  // namespace kv::system

namespace lists = kv::system;

d_ListNode* d_ListRemoveHead(d_List* pList) {
    if (!lists::isUsable(pList)) return nullptr;
    const CDAutoLock held(&pList->lock);
    return lists::takeHead(*pList);
}

d_ListNode* d_ListRemoveTail(d_List* pList) {
    if (!lists::isUsable(pList)) return nullptr;
    const CDAutoLock held(&pList->lock);
    return lists::takeTail(*pList);
}

d_ListNode* d_ListRemove(d_List* pList, d_ListNode* pNode) {
    if (!lists::isUsable(pList) || pNode == nullptr) return nullptr;
    const d_List* parent = nullptr;
    {
        const CDAutoLock held(&pList->lock);
        parent = lists::parentOf(*pNode);
        if (parent == pList) return lists::take(*pList, *pNode);
    }
    // Outside the lock: reporting lists a message, on a list that may be this very one.
    ErrOut("d_ListRemove, Node is not of this list %08X %08X", lists::shown(parent), lists::shown(pList));
    return nullptr;
}
