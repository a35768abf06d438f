// The classes of maximum frame sizes, in the order in which they are asked, and their codes.
//
// No code is in two classes. The classes are lists of their own: "CDCV" is a DV at 25 Mbit/s and has no class here, and
// so falls to the pixel depth like every code that is not listed. Meant.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "media/four_cc.h"
#include "media/sets.h"

namespace kv::media {

/// What a frame's size follows from.
enum class FrameRule : std::uint8_t {
    depth,            // the pixels and their depth
    twoBytes,         // two bytes a pixel
    stereoscopic,     // the pixels of two pictures and their depth
    fourBytes,        // four bytes a pixel, whatever the depth
    packedTenBit,     // six pixels in 16 bytes, rows padded to 48 pixels
    byRateAndHeight,  // the figures of DV at 100 Mbit/s
    byHeight,         // one figure at `height`, another one at any other
    fixed,            // one figure
};

struct FrameSize {
    FrameRule rule;
    std::uint32_t bytes = 0;
    std::uint32_t height = 0;
    std::uint32_t bytesAtHeight = 0;
};

constexpr FrameSize fixed(std::uint32_t bytes) { return {.rule = FrameRule::fixed, .bytes = bytes}; }
constexpr FrameSize fixedBut(std::uint32_t bytes, std::uint32_t height, std::uint32_t bytesAtHeight) {
    return {.rule = FrameRule::byHeight, .bytes = bytes, .height = height, .bytesAtHeight = bytesAtHeight};
}

struct FrameClass {
    static constexpr std::size_t kMostCodes = 52;

    FrameSize size;
    std::size_t count;
    std::array<std::uint32_t, kMostCodes> codes{};

    template <class... Code>
    consteval explicit FrameClass(FrameSize frame, const Code&... listed)
        : size(frame), count(sizeof...(Code)), codes{fourCC(listed)...} {}
    template <std::size_t N>
    consteval FrameClass(FrameSize frame, const CodeSet<N>& set) : size(frame), count(N) {
        std::ranges::copy(set.sorted, codes.begin());
    }
};

/// The first row is that of every code that no other one lists.
inline constexpr std::array kFrameClasses{
    FrameClass({FrameRule::depth}),

    FrameClass({FrameRule::twoBytes}, "I1A2", "P1A2", "P7A2", "ADV2", "yuV2", "YUY2", "yuv2", "MJ2C", "J22K", "LJ2K",
               "J24K", "AJYU", "YVYU", "J2GV", "YUNV", "UYNV", "UYVY", "h4pa", "x4pa", "hcpa", "ncpa", "ocpa", "scpa",
               "hrpa", "hrnd", "lrnd", "qrnd", "srnd", "2pjm", "cyuv", 0x8800001E, 0x8810001E),
    FrameClass({FrameRule::stereoscopic}, "80d3", "01d3", "03d3", "23d3", "GBd3", "BGd3", "RGd3", "GRd3", "D3FC",
               "DHFC", "CFHD", "cfhd"),
    FrameClass({FrameRule::fourBytes}, kBayer),
    FrameClass({FrameRule::packedTenBit}, "J2G_", "012v"),

    // DV at 25, 50 and 100 Mbit/s
    FrameClass(fixedBut(120000, 576, 144000), "dv25", "d2VA", "dvsd", " cvd", "pcvd", "nfvd", "pfvd", "npvd", "ppvd"),
    FrameClass(fixedBut(240000, 576, 288000), "dv50", "vdVA", "n5vd", "p5vd"),
    FrameClass({FrameRule::byRateAndHeight}, "DVH1", "1dVA", "DVHD", "MDVF", "dvhd"),
    FrameClass(fixed(480000), "n1vd", "3hvd", "6hvd"),
    FrameClass(fixed(576000), "p1vd", "2hvd", "5hvd"),
    FrameClass(fixed(240000), "phvd"),
    FrameClass(fixed(288000), "qhvd"),

    // MPEG with long groups of pictures, and with key frames alone
    FrameClass(fixed(285696), "mD10", "mD30", "mD40", "mgc1", "mgv1", "mgc2", "mgv2", "mc25", "mv25", "mc35", "mv35",
               "mc17", "mv17", "pmVA", "1vdh", "2vdh", "3vdh", "4vdh", "5vdh", "6vdh", "7vdh", "8vdh", "9vdh", "avdh",
               "n3xm", "p3xm", "n4xm", "p4xm", "n5xm", "p5xm", "95dx", "a5dx", "b5dx", "c5dx", "d5dx", "e5dx", "f5dx",
               "1vdx", "2vdx", "3vdx", "4vdx", "5vdx", "6vdx", "7vdx", "8vdx", "9vdx", "avdx", "bvdx", "cvdx", "dvdx",
               "evdx", "fvdx"),

    // DNx
    FrameClass(fixed(1257063), "0dVA"),
    FrameClass(fixed(917504), "01VA", "3dVA", "4dVA", "6dVA"),
    FrameClass(fixedBut(917504, 720, 458752), "ndVA"),
    FrameClass(fixed(606208), "2dVA", "5dVA"),
    FrameClass(fixed(458752), "7dVA", "8dVA"),
    FrameClass(fixed(303104), "9dVA"),

    // AVC-Intra
    FrameClass(fixed(944640), "22ia", "32ia", "52ia", "62ia", "p2ia", "q2ia"),
    FrameClass(fixed(568832), "21ia", "51ia", "61ia"),
    FrameClass(fixed(472576), "31ia"),
    FrameClass(fixed(284672), "q1ia"),
    FrameClass(fixed(281088), "55ia"),
    FrameClass(fixed(236544), "p1ia"),
    FrameClass(fixed(232960), "35ia", "65ia"),
    FrameClass(fixed(140800), "25ia", "q5ia"),
    FrameClass(fixed(116736), "p5ia"),
};

consteval std::size_t codesWithFrameClass() {
    std::size_t count = 0;
    for (const FrameClass& row : kFrameClasses) count += row.count;
    return count;
}
static_assert(codesWithFrameClass() == 183);

}  // namespace kv::media
