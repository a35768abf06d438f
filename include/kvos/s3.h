// S3 objects as files: addresses, credentials and the client's settings, in builds with S3 support.
//
// An object is opened, read, written, listed and deleted by the calls of kvos/file.h, kvos/find.h and
// kvos/attributes.h. What stands here is what those calls go by: how a locator is split, where keys are found, and the
// variables that a host may set. A build without S3 support has kvOSAwsParse and kvOSAwsAccess alone, and of
// kvos/locator.h kvOSUseAws, each with the answer that its docstring gives for that build; whatever else is declared
// here is then not in the library.
//
// The variables are plain ones that nothing locks: a host sets them before it starts its threads.
#ifndef KVOS_S3_H
#define KVOS_S3_H

#include <stddef.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
#include <memory>

/* The inner client's types, for the one call that its threads make. */
namespace kv::file::s3 {
class Client;
struct GetObjectRequest;
struct ObjectBody;
template <class Result>
class Answer;
struct AsyncCallerContext;
}  // namespace kv::file::s3

extern "C" {
#endif

/* Users of the client: one for each open S3 handle, enumeration and running deletion. Meant: the last regular stop
 * takes it from 1 to 0 and leaves the client's libraries running; the next start readies them again. */
extern KVUTIL_API int64_t glAmazonS3Refs;

/* The region that a search for a bucket's region starts from, where the key file names none. "us-east-1" at start. */
extern KVUTIL_API char gszAwsRegion[32];

/* Not 0: requests go out as HTTP, not HTTPS. 0 at start; every open and every enumeration reads it from "S3DisableSSL"
 * under "MediaKiln\Default" in the default store, where it stands there. Meant: a deletion does not look at it. */
extern KVUTIL_API uint32_t sdwS3DisableSSL;

/* 0: the certificate of a host that the locator names is not verified. 1 at start; read like the other, from
 * "S3VerifySSL". Without such a host it has no effect. Meant: a deletion at such a host never verifies. */
extern KVUTIL_API uint32_t sdwS3VerifySSL;

/**
 * Splits the address of an S3 object.
 *
 * The forms, of which any may hold "access:secret@" behind its scheme:
 *
 *     s3://host/bucket/key             host "host",    bucket "/bucket", key "key"
 *     https://s3.rest/bucket/key       host "s3.rest", bucket "/bucket", key "key"
 *     https://bucket.s3.rest/key       host "s3.rest", bucket "/bucket", key "key"; with credentials "@bucket"
 *
 * The provider's global S3 host gives an empty host, which stands for the provider's endpoint of the region. Empty
 * pieces between slashes are dropped; a slash at the end of the key stays. The content type is that of kvGetMimeType
 * for the key's extension.
 *
 * Meant: the host is where "s3." first stands, else "S3.", wherever that is, in a key as well; the credentials end at
 * the first "@", in a key as well; a later piece of the path that begins with "s3." is dropped. A text without "s3."
 * that does not begin with "s3://" leaves all buffers as they are.
 *
 * @param pLocator      not changed.
 * @param pHost         256 bytes, zeroed, like all that follow.
 * @param pBucket       4096 bytes; receives the bucket with the character ahead of it, "/" or "@".
 * @param pKey          4096 bytes. Meant: the key is appended to what stands there.
 * @param pContentType  256 bytes.
 * @param pAccessKey    256 bytes; left alone where the locator has none, like pBucket and pSecretKey.
 * @param pSecretKey    256 bytes.
 *
 * A text that does not fit makes all six buffers empty. A build without S3 support looks at pKey alone and stores the
 * content type of what stands there.
 *
 * Last error: ENAMETOOLONG when a text does not fit, EINVAL for a null pointer; otherwise untouched.
 */
KVUTIL_API void kvOSAwsParse(const char *pLocator, char *pHost, char *pBucket, char *pKey, char *pContentType,
                             char *pAccessKey, char *pSecretKey);

/**
 * Reads the credentials for a bucket from a key file: "/etc/Korvane/<bucket>.csv" or, if that is missing,
 * "/etc/Korvane/rootkey.csv". The redirect of the file layer applies to both.
 *
 * A line that begins with "AWSAccessKeyId", "AWSSecretKey" or "AWSRegion" gives what stands behind the next character,
 * up to the end of the line; the first of each that is not empty counts, other lines are passed over.
 *
 * @param pAccessKey, pSecretKey, pRegion  256 bytes each; cleared first, and on failure.
 * @param pBucket  as kvOSAwsParse gives it.
 * @return 1 when a file was read, meant also when nothing in it counted; 0 when not, and always in a build without S3
 *         support, which looks at nothing.
 *
 * Last error: ENOENT, that of kvOSCreateFile, EFBIG for a file of more than 64 KiB, ENAMETOOLONG for a path or a value
 *             that does not fit, EINVAL for a null pointer.
 * Messages:   "\nKeyFile<%s> Does not exist ", "\nKeyFile<%s> UNABLE TO OPEN error = %d (0x%x) ", the latter also for a
 *             file or a value that is too long, and those of kvOSCreateFile. Never a key.
 */
KVUTIL_API uint8_t kvOSAwsAccess(char *pAccessKey, char *pSecretKey, char *pRegion, const char *pBucket);

/**
 * The address of gszAwsRegion. An empty one is filled first, from "AWSRegion" under "MediaKiln\Default" in the default
 * store; where that is missing, "us-east-1" is stored in both, and the store is saved. Meant: as the variable starts
 * filled, the store is not asked until somebody has cleared it. A text of more than 31 bytes counts as missing, and
 * stays in the store.
 */
KVUTIL_API char *getAwsRegion(void);

/* ---- Reading: blocks that are fetched ahead ---- */

/*
 * An object is read through blocks, each fetched by one request of its own, so that the next one is on its way while
 * the caller uses the last. kvOSReadFile does all of this by itself; the calls are exported for hosts that steer it.
 *
 * They take an S3 handle of kvOSCreateFile, and treat the handles 0 and -1 and those of other kinds like an object
 * without blocks. A handle belongs to one thread at a time; blocks are completed on threads of the client.
 */

/* Size of a block in bytes, 5 MiB at start; 0 switches the fetching ahead off. */
extern KVUTIL_API uint32_t gdwS3DefaultCacheSize;

/* The number of blocks above which the longest unused ones go, 8 at start. A request may add one more. Meant: with 0
 * nothing is kept, so that no read succeeds. */
extern KVUTIL_API uint32_t gdwS3MaxCacheBlocks;

/**
 * One block. It belongs to the library: a pointer to it is good until the block goes, by a call for the same handle or
 * because a request for the handle failed for good.
 *
 * Until fDone is 1 another thread completes the record: look at nothing else before, and at fDone with an atomic read.
 */
typedef struct sCacheElem {
    struct kvOSFileHandle *pOwner; /* the record behind the handle; null once the handle let the block go */
    void *pRequest;                /* the request, kept for retries; the library's own */
    uint8_t fDone;                 /* 1: the block may be used, 0: the request is under way */
    uint8_t *pData;                /* the bytes, room for the whole range; null once the request failed for good */
    uint64_t qwStart;              /* file offset of the first byte */
    uint64_t qwEnd;      /* file offset after the last byte; lowered to what arrived; both 0 after a failure */
    uint32_t dwLoadedMs; /* clock of kvOSGetMs at completion */
    uint32_t dwUsedMs;   /* the same, then of the last read that finished in this block */
    uint64_t qwRetries;  /* retries so far */
} sCacheElem;

/**
 * Requests a block and returns at once.
 *
 * The range ends at the end of the object. One that reaches it and holds at most 65,535 bytes begins 64 KiB ahead of
 * it, or at 0 in an object of at most 64 KiB.
 *
 * A request that fails is repeated three times, each after 2 ms; one at which nothing moves for 30 s has failed, so
 * that a silent store holds a reader for two minutes. Meant: after the last failure it is the last block of the list
 * that goes, whichever failed; the failed one stays in the list, empty, if that was another.
 *
 * @param qwSize  bytes.
 * @return the block; null for a start at or past the end of the object, for a size of 0, when memory is short, and when
 *         the request has failed for good by then.
 *
 * Messages: "S3Warning: Retry read block %llu-%llu Error: %s" for each repetition, "S3Error: Failure on second try read
 *           block %d-%d Error: %s" in the end; none once the handle is closed.
 */
KVUTIL_API sCacheElem *s3cRequestBlock(int64_t hFile, uint64_t qwStart, uint64_t qwSize);

/**
 * Reads at the position from blocks that hold it, waiting for those under way, and moves the position on.
 *
 * Meant: a read that is served in part, other than up to the end of the object, is a miss as a whole and leaves the
 * position as it was. Of an object that turned out shorter nothing is delivered beyond what arrived.
 *
 * @param pDestination  room for dwBytes bytes.
 * @param pdwRead       null, or receives the bytes read, of a hit alone.
 * @return 1 when the read was served; 0 on a miss.
 *
 * Once the process ends (exit, from the destructors of static objects on) requests under way are abandoned and no new
 * ones are made: blocks that are there can still be read, and all else is a miss.
 *
 * Messages: "\nERROR: Overwrite cache[%d] start (%d >= %d) " and "\nERROR: Overwrite cache[%d] end (%d >= %d) " for a
 *           block that shrank below the position while it was waited for; meant: the three numbers are offset, length
 *           and an address.
 */
KVUTIL_API uint32_t s3cReadFromCache(int64_t hFile, void *pDestination, uint32_t dwBytes, uint32_t *pdwRead);

/**
 * Lets go of the finished block that has not been used for longest, of equal ones the first in the list; the last of
 * the list takes its place. A block under way is never taken.
 *
 * @return 0; 0xFFFFFFFF when no block is finished.
 */
KVUTIL_API uint32_t s3cDeleteOldestCacheBlock(int64_t hFile);

/**
 * The way of a miss: requests a block at the position, of the bytes wanted and 64 KiB more but at least of
 * gdwS3DefaultCacheSize, waits for it, lets surplus blocks go, and reads. Parameters, result and messages are those of
 * s3cReadFromCache and s3cRequestBlock.
 *
 * Last error: EIO for a miss behind a request, also when another request that failed meanwhile took the block away.
 */
KVUTIL_API uint32_t s3cGetCacheAndRead(int64_t hFile, void *pDestination, uint32_t dwBytes, uint32_t *pdwRead);

/**
 * Requests the block behind the last requested range if the position lies in that range, and then waits until it is
 * there, at most for 1 ms. Surplus blocks go first.
 *
 * @return 0 when the end of the object has been requested, otherwise 1.
 */
KVUTIL_API uint32_t s3cLoadNextCacheChunk(int64_t hFile);

/**
 * A whole read: from the blocks, with one more fetched ahead, or else by the way of a miss. Counts hits and misses.
 * Parameters, result, last error and messages are those of s3cGetCacheAndRead.
 *
 * Meant: nothing is fetched ahead of a miss, and a read hits only if blocks hold the whole of it. Reads in order are
 * served ahead where two of them fit in gdwS3DefaultCacheSize; of larger ones most are misses, and of more than half of
 * it and 64 KiB all are, each with a request of its own.
 */
KVUTIL_API uint32_t s2cRead(int64_t hFile, void *pDestination, uint32_t dwBytes, uint32_t *pdwRead);

/** Lets go of every block, without waiting for those under way. Reading may begin anew; kvOSCloseFile does the same. */
KVUTIL_API void s3cClose(int64_t hFile);

/* ---- Writing: part objects ---- */

/*
 * What is written to an object is collected in a block of 60 MiB. A full block is stored as a part object, under a key
 * of its own beside that of the object; a block that holds less is stored when the position leaves it. kvOSCloseFile
 * has the store join the parts to the object and then deletes them. The calls here take an S3 handle of kvOSCreateFile;
 * for all others they answer 0 and do nothing.
 *
 * What the object is then:
 * - The parts that this handle wrote, and nothing else: writing into an object that was there replaces the whole of it.
 *   Bytes between those written are zeros, and it ends with the last one written, though its old size may be more.
 *   Meant: a handle that was opened for reading may be written to, as the access is not looked at.
 * - It ends, with messages, ahead of a part of which not a byte was written. Meant: the close has each such part copied
 *   all the same, so that a write far behind the end costs a request for every 60 MiB that it passed over.
 * - A cut (kvOSSetEndOfFile) is the object's end; what was cut off never comes back, also where more is written behind.
 * - A cut to 0, or one of an object to which nothing was written, makes none: what was there before stays.
 * - Where a part that has to be filled up or shortened can't be loaded or stored, three times, no object is made. The
 *   message of a failed completion says so ("IncompletePart"), and the parts stay below the prefix that it names.
 * - Meant: a part whose copy into the object the store refuses is left out, of which a message tells. Those behind it
 *   move up, and all parts are deleted.
 *
 * Meant: a write of which a part is refused by the store counts as done, and a close as well; messages alone tell of
 * it. But a write into a part that was stored before and can't be loaded fails, with the request's last error, and
 * leaves what is stored; of a longer one *pdwWritten then tells what was taken, and the position stands behind it.
 *
 * A store that falls silent holds the close for up to 2 minutes a part, and 10 at the end. Objects are to be closed
 * ahead of the end of the process, and in the process that opened them: not in a fork of it.
 *
 * Meant: parts that lie wholly behind a cut are not deleted. Neither are some of more than 1000, as each deletion looks
 * for its part among the first 1000 names that the store lists; all of them are in the object all the same. How many
 * parts an upload may have (10,000 in many stores, 600 GB) is the store's to tell, at the close.
 */

/**
 * The key of a part object: "clips/a_<identifier>/a_1.mxf" for the first part of "clips/a.mxf".
 *
 * The key is taken apart by kvOSSplitPath. Meant: so a key without "/" is a folder in that of its parts,
 * "a.mxf/a_<identifier>/a_1.mxf". The identifier is made with the first part's name of a handle and then kept; a handle
 * that has one is finished at its close, whether or not a part was stored.
 *
 * @param dwPart  index of the part, from 0; the name holds it plus 1.
 * @param pOut    4096 bytes; an empty text if the key does not fit.
 * @return 1; 0 with errno ENAMETOOLONG.
 */
KVUTIL_API uint32_t kvOSCreateAWSObjName(uint32_t dwPart, int64_t hFile, char *pOut);

/**
 * Stores the block as its part object, if it has bytes that are not stored.
 *
 * @return 1 when nothing is left to store; 0 when the store refused it, and the block stays as it is.
 *
 * Messages: "Aws::GetObject exception/error: %s %s\n".
 */
KVUTIL_API uint32_t skvOSWriteAWSBlock(int64_t hFile);

/**
 * Loads the part that holds a position into the block, whose own bytes are stored first. Nothing happens where the
 * block is that part's already.
 *
 * @param qwPosition  bytes from the start of the file.
 * @return 1; 0 when the part could not be loaded, and the block keeps its bytes; 0 with errno EFBIG from the part on
 *         whose number is no signed word.
 *
 * Messages: those of skvOSWriteAWSBlock; "Aws::Error exception: %s \n" and "Aws::Error message: %s \n".
 */
KVUTIL_API uint32_t kvOSReadAWSBlock(int64_t hFile, uint64_t qwPosition);

/** One part that an upload is completed with. */
typedef struct sCompletedPart {
    const char *pETag;
    int32_t nPartNumber;
} sCompletedPart;

/** Whether the first part's number is lower: 1 or 0. For sorting; a null pointer comes after all others. */
KVUTIL_API uint32_t compareParts(const sCompletedPart *pA, const sCompletedPart *pB);

/**
 * A permission as text: 0 "NOT_SET", 1 "FULL_CONTROL", 2 "WRITE", 3 "WRITE_ACP", 4 "READ", 5 "READ_ACP", all others
 * "*unknown!*". The text is the library's.
 */
KVUTIL_API const char *GetPermissionString(int32_t nPermission);

#ifdef __cplusplus
}

/**
 * What the client's threads call with the outcome of a block's request: completes the block, or has its request
 * repeated. A block that nobody waits for any more is left alone.
 *
 * @param context  its text is the block's address in decimal, and the block still lives. Meant for contexts that the
 *                 library made, which see to that.
 */
extern "C" KVUTIL_API void s3cObjectResponsReceived(
    kv::file::s3::Client &client, const kv::file::s3::GetObjectRequest &request,
    const kv::file::s3::Answer<kv::file::s3::ObjectBody> &outcome,
    const std::shared_ptr<const kv::file::s3::AsyncCallerContext> &context);

static_assert(sizeof(void *) != 8 || (offsetof(sCacheElem, fDone) == 16 && offsetof(sCacheElem, pData) == 24 &&
                                      offsetof(sCacheElem, qwEnd) == 40 && offsetof(sCacheElem, dwLoadedMs) == 48 &&
                                      offsetof(sCacheElem, qwRetries) == 56 && sizeof(sCacheElem) == 64),
              "the fields of a block follow each other in the stated order");
#endif

#endif
