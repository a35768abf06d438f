// The list's beginning and end. What is put into it is in log_put.cpp, how it is read in log_forms.cpp.
#include "diag/log_list.h"

#include <atomic>
#include <cstdint>

#include "border/guard.h"
#include "border/relaxed.h"
#include "errlog.h"
#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/time.h"

d_List gErrLogList;
std::uint8_t gfErrLogListValid = 0;

namespace kv::diag {
namespace {

constinit LogState sLog{};

std::atomic_ref<std::uint32_t> flags() noexcept { return std::atomic_ref(gErrLogList.flags); }

/// The first list of the process comes with the lock, all later ones take it over.
void makeLock() noexcept { [[maybe_unused]] static const std::uint32_t made = d_ListInit(&gErrLogList); }

void beginList() noexcept {
    gErrLogList.head = nullptr;
    gErrLogList.tail = nullptr;
    gErrLogList.count = 0;
    gErrLogList.stamp = kvOSGetMs();
    flags().store(D_LIST_INITIALISED, std::memory_order_release);
}

/// The list's calls look at a node's parent without the lock.
void setParent(d_ListNode& node, d_List* parent) noexcept {
    std::atomic_ref(node.parent).store(parent, std::memory_order_release);
}

bool isInitialised() noexcept { return (flags().load(std::memory_order_acquire) & D_LIST_INITIALISED) != 0; }

}  // namespace

LockedLog::LockedLog(Missing missing) noexcept {
    // A lock that was never made is made together with a list. Where none is to be made, nobody put anything into it,
    // and it looks like one that was just begun.
    makeLock();
    kvOSEnterCriticalSection(&gErrLogList.lock);
    if (missing == Missing::make && !isInitialised()) beginList();
}

LockedLog::~LockedLog() { kvOSLeaveCriticalSection(&gErrLogList.lock); }

bool LockedLog::hasList() const noexcept { return isInitialised(); }

void LockedLog::endList() noexcept {
    flags().store(0, std::memory_order_release);
    gErrLogList.head = nullptr;
    gErrLogList.tail = nullptr;
    gErrLogList.count = 0;
}

LogState* LockedLog::operator->() const noexcept { return &sLog; }
LogState& LockedLog::operator*() const noexcept { return sLog; }

void makeList() noexcept {
    makeLock();
    if (!isInitialised()) const LockedLog made;
}

void linkTail(kvErrLogRecord& record) noexcept {
    d_ListNode& node = record.node;
    node.prev = gErrLogList.tail;
    node.next = nullptr;
    setParent(node, &gErrLogList);
    (node.prev == nullptr ? gErrLogList.head : node.prev->next) = &node;
    gErrLogList.tail = &node;
    ++gErrLogList.count;
}

void unlinkHead() noexcept {
    d_ListNode& node = *gErrLogList.head;
    gErrLogList.head = node.next;
    (node.next == nullptr ? gErrLogList.tail : node.next->prev) = nullptr;
    node.next = nullptr;
    setParent(node, nullptr);
    --gErrLogList.count;
}

void freeRecord(kvErrLogRecord* record) {
    if (record == nullptr) return;
    KVFree(record->pText);
    KVFree(record);
}

bool clearList() {
    if (border::relaxedLoad(gfEnableList) == 0) return true;
    return border::atBorder(false, [] {
        const LockedLog log(Missing::leave);
        if (!log.hasList()) return true;
        log->lastReturned = nullptr;
        while (gErrLogList.tail != nullptr) freeRecord(recordOf(d_ListRemoveTail(&gErrLogList)));
        return true;
    });
}

void reportBrokenClearing() { ErrFmtOut(0x80000000, nullptr, 0, "WARNING(gen): %s\n\r", "Exception: ErrLogClear()"); }

namespace {

/// False when the clearing of the list broke off.
bool closeLog() {
    LockedLog log(Missing::leave);
    log->lastReturned = nullptr;
    if (!log->file.isOpen()) return true;
    bool cleared = true;
    if (log.hasList()) {
        if (log->nextNumber != 0) {
            log->nextNumber = 0;
            cleared = clearList();
        }
        border::relaxedStore(gfErrLogListValid, std::uint8_t{0});
        log.endList();
    }
    log->file.close();
    return cleared;
}

}  // namespace
}  // namespace kv::diag

std::uint32_t ErrLogClose(void) {
    using namespace kv::diag;
    if (kv::border::relaxedLoad(gfEnableList) == 0) return 0;
    const kv::border::KeepErrno keep;
    if (!closeLog()) reportBrokenClearing();
    return 0;
}

std::uint32_t kvErrLog_IsOpen(void) {
    const kv::diag::LockedLog log(kv::diag::Missing::leave);
    return log->file.isOpen() ? 1 : 0;
}
