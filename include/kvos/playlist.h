// HLS media playlists as one long file: the bytes of the segments, one behind the other, read with calls of their own.
//
// Segments are opened through kvOSCreateFile as they are reached, so that they can be local files or URLs. The playlist
// itself is closed again as soon as it has been taken in. A playlist belongs to one reader at a time.
//
// Walking over the list and reading each segment by its path gives every byte; kvOSReadM3U8 has a way of its own of
// finding segments, told there.
#ifndef KVOS_PLAYLIST_H
#define KVOS_PLAYLIST_H

#include <stdint.h>

#include "dlist.h"
#include "kvos/export.h"

#ifdef __cplusplus
#include <cstddef>

extern "C" {
#endif

/** One segment: a node of the list. Node and szPath are blocks of KVAlloc. */
typedef struct kvM3U8Segment {
    d_ListNode node;
    double dStartTime;     /* seconds of all segments ahead; 0 in one without a path */
    double dDuration;      /* seconds, as the playlist says */
    char *szPath;          /* null where the playlist ended ahead of it */
    uint64_t qwStart;      /* where the segment begins in the virtual file, in bytes */
    uint64_t qwFileOffset; /* where it begins in its own file, in bytes; meant: qwStart unless the playlist says */
    uint32_t dwLength;     /* bytes; 0 for what has no size, or one of 4 GiB and more */
    int64_t hFile;         /* open file; 0 or -1: none */
} kvM3U8Segment;

/** A playlist. */
typedef struct kvM3U8List {
    d_List list;             /* of kvM3U8Segment, in the order of the playlist */
    kvM3U8Segment *pCurrent; /* the segment that reading stands on; null until the first read */
    uint64_t qwPos;          /* position in the virtual file, in bytes */
    uint64_t qwTotal;        /* bytes of all segments */
} kvM3U8List;

/**
 * Takes in a playlist. Its first line begins with "#EXTM3U"; then each "#EXTINF" begins a segment, whose path is the
 * next line without a "#". Behind "#EXT-X-BYTERANGE:" stand the segment's length and, behind an at sign, its offset in
 * its file, in decimal, with 0x in hexadecimal, and with a leading 0 in octal; meant. Without a length, or with one
 * that does not fit in 32 bits, the segment's file is asked for its size, which costs a URL a request. All other lines
 * are passed over, so that a playlist of playlists has no segments.
 *
 * Meant: a file of which no line can be read, an empty one or a folder, is a playlist without segments. What stands on
 * a path's line, an empty line and a whole URL as well, is put behind the playlist's own folder; and the folder of a
 * bare name is the name, as kvOSSplitPath tells, so that "./a.m3u8" is to be passed for "a.m3u8". A "#EXTINF" behind
 * which no path stands is a segment without one.
 *
 * Meant: lines are looked at in pieces, of 9 bytes for the first line, 99 between segments and 4095 within, and each
 * piece counts as a line. So a "#EXTINF" line of 100 bytes or more names its segment: what lies beyond the 99th byte of
 * it is the path, and the line behind it is passed over. A line whose end is cut off by its piece (one of 98 bytes and
 * CR LF, of which only the CR is seen) leaves an empty line behind, which is an empty path. And where a lone LF ends a
 * line, a blank one too, and a CR stands further on in the same piece, one byte of the next line is passed over as
 * well, so that a "#EXTINF" there is not seen.
 *
 * A zero byte that does not stand in a line ends the playlist, as does a fault while it is read. So a server that knows
 * neither lengths nor ranges gives only what lies 4095 bytes or more ahead of the end of its answer's first MiB.
 *
 * @param path  any locator of kvOSCreateFile.
 * @return the playlist, the caller's until kvOSCloseM3U8; null if the file could not be opened or is none.
 *
 * Last error: 0 where all of it was taken in, or it is no playlist; where a fault ended it, that fault's, also with a
 *             playlist returned: so a caller tells one that was cut off. Else of the open.
 * Messages:   those of kvOSCreateFile and kvOSReadFile, for the playlist and for each segment that is asked for its
 *             size.
 */
KVUTIL_API kvM3U8List *kvOSOpenM3U8(const char *path);

/**
 * Ends a playlist; null does nothing.
 *
 * Meant: segments, their paths and an open segment's file stay. A caller who wants them back takes the nodes off ahead
 * of this call (d_ListRemoveHead), passes hFile to kvOSCloseFile, which passes over 0 and -1, and szPath and the node
 * to KVFree.
 *
 * @return 0.
 */
KVUTIL_API uint32_t kvOSCloseM3U8(kvM3U8List *pList);

/** Bytes of all segments. 0 for null. */
KVUTIL_API uint64_t kvOSFileSizeM3U8(kvM3U8List *pList);

/** Sets the position and returns it. Meant: any position is taken, also one behind the end. All ones for null. */
KVUTIL_API uint64_t kvOSSeekM3U8(kvM3U8List *pList, uint64_t qwPosition);

/** The position. All ones for null. */
KVUTIL_API uint64_t kvOSTellM3U8(kvM3U8List *pList);

/**
 * Reads at the position, from two segments at most, and moves it on.
 *
 * Meant, in the order in which a reader meets it:
 * - Outside the current segment the reading steps to its neighbours, backward or forward, until one does not hold the
 *   position, and goes on in that one. So a read that begins where the last one ended, at the end of a segment, passes
 *   over the next segment; and a walk that finds no further segment ends at the last one, with result 0. A position
 *   behind the end of the whole walks there at once.
 * - The place in the segment that was found is reckoned from its start, so that it may lie ahead of its file. What its
 *   seek answers is not looked at: a local file is then read from where it stands, so from its start if it was not yet
 *   open, and a URL's read fails.
 * - A read stops at the segment's length less the offset in its file, where that is not negative; so a segment whose
 *   file offset is only its place in the virtual file is cut short.
 * - What is missing then comes from the start of the next segment's file, whatever its qwFileOffset. The position moves
 *   by twice what the first segment gave, and not by what the second gave. What the second read answers is not looked
 *   at, and a read at the end of the last segment counts its bytes but returns 0.
 *
 * @param pBuffer  room for the bytes asked for.
 * @param qwCount  bytes asked for, in the low 32 bits.
 * @param pdwRead  null, or receives the bytes delivered, also with a result of 0.
 * @return 1. 0 where there is no segment to read from, the end included, where its file can't be opened, and as
 *         kvOSReadFile of the first segment failed.
 *
 * Messages: those of kvOSCreateFile and kvOSReadFile.
 */
KVUTIL_API uint32_t kvOSReadM3U8(kvM3U8List *pList, void *pBuffer, uint64_t qwCount, uint32_t *pdwRead);

#ifdef __cplusplus
}

static_assert(sizeof(void *) != 8 ||
                  (offsetof(kvM3U8Segment, dStartTime) == 24 && offsetof(kvM3U8Segment, szPath) == 40 &&
                   offsetof(kvM3U8Segment, qwStart) == 48 && offsetof(kvM3U8Segment, dwLength) == 64 &&
                   offsetof(kvM3U8Segment, hFile) == 72 && sizeof(kvM3U8Segment) == 80),
              "the fields of a segment follow each other in the stated order");
static_assert(sizeof(void *) != 8 ||
                  (offsetof(kvM3U8List, list) == 0 && offsetof(kvM3U8List, pCurrent) == sizeof(d_List) &&
                   offsetof(kvM3U8List, qwPos) == sizeof(d_List) + 8 &&
                   offsetof(kvM3U8List, qwTotal) == sizeof(d_List) + 16),
              "a playlist is a list and three fields behind it");
#endif

#endif
