// FourCC: what is known of every 32-bit code of a video or audio format.
//
// A code is written here in the order of its bytes in memory, which is the order of its value's bytes from the lowest
// up: 'MJPG' is 0x47504A4D, and 'DIB ' with its blank 0x20424944. QuickTime's codes are in the same space with their
// characters reversed. Bitmap compressions 0 to 3 and WAVE format tags are codes as well. From KVFCC_RANGE up,
// 0x88000000 to 0xFFFFFFFF, every code stands for a variant of motion JPEG; KVFCC_RANGE_UNCOMPRESSED_1 and _2, inside,
// are uncompressed.
//
// Capital and small letters make different codes: 'MJPG', 'mJPG' and 'mjpg' are three. fccIsEqual is the one call that
// takes them as one.
//
// Every call is a function of its arguments alone and knows no failure: any value is a code, and of an unknown one
// there is nothing to tell. None takes a lock, allocates, sends a message or touches the last error; all may be made
// from any thread, a signal handler included. What asks returns 1 or 0.
//
// The sets behind the questions are closed lists, each of its own. Meant: that a code is in one says nothing of its
// being in another, or in the catalogue; fccIsJpegXS and fccIsJPEGXS differ, fccFlagMpeg and fccIsMpeg differ.
// fourcc_codes.h has every code that any of them lists.
#ifndef FOURCC_H
#define FOURCC_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The code of four characters, the first in the lowest byte; a constant. */
#define KVFCC(first, second, third, fourth)                                                             \
    ((uint32_t)(uint8_t)(first) | (uint32_t)(uint8_t)(second) << 8 | (uint32_t)(uint8_t)(third) << 16 | \
     (uint32_t)(uint8_t)(fourth) << 24)

#define KVFCC_INFORMATION KVFCC('d', 'c', 'm', 't')
#define KVFCC_RANGE 0x88000000u
#define KVFCC_RANGE_UNCOMPRESSED_1 0x8800001Eu
#define KVFCC_RANGE_UNCOMPRESSED_2 0x8810001Eu

/* The bits of a flags word. */
#define fccFlagVideo 0x08000000u    /* a video format */
#define fccFlagAudio 0x04000000u    /* an audio format; both bits together mean an information track */
#define fccFlagRGB 0x00800000u      /* pixels are RGB; asked by fccIsRGB */
#define fccFlagYUV 0x00400000u      /* pixels are YUV; asked by fccIsYUV */
#define fccFlagCMYK 0x00200000u     /* pixels are CMYK */
#define fccFlagGray 0x00100000u     /* pixels are grey */
#define fccFlagKeyframe 0x00010000u /* the stream has key frames and others; asked by fccCanKeyframe */
#define fccFlagJpeg 0x00008000u     /* of the JPEG family; asked by fccIsJpeg, which excepts three codes */
#define fccFlagMpeg 0x00004000u     /* of the MPEG family; fccIsMpeg does not ask for it */
#define fccFlagDv50 0x00002000u     /* DV at 50 Mbit/s; asked by fccIsDv50, which knows more codes */
#define fccFlagDv25 0x00001000u     /* DV at 25 Mbit/s; asked by fccIsDv25, which knows more codes */

/* ---- the catalogue ---------------------------------------------------------------------------------------------- */

/**
 * The flags word of a video code: fccFlagVideo and its classes.
 *
 * @param pFlags, pName, pExt  ignored; null or anything else. Nothing is read from or written to them, here and in the
 *                             three calls below.
 * @return the flags word, and for the range the one of YUV JPEG, or of plain YUV for its two uncompressed codes; 0 for
 *         a code that is no video. Meant: 0x80000000 to 0x87FFFFFF are unknown, and 'dcmt' is no video.
 */
KVUTIL_API uint32_t fccGetInfoVideo(uint32_t fcc, uint32_t *pFlags, char *pName, char *pExt);

/**
 * fccFlagAudio for an audio code, 0 for any other.
 *
 * Meant: the tags 0 to 3 and ' war' are audio codes here, although fccIsAudio is 0 for them.
 */
KVUTIL_API uint32_t fccGetInfoAudio(uint32_t fcc, uint32_t *pFlags, char *pName, char *pExt);

