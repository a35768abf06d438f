// What the files of the list share: the checks ahead of every call, and who a node belongs to.
//
// The flags of a list and the parent of a node are read before any lock is taken, and are therefore atomic everywhere.
// All other fields change under the lock of the list alone.
#pragma once

#include <atomic>
#include <cstdint>

#include "dlist.h"

namespace kv::system {

/// Whether calls on the list are taken. Acquire pairs with the release in d_ListInit: who sees the flag sees the lock.
inline bool isUsable(d_List* list) {
    if (list == nullptr) return false;
    return (std::atomic_ref(list->flags).load(std::memory_order_acquire) & D_LIST_INITIALISED) != 0;
}

// Relaxed: what a node links to is read under the lock of the list found here, never on the strength of this word.
inline d_List* parentOf(d_ListNode& node) { return std::atomic_ref(node.parent).load(std::memory_order_relaxed); }

/// Makes a free node one of this list; false if it is on any. Of several threads that try at once, even for different
/// lists, one succeeds. Acquire pairs with the release in `setFree`.
inline bool claim(d_ListNode& node, d_List& list) {
    d_List* none = nullptr;
    return std::atomic_ref(node.parent).compare_exchange_strong(none, &list, std::memory_order_acquire);
}

/// Clears the three fields, the parent last: from then on another list may claim the node.
inline void setFree(d_ListNode& node) {
    node.prev = nullptr;
    node.next = nullptr;
    std::atomic_ref(node.parent).store(nullptr, std::memory_order_release);
}

}  // namespace kv::system
