// The life of threads: start, end, and what can be asked in between.
//
// Ending a thread unwinds it like an exception, so that the calls which do that stand outside the guard, and none of
// their frames owns anything. A thread's id is not used after the thread was joined or detached here: the system may
// have given its memory to another.
#include "kvos/thread.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "concurrency/record.h"

namespace kv::concurrency {
namespace {

/// An error number; 0 for success, with the id stored.
int start(pthread_t& thread, std::uint64_t stackSize, kvOSThreadStart body, void* argument) {
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes); error != 0) return error;
    // Refused only as too small, and then the default is more than was asked for.
    if (stackSize != 0) pthread_attr_setstacksize(&attributes, stackSize);
    const int error = pthread_create(&thread, &attributes, body, argument);
    pthread_attr_destroy(&attributes);
    return error;
}

/// Whether this call detached it. The id is not used again, nor the record by a thread that detaches itself: from the
/// exchange on it may be closed by another.
bool detach(kvOSThreadRec& thread) {
    const pthread_t id = thread.thread;
    border::relaxedStore<std::uint8_t>(thread.fAlive, 0);
    if (std::atomic_ref(thread.fReleased).exchange(1, std::memory_order_acq_rel) != 0) return false;
    return pthread_detach(id) == 0;
}

/// 1 for a thread that runs, else 0. One that has ended is joined at the first question.
std::uint32_t stateOf(kvOSThreadRec& thread) {
    if (border::relaxedLoad(thread.fReleased) != 0) return 0;
    if (pthread_kill(thread.thread, 0) != 0) return 0;
    int policy = 0;
    sched_param parameters{};
    if (pthread_getschedparam(thread.thread, &policy, &parameters) != ESRCH) return 1;
    pthread_join(thread.thread, nullptr);
    border::relaxedStore<std::uint8_t>(thread.fReleased, 1);
    return 0;
}

}  // namespace
}  // namespace kv::concurrency

namespace concurrency = kv::concurrency;
using kv::border::atBorder;

kvOSThreadRec* kvOSCreateThread(void* /*pSecurity*/, uint64_t qwStackSize, kvOSThreadStart pStart, void* pArgument) {
    if (pStart == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    auto* const thread = static_cast<kvOSThreadRec*>(KVAlloc(sizeof(kvOSThreadRec)));
    if (thread == nullptr) return nullptr;
    thread->fAlive = 1;
    thread->fReleased = 0;
    const int error = concurrency::start(thread->thread, qwStackSize, pStart, pArgument);
    if (error == 0) return thread;
    KVFree(thread);
    errno = error;
    return nullptr;
}

uint32_t kvOSCloseThread(kvOSThreadRec* pThread) {
    if (!concurrency::isReal(pThread)) return 0;
    const bool detached = concurrency::detach(*pThread);
    KVFree(pThread);
    return detached ? 1 : 0;
}

uint32_t kvOSGetExitCodeThread(kvOSThreadRec* pThread, uint32_t* pdwCode) {
    const bool alive = concurrency::isReal(pThread) && kv::border::relaxedLoad(pThread->fAlive) != 0;
    const uint32_t code = alive ? atBorder<uint32_t>(0, [&] { return concurrency::stateOf(*pThread); }) : 0;
    if (pdwCode != nullptr) *pdwCode = code;
    return alive ? 1 : 0;
}

uint32_t kvOSGetExitCodeThread(unsigned long hThread, uint32_t* pdwCode) {
    return kvOSGetExitCodeThread(reinterpret_cast<kvOSThreadRec*>(hThread), pdwCode);
}

uint32_t kvOSTerminateThread(kvOSThreadRec* /*pThread*/, uint32_t /*dwCode*/) { return 0; }

uint32_t kvOSSuspendThread() {
    sched_yield();
    return 0;
}

uint32_t kvOSResumeThread(kvOSThreadRec* /*pThread*/) { return 0; }

void kvOSExitThread(uint32_t dwCode) { pthread_exit(reinterpret_cast<void*>(std::uintptr_t{dwCode})); }

uint32_t kvOSExitSpecificThread(kvOSThreadRec* pThread, uint32_t dwCode) {
    if (!concurrency::isReal(pThread)) return pThread == nullptr ? 1 : 0;
    concurrency::detach(*pThread);
    pthread_exit(reinterpret_cast<void*>(std::uintptr_t{dwCode}));
}

kvOSThreadRec* kvOSGetCurrentThread() { return reinterpret_cast<kvOSThreadRec*>(~std::uintptr_t{0}); }

int32_t kvOSGetCurrentProcess() { return getpid(); }

int32_t kvOSGetCurrentProcessId() { return getpid(); }
