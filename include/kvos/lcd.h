// The front panel: a character display with keys and LEDs on a serial line, one panel a process.
//
// A frame, in both directions, is the command, the length of the data, the data, and a CRC, low byte first. The panel
// answers each command with a reply: the command with its top two bits as 01.
//
// Calls wait for that reply only if gfDefaultWait is not 0, or if they are told to. Meant: without waiting every call
// succeeds, whether or not there is a panel; and a wait for the first byte of a reply has no limit, so that a panel
// that stays silent holds the caller until the line is hung up or signals interrupt it. Each interruption, by a handler
// that was not installed to restart reads, ends one of the four tries of send_packet.
//
// The line and the variables belong to one thread at a time. Sending and receiving takes no lock and no memory; the
// opens do for their messages.
#ifndef KVOS_LCD_H
#define KVOS_LCD_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KVLCD_DATA_SIZE 22 /* bytes of data that a packet holds */
#define KVLCD_TEXT_SIZE 20 /* bytes of text that one call sends */

/** One command, or the reply to it. */
typedef struct COMMAND_PACKET {
    uint8_t command;
    uint8_t data_length; /* bytes */
    uint8_t data[KVLCD_DATA_SIZE];
    uint16_t CRC; /* stored by send_packet; of a reply as it came, unchecked */
} COMMAND_PACKET;

extern KVUTIL_API int64_t ghCOM;                    /* the open line, a handle of kvos/serial.h; 0: closed */
extern KVUTIL_API uint32_t gdwBAUDRate;             /* speed that lcdFinishOpen takes; 19200 at start */
extern KVUTIL_API uint64_t gfDefaultWait;           /* not 0: calls without a wait of their own await the reply */
extern KVUTIL_API COMMAND_PACKET incoming_response; /* for the host; no call here uses it */
extern KVUTIL_API const uint8_t korvaneD[64];       /* eight characters of eight rows, for lcdSetKorvaneDGraphic */

/**
 * Opens the panel's line by port number, as kvOSSerialOpen, and brings panel and line to one speed.
 *
 * The panel may be at either of its speeds. So the line is opened at the other one, the panel told to change, the line
 * closed, opened again and handed to lcdFinishOpen, whatever the panel replied. Ahead of the close the line gets up to
 * a second to send what it holds, or until a signal's handler comes; what is left then is dropped.
 *
 * Set gfDefaultWait behind this call, not ahead of it: a panel that has the wanted speed already never replies to a
 * change that comes at the other one, and with gfDefaultWait set that reply is awaited without limit.
 *
 * Meant: dwBaud only says which way the panel is switched, 19200 to that speed and any other value to 115200;
 * gdwBAUDRate is what the line then gets, and has to say the same. A line that is open already is not closed by this:
 * ghCOM keeps it if the line can't be opened at all, and is the new line's from there on.
 *
 * @return the handle, which ghCOM holds as well, closed with lcdCloseCom; -1 on failure. ghCOM is 0 then if the line
 *         was opened first and lost at its second open or for want of a panel.
 *
 * Last error: as the failed open left it, or as lcdFinishOpen.
 * Messages:   "LCD opening com %ld " with the port, for 19200 alone; those of lcdFinishOpen.
 */
KVUTIL_API int64_t lcdOpenCom(uint32_t dwPort, uint32_t dwBaud);

/** lcdOpenCom with the path of the device, as kvOSSerialOpenString. The message is "LCD opening com <%s> ". */
KVUTIL_API int64_t lcdOpenComString(const char *pPath, uint32_t dwBaud);

/**
 * Sets the line to gdwBAUDRate, 8 bits, no parity, one stop bit, and asks the panel for a sign of life.
 *
 * ghCOM is not set by this, and the question goes out on ghCOM's line, whatever hSerial is: with ghCOM 0 nothing is
 * sent, which is a failure only where a reply is awaited.
 *
 * @param hSerial  the line that ghCOM holds already; 0 for none. On failure it is closed, and ghCOM becomes 0 if it
 *                 held that line; another one stays.
 * @return hSerial; -1 without one, or when gfDefaultWait asks for a reply and none came.
 *
 * Last error: ETIMEDOUT when no reply came; untouched without a handle; it says nothing after success.
 * Messages:   "WARNING(kvOSLcd): Unable to open front panel COM port.\n\r" without a handle, "WARNING(kvOSLcd): Front
 *             Panel LCD NOT FOUND\n\r" without a reply.
 */
KVUTIL_API int64_t lcdFinishOpen(int64_t hSerial);

/** Closes the line, if one is open, and makes ghCOM 0. Always 0. */
KVUTIL_API int32_t lcdCloseCom(void);

