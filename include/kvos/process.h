// Libraries that are opened at run time, the folder of this one, and the start of other programs.
//
// The working directory belongs to the whole process: kvOSLoadLibrary may change it for a moment.
#ifndef KVOS_PROCESS_H
#define KVOS_PROCESS_H

#include <stddef.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Opens a library. One that the system does not find is looked for once more from the folder
 * "/Library/frameworks/KorvaneKit.framework/Libraries", to which kvOSReDir is applied: a path without "/" ahead of it
 * then begins there, and so does a bare name, on every system.
 *
 * Meant: the way back to the working directory leads through kvOSReDir as well, so that a redirect of that directory
 * leaves the process where it points.
 *
 * @param pPath    as the system's dlopen takes it: null is the program itself.
 * @param dwFlags  of dlopen. Linux refuses 0; 1, 2 (at once) and their sums with the system's other flags are good.
 * @return the library, to be given to kvOSFreeLibrary; null on failure.
 *
 * Last error: of the second attempt; ENOENT where the loader left none.
 * Messages:   on failure "kvOSLoadLibrary(%s) " with the loader's reason and "kvOSLoadLibrary(FAILED=0x%lX) %s" with
 *             the last error and the path; "Exception loading library(%s) " with the path for an exception that the
 *             start of the library let out. Behind that one the loader of Linux stays locked: no other thread can open
 *             a library any more, and the same library opens half started. End the program soon.
 * Threads:    not beside a thread that depends on the working directory, unless the library is sure to be found at
 * once.
 */
KVUTIL_API void *kvOSLoadLibrary(const char *pPath, uint32_t dwFlags);

/** Closes a library. Returns 0, or another number on failure; -1 for null, with EINVAL. */
KVUTIL_API int32_t kvOSFreeLibrary(void *hLibrary);

/**
 * The address of a name in a library.
 *
 * @param hLibrary  of kvOSLoadLibrary; null is refused with EINVAL, as is a null name.
 * @return the address; null where there is none of that name.
 *
 * Messages: for null "kvOSGetProcAddress(FAILED=0x%X - '%s') " with errno, which the loader need not have set, and the
 *           loader's reason.
 */
KVUTIL_API void *kvOSGetProcAddress(void *hLibrary, const char *pName);

/**
 * The folder in which this library lies, with a "/" at its end; relative to the working directory that the process
 * began in where the loader was told to look for it so.
 *
 * Where the system does not tell it, the first of these that holds "libmediafile.dylib": the folder
 * KorvaneKit.framework/Versions/6/ in "clipProof.app/Contents/Frameworks/", "../Frameworks/" and
 * "~/Library/Frameworks/", all of them from the working directory (meant: "~" is a name like any other); then
 * "/Library/Frameworks/KorvaneKit.framework/Versions/6/", whether or not it is there.
 *
 * @param pFolder  4096 bytes.
 * @return 0; 0xFFFFFFFF for null, with EINVAL.
 *
 * Messages: "Found " and the path of libmediafile.dylib where the folder was found by it; meant: for the last one too,
 *           at which nobody looked.
 */
KVUTIL_API uint32_t kvOSGetDynaLibDir(char *pFolder);

/** A program that was started. */
typedef struct kvOSProcessInformation {
    int64_t hProcess; /* this and hThread are the caller's; the library leaves them as they are */
    int64_t hThread;
    uint32_t dwProcessId;
    uint32_t dwThreadId; /* the process's id again */
} kvOSProcessInformation;

/**
 * Starts a program and does not wait for it. It gets this process's environment, working directory and those open
 * descriptors that are not marked to be closed, as those of local files from kvOSCreateFile are. The caller waits for
 * it in the end, with waitpid on dwProcessId: until then what is left of an ended program stays in the system's table.
 *
 * The command line is split at blanks into arguments; the first argument is always pApplication. A piece that begins
 * with a double quote goes on, blanks included, to the end of the next piece that ends with one, or else to the end of
 * the line; these two quotes are dropped, all others stay.
 *
 * Meant: an end is looked for in later pieces only. "one" in quotes, standing alone, runs on into what follows, and
 * keeps its own second quote. After 254 arguments the rest is dropped.
 *
 * @param pApplication  path of the program; not looked for in the search path. Null is refused with EINVAL.
 * @param pCommandLine  the arguments, without the program's name; null is an empty line.
 * @param pProcessAttributes, pThreadAttributes, fInheritHandles, dwCreationFlags, pEnvironment, pCurrentDirectory,
 *        pStartupInfo  not looked at.
 * @param pProcessInformation  null, or receives the id at both places; 0 there on failure.
 * @return 1; 0 on failure.
 *
 * Last error: the reason of a failure, as the message tells it.
 * Messages:   "Process Launch\n", each argument followed by a blank, and "Process Launch\n": so secrets on the line are
 *             logged. Then "\nkvOSCreateProcess(FAILED) rtn=%d, lasterr=%d " on failure, but for want of memory.
 */
KVUTIL_API uint32_t kvOSCreateProcess(const char *pApplication, const char *pCommandLine, void *pProcessAttributes,
                                      void *pThreadAttributes, uint32_t fInheritHandles, uint32_t dwCreationFlags,
                                      void *pEnvironment, const char *pCurrentDirectory, void *pStartupInfo,
                                      kvOSProcessInformation *pProcessInformation);

#ifdef __cplusplus
}

static_assert(offsetof(kvOSProcessInformation, hProcess) == 0 && offsetof(kvOSProcessInformation, hThread) == 8 &&
                  offsetof(kvOSProcessInformation, dwProcessId) == 16 &&
                  offsetof(kvOSProcessInformation, dwThreadId) == 20,
              "the fields follow each other in the stated order");
#endif

#endif
