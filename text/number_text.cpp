// Whole numbers as text.
//
// The sign counts as a digit where zeros are put in front, and stands behind them.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvos/conversion.h"

namespace kv::text {
namespace {

/// A number of 32 bits in base 2, the longest there is, and its sign.
using Digits = std::array<char, 33>;

std::string_view digitsOf(std::int32_t value, int base, Digits& buffer) {
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base);
    return {buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data())};
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

char* itoa(std::int32_t nValue, char* pOut, std::int32_t nBase) {
    constexpr std::int32_t kLargestBase = 35;
    if (pOut == nullptr) return nullptr;
    *pOut = '\0';
    if (nBase < 2 || nBase > kLargestBase) return nullptr;
    text::Digits buffer;
    *std::ranges::copy(text::digitsOf(nValue, nBase, buffer), pOut).out = '\0';
    return pOut;
}

char* ULONGToString(std::int32_t nValue, std::int32_t nWidth, char* pOut) {
    constexpr std::int32_t kLargestWidth = 10;
    if (pOut == nullptr) return nullptr;
    text::Digits buffer;
    const std::string_view digits = text::digitsOf(nValue, 10, buffer);
    const auto zeros = std::min(nWidth, kLargestWidth) - static_cast<std::int32_t>(digits.size());
    char* const behindZeros = std::fill_n(pOut, std::max(zeros, 0), '0');
    *std::ranges::copy(digits, behindZeros).out = '\0';
    return pOut;
}
