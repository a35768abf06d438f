// Enumeration of directories: find first, next and close, and a walk over a tree.
//
// A find handle belongs to one thread at a time. The find calls take their pattern as it stands: the redirect of the
// file layer is not applied to it. What a local entry says is found by its path, the directory of the pattern and the
// name:
// name, times and size are of that path as it stands, while the attributes come from kvOSGetFileAttributes, which
// redirects it first. kvOSRecurseDirectory asks kvOSFileIsDir about the redirected directory and lists the given one.
//
// An entry whose path comes to 4096 bytes or more can't be named to any call. It is left out, and the enumeration then
// ends with last error ENAMETOOLONG instead of -1, so that nobody takes the listing for the whole.
#ifndef KVOS_FIND_H
#define KVOS_FIND_H

#include <glob.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The handle that names no enumeration. */
#define KVFIND_INVALID ((int64_t)-1)

/* Bits of dwFlags of kvOSRecurseDirectory. */
#define KVRECURSE_SUBDIRECTORIES 0x0001u     /* go into directories */
#define KVRECURSE_REPORT_DIRECTORIES 0x1000u /* call back for directories, ahead of what they hold */
#define KVRECURSE_SKIP_FILES 0x8000u         /* do not call back for files */

/* The result of a callback for a directory that kvOSRecurseDirectory remembers. */
#define KVRECURSE_REMEMBERED 0x10000000u

/** A moment as units of 100 ns since the beginning of 1601 (UTC), in two 32-bit words. */
typedef struct kvOSFileTime {
    uint32_t dwLow;
    uint32_t dwHigh;
} kvOSFileTime;

/** One entry of an enumeration. */
typedef struct kvOSFindData {
    uint32_t dwAttributes;   /* as kvOSGetFileAttributes gives them; S3: by the name, which ends in "/" for a folder */
    kvOSFileTime ftCreation; /* local: the time of the last status change; S3: 0, like the other two */
    kvOSFileTime ftAccess;
    kvOSFileTime ftWrite;
    uint32_t dwSizeHigh; /* high 32 bits of an object's size; meant: 0 on local files, whatever their size */
    uint32_t dwSizeLow;  /* bytes; the low 32 bits of the size */
    uint8_t reserved[8]; /* S3: zeroed */
    char szName[4097];   /* the entry's name, without its directory */
} kvOSFindData;

/**
 * Begins an enumeration and delivers its first entry.
 *
 * "*" and "?" count in the last component only, and "[" and "]" match themselves. A last component that begins with "*"
 * finds hidden names too, "." and ".." among them, and the extension ".*" also finds names without any. Entries come in
 * the order of strcasecmp, "." and ".." first.
 *
 * A pattern that kvOSUseAws accepts lists a folder of a bucket: what stands ahead of the last "/" of the key. What
 * stands behind it is not looked at, wildcards neither; backslashes count as "/". Folders come as their name and a "/",
 * with KVATTR_DIRECTORY. The order is that of the store's pages, in each the folders first. Meant: a "/" ahead of the
 * third character of the key is not seen, so that a folder of one letter can't be listed and the whole bucket is.
 *
 * Meant: a pattern whose only "/" is its first character, or that has none, is split so that it becomes its own
 * directory: "*.txt" and "/?" fail, "./a*" works.
 *
 * Meant: a backslash of a local pattern quotes the character behind it. The file "a\b" is found by the pattern
 * "./a\\b", while "./a\b" finds "ab".
 *
 * @param pPattern  directory and name, shorter than 4096 bytes.
 * @param pData     receives the first entry.
 * @return the handle, the caller's until kvOSFindClose; -1 when nothing matched, for null pointers, for a pattern
 *         without a name, for a wildcard in the directory, and when a store refuses or can't be reached.
 *
 * Last error: -1 on failure; ENAMETOOLONG for a pattern that does not fit, and when all that matched was left out for
 *             the length of its path; S3: that of the failed request, as kvOSCreateFile has it; ENOMEM without memory.
 * Messages:   those of kvOSAwsAccess for S3; none otherwise.
 */
KVUTIL_API int64_t kvOSFindFirstFile(const char *pPattern, kvOSFindData *pData);

/**
 * Delivers the next entry. One that disappeared since kvOSFindFirstFile is passed over; a dangling link is delivered.
 *
 * What was there when the enumeration began is what it delivers. An entry that two forms of the pattern match (an
 * extension of ".*" and a name that begins with "*" and ends otherwise) comes twice; meant.
 *
 * Meant: in a relative folder "http:" (or of another scheme of kvOSIsNetworkFile) a "?" begins a query, so that what
 * begins with one has an empty name. A directory is then named by what its path holds beyond the length of the first
 * path found: "http:/?dir" behind "http:/." is "dir".
 *
 * On S3 the object that stands for the listed folder itself is left out. Meant: the next page of a long listing is
 * fetched as soon as no object of the last one is left, so that of a page without objects, which is not the last one,
 * only the first folder is delivered; list what holds more than a thousand folders by longer prefixes.
 *
 * @return 1 when pData was filled; 0 at the end, for the handles 0 and -1 and for a null pData.
 *
 * Last error: meant: -1 whenever the result is 0; callers tell the end of a listing by it. ENAMETOOLONG at the end of
 *             one that left out entries whose paths do not fit. S3: that of the failed request where a page could not
 *             be fetched, so that the listing is not the whole.
 */
