// The one lock around OpenGL work.
//
// The test for the first use is not guarded: two threads that both come first may each make the lock. The flag is
// stored last, with release, so that a thread that reads it set finds the finished section.
#include <atomic>
#include <cstdint>

#include "kvos/sync.h"

uint32_t fOpenGLCriticalSecontionInitialized = 0;

namespace kv::concurrency {
namespace {

kvOSCriticalSection openGLSection;

std::uint32_t made() { return std::atomic_ref(fOpenGLCriticalSecontionInitialized).load(std::memory_order_acquire); }

}  // namespace
}  // namespace kv::concurrency

namespace concurrency = kv::concurrency;

int32_t kvOSLockOpenGL() {
    if (concurrency::made() == 0) {
        kvOSInitializeCriticalSection(&concurrency::openGLSection);
        std::atomic_ref(fOpenGLCriticalSecontionInitialized).store(1, std::memory_order_release);
    }
    return kvOSEnterCriticalSection(&concurrency::openGLSection);
}

void kvOSUnlockOpenGL() {
    if (concurrency::made() == 1) kvOSLeaveCriticalSection(&concurrency::openGLSection);
}
