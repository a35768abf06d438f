// Names of media files: paths taken apart and joined, and the numbers in the names of clips and frame sequences.
//
// The only separator is "/"; FixPathName repairs others. Buffers for a path or a part of one hold 4096 bytes, for an
// extension 256, terminators included, and no call here writes past that. A call that builds or appends to a path and
// finds it too long sets errno to ENAMETOOLONG and does what its docstring says, cutting nothing. No call here sends a
// message of its own unless it says so, and each may be made from any thread.
#ifndef KVOS_NAMING_H
#define KVOS_NAMING_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Takes a path apart: drive ("C:"), directory up to and with its last "/", name, extension with its dot.
 *
 * The query of a network locator ("?" and what follows) belongs to no part. The last dot of the last component begins
 * the extension, but for a dot that is the first character of the whole path. An extension of 256 bytes or more is
 * none: it stays with the name.
 *
 * Meant: a path without "/" behind its first character gives itself as the directory, with a "/" behind it: "name.ext"
 * gives "name.ext/", "name" and ".ext". A drive is looked for only when pDrive is given; otherwise it stays part of the
 * directory, and in "C:name.ext" it is part of the name either way.
 *
 * @param pPath   null: nothing is written.
 * @param pDrive, pDir, pName, pExt  null, or a buffer; none may overlap the path or another. For a path of 4096 bytes
 *                or more, or one whose directory comes to that with its "/", each receives an empty text.
 *
 * Last error: ENAMETOOLONG for a path too long, otherwise untouched.
 */
KVUTIL_API void kvOSSplitPath(const char *pPath, char *pDrive, char *pDir, char *pName, char *pExt);

/**
 * Joins the parts of a path: a "/" is added behind drive and directory if none is there, and exactly one dot stands
 * between name and extension, whichever of the two brings it.
 *
 * @param pTarget  receives the path; an empty text if it does not fit. May not overlap the parts.
 * @param pDrive, pDir, pName, pExt  null or empty: left out.
 *
 * Last error: ENAMETOOLONG for a path too long, otherwise untouched.
 */
KVUTIL_API void kvOSMakePath(char *pTarget, const char *pDrive, const char *pDir, const char *pName, const char *pExt);

/**
 * Appends a number in decimal and an extension to a text: "clip" becomes "clip7.tga". A negative number keeps its "-".
 *
 * @param pTarget     the text, in a buffer of 4096 bytes.
 * @param pExtension  with or without its dot; an empty one adds a lone dot, null adds nothing.
 * @return pTarget; null, with the text as it was, if the whole does not fit or pTarget is null.
 */
KVUTIL_API char *BuildFileName(char *pTarget, int32_t nNumber, const char *pExtension);

/**
 * Appends a number with leading zeros, and the extension of another name, to a text: "clip" becomes "clip0007.tga". The
 * caller puts directory and base into pTarget beforehand.
 *
 * Meant: the zeros stand ahead of a "-" as well, so that -5 in four characters is "00-5".
 *
 * @param pSource   the name whose extension is taken, as kvOSSplitPath finds it.
 * @param pTarget   the text, in a buffer of 4096 bytes.
 * @param nWidth    characters of the number, in the low 32 bits. 0: pSource is copied over pTarget instead, and nNumber
 *                  is not looked at. A number that is wider is written whole.
 * @return pTarget; null, with the text as it was, if the whole does not fit or a pointer is null.
 */
KVUTIL_API char *MakeNumberedFileName(const char *pSource, char *pTarget, uint64_t nWidth, int32_t nNumber);

/**
 * Finds the number at the end of a file name: "/d/clip0012.tga" gives 12, the base "clip" and 4 digits. Directory and
 * extension are not looked at.
 *
 * At most the last ten digits count, unless the name is eleven digits and nothing else; their value is cut to 32 bits.
 * Wildcards at the end of the name, or right ahead of its last digits, mean no number: the base ends ahead of them,
 * digits 0. So "clip0012*" and "clip0012??" give 0, "clip0012", 0. No more than ten characters are looked at: a
 * wildcard ahead of ten digits is part of the base, and of eleven wildcards the first is.
 *
 * Meant: behind a first character that is no digit, a number that fills the rest of the name (up to ten digits) is
 * counted but not read: "a123" gives 0, "a", 3, while "ab12" gives 12, "ab", 2. The name "*" gives 0, an empty base, 1;
 * the name "?" gives 0, "?", 0.
 *
 * @param pBase      null, or receives the name up to its number; may be pPath itself.
 * @param pdwDigits  null, or receives the count of digits, leading zeros included; 0 if there is no number.
 * @return the number; 0, an empty base and 0 digits for an empty name, a null path and a path of 4096 bytes or more.
 */
