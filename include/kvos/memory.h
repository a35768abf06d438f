// Memory: allocation with optional tracking, one family of copy, zero and set calls, and a copy on several threads.
//
// Sizes are bytes. Blocks of one copy do not overlap. Pointers are not null unless a call says so, and destinations
// hold what they are told to take: the caller's duty, not checked. Every call may be made from any thread, unless it
// says otherwise.
#ifndef KVOS_MEMORY_H
#define KVOS_MEMORY_H

#include <stdint.h>

#include "dlist.h"
#include "kvos/export.h"
#include "kvos/sync.h"
#include "kvos/thread.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Allocation ---- */

/**
 * Allocates a block; its content is not defined.
 *
 * @param dwSize  bytes; 0 gives a block that holds nothing.
 * @return the block, the caller's until KVFree; null on failure, also when an allocator that the host put under malloc
 *         throws: its exception ends here.
 *
 * Last error: ENOMEM when memory runs out; as the host's allocator left it when that one throws.
 * Messages:   "Error allocating %d bytes %d 0x%08X" with the size, as a signed word, and the error number twice;
 *             "Exception: freeing kvmemory allocation" for an exception. Both go to standard error only (_DbgOut), and
 *             nowhere while gdwOutputToStdDebug is 0.
 */
KVUTIL_API void *KVAlloc(uint32_t dwSize);

/** Frees a block of KVAlloc or KVReAlloc, or one that the library returned to the caller; null does nothing. */
KVUTIL_API void KVFree(void *pBlock);

/**
 * Resizes a block, keeping its content up to the smaller size. Sends no message; a host's allocator that throws makes
 * it fail.
 *
 * @param pBlock  a block of KVAlloc or KVReAlloc, or null to allocate one.
 * @param dwSize  bytes. Meant: as realloc of the system; where 0 frees the block, as on Linux, null is no failure.
 * @return the block, which may have moved; null on failure, the old block then being intact, last error ENOMEM.
 */
KVUTIL_API void *KVReAlloc(void *pBlock, uint32_t dwSize);

/* ---- Tracked allocation: long-lived, rare blocks, listed with a tag, freed in one go at the end ---- */

/** One tracked block, as dlMem lists it. No guard words surround the block. */
typedef struct kvMemRecord {
    d_ListNode node;
    void *block;   /* the caller's memory */
    uint64_t size; /* bytes asked for */
    char tag[64];  /* meant: not terminated when the caller's text has 64 bytes or more */
} kvMemRecord;

/*
 * Lock order: csMem, then the list's own lock. Both sections are usable at any time, from the loading of the library on
 * and whether or not blocks are tracked; dbgzmMemInitTracking and dbgzmMemQuitTracking make them anew, so nobody may
 * hold one then. The lists are initialised only between those two calls.
 */
extern KVUTIL_API kvOSCriticalSection csMem;   /* held during each tracked call */
extern KVUTIL_API kvOSCriticalSection csFixed; /* set up and torn down, otherwise unused */
extern KVUTIL_API d_List dlMem;                /* the tracked blocks, the last one first */
extern KVUTIL_API d_List dlFixed;              /* set up and torn down, otherwise unused */

/**
 * Allocates a block and, between dbgzmMemInitTracking and dbgzmMemQuitTracking, lists it.
 *
 * Meant: a block taken while nothing is tracked is a good block, but _zmwFree does not know it; free it with KVFree.
 * The same holds for a block whose record found no memory.
 *
 * @param qwSize  bytes; above 0xFFFFFFFF nothing is allocated, and the message of KVAlloc shows all of its digits.
 * @param pTag    who holds the block, for a debugger; kept in 64 bytes without a terminator if longer. Null is empty.
 * @return the block, the caller's until _zmwFree or dbgzmMemQuitTracking; null on failure, last error as KVAlloc, and
 *         ENOMEM for a size that is refused.
 *
 * Messages: those of KVAlloc; a record that found no memory is told likewise.
 */
