// The classes of frame sizes as they are printed, with their formulas. The class of Bayer codes is that of fccIsBayer.
#pragma once

#include <cstdint>

namespace kvtest {

/// The arguments of a question but for the code; `pixels` is width times height.
struct Picture {
    std::uint32_t width, height;
    std::int32_t bits, rate;

    std::uint32_t pixels() const { return width * height; }
    bool is25Family() const { return rate == 25 || rate == 50; }
};

using Formula = std::uint32_t (*)(const Picture&);

struct PrintedClass {
    const char* codes;
    Formula bytes;
};

inline std::uint32_t stereoscopicBytes(const Picture& of) {
    if (of.bits == 12 || of.bits == 24) return 6 * of.pixels();
    if (of.bits == 48) return 12 * of.pixels();
    return (of.bits == 64 ? 16u : 8u) * of.pixels();
}

inline std::uint32_t packedTenBitBytes(const Picture& of) {
    std::uint32_t padded = of.width;
    while (padded % 48 != 0) ++padded;
    return padded * 8 / 3 * of.height;
}

inline std::uint32_t dv100Bytes(const Picture& of) {
    if (of.height == 720) return of.is25Family() ? 288000 : 240000;
    return of.is25Family() ? 576000 : 480000;
}

inline std::uint32_t anythingElseBytes(const Picture& of) {
    if (of.bits == 64) return 8 * of.pixels();
    if (of.bits == 48) return 6 * of.pixels();
    return (of.bits == 24 ? 3u : 4u) * of.pixels();
}

template <std::uint32_t bytes>
std::uint32_t always(const Picture&) {
    return bytes;
}

template <std::uint32_t height, std::uint32_t bytesThere, std::uint32_t bytes>
std::uint32_t atHeight(const Picture& of) {
    return of.height == height ? bytesThere : bytes;
}

// clang-format off
inline constexpr PrintedClass kPrintedClasses[] = {
    {R"(`I1A2`, `P1A2`, `P7A2`, `ADV2`, `yuV2`, `YUY2`, `yuv2`, `MJ2C`, `J22K`, `LJ2K`, `J24K`, `AJYU`, `YVYU`,
        `J2GV`, `YUNV`, `UYNV`, `UYVY`, `h4pa`, `x4pa`, `hcpa`, `ncpa`, `ocpa`, `scpa`, `hrpa`, `hrnd`, `lrnd`,
        `qrnd`, `srnd`, `2pjm`, `cyuv`, 0x8800001E, 0x8810001E)",
     [](const Picture& of) { return 2 * of.pixels(); }},
    {R"(`80d3`, `01d3`, `03d3`, `23d3`, `GBd3`, `BGd3`, `RGd3`, `GRd3`, `D3FC`, `DHFC`, `CFHD`, `cfhd`)",
     stereoscopicBytes},
    {R"(`J2G_`, `012v`)",
     packedTenBitBytes},
    {R"(`dv25`, `d2VA`, `dvsd`, ` cvd`, `pcvd`, `nfvd`, `pfvd`, `npvd`, `ppvd`)",
     atHeight<576, 144000, 120000>},
    {R"(`dv50`, `vdVA`, `n5vd`, `p5vd`)",
     atHeight<576, 288000, 240000>},
    {R"(`DVH1`, `1dVA`, `DVHD`, `MDVF`, `dvhd`)",
     dv100Bytes},
    {R"(`n1vd`, `3hvd`, `6hvd`)",
     always<480000>},
    {R"(`p1vd`, `2hvd`, `5hvd`)",
     always<576000>},
    {R"(`phvd`)",
     always<240000>},
    {R"(`qhvd`)",
     always<288000>},
    {R"(`mD10`, `mD30`, `mD40`, `mgc1`, `mgv1`, `mgc2`, `mgv2`, `mc25`, `mv25`, `mc35`, `mv35`, `mc17`, `mv17`,
        `pmVA`, `1vdh` to `9vdh`, `avdh`, `n3xm`, `p3xm`, `n4xm`, `p4xm`, `n5xm`, `p5xm`, `95dx`,
        `a5dx` to `f5dx`, `1vdx` to `9vdx`, `avdx` to `fvdx`)",
     always<285696>},
    {R"(`0dVA`)",
     always<1257063>},
    {R"(`01VA`, `3dVA`, `4dVA`, `6dVA`)",
     always<917504>},
    {R"(`ndVA`)",
     atHeight<720, 458752, 917504>},
    {R"(`2dVA`, `5dVA`)",
     always<606208>},
    {R"(`7dVA`, `8dVA`)",
     always<458752>},
    {R"(`9dVA`)",
     always<303104>},
    {R"(`22ia`, `32ia`, `52ia`, `62ia`, `p2ia`, `q2ia`)",
     always<944640>},
    {R"(`21ia`, `51ia`, `61ia`)",
     always<568832>},
    {R"(`31ia`)",
     always<472576>},
    {R"(`q1ia`)",
     always<284672>},
    {R"(`55ia`)",
     always<281088>},
    {R"(`p1ia`)",
     always<236544>},
    {R"(`35ia`, `65ia`)",
     always<232960>},
    {R"(`25ia`, `q5ia`)",
     always<140800>},
    {R"(`p5ia`)",
     always<116736>},
};
// clang-format on

}  // namespace kvtest
