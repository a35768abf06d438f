// Files: one handle and one set of calls over local paths, scratch memory files, URLs and S3 objects.
#ifndef KVOS_FILE_H
#define KVOS_FILE_H

#include <stdint.h>
#include <wchar.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Kinds of handles, as the record behind a handle names them. Every other value counts as local. */
#define KVFILE_LOCAL 0x00000001u
#define KVFILE_CURL 0x00010000u
#define KVFILE_S3 0x00020000u
#define KVFILE_MEMORY 0x40000000u

/* Bits of dwAccess. */
#define KVFILE_READ 0x80000000u
#define KVFILE_WRITE 0x40000000u

/* Values of dwCreation. */
#define KVFILE_CREATE_NEW 1u
#define KVFILE_CREATE_ALWAYS 2u
#define KVFILE_OPEN_EXISTING 3u
#define KVFILE_OPEN_ALWAYS 4u
#define KVFILE_TRUNCATE_EXISTING 5u

/* The handle that names no file. */
#define KVFILE_INVALID ((int64_t)-1)

/**
 * The overlapped record of the Win32 calls. Only qwOffset is read: the position at which a transfer begins, in bytes
 * from the start. A transfer with a record completes before the call returns, like every other.
 */
typedef struct kvOSOverlapped {
    uint64_t qwInternal;     /* not looked at */
    uint64_t qwInternalHigh; /* not looked at */
    uint64_t qwOffset;       /* bytes from the start of the file */
    void *hEvent;            /* not looked at, never signalled */
} kvOSOverlapped;

/**
 * Opens a locator for reading, writing or both, whatever kind of file it names.
 *
 * Tried in this order: "mem://" in any case, in the text as given; then, in the text after the configured redirect, an
 * S3 object (in builds with S3 support), an HTTP, HTTPS or FTP URL, a local path. Two opens of one "mem://" text are
 * two empty files. A local file is not handed on to programs that are started while it is open.
 *
 * @param path        UTF-8. A text of 4096 bytes or more, before or after the redirect, is refused with ENAMETOOLONG,
 *                    whatever it names.
 * @param dwAccess    KVFILE_READ, KVFILE_WRITE, or both. Any other value acts on a local file like both.
 * @param dwShare     3 is usual; bit 2 (share for writing) with write access sends a warning and changes nothing else.
 * @param pSecurity   stored and handed to attached outputs; never looked at. The same holds for hTemplate.
 * @param dwCreation  one of KVFILE_CREATE_NEW to KVFILE_TRUNCATE_EXISTING. On a local file: write-only access with 1 or
 *                    2 truncates or creates, with any other value opens what is there and creates what is missing;
 *                    read-and-write access with 1 or 2 truncates or creates, with any other value needs the file.
 *                    Meant: 1 truncates a file that exists, 5 truncates nothing, 3 with write-only access creates, and
 *                    read-only access ignores the value. On an S3 object: 3 needs the object, 4 takes whatever keeps
 *                    it from being read for an empty one, and every other value, meant: with any access, begins an
 *                    upload, that is, needs the right to write.
 * @param dwFlags     stored, and handed to attached outputs without bit 0x40000000; an open does not look at it.
 * @return the handle, owned by the caller until kvOSCloseFile; -1 on failure; meant: 0 for a null path.
 *
 * Last error: errno as the system left it; 2 for a null path. Of a URL or an S3 object what comes nearest: ENOENT for
 *             one that is not there, EACCES for one that is refused; ENAMETOOLONG for an S3 address with a part that
 *             does not fit (kvOSAwsParse).
 * Messages:   "kvOSCreateFile(%s,...)-FAIL=..." for every failed local open, a missing file included, and for a path
 *             that is too long, which it shows cut; "Error: opening <%s> " for a URL, and there "Unable to open oauth
 *             file <%s>", those of kvOSOAuthAuthorize, and of a redirect that was not followed "\nRedirect return,
 *             likely your token authentication is not setup properly, so it is attempting a oath2 redirect\n" with
 *             the headers; "Aws::HeadObject exception/error    ONE: %s %s\n" for an S3 object that is there or may be
 *             and can't be opened, "Aws::HeadObject exception/error     TWO: %s %s\n" for an upload that can't begin,
 *             and those of kvOSAwsAccess; "Writing <%d> being open for write with write share enabled!" for shared
 *             writing; none for an empty path. The secret of a login in a locator is shown as "***".
 * Threads:    may be called from any thread. A handle belongs to one thread at a time.
 */
