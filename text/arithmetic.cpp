// Whole-number arithmetic and byte order.
//
// What may pass 64 bits is computed where it has a meaning: unsigned where it wraps, in 128 bits where it must not.
#include <concepts>
#include <cstddef>
#include <cstdint>

#include "kvos/conversion.h"

namespace kv::text {
namespace {

__extension__ using Wide = __int128;

/// Shifts and sums that the compilers know as one instruction.
template <std::unsigned_integral Number>
constexpr Number reversed(Number number) {
    Number result = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        const std::size_t down = 8 * i;
        const std::size_t up = 8 * (sizeof(Number) - 1 - i);
        result = static_cast<Number>(result | (number >> down & 0xFFU) << up);
    }
    return result;
}

template <std::unsigned_integral Number>
Number* convert(Number* target, const Number* source, std::uint64_t count) {
    if (target == nullptr || source == nullptr) return target;
    for (std::uint64_t i = 0; i < count; ++i) target[i] = reversed(source[i]);
    return target + count;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::int64_t MulDivTrunc(std::int64_t a, std::int64_t b, std::int64_t c) {
    if (c == 0) return 0;
    const std::uint64_t product = static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
    if (c == -1) return static_cast<std::int64_t>(0 - product);  // the smallest number over -1 would trap
    return static_cast<std::int64_t>(product) / c;
}

std::int32_t NearestLongValue(std::int64_t nValue, const std::int64_t* pTable, std::int32_t nCount) {
    if (nCount < 2 || pTable == nullptr) return 0;
    for (std::int32_t i = 1; i < nCount; ++i) {
        if (text::Wide{2} * nValue < text::Wide{pTable[i]} + pTable[i - 1]) return i - 1;
    }
    return nCount - 1;
}

std::uint16_t* EndianConvertWord(std::uint16_t* pTarget, const std::uint16_t* pSource, std::uint64_t qwCount) {
    return text::convert(pTarget, pSource, qwCount);
}

std::uint32_t* EndianConvertDword(std::uint32_t* pTarget, const std::uint32_t* pSource, std::uint64_t qwCount) {
    return text::convert(pTarget, pSource, qwCount);
}

std::uint64_t* EndianConvertQword(std::uint64_t* pTarget, const std::uint64_t* pSource, std::uint64_t qwCount) {
    return text::convert(pTarget, pSource, qwCount);
}
