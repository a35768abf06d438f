// The catalogue as it is printed: flags word, number of codes, codes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvtest {

struct PrintedRow {
    std::uint32_t flags;
    std::size_t count;
    const char* codes;
};

// clang-format off
inline constexpr PrintedRow kPrintedVideo[] = {
    {0x08000000, 85,
     R"(`DIB `, `IAN `, `RAW `, `RVX `, `I420`, `BT20`, `XLV0`, 0x31000000, `RT21`, `VCR1`, `DXT1`, `VLV1`,
        `WNV1`, `ASV1`, `DVX1`, `NTn1`, `CC12`, `VCR2`, `AUR2`, `DXT2`, `DVX2`, `SQZ2`, `DXT3`, `DVX3`, `DXT4`,
        `DXT5`, `MRCA`, `CPLA`, `AURA`, `STVA`, `FRWA`, `ICLB`, `STVB`, `TY2C`, `SDCC`, `CFCC`, `AFLC`, `SFMC`,
        `SMSC`, `DXTC`, `WBVC`, `ILVC`, `KMVC`, `STVC`, `UCOD`, `SMSD`, `1FVF`, `SPIG`, `VX1K`, `VX2K`, `VIXL`,
        `CHAM`, `WHAM`, `CRAM`, `ANIM`, `VDOM`, `TY0N`, `TY2N`, `VXSP`, `1QVS`, `CWLT`, `GWLT`, `BTCV`, `TCDV`,
        `SDIV`, `29UV`, `PGVV`, `IRAW`, `WINX`, `PVEZ`, `VDTZ`, `esab`, `uolc`, `mrle`, `erif`, `dcpk`, `cvsm`,
        `htap`, `wrdq`, ` war`, `lpir`, `azpr`, `lacs`, `ffit`, `smsv`)"},
    {0x08010000, 61,
     R"(`SV10`, `BW10`, `TM20`, `TR20`, `IV30`, `IV40`, `IV50`, `H260`, `IV31`, `IV41`, `H261`, `M261`, `MC12`,
        `IV32`, `IV42`, `H262`, `IV33`, `IV43`, `H263`, `M263`, `i263`, `IV34`, `IV44`, `H264`, `X264`, `h264`,
        `x264`, `IV35`, `IV45`, `IV36`, `IV46`, `H266`, `IV37`, `IV47`, `H267`, `IV38`, `IV48`, `H268`, `IV39`,
        `IV49`, `H269`, `TMIC`, `CVID`, `AMPG`, `CGDI`, `AEMI`, `14VI`, `MCAM`, `PVMM`, `VIVO`, `HMCR`, `HMRR`,
        `ILVR`, `TLMS`, `TMOT`, `TLST`, `VDOW`, `TM2X`, `divc`, `162h`, `362h`)"},
    {0x08100000, 2,
     R"(`g61b`, `a23b`)"},
    {0x08200000, 1,
     R"(`kymc`)"},
    {0x08400000, 49,
     R"(`YUV `, `Y211`, `V261`, `IYU1`, `YC12`, `YV12`, `V422`, `s422`, `I1A2`, `P1A2`, `P7A2`, `IYU2`, `yuV2`,
        `YUY2`, `auv2`, `yuv2`, `80d3`, `01d3`, `YUV4`, `V655`, `H265`, `YUV8`, `IF09`, `YVU9`, `CLPL`, `Y41P`,
        `CLJR`, `Y41T`, `Y42T`, `AJYU`, `YVYU`, `YUNV`, `UYNV`, `CYUV`, `IYUV`, `CYUY`, `UYVY`, `1hvd`, `ehvd`,
        `1veh`, `1cvh`, `9vys`, `012v`, `a12v`, `cyuv`, `024y`, `2vuy`, `svuy`, `uvuy`)"},
    {0x08001000, 1,
     R"(`CDCV`)"},
    {0x08401000, 6,
     R"(`dv25`, `dvsd`, ` cvd`, `pcvd`, `npvd`, `ppvd`)"},
    {0x08402000, 1,
     R"(`dv50`)"},
    {0x08404000, 5,
     R"(`M701`, `XMPG`, `MPGI`, `MMES`, `mpeg`)"},
    {0x08408000, 35,
     R"(`avr `, `dmb1`, `N106`, `P106`, `JDVA`, `nRVA`, `FRWD`, `ImJG`, `IJPG`, `MJPG`, `mJPG`, `ULTI`, `GJmI`,
        `TVMJ`, `GPJM`, `PHMO`, `FLJP`, `mjpa`, ` rva`, `1bmd`, `TNvk`, `APvk`, `tnvk`, `apvk`, `1rvd`, `AJJf`,
        `mjpg`, 0x6770EA6D, 0x6770EAED, `gepj`, `apjm`, `bpjm`, `AVRn`, `avrn`, `AJAv`)"},
    {0x08410000, 2,
     R"(`A264`, `DUCK`)"},
    {0x08414000, 4,
     R"(`MP42`, `MP43`, `MPG4`, `vuym`)"},
    {0x08800000, 23,
     R"(0x00000000, 0x00000001, 0x00000002, 0x00000003, `IGS.`, `RGB2`, `SPB8`, `RLE8`, `RGBA`, `GTNP`, `RGBT`,
        `WARW`, `ELRW`, `r84b`, `a46b`, `cilf`, `bgrf`, ` fig`, ` gnp`, `xgdq`, ` elr`, ` cms`, ` agt`)"},
};

inline constexpr const char* kPrintedTags =
    R"(0, 1, 2, 3, 5, 6, 7, 16, 17, 18, 19, 20, 21, 22, 23, 24, 32, 33, 34, 35, 36, 37, 38, 48, 49, 50, 51, 52,
        53, 54, 55, 56, 57, 58, 59, 60, 61, 64, 65, 80, 85, 96, 97, 98, 99, 100, 101, 102, 103, 128, 256, 512,
        514, 515, 544, 768, 1024, 4096, 4097, 4098, 4099, 4100, 4352, 5120)";
inline constexpr const char* kPrintedAudio =
    R"(`SPLC`, `ENON`, `2xdc`, `4xdc`, `acvd`, `23lf`, `46lf`, `42ni`, `23ni`, 0x6D730002, 0x6D730011, ` war`,
        `twos`, `sowt`)";
// clang-format on

}  // namespace kvtest
