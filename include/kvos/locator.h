// Locators as text: what a path or URL names, and its repair, before any file is touched.
//
// Schemes are compared without regard to case and by prefix only. Nothing here looks at a file or the network, but for
// kvOSFullPath, which asks for the working directory, and kvOSFileNameIsInArchive. All calls may be made from any
// thread; they touch only their arguments and, kvOSReDir, the two redirect texts.
#ifndef KVOS_LOCATOR_H
#define KVOS_LOCATOR_H

#include <stdint.h>
#include <wchar.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The one redirect of the process: with both texts set, a path that begins with gszReDir_Source has that prefix
 * replaced by gszReDir_NewDir, in the calls that kvOSReDir names. Both are null at start. The first such call after the
 * default store was opened takes them from "ReDir_Source" and "ReDir_NewDir" under "MediaKiln\Advanced", and no thread
 * goes on without them meanwhile, but waits for the store's lock; a missing or empty one changes nothing, and what is
 * set there later is not seen. A host that sets them does so before it starts its threads, keeps the texts alive, and
 * owns them. Meant: with gszReDir_NewDir set by the host and another one in the settings, gszReDir_Source becomes null,
 * so that there is no redirect.
 */
extern KVUTIL_API char *gszReDir_Source; /* prefix to replace, in any case of ASCII letters; null: no redirect */
extern KVUTIL_API char *gszReDir_NewDir; /* what stands for it; null: no redirect */

/**
 * Applies the redirect to a path. The open call and the calls by name (kvos/attributes.h) do this first, so that a
 * whole tree can be moved to another place unseen by the callers. The find calls and kvOSFullPath do not.
 *
 * The match is a bare prefix: with /vol1 and /vol2, /VOL1/a gives /vol2/a and, meant, /vol10/a gives /vol20/a. The
 * result is not matched again and no separator is added. Without a match the target is a copy of the source.
 *
 * @param pSource  the path; null makes the target empty, with last error EINVAL.
 * @param pTarget  4096 bytes, not overlapping the source; null: the settings are read like by any other call, no more.
 *
 * Last error: ENAMETOOLONG when the result does not fit, and the target is then empty; otherwise untouched.
 */
KVUTIL_API void kvOSReDir(const char *pSource, char *pTarget);

/** 1 if the text begins with "http://", "https://" or "ftp://", what the file layer opens as a URL. Null gives 0. */
KVUTIL_API uint32_t kvOSFUseCurl(const char *pText);

/** 1 if the text begins with "http:", "https:", "s3:", "glacier:" or "ftp:": a file behind a network. Null gives 0. */
KVUTIL_API uint32_t kvOSIsNetworkFile(const char *pText);

/**
 * 1 if the text begins with the scheme of a live stream, which can't be opened as a file: "rtp:", "srt:", "rist:",
 * "rtsp:", "rtmp:", "rtmps:", "rtmf:", "sip:", "ndi:", "sdi:", "s2110:", "s2022:", "rivermax:", "cdi:", "whip:",
 * "webrtc:", "tcp:", "bls:", "blss:", "hls:", "hlslive:", "hlsvod:" or "udp:". Null gives 0.
 */
KVUTIL_API uint32_t kvOSIsNetworkStream(const char *pText);

/** 1 if kvOSIsNetworkFile or kvOSIsNetworkStream says so, else 0. */
KVUTIL_API uint32_t kvOSIsNetworkSource(const char *pText);

/**
 * 1 if the text is the address of an S3 object, else 0; the text is judged as it stands, without the redirect.
 *
 * No: a first character "/"; a second character ":", or after a first backslash a second one. Yes: "s3://" or
 * "glacier://" anywhere (case counts). No: "X-Amz-Credential=" anywhere, since a presigned URL is read as a URL. Yes: a
 * beginning of "https://s3." or "http://s3." in any case, or the provider's service domain anywhere. First answer wins.
 *
 * @param pText  null and empty give 0.
 * @return always 0 in a build without S3 support, whatever the text.
 */
KVUTIL_API uint32_t kvOSUseAws(const char *pText);

/**
 * Repairs the separators of a locator in place; the text never grows.
 *
 * A URL ("http://", "https://", "ftp://", any other text that holds "://" and does not begin with "file", and whatever
 * kvOSUseAws accepts) and any local path have their backslashes turned into forward slashes. A text that begins with
 * "file://", in this case of letters, becomes a path: file:///C:/x gives C:/x, file:///Users/x gives //Users/x,
 * file://host/x gives //host/x, and escapes are decoded.
 *
 * Meant: "FILE://" is not recognised. The character behind an escape is copied unexamined, so that of two escapes in a
 * row only the first is decoded: file:///a%20%20b gives "//a %20b". A first digit that is none counts as 0, a second
 * that is none leaves the value of the first: "%2x" is the byte 2, and "%zz" ends the text. A backslash that comes out
 * of an escape stays one.
 *
 * @param pText  changed in place; null is left alone.
 * @return 0.
 */
KVUTIL_API uint32_t kvOSFixSeparators(char *pText);

/** Turns every backslash of a wide text into a forward slash, in place, with no special cases. Returns 0. */
KVUTIL_API uint32_t kvOSFixSeparatorsW(wchar_t *pText);

/** Turns every backslash of a text into a forward slash, in place, with no special cases. Returns 0. */
KVUTIL_API uint32_t kvOSFixHTTPSeparators(char *pText);

/** The constant text "/". */
KVUTIL_API const char *kvOSGetSeparator(void);

/**
 * Replaces, in place, the characters that file systems refuse.
 *
 * A first "." or blank becomes "_". Then: a double quote becomes an apostrophe, "*" and "?" a blank, ":" and "|" a "-",
 * "<" and ">" a "(" and a ")", and the backslash of "\u0" a "U". Slashes and all other backslashes stay.
 *
 * Meant: every control character and every byte of 0x80 and above becomes a blank, so that a UTF-8 name loses its
 * non-ASCII letters, one blank a byte.
 *
 * @param pText  changed in place; null is left alone.
 * @return 0.
 */
KVUTIL_API uint32_t kvOSLegalizePath(char *pText);

/**
 * Makes a path absolute by putting the working directory ahead of it. No "." or ".." is resolved, and the redirect is
 * not applied.
 *
 * A network file or stream and a text that begins with "/" are copied. A text that begins with "file:" in any case
 * loses its first seven characters, meant: unseen, whether or not they are "file://"; file:///x gives /x.
 *
 * @param pOut    4096 bytes, whatever qwSize says; may be pText itself.
 * @param pText   an empty text gives an empty output.
 * @param qwSize  meant: only tested for 0.
 * @return pOut; null for a null pointer and a size of 0, with pOut untouched, and for an unreadable working directory
 *         or a result that does not fit, with pOut an empty text.
 *
 * Last error: EINVAL for a null pointer or size 0, ENAMETOOLONG when it does not fit, else as the system left it.
 */
KVUTIL_API char *kvOSFullPath(char *pOut, const char *pText, uint64_t qwSize);

/**
 * Always 0: no archives are looked into.
 *
 * Meant: the text is opened for reading and closed all the same, so that a URL is contacted and a missing local file
 * sends the message of kvOSCreateFile. A null text opens nothing and leaves last error 2.
 */
KVUTIL_API uint32_t kvOSFileNameIsInArchive(const char *pText);

/** Always 0; nothing is looked at. */
KVUTIL_API uint32_t kvOSFileIsInArchive(int64_t hFile);

#ifdef __cplusplus
}
#endif

#endif
