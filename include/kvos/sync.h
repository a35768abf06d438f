// Between threads: critical sections, interlocked operations, the one lock around OpenGL work, events and semaphores.
//
// Every call here may be made from any thread. The calls that create an event or a semaphore send the messages of
// KVAlloc when memory runs out; no other call sends any. Results named "as pthread_..." are error numbers, 0 for
// success; the last error is not touched unless a call says so.
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

/* ---- Events ---- */

/* What a wait returns. */
#define KVWAIT_SIGNALLED 0u
#define KVWAIT_TIMEOUT 258u

/* A timeout that never comes, the same as -1. */
#define KVWAIT_FOREVER 0xFFFFFFFFu

/** An event. Belongs to the library; a host may look at the fields while no other thread uses the event. */
typedef struct kvOSEventRec {
    pthread_mutex_t mutex;    /* guards all that follows; not recursive */
    pthread_cond_t condition; /* on the wall clock */
    uint64_t qwManual;        /* not 0: stays signalled until it is reset; 0: one wait takes the signal away */
    uint64_t qwSignalled;     /* not 0: set */
    uint64_t qwPulses;   /* how often it was pulsed; a thread in a wait knows by it which pulses it was there for */
    uint64_t qwWaiting;  /* threads in a wait */
    uint64_t qwPulsed;   /* those of them that were there at the last pulse */
    uint64_t qwReleases; /* of an auto-reset event: how many of qwPulsed may still leave by a pulse */
} kvOSEventRec;

/**
 * Makes an event.
 *
 * @param pSecurity  not looked at. Meant: an event has no name.
 * @param fManual    not 0: a manual event, which stays signalled until kvOSResetEvent and releases all who wait; 0: an
 *                   auto-reset one, from which each wait that succeeds takes the signal away.
 * @param fInitial   not 0: signalled from the beginning.
 * @return the event, the caller's until kvOSCloseEvent; null without memory, last error ENOMEM.
 */
KVUTIL_API kvOSEventRec *kvOSCreateEvent(void *pSecurity, uint32_t fManual, uint32_t fInitial);

/**
 * Makes a fresh event, as kvOSCreateEvent(0, dwAccess, fInherit). Meant: it opens nothing, so that no event is ever
 * shared by it; what would be the access tells whether it is manual, and what would be the inheritance whether it is
 * signalled.
 */
KVUTIL_API kvOSEventRec *kvOSOpenEvent(uint32_t dwAccess, uint32_t fInherit);

/** Signals an event: one waiter of an auto-reset event is let go, all of a manual one. Returns 1; 0 for no event. */
KVUTIL_API uint32_t kvOSSetEvent(kvOSEventRec *pEvent);

/** Takes the signal away. Returns 1; 0 for no event. */
KVUTIL_API uint32_t kvOSResetEvent(kvOSEventRec *pEvent);

/**
 * Lets go the threads that are waiting at this moment, one of an auto-reset event, all of a manual one. The event ends
 * unsignalled, whatever it was before.
 *
 * Meant: a thread that is not yet waiting does not see the pulse.
 *
 * @return 1; 0 for no event.
 */
KVUTIL_API uint32_t kvOSPulseEvent(kvOSEventRec *pEvent);

/**
 * Waits until the event is signalled, and takes the signal away again unless the event is manual.
 *
 * Meant: the deadline stands on the wall clock, so that a step of it stretches or shortens a wait; and the second that
 * comes of adding the fractions is dropped, so that a wait can end up to one second early, at once if it is shorter.
 *
 * @param dwMilliseconds  0 never blocks; KVWAIT_FOREVER waits as long as it takes.
 * @return KVWAIT_SIGNALLED (0) or KVWAIT_TIMEOUT (258). Meant: a wait that failed is 258 as well, as is one for no
 *         event, null or all-ones.
 */
KVUTIL_API uint32_t kvOSWaitForEvent(kvOSEventRec *pEvent, uint32_t dwMilliseconds);

/**
 * Waits for one event after the other, with the same timeout for each.
 *
 * Meant: fWaitAll is not looked at. A wait for any event is a wait for all, the timeout counts anew for each, none is
 * left out after a timeout, and only the last one's result is told.
 *
 * @param dwCount  0 returns KVWAIT_TIMEOUT.
 * @param ppEvents  dwCount events. Null returns KVWAIT_TIMEOUT.
 * @return as kvOSWaitForEvent of the last event.
 */
