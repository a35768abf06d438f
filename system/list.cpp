// The list itself: making and closing it, its lock, looking at it, counting it.
//
// The clock is 32 bits of milliseconds and wraps after 49 days, so that spans are differences of 32 bits.
#include "system/list.h"

#include <atomic>
#include <cstdint>

#include "dlist.h"
#include "errlog.h"
#include "kvos/time.h"

namespace kv::system {
namespace {

/// A recount that holds the lock this long is reported, because every other thread waits for it.
constexpr std::uint32_t kSlowRecount_ms = 11;

/// The list of a node, if the node is on one that is open.
d_List* usableParentOf(d_ListNode* node) {
    if (node == nullptr) return nullptr;
    d_List* parent = parentOf(*node);
    return isUsable(parent) ? parent : nullptr;
}

}  // namespace
}  // namespace kv::system

namespace lists = kv::system;

uint32_t d_ListInit(d_List* pList) {
    if (pList == nullptr) return 0;
    kvOSInitializeCriticalSection(&pList->lock);
    pList->head = nullptr;
    pList->tail = nullptr;
    pList->count = 0;
    pList->stamp = kvOSGetMs();
    std::atomic_ref(pList->flags).store(D_LIST_INITIALISED, std::memory_order_release);
    return 1;
}

uint32_t d_ListClose(d_List* pList) {
    if (!lists::isUsable(pList)) return 0;
    std::atomic_ref(pList->flags).store(0, std::memory_order_release);
    kvOSDeleteCriticalSection(&pList->lock);
    pList->head = nullptr;
    pList->tail = nullptr;
    pList->count = 0;
    return 1;
}

uint32_t d_ListLock(d_List* pList) {
    if (!lists::isUsable(pList)) return 0;
    kvOSEnterCriticalSection(&pList->lock);
    // A lock that outlives its list, as that of gErrLogList, may be got when the list has ended; d_ListUnLock would
    // refuse to give it back.
    if (lists::isUsable(pList)) return 1;
    kvOSLeaveCriticalSection(&pList->lock);
    return 0;
}

uint32_t d_ListUnLock(d_List* pList) {
    if (!lists::isUsable(pList)) return 0;
    kvOSLeaveCriticalSection(&pList->lock);
    return 1;
}

uint32_t d_ListInitNode(d_ListNode* pNode) {
    if (pNode == nullptr) return 0;
    lists::setFree(*pNode);
    return 1;
}

d_ListNode* d_ListHead(d_List* pList) {
    if (!lists::isUsable(pList)) return nullptr;
    const CDAutoLock held(&pList->lock);
    return pList->head;
}

d_ListNode* d_ListTail(d_List* pList) {
    if (!lists::isUsable(pList)) return nullptr;
    const CDAutoLock held(&pList->lock);
    return pList->tail;
}

d_ListNode* d_ListNext(d_ListNode* pNode) {
    d_List* parent = lists::usableParentOf(pNode);
    if (parent == nullptr) return nullptr;
    const CDAutoLock held(&parent->lock);
    return pNode->next;
}

d_ListNode* d_ListPrev(d_ListNode* pNode) {
    d_List* parent = lists::usableParentOf(pNode);
    if (parent == nullptr) return nullptr;
    const CDAutoLock held(&parent->lock);
    return pNode->prev;
}

d_List* d_ListParent(d_ListNode* pNode) { return lists::usableParentOf(pNode); }

uint32_t d_ListCount(d_List* pList) {
    if (!lists::isUsable(pList)) return 0;
    const CDAutoLock held(&pList->lock);
    return pList->count;
}

uint32_t d_ListReCount(d_List* pList) {
    if (!lists::isUsable(pList)) return 0;
    std::uint32_t begin_ms = 0;
    std::uint32_t counted = 0;
    {
        const CDAutoLock held(&pList->lock);
        begin_ms = kvOSGetMs();
        pList->stamp = begin_ms;
        for (const d_ListNode* node = pList->head; node != nullptr; node = node->next) ++counted;
        pList->count = counted;
    }
    // Outside the lock: reporting lists a message, on a list that may be this very one.
    const std::uint32_t took_ms = kvOSGetMs() - begin_ms;
    if (took_ms >= lists::kSlowRecount_ms) ErrOut("d_ListReCount lock %d", static_cast<int>(took_ms));
    return counted;
}
