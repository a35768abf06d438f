// Messages: error codes and their text, the calls that report, and the log that keeps what was reported.
//
// Every call here may be made from any thread, and none of them fails or alters its caller: each keeps errno, and each
// returns 0 unless it says otherwise. A path fits in 4096 bytes with its terminator; a longer one is refused, not cut.
//
// The variables are plain words without a lock. A host that sets them calls _ReadRegSettings first, sets them then, and
// starts its threads after that: otherwise the first message of the process reads the stored values over them. Nobody
// makes that first message while holding the lock of gErrLogList.
#ifndef ERRLOG_H
#define ERRLOG_H

#include <stdint.h>

#ifdef __cplusplus
#include <string>
#include <vector>
#endif

#include "dlist.h"
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

/**
 * Formats a text of at most 4095 bytes, longer ones being cut, and reports it with ErrStrOut. A null format is no
 * message here and in the two calls below: they return 0, and nothing is told.
 */
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

/**
 * Reads the switches above and the log's name from "ZMW\Advanced\Debug" of the default store, and sets gfReadReg. What
 * is missing there is written, from the variables' present values; nothing is saved for that.
 *
 * "DefaultLogName" has to begin with "/" and to have 3 characters; meant: any other is wiped from the store, and a
 * missing one becomes ".". gszLogName, if it is empty then, becomes "/debugout.log" in the "Path" of
 * "ZMW\NetServer\HttpDirs", which is stored as "DefaultLogName" and saved. A text that does not fit counts as missing
 * in the second place and as no name in the first. While gfReadReg is 0 the library calls this by itself, with the
 * first message or ErrLogSetName; ErrLogSetFileName does whenever gszLogName is empty.
 *
 * @return gszLogName.
 *
 * Messages: those of opening and saving the default store.
 * Threads:  not beside a thread that changes the variables, nor with the lock of gErrLogList held.
 */
KVUTIL_API char *_ReadRegSettings(void);

/** Stores the flag in gfUseErrorBox. */
KVUTIL_API uint32_t ErrMsgUseBox(uint32_t fUse);

/* Switches that change nothing, whatever they are passed. Meant: the variables their names suggest stay as they are. */
KVUTIL_API uint32_t ErrMsgNotifyMK(uint32_t fNotify);
KVUTIL_API uint32_t ErrMsgMKTestActive(uint32_t fActive);
KVUTIL_API uint32_t ErrMsg2MKActive(uint32_t fActive);
KVUTIL_API uint32_t ErrMsgUseWindow(uint32_t fUse);

/* ---- The log: the last messages in a list, and all of them in a file while one is open ---- */

/* The value of dwNodeType in every record of the log. */
#define KVERRLOG_NODE_TYPE 32768u

/** One message of the log. Records belong to the library; look at them between d_ListLock and d_ListUnLock only. */
typedef struct kvErrLogRecord {
    d_ListNode node;
    uint32_t dwNumber;   /* counts from 0; has gaps where a message was empty or found no memory */
    uint32_t dwNodeType; /* KVERRLOG_NODE_TYPE */
    uint32_t dwCode;
    uint32_t dwMs;       /* wall clock at arrival in milliseconds, cut to 32 bits */
    uint32_t dwRepeats;  /* further messages, equal to this one, that it stands for */
    char *pText;         /* up to two line ends at its end are removed */
    uint64_t qwReserved; /* 0 */
} kvErrLogRecord;

/* The last messages, at most 999, oldest first. Made by the first call that needs it, ended by ErrLogClose. */
extern KVUTIL_API d_List gErrLogList;
extern KVUTIL_API uint8_t gfErrLogListValid; /* 1: ErrLogSetFileName has named a file, which ErrLogPut may open */

