// Semaphores: a count that is raised under a lock and taken from without one.
//
// Each change of the count is one atomic step, so that none is lost where a wait meets a release. The lock keeps
// releases apart and orders nothing else; a wait never takes it.
#include <atomic>
#include <cstdint>
#include <pthread.h>

#include "concurrency/record.h"
#include "kvos/sync.h"

namespace kv::concurrency {
namespace {

/// `count` and `more`, at least 1, but at most `maximum`, which is above `count`.
std::int64_t raised(std::int64_t count, std::int64_t more, std::int64_t maximum) {
    std::int64_t sum = 0;
    return __builtin_add_overflow(count, more, &sum) || sum > maximum ? maximum : sum;
}

bool release(kvOSSemaphoreRec& semaphore, std::int64_t more) {
    const Hold hold(semaphore.mutex);
    const std::atomic_ref count(semaphore.nCount);
    // Acquire and release: what a thread did before its release is seen by the thread whose wait took from it.
    std::int64_t seen = count.load(std::memory_order_relaxed);
    do {
        if (seen >= semaphore.nMaximum) return false;
    } while (!count.compare_exchange_weak(seen, raised(seen, more, semaphore.nMaximum), std::memory_order_release,
                                          std::memory_order_relaxed));
    if (more == 1) {
        pthread_cond_signal(&semaphore.condition);
    } else {
        pthread_cond_broadcast(&semaphore.condition);
    }
    return true;
}

bool take(kvOSSemaphoreRec& semaphore) {
    const std::atomic_ref count(semaphore.nCount);
    std::int64_t seen = count.load(std::memory_order_relaxed);
    do {
        if (seen == 0) return false;
    } while (!count.compare_exchange_weak(seen, seen - 1, std::memory_order_acquire, std::memory_order_relaxed));
    return true;
}

}  // namespace
}  // namespace kv::concurrency

namespace concurrency = kv::concurrency;

kvOSSemaphoreRec* kvOSCreateSemaphore(void* /*pSecurity*/, int64_t nInitial, int64_t nMaximum) {
    auto* const semaphore = concurrency::makeRecord<kvOSSemaphoreRec>();
    if (semaphore == nullptr) return nullptr;
    semaphore->nMaximum = nMaximum;
    semaphore->nCount = nInitial;
    return semaphore;
}

kvOSSemaphoreRec* kvOSOpenSemaphore(uint32_t /*dwAccess*/, uint32_t /*fInherit*/, const char* /*pName*/) {
    return nullptr;
}

uint32_t kvOSCloseSemaphore(kvOSSemaphoreRec* pSemaphore) {
    if (!concurrency::isReal(pSemaphore)) return 0;
    pthread_mutex_destroy(&pSemaphore->mutex);
    pthread_cond_destroy(&pSemaphore->condition);
    return 0;
}

uint32_t kvOSWaitForSingleSemaphore(kvOSSemaphoreRec* pSemaphore) {
    return concurrency::isReal(pSemaphore) && concurrency::take(*pSemaphore) ? KVWAIT_SIGNALLED : KVWAIT_TIMEOUT;
}

uint32_t kvOSReleaseSemaphore(kvOSSemaphoreRec* pSemaphore, int64_t nCount) {
    if (!concurrency::isReal(pSemaphore) || nCount < 1) return 0;
    return concurrency::release(*pSemaphore, nCount) ? 1 : 0;
}
