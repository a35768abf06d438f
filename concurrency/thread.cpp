// The life of threads: start, end, and what can be asked in between.
//
// Ending a thread unwinds it like an exception, so that the calls which do that stand outside the guard, and none of
// their frames owns anything. A thread's id is used only as concurrency/thread_id.h allows.
#include "kvos/thread.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "concurrency/record.h"
#include "concurrency/thread_id.h"

namespace kv::concurrency {
namespace {

class Attributes {
public:
    Attributes() : error_(pthread_attr_init(&attributes_)) {}
    ~Attributes() {
        if (error_ == 0) pthread_attr_destroy(&attributes_);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    int error() const { return error_; }
    const pthread_attr_t* get() const { return &attributes_; }

    std::size_t stackSize() const {
        std::size_t size = 0;
        pthread_attr_getstacksize(&attributes_, &size);
        return size;
    }
    /// A size that the system refuses as too small leaves the default.
    void setStackSize(std::uint64_t size) { pthread_attr_setstacksize(&attributes_, wholePages(size)); }

private:
    /// Some systems take no others.
    static std::size_t wholePages(std::uint64_t size) {
        const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
        return size > UINT64_MAX - page ? size / page * page : (size + page - 1) / page * page;
    }

    pthread_attr_t attributes_;
    int error_;
};

/// An error number; 0 for success, with the id stored.
int start(pthread_t& thread, std::uint64_t stackSize, kvOSThreadStart body, void* argument) {
    const Attributes usual;
    if (stackSize == 0)
        return usual.error() != 0 ? usual.error() : pthread_create(&thread, usual.get(), body, argument);
    Attributes asked;
    if (usual.error() != 0 || asked.error() != 0) return ENOMEM;
    asked.setStackSize(stackSize);
    const int error = pthread_create(&thread, asked.get(), body, argument);
    // Large enough for the system, and too small for what the process wants to have in every thread's stack.
    const bool isTooSmall = error == EINVAL && asked.stackSize() < usual.stackSize();
    return isTooSmall ? pthread_create(&thread, usual.get(), body, argument) : error;
}

/// Whether this call detached it. A thread may do that to itself: it does not touch the record afterwards, which
/// another may close from then on.
bool detach(kvOSThreadRec& thread) {
    IdUse id(thread);
    border::relaxedStore<std::uint8_t>(thread.fAlive, 0);
    if (!id.isGood()) return false;
    id.release();
    return pthread_detach(thread.thread) == 0;
}

/// 1 for a thread that runs, else 0. One that has ended is joined at the first question.
std::uint32_t stateOf(pthread_t thread, IdUse& id) {
    if (pthread_kill(thread, 0) != 0) return 0;
    int policy = 0;
    sched_param parameters{};
    if (pthread_getschedparam(thread, &policy, &parameters) != ESRCH) return 1;
    pthread_join(thread, nullptr);
    id.release();
    return 0;
}

struct ExitCode {
    std::uint32_t code;
    std::uint32_t result;
};

ExitCode exitCodeOf(kvOSThreadRec* thread) {
    if (!isReal(thread)) return {0, 0};
    IdUse id(*thread);
    if (border::relaxedLoad(thread->fAlive) == 0) return {0, 0};
    if (!id.isGood()) return {0, 1};
    return {stateOf(thread->thread, id), 1};
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
    thread->bIdState = concurrency::kIdFree;
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
    const auto exit = atBorder(concurrency::ExitCode{0, 1}, [&] { return concurrency::exitCodeOf(pThread); });
    if (pdwCode != nullptr) *pdwCode = exit.code;
    return exit.result;
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
