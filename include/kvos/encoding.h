// Text that has to pass through something: URLs, quoted values, XML, HTML, hexadecimal digits, base 64, a keyed
// scramble.
//
// What the encoders and decoders here take for the same form is not always the same. Where one does not give back what
// the other made, its docstring says so, and it is meant: what other programs have stored depends on it.
//
// A null input counts as an empty one; a null output is refused with the result 0, unless a call says otherwise. Output
// buffers hold what the call says, terminator included. Decoders of texts may write over their input (pOutput the same
// as pInput), encoders may not. No call here changes the last error unless memory runs out, and none sends a message
// but that of KVAlloc. All may be made from any thread.
//
// Digits, in the calls that say "unchecked digits": a byte below ":" stands for its distance from "0", any other, as a
// capital letter, for its distance from "A" plus 10; two make 16 times the first plus the second, of which the low 8
// bits count. So every pair of characters gives some byte: "zz" gives 0x53. A digit that the end of the text cut off
// counts as the terminator does, as -48, so that "4" alone gives 0x10.
#ifndef KVOS_ENCODING_H
#define KVOS_ENCODING_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- URLs and quoted values ---- */

/**
 * Writes "%" and two capital hexadecimal digits for the quotation mark, the backslash and every byte outside 0x20 to
 * 0x7E. All else passes, blanks, "%" and "+" included.
 *
 * Meant: the first digit of bytes from 0x80 on is none: t for 0x8_, u for 0x9_, then v, w, x, y, and z for 0xE_. Such
 * bytes do not come back. A byte 0xF_ ends the text behind its "%".
 *
 * @param pOutput  room for 3 times the input, and 1 byte.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvEncodeURLString(const char *pInput, char *pOutput);

/**
 * Turns "%" and two unchecked digits into a byte and copies all else; "+" stays "+".
 *
 * @param pOutput  room for the input and its terminator. "%00" ends the text there, and what follows is written on.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvDecodeURLString(const char *pInput, char *pOutput);

/**
 * Writes \t, \n, \r, \" and \\ for these five, and "\x" and two capital hexadecimal digits for any other byte outside
 * 0x20 to 0x7E.
 *
 * Meant: bytes from 0x80 on go wrong as in kvEncodeURLString; a byte 0xF_ ends the text behind its "\x". The decoder
 * does not know the "x".
 *
 * @param pOutput  room for 4 times the input, and 1 byte.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvEncodeEscapeString(const char *pInput, char *pOutput);

/**
 * Turns \t, \n, \r, \" and \\ back. A backslash before anything else makes one byte of the two characters behind it,
 * taken as unchecked digits.
 *
 * Meant: an "x" is such a digit, not a mark. "\41" gives "A", but "\x41" the byte 0x14 and a "1".
 *
 * @param pOutput  room for the input and its terminator. A zero byte ends the text there; what follows is written on.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvDecodeEscapeString(const char *pInput, char *pOutput);

/* ---- XML and HTML ---- */

/**
 * Writes &quot; &amp; &apos; &lt; &gt; for the five characters that XML reserves. All else passes.
 *
 * @param pOutput  room for 6 times the input, and 1 byte.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvEncodeXMLString(const char *pInput, char *pOutput);

/**
 * Turns one of the five entities of kvEncodeXMLString back if it is the very end of the text, and copies all else.
 *
 * Meant: "a&lt;" gives "a<", but "a&lt;b" stays as it is, and "&amp;&gt;" gives "&amp;>".
 *
 * @param pOutput  room for the input and its terminator.
 * @return the length of the output's text.
 */
KVUTIL_API uint64_t kvDecodeXMLString(const char *pInput, char *pOutput);

#define KVHTML_NAMED_ENTITIES 253

/* The named entities of HTML 4 and "apos;": the name with its ";", and the text in UTF-8. Sorted by the names' bytes.
 */
extern KVUTIL_API const char *const NAMED_ENTITIES[KVHTML_NAMED_ENTITIES][2];

/**
 * The text of a named entity.
 *
 * @param pName  begins with the name and its ";", without the "&"; what follows does not count. Capital and small
 *               letters are told apart.
 * @return a constant text in UTF-8, 1 to 3 bytes; null for any other name and for null.
 */
