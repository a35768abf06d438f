// Settings: keys that hold keys and typed values, in one XML file, addressed by paths such as "ZMW\Advanced\Debug".
//
// A store is a tree in memory. It is read when it is opened and reaches the disk only at kvCFGSave, kvCFGSaveAs or a
// closing save; nothing is saved by itself. KVSTDCONFIG stands for the default store, "config.xml" in the directory of
// kvOSGetConfigDir, which opens itself at the first call that names it, and begins with a full set of defaults.
//
// What holds for every call here, unless it says otherwise:
//
// - A handle is KVSTDCONFIG or what kvCFGOpen returned. Null, and KVSTDCONFIG while the default store can't be had,
//   give the call's failure; any other value is not checked.
// - Paths are names with a backslash between them, in any depth up to 256 from the root. A name has at most 63 bytes,
//   and is what XML takes for a tag: a letter, "_" or a byte above 127, then those, digits, "-", "." and ":". Nothing
//   is made under another name, and nothing is found under one. Meant: a path that ends in a backslash descends twice
//   with its last name, so that "ZMW\" names ZMW inside ZMW, and a missing key is not made by such a path; a value's
//   name may hold backslashes and is then a path from its key.
// - Of two elements with one name only the first is ever reached.
// - Texts are bytes: no encoding is looked at, but for a reference by number, as "&#233;", which becomes the letter's
//   bytes in UTF-8 in a file in that encoding, or without one, and one byte in iso-8859-1. White space at the ends of a
//   text is lost when the store is read again, and white space inside counts as one blank, but for line ends and tabs
//   that were set through these calls.
// - A failure of any kind, memory included, gives the call's failure result. The last error is left as the system left
//   it, messages are those named.
// - Any thread may call; each call that touches a tree holds the store's lock. A handle that is being closed must not
//   be in use elsewhere. As uses of the default store count the file calls by a path until the first of them that finds
//   it open, which reads the redirect, and the first report, which reads the log's settings. It is made without a lock:
//   a host touches it once before it starts its threads. No message is sent and no other store is touched while a
//   store's lock is held.
// - A store's file is read and written at its path as it stands, which the redirect of paths does not touch. The file
//   calls on the way do go by the redirect: backups, the tests for a read-only file, and the look for a target and the
//   copy to it in kvCFGSaveAs.
#ifndef KVCFG_H
#define KVCFG_H

#include <stdint.h>

#include "kvos/export.h"
#include "kvos/sync.h"

#ifdef __cplusplus
#include <cstddef>
#include <string>

/* The classes of the XML library, under this library's names; include <tinyxml.h> to look inside them. */
class TiXmlComment;
class TiXmlDeclaration;
class TiXmlDocument;
class TiXmlElement;
class TiXmlNode;
class TiXmlText;
using KVTiXmlComment = TiXmlComment;
using KVTiXmlDeclaration = TiXmlDeclaration;
using KVTiXmlDocument = TiXmlDocument;
using KVTiXmlElement = TiXmlElement;
using KVTiXmlNode = TiXmlNode;
using KVTiXmlText = TiXmlText;
using KVTiXmlString = std::string;

/** A store. Made by kvCFGOpen, ended by kvCFGClose; the fields are for reading, with the lock held. */
class KVUTIL_API KVTiXmlConfig {
public:
    /** A store that is not opened: no tree, no path. */
    KVTiXmlConfig();
    /** Frees the tree; nothing is saved. */
    virtual ~KVTiXmlConfig();
    KVTiXmlConfig(const KVTiXmlConfig &) = delete;
    KVTiXmlConfig &operator=(const KVTiXmlConfig &) = delete;

    /**
     * Writes a modified tree into the file at szPath, which is read first: what else it holds at top level stays.
     *
     * The new file is written beside the old one and renamed over it; where that can't be, it is written in place.
     *
     * @return 1 when written, modified then being cleared; 0xFFFFFFFF when writing failed; 0 when there is nothing to
     * do and, meant, when the file can't be read or has no KorvaneConfig root: the loss is not reported.
     */
    uint32_t SaveConfig();

