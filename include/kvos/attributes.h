// Questions about a file by its name, changes to it by its name, and the directories that applications rely on.
//
// The calls that take a path apply the redirect (kvOSReDir) first and decide by the redirected text whether it is a
// network path: one that kvOSUseAws accepts, or that begins with "http://", "https://" or "ftp://". Those get a fixed,
// simpler answer, given below under "network". A null path, or one that does not fit in 4096 bytes after the redirect,
// gets the call's failure value with last error EINVAL or ENAMETOOLONG, unless the call says otherwise.
//
// Results differ from call to call and are meant to. Unless a call says otherwise it sends no message, may be made
// from any thread, and leaves errno as the system left it.
#ifndef KVOS_ATTRIBUTES_H
#define KVOS_ATTRIBUTES_H

#include <stdint.h>
#include <sys/stat.h>

#ifdef __cplusplus
#include <vector>
#endif

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {

/*
 * Names that count as existing without any look at the file system or the network, compared exactly. Empty at start;
 * the library only reads it, without a lock: a host fills it before it starts its threads and keeps the texts alive.
 */
extern KVUTIL_API std::vector<const char *> gvecNames;
#endif

/* Attribute bits. Hidden and system are never set. */
#define KVATTR_READONLY 0x00000001u
#define KVATTR_HIDDEN 0x00000002u
#define KVATTR_SYSTEM 0x00000004u
#define KVATTR_DIRECTORY 0x00000010u
#define KVATTR_NORMAL 0x00000080u /* no other bit is set */
#define KVATTR_INVALID 0xFFFFFFFFu

/* What the three times of a network path are: 1 July 1995 as units of 100 ns since 1601. */
#define KVFILETIME_NETWORK ((int64_t)0x01BA476722F82000)

/** 1 if the path, as given, is on gvecNames; else the answer of kvOSFileExistsInternal. Null gives 0. */
KVUTIL_API uint32_t kvOSFileExists(const char *pPath);

/**
 * 1 if the path names something that exists, of any type, else 0; gvecNames is not asked.
 *
 * A local path exists if stat finds it or, failing that, if it can be opened for reading. A network path exists if it
 * can be opened for reading, which contacts the server and sends the messages of that open.
 */
KVUTIL_API uint32_t kvOSFileExistsInternal(const char *pPath);

/** Time of the last status change, in seconds since 1970; 0 on failure. Network: KVFILETIME_NETWORK, unasked. */
KVUTIL_API int64_t kvOSFileTimeCreated(const char *pPath);

/** Time of the last modification, in seconds since 1970; 0 on failure. Network: KVFILETIME_NETWORK, unasked. */
KVUTIL_API int64_t kvOSFileTimeModified(const char *pPath);

/** Time of the last access, in seconds since 1970; 0 on failure. Network: KVFILETIME_NETWORK, unasked. */
KVUTIL_API int64_t kvOSFileTimeAccessed(const char *pPath);

/**
 * The attributes of a file or directory, links followed.
 *
 * Local: KVATTR_DIRECTORY for a directory, KVATTR_READONLY where UTIL_IsReadOnlyBitsSet says so, else KVATTR_NORMAL.
 * URL: if it exists (or is on gvecNames after the redirect), KVATTR_DIRECTORY for a text that ends in a slash or
 * backslash, else KVATTR_NORMAL. S3: KVATTR_NORMAL for an object with content; meant: KVATTR_DIRECTORY for an empty
 * one, and for whatever can't be opened, for want of a store or of rights too, where the text ends in a slash or
 * backslash.
 *
 * @return the bits; meant: 0 for a local path that stat does not find. KVATTR_INVALID for a null path, for a local path
 *         that is neither file nor directory (a socket, a device), and for a network path that does not exist.
 *
 * Last error: -1 for a null path and for what is neither file nor directory.
 * Messages:   those of kvOSCreateFile on network paths.
 */
KVUTIL_API uint32_t kvOSGetFileAttributes(const char *pPath);

/** Always 0, on network paths after the cost of kvOSGetFileAttributes: no file is hidden. */
KVUTIL_API uint32_t kvOSFileIsHidden(const char *pPath);

/** Always 0, on network paths after the cost of kvOSGetFileAttributes: no file is a system file. */
KVUTIL_API uint32_t kvOSFileIsSystem(const char *pPath);

/**
 * 1 for a directory, else 0. Network: the directory bit of kvOSGetFileAttributes.
 *
 * Meant: locally only bit 0x4000 of the mode is looked at, which sockets and block devices carry too.
 */
KVUTIL_API uint32_t kvOSFileIsDir(const char *pPath);

/** 1 if a local path exists and nobody at all, owner, group or other, has a write bit; else 0. Network: 0. */
KVUTIL_API uint32_t kvOSFileIsReadOnly(const char *pPath);

/**
 * Changes the write bits of a local file.
 *
 * A flag of 0 gives all three write bits to a file that kvOSFileIsReadOnly. Meant: any other flag, on a file that is
 * not, turns on every mode bit except the write bits and takes none away, so that the file stays writable and becomes
 * executable, and set-user-id, set-group-id and sticky go on as well: octal 0600 becomes 07755.
 *
 * @return 1 when the mode was to be changed, meant also when the path does not exist or the change was refused; 0 when
 *         the file already was as wanted; 0xFFFFFFFF for a network path, a null one and one that does not fit.
 */
KVUTIL_API uint32_t kvOSSetFileReadOnly(const char *pPath, uint32_t fReadOnly);

/**
 * 1 if the mode lets the caller's own class read and not write, else 0. The class is the owner's for an effective user
 * id equal to the owner, else the group's for an equal effective group id, else that of all others. Null gives 0.
 */
KVUTIL_API uint32_t UTIL_IsReadOnlyBitsSet(const struct stat *pStat);

/** 1 if the mode lets the caller's own class (as above) execute what is no directory, else 0. Null gives 0. */
KVUTIL_API uint32_t UTIL_IsExecuteBitsSet(const struct stat *pStat);

/**
 * Deletes a file, or a link but not its target.
 *
 * An S3 object is deleted by a client made for this call, which goes by kvos/s3.h like an open, but for this, meant:
 * it looks at no setting, always talks TLS, and verifies no certificate of a host that the locator names. Many stores
 * report success for an object that was not there.
 *
 * @return local: 1, or 0 on failure. URL: 0xFFFFFFFF. S3: meant, the reverse: 0 when deleted, 0xFFFFFFFF on failure.
 *
 * Last error: of unlink; S3: EINVAL without a bucket or a key, ENAMETOOLONG for a part that does not fit, ENOENT and
 *             EACCES as the store says, else what comes nearest to the failure.
 * Messages:   "kvOSDeleteFile failed error = -1 " with every local failure; those of kvOSAwsAccess for S3.
 */
KVUTIL_API uint32_t kvOSDeleteFile(const char *pPath);

/**
 * kvOSDeleteFile on the redirected path, which is thereby redirected a second time.
 *
 * Meant: no directory-removal call of the system is made, so that a real local directory is refused and reported.
 */
KVUTIL_API uint32_t kvOSRemoveDirectory(const char *pPath);

/**
 * Deletes what the pattern of the redirected path, a backslash and "*" finds, and then the path itself.
 *
 * Meant: "\*" is what kvOSFindFirstFile gets, and there it stands for a name that ends in a literal asterisk, beside
 * the directory and not in it. The first entry found is passed over. The content of a directory is therefore not found,
 * and the directory itself is refused by kvOSDeleteFile: the call does not remove a local directory. With a "/" at the
 * end of the path the pattern stands in the directory, and finds there just what is named "*".
 *
 * Meant: the attributes of what is neither file nor directory (KVATTR_INVALID) hold the directory bit. Such an entry is
 * treated as a directory, where nothing is found, and ends the call with 0.
 *
 * Meant: a folder of a bucket is listed, but its objects are then named with the backslash, which is part of a key, and
 * the 0 of a successful deletion ends the call with 0. It does not remove such a folder.
 *
 * @return 1 when everything found and the path itself were deleted, else 0; 0xFFFFFFFF where kvOSDeleteFile gives that
 *         for the path itself.
 *
 * Messages: those of kvOSDeleteFile.
 */
KVUTIL_API uint32_t kvOSRemoveDirectoryRecursive(const char *pPath);

/**
 * Renames a local file; both paths are redirected. Meant: the new path is not looked at, a URL text is a local name.
 *
 * @return 0; -1 on failure and for a network old path.
 */
KVUTIL_API int32_t kvOSRenameFile(const char *pOldPath, const char *pNewPath);

/**
 * Makes a directory; only the last component of the path is made.
 *
 * The process's file mode mask is 0 for a moment, unless the parent is missing: a file that another thread makes then
 * has no mask, and a mask that it sets is lost. Calls of this from several threads go one by one, so that the mask
 * stays theirs.
 *
 * @param dwMode  mode bits, of which the low 16 count, used as they stand; 0 means octal 775.
 * @return 0; -1 on failure and for a network path.
 */
KVUTIL_API int32_t kvOSMakeDir(const char *pPath, uint32_t dwMode);

/** Changes the working directory; no test for network paths. Returns 0, or -1 (ENOENT for an empty path). */
KVUTIL_API int32_t kvOSChangeDir(const char *pPath);

/** Stores the working directory, without a final "/", in 4096 bytes. Returns 0, or 0xFFFFFFFF with an empty buffer. */
KVUTIL_API uint32_t kvOSGetCWD(char *pBuffer);

/**
 * Stores the directory of the running program, with a final "/", in 4096 bytes; where the system does not tell, the
 * working directory taken for a path, so that its last component is lost; meant. Meant: for a program directly in the
 * root, as kvOSSplitPath tells, its own path with a "/" behind it: "/prog" gives "/prog/".
 *
 * @return 0; 0xFFFFFFFF for a null buffer.
 */
KVUTIL_API uint32_t kvOSGetAppDir(char *pBuffer);

/**
 * Finds the directory of settings, and makes it if it is missing.
 *
 * With bit 0 of the flag clear that is "/Library/Application Support/Korvane/", and if it can't be made, the user's
 * own; with the bit set it is the user's own, "Library/Application Support/Korvane/" behind what kvOSGetHomeDir gives.
 * Meant: for a user with an empty home that is a folder of the working directory. Only the last component is made. A
 * directory counts as there if it exists or is on gvecNames.
 *
 * @param pBuffer  4096 bytes; receives the directory, with a final "/".
 * @return 0; -1 when the user's own could not be made, the buffer then keeping its text, when that does not fit, the
 *         buffer then being empty (ENAMETOOLONG), and for a null buffer.
 */
KVUTIL_API int32_t kvOSGetConfigDir(char *pBuffer, uint32_t dwFlag);

/**
 * Stores the user's home directory in 4096 bytes: HOME; if that is absent or empty, what the user database says; for a
 * user it does not know, "/var/tmp/".
 *
 * Meant: a "/" is added without a look at the end, so that a source with a final "/" comes out with two: "/var/tmp//".
 *
 * @return 0; 0xFFFFFFFF with an empty buffer only where the user database has an empty home, for a text that does not
 *         fit (ENAMETOOLONG), and for a null buffer (EINVAL).
 */
KVUTIL_API uint32_t kvOSGetHomeDir(char *pBuffer);

/* Folders of the home directory, as kvOSGetHomeDir followed by the text given here; results and errors are the same.
 * Meant: the home directory already ends in "/", so that a double one stands ahead of the folder. */
KVUTIL_API uint32_t kvOSGetPicturesDir(char *pBuffer);  /* "/Pictures/" */
KVUTIL_API uint32_t kvOSGetDocumentsDir(char *pBuffer); /* "/Documents/" */
KVUTIL_API uint32_t kvOSGetMoviesDir(char *pBuffer);    /* "/Videos/"; meant */
KVUTIL_API uint32_t kvOSGetMusicDir(char *pBuffer);     /* "/Music/" */

/** Stores "/var/www/html/" (15 bytes). Returns 0; 0xFFFFFFFF for a null buffer. */
KVUTIL_API uint32_t kvOSGetHTTPDDir(char *pBuffer);

/**
 * Stores the environment's TMPDIR as it stands, or "/tmp/" where there is none, in 4096 bytes.
 *
 * @param dwSize  not looked at.
 * @return the length of the text; 0 with an empty buffer when it does not fit, with ENAMETOOLONG.
 */
KVUTIL_API uint32_t kvOSGetTempPath(uint32_t dwSize, char *pBuffer);

/**
 * Stores a path that no file had at the moment of the call. Between the call and its use another process may take it.
 *
 * @param pDirectory, pPrefix, dwNumber  not looked at.
 * @param pBuffer  4096 bytes.
 * @return the length of the text; 0 with an empty buffer when no name was found.
 */
KVUTIL_API uint32_t kvOSGetTempFileName(const char *pDirectory, const char *pPrefix, uint32_t dwNumber, char *pBuffer);

/**
 * Stores the first word of the process's argument vector, the program's name, in 4096 bytes; meant: not the rest. Bytes
 * behind the terminator stay as they were.
 *
 * @return the length of the text; 0 with an empty buffer when there is none or it does not fit.
 */
KVUTIL_API uint32_t kvOsGetCommandLine(char *pBuffer);

/** Stores 0x1000000 and returns 1, whatever the path; 0 for a null pdwVersion. */
KVUTIL_API uint32_t kvOSGetFileVersion(const char *pPath, uint32_t *pdwVersion);

/** Always 0; nothing is looked at. */
KVUTIL_API uint32_t kvOSGetFilenameFromHandle(int64_t hFile);

/** Always 0; nothing is looked at. */
KVUTIL_API uint32_t kvOSGetDriveType(const char *pPath);

#ifdef __cplusplus
}
#endif

#endif