KVUTIL_API void *_zmwAlloc(uint64_t qwSize, const char *pTag);

/**
 * Frees a tracked block and clears the caller's pointer to it. Walks all tracked blocks to find it.
 *
 * @param ppBlock  address of the pointer. Meant: a block that is not tracked, null included, is left alone, and the
 *                 pointer unchanged. A null ppBlock does nothing.
 * @return as kvOSLeaveCriticalSection on csMem, so 0, whether or not a block was freed.
 */
KVUTIL_API int32_t _zmwFree(void **ppBlock);

/** The same as _zmwAlloc. */
KVUTIL_API void *_zmwFixedAlloc(uint64_t qwSize, const char *pTag);

/** The same as _zmwFree. */
KVUTIL_API int32_t _zmwFixedFree(void **ppBlock);

/**
 * Begins tracking: makes csMem and csFixed anew, empties dlMem and dlFixed.
 *
 * Meant: a second call without dbgzmMemQuitTracking forgets what was tracked; those blocks stay allocated.
 *
 * Threads: no thread may be inside a tracked call, or hold csMem or csFixed: a held one is given up without a word.
 *
 * @return 1, as d_ListInit.
 */
KVUTIL_API uint32_t dbgzmMemInitTracking(void);

/**
 * Frees all blocks still tracked and ends tracking. Does no harm when nothing is tracked.
 *
 * Meant: nothing is reported about what was still held. Later _zmwAlloc calls return blocks that nothing tracks.
 *
 * Threads: no thread may be inside a tracked call, or hold csMem or csFixed.
 *
 * @return as kvOSDeleteCriticalSection on csFixed: 0, EBUSY if it is held.
 */
KVUTIL_API int32_t dbgzmMemQuitTracking(void);

/* ---- Copy, zero and set ---- */

/*
 * A build with the signal primitives (x86-64) sends these calls to them; one without selects a routine by the feature
 * word at the first call of 128 bytes or more, and keeps it in a pointer. Where the result is called the primitive's,
 * it is a status, and 0.
 */

typedef int32_t (*kvOSCopyRoutine)(void *pDestination, const void *pSource, uint64_t qwBytes);
typedef int32_t (*kvOSSetRoutine)(void *pDestination, uint32_t dwValue, uint64_t qwBytes);
typedef int32_t (*kvOSZeroRoutine)(void *pDestination, uint64_t qwBytes);

/** The feature word, 0 at first. Meant: it never reflects the processor. A host may store any value. */
extern KVUTIL_API uint32_t CPUFeatureFlagsIntern;

/*
 * The selected routines, null until the first use; a build with the signal primitives never touches them. A host may
 * store its own: a result that is not 0 is the number of bytes, at the end of the block, left for the caller to do. A
 * set gets whole words, and a word of which any byte was left is written whole.
 */
extern KVUTIL_API kvOSCopyRoutine pfcnCopyMemoryFast;
extern KVUTIL_API kvOSSetRoutine pfcnSetMemoryFast;
extern KVUTIL_API kvOSZeroRoutine pfcnZeroMemoryFast;

/** Stores 25207 (0x6277) in the feature word. */
KVUTIL_API void CPUSetupFeatureFlag(void);

/** The feature word, which becomes 25207 first if it is 0. */
KVUTIL_API uint32_t CPUFeatureFlags(void);

/** The everyday copy. Returns the primitive's result. */
KVUTIL_API int32_t kvOSCopyMemory(void *pDestination, const void *pSource, uint64_t qwBytes);

/** The same as kvOSCopyMemory. */
KVUTIL_API int32_t CopyMemoryFast(void *pDestination, const void *pSource, uint64_t qwBytes);

/**
 * Copies at most dwLimit bytes, and tells when that is less than was asked for.
 *
 * Messages: "kvOSCopyMemory-Overwrite %d > %d\n" with the size asked for and the limit, once, when the size is above
 *           the limit. Both are compared as unsigned and shown as signed words.
 *
 * @return the primitive's result.
 */
