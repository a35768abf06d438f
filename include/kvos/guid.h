// Identifiers: GUIDs as text and bytes, time-based UUIDs, and basic UMIDs made from them (SMPTE 330M).
//
// No call here swaps bytes between text and record: what strSetGUID shows are the 16 bytes in the order of memory. The
// text form of a UUID is another one, made from its fields, and shows the first three of them most significant digit
// first, so that on a little-endian machine the two texts of one UUID differ.
//
// No call sends a message or changes the last error but where it says so. The generator's state belongs to the process
// and has no lock: calls from several threads are safe but may then give one time value twice.
#ifndef KVOS_GUID_H
#define KVOS_GUID_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A UUID in the fields of RFC 4122, in the byte order of the machine. */
typedef struct uuid4122_t {
    uint32_t time_low;
    uint16_t time_mid;
    uint16_t time_hi_and_version;
    uint8_t clock_seq_hi_and_reserved;
    uint8_t clock_seq_low;
    uint8_t node[6];
} uuid4122_t;

/* Bits of dwFlags of strSetGUID. */
#define KVGUID_NO_BRACES 1u
#define KVGUID_NO_DASHES 2u

/* Bytes of a basic UMID. */
#define KVUMID_SIZE 32

/**
 * Writes 16 bytes as text: "{00112233-4455-6677-8899-aabbccddeeff}", in lower case.
 *
 * @param pOut      null: nothing is written. Otherwise room for 39 bytes behind qwOffset, less 2 without braces and 4
 *                  without dashes.
 * @param pGuid     16 bytes, shown in their order; null: nothing is written.
 * @param qwOffset  bytes of pOut ahead of the text, which stay as they are.
 * @param dwFlags   KVGUID_... bits; others are ignored.
 * @return pOut.
 */
KVUTIL_API char *strSetGUID(char *pOut, const void *pGuid, uint64_t qwOffset, uint32_t dwFlags);

/**
 * Reads 16 bytes from hexadecimal digits of either case, two a byte, the first one the higher.
 *
 * Meant: whatever is no such digit is passed over, braces, dashes and letters alike. Reading ends with the text or with
 * its 32nd digit; bytes that it did not reach are 0.
 *
 * @param pGuid  receives the 16 bytes; null: nothing is done.
 * @param pText  null counts as empty.
 * @return pGuid.
 */
KVUTIL_API void *strGetGUID(void *pGuid, const char *pText);

/**
 * Makes a new UUID of version 1: the time in units of 100 ns since 15 October 1582, a random clock sequence for each
 * UUID, and a node of random bytes, with the multicast bit, that stays the same in a process. A fork makes one of its
 * own.
 *
 * Calls within one microsecond are told apart by a count of up to 1024 added to the time; then the call reads the clock
 * until it moves. Meant: a microsecond is 10 units, so that the time of a count above 9 comes again with a later
 * reading; what keeps such two apart is the clock sequence, 14 bits of it. Meant: the call seeds rand of the process,
 * once, and takes a value of it each time.
 *
 * @param pUuid  null: nothing is made.
 * @return 1; 0 for null.
 *
 * Last error: not kept.
 */
KVUTIL_API uint32_t uuid4122_create(uuid4122_t *pUuid);

/** Prints the text form of a UUID and a line feed to standard output. Null prints nothing. */
KVUTIL_API void puid(const uuid4122_t *pUuid);

/**
 * Writes the text form of a UUID, made from its fields: "01234567-89ab-cdef-0123-456789abcdef".
 *
 * Meant: 38 bytes are asked for, although the text and its terminator need 37. Below that pOut receives "uuid string
 * too small", cut to its size.
 *
 * @param pOut    null: nothing is written, and the result is -1.
 * @param qwSize  bytes of pOut.
 * @param pUuid   null: as for pOut.
 * @return characters of the text: 36; 21, cut or not, for a buffer that is too small.
 */
KVUTIL_API int32_t snpuid(char *pOut, uint64_t qwSize, const uuid4122_t *pUuid);

/**
 * snpuid of a new UUID, which is used up for a buffer that is too small as well.
 *
 * @return that of snpuid.
 *
 * Last error: not kept.
 */
KVUTIL_API int32_t get_uuid4122_string(char *pOut, uint64_t qwSize);

/** uuid4122_create, by its other name. */
KVUTIL_API uint32_t kvOSMakeGUID(uuid4122_t *pUuid);

/**
 * Makes a basic UMID: the label of 13 bytes, the last of which is the length of what follows, an instance number of
 * three zeros, and the material number.
 *
 * @param pUmid      receives 32 bytes.
 * @param pMaterial  16 bytes, taken in their order.
 * @return 1; 0, with nothing written, for a null pointer.
 */
KVUTIL_API uint32_t kvOSSetUMID330(uint8_t *pUmid, const void *pMaterial);

/**
 * kvOSSetUMID330 with a new UUID as the material number, its bytes as they lie in memory.
 *
 * @return 1; 0, with nothing written, for null.
 *
 * Last error: not kept.
 */
KVUTIL_API uint32_t kvOSGenerateUMID330(uint8_t *pUmid);

#ifdef __cplusplus
}

static_assert(sizeof(uuid4122_t) == 16, "a UUID is its 16 bytes and nothing else");
#endif

#endif
