// The catalogue: every code with a flags word of its own, in the order of the flags words.
//
// Capital and small letters are different codes, and so is a code without its blank. The values 0 to 3 and " war" stand
// in both the video and the audio list; which of them counts is the caller's order of asking.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "fourcc.h"
#include "media/four_cc.h"

namespace kv::media {

// ---- video -------------------------------------------------------------------------------------------------------

inline constexpr CodeSet kListedVideo{
    "DIB ", "IAN ", "RAW ", "RVX ", "I420", "BT20", "XLV0", 0x31000000, "RT21", "VCR1", "DXT1", "VLV1", "WNV1",
    "ASV1", "DVX1", "NTn1", "CC12", "VCR2", "AUR2", "DXT2", "DVX2",     "SQZ2", "DXT3", "DVX3", "DXT4", "DXT5",
    "MRCA", "CPLA", "AURA", "STVA", "FRWA", "ICLB", "STVB", "TY2C",     "SDCC", "CFCC", "AFLC", "SFMC", "SMSC",
    "DXTC", "WBVC", "ILVC", "KMVC", "STVC", "UCOD", "SMSD", "1FVF",     "SPIG", "VX1K", "VX2K", "VIXL", "CHAM",
    "WHAM", "CRAM", "ANIM", "VDOM", "TY0N", "TY2N", "VXSP", "1QVS",     "CWLT", "GWLT", "BTCV", "TCDV", "SDIV",
    "29UV", "PGVV", "IRAW", "WINX", "PVEZ", "VDTZ", "esab", "uolc",     "mrle", "erif", "dcpk", "cvsm", "htap",
    "wrdq", " war", "lpir", "azpr", "lacs", "ffit", "smsv"};
static_assert(kListedVideo.size() == 85);

inline constexpr CodeSet kListedKeyframed{
    "SV10", "BW10", "TM20", "TR20", "IV30", "IV40", "IV50", "H260", "IV31", "IV41", "H261", "M261", "MC12",
    "IV32", "IV42", "H262", "IV33", "IV43", "H263", "M263", "i263", "IV34", "IV44", "H264", "X264", "h264",
    "x264", "IV35", "IV45", "IV36", "IV46", "H266", "IV37", "IV47", "H267", "IV38", "IV48", "H268", "IV39",
    "IV49", "H269", "TMIC", "CVID", "AMPG", "CGDI", "AEMI", "14VI", "MCAM", "PVMM", "VIVO", "HMCR", "HMRR",
    "ILVR", "TLMS", "TMOT", "TLST", "VDOW", "TM2X", "divc", "162h", "362h"};
static_assert(kListedKeyframed.size() == 61);

inline constexpr CodeSet kListedGray{"g61b", "a23b"};
static_assert(kListedGray.size() == 2);

inline constexpr CodeSet kListedCmyk{"kymc"};
static_assert(kListedCmyk.size() == 1);

inline constexpr CodeSet kListedYuv{"YUV ", "Y211", "V261", "IYU1", "YC12", "YV12", "V422", "s422", "I1A2", "P1A2",
                                    "P7A2", "IYU2", "yuV2", "YUY2", "auv2", "yuv2", "80d3", "01d3", "YUV4", "V655",
                                    "H265", "YUV8", "IF09", "YVU9", "CLPL", "Y41P", "CLJR", "Y41T", "Y42T", "AJYU",
                                    "YVYU", "YUNV", "UYNV", "CYUV", "IYUV", "CYUY", "UYVY", "1hvd", "ehvd", "1veh",
                                    "1cvh", "9vys", "012v", "a12v", "cyuv", "024y", "2vuy", "svuy", "uvuy"};
static_assert(kListedYuv.size() == 49);

inline constexpr CodeSet kListedDv25{"CDCV"};
static_assert(kListedDv25.size() == 1);

inline constexpr CodeSet kListedYuvDv25{"dv25", "dvsd", " cvd", "pcvd", "npvd", "ppvd"};
static_assert(kListedYuvDv25.size() == 6);

inline constexpr CodeSet kListedYuvDv50{"dv50"};
static_assert(kListedYuvDv50.size() == 1);

inline constexpr CodeSet kListedYuvMpeg{"M701", "XMPG", "MPGI", "MMES", "mpeg"};
static_assert(kListedYuvMpeg.size() == 5);

inline constexpr CodeSet kListedYuvJpeg{"avr ",     "dmb1",     "N106", "P106", "JDVA", "nRVA", "FRWD", "ImJG", "IJPG",
                                        "MJPG",     "mJPG",     "ULTI", "GJmI", "TVMJ", "GPJM", "PHMO", "FLJP", "mjpa",
                                        " rva",     "1bmd",     "TNvk", "APvk", "tnvk", "apvk", "1rvd", "AJJf", "mjpg",
                                        0x6770EA6D, 0x6770EAED, "gepj", "apjm", "bpjm", "AVRn", "avrn", "AJAv"};
static_assert(kListedYuvJpeg.size() == 35);

inline constexpr CodeSet kListedYuvKeyframed{"A264", "DUCK"};
static_assert(kListedYuvKeyframed.size() == 2);

inline constexpr CodeSet kListedYuvKeyframedMpeg{"MP42", "MP43", "MPG4", "vuym"};
static_assert(kListedYuvKeyframedMpeg.size() == 4);

inline constexpr CodeSet kListedRgb{0x00000000, 0x00000001, 0x00000002, 0x00000003, "IGS.", "RGB2", "SPB8", "RLE8",
                                    "RGBA",     "GTNP",     "RGBT",     "WARW",     "ELRW", "r84b", "a46b", "cilf",
                                    "bgrf",     " fig",     " gnp",     "xgdq",     " elr", " cms", " agt"};
static_assert(kListedRgb.size() == 23);

// ---- audio, information ------------------------------------------------------------------------------------------

// WAVE format tags are decimal here, as they are wherever they are listed.
inline constexpr CodeSet kListedAudio{
    0, 1, 2, 3, 5, 6, 7, 16, 17, 18, 19, 20, 21, 22, 23, 24, 32, 33, 34, 35, 36, 37, 38, 48, 49, 50, 51, 52, 53, 54, 55,
    56, 57, 58, 59, 60, 61, 64, 65, 80, 85, 96, 97, 98, 99, 100, 101, 102, 103, 128, 256, 512, 514, 515, 544, 768, 1024,
    4096, 4097, 4098, 4099, 4100, 4352, 5120,

    // with four characters; the two in hexadecimal are "ms" from the top down, and a tag
    "SPLC", "ENON", "2xdc", "4xdc", "acvd", "23lf", "46lf", "42ni", "23ni", 0x6D730002, 0x6D730011, " war", "twos",
    "sowt"};
static_assert(kListedAudio.size() == 78);

inline constexpr std::uint32_t kInformation = fourCC("dcmt");

// ---- by flags word -----------------------------------------------------------------------------------------------

struct CatalogueRow {
    std::uint32_t flags;
    std::span<const std::uint32_t> codes;
};

inline constexpr std::array kVideoCatalogue{
    CatalogueRow{fccFlagVideo, kListedVideo.sorted},
    CatalogueRow{fccFlagVideo | fccFlagKeyframe, kListedKeyframed.sorted},
    CatalogueRow{fccFlagVideo | fccFlagGray, kListedGray.sorted},
    CatalogueRow{fccFlagVideo | fccFlagCMYK, kListedCmyk.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV, kListedYuv.sorted},
    CatalogueRow{fccFlagVideo | fccFlagDv25, kListedDv25.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagDv25, kListedYuvDv25.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagDv50, kListedYuvDv50.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagMpeg, kListedYuvMpeg.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagJpeg, kListedYuvJpeg.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagKeyframe, kListedYuvKeyframed.sorted},
    CatalogueRow{fccFlagVideo | fccFlagYUV | fccFlagKeyframe | fccFlagMpeg, kListedYuvKeyframedMpeg.sorted},
    CatalogueRow{fccFlagVideo | fccFlagRGB, kListedRgb.sorted},
};

consteval std::size_t videoCodes() {
    std::size_t count = 0;
    for (const CatalogueRow& row : kVideoCatalogue) count += row.codes.size();
    return count;
}
static_assert(videoCodes() == 275);

}  // namespace kv::media
