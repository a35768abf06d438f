// The largest size of one frame.
//
// Every step is in 32 bits and wraps: the product of an impossible width and height is no error, it is what is left.
#include <cstdint>

#include "fourcc.h"
#include "media/frame_classes.h"
#include "media/index.h"

namespace kv::media {
namespace {

std::uint32_t bytesByDepth(std::int32_t bits) {
    switch (bits) {
        case 64:
            return 8;
        case 48:
            return 6;
        case 24:
            return 3;
        default:
            return 4;
    }
}

std::uint32_t stereoscopicBytesByDepth(std::int32_t bits) {
    switch (bits) {
        case 64:
            return 16;
        case 48:
            return 12;
        case 24:
        case 12:
            return 6;
        default:
            return 8;
    }
}

std::uint32_t packedTenBitRow(std::uint32_t width) {
    constexpr std::uint32_t kPixels = 48;
    return (width + (kPixels - 1)) / kPixels * kPixels * 8 / 3;
}

std::uint32_t dv100Size(std::uint32_t height, std::int32_t rate) {
    const bool is25Family = rate == 25 || rate == 50;
    if (height == 720) return is25Family ? 288000 : 240000;
    return is25Family ? 576000 : 480000;
}

}  // namespace
}  // namespace kv::media

std::uint32_t fccGetMaxFrameSize(std::uint32_t fcc, std::uint32_t dwWidth, std::uint32_t dwHeight, std::int32_t nBits,
                                 std::int32_t nRate) {
    namespace media = kv::media;
    using media::FrameRule;
    const std::uint32_t pixels = dwWidth * dwHeight;
    const media::FrameSize& size = media::kFrameClasses[media::kIndex[fcc].frameClass].size;
    switch (size.rule) {
        case FrameRule::twoBytes:
            return 2 * pixels;
        case FrameRule::stereoscopic:
            return media::stereoscopicBytesByDepth(nBits) * pixels;
        case FrameRule::fourBytes:
            return 4 * pixels;
        case FrameRule::packedTenBit:
            return media::packedTenBitRow(dwWidth) * dwHeight;
        case FrameRule::byRateAndHeight:
            return media::dv100Size(dwHeight, nRate);
        case FrameRule::byHeight:
            return dwHeight == size.height ? size.bytesAtHeight : size.bytes;
        case FrameRule::fixed:
            return size.bytes;
        case FrameRule::depth:
            break;
    }
    return media::bytesByDepth(nBits) * pixels;
}