KVUTIL_API int64_t kvOSCreateFile(const char *path, uint32_t dwAccess, uint32_t dwShare, void *pSecurity,
                                  uint32_t dwCreation, uint32_t dwFlags, int64_t hTemplate);

/**
 * kvOSCreateFile for a wide path, which is turned into UTF-8 first.
 *
 * Meant: of a letter beyond U+FFFF only the low 16 bits survive that, so that another name is opened; where they are 0,
 * which would end the path, the open is refused with EILSEQ.
 *
 * @param path  zero-terminated; null and empty give -1 without a message.
 */
KVUTIL_API int64_t kvOSCreateFileW(const wchar_t *path, uint32_t dwAccess, uint32_t dwShare, void *pSecurity,
                                   uint32_t dwCreation, uint32_t dwFlags, int64_t hTemplate);

/**
 * Attaches a further file that receives what is written through this handle, and follows its seeks and its close.
 *
 * At most three can be attached, to any handle opened for writing that is not a memory file. A local output is
 * truncated. kvOSSeek, kvOSSeekEnd, kvOSSetFilePointer, kvOSSetFilePointerEx, kvOSSetEndOfFile, kvOSFlushFileBuffers,
 * kvOSWriteFile, kvOSfputc, kvOSfputs, kvOSfprintf and kvOSCloseFile go to the outputs first. Meant: of an S3 handle
 * they get nothing by kvOSWriteFile, and the text of the other three once instead of twice.
 *
 * @return 1, meant also when the output itself could not be opened (it then does not count); 0 for the handles 0 and
 *         -1, a memory file, a handle without KVFILE_WRITE, or one that has three outputs.
 *
 * Messages: those of kvOSCreateFile.
 */
KVUTIL_API uint32_t kvOSAddOutputFile(int64_t hFile, const char *path);

/**
 * Closes a handle and its attached outputs, and frees it whatever the system reports. Buffered local data reaches the
 * system here at the latest.
 *
 * An S3 object that was written to comes into being here: its parts are joined in the store and then deleted, also when
 * they could not be joined (but see kvos/s3.h, "IncompletePart"). Meant: what fails of this is told by messages alone.
 * A handle that nothing was written to makes no object, and the upload that its open began stays behind in the store.
 *
 * @return 1; 0 for the handles 0 and -1, and when closing a local file failed (data may not have reached the disk).
 *
 * Last error: errno of the failed close.
 * Messages:   "kvOSCloseFile(%d)-FAIL=0x%08X(%d) " for a failed close with an error above 0 other than 997. Of an S3
 *             object that was written to, for each part "Aws::Object name: %s and object size %llu \n" and
 *             "Aws::Deleted object: %s \n"; for what the store refuses those of skvOSWriteAWSBlock and, with the
 *             store's words, "Aws::HeadObject exception/error    THREE: %s %s\n", "Aws::Deleted err exception: %s \n"
 *             with "Aws::Deleted err ERROR: %s \n" or "Aws::Deleted err message: %s \n", "Aws::GetObject <%s>
 *             exception/error: %s %s\n", "\nAws::HeadObject exception/error    FOUR: %s %s\n" and
 *             "\nAws::HeadObject exception/error  FIVE: %s %s\n"; for parts that are missing "Aws:: Found object, but
 *             part does not exist <%d, max=%d> ", the same with "!Found", and "Aws:: Adding first object, but list is
 *             empty <%d, max=%d> ".
 */