KVUTIL_API int32_t GetBaseName(const char *pPath, char *pBase, uint32_t *pdwDigits);

/**
 * Counts the files of a sequence by a pattern such as "/d/clip????.tga".
 *
 * The first file found always counts, each other one if its name without extension is as long as the first one's. A
 * file's number is read from where the pattern's name has its first wildcard, and is 0 where no digits stand there.
 * Whatever the find calls deliver is a file here: with the name "*" the first one is ".", and what counts beside it is
 * ".." and every name of one character.
 *
 * @param pdwFirst   null, or receives the lowest number; 0xFFFFFFFF if nothing was found.
 * @param pdwDigits  null, or receives the digits in the first found name, as GetBaseName counts them; untouched if
 *                   nothing was found.
 * @return meant: with pdwFirst the lowest number plus the count of files, which is one past the highest number of a
 *         sequence without gaps; without it the count of files. 0 if nothing was found.
 *
 * Last error, messages: those of kvOSFindFirstFile and kvOSFindNextFile.
 */
KVUTIL_API uint32_t FindFilesNumber(const char *pPattern, uint32_t *pdwFirst, uint32_t *pdwDigits);

/**
 * Finds the lowest-numbered entry of a directory among those whose names are as long as that of pPath. The spelling of
 * the call is meant.
 *
 * Meant, all of it: texts are not compared, so that "xyzw0005" counts beside "clip0012". A path with an extension
 * matches nothing. A path without one matches entries with any extension, by the length of their names without it. A
 * bare name is its own directory, as kvOSSplitPath tells: "clip0012" looks for members in a folder "clip0012".
 *
 * Numbers are read as many characters ahead of the end of pPath's name, or of its first wildcard, as the number of the
 * first numbered entry in the enumeration's order has digits, whether or not that entry matches; never ahead of the
 * name's start. With four digits "clip0012" reads 12, and for "clip????" every number is read at the start of the name:
 * all are 0, and the first match stays. The same holds at the end of the name where no entry has a number.
 *
 * @param pFirstPath  receives drive, directory and full name of the entry found; may be pPath itself. Untouched if no
 *                    entry matches, or none with another number than 0xFFFFFFFF.
 * @return the count of entries that match; 0 if the directory can't be enumerated or a path does not fit.
 *
 * Last error, messages: those of kvOSFindFirstFile and kvOSFindNextFile.
 */
KVUTIL_API uint32_t FindFistFilesNumber(const char *pPath, char *pFirstPath);

/** What follows the last "/" or ":", as a place in pPath; pPath itself if there is neither; null for null. */
KVUTIL_API char *SplitPathName(const char *pPath);

/**
 * The last "." behind the last "/" or ":", as a place in pPath; its terminator if there is none; null for null. Meant:
 * unlike kvOSSplitPath, a dot at the very start counts.
 */
KVUTIL_API char *SplitPathExt(const char *pPath);

/** Turns each backslash into "/", in place. Returns pPath, which may be null. */
KVUTIL_API char *FixPathName(char *pPath);

/**
 * Appends a name to a path, behind a "/" unless the path is empty or ends in "/" or ":".
 *
 * @param pTarget  the path, in a buffer of 4096 bytes.
 * @return pTarget; null, with the path as it was, if the whole does not fit or a pointer is null.
 */
KVUTIL_API char *MergePath(char *pTarget, const char *pName);

/**
 * The root of a path with a drive, "C:/", or of one on a server, "//server/share/".
 *
 * Meant: a "/" always ends the second form, even behind one, so that "//server/" gives "//server//".
 *
 * @param pTarget  receives the root; untouched where the result is null.
 * @return pTarget; null for any other path, a null pointer and a root that does not fit.
 */
KVUTIL_API char *SplitPathRoot(char *pTarget, const char *pPath);

/**
 * Copies at most four characters behind the first dot of a text. A ";" among them ends the extension.
 *
 * Meant: the first dot from the left decides, one in a directory included: "a.b/c.mov" gives "b/c.".
 *
 * @param pExtension  receives the characters, without the dot; room for 5 bytes.
 * @return 0; -1, with nothing written, for a null pointer and a text without a dot.
 */
KVUTIL_API int32_t ExtractFileExtension(const char *pName, char *pExtension);

/**
 * Gives a path another extension, in place. The name is cut at its first "*".
 *
 * Meant: a path without "/" gets itself as its directory, as kvOSSplitPath tells: "name.ext" with ".new" becomes
 * "name.ext/name.new". The query of a network locator is dropped.
 *
 * @param pPath          a path in a buffer of 4096 bytes.
 * @param pNewExtension  with or without its dot; empty takes the extension away.
 * @return 0; -1, with the path as it was, for a null pointer and a path that does not fit.
 */
