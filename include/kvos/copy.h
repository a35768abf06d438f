// Copies, moves, comparisons and extracts of whole files, between any two kinds of locator.
//
// Several results say less than they seem to; each call tells. Where it matters whether every byte arrived, compare the
// sizes, or the files.
//
// An exception of the host's (an allocator that throws) ends in these calls, which then fail and send
// "WARNING(kvCopyFile): %s\n\r" with its text.
#ifndef KVOS_COPY_H
#define KVOS_COPY_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
#include <cstddef>

extern "C" {
#endif

/**
 * Copies a file, in blocks of 1 MiB.
 *
 * Meant: a destination that exists is deleted ahead of a look at the source. It is lost also if the source is missing,
 * and a file that is copied onto itself is lost.
 *
 * Meant: the result is 0, although every byte was copied, when the size is a multiple of 1 MiB, 0 included; and 1 when
 * the source fails to be read before a first byte, or behind a whole block. The end of a URL or an object is such a
 * failure, so that one of a multiple of 1 MiB, an empty object included, gives 1. Compare the sizes where it matters.
 *
 * A copy of no bytes makes an empty file, but no object in a store: the close of one that was not written to makes
 * none.
 *
 * Meant: a copy to a URL gives 0, although the server was sent the bytes: each block is a request of its own with a
 * zero byte behind it, which makes its count another than asked for, and the first block is the last.
 *
 * @param fFailIfExists  not 0: a destination that exists is left alone, and the result is 0.
 * @return 1; 0 if a file could not be opened or a write came out short, a full disk noticed at the close included.
 *
 * Last error: of the call that failed; EINVAL for a path that is null, EEXIST for a destination that was left alone.
 * Messages:   those of kvOSDeleteFile, kvOSCreateFile, kvOSReadFile, kvOSWriteFile and kvOSCloseFile.
 */
KVUTIL_API uint32_t kvOSCopyFile(const char *pSource, const char *pDestination, uint32_t fFailIfExists);

/**
 * Copies a file with kvOSCopyFile, replacing the destination, and deletes the source.
 *
 * Meant: the source is deleted whether or not the copy worked, and whatever the result says. Nothing is renamed, also
 * within one disk, and a file that is moved onto itself is lost. A URL is copied and stays, as kvOSDeleteFile says.
 *
 * @return what kvOSCopyFile returned: 0 for a size that is a multiple of 1 MiB, but 1 where it is that of a URL or
 *         an object.
 *
 * Last error: of the copy where it returned 0, else of the delete.
 * Messages:   those of kvOSCopyFile and kvOSDeleteFile.
 */
KVUTIL_API uint32_t kvOSMoveFile(const char *pSource, const char *pDestination);

/* Results of kvOSVerifyFile. */
#define KVVERIFY_SAME 0u
#define KVVERIFY_SIZES_DIFFER 0x80001001u
#define KVVERIFY_NOT_OPENED 0x80001002u /* the first file */
#define KVVERIFY_FIRST_EMPTY 0x80001005u
#define KVVERIFY_SECOND_EMPTY 0x80001006u
#define KVVERIFY_NO_MEMORY 0x80001007u
#define KVVERIFY_CONTENTS_DIFFER 0x80001008u

/**
 * Compares two files byte for byte.
 *
 * Meant: two empty files are not the same but KVVERIFY_FIRST_EMPTY; a second file that could not be opened counts as
 * empty; and a fault that ends the reading of the first file ends the comparison, with the result of what was compared:
 * KVVERIFY_SAME if it comes ahead of the first byte.
 *
 * @return the first of these that holds: KVVERIFY_NOT_OPENED, KVVERIFY_FIRST_EMPTY, KVVERIFY_SECOND_EMPTY,
 *         KVVERIFY_SIZES_DIFFER, KVVERIFY_NO_MEMORY; then, block by block, KVVERIFY_SIZES_DIFFER where the reads gave
 *         different counts (the second one failed, for example) and KVVERIFY_CONTENTS_DIFFER; else KVVERIFY_SAME.
 *
 * Messages: those of kvOSCreateFile and kvOSReadFile.
 */
KVUTIL_API uint32_t kvOSVerifyFile(const char *pFirst, const char *pSecond);

/* Bits of dwFlags of kvOSCopyFileFast. The low 4 bits choose the block: 1 64 KiB, 2 128 KiB, 3 512 KiB, 0 and 4 1 MiB,
 * 5 4 MiB, 6 8 MiB, 7 and above 16 MiB. */
#define KVCOPY_COUNT_GIVEN 0x100000u /* *pqwProgressBytes holds the bytes to copy */
#define KVCOPY_KEEP_EXISTING                                                                                   \
    0x1000000u                   /* a destination that exists is left alone; kvOSExtractFileFast knows it, too \
                                  */
#define KVCOPY_PLAIN 0x10000000u /* by kvOSCopyFile */

/**
 * What the two threads of a fast copy share. Belongs to the library while they run; states, lengths, offsets, readDone,
 * writeDone and failure are then to be looked at atomically. Zeroed, but for what is marked.
 */
typedef struct kvOSFastCopyJob {
    void *buffers[2];            /* given: blockSize bytes each, aligned to 8192 */
    uint32_t states[2];          /* 0 free, 1 reading, 2 full, 4 writing */
    uint64_t offsets[2];         /* place of each buffer in the file, in bytes */
    uint32_t lengths[2];         /* valid bytes of each buffer */
    int64_t source;              /* given: file open for reading */
    uint32_t readDone;           /* not 0: the reader has stopped, or is to stop */
    int64_t destination;         /* given: file open for writing */
    uint32_t writeDone;          /* not 0: the writer has stopped, or is to stop */
    int32_t failure;             /* -1 once a thread has failed */
    uint32_t blockSize;          /* given: bytes */
    void *allocations[2];        /* what the buffers lie in, as KVAlloc returned it */
    const char *destinationName; /* given: for a last block that the open destination refuses */
    uint64_t bytesRead;          /* set when the reader stops */
    uint64_t bytesWritten;       /* set when the writer stops */
    uint64_t limit;              /* bytes to copy; meant: 0 stands for one block */
    uint64_t *progressBytes;     /* null, or receives the bytes written so far */
    uint32_t *progressPermille;  /* null, or receives their thousandths of limit (at most all ones), unless that is 0 */
} kvOSFastCopyJob;

/**
 * Copies a file with one thread that reads and one that writes. A destination that exists is deleted first. Returns
 * when both threads have ended: a source that stalls holds the caller.
 *
 * Meant: without KVCOPY_COUNT_GIVEN and a count that is not 0, one block is copied, with success. With a count, whole
 * blocks are copied until it is reached: a smaller count than the file's size does not cut the last block. With one
 * above the size the copy ends with the file; but where the size of a URL or an object is a multiple of the block, the
 * read behind its end is a failure like any other. The copy of an empty object therefore fails, whatever the count.
 *
 * Meant: a copy to a URL fails, as kvOSCopyFile does, although the server was sent the first block.
 *
 * Meant, without KVCOPY_COUNT_GIVEN: with KVCOPY_PLAIN, or twice its value, the copy is that of kvOSCopyFile, and its
 * result turned round: all-ones where it returned 1, and 0 where it returned 0. Any higher value of the top 4 bits
 * copies nothing and returns 0; the destination is deleted all the same.
 *
 * @param dwFlags  KVCOPY_... and the choice of the block.
 * @param pqwProgressBytes  null, or the count (with KVCOPY_COUNT_GIVEN). Receives the bytes written so far, and in the
 *                 end all of them; from the plain copy the source's size.
 * @param pdwElapsedMs  null, or receives the milliseconds that the copy took.
 * @param pdwProgressPermille  null, or receives the thousandths of the count (above 1000 where the last block goes
 *                 beyond it, all ones for what 32 bits do not tell), and 1000 in the end; meant: after a failure as
 *                 well. The plain copy leaves it alone.
 * @return 0. All-ones for a file that could not be opened, a read or write that failed, a full disk noticed at the
 *         close, no memory, a destination that exists and is to be kept, and one that exists and is the same text as
 *         the source. Other spellings of the source are not noticed: it is deleted.
 *
 * Last error: of an open or a close that failed; EIO for what failed in a thread; EINVAL for a path that is null;
 *             EEXIST for a destination that was left alone.
 * Messages:   those of the calls on the files; "Writing <%d> being open for write with write share enabled!" from each
 *             open of a destination. What a thread tells comes from that thread.
 * Threads:    the two progress words are written by the writing thread: read them atomically.
 */
KVUTIL_API uint32_t kvOSCopyFileFast(const char *pSource, const char *pDestination, uint32_t dwFlags,
                                     uint64_t *pqwProgressBytes, uint32_t *pdwElapsedMs, uint32_t *pdwProgressPermille);

/** The reading thread of a fast copy, for a job (kvOSFastCopyJob) alone. Ends its thread, unless the job is null. */
KVUTIL_API void *_kvOSCopyFileFastRead(void *pJob);

/** The writing thread of a fast copy, for a job (kvOSFastCopyJob) alone. Ends its thread, unless the job is null. */
KVUTIL_API void *_kvOSCopyFileFastWrite(void *pJob);

/**
 * Copies a range of a file into a new one. A destination that exists is deleted first, so that what lies ahead of
 * qwDestinationOffset in it reads as zeros.
 *
 * Meant: a read or a write that fails is told, and the result is 1 all the same; compare the sizes where it matters.
 * A range that goes beyond the end of a URL or an object comes to such a read; one that begins behind a known end is
 * refused. An extract to a URL gives 1 as well, and tells of its first write, which counts a byte too many (see
 * kvOSCopyFile). A source that is its own destination is deleted.
 *
 * @param dwFlags  KVCOPY_KEEP_EXISTING or 0.
 * @param qwSourceOffset, qwBytes, qwDestinationOffset  in bytes. No bytes: the destination is made, but no
 *                 object in a store (see kvOSCopyFile), and the result is 1.
 * @param pqwProgressBytes, pdwElapsedMs, pdwProgressPermille  null, or receive after each block the bytes so far, the
 *                 milliseconds so far and the thousandths so far; without a block they stay as they were.
 * @return 1. 0 where a file could not be opened or take its position, for a destination that exists and is to be kept,
 *         a source that ends ahead of the range, no memory, and a full disk noticed at the close behind the last block.
 *
 * Last error: of the call that failed; EINVAL for a path that is null, EEXIST for a destination that was left alone.
 *             0, also as the numbers of the message, where that call sets none: at the end of a local file or an
 *             object, and for a position that a URL or an object refuses.
 * Messages:   "\nERROR:kvOSExtractFileFast(%d, 0x%08X) " with the last error twice, for opens, positions, memory and
 *             the source's end; "kvOSExtractFileFast Read FAILED %d 0x%X ", "kvOSExtractFileFast Write FAILED %d 0x%X "
 *             likewise for failed calls; "kvOSExtractFileFast Write FAILED" for a short write. And those of the calls
 *             on the files.
 * Threads:    any.
 */
KVUTIL_API uint32_t kvOSExtractFileFast(const char *pSource, const char *pDestination, uint32_t dwFlags,
                                        uint64_t qwSourceOffset, uint64_t qwBytes, uint64_t qwDestinationOffset,
                                        uint64_t *pqwProgressBytes, uint32_t *pdwElapsedMs,
                                        uint32_t *pdwProgressPermille);

#ifdef __cplusplus
}

static_assert(sizeof(void *) != 8 ||
                  (offsetof(kvOSFastCopyJob, states) == 16 && offsetof(kvOSFastCopyJob, offsets) == 24 &&
                   offsetof(kvOSFastCopyJob, lengths) == 40 && offsetof(kvOSFastCopyJob, source) == 48 &&
                   offsetof(kvOSFastCopyJob, destination) == 64 && offsetof(kvOSFastCopyJob, blockSize) == 80 &&
                   offsetof(kvOSFastCopyJob, allocations) == 88 && offsetof(kvOSFastCopyJob, progressPermille) == 144),
              "the fields of a job follow each other in the stated order");
#endif

#endif
