// Threads, and the priorities of threads and of the process.
//
// Many calls are there to keep callers compiling and do nothing; each says so, and that is meant. "No thread" is null
// or all-ones, the value of kvOSGetCurrentThread included. A thread's record may be asked about by several threads,
// also while its own thread leaves by it, until one of them gives it back with kvOSCloseThread.
#ifndef KVOS_THREAD_H
#define KVOS_THREAD_H

#include <pthread.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
#include <cstddef>

extern "C" {
#endif

/** A thread that kvOSCreateThread started. Belongs to the library; a host may look at it. */
typedef struct kvOSThreadRec {
    pthread_t thread; /* good until the thread was joined or detached */
    uint8_t fAlive;   /* 1 from creation until closed or exited through these calls, not until the thread ends */
    uint8_t bIdState; /* 1 once the thread was joined or detached here: the system may have forgotten it; 2 while one of
                       * these calls asks the system about it; else 0 */
} kvOSThreadRec;

/** The body of a thread. What it returns is told by none of these calls; a plain pthread_join of the thread gets it. */
typedef void *(*kvOSThreadStart)(void *pArgument);

/**
 * The scheduling policy that kvOSSetThreadPriority sets, 4. Meant: 4 stands for first-in-first-out on every system,
 * also where that has another number; any other value is the system's own. Nothing changes it; a host sets it before it
 * starts its threads.
 */
extern KVUTIL_API int32_t nProcessPolicy;

/* ---- Life of a thread ---- */

/**
 * Starts a thread.
 *
 * @param pSecurity    not looked at.
 * @param qwStackSize  bytes, rounded up to whole pages; 0 is the system's default. A size that is too small for the
 *                     system, or for the thread-local variables of the process, gets the default as well.
 * @param pStart       runs on the new thread; it may end by returning or by kvOSExitThread. Null is refused, EINVAL.
 * @param pArgument    handed to pStart.
 * @return the thread's record, the caller's until kvOSCloseThread; null on failure, with the reason as the last error.
 *
 * Messages: those of KVAlloc.
 */
KVUTIL_API kvOSThreadRec *kvOSCreateThread(void *pSecurity, uint64_t qwStackSize, kvOSThreadStart pStart,
                                           void *pArgument);

/**
 * Gives a thread's record back. The thread goes on, and what the system keeps of it goes when it ends.
 *
 * @return 1 if the thread could be detached. 0 for no thread, and for one that kvOSGetExitCodeThread joined or
 *         kvOSExitSpecificThread detached before; the record is freed all the same.
 */
KVUTIL_API uint32_t kvOSCloseThread(kvOSThreadRec *pThread);

/**
 * Tells whether a thread runs. Does not wait.
 *
 * Meant: the code is 1 for a thread that runs, and 0 for one that has ended, whatever it ended with.
 *
 * @param pdwCode  receives the code, 0 unless the thread runs; null is left alone.
 * @return 1; 0 for no thread and for one that was named in kvOSExitSpecificThread.
 *
 * Threads: any. It joins a thread that has ended, so that a plain pthread_join of it is not to be made as well.
 */
KVUTIL_API uint32_t kvOSGetExitCodeThread(kvOSThreadRec *pThread, uint32_t *pdwCode);

/** Does nothing and returns 0. Meant: the thread goes on. */
KVUTIL_API uint32_t kvOSTerminateThread(kvOSThreadRec *pThread, uint32_t dwCode);

/** Gives the processor to another thread for a moment and returns 0. Meant: suspends nothing. */
KVUTIL_API uint32_t kvOSSuspendThread(void);

/** Does nothing and returns 0. */
KVUTIL_API uint32_t kvOSResumeThread(kvOSThreadRec *pThread);

/**
 * Ends the calling thread.
 *
 * The thread is unwound as by an exception: no frame below the call may be noexcept, or catch all without throwing on.
 *
 * @param dwCode  what a plain pthread_join of the thread gets, as a pointer.
 */
KVUTIL_API void kvOSExitThread(uint32_t dwCode) __attribute__((noreturn));

/**
 * Ends the calling thread, as kvOSExitThread does, and detaches the named one.
 *
 * Meant: it is the calling thread that ends, whichever thread is named; the record stays, with fAlive 0, and is to be
 * given back by kvOSCloseThread. That may be done as soon as kvOSGetExitCodeThread returns 0 for it: from then on the
 * thread that leaves does not touch it any more.
 *
 * @return only for no thread: the handle plus 1, so 1 for null and 0 for all-ones.
 */
KVUTIL_API uint32_t kvOSExitSpecificThread(kvOSThreadRec *pThread, uint32_t dwCode);

/* ---- Who is running ---- */

/** All-ones. Meant: a fixed value, which every call here takes for no thread. */
KVUTIL_API kvOSThreadRec *kvOSGetCurrentThread(void);

/** The number of the process. */
KVUTIL_API int32_t kvOSGetCurrentProcess(void);

/** The number of the process. */
KVUTIL_API int32_t kvOSGetCurrentProcessId(void);

/* ---- Priorities ---- */

/* Priority classes. */
#define KVPRIORITY_CLASS_NORMAL 32u
#define KVPRIORITY_CLASS_IDLE 64u
#define KVPRIORITY_CLASS_HIGH 128u
#define KVPRIORITY_CLASS_REALTIME 256u

/**
 * Sets the nice value: 18 for idle, -10 for high, -18 for real time, 0 for every other class.
 *
 * Meant: nProcess is not looked at. Where the system keeps the nice value by thread, as Linux does, it is the calling
 * thread's that changes.
 *
 * @return 1; 0 on failure.
 *
 * Last error: 0 on success, and as setpriority left it otherwise.
 * Messages:   "Unable to set priority class 0x%08X = 0x%08X (%d) " with the class, and the error number twice.
 */
KVUTIL_API uint32_t kvOSSetPriorityClass(int32_t nProcess, uint32_t dwClass);

/**
 * The class that a process's nice value belongs to: idle above 17, real time below -17, high below -9, else normal.
 *
 * @param nProcess  kvOSGetCurrentProcess() for the own one. Where the system keeps the nice value by thread, as Linux
 *                  does, that asks the main thread, and 0 the calling one, whose value kvOSSetPriorityClass changes.
 *                  Meant: a process that does not exist is normal.
 */
KVUTIL_API uint32_t kvOSGetPriorityClass(int32_t nProcess);

/**
 * Sets a thread's policy to nProcessPolicy and its scheduling priority to that share of the policy's range; from 5 on
 * the thread gets a time constraint as well, where the system has such a thing (macOS).
 *
 * @param nPriority  -15 (the policy's lowest) to 15 (its highest); meant: shares are rounded towards the lowest, so
 * that kvOSGetThreadPriority may return one less. Any other is refused as EINVAL.
 * @return 1; 0 on failure and for no thread. First-in-first-out needs a privilege on most systems.
 *
 * Last error: not touched. Only the message has the number.
 * Messages:   "Unable to set thread priority = 0x%08X (%d) " with the error number twice.
 */
KVUTIL_API uint32_t kvOSSetThreadPriority(kvOSThreadRec *pThread, int32_t nPriority);

/**
 * A thread's scheduling priority as a share of the range of its own policy, -15 to 15.
 *
 * @return the priority. Meant: also 0 on failure and for no thread; 0 for a policy with one priority only, which is
 * what a thread of Linux has by default.
 *
 * Last error: not touched.
 * Messages:   as kvOSSetThreadPriority, in the same words.
 */
KVUTIL_API int32_t kvOSGetThreadPriority(kvOSThreadRec *pThread);

/** Returns 1; 0 for no thread. Meant: sets nothing. */
KVUTIL_API uint32_t kvOSSetThreadPriorityBoost(kvOSThreadRec *pThread);

/** Returns the mask; 0 for no thread. Meant: sets nothing. */
KVUTIL_API uint64_t kvOSSetThreadAffinityMask(kvOSThreadRec *pThread, uint64_t qwMask);

#ifdef __cplusplus
}

/** The same for a handle kept as a number. */
KVUTIL_API uint32_t kvOSGetExitCodeThread(unsigned long hThread, uint32_t *pdwCode);

static_assert(offsetof(kvOSThreadRec, thread) == 0 && offsetof(kvOSThreadRec, fAlive) == sizeof(pthread_t),
              "the fields of a thread follow each other in the stated order");
#endif

#endif
