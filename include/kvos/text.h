// Text in its encodings: bytes, UTF-8, UTF-16 and the system's wide characters.
//
// The conversions are simple by design: no surrogate pairing and no four-byte forms of UTF-8. Letters beyond U+FFFF do
// not survive them. Calls take the target first, then the source, then the limit where they have one.
//
// A null source counts as an empty text; with a null target nothing is written and, where the call has one, the same
// result is given. A limit below 1 writes nothing. But for the code pages every call may be made from any thread. None
// sends a message.
#ifndef KVOS_TEXT_H
#define KVOS_TEXT_H

#include <stdint.h>
#include <wchar.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- UTF-8 ---- */

/**
 * Turns a wide text into UTF-8, up to its end or up to the limit, or measures what that takes.
 *
 * Meant: only the low 16 bits of a unit count, so that U+1F600 comes out as U+F600 and U+10000 ends the text. A
 * surrogate is encoded by itself, as three bytes. 0xFFFF gives nothing.
 *
 * @param pTarget  null: nothing is written, the rest is the same. Otherwise room for nLimit + 2 bytes: a unit is begun
 *                 while fewer than nLimit bytes are written, so that its last bytes can pass the limit.
 * @param pSource  zero-terminated; null counts as empty.
 * @param nLimit   bytes. A zero is stored behind the text only if it ended below the limit: a text that fills or passes
 *                 the limit is not terminated. Below 1 nothing is written.
 * @return the bytes of UTF-8 up to the limit, plus 1 for the terminator, whether or not it was stored. INT64_MAX as the
 *         limit, with a null target, measures the whole text.
 */
KVUTIL_API int64_t kvStr_wchar_to_UTF8(char *pTarget, const wchar_t *pSource, int64_t nLimit);

/** kvStr_wchar_to_UTF8 for a text of 16-bit units. */
KVUTIL_API int64_t kvStr_UTF16_to_UTF8(char *pTarget, const uint16_t *pSource, int64_t nLimit);

/**
 * Turns UTF-8 into wide text, or into 16-bit units, up to its end or up to the limit.
 *
 * The high digit of a byte decides: 0xC_ and 0xD_ begin two bytes, 0xE_ three. Any other byte is a unit by itself.
 * Meant: a four-byte form becomes four units and a continuation byte that stands alone one, and neither counts as
 * malformed. Overlong forms and surrogates are taken as they come, 0xC0 0x80 as a unit of 0.
 *
 * @param pTarget  room for nLimit units, or for those of the text and its terminator if that is less.
 * @param nLimit   bytes of the source. Meant: a form that begins ahead of the limit is read to its end, up to two bytes
 *                 behind it. A zero is stored behind the text only if it ended below the limit.
 * @return 1 if each lead byte had its continuation bytes, also for an empty text; 0 otherwise. Decoding goes on all the
 *         same: the bytes that stand in their place are taken for them, by their low 6 bits; those that the end of the
 *         text cut off count as 0.
 */
KVUTIL_API uint32_t kvStr_UTF8_to_wchar(wchar_t *pTarget, const char *pSource, int64_t nLimit);
KVUTIL_API uint32_t kvStr_UTF8_to_UTF16(uint16_t *pTarget, const char *pSource, int64_t nLimit);

/* ---- Bytes that are letters ---- */

/**
 * Keeps the low byte of each unit, up to the zero unit and with it, or up to the limit.
 *
 * Meant: a unit whose low byte alone is zero is kept as a zero byte, and the text goes on.
 *
 * @param pTarget  room for nLimit bytes, or for those of the text and its terminator if that is less.
 * @param nLimit   units. A text that fills the limit is not terminated.
 * @return pTarget.
 */
KVUTIL_API char *kvStr_wchar_to_ANSI(char *pTarget, const wchar_t *pSource, int64_t nLimit);
KVUTIL_API char *kvStr_UTF16_to_ANSI(char *pTarget, const uint16_t *pSource, int64_t nLimit);

/**
 * Widens each byte to a unit of the same value, up to the zero byte and with it, or up to the limit, and tells whether
 * the text looks like UTF-8, which changes nothing of what is written.
 *
 * @param pTarget  room for nLimit units, or for those of the text and its terminator if that is less.
 * @param nLimit   bytes; none behind them is looked at. A text that fills the limit is not terminated.
 * @return 0 if anywhere in the text a byte of 0xC2 to 0xDF stands before a continuation byte (0x80 to 0xBF), one of
 * 0xE0 to 0xEF before two of them, or one of 0xF0 to 0xF4 before one of 0x90 to 0xBF and two of them; otherwise 1.
 *         Meant: 0xF1 0x80 0x80 0x80, which is UTF-8, is not seen.
 */
KVUTIL_API uint32_t kvStr_ANSI_to_wchar(wchar_t *pTarget, const char *pSource, int64_t nLimit);
KVUTIL_API uint32_t kvStr_ANSI_to_UTF16(uint16_t *pTarget, const char *pSource, int64_t nLimit);

/* ---- Code pages ---- */

/**
 * Converts by mbstowcs under the locale of a page: 1 ".UTF-8", 2 ".UTF-16", 3 ".850", 4 ".860", 5 ".1252", any other
 * the locale of the environment.
 *
 * Meant: a name that the system does not know, as Linux knows none of these, changes nothing in silence, and the locale
 * in force converts.
 *
 * @param pTarget  room for nLimit units. Null: nothing is converted.
 * @param nLimit   units; a text that fills it is not terminated. Nor is a malformed one: what stands ahead of the bad
 *                 byte is converted, and only errno tells, which is EILSEQ then.
 * @return the name of the locale in force afterwards, which is the one before: text of the C library, valid until the
 *         locale changes; null when memory ran out, with nothing changed.
 *
 * Threads: the locale of the whole process changes for the length of the call, unguarded.
 */
KVUTIL_API const char *kvStr_CodePage_to_wchar(wchar_t *pTarget, const char *pSource, int64_t nLimit, uint32_t dwPage);

/** Meant: changes the locale and puts it back as kvStr_CodePage_to_wchar does, and converts nothing. Same result. */
KVUTIL_API const char *kvStr_CodePage_to_UTF16(uint16_t *pTarget, const char *pSource, int64_t nLimit, uint32_t dwPage);

/* ---- Units of another width ---- */

/**
 * Copies units up to the zero unit and with it. Surrogates stay as they are.
 *
 * @param pTarget  room for as many units as the source has, its zero included. Null: nothing is done.
 * @return 1.
 */
KVUTIL_API uint32_t kvStr_UTF16_to_wchar(wchar_t *pTarget, const uint16_t *pSource);
KVUTIL_API uint32_t kvStr_UTF32_to_wchar(wchar_t *pTarget, const uint32_t *pSource);

/* ---- Surrogates; no conversion here asks these ---- */

/** Whether a unit is a surrogate. Meant: only the upper bound is tested, so that each unit below 0xE000 counts. */
KVUTIL_API uint32_t is_surrogate(uint16_t wUnit);

/** Whether a unit is the first of a pair, 0xD800 to 0xDBFF. */
KVUTIL_API uint32_t is_high_surrogate(uint16_t wUnit);

/** Whether a unit is the second of a pair, 0xDC00 to 0xDFFF. */
KVUTIL_API uint32_t is_low_surrogate(uint16_t wUnit);

/** The character of a pair of surrogates; other units give a number all the same. */
KVUTIL_API uint32_t surrogate_to_utf32(uint16_t wHigh, uint16_t wLow);

#ifdef __cplusplus
}
#endif

#endif
