// Serial ports by number or by device, each set up as a raw line.
//
// A handle is the line's file descriptor plus 1, and 0 is no line. Nothing checks a handle: on one that is no line the
// calls fail as the system does, and nothing else happens.
//
// Port 1 is "ttyS0", port 2 is "ttyS1", and so on. "ttyS0" to "ttyS9" are links in the directory of kvOSGetConfigDir
// (flag 0), made to whichever adapters are there, so that the numbers of a machine follow from its devices alone.
//
// No call here sends a message of its own. Any thread may call; only the links on disk are shared, without a lock.
#ifndef KVOS_SERIAL_H
#define KVOS_SERIAL_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Opens a port by its number: the link of that number if it is present, else the device "/dev/ttyS...".
 *
 * Port 0 is "/dev/tty.Kona Serial" if that is present, else "/dev/tty.RS422 Deck Control" if that is, else
 * "/dev/ttyS0". A name is present if kvOSFileExists says so. Meant: no link is made for port 11 and above, so that port
 * 11 opens "/dev/ttyS10".
 *
 * @param dwPort  0 to 100; above that no number of two digits is left.
 * @return the handle as of kvOSSerialOpenString; 0 on failure.
 *
 * Last error: as the system's open left it; ENODEV for a port above 100.
 */
KVUTIL_API int64_t kvOSSerialOpen(uint32_t dwPort);

/**
 * Opens a device: for this process alone where the system can do that, not as its terminal, blocking, with 38400 baud,
 * 8 bits, parity 1, one stop bit, and both directions flushed. The links are made first if there are none.
 *
 * Meant: parity 1 is odd parity, and is how a line starts up.
 *
 * @param pPath  the device; taken as it stands, without a redirect. What can be opened for reading and writing and is
 *               no line gives a handle too.
 * @return the handle, closed with kvOSSerialClose; 0 on failure.
 *
 * Last error: as the system's open left it; EINVAL for null.
 */
KVUTIL_API int64_t kvOSSerialOpenString(const char *pPath);

/**
 * Makes the line raw, with these settings and nothing else of what was set before; then raises DTR and asks the driver
 * for its shortest receive latency.
 *
 * A read waits for its first byte without limit, and a second for each further one, as kvOSSerialRead tells. No flow
 * control, no echo, no signals.
 *
 * @param dwBaud    0, 50, 75, 110, 134, 150, 200, 300, 600, 1200, 1800, 2400, 4800, 9600, 19200, 38400, 57600 or
 *                  115200. Meant: any other rate becomes 38400, so also 31250. 0 drops DTR, which this call raises
 *                  again.
 * @param dwBits    8, 7 or 6; any other value means 5.
 * @param dwParity  0 none, 2 even, any other value odd.
 * @param dwStop    2, or any other value for one stop bit.
 * @return 0, also where the line refused.
 *
 * Last error: untouched.
 */
KVUTIL_API int32_t kvOSSerialSetup(int64_t hSerial, uint32_t dwBaud, uint32_t dwBits, uint32_t dwParity,
                                   uint32_t dwStop);

/**
 * Makes the links "ttyS0" to "ttyS9" anew, each to the next device that is present; what else has such a name is
 * removed. Every open calls this with 0.
 *
 * On Linux the devices are "/dev/ttyUSB0" to "/dev/ttyUSB9", then "/dev/ttyACM0" to "/dev/ttyACM9"; on macOS the
 * "/dev/cu." names of built-in, PCI and USB ports. Ten devices get a link. A name is present if kvOSFileExists says so:
 * a name on gvecNames gets its link without a look.
 *
 * @param fForce  0: nothing is done while "ttyS0" is present, which a link to a device that is gone is not.
 * @return 0, also where no link could be made.
 *
 * Last error: untouched.
 */
KVUTIL_API uint32_t kvOSSerialSetupSystem(uint32_t fForce);

/** Switching the direction of a line is not supported: always 0xFFFFFFFF. */
KVUTIL_API uint32_t kvOSSerialDirection(void);

/**
 * Drops what has come and was not read, what was written and is not sent, or both.
 *
 * @param fRx, fTx  not 0 for each direction. Meant: with both 0 what is not sent is dropped.
 * @return as tcflush: 0, or -1 with the last error set.
 */
KVUTIL_API int32_t kvOSSerialFlush(int64_t hSerial, uint32_t fRx, uint32_t fTx);

/** Closes the line; the handle is not checked. Always 0. Last error: untouched. */
KVUTIL_API int32_t kvOSSerialClose(int64_t hSerial);

/** Asks for the shortest receive latency again, as kvOSSerialSetup did. Meant: timeouts stay as they are. Always 0. */
KVUTIL_API int32_t kvOSSerialSetTimeOuts(int64_t hSerial);

/**
 * Writes to the line, with one write of the system.
 *
 * @param qwCount     bytes. 0, and a null pointer of either kind: nothing is done and pqwWritten stays as it is.
 * @param pqwWritten  receives the bytes that went, 0 on failure.
 * @return 1 if at least one byte went, else 0 with the last error as the system left it.
 */
KVUTIL_API uint32_t kvOSSerialWrite(int64_t hSerial, const void *pBuffer, uint64_t qwCount, uint64_t *pqwWritten);

/**
 * Reads from the line: waits for the first byte without limit, then goes on until the count is met or a second has
 * passed without a further byte. A signal's handler ends both waits, the first one only unless it was installed to
 * restart reads.
 *
 * @param qwCount  bytes. 0, and a null pointer of either kind: nothing is done and pqwRead stays as it is. With more
 *                 than the other side sends, the call returns a second behind the last byte.
 * @param pqwRead  receives the bytes that came, 0 on failure.
 * @return 1 if at least one byte came, whatever ended the call; else 0 with the last error as the system left it: EINTR
 *         for a signal ahead of the first byte.
 */
KVUTIL_API uint32_t kvOSSerialRead(int64_t hSerial, void *pBuffer, uint64_t qwCount, uint64_t *pqwRead);

/* Selectors of the two calls below. */
#define KVSERIAL_MODEM_LINES 1u
#define KVSERIAL_DTR 5u

/** The modem lines for KVSERIAL_MODEM_LINES, in the system's TIOCM_ bits, 0 if the line can't tell; else 0. */
KVUTIL_API uint32_t kvOSSerialGetStat(int64_t hSerial, uint32_t dwSelector);

/** Raises or drops DTR for KVSERIAL_DTR and gives 0, also where the line refused; 0xFFFFFFFF for other selectors. */
KVUTIL_API uint32_t kvOSSerialSetStat(int64_t hSerial, uint32_t dwSelector, uint32_t fOn);

#ifdef __cplusplus
}
#endif

#endif
