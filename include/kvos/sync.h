// Locks between threads: critical sections, interlocked operations, and the one lock around OpenGL work.
//
// Every call here may be made from any thread and sends no message. Results named "as pthread_..." are error numbers,
// 0 for success; the last error is not touched.
#ifndef KVOS_SYNC_H
#define KVOS_SYNC_H

#include <pthread.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
#include <cstddef>

extern "C" {
#endif

/** A recursive lock in memory of the caller's. It must stay in place, and outlive the last leave's return. */
typedef struct kvOSCriticalSection {
    pthread_mutex_t mutex;          /* recursive */
    pthread_mutexattr_t attributes; /* used while the section is initialised, destroyed after */
    uint64_t qwCount;               /* lock depth; read it atomically while other threads use the section */
    pthread_t owner;                /* the thread that initialised it; meant: never updated later */
} kvOSCriticalSection;

/**
 * Makes a critical section: the record is zeroed, the mutex made recursive, the depth 0, the owner the calling thread.
 *
 * @param pSection  memory for the record, whatever it holds; a section that a thread holds must not be passed.
 * @return as pthread_mutexattr_destroy, so 0 on every system known; EINVAL for null. Meant: it says nothing about the
 *         mutex itself.
 */
KVUTIL_API int32_t kvOSInitializeCriticalSection(kvOSCriticalSection *pSection);

/**
 * Waits until the section is free or the caller's own, takes it, then adds 1 to its depth. A thread may enter a
 * section that it already holds, and leaves it as often as it entered.
 *
 * @param pSection  an initialised section; not checked but for null.
 * @return as pthread_mutex_lock; EINVAL for null. Meant: the depth is raised whatever the result.
 */
KVUTIL_API int32_t kvOSEnterCriticalSection(kvOSCriticalSection *pSection);

/**
 * Gives the section back, then takes 1 from its depth.
 *
 * Meant: the depth falls after the unlock, outside the lock, and whatever the result. A thread that enters at that
 * moment may read one more than its own depth, and the section must not be freed before this call returns.
 *
 * @param pSection  a section that the calling thread holds; not checked but for null.
 * @return as pthread_mutex_unlock; EINVAL for null.
 */
KVUTIL_API int32_t kvOSLeaveCriticalSection(kvOSCriticalSection *pSection);

/**
 * Takes the section if that needs no waiting, which includes the thread that already holds it.
 *
 * Meant: the depth stays as it is, so that the leave which follows makes it one lower than the true depth, wrapping
 * below 0.
 *
 * @return 1 when taken, 0 when not and for null.
 */
KVUTIL_API uint32_t kvOSTryEnterCriticalSection(kvOSCriticalSection *pSection);

/**
 * Ends a section that nobody holds. Only the mutex is destroyed; depth and owner stay readable.
 *
 * @return as pthread_mutex_destroy; EINVAL for null.
 */
KVUTIL_API int32_t kvOSDeleteCriticalSection(kvOSCriticalSection *pSection);

/*
 * Interlocked operations: sequentially consistent, wrapping on overflow. The address is not null and aligned to its
 * type: the caller's duty, not checked.
 */

/** Adds 1. Returns the new value. */
KVUTIL_API int32_t kvOSInterlockedIncrement(volatile int32_t *pnValue);

/** Subtracts 1. Returns the new value. */
KVUTIL_API int32_t kvOSInterlockedDecrement(volatile int32_t *pnValue);

/** Stores nNew. Returns the old value. */
KVUTIL_API int32_t kvOSInterlockedExchange(volatile int32_t *pnValue, int32_t nNew);

/** Stores pNew. Returns the old pointer. */
KVUTIL_API void *kvOSInterlockedExchangePointer(void *volatile *ppValue, void *pNew);

/** Stores nNew if the old value equals nComparand. Returns the old value either way. */
KVUTIL_API int32_t kvOSInterlockedCompareExchange(volatile int32_t *pnValue, int32_t nNew, int32_t nComparand);

/** Stores pNew if the old pointer equals pComparand. Returns the old pointer either way. */
KVUTIL_API void *kvOSInterlockedCompareExchangePointer(void *volatile *ppValue, void *pNew, void *pComparand);

/** 1 once the lock around OpenGL work has been made; the spelling is meant. For reading only. */
extern KVUTIL_API uint32_t fOpenGLCriticalSecontionInitialized;

/**
 * Takes the one process-wide lock that serialises OpenGL work, and makes it at the first call. It is recursive.
 *
 * Threads: any, after the first call has returned. Meant: the first-use test is not itself guarded, so a host takes
 * the lock once before it starts the threads that share it.
 *
 * @return as pthread_mutex_lock.
 */
KVUTIL_API int32_t kvOSLockOpenGL(void);

/** Gives the OpenGL lock back. Does nothing as long as the lock was never made. */
KVUTIL_API void kvOSUnlockOpenGL(void);

#ifdef __cplusplus
}

static_assert(offsetof(kvOSCriticalSection, mutex) == 0 &&
                  offsetof(kvOSCriticalSection, attributes) == sizeof(pthread_mutex_t) &&
                  offsetof(kvOSCriticalSection, qwCount) % 8 == 0 &&
                  offsetof(kvOSCriticalSection, owner) == offsetof(kvOSCriticalSection, qwCount) + 8,
              "the fields of a critical section follow each other in the stated order");

/** Holds a critical section for a scope. */
class CDAutoLock {
public:
    /** Enters the section; a section that cannot be entered is not left at the end either. */
    explicit CDAutoLock(kvOSCriticalSection *pSection)
        : pSection_(pSection), fHeld_(kvOSEnterCriticalSection(pSection) == 0) {}

    ~CDAutoLock() {
        if (fHeld_) {
            fHeld_ = false;
            kvOSLeaveCriticalSection(pSection_);
        }
        pSection_ = nullptr;
    }

    CDAutoLock(const CDAutoLock &) = delete;
    CDAutoLock &operator=(const CDAutoLock &) = delete;

private:
    kvOSCriticalSection *pSection_;
    bool fHeld_;
};
#endif

#endif