KVUTIL_API uint32_t kvOSCloseFile(int64_t hFile);

/**
 * Reads up to dwCount bytes at the position and moves it on.
 *
 * A read across the end delivers what is there and succeeds. With an overlapped record the position is first set to its
 * qwOffset on a local file; a memory file reads at its position.
 *
 * @param pBuffer      room for dwCount bytes; null is refused with EINVAL unless dwCount is 0.
 * @param pdwRead      receives the bytes read; may be null on local and memory files. On a local file, bytes that came
 *                     before an error are counted and the read succeeds; without a count it fails.
 * @param pOverlapped  null, or a record whose qwOffset is used.
 * @return 1, or 0. On a local file at its end: 0 bytes, and 1. On all other kinds at the end: 0; meant. Meant:
 *         a read of less than 1 MiB from a URL counts what was wanted, with zeros for what did not come.
 *         Meant: a count of 0xFFFFFFFF is refused like an invalid handle.
 *
 * Last error: errno of the failed read, EIO for an S3 object; as it was at the end of a memory file or an S3 object.
 * Messages:   "kvOSReadFile(INVALID_HANDLE_VALUE) " for the handles 0 and -1; "kvOSReadFile(%d %d)-FAIL=..." for an
 *             error above 0 other than 997. Error 59 sends "...unexpected network error..." and tries again, for ever.
 *             Of an S3 object those of s3cRequestBlock and s3cReadFromCache.
 */
KVUTIL_API uint32_t kvOSReadFile(int64_t hFile, void *pBuffer, uint32_t dwCount, uint32_t *pdwRead,
                                 kvOSOverlapped *pOverlapped);

/**
 * Writes dwCount bytes at the position and moves it on; attached outputs get the same bytes first, but for an S3
 * handle's.
 *
 * A memory file grows without limit; a write beyond its end leaves the gap as whatever the buffer holds. On a local
 * file the bytes may stay in the stream's buffer until kvOSCloseFile, which is then the call that reports a full disk.
 * An S3 object is collected in parts of 60 MiB and made by kvOSCloseFile; it is then what was written, from the first
 * byte on, with zeros where parts were left open, in place of an object that was there before. Meant: a whole part
 * that is left out breaks the object off there, of which messages tell; without the first one there is none.
 * On a URL each call is a request, with a zero byte behind the data unless it is JSON ("{" first) by POST or PATCH.
 *
 * @param pBuffer     dwCount bytes; null is refused with EINVAL unless dwCount is 0. Meant: of a URL, the answer
 * replaces them as far as there is room.
 * @param pdwWritten  receives the bytes written; may be null on local and memory files. On a URL it is input as well,
 *                    the room of pBuffer for the answer or 0 for none, and receives what was sent or came.
 * @param pOverlapped null, or a record whose qwOffset is used (local files). Meant: on a URL a text in its place, which
 *                    begins with "POST" or "PATCH" in any case; null sends a PUT, which needs KVFILE_WRITE.
 * @return 1, meant also for a short write whose count was asked for, and for a POST or PATCH whatever the status; 0
 * when nothing could be written. Meant, on an S3 object: dwCount in place of 1, 0 for no bytes, and success also when
 * the store refuses a part, which messages alone tell; 0 when a stored part can't be loaded to write into it.
 *
 * Last error: errno of the failed write. On a memory file or an S3 object EINVAL after a refused seek, EFBIG or ENOMEM
 *             without room.
 * Messages:   "kvOSWriteFile(INVALID_HANDLE_VALUE) " for the handles 0 and -1; "ERROR(kvFile): kvOSWriteFile(%d
 *             %d)-FAIL=..." for an error above 0 other than 997.
 *             Of an S3 object those of skvOSWriteAWSBlock and kvOSReadAWSBlock, and "ERROR(kvFile): Unable to allocate
 *             AWS cache block\n\r".
 */
