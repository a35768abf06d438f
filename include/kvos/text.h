// Text in its encodings.
//
// The conversions are simple by design: no surrogate pairing and no four-byte forms of UTF-8. Letters beyond U+FFFF do
// not survive them. Every call may be made from any thread and sends no message.
#ifndef KVOS_TEXT_H
#define KVOS_TEXT_H

#include <stdint.h>
#include <wchar.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
