// Codes and closed sets of codes, as the tables of this folder write them.
//
// A code is written in the order its bytes lie in memory, which is the value's bytes from the lowest up: "DIB " is
// 0x20424944, and its blank counts.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace kv::media {

consteval std::uint32_t fourCC(const char (&text)[5]) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(text[i]);
    return value;
}
/// For what is not printable, and for WAVE format tags.
consteval std::uint32_t fourCC(std::int64_t number) {
    if (number < 0 || number > 0xFFFFFFFF) throw "no code has this value";
    return static_cast<std::uint32_t>(number);
}

/// A closed set of codes. A code listed twice ends the compilation.
template <std::size_t N>
struct CodeSet {
    std::array<std::uint32_t, N> sorted;

    template <class... Code>
    consteval explicit CodeSet(const Code&... listed) : sorted{fourCC(listed)...} {
        std::ranges::sort(sorted);
        if (std::ranges::adjacent_find(sorted) != sorted.end()) throw "a code is listed twice";
    }

    consteval std::size_t size() const { return N; }
    consteval bool contains(std::uint32_t code) const { return std::ranges::binary_search(sorted, code); }
};
template <class... Code>
CodeSet(const Code&...) -> CodeSet<sizeof...(Code)>;

// From kRangeFirst up every code stands for a motion JPEG, but for these two, which are uncompressed.
inline constexpr std::uint32_t kRangeFirst = 0x88000000;
constexpr bool isInRange(std::uint32_t code) { return code >= kRangeFirst; }
constexpr bool isUncompressedInRange(std::uint32_t code) { return code == 0x8800001E || code == 0x8810001E; }

}  // namespace kv::media