KVUTIL_API uint32_t kvOSWriteFile(int64_t hFile, const void *pBuffer, uint32_t dwCount, uint32_t *pdwWritten,
                                  kvOSOverlapped *pOverlapped);

/**
 * Sets the position, in bytes from the start.
 *
 * On every kind but local no I/O is done, and a target below 0 or beyond the size is refused unless the handle was
 * opened with creation 1 or 2. Meant: a refused target leaves the position at all ones, and kvOSTell says -1.
 *
 * @return the position, or -1.
 *
 * Last error: errno of the failed seek of a local file, which is also the call that may meet a full disk with what was
 * written before; as it was on all other kinds.
 */
KVUTIL_API int64_t kvOSSeek(int64_t hFile, int64_t qwPosition);

/** Sets the position to the end of the file. Returns the new position, or -1. */
KVUTIL_API int64_t kvOSSeekEnd(int64_t hFile);

/** The position in bytes from the start; -1 for the handles 0 and -1, and after a refused seek. */
KVUTIL_API int64_t kvOSTell(int64_t hFile);

/**
 * Moves the position by a distance given in two halves, as the Win32 call of that name does.
 *
 * On a local file a lone low word is signed. Meant, on every other kind: a lone low word is unsigned, so that it never
 * goes backwards; method 2 takes the size less the distance's magnitude, whichever its sign; and no range is checked.
 *
 * @param lDistance      low 32 bits of the distance in bytes.
 * @param plDistanceHigh null, or the high 32 bits; receives the high 32 bits of the new position.
 * @param dwMethod       1 from the position, 2 from the end, anything else from the start.
 * @return low 32 bits of the new position; 0xFFFFFFFF on failure (and, on a local file, in *plDistanceHigh).
 */
KVUTIL_API uint32_t kvOSSetFilePointer(int64_t hFile, int32_t lDistance, int32_t *plDistanceHigh, uint32_t dwMethod);

/**
 * Moves the position by a 64-bit distance.
 *
 * Meant, on every kind but local: method 2 takes the size less the distance; a result below 0 or beyond the size
 * becomes all ones, and the call succeeds all the same.
 *
 * @param pqwNewPosition null, or receives the new position; -1 on failure.
 * @param dwMethod       1 from the position, 2 from the end, anything else from the start.
 * @return 1; 0 on failure.
 */
KVUTIL_API uint32_t kvOSSetFilePointerEx(int64_t hFile, int64_t qwDistance, int64_t *pqwNewPosition, uint32_t dwMethod);

/**
 * The size of an open file in bytes, in two halves.
 *
 * @param pdwHigh null, or receives the high 32 bits; 0 for an invalid handle.
 * @return the low 32 bits; 0 for the handles 0 and -1. All ones in both halves: a URL of unknown length.
 */
KVUTIL_API uint32_t kvOSGetFileSize(int64_t hFile, uint32_t *pdwHigh);

/**
 * The size of an open file in bytes.
 *
 * @param pqwSize null, or receives the size; 0 for an invalid handle, and for a local file that has none, as a pipe.
 * @return 1; 0 for the handles 0 and -1.
 */
KVUTIL_API uint32_t kvOSGetFileSizeEx(int64_t hFile, uint64_t *pqwSize);

/**
 * The size in bytes of what a locator names, found by opening and closing it; 0 if it can't be opened. Of a folder it
 * is whatever the system says of one. Messages: those of kvOSCreateFile.
 */
KVUTIL_API uint64_t kvOSGetFileSizeName(const char *path);

/**
 * Cuts the file at the position; attached outputs are cut first.
 *
 * @return 1; 0 on failure and for the handles 0 and -1. Meant: on every kind but local also 0 when the position is
 * already the end.
 *
 * Messages: "kvOSSetEndOfFile(%d)-FAIL=0x%08X(%d) " for an error above 0 other than 997 on a local file.
 */