/** Meant: fccFlagAudio alone for the information code 'dcmt', where fccGetInfo gives both bits; 0 for any other code.
 */
KVUTIL_API uint32_t fccGetInfoInfo(uint32_t fcc, uint32_t *pFlags, char *pName, char *pExt);

/**
 * The flags word of a code in the tables that are asked for: video first, then audio, then information.
 *
 * @param dwMask  fccFlagVideo, fccFlagAudio, or both, for the tables of that kind. Other bits count nothing. Either of
 *                the two asks for the information code as well.
 * @return as fccGetInfoVideo or fccGetInfoAudio have it; for 'dcmt' fccFlagVideo and fccFlagAudio together, though
 *         neither table has it; 0 for a code that is in no table asked for, and whenever the mask has neither bit.
 */
KVUTIL_API uint32_t fccGetInfo(uint32_t fcc, uint32_t *pFlags, char *pName, char *pExt, uint32_t dwMask);

/** Whether the code is a video code, the range included, an audio code or the information code. */
KVUTIL_API uint32_t fccIsSupported(uint32_t fcc);

/** Whether the code is a video code, the range included. Meant: 1 for the tags 0 to 3 and ' war', which are audio too.
 */
KVUTIL_API uint32_t fccIsVideo(uint32_t fcc);

/** Whether the code is an audio code and no video code. */
KVUTIL_API uint32_t fccIsAudio(uint32_t fcc);

/** Whether the code is 'dcmt', the information track. It is neither video nor audio. */
KVUTIL_API uint32_t fccIsInfo(uint32_t fcc);

/* ---- pixels ----------------------------------------------------------------------------------------------------- */

/** RGB pixels, by the catalogue's flag. */
KVUTIL_API uint32_t fccIsRGB(uint32_t fcc);

/** YUV pixels, by the catalogue's flag. 1 for the whole range. */
KVUTIL_API uint32_t fccIsYUV(uint32_t fcc);

/** Uncompressed RGB: 7 codes, the bitmap code 0 among them. */
KVUTIL_API uint32_t fccIsRawRGB(uint32_t fcc);

/** RGB of 16 bits a component: 7 codes. */
KVUTIL_API uint32_t fccIsRGB_16(uint32_t fcc);

/** Components of half floats: 6 codes. */
KVUTIL_API uint32_t IsHalfFloat(uint32_t fcc);

/** The picture can carry an alpha channel: 36 codes. */
KVUTIL_API uint32_t fccHasAlpha(uint32_t fcc);

/** YUV 4:2:2 of 8 bits, uncompressed: 12 codes, and the two uncompressed ones of the range. */
KVUTIL_API uint32_t fccIs8BitD1YUV(uint32_t fcc);

/** Y, Cb and Cr of 8 bits, uncompressed: 21 codes. */
KVUTIL_API uint32_t fccIsYCbCr8(uint32_t fcc);

/** Y, Cb and Cr of 10 bits, uncompressed: 4 codes. */
KVUTIL_API uint32_t fccIsYCbCr10(uint32_t fcc);

/** Logarithmic pictures: 16 codes. */
KVUTIL_API uint32_t fccIsLog(uint32_t fcc);

/** DPX pictures: 10 codes. */
KVUTIL_API uint32_t fccIsDPX(uint32_t fcc);

/** Two pictures, one for each eye: 12 codes. */
KVUTIL_API uint32_t fccIsStereo(uint32_t fcc);

/** The same uncompressed: 8 codes. */
KVUTIL_API uint32_t fccIsUnc3D(uint32_t fcc);

/* ---- cameras ---------------------------------------------------------------------------------------------------- */

/** Raw pictures in a Bayer pattern: 30 codes. */
KVUTIL_API uint32_t fccIsBayer(uint32_t fcc);

/** Raw pictures of Sony cameras: 5 codes. */
KVUTIL_API uint32_t fccIsSonyRaw(uint32_t fcc);

/** Raw pictures of Canon cameras: 'WARC' and 'warc'. */
KVUTIL_API uint32_t fccIsCanonRaw(uint32_t fcc);

/** CineForm: 5 codes. */
KVUTIL_API uint32_t fccIsCineForm(uint32_t fcc);

/** CineForm of raw pictures: 'BYR3' and '2RYB', neither of which fccIsCineForm has. */
KVUTIL_API uint32_t fccIsCineFormRaw(uint32_t fcc);