/* Forms of ErrLogGet. Every other value gives the text alone. No form escapes the text for HTML or XML. */
#define KVERRLOG_FORM_LINE 0u         /* 7@1234ms: 0x00000000  text, and a line feed; 50 is the same */
#define KVERRLOG_FORM_HTML 100u       /* the line with its colour: lime, fuchsia, red for classes 1, 2, 3 */
#define KVERRLOG_FORM_HTML_TABLE 200u /* a row of a table, classes of cells kverrmsgnum, kverrmsgms, kverrcode, ... */
#define KVERRLOG_FORM_XML 300u        /* <messageNumber>, <timeMs>, <errorCode>, <message> */

/* Modes of ErrLogSetMode. Meant: 2, 3 and every value not listed do nothing. */
#define KVERRLOG_MODE_CLEAR (-1)          /* empty the list, count from 0 again; an open file stays open */
#define KVERRLOG_MODE_FILE 0              /* log to a file from now on */
#define KVERRLOG_MODE_DELETE 1            /* close the file and delete it */
#define KVERRLOG_MODE_DUMP 4              /* write the list to a file of its own */
#define KVERRLOG_MODE_STANDARD_ERROR 4097 /* copy messages to standard error */
#define KVERRLOG_MODE_NO_STANDARD_ERROR 4096

/**
 * Puts a message into the list and, while gfEnableLog is set, into the log file: what every report ends in.
 *
 * The first call of the process reads the settings. A file that ErrLogSetFileName has named is opened here, and begins
 * with the messages of the list. Past 10,485,760 bytes it is closed, and a file with the next number ("_001") begins in
 * the same way; without such a name, a file of mode 0 is only closed. docs/log.md tells the lines of a file, and when
 * they are on disk.
 *
 * Meant: repeats are told while a file is open only, by the text as it was kept, so never for a text that ends in a
 * line feed. An empty text uses a number up and is not kept; behind a run of repeats it ends the run, which the message
 * after it ends again. A failed write goes unnoticed. A list that fills a file by itself wraps it ("Log Wrapped"), and
 * the old content stays behind the new. With gfEnableLog set and no name a full list names a file by gszLogName, for
 * ErrLogGetName to tell, and opens none.
 *
 * @param pText  of any length; null is refused with 0xFFFFFFFF.
 * @return 0: kept, also while gfEnableList is 0, which keeps nothing. 0xFFFFFFFF: no memory. 0xFFFFFFFE: it repeats the
 *         message before it, which was counted up. Any other N: kept, and a run of N equal messages ended with it.
 *
 * Messages: "ERROR: Unable to open log file for output (%d): " with errno, and the path, to standard error whatever
 *           gdwOutputToStdDebug says; gfEnableLog is 0 from then on.
 */
KVUTIL_API uint32_t ErrLogPut(uint32_t dwCode, const char *pText);

/**
 * Reads one message of the list back. For a reader that goes on from message to message the way is one step a call: the
 * place of the last one returned is kept, one for the whole process.
 *
 * @param dwIndex  the number wanted; the next one is taken where it is missing. 0: number 0 or, once 1000 numbers are
 *                 used up, the number 1000 behind the next one. Meant: where gaps have kept older messages in the list,
 *                 that is not the oldest, and may be missing. 0xFFFFFFFF: returns the number one past the newest
 * (meant: count plus first number, so gaps make it lower).
 * @param dwForm   KVERRLOG_FORM_...
 * @param pdwNumber, pdwCode  null, or receive number and code.
 * @param pdwReserved1, pdwReserved2, pdwReserved3, pdwReserved4  null, or set to 0.
 * @param pBuffer  receives the text in its form. Meant: its size is the caller's affair. 4096 + 256 bytes do for what
 *                 the reporting calls sent; with longer texts given to ErrLogPut, the longest and 256 for the form.
 * @return the number to ask for next; 0xFFFFFFFF when there is no such message or pBuffer is null, with nothing
 *         written; 0 while gfEnableList is 0. A loop ends on both. Meant: it also ends where two numbers in a row are
 *         missing; who wants all walks the records under d_ListLock.
 *
 * Messages: "WARNING(gen): Error retrieving error message from log list" if the way to it broke off.
 * Threads:  the list is locked throughout; a way of more than 30 steps sleeps 1 ms after each 30.
 */