KVUTIL_API uint32_t kvOSSetEndOfFile(int64_t hFile);

/**
 * Does nothing but pass the call on to attached outputs.
 *
 * Meant: the stream of a local file is not flushed, and the result says so; close the file to push its data out.
 *
 * @return 0 on local files and for the handles 0 and -1, 1 on all others.
 */
KVUTIL_API uint32_t kvOSFlushFileBuffers(int64_t hFile);

/**
 * 1 unless the file is a URL opened with anything but KVFILE_READ alone; 0 for the handles 0 and -1. Meant: only the
 * handle is asked, so that a pipe, too, answers 1.
 */
KVUTIL_API uint32_t kvOSCanSeekFile(int64_t hFile);

/**
 * Reads a line, without its ending, of at most dwSize - 1 bytes, and moves the position behind it.
 *
 * Meant: the first line feed and the first carriage return of the whole chunk read each count one byte of line ending,
 * so that a carriage return further on than the line feed moves the position one byte too far. The call is for text: a
 * zero byte ends the line where it stands, and the position does not pass it unless the chunk holds a line ending. It
 * is for files that can seek: what a pipe gave beyond the line is lost.
 *
 * @return pBuffer; null at the end, on failure, for a null buffer and for a size below 2.
 *
 * Messages: those of kvOSReadFile; a size of 0 sends "kvOSReadFile(INVALID_HANDLE_VALUE) ".
 */
KVUTIL_API char *kvOSfgets(char *pBuffer, uint32_t dwSize, int64_t hFile);

/** Writes one byte. Meant: attached outputs get it twice. Returns 1, or 0xFFFFFFFF on failure. */
KVUTIL_API uint32_t kvOSfputc(int nCharacter, int64_t hFile);

/** Writes a text without its terminator. Meant: attached outputs get it twice. Returns 1, or 0xFFFFFFFF on failure. */
KVUTIL_API uint32_t kvOSfputs(const char *pText, int64_t hFile);

/**
 * Writes formatted text of any length, without its terminator. Meant: attached outputs get it twice.
 *
 * @return the bytes written to the main file; 0 on failure.
 */
KVUTIL_API uint32_t kvOSfprintf(int64_t hFile, const char *pFormat, ...) KVUTIL_PRINTF(2, 3);

/**
 * Whether the end was reached: on a local file once a read has met it and until a seek or a question for the size, on
 * all others when the position is at or past the size.
 *
 * @return 1 at the end and for the handles 0 and -1, else 0.
 */
KVUTIL_API uint32_t kvOSfeof(int64_t hFile);

/** Always 1: a transfer with an overlapped record completes before its call returns. Nothing is looked at. */
KVUTIL_API uint32_t kvOSHasOverlappedIoCompleted(const kvOSOverlapped *pOverlapped);

/** Always 1, for the same reason; nothing is stored in *pdwTransferred. */
KVUTIL_API uint32_t kvOSGetOverlappedResult(int64_t hFile, kvOSOverlapped *pOverlapped, uint32_t *pdwTransferred,
                                            uint32_t dwWait);

/** Sets the calling thread's errno and returns the number. */
KVUTIL_API uint32_t kvOSSetLastError(uint32_t dwError);

/** The calling thread's errno. */
KVUTIL_API uint32_t kvOSGetLastError(void);

/**
 * Writes a whole buffer to a new file, replacing one that exists.
 *
 * @return bytes written; 0 if the file could not be opened, written or closed without loss.
 *
 * Last error: errno of the call that failed. Messages: those of kvOSCreateFile, kvOSWriteFile and kvOSCloseFile.
 */
KVUTIL_API uint32_t kvOSSaveBuffer(const char *path, const void *pBuffer, uint32_t dwCount);

#ifdef __cplusplus
}
#endif

#endif