    KVTiXmlElement *pRoot;    /* the KorvaneConfig element; owned; null while not opened */
    uint8_t fOpened;          /* 1: usable */
    uint8_t fModified;        /* 1: changed since the last save */
    char szPath[4096];        /* the file's full path */
    kvOSCriticalSection lock; /* recursive; nothing else is waited for while it is held */
};

/** The element that a path leads to from an element; null if it is not there. */
KVUTIL_API KVTiXmlElement *GetKey(KVTiXmlElement *pElement, const char *pPath);

/**
 * Describes an element.
 *
 * @param pName   null, or 32768 bytes that receive the tag, with fFullPath the whole path from below KorvaneConfig.
 * @param pValue  null, or 32768 bytes that receive the text of a value of type 1. What does not fit leaves it empty.
 * @param pdwValue null, or receives the number of a value of type 2.
 * @return the type; 0 where there is none, and for a null element.
 */
KVUTIL_API uint32_t KeyInfo(KVTiXmlElement *pElement, char *pName, char *pValue, uint32_t *pdwValue,
                            uint32_t fFullPath);

/**
 * Visits the children of an element in their order, with the flag also the children of every key among them. Meant:
 * nothing is done with them and nothing is stored in the two references.
 *
 * @return 1; 0 for a null element.
 */
KVUTIL_API uint32_t EnumKey(KVTiXmlElement *pElement, uint32_t &dwFirst, uint32_t &dwSecond, uint32_t fRecursive);

/** Does nothing. Returns 0. */
KVUTIL_API uint32_t CreateConfigStruct(KVTiXmlElement *pElement, uint32_t dwNumber);