KVUTIL_API uint32_t ErrLogGet(uint32_t dwIndex, uint32_t dwForm, uint32_t *pdwNumber, uint32_t *pdwReserved1,
                              uint32_t *pdwReserved2, uint32_t *pdwReserved3, uint32_t *pdwReserved4, uint32_t *pdwCode,
                              char *pBuffer);

/**
 * Controls the log. Does nothing while gfEnableList is 0.
 *
 * KVERRLOG_MODE_FILE: with a name, the file is that name with a time stamp behind its base ("korvane_log_" if that is
 * empty), in its directory; without one, the file named before. It is opened unless one is open already, truncating
 * what is there, and a start line is written. gfEnableLog tells whether a file is open then; before the first message,
 * call _ReadRegSettings, or a stored "EnableLog" of 0 turns the log off again with it. Meant: the list so far is not
 * written; past 10,485,760 bytes there is a successor only while gfErrLogListValid is 1; a file that was open gets the
 * start line and stays, the path alone being changed.
 *
 * KVERRLOG_MODE_DELETE: meant: deletes by the path, which may have been changed while the file was open; and while
 * gfErrLogListValid is 1 the next message makes the file anew, with the list at its beginning.
 *
 * KVERRLOG_MODE_DUMP: writes the list to the file pName. With a name of blanks or none it is "debugout.log" in the
 * configuration directory. Meant: a stamped form of that path, which is not what was opened, is then stored in pName;
 * no record ends its line, and the column "Time(ms)" is empty; a file that can't be opened goes unnoticed.
 *
 * @param nMode  KVERRLOG_MODE_...
 * @param pName  null counts as empty; read by two modes and written by one, in a buffer of 4096 bytes. Meant: a name
 *               without "/" behind its first character is its own directory, as kvOSSplitPath tells: so "./run.log" and
 *               "//run.log", not "run.log" and "/run.log".
 *
 * Last error: kept, but ENAMETOOLONG for a name that does not fit; in mode 0 no name is then left.
 */
KVUTIL_API uint32_t ErrLogSetMode(int32_t nMode, char *pName);

/**
 * Ends a log file: while one is open, closes it, discards the list with all its messages and forgets that the file had
 * been named; the next message begins a new list, from number 0. Without an open file only the place of ErrLogGet is
 * forgotten.
 *
 * Messages: "WARNING(gen): Exception: ErrLogClear()" if the freeing of the messages broke off.
 * Threads:  any, but not with the lock of gErrLogList held: d_ListUnLock would refuse the list that has ended. A thread
 *           that waits in d_ListLock meanwhile gets 0.
 */
KVUTIL_API uint32_t ErrLogClose(void);

/**
 * Copies the full path of the log file into pBuffer, 4096 bytes; empty if there is none. Null is left alone. Meant:
 * with a flag that is not 0 it sets the name instead, by ErrLogSetName(pBuffer).
 */
KVUTIL_API uint32_t ErrLogGetName(char *pBuffer, uint32_t fSet);

/** 1 while a log file is open, else 0. Takes no memory and reads no settings. */
KVUTIL_API uint32_t kvErrLog_IsOpen(void);

/** The wall clock at message number 0, in milliseconds cut to 32 bits; 0 while gfEnableList is 0. */
KVUTIL_API uint32_t ErrLogGetStartMs(void);

/** The wall clock now, in milliseconds cut to 32 bits; 0 while gfEnableList is 0. */
KVUTIL_API uint32_t ErrLogGetCurrentMs(void);

/** The wall clock at the newest message kept; 0 for an empty list and while gfEnableList is 0. */
KVUTIL_API uint32_t ErrLogGetLastChange(void);