KVUTIL_API const char *html_get_named_entity(const char *pName);

/**
 * Turns entities into UTF-8: named ones, "&#" and a decimal number, "&#x" or "&#X" and a hexadecimal one, each up to
 * the next ";". What is none of them is copied from its "&" on.
 *
 * Numbers are read as strtoul reads them, so that blanks, a sign and, if hexadecimal, "0x" may stand in front. They are
 * below 0x110000. Meant: surrogates are written like others, as three bytes; "&#;" and "&#x;" are 0. A zero is written
 * as a byte like any other and ends the text for whoever reads it.
 *
 * @param pText    receives the text; room for the source and its terminator. Null: nothing is done.
 * @param pSource  null: pText is decoded in place. Otherwise it is apart from pText, or the same.
 * @return bytes written without the terminator.
 */
KVUTIL_API uint64_t html_decode_html_entities_utf8(char *pText, const char *pSource);

/* ---- Hexadecimal digits ---- */

/**
 * Writes two small hexadecimal digits for each byte.
 *
 * @param pOutput  room for twice the input, and 1 byte.
 * @return 0.
 */
KVUTIL_API uint32_t kvEncodeHEXString(const void *pInput, uint64_t qwLength, char *pOutput);

/**
 * Reads bytes from pairs of unchecked digits. Meant: of a last digit alone the terminator is the other one.
 *
 * @param pInput       zero-terminated.
 * @param pOutput      room for half the input, rounded up; no terminator is written. Null: only the size is told.
 * @param pqwOutLength receives that half in any case; null is allowed.
 * @return 0.
 */
KVUTIL_API uint32_t kvDecodeHEXString(const char *pInput, void *pOutput, uint64_t *pqwOutLength);

/* ---- Base 64 ---- */

/**
 * Writes bytes in base 64 with padding, in lines of 72 characters. Every line ends with a line feed, the last one too
 * unless it is empty.
 *
 * @param pInput        null only with a length of 0.
 * @param pqwOutLength  receives the length of the text without its terminator, if not null; on failure it stays as it
 * is.
 * @param pOutput       room for v + (v + 4) / 72 + 5 bytes, where v is 4 * qwLength / 3, all of it in whole numbers.
 *                      Null: such a buffer is allocated, the caller's until KVFree.
 * @return the buffer; null if it can't be allocated, which one of 4 GiB or more never can.
 *
 * Messages: those of KVAlloc.
 */
KVUTIL_API char *base64_encode(const void *pInput, uint64_t qwLength, uint64_t *pqwOutLength, char *pOutput);

/**
 * Reads base 64 with padding. Bytes that are not of its alphabet are skipped wherever they stand.
 *
 * Decoding ends behind the first group of four with a "=", which counts as the value 0 wherever in the group it stands:
 * one gives 2 bytes, two give 1, more are refused.
 *
 * @param pqwOutLength  receives the bytes written, if not null; untouched when the input is refused.
 * @param pOutput       room for 3 bytes for each 4 characters of the alphabet or "=". No terminator is written. Null:
 *                      such a buffer is allocated, the caller's until KVFree.
 * @return the buffer; null if the number of these characters is 0 or no multiple of 4, and for more than two "=" in a
 *         group. A buffer of the caller is not freed then; groups ahead of the refused one are in it.
 *
 * Messages: those of KVAlloc.
 */
KVUTIL_API uint8_t *base64_decode(const void *pInput, uint64_t qwLength, uint64_t *pqwOutLength, uint8_t *pOutput);

/* ---- Keyed scramble, and the plain base 64 beside it ---- */

/*
 * A chained XOR under a 32-bit key behind a prefix. It hides a text from a casual reader and protects nothing.
 *
 * Results are allocated with KVAlloc, the caller's until KVFree. Where there is none, for lack of memory or because the
 * input is refused, *ppOut is null, *pqwOutLength 0 and the result 0. pqwOutLength may be null, ppOut may not: nothing
 * is done then, with the result 0. What would need a buffer of 4 GiB or more is refused; kvXCEncode and kvXCDEcode
 * take twice their input and refuse earlier. The messages are those of KVAlloc.
 */

