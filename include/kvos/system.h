// The system around a program: whether a newer version of it is out.
#ifndef KVOS_SYSTEM_H
#define KVOS_SYSTEM_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Asks the update server whether a newer version of a product is out: fetches one JSON document of all products over
 * HTTPS with kvOSHTTPCommand and compares. Takes as long as the server does; there is no time limit.
 *
 * In the document the product's name is followed, at whatever distance, by the name "mac", and that by pairs, of which
 * those that begin within the next 13 tokens are seen: "version_major", "version_minor", "version_build", "url",
 * "description". Meant: no other system's name is sought; a key that is only the beginning of one of these passes for
 * it; of a version number the low 16 bits count; a major or minor number below the caller's ends the comparison.
 *
 * @param pProduct  the product's name. Meant: "mediaferry", written exactly so, has an update server of its own.
 * @param dwMajor   the caller's own version, with dwMinor and dwBuild.
 * @param ppVersion receives "major.minor.build" as the document has it; ppUrl its "url".
 * @param ppDescription receives the document's "description" for the result 1.
 * @return 1: a newer version is out; all three texts are the caller's, to be freed with KVFree.
 *         0: none is; *ppDescription is the constant "Up to date with the latest version", the other two are the
 *         caller's, to be freed with KVFree.
 *         -1: not known; *ppVersion and *ppUrl are a constant empty text, *ppDescription is the constant "Error: No
 *         information returned from server" or "Error: could not find product name or operating system", the latter
 *         also for a document without all three numbers. A null argument gives -1 with EINVAL, the pointers that are
 *         there being set to the first of these.
 *         Constant texts must not be freed. A "url" or "description" that the document does not have is empty.
 *
 * Certificates: only the host's name is checked, as by every "GET" of kvOSHTTPCommand. Meant.
 * Last error: as kvOSHTTPCommand. Messages: those of kvOSHTTPCommand with "GET".
 * Threads:    may be called from any thread.
 */
KVUTIL_API int32_t kvOSGetAppVersion(const char *pProduct, uint32_t dwMajor, uint32_t dwMinor, uint32_t dwBuild,
                                     char **ppVersion, char **ppUrl, char **ppDescription);

#ifdef __cplusplus
}
#endif

#endif
