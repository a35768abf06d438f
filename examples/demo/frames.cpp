// Written and compared in words of eight bytes; the last one may be cut.
#include "demo/frames.h"

#include <algorithm>
#include <cstring>

namespace demo {
namespace {

constexpr std::size_t kWordSize = sizeof(std::uint64_t);

std::uint64_t wordOf(std::uint64_t number, std::uint64_t index) {
    if (index == 0) return number;
    std::uint64_t word = (number + 1) * 0x9E3779B97F4A7C15u ^ index * 0xD1B54A32D192ED03u;
    word ^= word >> 32;
    word *= 0xBF58476D1CE4E5B9u;
    return word ^ word >> 29;
}

}  // namespace

void drawFrame(std::uint64_t number, std::span<std::byte> frame) {
    for (std::size_t at = 0; at < frame.size(); at += kWordSize) {
        const std::uint64_t word = wordOf(number, at / kWordSize);
        std::memcpy(frame.data() + at, &word, std::min(kWordSize, frame.size() - at));
    }
}

bool isFrame(std::uint64_t number, std::span<const std::byte> frame) {
    for (std::size_t at = 0; at < frame.size(); at += kWordSize) {
        const std::uint64_t word = wordOf(number, at / kWordSize);
        if (std::memcmp(frame.data() + at, &word, std::min(kWordSize, frame.size() - at)) != 0) return false;
    }
    return !frame.empty();
}

}  // namespace demo