KVUTIL_API int32_t kvOSCopyMemorySafe(void *pDestination, const void *pSource, uint32_t dwBytes, uint32_t dwLimit);

/** As kvOSCopyMemorySafe; its message is "CopyMemoryFast-Overwrite %d > %d\n". */
KVUTIL_API int32_t kvOSCopyMemorySafeFast(void *pDestination, const void *pSource, uint32_t dwBytes, uint32_t dwLimit);

/**
 * Copies rows, each as long as the smaller of the two pitches; each side steps by its own.
 *
 * @param qwDestinationPitch, qwSourcePitch  bytes from one row to the next.
 * @return the primitive's result of the last row. Meant: with no rows, the length of a row.
 */
KVUTIL_API uint64_t kvOSCopyWithPitch(void *pDestination, uint64_t qwDestinationPitch, const void *pSource,
                                      uint64_t qwSourcePitch, uint32_t dwRows);

/** Zeroes a block. Returns 0. */
KVUTIL_API int32_t kvOSZeroMemory(void *pDestination, uint64_t qwBytes);

/** Zeroes a block. Returns the primitive's result. */
KVUTIL_API int32_t ZeroMemoryFast(void *pDestination, uint64_t qwBytes);

/**
 * Zeroes at most nLimit bytes, and tells when that is less than was asked for. A negative size does nothing.
 *
 * Messages: "WARNING: ZeroOverwrite requested %d, allow %d " with the size asked for and the limit, once, when the
 *           size is above the limit. Both are compared in 64 bits, signed; the low 32 bits are shown.
 *
 * @return 0.
 */
KVUTIL_API int32_t kvOSZeroMemorySafe(void *pDestination, int64_t nBytes, int64_t nLimit);

/**
 * Fills a block with a 32-bit value. The address need not be aligned.
 *
 * Meant: whole words only, so that up to three bytes at the end stay untouched.
 *
 * @return the primitive's result.
 */
KVUTIL_API int32_t SetMemoryFast(void *pDestination, uint32_t dwValue, uint64_t qwBytes);

/** SetMemoryFast of at most nLimit bytes. Meant: its message has the words of kvOSZeroMemorySafe. */
KVUTIL_API int32_t kvOSSetMemorySafe(void *pDestination, uint32_t dwValue, int64_t nBytes, int64_t nLimit);

