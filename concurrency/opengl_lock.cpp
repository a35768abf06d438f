// The one lock around OpenGL work.
//
// The test for the first use is not guarded: two threads that both come first may each make the lock. The flag is
// stored last, with release, so that a thread that reads it set finds the finished section.
#include <atomic>
#include <cstdint>

#include "kvos/sync.h"

uint32_t fOpenGLCriticalSecontionInitialized = 0;

namespace {

kvOSCriticalSection openGLSection;

std::uint32_t made() { return std::atomic_ref(fOpenGLCriticalSecontionInitialized).load(std::memory_order_acquire); }

}  // namespace

int32_t kvOSLockOpenGL() {
    if (made() == 0) {
        kvOSInitializeCriticalSection(&openGLSection);
        std::atomic_ref(fOpenGLCriticalSecontionInitialized).store(1, std::memory_order_release);
    }
    return kvOSEnterCriticalSection(&openGLSection);
}

void kvOSUnlockOpenGL() {
    if (made() == 1) kvOSLeaveCriticalSection(&openGLSection);
}
