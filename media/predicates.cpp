// One question each: membership of a set, a flag of the catalogue, or both.
//
// A call is one look-up in the index. Sets that the range of codes from 0x88000000 up belongs to say so here: it is in
// no list.
#include <cstdint>

#include "fourcc.h"
#include "media/four_cc.h"
#include "media/index.h"

namespace kv::media {
namespace {

bool hasFlag(std::uint32_t code, std::uint32_t flag) { return (videoFlags(code) & flag) != 0; }

// No branch between the two halves: which of them holds cannot be predicted.
std::uint32_t hasFlagOrIsIn(const Entry& known, std::uint32_t flags, std::uint64_t sets) {
    return ((known.videoFlags() & flags) | (known.sets & sets)) != 0;
}

std::uint32_t isListedJpeg(const Entry& known) {
    const std::uint64_t excepted = known.sets & bitOf(Set::flaggedButNoJpeg);
    return ((known.videoFlags() & fccFlagJpeg) != 0) & (excepted == 0);
}

/// The values of the range that hold JFIF pictures: six each behind the two uncompressed ones.
bool isJfifInRange(std::uint32_t code) {
    return (code >= 0x8800001F && code <= 0x88000024) || (code >= 0x8810001F && code <= 0x88100024);
}

/// What is built in as a whole family, besides the families that have flags.
constexpr std::uint64_t kBuiltIn =
    bitOf(Set::dv25) | bitOf(Set::dv50) | bitOf(Set::dv100) | bitOf(Set::eightBitD1Yuv) | bitOf(Set::h264) |
    bitOf(Set::avcIntra) | bitOf(Set::dnxHd) | bitOf(Set::dnxHr) | bitOf(Set::cineForm) | bitOf(Set::jpeg2000) |
    bitOf(Set::log) | bitOf(Set::mpeg) | bitOf(Set::rawRgb) | bitOf(Set::uncompressed3D) | bitOf(Set::yCbCr8) |
    bitOf(Set::yCbCr10) | bitOf(Set::bayer) | bitOf(Set::hdCamSr) | bitOf(Set::proRes) | bitOf(Set::builtInSingly);

/// Small letters for A to Z, in no locale.
constexpr std::uint32_t lowered(std::uint32_t byte) { return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte; }

}  // namespace
}  // namespace kv::media

using kv::media::bitOf;
using kv::media::Entry;
using kv::media::hasFlag;
using kv::media::hasFlagOrIsIn;
using kv::media::isIn;
using kv::media::isInAny;
using kv::media::isInRange;
using kv::media::isJfifInRange;
using kv::media::isListedJpeg;
using kv::media::isUncompressedInRange;
using kv::media::kIndex;
using kv::media::Set;

// ---- by a flag of the catalogue ----------------------------------------------------------------------------------

std::uint32_t fccIsRGB(std::uint32_t fcc) { return hasFlag(fcc, fccFlagRGB); }
std::uint32_t fccIsYUV(std::uint32_t fcc) { return hasFlag(fcc, fccFlagYUV); }
std::uint32_t fccCanKeyframe(std::uint32_t fcc) { return hasFlag(fcc, fccFlagKeyframe); }

std::uint32_t fccIsJpeg(std::uint32_t fcc) {
    return isInRange(fcc) ? !isUncompressedInRange(fcc) : isListedJpeg(kIndex[fcc]);
}

std::uint32_t fccIsDv25(std::uint32_t fcc) { return hasFlagOrIsIn(kIndex[fcc], fccFlagDv25, bitOf(Set::dv25)); }
std::uint32_t fccIsDv50(std::uint32_t fcc) { return hasFlagOrIsIn(kIndex[fcc], fccFlagDv50, bitOf(Set::dv50)); }

// ---- by membership -----------------------------------------------------------------------------------------------

