// Languages: a small number for a short text code, and back.
//
// The two directions are not mirror images. Meant: Spanish (10) writes "SE" and Slovak (27) writes "KS" and "KLS", none
// of which is read; 0 and 23 are written and never read; 20044 ("NOL") has no two-letter code.
//
// Both calls are functions of their arguments and of one constant table. They send no message, leave the last error
// alone and may be made from any thread.
#ifndef KVOS_LANGUAGE_H
#define KVOS_LANGUAGE_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The number of a language's code of two or three letters, in any case.
 *
 * @param pText  four bytes are read and all have to be there: a two-letter code has two zeros or blanks behind it, a
 *               three-letter code one. "EN" in three bytes of memory is the caller's mistake, not checked.
 * @param pdwId  receives the number, 1 to 33 or 20044; left alone for an unknown code.
 * @return 0; 0xFFFFFFFF for an unknown code and for a null pointer.
 */
KVUTIL_API uint32_t kvOSLangStrToID(const char *pText, uint32_t *pdwId);

/**
 * Writes the code of a language in capitals.
 *
 * @param dwId         0 is English, as 9 is.
 * @param dwReserved   ignored.
 * @param pOut         room for 4 bytes; 3 of them are written for a two-letter code. Left alone for an unknown number.
 * @param fTwoLetter   not 0: the code of two letters. Meant: 20044 writes "NOL" all the same.
 * @return 0; 0xFFFFFFFF for an unknown number and for null.
 */
KVUTIL_API uint32_t kvOSLangIDToStr(uint32_t dwId, uint32_t dwReserved, char *pOut, uint32_t fTwoLetter);

#ifdef __cplusplus
}
#endif

#endif
