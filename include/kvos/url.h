// What a URL handle hands to the transfer library, and how it logs in. Files on URLs are opened, read and written with
// the calls of file.h; nobody needs this header for that.
#ifndef KVOS_URL_H
#define KVOS_URL_H

#include <stddef.h>
#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The record behind a handle of kvOSCreateFile: the handle's value is its address. */
typedef struct kvOSFileHandle kvOSFileHandle;

/**
 * Takes received bytes during an open and a login: stores nSize * nCount bytes behind those that the record's buffer
 * holds. What does not fit is dropped in silence, unless the record lets its buffer grow.
 *
 * Meant: a buffer that grows takes over only as many old bytes as new ones came.
 *
 * @param pFile  the record.
 * @return nSize * nCount, also for bytes that were dropped; the room that was free where a buffer could not grow.
 *
 * Messages: "Error - curl write callback buffer grow failed\n".
 */
KVUTIL_API size_t write_callback_open(char *pData, size_t nSize, size_t nCount, void *pFile);

/**
 * Takes received bytes while a file is read. Bytes that do not fit end the transfer.
 *
 * @return nSize * nCount, or 0.
 *
 * Messages: "Error - curl write callback read buffer too small\n".
 */
KVUTIL_API size_t write_callback_read(char *pData, size_t nSize, size_t nCount, void *pFile);

/** Gives up to nSize * nCount bytes of what a write sends; how many. 0 at the end. */
KVUTIL_API size_t read_callback_write(char *pTarget, size_t nSize, size_t nCount, void *pFile);

/** Does nothing and returns 0, for transfers that read: they have nothing to go back to. Meant. */
KVUTIL_API int seek_callback(void *pFile, int64_t nOffset, int nOrigin);

/**
 * Logs in: reads the token file's text, if that has not been done, and asks the token endpoint for an access token.
 *
 * The first of these that the file gives is used: its refresh token, its password, neither. A file without a client
 * identifier or without a client secret is left alone. The certificate of the endpoint is not verified, as on every
 * transfer of a file; an endpoint that does not answer within 15 seconds counts as failed.
 *
 * @param pFile  the record of an HTTP or HTTPS handle.
 * @return 0, always. Meant: whether there is a token shows in the requests that follow.
 *
 * Messages: "ERROR-Type: " and "ERROR-Desc: " with what an endpoint said that refused, by ErrFmtOut with class error.
 * Threads:  as the handle.
 */
KVUTIL_API uint32_t kvOSOAuthAuthorize(kvOSFileHandle *pFile);

/** kvOSOAuthAuthorize, if the token's time is over; that of a first token without "expires_in" always is. Returns 0. */
KVUTIL_API uint32_t kvOSOAuthRefresh(kvOSFileHandle *pFile);

/**
 * Puts the token, renewed if its time is over, into the headers of a transfer; nothing without a token.
 *
 * Meant: the record's list of headers is made anew each time, so that it then holds the token's line alone.
 *
 * @param pCurl  the transfer (a CURL easy handle).
 * @return 0.
 */
KVUTIL_API uint32_t kvOSOAuthAddHeader(kvOSFileHandle *pFile, void *pCurl);

#ifdef __cplusplus
}
#endif

#endif