/**
 * Scrambles bytes behind a prefix and a separator.
 *
 * @param pReserved     not looked at.
 * @param dwKey         0 is a key like others.
 * @param pPrefix       null, or empty by qwPrefix: 4 to 16 characters are drawn by rand, whose seed is the caller's, so
 *                      that two results differ. A prefix with a zero byte behind its first one ends there for
 *                      xor_decrypt, which takes the rest for text.
 * @param ppOut         receives the bytes, with a zero behind them that is not counted.
 * @param pqwOutLength  receives the prefix's length plus 1 plus qwInput.
 * @return qwInput. Meant: not what was written.
 *
 * Threads: any, as far as rand allows it.
 */
KVUTIL_API uint64_t xor_encrypt(const char *pReserved, uint32_t dwKey, const void *pInput, uint64_t qwInput,
                                const void *pPrefix, uint64_t qwPrefix, uint8_t **ppOut, uint64_t *pqwOutLength);

/**
 * Takes the bytes of xor_encrypt apart: what stands behind the first byte, from the second one on, that comes out as 0.
 *
 * Meant: the length counts the zero that is stored at the end: it is that of the text plus 1. Where no byte comes out
 * as 0, as under another key, the result is as long as the input, and the zero takes the place of its last byte.
 *
 * @param ppOut  receives the text; an input of no bytes is refused.
 * @return what pqwOutLength receives.
 */
KVUTIL_API uint64_t xor_decrypt(const char *pReserved, uint32_t dwKey, const void *pInput, uint64_t qwInput,
                                uint8_t **ppOut, uint64_t *pqwOutLength);

/**
 * xor_encrypt, then base64_encode, without the last line feed: a text of one line up to 54 scrambled bytes, that is, 49
 * of the input with the shortest drawn prefix.
 *
 * Prefix, separator and input together may have 2 GiB less 4 bytes. More is refused, but only behind the scramble.
 *
 * @param ppOut         receives the text, terminated.
 * @param pqwOutLength  receives its length.
 * @return the same length.
 */
KVUTIL_API uint64_t kvXCEncode(const char *pReserved, uint32_t dwKey, const void *pInput, uint64_t qwInput,
                               const void *pPrefix, uint64_t qwPrefix, uint8_t **ppOut, uint64_t *pqwOutLength);

/**
 * base64_decode, then xor_decrypt, with the length of the latter. What base64_decode refuses gives no result, nor does
 * an input of 2 GiB or more.
 */
KVUTIL_API uint64_t kvXCDEcode(const char *pReserved, uint32_t dwKey, const void *pInput, uint64_t qwInput,
                               uint8_t **ppOut, uint64_t *pqwOutLength);

/* The 64 characters of base 64 and, at index 64, the padding mark. */
extern KVUTIL_API const char b64_table[66];

/**
 * Writes bytes in base 64 without line feeds. Meant: and without padding. Missing bytes of the last group count as 0,
 * so that b64_decode gives up to two zero bytes more.
 *
 * @param pInput        null is refused.
 * @param pqwOutLength  receives the length of the text, without its terminator: a multiple of 4.
 * @return the same length.
 */
KVUTIL_API uint64_t b64_encode(const void *pInput, uint64_t qwInput, char **ppOut, uint64_t *pqwOutLength);

/**
 * Reads base 64, padded or not, in whole groups of four characters.
 *
 * A "=" as the third character of a group leaves 1 byte of it, as the fourth one 2; decoding goes on with the next
 * group. Meant: as first or second character it counts as 64, of which what passes 8 bits is lost.
 *
 * @param pInput  null is refused, and so are other characters, line feeds too, and lengths that are no multiple of 4.
 * @param ppOut   receives the bytes, with a zero behind them that is not counted.
 * @return what pqwOutLength receives.
 */
KVUTIL_API uint64_t b64_decode(const char *pInput, uint64_t qwInput, uint8_t **ppOut, uint64_t *pqwOutLength);

#ifdef __cplusplus
}
#endif

#endif
