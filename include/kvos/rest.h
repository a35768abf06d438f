// REST services: one HTTP request with a method, headers, a body and a time limit, and its answer in one block.
#ifndef KVOS_REST_H
#define KVOS_REST_H

#include <stddef.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Performs one HTTP request and gives back the body of its answer. Logs in first, as an open does, if there is a token
 * file for the URL's host; one that can't be read is passed over without a message. Redirects are not followed.
 *
 * Meant: the result says nothing about the request. Set the answer to null before the call and look at it afterwards;
 * the status of the answer can't be had, and the body of a 404 arrives like any other.
 *
 * @param pUrl          used as it stands, blanks included, but that each "#" is sent as "%23" and each "+" as "%2b",
 *                      meant also in a query, where a "+" may stand for a blank. Of any length.
 * @param pMethod       what it begins with counts, in any case of letters: "POST", "PATCH", "PUT", "GET", "DELETE".
 *                      Meant: with any other no request is made; a "GET" goes out as a POST with the body given, or
 *                      with an empty one, since its body is set behind its method.
 * @param pHeaders      header lines ("Name: value") parted by section signs (UTF-8), an empty text for none. Meant: it
 *                      is changed, each of the two bytes of a section sign alone parts lines as well, and empty lines
 *                      vanish. They stand behind the token's line.
 * @param pBody         what is sent, all dwBodyLength bytes of it, zeros included; null sends none, whatever the
 *                      length.
 * @param ppResult      receives the answer, zero-terminated, the caller's until freed with free or KVFree. Untouched by
 *                      an empty answer, and when the transfer failed, unless its status was 200, 201 or 216 by then:
 *                      what had come is delivered. May be null only if pdwResultLength is.
 * @param pdwResultLength  receives the bytes of the answer without the terminator, under the same terms; null if the
 *                      answer is not wanted.
 * @param dwTimeoutMs   time for the whole request in milliseconds, 0 for no limit. A login has its own.
 * @return 1. 0 when the transfer library could give no handle or memory ran out ahead of the request, and with EINVAL
 *         for a text that is null.
 *
 * Certificates: the host's name is checked by all methods, who signed it by PATCH alone. Meant.
 * Last error: of a transfer that failed, the reason that comes nearest to its own.
 * Messages:   those of the login; meant: a "GET" has the transfer library tell its steps on standard error, under the
 *             switch gdwOutputToStdDebug.
 * Threads:    may be called from any thread.
 */
KVUTIL_API uint32_t kvOSHTTPCommand(const char *pUrl, const char *pMethod, char *pHeaders, const void *pBody,
                                    uint32_t dwBodyLength, char **ppResult, uint32_t *pdwResultLength,
                                    uint32_t dwTimeoutMs);

/**
 * Takes received bytes of kvOSHTTPCommand: stores nSize * nCount bytes and a terminator behind those that the record
 * holds (qwBufLen bytes in the qwBufSize bytes of pBuf), in a larger block of KVAlloc if they do not fit.
 *
 * Meant: an outgrown block whose first byte is 0 is not freed, so that a constant empty text may be the first block; a
 * binary answer that begins with a 0 loses the blocks that it outgrows.
 *
 * @param pFile  the record (kvOSFileHandle); null stores nothing.
 * @return nSize * nCount, also without a record; 0 when memory ran out or the answer would pass 32 bits of length.
 *
 * Messages: those of KVAlloc.
 */
KVUTIL_API size_t kvOSHTTPWriteCommandCallback(char *pData, size_t nSize, size_t nCount, void *pFile);

#ifdef __cplusplus
}
#endif

#endif
