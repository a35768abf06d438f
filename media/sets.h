// The closed sets, one list each, and the table that gives each its number.
//
// The lists are independent of each other and of the catalogue: what looks like a gap in one of them, or like a double
// of another, is meant. A new set is its list, its name in Set and its row in kSets.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/four_cc.h"

namespace kv::media {

// Every code that is not one of these counts as PCM, whether or not it is audio at all. Meant.
inline constexpr CodeSet kCompressedAudio{"3pm.", " caa", "3-ca", "a4pm"};
static_assert(kCompressedAudio.size() == 4);

inline constexpr CodeSet kJpegXs{"cxpj", "hrxj", "lrxj", "mrxj", " sxj", "isxj", "ssxj", "lyxj", "myxj"};
static_assert(kJpegXs.size() == 9);

inline constexpr CodeSet kJpegXsYuv{"lyxj", "myxj"};
static_assert(kJpegXsYuv.size() == 2);

inline constexpr CodeSet kJpegXsRgb{"hrxj", "lrxj", "mrxj"};
static_assert(kJpegXsRgb.size() == 3);

// Kept apart from kJpegXs, and without three of its codes. Meant.
inline constexpr CodeSet kJpegXsFewer{"cxpj", "hrxj", "lrxj", "mrxj", "lyxj", "myxj"};
static_assert(kJpegXsFewer.size() == 6);

// Some values of the range belong to it as well.
inline constexpr CodeSet kAvidJfif{"JDVA", 0x6770EAED};
static_assert(kAvidJfif.size() == 2);

// The whole range belongs to it as well.
inline constexpr CodeSet kAvidBlackLine{"JDVA", "nRVA", "TVMJ", " rva", 0x6770EAED};
static_assert(kAvidBlackLine.size() == 5);

// The whole range belongs to it as well.
inline constexpr CodeSet kAvidJpeg{"JDVA", "nRVA", "TVMJ", " rva", 0x6770EAED, "AVRn", "avrn"};
static_assert(kAvidJpeg.size() == 7);

// The flag of the catalogue counts as well, here and for kDv50.
inline constexpr CodeSet kDv25{"dv25", "d2VA", "CDCV", "dvsd", " cvd", "pcvd", "nfvd", "pfvd", "npvd", "ppvd"};
static_assert(kDv25.size() == 10);

inline constexpr CodeSet kDv50{"dv50", "vdVA", "n5vd", "p5vd"};
static_assert(kDv50.size() == 4);

inline constexpr CodeSet kDv100{"1dVA", "dvhd", "n1vd", "p1vd", "2hvd", "3hvd", "5hvd", "6hvd", "phvd", "qhvd"};
static_assert(kDv100.size() == 10);

inline constexpr CodeSet kImx{"mD10", "mD30", "mD40", "pmVA", "MMES", "n3xm",
                              "p3xm", "n4xm", "p4xm", "n5xm", "p5xm", "mmes"};
static_assert(kImx.size() == 12);

// The two uncompressed values of the range belong to it as well.
inline constexpr CodeSet kEightBitD1Yuv{"I1A2", "P1A2", "P7A2", "yuV2", "YUY2", "yuv2",
                                        "AJYU", "YVYU", "YUNV", "UYNV", "UYVY", "cyuv"};
static_assert(kEightBitD1Yuv.size() == 12);

inline constexpr CodeSet kYCbCr8{"I420", "YV12", "P422", "I1A2", "P1A2", "P7A2", "yuV2", "YUY2", "auv2", "yuv2", "HDYC",
                                 "CYDH", "422P", "YVYU", "YUNV", "UYNV", "IYUV", "UYVY", "cyuv", "2Vuy", "2vuy"};
static_assert(kYCbCr8.size() == 21);

inline constexpr CodeSet kYCbCr10{"v210", "Y444", "012v", "a12v"};
static_assert(kYCbCr10.size() == 4);

inline constexpr CodeSet kHevc{"H265", "1hvd", "ehvd", "1veh", "1cvh", "Acvh", "acvh", "rcvh"};
static_assert(kHevc.size() == 8);

inline constexpr CodeSet kAvcIntra{"niVA", "21ia", "31ia", "51ia", "61ia", "p1ia", "q1ia", "22ia", "32ia", "52ia",
                                   "62ia", "p2ia", "q2ia", "25ia", "35ia", "55ia", "65ia", "p5ia", "q5ia"};
static_assert(kAvcIntra.size() == 19);

inline constexpr CodeSet kRawRgb{0x00000000, "DIB ", "RAW ", "RGBA", "RGBT", "mrle", " war"};
static_assert(kRawRgb.size() == 7);

inline constexpr CodeSet kDpx{"R01L", "RF1L", "R04L", "RF4L", "L10R", "L40R", "g01R", "k01R", "L1FR", "L4FR"};
static_assert(kDpx.size() == 10);

inline constexpr CodeSet kSonyRaw{"55FS", "56FS", "H6FS", "NCOT", "NCOX"};
static_assert(kSonyRaw.size() == 5);

inline constexpr CodeSet kCanonRaw{"WARC", "warc"};
static_assert(kCanonRaw.size() == 2);

inline constexpr CodeSet kStereo{"80d3", "01d3", "03d3", "23d3", "GBd3", "BGd3",
                                 "RGd3", "GRd3", "D3FC", "DHFC", "CFHD", "cfhd"};
static_assert(kStereo.size() == 12);

// Seven consecutive values.
inline constexpr CodeSet kDolbyVision{"00vd", "10vd", "20vd", "30vd", "40vd", "50vd", "60vd"};
static_assert(kDolbyVision.size() == 7);

inline constexpr CodeSet kProRes{"h4pa", "x4pa", "hcpa", "ncpa", "ocpa", "scpa"};
static_assert(kProRes.size() == 6);

inline constexpr CodeSet kXavc{"Ivia", "_via", "xvia", "4vax", "cvax", "svax"};
static_assert(kXavc.size() == 6);

inline constexpr CodeSet kXdCam{"1vdh", "2vdh", "3vdh", "4vdh", "5vdh", "6vdh", "7vdh", "8vdh", "9vdh", "avdh", "95dx",
                                "a5dx", "b5dx", "c5dx", "d5dx", "e5dx", "f5dx", "1vdx", "2vdx", "3vdx", "4vdx", "5vdx",
                                "6vdx", "7vdx", "8vdx", "9vdx", "avdx", "bvdx", "cvdx", "dvdx", "evdx", "fvdx"};
static_assert(kXdCam.size() == 32);

inline constexpr CodeSet kHalfFloat{"1SCA", "2SCA", "ccCA", "gcCA", "tcCA", "61lf"};
static_assert(kHalfFloat.size() == 6);

inline constexpr CodeSet kDnxHr{"hdVA", "Arnd", "hrnd", "lrnd", "qrnd", "srnd"};
static_assert(kDnxHr.size() == 6);

inline constexpr CodeSet kDnxHd{"01VA", "0dVA", "2dVA", "3dVA", "4dVA", "5dVA", "6dVA", "7dVA", "8dVA",
                                "9dVA", "ndVA", "AVDN", "i1nd", "p1nd", "p7nd", "Arnd", "4xnd", "hxnd"};
static_assert(kDnxHd.size() == 18);

inline constexpr CodeSet kCineFormRaw{"BYR3", "2RYB"};
static_assert(kCineFormRaw.size() == 2);

inline constexpr CodeSet kCineForm{"23FC", "D3FC", "DHFC", "CFHD", "cfhd"};
static_assert(kCineForm.size() == 5);

inline constexpr CodeSet kJpeg2000{"ADV2", "MJ2C", "J22K", "LJ2K", "J24K", "J2GV", "J2G_", "mj2c", "c2jm", "2pjm"};
static_assert(kJpeg2000.size() == 10);

inline constexpr CodeSet kDci{"J2DI", "J22K", "J24K", "J2DS"};
static_assert(kDci.size() == 4);

inline constexpr CodeSet kLog{"L1FA", "L1RA", "R01L", "AF1L", "RF1L", "AR1L", "R04L", "RF4L",
                              "L10R", "L40R", "g01R", "k01R", "L1FR", "L4FR", "g01r", "k01r"};
static_assert(kLog.size() == 16);

inline constexpr CodeSet kUncompressed3D{"80d3", "01d3", "03d3", "23d3", "GBd3", "BGd3", "RGd3", "GRd3"};
static_assert(kUncompressed3D.size() == 8);

inline constexpr CodeSet kBayer{"WH10", "IC12", "AH12", "WH12", "CBY2", "AB14", "AH14", "AB16", "IOI8", "IOIA",
                                "RGGB", "GRBG", "GBRG", "IC2K", "RYBP", "BGGR", "CBYR", "DBYR", "PBYR", "ICPV",
                                "IC2X", "rggb", "GRBc", "BGGc", "RGGc", "GBRc", "grbg", "gbrg", "si2k", "bggr"};
static_assert(kBayer.size() == 30);

inline constexpr CodeSet kHdCamSr{"4SDH", "RSDH"};
static_assert(kHdCamSr.size() == 2);

inline constexpr CodeSet kRgb16{"46BA", "46RA", "84GB", "46GB", "fRGB", "46GR", "fBGR"};
static_assert(kRgb16.size() == 7);

inline constexpr CodeSet kHasAlpha{0x00000000, 0x00000003, 0x00000020, "DIB ", "RAW ", "IGS.", "SPB8", "RGBA", "pBGA",
                                   "pRGA",     "IUVA",     "46GB",     "ARGB", "fRGB", "pABG", "pARG", "46GR", "ABGR",
                                   "fBGR",     "46UV",     "AYUV",     "WARW", "ELRW", "h4pa", "a46b", "cilf", "bgrf",
                                   " gnp",     " war",     " elr",     " cms", " agt", "ffit", "803v", "804v", "014v"};
static_assert(kHasAlpha.size() == 36);

inline constexpr CodeSet kPrefersV210{
    "v210", "Y444", "H265", "01VA", "4dVA", "7dVA", "niVA", "5xVA", "DHFC", "CFHD", "RSDH", "012V", "J2GV", "g01Y",
    "J2G_", "462a", "21ia", "31ia", "51ia", "61ia", "p1ia", "q1ia", "22ia", "32ia", "52ia", "62ia", "p2ia", "q2ia",
    "25ia", "35ia", "55ia", "65ia", "p5ia", "q5ia", "_via", "h4pa", "x4pa", "hcpa", "ncpa", "ocpa", "scpa", "hrpa",
    "TLva", "4cva", "Ucva", "Vcva", "acva", "cfhd", "qrnd", "ehvd", "Acvh", "acvh", "012v", "a12v", "4vax", "cvax"};
static_assert(kPrefersV210.size() == 56);

inline constexpr CodeSet kH264{"avc1", "H264", "X264", "h264", "i264", "x264", "1CVA", "462I", "462a", "21ia",
                               "31ia", "51ia", "61ia", "p1ia", "q1ia", "22ia", "32ia", "52ia", "62ia", "p2ia",
                               "q2ia", "25ia", "35ia", "55ia", "65ia", "p5ia", "q5ia", "Ivia", "_via", "TLva",
                               "1cva", "4cva", "Ucva", "Vcva", "acva", "v4pm", "ctrw", "4vax", "cvax", "svax"};
static_assert(kH264.size() == 40);

inline constexpr CodeSet kMpeg{"mD10", "mD30", "mD40", "M701", "mg01", "mgc1", "mg02", "mgc2", "mpg2", "mc25",
                               "mv25", "mc35", "mv35", "mc17", "mv17", "pmVA", "MMES", "mpeg", "1vdh", "2vdh",
                               "3vdh", "4vdh", "5vdh", "6vdh", "7vdh", "8vdh", "9vdh", "avdh", "107m", "n3xm",
                               "p3xm", "n4xm", "p4xm", "n5xm", "p5xm", "mmes", "mpgv", "95dx", "a5dx", "b5dx",
                               "c5dx", "d5dx", "e5dx", "f5dx", "1vdx", "2vdx", "3vdx", "4vdx", "5vdx", "6vdx",
                               "7vdx", "8vdx", "9vdx", "avdx", "bvdx", "cvdx", "dvdx", "evdx", "fvdx"};
static_assert(kMpeg.size() == 59);

// The range belongs to it as well, but for its two uncompressed values.
inline constexpr CodeSet kPrefersYCrCb{
    "avr ",     "mD10",     "RV10", "I420", "RV20", "mD30", "RV30", "mD40", "RV40", "DX50", "dv50", "dx50", "COL0",
    "3IV0",     "M701",     "mg01", "AP41", "MP41", "H261", "M261", "MPG1", "DVH1", "COL1", "MSS1", "3IV1", "DIV1",
    "WMV1",     "dmb1",     "mgc1", "avc1", "mgv1", "mg02", "YV12", "AP42", "MP42", "I1A2", "P1A2", "P7A2", "TSC2",
    "MPG2",     "MSS2",     "3IV2", "DIV2", "WMV2", "yuV2", "YUY2", "mgc2", "mpg2", "mgv2", "yuv2", "RV13", "MP43",
    "H263",     "M263",     "MPG3", "DIV3", "WMV3", "A264", "H264", "X264", "h264", "i264", "x264", "MPG4", "DIV4",
    "mc25",     "dv25",     "mv25", "mc35", "mv35", "H265", "DIV5", "N106", "P106", "UY16", "DIV6", "mc17", "mv17",
    "d2VA",     "1CVA",     "JDVA", "nRVA", "0dVA", "1dVA", "2dVA", "3dVA", "5dVA", "6dVA", "8dVA", "9dVA", "vdVA",
    "niVA",     "pmVA",     "5xVA", "DHFC", "CFHD", "DVHD", "1VID", "2VID", "3VID", "4VID", "5VID", "6VID", "XVID",
    "3IVD",     "FRWD",     "05XD", "MDVF", "JPEG", "ImJG", "IJPG", "MJPG", "mJPG", "RSDH", "462I", "ULTI", "GJmI",
    "TVMJ",     "GPJM",     "PHMO", "FLJP", "WMVP", "MP4S", "MMES", "YVYU", "MP4V", "J2GV", "YUNV", "UYNV", "IYUV",
    "3IVX",     "g01Y",     "UYVY", "J2G_", "462a", "21ia", "31ia", "51ia", "61ia", "p1ia", "q1ia", "22ia", "32ia",
    "52ia",     "62ia",     "p2ia", "q2ia", "25ia", "35ia", "55ia", "65ia", "p5ia", "q5ia", "Ivia", "_via", "h4pa",
    "x4pa",     "hcpa",     "ncpa", "ocpa", "scpa", "mjpa", "TLva", "1cva", "4cva", "Ucva", "Vcva", "acva", " rva",
    "cfhd",     "dvhd",     "xvid", "1bmd", "i1nd", "p1nd", "p7nd", "hrnd", "lrnd", "srnd", "hxnd", "dvsd", "TNvk",
    "APvk",     "tnvk",     "apvk", "n1vd", "p1vd", "n5vd", "p5vd", " cvd", "pcvd", "nfvd", "pfvd", "1hvd", "2hvd",
    "3hvd",     "5hvd",     "6hvd", "ehvd", "phvd", "qhvd", "npvd", "ppvd", "1rvd", "05xd", "AJJf", "mpeg", "mjpg",
    0x6770EA6D, 0x6770EAED, "1vdh", "2vdh", "3vdh", "4vdh", "5vdh", "6vdh", "7vdh", "8vdh", "9vdh", "avdh", "1veh",
    "1cvh",     "Acvh",     "acvh", "rcvh", "lyxj", "myxj", "107m", "apjm", "bpjm", "v4pm", "n3xm", "p3xm", "n4xm",
    "p4xm",     "n5xm",     "p5xm", "mmes", "012v", "a12v", "AJAv", "mpgv", "cyuv", "ctrw", "4vax", "cvax", "svax",
    "95dx",     "a5dx",     "b5dx", "c5dx", "d5dx", "e5dx", "f5dx", "1vdx", "2vdx", "3vdx", "4vdx", "5vdx", "6vdx",
    "7vdx",     "8vdx",     "9vdx", "avdx", "bvdx", "cvdx", "dvdx", "evdx", "fvdx", "divx", "2Vuy"};
static_assert(kPrefersYCrCb.size() == 271);

// The codes whose pictures may be narrower than the full width; not the list of kDv100. Meant.
inline constexpr CodeSet kNarrowedDv100{"1dVA", "dvhd", "n1vd", "p1vd", "5hvd", "6hvd", "phvd"};
static_assert(kNarrowedDv100.size() == 7);

// What decodes to 16 bits besides the Bayer codes.
inline constexpr CodeSet kDecodedTo16{"WARC", "warc", "Vcva"};
static_assert(kDecodedTo16.size() == 3);

// What the catalogue flags as JPEG, and is none to fccIsJpeg. Meant.
inline constexpr CodeSet kFlaggedButNoJpeg{"gepj", "avrn", "AVRn"};
static_assert(kFlaggedButNoJpeg.size() == 3);

// What is built in besides the families that are built in as a whole.
inline constexpr CodeSet kBuiltInSingly{"IC12", "IC2K", "012V", "ICPV", "IC2X"};
static_assert(kBuiltInSingly.size() == 5);

// ---- by number ---------------------------------------------------------------------------------------------------

/// A set's bit in the index.
enum class Set : std::uint8_t {
    compressedAudio,
    jpegXs,
    jpegXsYuv,
    jpegXsRgb,
    jpegXsFewer,
    avidJfif,
    avidBlackLine,
    avidJpeg,
    dv25,
    dv50,
    dv100,
    imx,
    eightBitD1Yuv,
    yCbCr8,
    yCbCr10,
    hevc,
    avcIntra,
    rawRgb,
    dpx,
    sonyRaw,
    canonRaw,
    stereo,
    dolbyVision,
    proRes,
    xavc,
    xdCam,
    halfFloat,
    dnxHr,
    dnxHd,
    cineFormRaw,
    cineForm,
    jpeg2000,
    dci,
    log,
    uncompressed3D,
    bayer,
    hdCamSr,
    rgb16,
    hasAlpha,
    prefersV210,
    h264,
    mpeg,
    prefersYCrCb,
    narrowedDv100,
    decodedTo16,
    flaggedButNoJpeg,
    builtInSingly,
};

struct SetRow {
    Set set;
    std::span<const std::uint32_t> codes;
};

inline constexpr std::array kSets{
    SetRow{Set::compressedAudio, kCompressedAudio.sorted},
    SetRow{Set::jpegXs, kJpegXs.sorted},
    SetRow{Set::jpegXsYuv, kJpegXsYuv.sorted},
    SetRow{Set::jpegXsRgb, kJpegXsRgb.sorted},
    SetRow{Set::jpegXsFewer, kJpegXsFewer.sorted},
    SetRow{Set::avidJfif, kAvidJfif.sorted},
    SetRow{Set::avidBlackLine, kAvidBlackLine.sorted},
    SetRow{Set::avidJpeg, kAvidJpeg.sorted},
    SetRow{Set::dv25, kDv25.sorted},
    SetRow{Set::dv50, kDv50.sorted},
    SetRow{Set::dv100, kDv100.sorted},
    SetRow{Set::imx, kImx.sorted},
    SetRow{Set::eightBitD1Yuv, kEightBitD1Yuv.sorted},
    SetRow{Set::yCbCr8, kYCbCr8.sorted},
    SetRow{Set::yCbCr10, kYCbCr10.sorted},
    SetRow{Set::hevc, kHevc.sorted},
    SetRow{Set::avcIntra, kAvcIntra.sorted},
    SetRow{Set::rawRgb, kRawRgb.sorted},
    SetRow{Set::dpx, kDpx.sorted},
    SetRow{Set::sonyRaw, kSonyRaw.sorted},
    SetRow{Set::canonRaw, kCanonRaw.sorted},
    SetRow{Set::stereo, kStereo.sorted},
    SetRow{Set::dolbyVision, kDolbyVision.sorted},
    SetRow{Set::proRes, kProRes.sorted},
    SetRow{Set::xavc, kXavc.sorted},
    SetRow{Set::xdCam, kXdCam.sorted},
    SetRow{Set::halfFloat, kHalfFloat.sorted},
    SetRow{Set::dnxHr, kDnxHr.sorted},
    SetRow{Set::dnxHd, kDnxHd.sorted},
    SetRow{Set::cineFormRaw, kCineFormRaw.sorted},
    SetRow{Set::cineForm, kCineForm.sorted},
    SetRow{Set::jpeg2000, kJpeg2000.sorted},
    SetRow{Set::dci, kDci.sorted},
    SetRow{Set::log, kLog.sorted},
    SetRow{Set::uncompressed3D, kUncompressed3D.sorted},
    SetRow{Set::bayer, kBayer.sorted},
    SetRow{Set::hdCamSr, kHdCamSr.sorted},
    SetRow{Set::rgb16, kRgb16.sorted},
    SetRow{Set::hasAlpha, kHasAlpha.sorted},
    SetRow{Set::prefersV210, kPrefersV210.sorted},
    SetRow{Set::h264, kH264.sorted},
    SetRow{Set::mpeg, kMpeg.sorted},
    SetRow{Set::prefersYCrCb, kPrefersYCrCb.sorted},
    SetRow{Set::narrowedDv100, kNarrowedDv100.sorted},
    SetRow{Set::decodedTo16, kDecodedTo16.sorted},
    SetRow{Set::flaggedButNoJpeg, kFlaggedButNoJpeg.sorted},
    SetRow{Set::builtInSingly, kBuiltInSingly.sorted},
};

consteval bool rowsAreInOrder() {
    for (std::size_t i = 0; i < kSets.size(); ++i) {
        if (kSets[i].set != static_cast<Set>(i)) return false;
    }
    return true;
}
static_assert(rowsAreInOrder() && kSets.size() <= 64);

}  // namespace kv::media