/**
 * Sends one command and, if told to, waits for its reply.
 *
 * Four tries: each reads one byte, and if that is the head of a reply, the whole of it; a reply to another command is
 * dropped. A byte that is no head, and no byte at all, cost a try. See the top for how long a first byte is awaited; a
 * head without a length within a second ends the wait with the tries that are left.
 *
 * The replies to commands that did not wait stay on the line and cost tries here: four of them use up the wait.
 * kvOSSerialFlush(ghCOM, 1, 0) ahead of a first wait drops what has come.
 *
 * @param pPacket  command, length (0 to 22) and data; its CRC is stored here. The reply overwrites command, length, as
 *                 many bytes of data, and CRC, as lcdSaveReturnPacket tells.
 * @param fWait    not 0: wait for the reply.
 * @return 0; -1 if the reply was awaited and did not come, which includes no line being open; -1 for null, and for a
 *         length above 22. Meant: without waiting 0 says nothing, not even that a line is open.
 *
 * Last error: ETIMEDOUT when the reply did not come, EINVAL for a packet refused.
 */
KVUTIL_API int32_t send_packet(COMMAND_PACKET *pPacket, uint64_t fWait);

/**
 * Reads the rest of a reply whose first byte has been read: length, data, CRC. A second of silence ends it early.
 *
 * Meant: a length of 21 or more counts as 20, and what the frame has beyond that stays on the line. The CRC is not
 * checked, nor is bCode.
 *
 * @param pPacket  receives bCode as its command, the length, the data and the CRC; data behind the length stays as it
 *                 was. Of a reply that broke off the length is that of the data that came, and without its CRC the
 *                 packet's stays.
 * @return 0; -1, and the packet as it was, if the length did not come, without a line and for null.
 *
 * Last error: ETIMEDOUT when the length did not come, EBADF without a line, EINVAL for null.
 */
KVUTIL_API int32_t lcdSaveReturnPacket(COMMAND_PACKET *pPacket, uint8_t bCode);

/**
 * The CRC of a frame, over its command, length and data: 16 bits, polynomial 0x8408 (reflected), start 0xFFFF, one's
 * complement at the end. 0 for a length of 0 or null.
 */
KVUTIL_API uint16_t get_crc(const uint8_t *pBuffer, uint32_t dwLength);

/* Commands. Each is sent with send_packet and gfDefaultWait, and gives its result, 0 or -1. */

/** Asks for a sign of life: the panel sends the 16 bytes back. */
KVUTIL_API int32_t lcdPing(void);

/** Changes the panel's speed, 0 for 19200 baud and 1 for 115200, but not the line's. */
KVUTIL_API int32_t lcdSetBaudRate(uint8_t bIndex);

/** Makes the panel start up as it is now. */
KVUTIL_API int32_t lcdStoreAsBoot(void);

/** Empties the display. */
KVUTIL_API int32_t lcdClear(void);

/**
 * Shows text, whose bytes are the panel's characters.
 *
 * @param bRow, bColumn  from 0; on the wire the column comes first.
 * @param pText          may be null without length.
 * @param dwLength       bytes, at most KVLCD_TEXT_SIZE; the caller keeps that limit, and more is refused with -1
 *                       (EINVAL), unsent.
 */
KVUTIL_API int32_t lcdSendText(uint8_t bRow, uint8_t bColumn, const uint8_t *pText, uint32_t dwLength);

/**
 * Chooses the keys that the panel keeps track of.
 *
 * @param dwMask  a bit a key; meant: cut to dwMask & 0x2F, so that bit 4 is no key.
 * @return -1 on failure, else the second byte of the reply's data; that is the mask as it was cut where no reply was
 *         awaited, or the reply has no second byte.
 */
KVUTIL_API int32_t lcdConfigureKeyPolling(uint32_t dwMask);

/** Asks which keys were pressed. Meant: always 0, the reply is dropped; use send_packet with command 0x18 for it. */
KVUTIL_API int32_t lcdReadKeyPress(uint64_t fWait);

/** lcdReadKeyPress under a second name. */
KVUTIL_API int32_t lcdReadResponses(uint64_t fWait);

/**
 * Sets the two colours of an LED: line 12 - 2 * bLed of the panel to bLevel1, then line 11 - 2 * bLed to bLevel2.
 *
 * Meant: always 0, whatever became of the two. Above 5 there are no such lines; what is sent is the number's low byte.
 */
KVUTIL_API int32_t lcdSetLED(uint8_t bLed, uint8_t bLevel1, uint8_t bLevel2);

/** Loads the eight characters of korvaneD, with a command each. Meant: always 0, whatever became of them. */
KVUTIL_API int32_t lcdSetKorvaneDGraphic(void);

/**
 * Turns typed text into the panel's bytes: "\\" is a backslash, "\065" a decimal value of three digits up to 255,
 * "\b01000001" a binary one of eight digits, "\x41" a hexadecimal one of two. Anything else is copied as it stands, one
 * character for one byte, so also a backslash that begins none of these: "\256" stays four characters.
 *
 * @param pInput   read no further than these bytes need: a field without a terminator is a text too.
 * @param pOutput  receives at most 23 bytes, without a terminator. The text ends at its terminator or there, which is
 *                 more than lcdSendText takes.
 * @return the bytes written; 0, with nothing written, for an empty text and for null.
 */
KVUTIL_API uint32_t lcdConvertInputStringToArray(const char *pInput, uint8_t *pOutput);

#ifdef __cplusplus
}
#endif

#endif
