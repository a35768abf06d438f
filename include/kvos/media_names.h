// The files that belong to one clip: the sound beside a video file, the extensions its files have, the one that stands
// for it. Beside these, tests of a name against lists of endings.
//
// A file counts as present when kvOSFileExists says so, which takes what is on gvecNames for present without a look at
// the file system. Paths are taken apart by kvOSSplitPath: a bare "clip.mov" is its own directory, "clip.mov/", so give
// "./clip.mov" for a file in the working directory. Buffers hold 4096 bytes; what does not fit in one sets the last
// error to ENAMETOOLONG and is refused or left out, never cut. Letters are compared as those of ASCII.
#ifndef KVOS_MEDIA_NAMES_H
#define KVOS_MEDIA_NAMES_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What FindAudioForVideo found, by the name behind the clip's. */
#define KVAUDIO_SINGLE 0x00000008u      /* the clip's own name; nothing else was looked at */
#define KVAUDIO_FIRST 0x00000001u       /* .a1 or .A1 */
#define KVAUDIO_SECOND 0x00000002u      /* .a2 or .A2 */
#define KVAUDIO_BOTH 0x00000004u        /* .aa or .AA, alone */
#define KVAUDIO_FIRST_BARE 0x01000000u  /* a1, without a dot */
#define KVAUDIO_SECOND_BARE 0x02000000u /* a2, without a dot */
#define KVAUDIO_NUMBERED 0x00000030u    /* _1 and _2 */
#define KVAUDIO_SIDES 0x10000000u       /* any of .r, .l, .R, .L */
#define KVAUDIO_1234 0x00000180u        /* .A1234; the values of these five share bits */
#define KVAUDIO_12 0x000000C0u          /* .A12 */
#define KVAUDIO_34 0x00000300u          /* .A34 */
#define KVAUDIO_56 0x00000C00u          /* .A56 */
#define KVAUDIO_78 0x00003000u          /* .A78 */
#define KVAUDIO_FOLDER_12 0x00030000u   /* audio12 in the clip's directory, without the clip's name */
#define KVAUDIO_FOLDER_34 0x000C0000u   /* audio34 */
#define KVAUDIO_FOLDER_56 0x00300000u   /* audio56 */
#define KVAUDIO_FOLDER_78 0x00C00000u   /* audio78 */

/**
 * Finds the sound files that stand beside a video file, by the conventions above.
 *
 * Looked for in this order, each behind the path without its extension: nothing, which ends the search; .a1, .a2, .A1,
 * .A2; a1, a2; .aa and .AA, unless one of the first four conventions holds, either of which ends the search; _1, and _2
 * only with it; .r, .l, .R, .L; .A1234, .A12, .A34, .A56, .A78; then audio12, audio34, audio56, audio78 in the
 * directory. No file is looked for twice, and none behind the end of a search.
 *
 * Meant: .A1 drops a .a2 that was found before it, a1 drops what the four conventions found, .aa drops all, _1 with _2
 * drops all before it, and so does each of .r, .l, .R, .L. What drops .a1 and .a2 lets .aa be looked for. One of _1 and
 * _2 alone is nothing.
 *
 * @param pVideoPath  its extension does not count; a "*" at the end of its name is left out.
 * @param pAudioExt   with its dot, such as ".wav".
 * @param pAudioBase  null, or receives the path without extension. Only if the first file found is audio12, the
 *                    directory with its "/" instead.
 * @return KVAUDIO_... bits; 0 if there is no sound, for a null pointer, and, with an empty pAudioBase, for a path that
 *         does not fit. A candidate that does not fit is not there.
 *
 * Last error: not kept.
 * Messages:   those of kvOSFileExists on network paths.
 */
KVUTIL_API uint32_t FindAudioForVideo(const char *pVideoPath, const char *pAudioExt, char *pAudioBase);

/**
 * Lists the extensions of all files that belong to a clip, in the order of the find calls: ".mov.a12.wav.a34.wav".
 *
 * They are the files in its directory with its name, in any case of letters. The name of a .wav, .aif or .aiff file is
 * taken without its channel mark, which counts as part of the extension and is given in lower case: .a12, .a34, .a56,
 * .a78, .a9a, .abc, .ade, .afg, then .a1 to .a8. The same holds for pPath.
 *
 * Meant: a mark counts wherever it stands in the name, but what goes is the end of the name, as long as the mark:
 * "clip.a1b.wav" counts as "clip." with the extension "a1b.wav".
 *
 * @param pPath     the path of one of the files. A ".rtin" file whose name ends in "A" stands for the one without the
 *                  "A": pPath is rewritten so, meant: whether or not that file is there. Its name counts only if it is.
 * @param pExtList  receives the extensions behind what it holds: empty it first. One that does not fit is left out.
 * @return 1, whatever was found; also for a directory that can't be listed.
 *
 * Last error, messages: those of kvOSFindFirstFile and kvOSFindNextFile; ENAMETOOLONG for what did not fit.
 */
KVUTIL_API uint32_t FindFileExtensions(char *pPath, char *pExtList);

/**
 * Gives a path the extension that stands best for its clip, out of a list such as FindFileExtensions makes.
 *
 * The first one that is a video extension counts, in the order of the list, .mp4 only if there is no other. Failing
 * that, the first of the list counts if it is .rtin, .aac, .aif, .aiff, .ogg, .mp3, .mpa or .wav; for .rtin,
 * FindFileExtensions then adds what is there to the list. The channel mark of a .wav, .aif or .aiff file goes from the
 * name. Meant: .aac stands for ".aaf". An extension that pPath has already keeps its capitals; all others are in lower
 * case, but ".R3D".
 *
 * @param pPath     rewritten as kvOSMakePath makes it; left as it is if nothing counts or the new path does not fit.
 * @param pExtList  a list in a buffer of 4096 bytes; cut behind each extension that was looked at. If it is empty,
 *                  FindFileExtensions fills it, for the caller to see.
 * @return 1, whatever was found.
 *
 * Messages: "\nCant find ext : %s (%s)" with the path and the first extension of the list, if nothing counts; those of
 *           FindFileExtensions.
 */
KVUTIL_API uint32_t ChooseVideoExtension(char *pPath, char *pExtList);

/** 1 if a name ends in a text, in any case of letters; the empty text always fits. 0 otherwise and for null. */
KVUTIL_API uint32_t CheckFileExtension(const char *pName, const char *pExt);

/**
 * 1 if a name ends in any of the texts between the dots of a list, in any case of letters. 0 otherwise, and for null or
 * an empty list. Meant: the dots themselves don't count, so that "motif" passes for ".tif".
 */
KVUTIL_API uint32_t CheckFileExtensions(const char *pName, const char *pList);

/**
 * CheckFileExtensions with a first text that ends at a ";" and may hold dots: "a.b;c.d" stands for "a.b", "c" and "d".
 * Meant: only the first one does.
 */
KVUTIL_API uint32_t CheckFileName(const char *pName, const char *pList);

#ifdef __cplusplus
}
#endif

#endif
