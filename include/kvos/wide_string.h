// Strings of C++, wide and UTF-8, and numbers in them. In C this header declares nothing.
//
// The conversions are those of kvos/text.h: letters beyond U+FFFF do not survive, and a text ends at its first unit
// whose low 16 bits are zero. A null text counts as an empty one. No exception leaves: when memory runs out the result
// is empty, or 0. No call sends a message; all may be made from any thread. Those that read numbers keep errno.
#ifndef KVOS_WIDE_STRING_H
#define KVOS_WIDE_STRING_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
#include <string>

/** A wide text, or one of 16-bit units, as UTF-8. */
KVUTIL_API std::string wideToString(const std::wstring &text);
KVUTIL_API std::string wideToString(const wchar_t *pText);
KVUTIL_API std::string wideToString(const uint16_t *pText);

/** UTF-8 as a wide text; malformed forms as kvStr_UTF8_to_wchar takes them. */
KVUTIL_API std::wstring stringToWide(const std::string &text);
KVUTIL_API std::wstring stringToWide(const char *pText);
KVUTIL_API std::wstring stringToWide(const unsigned char *pText);

/** A copy with its letters made small or capital, unit by unit, as towlower and towupper do in the current locale. */
KVUTIL_API std::wstring wStrToLower(const std::wstring &text);
KVUTIL_API std::wstring wStrToUpper(const std::wstring &text);

/**
 * The number at the start of a text, as atoi, atoll and atof read it; 0 for an empty text and for one without a number.
 *
 * A number that is too large gives the largest or smallest of its kind, for wideToDouble an infinity. The decimal point
 * is that of the current locale.
 */
KVUTIL_API int wideToInt(const std::wstring &text);
KVUTIL_API long long wideToLongLong(const std::wstring &text);
KVUTIL_API double wideToDouble(const std::wstring &text);

/**
 * A number as a wide text, by a format of swprintf that the caller gives: L"%d", L"%lld" or L"%g" and their like, with
 * exactly one conversion, of the type of the first argument. Not checked.
 *
 * @return the text; empty for a null format and for a text that does not fit in 20, 20 and 100 units, its zero
 * included. Meant: the smallest long long has 20 characters and does not fit.
 */
KVUTIL_API std::wstring intToWStr(int nValue, const wchar_t *pFormat);
KVUTIL_API std::wstring longLongToWStr(long long nValue, const wchar_t *pFormat);
KVUTIL_API std::wstring doubleToWStr(double dValue, const wchar_t *pFormat);
#endif

#endif