KVUTIL_API int32_t ChangeFileExtension(char *pPath, const char *pNewExtension);

/**
 * Writes bytes to a new file, replacing one that exists. The name is any that kvOSCreateFile takes.
 *
 * @param nSize  bytes in pData. On an S3 object a size of 0 is a failed write.
 * @return 0; -1 if the file could not be created or the write failed; -2 if fewer bytes arrived than were asked for,
 *         which may show at the close only.
 *
 * Last error, messages: those of kvOSCreateFile, kvOSWriteFile and kvOSCloseFile.
 */
KVUTIL_API int32_t DumpFileBin(const char *pName, const void *pData, uint64_t nSize);

/**
 * Copies a file into its ring of backups, so that it can be rewritten. "config.xml" has the backups "config.000.xml",
 * the newest, "config.001.xml" and so on, beside it. An absent file is left at that.
 *
 * Each older backup is first renamed to the next number, or copied where it can't be renamed, and the number dwCount is
 * deleted. Where a rename failed the newest backup is overwritten in place, else it is made anew.
 *
 * @param dwCount  backups to keep, at most 999. Meant: 0 and 1 both keep one, and delete number 001.
 * @return 0 whatever failed; -1 for a null path.
 *
 * Messages: "\nError backing up config FALSE (%d) " with errno, for a backup that could be neither renamed nor copied
 *           (meant: kvOSCopyFile also counts as failed for a file whose size is a multiple of 1 MiB); those of
 *           kvOSDeleteFile, kvOSCopyFile and kvOSCreateFile.
 */
KVUTIL_API int32_t MakeFileBackups(const char *pPath, uint32_t dwCount);

/**
 * Turns a file's path into that of one of its backups.
 *
 * @param pPath        the path, in a buffer of 4096 bytes; receives the backup's.
 * @param dwMaxLength  bytes that the new path may have, its terminator not counted.
 * @param nIndex       number of the backup, 0 being the newest; below 0 and above 998 it stands for 999.
 * @return 0; -1 for a null path and a backup that is not there; -2 if its path is too long. Only 0 changes pPath.
 */
KVUTIL_API int32_t GetFileBackups(char *pPath, uint32_t dwMaxLength, int32_t nIndex);

/**
 * Overwrites one file with the contents of another, in place. An empty source, one of 4 GiB and more, and whatever
 * fails leave the destination as it is; nothing is returned.
 *
 * Messages: those of kvOSCreateFile, kvOSReadFile, kvOSWriteFile and kvOSSetEndOfFile.
 */
KVUTIL_API void DuplicateContents(const char *pDestination, const char *pSource);

/**
 * Makes every missing directory of a path, local or on a network. A last component with an extension is taken for a
 * file and is not made; one without is a directory too.
 *
 * Meant: the topmost directory is made only when a deeper one could not be; a path of one component, "/a", counts as
 * "/a/a", as kvOSSplitPath tells. What can't be made below a topmost one that could is passed over in silence.
 *
 * @param pPath  a relative one begins in the working directory.
 * @return 0; -1 for a null path, one too long, and a directory that could not be made.
 *
 * Last error: of the directory that could not be made.
 * Messages:   "Unable to make directory: %s, errno = %d\n" with its path.
 */
KVUTIL_API int32_t MakeDirStructure(const char *pPath);

/** An extension without its dot, and the MIME type it stands for. */
typedef struct kvMimeRow {
    const char *pKey;
    const char *pType;
} kvMimeRow;

/*
 * What kvGetMimeType looks through. The order is part of the answer: six favoured rows, the others by their keys, and
 * the rows of rtin and xmp. The favoured keys stand in the body a second time, where they are never reached.
 */
extern KVUTIL_API const kvMimeRow kvStaticMimeList[352];

/**
 * The MIME type of the first row of kvStaticMimeList whose key occurs in a name.
 *
 * Meant: a key counts wherever it stands, not only as the extension, and in its own case only. "clip.mov.wav" is
 * "audio/wave", "image.png" has the type of "ma", "clip.ts" and "clip.txt" that of "t", "clip.rtin" that of "in", and
 * "CLIP.WAV" none. Give the bare extension where the rest of the name must not count.
 *
 * @param pName  a file name or an extension; null counts as empty.
 * @return a text that belongs to the library; "application/xml" where no key occurs.
 */
KVUTIL_API const char *kvGetMimeType(const char *pName);

#ifdef __cplusplus
}
#endif

#endif
