// Small conversions: numbers as text, the ends and letters of a text, 16-bit text, whole-number arithmetic, byte order.
//
// No call sends a message or touches the last error, and all may be made from any thread.
#ifndef KVOS_CONVERSION_H
#define KVOS_CONVERSION_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Numbers as text ---- */

/**
 * Writes a number in a base of 2 to 35, with digits from 0-9 and a-z, behind a "-" in every base if it is negative.
 *
 * @param pOut   room for 34 bytes, which base 2 needs at most. Null: nothing is written.
 * @param nBase  meant: 36 is refused, though there are digits for it.
 * @return pOut; null, with an empty text in pOut, for any other base.
 */
KVUTIL_API char *itoa(int32_t nValue, char *pOut, int32_t nBase);

/**
 * Writes a number in decimal with zeros in front, up to a width of 10 characters.
 *
 * Meant: the zeros stand ahead of the "-", which counts as a character: -5 in a width of 4 is "00-5".
 *
 * @param nWidth  above 10 it counts as 10; a longer number is written whole.
 * @param pOut    room for 12 bytes. Null: nothing is written.
 * @return pOut.
 */
KVUTIL_API char *ULONGToString(int32_t nValue, int32_t nWidth, char *pOut);

/* ---- The ends and the letters of a text ---- */

/**
 * Cuts a text that is too long, then takes blanks and control characters (bytes up to 0x20) from its end.
 *
 * @param qwMaxLength  bytes that are left at most; 0 cuts nothing.
 * @return the length before all that; 0 for a null text.
 */
KVUTIL_API uint64_t strStripEnd(char *pText, uint64_t qwMaxLength);

/** The cut of strStripEnd alone; blanks at the end stay. Same result. */
KVUTIL_API uint64_t strStripEndSAFE(char *pText, uint64_t qwMaxLength);

/**
 * Makes the letters of a text small or capital, in place, each byte by itself: tolower and toupper in the locale of the
 * process. In the locale that a program starts with, bytes from 0x80 on stay as they are.
 *
 * @return pText, also when it is null.
 */
KVUTIL_API char *kvStrToLower(char *pText);
KVUTIL_API char *kvStrToUpper(char *pText);

/** kvStrToLower and kvStrToUpper of the first qwCount bytes at most; the text need not be longer, or terminated. */
KVUTIL_API char *kvStrToLowerN(char *pText, uint64_t qwCount);
KVUTIL_API char *kvStrToUpperN(char *pText, uint64_t qwCount);

/* ---- Text of 16-bit units ---- */

/** Copies a text with its zero unit; a null source counts as empty. Returns pTarget. */
KVUTIL_API uint16_t *kvwstrcpy(uint16_t *pTarget, const uint16_t *pSource);

/** The units ahead of the zero unit; 0 for null. */
KVUTIL_API uint64_t kvwstrlen(const uint16_t *pText);

/* ---- Arithmetic ---- */

/**
 * a times b over c, cut toward zero.
 *
 * Meant: the product wraps to 64 bits before it is divided. Over -1 the result is minus the product, wrapping too.
 *
 * @return 0 if c is 0.
 */
KVUTIL_API int64_t MulDivTrunc(int64_t a, int64_t b, int64_t c);

/**
 * The index of the table's entry nearest to a value.
 *
 * The distances are exact over the whole range. Meant: midway between two entries the higher one counts. A value below
 * the table gives 0, one above it the last index.
 *
 * @param pTable  in ascending order.
 * @param nCount  entries; below 2 the result is 0 and the table is not looked at.
 */
KVUTIL_API int32_t NearestLongValue(int64_t nValue, const int64_t *pTable, int32_t nCount);

/* ---- Byte order ---- */

/**
 * Copies elements of 16, 32 or 64 bits with their bytes reversed.
 *
 * @param pTarget  room for qwCount elements; the same as pSource, or beside it.
 * @return the place behind the last element written: pTarget + qwCount. With a null pointer nothing is written, and the
 *         result is pTarget.
 */
KVUTIL_API uint16_t *EndianConvertWord(uint16_t *pTarget, const uint16_t *pSource, uint64_t qwCount);
KVUTIL_API uint32_t *EndianConvertDword(uint32_t *pTarget, const uint32_t *pSource, uint64_t qwCount);
KVUTIL_API uint64_t *EndianConvertQword(uint64_t *pTarget, const uint64_t *pSource, uint64_t qwCount);

#ifdef __cplusplus
}
#endif

#endif
