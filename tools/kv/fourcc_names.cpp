// Two tables, and looking things up in them.
#include "kv/fourcc_names.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "fourcc.h"

namespace kv::tool {
namespace {

constexpr std::array kPredicates{
    Predicate{"fccIsSupported", fccIsSupported},
    Predicate{"fccIsVideo", fccIsVideo},
    Predicate{"fccIsAudio", fccIsAudio},
    Predicate{"fccIsInfo", fccIsInfo},
    Predicate{"fccIsRGB", fccIsRGB},
    Predicate{"fccIsYUV", fccIsYUV},
    Predicate{"fccIsRawRGB", fccIsRawRGB},
    Predicate{"fccIsRGB_16", fccIsRGB_16},
    Predicate{"IsHalfFloat", IsHalfFloat},
    Predicate{"fccHasAlpha", fccHasAlpha},
    Predicate{"fccIs8BitD1YUV", fccIs8BitD1YUV},
    Predicate{"fccIsYCbCr8", fccIsYCbCr8},
    Predicate{"fccIsYCbCr10", fccIsYCbCr10},
    Predicate{"fccIsLog", fccIsLog},
    Predicate{"fccIsDPX", fccIsDPX},
    Predicate{"fccIsStereo", fccIsStereo},
    Predicate{"fccIsUnc3D", fccIsUnc3D},
    Predicate{"fccIsBayer", fccIsBayer},
    Predicate{"fccIsSonyRaw", fccIsSonyRaw},
    Predicate{"fccIsCanonRaw", fccIsCanonRaw},
    Predicate{"fccIsCineForm", fccIsCineForm},
    Predicate{"fccIsCineFormRaw", fccIsCineFormRaw},
    Predicate{"fccIsDv25", fccIsDv25},
    Predicate{"fccIsDv50", fccIsDv50},
    Predicate{"fccIsDv100", fccIsDv100},
    Predicate{"fccIsJpeg", fccIsJpeg},
    Predicate{"fccIsJPEG2000", fccIsJPEG2000},
    Predicate{"fccIsDCI", fccIsDCI},
    Predicate{"fccIsJpegXS", fccIsJpegXS},
    Predicate{"fccIsJPEGXS", fccIsJPEGXS},
    Predicate{"fccIsJpegXSYUV", fccIsJpegXSYUV},
    Predicate{"fccIsJpegXSRGB", fccIsJpegXSRGB},
    Predicate{"fccIsAvidJpeg", fccIsAvidJpeg},
    Predicate{"fccIsAvidBlackLine", fccIsAvidBlackLine},
    Predicate{"fccIsAvidJfif", fccIsAvidJfif},
    Predicate{"fccIsDNxHD", fccIsDNxHD},
    Predicate{"fccIsDNxHR", fccIsDNxHR},
    Predicate{"fccIsProRes", fccIsProRes},
    Predicate{"fccIsMpeg", fccIsMpeg},
    Predicate{"fccIsIMX", fccIsIMX},
    Predicate{"fccIsXDCam", fccIsXDCam},
    Predicate{"fccIsh264", fccIsh264},
    Predicate{"fccIsAVCi", fccIsAVCi},
    Predicate{"fccIsXAVC", fccIsXAVC},
    Predicate{"fccIsHEVC", fccIsHEVC},
    Predicate{"fccIsDolbyVision", fccIsDolbyVision},
    Predicate{"fccIsHDCamSR", fccIsHDCamSR},
    Predicate{"fccIsCompressedAudio", fccIsCompressedAudio},
    Predicate{"fccIsPCMAudio", fccIsPCMAudio},
    Predicate{"fccCanKeyframe", fccCanKeyframe},
    Predicate{"fccPrefersv210", fccPrefersv210},
    Predicate{"fccPrefersYCrCb", fccPrefersYCrCb},
    Predicate{"fccCanDecodeTo16", fccCanDecodeTo16},
    Predicate{"fccCodecIsBuiltIn", fccCodecIsBuiltIn},
};

struct Flag {
    std::string_view name;
    std::uint32_t bit;
};

constexpr std::array kFlags{
    Flag{"fccFlagVideo", fccFlagVideo},       Flag{"fccFlagAudio", fccFlagAudio}, Flag{"fccFlagRGB", fccFlagRGB},
    Flag{"fccFlagYUV", fccFlagYUV},           Flag{"fccFlagCMYK", fccFlagCMYK},   Flag{"fccFlagGray", fccFlagGray},
    Flag{"fccFlagKeyframe", fccFlagKeyframe}, Flag{"fccFlagJpeg", fccFlagJpeg},   Flag{"fccFlagMpeg", fccFlagMpeg},
    Flag{"fccFlagDv50", fccFlagDv50},         Flag{"fccFlagDv25", fccFlagDv25},
};

bool sameInAnyCase(std::string_view left, std::string_view right) {
    const auto lower = [](char of) { return std::tolower(static_cast<unsigned char>(of)); };
    return std::ranges::equal(left, right, [&](char a, char b) { return lower(a) == lower(b); });
}

/// Calls matches(name, given) with each form that a name may be given in, the whole one first.
template <class Matches>
const Predicate* firstThat(std::string_view given, Matches matches) {
    for (const std::string_view ahead : {"", "fcc", "Is", "fccIs"}) {
        const std::string whole = std::string(ahead).append(given);
        const auto* const found =
            std::ranges::find_if(kPredicates, [&](const Predicate& one) { return matches(one.name, whole); });
        if (found != kPredicates.end()) return found;
    }
    return nullptr;
}

}  // namespace

std::span<const Predicate> predicates() { return kPredicates; }

const Predicate* predicateNamed(std::string_view name) {
    const auto equal = [](std::string_view left, std::string_view right) { return left == right; };
    const Predicate* const exact = firstThat(name, equal);
    return exact != nullptr ? exact : firstThat(name, sameInAnyCase);
}

std::vector<std::string> predicatesThatHold(std::uint32_t fcc) {
    std::vector<std::string> names;
    for (const Predicate& one : kPredicates) {
        if (one.holds(fcc) != 0) names.emplace_back(one.name);
    }
    return names;
}

std::vector<std::string> flagNames(std::uint32_t flags) {
    std::vector<std::string> names;
    for (const Flag& flag : kFlags) {
        if ((flags & flag.bit) != 0) names.emplace_back(flag.name);
    }
    return names;
}

}  // namespace kv::tool
