// Copies of whole files, between any two kinds of locator.
#ifndef KVOS_COPY_H
#define KVOS_COPY_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Copies a file, in blocks of 1 MiB.
 *
 * Meant: a destination that exists is deleted ahead of a look at the source. It is lost also if the source is missing,
 * and a file that is copied onto itself is lost.
 *
 * Meant: the result is 0, although every byte was copied, when the size is a multiple of 1 MiB, 0 included; and 1 when
 * the source fails to be read before a first byte, or behind a whole block. Compare the sizes where it matters.
 *
 * @param fFailIfExists  not 0: a destination that exists is left alone, and the result is 0.
 * @return 1; 0 if a file could not be opened or a write came out short, a full disk noticed at the close included.
 *
 * Last error: of the call that failed.
 * Messages:   those of kvOSDeleteFile, kvOSCreateFile, kvOSReadFile, kvOSWriteFile and kvOSCloseFile.
 */
KVUTIL_API uint32_t kvOSCopyFile(const char *pSource, const char *pDestination, uint32_t fFailIfExists);

#ifdef __cplusplus
}
#endif

#endif