KVUTIL_API uint32_t kvOSWaitForMultipleEvents(uint32_t dwCount, kvOSEventRec *const *ppEvents, uint32_t fWaitAll,
                                              uint32_t dwMilliseconds);

/** Ends an event that nobody waits for; null and all-ones do nothing. Returns 0. */
KVUTIL_API uint32_t kvOSCloseEvent(kvOSEventRec *pEvent);

/* ---- Semaphores ---- */

/** A semaphore: a count that nothing blocks on. Read nCount atomically while other threads use the semaphore. */
typedef struct kvOSSemaphoreRec {
    pthread_mutex_t mutex;    /* keeps releases apart; not recursive */
    pthread_cond_t condition; /* signalled by releases; meant: nothing waits for it */
    int64_t nMaximum;         /* highest count */
    int64_t nCount;           /* present count; meant: taken from without the lock */
} kvOSSemaphoreRec;

/**
 * Makes a semaphore. The two counts are stored as they are; that they fit together is the caller's duty, not checked.
 *
 * @param pSecurity  not looked at. Meant: a semaphore has no name.
 * @return the semaphore, the caller's until kvOSCloseSemaphore; null without memory, last error ENOMEM.
 */
KVUTIL_API kvOSSemaphoreRec *kvOSCreateSemaphore(void *pSecurity, int64_t nInitial, int64_t nMaximum);

/** Does nothing and returns null. Meant: no semaphore can be opened. */
KVUTIL_API kvOSSemaphoreRec *kvOSOpenSemaphore(uint32_t dwAccess, uint32_t fInherit, const char *pName);

/**
 * Ends a semaphore; null and all-ones do nothing. Meant: the record is not freed; it stays readable, and a caller who
 * wants its memory back passes it to KVFree afterwards.
 *
 * @return 0.
 */
KVUTIL_API uint32_t kvOSCloseSemaphore(kvOSSemaphoreRec *pSemaphore);

/**
 * Takes 1 from the count unless it is 0.
 *
 * Meant: it never blocks, has no timeout and holds no lock, not even against a release at the same moment.
 *
 * @return KVWAIT_SIGNALLED (0) when 1 was taken; KVWAIT_TIMEOUT (258) at a count of 0, and for no semaphore.
 */
KVUTIL_API uint32_t kvOSWaitForSingleSemaphore(kvOSSemaphoreRec *pSemaphore);

/**
 * Raises the count by nCount where it is below the maximum, and to the maximum at most: what goes beyond is lost.
 *
 * @param nCount  below 1 nothing is done.
 * @return 1 if the count was below the maximum, otherwise 0; 0 for nCount below 1 and for no semaphore.
 */
KVUTIL_API uint32_t kvOSReleaseSemaphore(kvOSSemaphoreRec *pSemaphore, int64_t nCount);

#ifdef __cplusplus
}

static_assert(offsetof(kvOSCriticalSection, mutex) == 0 &&
                  offsetof(kvOSCriticalSection, attributes) == sizeof(pthread_mutex_t) &&
                  offsetof(kvOSCriticalSection, qwCount) % 8 == 0 &&
                  offsetof(kvOSCriticalSection, owner) == offsetof(kvOSCriticalSection, qwCount) + 8,
              "the fields of a critical section follow each other in the stated order");

static_assert(offsetof(kvOSEventRec, mutex) == 0 && offsetof(kvOSEventRec, condition) == sizeof(pthread_mutex_t) &&
                  offsetof(kvOSEventRec, qwManual) == sizeof(pthread_mutex_t) + sizeof(pthread_cond_t) &&
                  offsetof(kvOSEventRec, qwSignalled) == offsetof(kvOSEventRec, qwManual) + 8,
              "the fields of an event follow each other in the stated order");
static_assert(offsetof(kvOSSemaphoreRec, mutex) == 0 &&
                  offsetof(kvOSSemaphoreRec, condition) == sizeof(pthread_mutex_t) &&
                  offsetof(kvOSSemaphoreRec, nMaximum) == sizeof(pthread_mutex_t) + sizeof(pthread_cond_t) &&
                  offsetof(kvOSSemaphoreRec, nCount) == offsetof(kvOSSemaphoreRec, nMaximum) + 8,
              "the fields of a semaphore follow each other in the stated order");

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
