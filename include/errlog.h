// Messages: error codes and their text, and the calls that report.
//
// Every call here may be made from any thread, and none of them fails or alters its caller: each keeps errno, and each
// returns 0 unless it says otherwise. The variables are plain words without a lock; a host sets them before it starts
// its threads.
#ifndef ERRLOG_H
#define ERRLOG_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * An error code is 32 bits: class in bits 31-30 (0 success, 1 information, 2 warning, 3 error); bit 29 set when the
 * fields below apply, clear for a plain number such as errno; module in bits 27-16; area in bits 15-12; operation in
 * bits 11-0. Bit 28 is ignored. 0 asks for the present errno, 0xFFFFFFFF stands for no code.
 */
#define KVERR_NONE 0xFFFFFFFFu
#define KVERR_CLASS_INFORMATION 0x40000000u
#define KVERR_CLASS_WARNING 0x80000000u
#define KVERR_CLASS_ERROR 0xC0000000u

extern KVUTIL_API uint32_t gfReadReg;           /* 1: the settings have been read */
extern KVUTIL_API uint32_t gfShowInfomational;  /* the spelling is meant; silences nothing */
extern KVUTIL_API uint32_t gfShowWarnings;      /* silences nothing */
extern KVUTIL_API uint32_t gfShowErrors;        /* silences nothing; 0 keeps errors out of the multi-line layout */
extern KVUTIL_API uint32_t gfUseErrorBox;       /* exactly 1: errors take the multi-line layout */
extern KVUTIL_API uint32_t gfMKTestActive;      /* not 0: ErrMsgOut takes the multi-line layout */
extern KVUTIL_API uint32_t gf2MKActive;         /* the same; for the host, the library never sets it */
extern KVUTIL_API uint32_t gfNotifyMKOutput;    /* for the host; the library neither reads nor writes it */
extern KVUTIL_API uint32_t gfUseErrorWin;       /* for the host; read from the settings and not used */
extern KVUTIL_API uint32_t gdwDebugLevel;       /* for the host; read from the settings and not used */
extern KVUTIL_API uint32_t gfEnableLog;         /* messages go to a log file */
extern KVUTIL_API uint32_t gfEnableList;        /* messages are kept in the list */
extern KVUTIL_API uint32_t gdwOutputToStdDebug; /* not 0: messages are copied to standard error */
extern KVUTIL_API char szLogName[4096];         /* scratch for the configured log name */
extern KVUTIL_API char gszLogName[4096];        /* the configured log name */
extern KVUTIL_API char szWin[1024];             /* the text that FormatWinMsg made last; one for the whole process */

/**
 * Turns a code into a short text in szWin: a blank for 0xFFFFFFFF, "ERR:2 (0x00000002) " for a plain number (0 being
 * replaced by errno), and class, module, area and operation for a structured code, as in "ERROR [MediaFile] File->Not
 * Found ". Meant: the class "ERROR " has no colon, the three others have one.
 *
 * @return szWin. Use it at once: the next call from any thread fills it anew.
 */
KVUTIL_API char *FormatWinMsg(uint32_t dwCode);

/**
 * The general report: ErrMsgBox for an error-class code while gfShowErrors is not 0 and gfUseErrorBox is exactly 1,
 * otherwise ErrMsgOut. Meant: the show flags silence nothing, every message of every class is logged.
 *
 * @param pText  null counts as "No error supplied". At 4097 bytes or more it goes to standard error alone, whole. The
 *               composed message holds at most 4096 bytes; what the layout adds to a long text is cut there.
 * @param qwReserved1, qwReserved2  not looked at; 0.
 * @param pFile, nLine  source position; used only when pFile is not null and nLine is not 0.
 */
KVUTIL_API uint32_t ErrMsg(uint32_t dwCode, const char *pText, uint64_t qwReserved1, uint64_t qwReserved2,
                           const char *pFile, int32_t nLine);

/** Reports on one line: "text  -1 [0xFFFFFFFF] {code text}  ", or "\nfile(line) : text  -1 [0xFFFFFFFF] code text  ".
 */
KVUTIL_API uint32_t ErrMsgOut(uint32_t dwCode, const char *pText, uint64_t qwReserved1, uint64_t qwReserved2,
                              const char *pFile, int32_t nLine);

/** Reports in several lines: text, code, code text, source position. No dialog exists; it goes where all others go. */
KVUTIL_API uint32_t ErrMsgBox(uint32_t dwCode, const char *pText, uint64_t qwReserved1, uint64_t qwReserved2,
                              const char *pFile, int32_t nLine);

/** Writes the line of ErrMsgOut to standard error only; nothing is logged. */
KVUTIL_API uint32_t ErrMsgDbg(uint32_t dwCode, const char *pText, uint64_t qwReserved1, uint64_t qwReserved2,
                              const char *pFile, int32_t nLine);

/** Reports a ready text, as "\nfile(line) : text  " with a source position. Returns 0xFFFFFFFF for a null text. */
KVUTIL_API uint32_t ErrStrOut(uint32_t dwCode, const char *pText, const char *pFile, int32_t nLine);

/** Formats a text of at most 4095 bytes, longer ones being cut, and reports it with ErrStrOut. */
KVUTIL_API uint32_t ErrFmtOut(uint32_t dwCode, const char *pFile, int32_t nLine, const char *pFormat, ...)
    KVUTIL_PRINTF(4, 5);

/** The everyday trace: formats a text of at most 4095 bytes, longer ones being cut, and reports it with code 0. */
KVUTIL_API uint32_t ErrOut(const char *pFormat, ...) KVUTIL_PRINTF(1, 2);

/** Formats a text of at most 1023 bytes and writes it to standard error while gdwOutputToStdDebug is on; not logged. */
KVUTIL_API uint32_t _DbgOut(const char *pFormat, ...) KVUTIL_PRINTF(1, 2);

/** Writes a text to standard error while gdwOutputToStdDebug is on; not logged. The first argument is ignored. */
KVUTIL_API uint32_t _DbgOutString(uint64_t qwReserved, const char *pText);

/** Always 0. */
KVUTIL_API uint32_t _GetErrorLevel(void);

/** Marks the settings as read. Returns gszLogName. */
KVUTIL_API char *_ReadRegSettings(void);

/** Stores the flag in gfUseErrorBox. */
KVUTIL_API uint32_t ErrMsgUseBox(uint32_t fUse);

/* Switches that change nothing, whatever they are passed. Meant: the variables their names suggest stay as they are. */
KVUTIL_API uint32_t ErrMsgNotifyMK(uint32_t fNotify);
KVUTIL_API uint32_t ErrMsgMKTestActive(uint32_t fActive);
KVUTIL_API uint32_t ErrMsg2MKActive(uint32_t fActive);
KVUTIL_API uint32_t ErrMsgUseWindow(uint32_t fUse);

#ifdef __cplusplus
}
#endif

#endif
