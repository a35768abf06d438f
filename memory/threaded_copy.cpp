// A large copy in slices, each on a thread of its own.
//
// The slices are equal and rounded down, so that the last bytes of a copy in 16 slices belong to none and stay
// uncopied: callers count on a copy that ends where it always did.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <unistd.h>

#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/thread.h"

namespace kv::memory {
namespace {

/// Below this, starting a thread costs more than the copy.
constexpr std::uint64_t kThreadedFrom = 0x100000;
constexpr std::uint64_t kManySlicesFrom = 9'125'889;
constexpr std::uint32_t kManySlices = 16;
static_assert(kManySlices == std::size(kvOSCopyJob{}.slices));

constexpr int kTimeouts = 100;
constexpr std::uint32_t kTimeout_ms = 1000;
/// What a thread gets for ending after its last signal.
constexpr useconds_t kPauseAfterTheLast_us = 1000;

struct FreeBlock {
    void operator()(void* block) const { KVFree(block); }
};
using Job = std::unique_ptr<kvOSCopyJob, FreeBlock>;

struct Block {
    char* destination;
    const char* source;
    std::uint64_t bytes;
    std::uint64_t limit;
};

std::span<kvOSCopySlice> slicesOf(kvOSCopyJob& job) { return std::span(job.slices).first(job.dwCount); }

void pointAt(kvOSCopySlice& slice, const Block& block, std::uint64_t offset, std::uint64_t length) {
    const std::uint64_t room = block.limit > offset ? block.limit - offset : 0;
    slice.pDestination = block.destination + offset;
    slice.pSource = block.source + offset;
    slice.dwBytes = static_cast<std::uint32_t>(std::min(length, room));
}

/// All events, or, where memory ends, none.
bool makeEvents(kvOSCopyJob& job) {
    for (kvOSCopySlice& slice : slicesOf(job)) {
        slice.pEvent = kvOSCreateEvent(nullptr, 0, 0);
        if (slice.pEvent != nullptr) continue;
        for (const kvOSCopySlice& made : slicesOf(job)) kvOSCloseEvent(made.pEvent);
        return false;
    }
    return true;
}

/// The job with its events and without threads; null where it can't be made.
Job makeJob(const Block& block) {
    const std::uint32_t count = block.bytes < kManySlicesFrom ? 1 : kManySlices;
    const std::uint64_t length = block.bytes / count;
    if (length > std::numeric_limits<std::uint32_t>::max()) return nullptr;
    Job job(static_cast<kvOSCopyJob*>(KVAlloc(sizeof(kvOSCopyJob))));
    if (job == nullptr) return nullptr;
    ZeroMemoryFast(job.get(), sizeof *job);
    job->dwCount = count;
    for (std::uint32_t i = 0; i < count; ++i) pointAt(job->slices[i], block, i * length, length);
    return makeEvents(*job) ? std::move(job) : nullptr;
}

void startThreads(kvOSCopyJob& job) {
    for (kvOSCopySlice& slice : slicesOf(job)) {
        slice.pThread = kvOSCreateThread(nullptr, 0, _kvOSCopyThread, &slice);
    }
}

/// False when the waits were used up; what is left then stays as it is.
bool collectSlices(kvOSCopyJob& job) {
    int left = kTimeouts;
    for (kvOSCopySlice& slice : slicesOf(job)) {
        while (kvOSWaitForEvent(slice.pEvent, kTimeout_ms) != KVWAIT_SIGNALLED) {
            if (--left == 0) return false;
        }
        kvOSCloseEvent(slice.pEvent);
        kvOSCloseThread(slice.pThread);
    }
    return true;
}

/// Whether a thread that was not waited for to the end will still write into its slice.
bool isInUse(kvOSCopyJob& job) {
    return std::ranges::any_of(slicesOf(job), [](kvOSCopySlice& slice) {
        return slice.pThread != nullptr && std::atomic_ref(slice.fDone).load(std::memory_order_acquire) == 0;
    });
}

}  // namespace
}  // namespace kv::memory

namespace memory = kv::memory;

kvOSCopyJob* kvOSCopyMemoryThreaded(void* pDestination, const void* pSource, uint64_t qwBytes, uint64_t qwLimit,
                                    uint32_t fWait) {
    if (qwBytes < memory::kThreadedFrom) {
        kvOSCopyMemory(pDestination, pSource, qwBytes);
        return nullptr;
    }
    memory::Job job =
        memory::makeJob({static_cast<char*>(pDestination), static_cast<const char*>(pSource), qwBytes, qwLimit});
    if (job == nullptr) {
        kvOSCopyMemory(pDestination, pSource, std::min(qwBytes, qwLimit));
        return nullptr;
    }
    memory::startThreads(*job);
    if (fWait == 0) return job.release();
    kvOSCopyMemoryThreadedComplete(job.release());
    return nullptr;
}

uint32_t kvOSCopyMemoryThreadedComplete(kvOSCopyJob* pJob) {
    if (pJob == nullptr) return 1;
    if (memory::collectSlices(*pJob)) {
        usleep(memory::kPauseAfterTheLast_us);
    } else if (memory::isInUse(*pJob)) {
        return 1;
    }
    KVFree(pJob);
    return 1;
}

// Nothing in this frame owns anything, as the last call unwinds it.
void* _kvOSCopyThread(void* pSlice) {
    auto& slice = *static_cast<kvOSCopySlice*>(pSlice);
    kvOSEventRec* const event = slice.pEvent;
    kvOSCopyMemory(slice.pDestination, slice.pSource, slice.dwBytes);
    // From here on the slice may be gone.
    std::atomic_ref(slice.fDone).store(1, std::memory_order_release);
    kvOSSetEvent(event);
    kvOSExitThread(0);
}