std::uint32_t fccIsCompressedAudio(std::uint32_t fcc) { return isIn(Set::compressedAudio, fcc); }
std::uint32_t fccIsPCMAudio(std::uint32_t fcc) { return !isIn(Set::compressedAudio, fcc); }
std::uint32_t fccIsJpegXS(std::uint32_t fcc) { return isIn(Set::jpegXs, fcc); }
std::uint32_t fccIsJpegXSYUV(std::uint32_t fcc) { return isIn(Set::jpegXsYuv, fcc); }
std::uint32_t fccIsJpegXSRGB(std::uint32_t fcc) { return isIn(Set::jpegXsRgb, fcc); }
std::uint32_t fccIsJPEGXS(std::uint32_t fcc) { return isIn(Set::jpegXsFewer, fcc); }
std::uint32_t fccIsAvidJfif(std::uint32_t fcc) { return isJfifInRange(fcc) || isIn(Set::avidJfif, fcc); }
std::uint32_t fccIsAvidBlackLine(std::uint32_t fcc) { return isInRange(fcc) || isIn(Set::avidBlackLine, fcc); }
std::uint32_t fccIsAvidJpeg(std::uint32_t fcc) { return isInRange(fcc) || isIn(Set::avidJpeg, fcc); }
std::uint32_t fccIsDv100(std::uint32_t fcc) { return isIn(Set::dv100, fcc); }
std::uint32_t fccIsIMX(std::uint32_t fcc) { return isIn(Set::imx, fcc); }
std::uint32_t fccIs8BitD1YUV(std::uint32_t fcc) { return isUncompressedInRange(fcc) || isIn(Set::eightBitD1Yuv, fcc); }
std::uint32_t fccIsYCbCr8(std::uint32_t fcc) { return isIn(Set::yCbCr8, fcc); }
std::uint32_t fccIsYCbCr10(std::uint32_t fcc) { return isIn(Set::yCbCr10, fcc); }
std::uint32_t fccIsHEVC(std::uint32_t fcc) { return isIn(Set::hevc, fcc); }
std::uint32_t fccIsAVCi(std::uint32_t fcc) { return isIn(Set::avcIntra, fcc); }
std::uint32_t fccIsRawRGB(std::uint32_t fcc) { return isIn(Set::rawRgb, fcc); }
std::uint32_t fccIsDPX(std::uint32_t fcc) { return isIn(Set::dpx, fcc); }
std::uint32_t fccIsSonyRaw(std::uint32_t fcc) { return isIn(Set::sonyRaw, fcc); }
std::uint32_t fccIsCanonRaw(std::uint32_t fcc) { return isIn(Set::canonRaw, fcc); }
std::uint32_t fccIsStereo(std::uint32_t fcc) { return isIn(Set::stereo, fcc); }
std::uint32_t fccIsDolbyVision(std::uint32_t fcc) { return isIn(Set::dolbyVision, fcc); }
std::uint32_t fccIsProRes(std::uint32_t fcc) { return isIn(Set::proRes, fcc); }
std::uint32_t fccIsXAVC(std::uint32_t fcc) { return isIn(Set::xavc, fcc); }
std::uint32_t fccIsXDCam(std::uint32_t fcc) { return isIn(Set::xdCam, fcc); }
std::uint32_t IsHalfFloat(std::uint32_t fcc) { return isIn(Set::halfFloat, fcc); }
std::uint32_t fccIsDNxHR(std::uint32_t fcc) { return isIn(Set::dnxHr, fcc); }
std::uint32_t fccIsDNxHD(std::uint32_t fcc) { return isIn(Set::dnxHd, fcc); }
std::uint32_t fccIsCineFormRaw(std::uint32_t fcc) { return isIn(Set::cineFormRaw, fcc); }
std::uint32_t fccIsCineForm(std::uint32_t fcc) { return isIn(Set::cineForm, fcc); }
std::uint32_t fccIsJPEG2000(std::uint32_t fcc) { return isIn(Set::jpeg2000, fcc); }
std::uint32_t fccIsDCI(std::uint32_t fcc) { return isIn(Set::dci, fcc); }
std::uint32_t fccIsLog(std::uint32_t fcc) { return isIn(Set::log, fcc); }
std::uint32_t fccIsUnc3D(std::uint32_t fcc) { return isIn(Set::uncompressed3D, fcc); }
std::uint32_t fccIsBayer(std::uint32_t fcc) { return isIn(Set::bayer, fcc); }
std::uint32_t fccIsHDCamSR(std::uint32_t fcc) { return isIn(Set::hdCamSr, fcc); }
std::uint32_t fccIsRGB_16(std::uint32_t fcc) { return isIn(Set::rgb16, fcc); }
std::uint32_t fccHasAlpha(std::uint32_t fcc) { return isIn(Set::hasAlpha, fcc); }
std::uint32_t fccPrefersv210(std::uint32_t fcc) { return isIn(Set::prefersV210, fcc); }
std::uint32_t fccIsh264(std::uint32_t fcc) { return isIn(Set::h264, fcc); }
std::uint32_t fccIsMpeg(std::uint32_t fcc) { return isIn(Set::mpeg, fcc); }

std::uint32_t fccPrefersYCrCb(std::uint32_t fcc) {
    return isInRange(fcc) ? !isUncompressedInRange(fcc) : isIn(Set::prefersYCrCb, fcc);
}

// ---- composite ---------------------------------------------------------------------------------------------------

std::uint32_t fccCodecIsBuiltIn(std::uint32_t fcc) {
    if (isInRange(fcc)) return 1;
    const Entry& known = kIndex[fcc];
    return hasFlagOrIsIn(known, fccFlagDv25 | fccFlagDv50, kv::media::kBuiltIn) | isListedJpeg(known);
}

std::uint32_t fccCanDecodeTo16(std::uint32_t fcc) { return isInAny(bitOf(Set::bayer) | bitOf(Set::decodedTo16), fcc); }

std::uint32_t fccCanUseWidth(std::uint32_t fcc, std::int32_t nWidth, std::int32_t nFullWidth) {
    if (!isIn(Set::narrowedDv100, fcc)) return nWidth == nFullWidth;
    if (nFullWidth == 1280) return nWidth == 1280 || nWidth == 960;
    if (nFullWidth == 1920) return nWidth == 1280 || nWidth == 1440 || nWidth == 1920;
    return 0;
}

std::uint32_t fccIsEqual(std::uint32_t fccA, std::uint32_t fccB) {
    for (int shift = 0; shift < 32; shift += 8) {
        if (kv::media::lowered(fccA >> shift & 0xFF) != kv::media::lowered(fccB >> shift & 0xFF)) return 0;
    }
    return 1;
}