/** Writes the local time of day, as in " 8: 5:59", into pBuffer, 9 bytes. Meant: no milliseconds. Null is left alone.
 */
KVUTIL_API uint32_t ErrGetMs(char *pBuffer);

/**
 * Names the log file by a path: a time stamp with milliseconds is put behind its base name ("korvane_log_" if that is
 * empty or begins with a blank), and the path made absolute. Closes a file that is open, as ErrLogClose does.
 *
 * The stamps of file names, as in "_0124-00-09T08-05-07-123", count years from 1900 and months from 0. Meant: lines of
 * the log count both as people do.
 *
 * Meant: no old file is deleted, no extension is added, and the next message does not open the file: that takes
 * KVERRLOG_MODE_FILE or ErrLogSetFileName. Only while gfErrLogListValid is still 1, because no file of an earlier
 * ErrLogSetFileName had been opened to be closed here, does the next message open it.
 *
 * @param pPath  null: closes only. Does nothing at all while gfEnableList is 0. Meant: without "/" behind its first
 *               character it is its own directory, as in KVERRLOG_MODE_FILE.
 *
 * Last error: kept, but ENAMETOOLONG for a name that does not fit, and that of kvOSFullPath when it fails; either
 *             changes no name.
 * Threads:    for the start of a program, before other threads report; not with the lock of gErrLogList held.
 */
KVUTIL_API uint32_t ErrLogSetName(const char *pPath);

/**
 * Begins the log of a run: pBase, a time stamp and the extension of gszLogName (".log" if it has none) in the directory
 * of gszLogName. gszLogName keeps the name without stamp. Closes a file that is open, as ErrLogClose does, and deletes
 * the oldest files by kvErrLog_RotateFiles and the setting "MaxLogFiles" (where it is missing, what was read last, at
 * first 10000). The file is opened by the next message while gfEnableLog is set.
 *
 * Meant: while gszLogName is empty, all that _ReadRegSettings reads is read anew, whatever gfReadReg says, and stored
 * over the switches. Should it stay empty, a first "run" makes it "run.log", which as a name without "/" is its own
 * directory, as "/run.log" is: a second "next" then gives "run.log/next.log", which can't be opened.
 *
 * @param pBase  a name without directory and extension; "korvane_log_" stands in the file's name for one that is empty
 *               or begins with a blank. Null: closes only. Does nothing at all while gfEnableList is 0.
 *
 * Last error: as ErrLogSetName.
 * Threads:    for the start of a program, before other threads report; not with the lock of gErrLogList held.
 */
KVUTIL_API uint32_t ErrLogSetFileName(const char *pBase);

/**
 * Deletes the oldest files of a directory so that, with one new file, dwMaximum are there. Fewer files are left alone.
 *
 * Meant: every file with the extension counts, whatever its name, and so does all else that is no folder. Age is
 * ftCreation of kvOSFindFirstFile, on Linux the time of the last status change; of equal ones, as links of one file
 * have them, names go in their order. Failures are not told, and nothing is reported.
 *
 * @param pPrefix     the directory with its final "/"; what follows it begins the name. Null counts as empty.
 * @param qwReserved  not looked at; 0.
 * @param pExtension  with its dot. Null counts as empty, which stands for all files.
 * @param dwMaximum   at least 1 is usual; 0 deletes all.
 *
 * Last error: kept.
 */
KVUTIL_API void kvErrLog_RotateFiles(const char *pPrefix, uint64_t qwReserved, const char *pExtension,
                                     uint32_t dwMaximum);

/* ---- The event log: operational events in CSV files that a web server shows, for one thread at a time ---- */

/* Where its files lie. Whether another program writes there is not looked at. */
#define KVEVENTLOG_FOLDER "/var/www/html/events/"

