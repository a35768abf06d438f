// The depth of a critical section changes outside the lock: after the lock is taken, and after it was given back.
//
// pthread_mutex_lock and pthread_mutex_unlock are replaced in this program, and look at the depth on the way; the
// library finds these first, because the program comes before its libraries when names are bound.
#include <cstdint>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>
#include <pthread.h>

#include "kvos/sync.h"

namespace {

kvOSCriticalSection* watched = nullptr;
std::optional<std::uint64_t> depthWhenLocking;
std::optional<std::uint64_t> depthWhenUnlocking;

using MutexCall = int (*)(pthread_mutex_t*);

MutexCall systems(const char* name) { return reinterpret_cast<MutexCall>(dlsym(RTLD_NEXT, name)); }

void look(pthread_mutex_t* mutex, std::optional<std::uint64_t>& depth) {
    if (watched != nullptr && mutex == &watched->mutex) depth = watched->qwCount;
}

}  // namespace

// Looked up anew each time: a static of the function would be guarded by the very call that is replaced.
KVUTIL_API int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    const int result = systems("pthread_mutex_lock")(mutex);
    look(mutex, depthWhenLocking);
    return result;
}

KVUTIL_API int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    const int result = systems("pthread_mutex_unlock")(mutex);
    look(mutex, depthWhenUnlocking);
    return result;
}

namespace {

TEST(CriticalSection, DepthRisesAfterTheLockAndFallsAfterTheUnlock) {
    kvOSCriticalSection section;
    kvOSInitializeCriticalSection(&section);
    watched = &section;
    EXPECT_EQ(kvOSEnterCriticalSection(&section), 0);
    EXPECT_EQ(depthWhenLocking, 0u) << "already locked, not yet counted";
    EXPECT_EQ(section.qwCount, 1u);
    EXPECT_EQ(kvOSEnterCriticalSection(&section), 0);
    EXPECT_EQ(depthWhenLocking, 1u);
    EXPECT_EQ(kvOSLeaveCriticalSection(&section), 0);
    EXPECT_EQ(depthWhenUnlocking, 2u) << "already unlocked, still counted";
    EXPECT_EQ(kvOSLeaveCriticalSection(&section), 0);
    EXPECT_EQ(depthWhenUnlocking, 1u);
    EXPECT_EQ(section.qwCount, 0u);
    watched = nullptr;
    kvOSDeleteCriticalSection(&section);
}

}  // namespace
