// Critical sections: a recursive mutex and a depth beside it.
//
// The depth is not protected by the mutex. It rises after the lock and falls after the unlock, so that two threads may
// change it at one moment: every change is an atomic addition, and none is lost.
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <pthread.h>

#include "kvos/sync.h"

namespace kv::concurrency {
namespace {

// Relaxed: the depth orders nothing, the mutex does.
void addToDepth(kvOSCriticalSection& section, std::uint64_t change) {
    std::atomic_ref(section.qwCount).fetch_add(change, std::memory_order_relaxed);
}

constexpr std::uint64_t kOneLess = ~std::uint64_t{0};

}  // namespace
}  // namespace kv::concurrency

int32_t kvOSInitializeCriticalSection(kvOSCriticalSection* pSection) {
    if (pSection == nullptr) return EINVAL;
    std::memset(pSection, 0, sizeof *pSection);
    pthread_mutexattr_init(&pSection->attributes);
    pthread_mutexattr_settype(&pSection->attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&pSection->mutex, &pSection->attributes);
    pSection->owner = pthread_self();
    return pthread_mutexattr_destroy(&pSection->attributes);
}

int32_t kvOSEnterCriticalSection(kvOSCriticalSection* pSection) {
    if (pSection == nullptr) return EINVAL;
    const int result = pthread_mutex_lock(&pSection->mutex);
    kv::concurrency::addToDepth(*pSection, 1);
    return result;
}

int32_t kvOSLeaveCriticalSection(kvOSCriticalSection* pSection) {
    if (pSection == nullptr) return EINVAL;
    const int result = pthread_mutex_unlock(&pSection->mutex);
    kv::concurrency::addToDepth(*pSection, kv::concurrency::kOneLess);
    return result;
}

uint32_t kvOSTryEnterCriticalSection(kvOSCriticalSection* pSection) {
    return pSection != nullptr && pthread_mutex_trylock(&pSection->mutex) == 0 ? 1 : 0;
}

int32_t kvOSDeleteCriticalSection(kvOSCriticalSection* pSection) {
    return pSection == nullptr ? EINVAL : pthread_mutex_destroy(&pSection->mutex);
}