/**
 * Writes one event as a line of comma-separated values, and sends the line as a message of code 0.
 *
 * The fields are date and time ("2026_11_13-06_30_29", month and day without leading zeros), timecode, name, code and
 * sub-code ("0x0000000A"), description, details. Meant: the header of a file names seven columns that don't stand over
 * these. No text is quoted or escaped, so that a comma or a line end in one breaks the line.
 *
 * The first event begins a file in KVEVENTLOG_FOLDER, which is made if need be: "event_0000000012_2026_11_13-06_30_29"
 * with ".csv", its number one above the highest there. The event behind the 2500th line begins the next one. If the
 * folder holds exactly 100 CSV files, the first of them in the order of the find calls is deleted ahead of that. Meant:
 * with more than 100 none is.
 *
 * Meant: behind kvEventLog_Close, with lines written since the last file was full, no file is begun: events are
 * messages alone until kvEventLog_SetName. Lines reach the disk as kvOSWriteFile says, at the latest with the close.
 *
 * @param pName, pDescription, pDetails  null counts as empty. Meant: the line is the format of the message, so that a
 *                   "%" in any text is a conversion without its argument: pass none, but "%%" for a single one there.
 * @param pTimecode  the same; not null by agreement, and then as the others.
 * @return 0, also where nothing could be written: such a line is not counted.
 *
 * Messages: the line; that of kvOSWriteFile for an invalid handle where no file is open; those of kvOSCreateFile for a
 * file that can't be opened, of MakeDirStructure, and of kvOSDeleteFile.
 */
KVUTIL_API uint32_t kvEventLog_Event(uint32_t dwCode, uint32_t dwSubCode, const char *pName, const char *pDescription,
                                     const char *pDetails, const char *pTimecode);

/**
 * Opens a file for the events that follow, behind what it holds; one that is empty or missing gets the header. Closes
 * the one that is open.
 *
 * Meant: lines go on being counted from where they were, so that a file may be full ahead of its 2500th line, or later.
 *
 * @param pPath  any name that kvOSCreateFile takes, but not the text of kvEventLog_GetName while a file is open: the
 *               close empties it. Null closes only.
 * @return 0, also for a file that can't be opened: its path is then the name all the same. Meant: where no line has
 * been written, the next event then begins a file in KVEVENTLOG_FOLDER after all.
 *
 * Last error: kept, but ENAMETOOLONG for a path that does not fit; no name is then left.
 * Messages:   those of kvOSCreateFile.
 */
KVUTIL_API uint32_t kvEventLog_SetName(const char *pPath);

/** Closes the file, if one is open, and forgets its name. Returns 0. */
KVUTIL_API uint32_t kvEventLog_Close(void);

/** The path of the file, or an empty text. It belongs to the library and changes with the calls above. */
KVUTIL_API const char *kvEventLog_GetName(void);

/** The codes of the last event; 0 ahead of the first. */
KVUTIL_API uint32_t kvEventLog_GetLastEventCode(void);
KVUTIL_API uint32_t kvEventLog_GetLastEventSubCode(void);

#ifdef __cplusplus
/**
 * Lists the CSV files in KVEVENTLOG_FOLDER by their names, in the order of the find calls.
 *
 * @param pNames  receives the names behind what it holds; null: nothing is listed.
 * @return the highest number that stands between the first two "_" of a name; 0 if no name has two. Meant: a "-" ahead
 *         of it does not count, and of the lowest 32 bits what stands for a negative number counts without its sign.
 */
KVUTIL_API uint32_t kvEventLog_FindFiles(std::vector<std::string> *pNames);
#endif

#ifdef __cplusplus
}

static_assert(sizeof(void *) != 8 ||
                  (offsetof(kvErrLogRecord, dwNumber) == 24 && offsetof(kvErrLogRecord, dwRepeats) == 40 &&
                   offsetof(kvErrLogRecord, pText) == 48 && offsetof(kvErrLogRecord, qwReserved) == 56),
              "the fields of a record follow each other in the stated order");
#endif

#endif
