// Tracked allocation: every live block has a record in a list, so that what is still held at the end can be freed.
//
// csMem and csFixed are usable at any time, also before tracking begins and after it has ended: they are made when the
// library is loaded, and anew as soon as the end of tracking has destroyed them.
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "dlist.h"
#include "errlog.h"
#include "kvos/memory.h"
#include "kvos/sync.h"

// Lock order: 1. csMem, 2. the list's own lock.
kvOSCriticalSection csMem;
kvOSCriticalSection csFixed;
d_List dlMem;
d_List dlFixed;

namespace kv::memory {
namespace {

// Not at the first tracked call: that would wipe a lock which a host already holds.
[[gnu::constructor]] void makeLocks() {
    kvOSInitializeCriticalSection(&csMem);
    kvOSInitializeCriticalSection(&csFixed);
}

void renew(kvOSCriticalSection& section) {
    kvOSDeleteCriticalSection(&section);
    kvOSInitializeCriticalSection(&section);
}

/// Lists a block. Where no record can be had the block is still the caller's, only untracked.
void track(void* block, std::uint64_t size, const char* tag) {
    auto* record = static_cast<kvMemRecord*>(KVAlloc(sizeof(kvMemRecord)));
    if (record == nullptr) return;
    d_ListInitNode(&record->node);
    record->block = block;
    record->size = size;
    std::memset(record->tag, 0, sizeof record->tag);
    if (tag != nullptr) std::memcpy(record->tag, tag, strnlen(tag, sizeof record->tag));
    if (d_ListAddHead(&dlMem, &record->node) == 0) KVFree(record);
}

/// The record of a block; null for a block that is not tracked.
kvMemRecord* recordOf(const void* block) {
    if (d_ListLock(&dlMem) == 0) return nullptr;
    d_ListNode* node = dlMem.head;
    while (node != nullptr && reinterpret_cast<kvMemRecord*>(node)->block != block) node = node->next;
    d_ListUnLock(&dlMem);
    return reinterpret_cast<kvMemRecord*>(node);
}

}  // namespace
}  // namespace kv::memory

namespace memory = kv::memory;

void* _zmwAlloc(uint64_t qwSize, const char* pTag) {
    if (qwSize > std::numeric_limits<std::uint32_t>::max()) {
        errno = ENOMEM;  // _DbgOut keeps it
        _DbgOut("Error allocating %" PRIu64 " bytes %d 0x%08X", qwSize, ENOMEM, static_cast<unsigned>(ENOMEM));
        return nullptr;
    }
    const CDAutoLock held(&csMem);
    void* block = KVAlloc(static_cast<std::uint32_t>(qwSize));
    if (block != nullptr) memory::track(block, qwSize, pTag);
    return block;
}

int32_t _zmwFree(void** ppBlock) {
    kvOSEnterCriticalSection(&csMem);
    kvMemRecord* record = ppBlock == nullptr ? nullptr : memory::recordOf(*ppBlock);
    if (record != nullptr) {
        d_ListRemove(&dlMem, &record->node);
        std::free(record);
        std::free(*ppBlock);
        *ppBlock = nullptr;
    }
    return kvOSLeaveCriticalSection(&csMem);
}

void* _zmwFixedAlloc(uint64_t qwSize, const char* pTag) { return _zmwAlloc(qwSize, pTag); }

int32_t _zmwFixedFree(void** ppBlock) { return _zmwFree(ppBlock); }

uint32_t dbgzmMemInitTracking() {
    memory::renew(csMem);
    memory::renew(csFixed);
    const std::uint32_t result = d_ListInit(&dlMem);
    d_ListInit(&dlFixed);
    return result;
}

int32_t dbgzmMemQuitTracking() {
    while (d_ListNode* node = d_ListRemoveHead(&dlMem)) {
        auto* record = reinterpret_cast<kvMemRecord*>(node);
        std::free(record->block);
        std::free(record);
    }
    d_ListClose(&dlMem);
    d_ListClose(&dlFixed);
    kvOSDeleteCriticalSection(&csMem);
    const int32_t result = kvOSDeleteCriticalSection(&csFixed);
    // Tracked calls may still come, and must find locks that work.
    memory::makeLocks();
    return result;
}