/* ---- families of codecs ----------------------------------------------------------------------------------------- */

/** DV at 25 Mbit/s: the catalogue's flag, or one of 10 codes. */
KVUTIL_API uint32_t fccIsDv25(uint32_t fcc);

/** DV at 50 Mbit/s: the catalogue's flag, or one of 4 codes. */
KVUTIL_API uint32_t fccIsDv50(uint32_t fcc);

/** DV at 100 Mbit/s: 10 codes. */
KVUTIL_API uint32_t fccIsDv100(uint32_t fcc);

/** The JPEG family: the catalogue's flag, and so all of the range but its two uncompressed codes. Meant: 0 for 'gepj',
 * 'avrn' and 'AVRn', which have the flag. */
KVUTIL_API uint32_t fccIsJpeg(uint32_t fcc);

/** JPEG 2000: 10 codes. */
KVUTIL_API uint32_t fccIsJPEG2000(uint32_t fcc);

/** Digital cinema: 4 codes. */
KVUTIL_API uint32_t fccIsDCI(uint32_t fcc);

/** JPEG XS of any kind: 9 codes. Meant: not the same as fccIsJPEGXS. */
KVUTIL_API uint32_t fccIsJpegXS(uint32_t fcc);

/** JPEG XS, 6 codes: those of fccIsJpegXS but ' sxj', 'isxj' and 'ssxj'. Meant. */
KVUTIL_API uint32_t fccIsJPEGXS(uint32_t fcc);

/** JPEG XS of YUV pixels: 'lyxj' and 'myxj'. */
KVUTIL_API uint32_t fccIsJpegXSYUV(uint32_t fcc);

/** JPEG XS of RGB pixels: 'hrxj', 'lrxj' and 'mrxj'. */
KVUTIL_API uint32_t fccIsJpegXSRGB(uint32_t fcc);

/** Avid's JPEG: 7 codes and the whole range. */
KVUTIL_API uint32_t fccIsAvidJpeg(uint32_t fcc);

/** Avid's JPEG with a black line: 5 codes and the whole range. */
KVUTIL_API uint32_t fccIsAvidBlackLine(uint32_t fcc);

/** Avid's JPEG in JFIF form: 'JDVA', 0x6770EAED, 0x8800001F to 0x88000024 and 0x8810001F to 0x88100024. */
KVUTIL_API uint32_t fccIsAvidJfif(uint32_t fcc);

/** DNxHD: 18 codes. */
KVUTIL_API uint32_t fccIsDNxHD(uint32_t fcc);

/** DNxHR: 6 codes. 'Arnd' is in this set and in that of fccIsDNxHD. */
KVUTIL_API uint32_t fccIsDNxHR(uint32_t fcc);

/** ProRes: 6 codes. */
KVUTIL_API uint32_t fccIsProRes(uint32_t fcc);

/** The MPEG family: 59 codes. Meant: fccFlagMpeg is not asked, so that 'XMPG' is none. */
KVUTIL_API uint32_t fccIsMpeg(uint32_t fcc);

/** MPEG IMX: 12 codes. */
KVUTIL_API uint32_t fccIsIMX(uint32_t fcc);

/** XDCAM: 32 codes. */
KVUTIL_API uint32_t fccIsXDCam(uint32_t fcc);

/** H.264: 40 codes. */
KVUTIL_API uint32_t fccIsh264(uint32_t fcc);

/** AVC-Intra: 19 codes. */
KVUTIL_API uint32_t fccIsAVCi(uint32_t fcc);

/** XAVC: 6 codes. */
KVUTIL_API uint32_t fccIsXAVC(uint32_t fcc);

/** HEVC: 8 codes. */
KVUTIL_API uint32_t fccIsHEVC(uint32_t fcc);

/** Dolby Vision: the seven values from '00vd' to '60vd'. */
KVUTIL_API uint32_t fccIsDolbyVision(uint32_t fcc);

/** HDCAM SR: '4SDH' and 'RSDH'. */
KVUTIL_API uint32_t fccIsHDCamSR(uint32_t fcc);

/* ---- sound ------------------------------------------------------------------------------------------------------ */