KVUTIL_API uint32_t kvOSFindNextFile(int64_t hFind, kvOSFindData *pData);

/** Ends an enumeration. Returns 1; 0 for the handles 0 and -1, with last error -1 for 0. */
KVUTIL_API uint32_t kvOSFindClose(int64_t hFind);

/** kvOSFindClose under its short name. */
KVUTIL_API uint32_t FindClose(int64_t hFind);

/** The constant text "/"; null for the handle -1. The handle is not looked at otherwise. */
KVUTIL_API const char *kvOSFindGetSeparator(int64_t hFind);

/** The character "/"; 0 for the handle -1. The handle is not looked at otherwise. */
KVUTIL_API char kvOSFindGetSeparatorChar(int64_t hFind);

/**
 * Turns seconds since 1970 and nanoseconds into units of 100 ns since 1601; what is left of a unit is dropped. Seconds
 * before 1970 are passed as their two's complement.
 */
KVUTIL_API uint64_t FILEUnixTimeToFileTime(uint64_t qwSeconds, uint64_t qwNanoseconds);

/**
 * The other way round.
 *
 * @param pqwNanoseconds  receives the rest below a second, in nanoseconds; may be null.
 * @return seconds since 1970; a moment before 1970 gives the two's complement of a negative number.
 */
KVUTIL_API uint64_t FILEFileTimeToUnixTime(uint64_t qwFileTime, uint64_t *pqwNanoseconds);

/**
 * Runs glob on directory, name and extension joined, brackets taken literally, and sorts all that pGlob then holds with
 * FILEGlobQsortCompare; equal paths stay in the order of glob.
 *
 * @param pDirectory, pName, pExtension  joined as they are, no separator added; null counts as empty.
 * @param nFlags  1 appends to what pGlob holds; every other bit is ignored. Backslash quoting is always on.
 * @param pGlob   zeroed, or with flag 1 filled by an earlier call; the caller's to globfree. Not checked: what a filled
 *                one holds is lost, unfreed, in a call without flag 1.
 * @return 0, also when nothing matched; else the error of glob. GLOB_ABORTED, with last error ENAMETOOLONG, for 4096
 *         characters and more, and with EINVAL for a null pGlob.
 */
KVUTIL_API int32_t FILEGlobFromSplitPath(const char *pDirectory, const char *pName, const char *pExtension,
                                         int32_t nFlags, glob_t *pGlob);

/**
 * The order of paths, for qsort: strcasecmp, but a path whose last component is "." comes first and ".." next.
 *
 * @param pA, pB  addresses of `char *` elements, as qsort passes them.
 */
KVUTIL_API int32_t FILEGlobQsortCompare(const void *pA, const void *pB);

/**
 * What kvOSRecurseDirectory calls for an entry.
 *
 * @param pContext      as passed to kvOSRecurseDirectory.
 * @param pPath         the entry's path, below the directory as it was passed; directories end in "/". Valid during the
 *                      call only.
 * @param dwAttributes  as kvOSGetFileAttributes gives them.
 * @return for a file, not 0 ends the walk of its directory; for a directory, not 0 keeps the walk out of it.
 */
typedef uint32_t (*kvOSRecurseCallback)(void *pContext, const char *pPath, uint32_t dwAttributes);

/**
 * Walks a directory and calls back for its entries, in the order of the find calls, "." and ".." left out.
 *
 * An entry that is neither file nor directory counts as a file. Links to directories are followed: one that leads back
 * to a directory above is gone through until the system refuses the path (40 links on Linux), where it counts as a
 * file, and with two of them a walk doubles at each step and never ends in practice. A callback for directories can
 * keep it out.
 *
 * Meant: a local directory whose path holds a "*" or a "?" is not listed, without a word: of the given one the result
 * is 0, and of those below it only the callback for the directory itself comes. Backslashes are part of names.
 *
 * Meant: what a subdirectory's walk returns is ignored, so that ending one does not end the walk around it. Meant: a
 * "/" is added to every directory, also to one that ends in one, so that paths below a subdirectory hold "//".
 *
 * @param pContext    handed to the callback.
 * Meant: below a folder of one letter at the top of a store, which kvOSFindFirstFile can't list, what is reported is
 * what lies at the top of the bucket.
 *
 * @param pDirectory  with or without a final "/"; of a store with one, as kvOSFileIsDir wants it.
 * @param dwFlags     KVRECURSE_... bits; others are ignored.
 * @return the result of the last callback of this directory itself, 0 if there was none or nothing could be listed. A
 *         callback that gave KVRECURSE_REMEMBERED for a directory of this level is returned instead of a last result of
 *         0, unless a later callback gave another result than 0. 0xFFFFFFFF without a callback, for what kvOSFileIsDir
 *         refuses, and when a path on any level did not fit in 4096 bytes: what fits is walked all the same.
 *
 * Last error: EINVAL without a callback or directory, ENAMETOOLONG when a path did not fit.
 * Threads:    the callback runs on the caller's thread. It must neither throw nor end its thread.
 */
KVUTIL_API uint32_t kvOSRecurseDirectory(void *pContext, const char *pDirectory, kvOSRecurseCallback pCallback,
                                         uint32_t dwFlags);

#ifdef __cplusplus
}
#endif

#endif
