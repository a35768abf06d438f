// Text of 16-bit, 32-bit and wide units as it is: copied, measured, brought to another width. And the surrogates among
// the units, which no conversion of this library pairs.
#include <cstdint>

#include "kvos/conversion.h"
#include "kvos/text.h"

namespace kv::text {
namespace {

template <class Target, class Source>
Target* copyUnits(Target* target, const Source* source) {
    if (target == nullptr) return nullptr;
    Target* out = target;
    while (source != nullptr && *source != 0) *out++ = static_cast<Target>(*source++);
    *out = 0;
    return target;
}

constexpr std::uint32_t kPairMask = 0xFC00;

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint32_t kvStr_UTF16_to_wchar(wchar_t* pTarget, const std::uint16_t* pSource) {
    text::copyUnits(pTarget, pSource);
    return 1;
}

std::uint32_t kvStr_UTF32_to_wchar(wchar_t* pTarget, const std::uint32_t* pSource) {
    text::copyUnits(pTarget, pSource);
    return 1;
}

std::uint16_t* kvwstrcpy(std::uint16_t* pTarget, const std::uint16_t* pSource) {
    return text::copyUnits(pTarget, pSource);
}

std::uint64_t kvwstrlen(const std::uint16_t* pText) {
    std::uint64_t length = 0;
    while (pText != nullptr && pText[length] != 0) ++length;
    return length;
}

std::uint32_t is_surrogate(std::uint16_t wUnit) { return wUnit < 0xE000; }

std::uint32_t is_high_surrogate(std::uint16_t wUnit) { return (wUnit & text::kPairMask) == 0xD800; }

std::uint32_t is_low_surrogate(std::uint16_t wUnit) { return (wUnit & text::kPairMask) == 0xDC00; }

std::uint32_t surrogate_to_utf32(std::uint16_t wHigh, std::uint16_t wLow) {
    constexpr std::uint32_t kMarks = 0x35FDC00;  // what the two marks add to the sum
    return (std::uint32_t{wHigh} << 10) + wLow - kMarks;
}
