// One block compressed, or unpacked, in one call.
//
// The form is zlib's; unpacking takes gzip as well. No call keeps anything, sends a message or promises the last error;
// all may be made from any thread. An output never passes its stated length, whatever the input claims to be.
#ifndef KVOS_COMPRESSION_H
#define KVOS_COMPRESSION_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Bytes to provide for what kvOSCompress makes of so many: the length, 5 bytes for each 16 KiB begun, and 6.
 *
 * Meant: of nothing it gives 6, where the empty stream has 8. From 16384 bytes on it can be a few bytes short for data
 * in which hardly three bytes come twice, as in what is compressed or encrypted already: zlib ends its blocks a byte
 * sooner. 0xFFFFFFFF of kvOSCompress tells; the length, a thousandth of it and 16 bytes are always enough. The blocks
 * are counted in signed 32 bits, so that from 0x7FFFC001 bytes on the result is too small.
 */
KVUTIL_API uint32_t kvOSCalcCompressedLen(uint32_t dwLength);

/**
 * Compresses a block to a zlib stream, at the default level.
 *
 * @param dwDestinationLength  bytes of pDestination.
 * @return meant: dwDestinationLength plus the bytes of the stream, in 32 bits. Subtract dwDestinationLength to know the
 *         latter. 0xFFFFFFFF if the stream does not fit, memory runs out, or a pointer is null; a null source is
 * allowed with a length of 0. With a room of nearly 4 GiB the sum of a success can be 0xFFFFFFFF as well.
 */
KVUTIL_API uint32_t kvOSCompress(const void *pSource, uint32_t dwSourceLength, void *pDestination,
                                 uint32_t dwDestinationLength);

/**
 * Unpacks a zlib or gzip stream, told apart by its head. What follows the stream's end is not looked at, so that of
 * several gzip members the first one comes out.
 *
 * @return the bytes written. 0xFFFFFFFF if they do not fit, if the stream is cut or damaged (its checksum counts), if
 *         memory runs out, or for a null pointer; pDestination may have been written to then.
 */
KVUTIL_API uint32_t kvOSUncompress(const void *pSource, uint32_t dwSourceLength, void *pDestination,
                                   uint32_t dwDestinationLength);

#ifdef __cplusplus
}
#endif

#endif