/** Compressed audio: '3pm.', ' caa', '3-ca' and 'a4pm'. */
KVUTIL_API uint32_t fccIsCompressedAudio(uint32_t fcc);

/** Meant: 1 for every code at all, whether or not it is audio, but for the four of fccIsCompressedAudio. */
KVUTIL_API uint32_t fccIsPCMAudio(uint32_t fcc);

/* ---- decoding --------------------------------------------------------------------------------------------------- */

/** The stream has key frames and others, by the catalogue's flag. No audio code has it. */
KVUTIL_API uint32_t fccCanKeyframe(uint32_t fcc);

/** A decoder had better give 4:2:2 of 10 bits: 56 codes. */
KVUTIL_API uint32_t fccPrefersv210(uint32_t fcc);

/** A decoder had better give Y, Cr and Cb: 271 codes, and the range but for its two uncompressed codes. */
KVUTIL_API uint32_t fccPrefersYCrCb(uint32_t fcc);

/** A decoder can give 16 bits a component: the codes of fccIsBayer, 'WARC', 'warc' and 'Vcva'. */
KVUTIL_API uint32_t fccCanDecodeTo16(uint32_t fcc);

/**
 * Whether the codec needs no other library: 290 codes and the whole range.
 *
 * They are those of fccIsJpeg, fccIsDv25, fccIsDv50, fccIsDv100, fccIs8BitD1YUV, fccIsh264, fccIsAVCi, fccIsDNxHD,
 * fccIsDNxHR, fccIsCineForm, fccIsJPEG2000, fccIsLog, fccIsMpeg, fccIsRawRGB, fccIsUnc3D, fccIsYCbCr8, fccIsYCbCr10,
 * fccIsBayer, fccIsHDCamSR and fccIsProRes, and '012V'.
 */
KVUTIL_API uint32_t fccCodecIsBuiltIn(uint32_t fcc);

/**
 * Whether pictures of a full width may be stored with another one.
 *
 * For '1dVA', 'dvhd', 'n1vd', 'p1vd', '5hvd', '6hvd' and 'phvd': 960 and 1280 for a full width of 1280; 1280, 1440 and
 * 1920 for one of 1920; nothing for any other, itself included. Meant: '2hvd', '3hvd' and 'qhvd', which fccIsDv100 has
 * too, are not among them. For every other code, known or not: the full width alone.
 *
 * @param nWidth, nFullWidth  in pixels; any value.
 */
KVUTIL_API uint32_t fccCanUseWidth(uint32_t fcc, int32_t nWidth, int32_t nFullWidth);

/** Whether two codes are the same but for capital and small letters, A to Z, whatever the locale. */
KVUTIL_API uint32_t fccIsEqual(uint32_t fccA, uint32_t fccB);

/* ---- sizes ------------------------------------------------------------------------------------------------------ */

/**
 * The largest size of one frame, in bytes.
 *
 * Codecs of a constant rate have a fixed figure, whatever the width and depth: at most the height, and for some of DV
 * at 100 Mbit/s the rate, makes a difference. Uncompressed and intermediate formats follow from the picture: two bytes
 * a pixel for 4:2:2 of 8 bits, JPEG 2000 and ProRes; rows of 16 bytes for 6 pixels, padded to 48 pixels, for '012v' and
 * 'J2G_'; four bytes for Bayer patterns at any depth; for pairs of pictures 6, 8, 12 or 16 bytes a pixel. Every other
 * code, an unknown one included, has 8, 6 or 3 bytes a pixel for a depth of 64, 48 or 24 bits, and 4 for any other
 * depth, 16 and 32 alike. Meant. The classes are lists of their own: not every code of a family, as its predicate has
 * it, is in the family's class here, and then it goes by its depth.
 *
 * @param dwWidth, dwHeight  in pixels; 0 is allowed.
 * @param nBits              depth of a pixel in bits; any value.
 * @param nRate              whole frames a second; any value. 25 and 50 are told from all others.
 * @return the size. Meant: each step is in 32 bits, and what exceeds them is lost without a report.
 */
KVUTIL_API uint32_t fccGetMaxFrameSize(uint32_t fcc, uint32_t dwWidth, uint32_t dwHeight, int32_t nBits, int32_t nRate);

#ifdef __cplusplus
}
#endif

#endif