extern "C" {
#else
typedef struct KVTiXmlConfig KVTiXmlConfig;
#endif

/* The default store. */
#define KVSTDCONFIG ((KVTiXmlConfig *)(intptr_t)-1)

/* Types of elements. */
#define KVCFG_KEY 0u
#define KVCFG_STRING 1u
#define KVCFG_DWORD 2u
#define KVCFG_BINARY 3u

/* kvCFGOpen: don't look for backups of a file that can't be read. */
#define KVCFG_NO_BACKUPS 8u

/**
 * Opens a store, or makes one.
 *
 * A file that is missing or no XML is replaced by the newest of its backups 000 to 005 that can be read: the broken
 * file, if there is one, is renamed to the path plus ".bad" and the backup to the path. Without such a backup a new
 * file is written over it at once, a failure of that not being reported: with the default settings if the path holds
 * "config.xml", else with one key named after the file, blanks turned into "_" (none if that is no tag). In a folder
 * that can't be entered the file counts as missing.
 *
 * Broken is also what is nested deeper than 256 elements or larger than 64 MiB; what holds no element at all, comments
 * and a declaration alone being what is left of a file that was cut; and what could hide its depth: a declaration with
 * "=" or "&" in a quoted value, and a reference as "&#x 41;" that is not one of digits.
 *
 * @param pPath    shorter than 4096 bytes; see above for the redirect. It is kept as given: where a relative one leads
 *                 changes with the working directory. Each call with a path that holds "config.xml", in any case, is
 *                 one more user of the default store for kvCFGClose; meant, although it does not become that store,
 *                 and also when the result is null for the file's root.
 * @param dwFlags  KVCFG_NO_BACKUPS, or 0; other bits are not looked at.
 * @return the store, for kvCFGClose; null, nothing being touched, in these cases.
 *         Last error ENAMETOOLONG: the path is too long. None is set for a null path.
 *         EINVAL: the file is read, but has no KorvaneConfig root, or none that the XML library comes to, as behind a
 *         DOCTYPE with declarations of its own.
 *         EILSEQ: it has a reference, as "&#8364;", to a letter that its encoding has no bytes for.
 *         What the system says, as EMFILE or EACCES: it is there, but can't be read for the moment or by this user. The
 *         last two also where the file is missing or broken and no backup is good, but one is of that kind.
 */
KVUTIL_API KVTiXmlConfig *kvCFGOpen(const char *pPath, uint32_t dwFlags);

/**
 * Closes a store and frees it.
 *
 * @param hConfig  KVSTDCONFIG takes one user away, and closes the default store with the last one. Meant: a closed
 *                 default store opens itself anew at its next use; and nothing else takes a user away, neither the
 *                 closing of a store that counted as one nor that of the default store by its own handle.
 * @param fSave    not 0: a modified store is saved first, without backups and whatever kvCFGDisableSave said, unless
 * its file is read-only.
 * @return 0; 1 when the default store has other users; 0xFFFFFFFF for null and a store that is not opened.
 */
KVUTIL_API uint32_t kvCFGClose(KVTiXmlConfig *hConfig, uint32_t fSave);

/**
 * Saves a store to its file, or to another.
 *
 * The file is copied into the ring of five backups before and, so that the new one is in it too, after; see
 * MakeFileBackups. A store that is not modified is not written.
 *
 * @param pPath   null or the store's own path: its file. Another one: kvCFGSaveAs does the work, without backups.
 * @param fForce  0: nothing is done while kvCFGDisableSave is on.
 * @return 0, meant also when saving is disabled and when the file was gone, damaged or could not be read: the changes
 * are then in memory only and count as saved, so that a later save does not write them even if the file is back;
 * 0xFFFFFFFF on failure; 0xFFFFFFFE if pPath is given and the file is read-only (meant: a null path is not tested). For
 * a store that is not opened 0 if a store was made anew in this process, and the default store was not closed since,
 * else 0xFFFFFFFF.
 *
 * Messages: "Can not save : Config not opened", "Can not save : file is read only", "Error Saving config file"; those
 *           of MakeFileBackups.
 * Threads:  one save at a time in the process; other calls on the store go on meanwhile.
 */
KVUTIL_API uint32_t kvCFGSave(KVTiXmlConfig *hConfig, const char *pPath, uint32_t fForce);

/**
 * Saves a store to another file, which is its file from then on, whether or not that succeeds.
 *
 * Where that file does not exist, the present one is copied to it first. Where it does, it must hold a KorvaneConfig
 * root; meant: otherwise nothing is written, the result is 0 and the changes count as saved. No backups are made.
 *
 * @param pPath  null, empty (last error ENOENT) or too long (ENAMETOOLONG): refused, and the store keeps its file.
 * @return 0, also while saving is disabled; 0xFFFFFFFF on failure. For a store that is not opened 0 if a store was made
 *         anew in this process, and the default store was not closed since, else 0xFFFFFFFF.
 *
 * Messages: "Can not save : Config not opened", "Confg save failed" (spelled so); those of kvOSCopyFile.
 */
KVUTIL_API uint32_t kvCFGSaveAs(KVTiXmlConfig *hConfig, const char *pPath, uint32_t fForce);

/** Copies the path of the store's file into 4096 bytes. Returns 0, or 0xFFFFFFFF. */
KVUTIL_API uint32_t kvCFGPath(KVTiXmlConfig *hConfig, char *pBuffer);

/** 1 if the store has unsaved changes and its file is not read-only, else 0. */
KVUTIL_API uint32_t kvCFGIsModified(KVTiXmlConfig *hConfig);

/** The default store's own handle if it is open, else null. Never opens it. */
KVUTIL_API KVTiXmlConfig *kvCFGDefaultIfOpen(void);

/** 1 if the default store is open, else 0. Never opens it. */
KVUTIL_API uint32_t kvCFGKVSTDCONFIGIsOpen(void);

/** Not 0: kvCFGSave and kvCFGSaveAs do nothing unless forced, for all stores. Returns what it was, 0 or 1. */
KVUTIL_API uint32_t kvCFGDisableSave(uint32_t fDisable);

/**
 * The store behind a handle: the handle itself, and for KVSTDCONFIG the default store, opened if need be. At that
 * opening "DisableSave" under "ZMW\Config" is read, and stored as 0 where it is missing; the store is then modified.
 *
 * @return null for null, and when kvCFGOpen gives null for the default file: every call that names KVSTDCONFIG then
 *         fails, and the next one tries again.
 *
 * Messages: "\nLoading configuration: '%s'" when the default store is opened while a log file is open.
 */
KVUTIL_API KVTiXmlConfig *kvCFGCheckHandle(KVTiXmlConfig *hConfig);

/**
 * Reads or writes a number.
 *
 * @param pdwValue  read: receives the number; null asks only whether the value is there. Write: the new number.
 * @param fWrite    0 reads. Otherwise the number is stored, a missing value being made as by kvCFGAddKeyDword.
 * @return 0, meant also for a value that is no number, *pdwValue then being left alone; 0xFFFFFFFF if key or value is
 *         missing, and, with *pdwValue made 0xFFFFFFFF, for a value without a number. A write returns 0, or what
 *         kvCFGAddKeyDword says.
 */
KVUTIL_API uint32_t kvCFGValueDword(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, uint32_t *pdwValue,
                                    uint32_t fWrite);

/**
 * Reads or writes a text.
 *
 * Meant: a new text that differs from the old one in case only is not stored. An empty text makes neither value nor
 * key. If the first child of the value is no text, a write marks the store as modified and stores nothing.
 *
 * @param pBuffer   read: receives the whole text, however long; ask for the length first. Write: the new text. Null: as
 *                  a read with no buffer, which returns the length.
 * @param pdwLength receives the length of the text in bytes, on a write of the new one; not for a missing value, an
 *                  equal text or a value without text. Null is taken.
 * @return read: 0, the length with a null buffer, 0xFFFFFFFF if key or value is missing. Write: the new length; 0 for
 * an equal text, an empty one that is not stored, and a new value; meant: 0xFFFFFFFF when the key was missing, although
 * key and value are made unless the text is empty (a missing top key alone is, as kvCFGAddKeyString tells).
 */
KVUTIL_API uint32_t kvCFGValueString(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, char *pBuffer,
                                     uint32_t *pdwLength, uint32_t fWrite);

/**
 * Reads or writes bytes.
 *
 * Meant: a write under a missing key makes it and stores nothing, a second one stores. A value that begins with the old
 * one is not stored. After a write *pdwLength is twice the count of bytes.
 *
 * @param pBuffer   read: receives all the bytes, however many; null gives 0. Write: the bytes.
 * @param pdwLength read: receives their count, and may be null. Write: their count, then the length of the digits.
 * @return read: the count; 0 if the key is missing or the value has no text; 0xFFFFFFFF if the value is missing or
 *         holds anything but hexadecimal digits. Write: twice the count, 0 if nothing was stored, 0xFFFFFFFF on
 * failure.
 */
KVUTIL_API uint32_t kvCFGValueBinary(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, void *pBuffer,
                                     uint32_t *pdwLength, uint32_t fWrite);

/**
 * Reads or writes the comment of a key or value, which is the last thing in it.
 *
 * @param pPath    the key or value.
 * @param pBuffer  read: receives the whole comment; left alone where there is none. Write: the new comment; null or
 *                 empty removes an old one, and, meant, makes an empty one where there was none.
 * @return 0; 0xFFFFFFFF for a missing path and a comment that holds "-->".
 */
KVUTIL_API uint32_t kvCFGValueComment(KVTiXmlConfig *hConfig, const char *pPath, char *pBuffer, uint32_t fWrite);

/**
 * Adds a number under a key, which is made with all keys above it if it is missing.
 *
 * Meant: while the first name of the key is missing, it alone is made, the result is 0xFFFFFFFF and the store does not
 * count as modified; a second call does the rest.
 *
 * @param pName     null: the key alone. Meant: for a key of two names or more the result is then 0 in any case, also
 *                  where it could not be made, for a name that is no tag or for its depth.
 * @param pComment  null: none.
 * @return 0; 0xFFFFFFFF, nothing being changed, if the value is there or the name or comment can't be.
 */
KVUTIL_API uint32_t kvCFGAddKeyDword(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, uint32_t dwValue,
                                     const char *pComment);

/** kvCFGAddKeyDword for an element of any type, with a text, or null for none. Type KVCFG_KEY makes a key. */
KVUTIL_API uint32_t kvCFGAddKeyString(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, const char *pText,
                                      uint32_t dwType, const char *pComment);

/** Removes a value, or a key with all that is in it. Returns 0; 0xFFFFFFFF if it is missing. Meant: a name that holds
 * backslashes removes nothing, and returns 0. */
KVUTIL_API uint32_t kvCFGDeleteValue(KVTiXmlConfig *hConfig, const char *pKey, const char *pName);

/**
 * The next key or value in a key, in order of their making. Nothing is kept between calls, so that a pass over n of
 * them takes n * n steps. Meant: with two of one name apart from each other, as A, B, A, a pass never ends.
 *
 * @param pKey       the key; null for the top.
 * @param pName      64 bytes; receives the name. May be pPrevious. Elements with longer names, which no path reaches,
 * are passed over, and so are further ones named as pPrevious.
 * @param pPrevious  the name given last; null or empty begins.
 * @param pdwType    null, or receives the type; untouched for an element that has none.
 * @return the length of the name; 0xFFFFFFFF at the end and for a missing key.
 */
KVUTIL_API uint32_t kvCFGGetNext(KVTiXmlConfig *hConfig, const char *pKey, char *pName, const char *pPrevious,
                                 uint32_t *pdwType);

/**
 * Walks a key, as EnumKey. Meant: nothing is stored in *pdwFirst and *pdwSecond, which may be null.
 *
 * @param pKey  null or empty: the top.
 * @return 1; 0xFFFFFFFF for a missing key.
 */
KVUTIL_API uint32_t kvCFGEnumKey(KVTiXmlConfig *hConfig, const char *pKey, uint32_t *pdwFirst, uint32_t *pdwSecond,
                                 uint32_t fRecursive);

/** The type of a key or value; 0xFFFFFFFF if it is missing or has none. */
KVUTIL_API uint32_t kvCFGGetType(KVTiXmlConfig *hConfig, const char *pPath);

/** 1 if a key or value is there, else 0. */
KVUTIL_API uint32_t kvCFGKeyExists(KVTiXmlConfig *hConfig, const char *pPath);

/** 1 if something is in a key, a value counting like a key, else 0. */
KVUTIL_API uint32_t kvCFGHasSubKey(KVTiXmlConfig *hConfig, const char *pPath);

/** Renames a key or value. Meant: a clash with another is not looked for. Returns the new name's length, or 0xFFFFFFFF.
 */
KVUTIL_API uint32_t kvCFGRenameKey(KVTiXmlConfig *hConfig, const char *pKey, const char *pName, const char *pNewName);

/** Copies a key or value with all that is in it, under a new name, to the end of the same key. Returns 0, or 0xFFFFFFFF
 * for a missing path and a name that can't be. Meant: a clash is not looked for. */
KVUTIL_API uint32_t kvCFGCopyBranch(KVTiXmlConfig *hConfig, const char *pPath, const char *pNewName);

/** Does nothing. Returns 0. */
KVUTIL_API uint32_t kvCFGXmlToReg(KVTiXmlConfig *hConfig, const char *pText);

/**
 * Writes the default settings into a store, value by value, and saves it to its file. Values that are there already and
 * differ are set back. Returns 0; 0xFFFFFFFF for a store that is not opened.
 */
KVUTIL_API uint32_t kvCFGDefaultZMW(KVTiXmlConfig *hConfig);

/**
 * Appends a number, and behind a backslash a tail, to a path: "ZMW\Control", 0 and "Debug" give "ZMW\Control0\Debug".
 *
 * @param pPath  the path, in a buffer of 4096 bytes.
 * @param pTail  null: neither backslash nor tail.
 * @return pPath; null, with the path as it was, if the whole does not fit (ENAMETOOLONG) or pPath is null.
 */
KVUTIL_API char *RegBuildKey(char *pPath, int32_t nNumber, const char *pTail);

#ifdef __cplusplus
}
#endif

#endif