/* Named methods, for callers that once chose one. Each is a plain copy and returns 0. */
KVUTIL_API int32_t CopyMemoryByte(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWarmByte(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWord(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWarmWord(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryDword(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWarmDword(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryFPU(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWarmFPU(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryMMX(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryWarmMMX(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryMMX_2(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemorySSE(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemorySSE_Pre(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemorySSE2(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryAMD(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryAMD2(void *pDestination, const void *pSource, uint64_t qwBytes);
KVUTIL_API int32_t CopyMemoryAMD_OPT(void *pDestination, const void *pSource, uint64_t qwBytes);

/* Named methods that zero a block and return 0. */
KVUTIL_API int32_t ZeroMemoryDword(void *pDestination, uint64_t qwBytes);
KVUTIL_API int32_t ZeroMemoryMMX(void *pDestination, uint64_t qwBytes);

/*
 * Named methods that fill a block with a 32-bit value and return 0. Meant, and unlike SetMemoryFast: a partial last
 * word is written whole, up to three bytes past the end of the block.
 */
KVUTIL_API int32_t SetMemoryDword(void *pDestination, uint32_t dwValue, uint64_t qwBytes);
KVUTIL_API int32_t SetMemoryMMX(void *pDestination, uint32_t dwValue, uint64_t qwBytes);

/* ---- Copy on several threads ---- */

/** One slice of a threaded copy. */
typedef struct kvOSCopySlice {
    void *pDestination;
    const void *pSource;
    uint32_t dwBytes;
    uint32_t fDone;         /* set to 1 by the thread that copied the slice */
    kvOSEventRec *pEvent;   /* auto-reset; signalled when the slice is done */
    kvOSThreadRec *pThread; /* null where no thread could be started: that slice stays uncopied */
} kvOSCopySlice;

/** A threaded copy under way. */
typedef struct kvOSCopyJob {
    uint32_t dwCount; /* slices in use, 1 or 16 */
    kvOSCopySlice slices[16];
} kvOSCopyJob;

/**
 * Copies a large block on threads of its own: one below 9,125,889 bytes, 16 from there on. The caller may wait, or go
 * on and collect the job later; until then both blocks have to stay.
 *
 * Meant: each of 16 slices has a sixteenth of qwBytes, rounded down, so that up to 15 bytes at the end stay uncopied.
 * Below 1 MiB the copy is done on the calling thread, to the last byte, and qwLimit is not looked at. A slice whose
 * thread can't be started stays uncopied, and is waited for in vain; nothing tells.
 *
 * A copy for whose record or events there is no memory, and one of 64 GiB or more, is done on the calling thread as a
 * whole, up to qwLimit.
 *
 * @param qwLimit  bytes of the destination. A slice that would pass it is cut there; one wholly behind it is empty.
 * @param fWait    not 0: waits as kvOSCopyMemoryThreadedComplete does, and gives up as that does: it then returns with
 *                 slices uncopied, of which nothing tells, and a thread may still read and write the two blocks.
 * @return the job, to be handed to kvOSCopyMemoryThreadedComplete exactly once; null when there is none to collect.
 *
 * Messages: those of KVAlloc.
 */
KVUTIL_API kvOSCopyJob *kvOSCopyMemoryThreaded(void *pDestination, const void *pSource, uint64_t qwBytes,
                                               uint64_t qwLimit, uint32_t fWait);

/**
 * Waits until a threaded copy is done, and frees the job.
 *
 * Meant: it waits one second at a time for the first slice that is not done, gives up after 100 such waits in vain over
 * all slices, and returns 1 all the same. What was not collected by then stays as it is, events and threads; the job is
 * freed unless a thread still needs it.
 *
 * So after 100 seconds or more (less where the wall clock's fraction cuts the waits short) the copy may not be whole,
 * and a thread may still be at it: blocks whose last bytes did not arrive are not to be freed or used for another
 * thing.
 *
 * @param pJob  null does nothing. Not to be used afterwards.
 * @return 1.
 *
 * Threads: any, not only the one that began the copy.
 */
KVUTIL_API uint32_t kvOSCopyMemoryThreadedComplete(kvOSCopyJob *pJob);

/**
 * The body of a slice's thread: copies as kvOSCopyMemory, sets fDone, signals the event and ends the thread it runs on,
 * by kvOSExitThread. It does not return.
 *
 * @param pSlice  a kvOSCopySlice; nothing of it is used once fDone is set.
 */
KVUTIL_API void *_kvOSCopyThread(void *pSlice);

#ifdef __cplusplus
}

static_assert(sizeof(void *) != 8 || (offsetof(kvOSCopySlice, pSource) == 8 && offsetof(kvOSCopySlice, dwBytes) == 16 &&
                                      offsetof(kvOSCopySlice, fDone) == 20 && offsetof(kvOSCopySlice, pEvent) == 24 &&
                                      offsetof(kvOSCopySlice, pThread) == 32 && sizeof(kvOSCopySlice) == 40 &&
                                      offsetof(kvOSCopyJob, slices) == 8 && sizeof(kvOSCopyJob) == 648),
              "the fields of a threaded copy follow each other in the stated order");
static_assert(sizeof(void *) != 8 ||
                  (offsetof(kvMemRecord, node) == 0 && offsetof(kvMemRecord, block) == 24 &&
                   offsetof(kvMemRecord, size) == 32 && offsetof(kvMemRecord, tag) == 40 && sizeof(kvMemRecord) == 104),
              "the fields of a tracked block follow each other in the stated order");
#endif

#endif
