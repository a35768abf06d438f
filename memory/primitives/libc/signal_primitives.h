// The signal primitives on the C library. primitives/ipp has the vendor's; the include path chooses.
//
// Sizes are bytes, and multiples of the element that the name ends in. Each returns its status, 0. The C library tells
// processors apart itself.
#pragma once

#include <cstdint>
#include <cstring>

#include "memory/word_fill.h"

namespace kv::memory::primitives {

inline std::int32_t copy8u(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return 0;
}

inline std::int32_t copy32s(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return 0;
}

inline std::int32_t copy64s(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return 0;
}

inline std::int32_t zero32s(void* destination, std::uint64_t bytes) {
    std::memset(destination, 0, bytes);
    return 0;
}

inline std::int32_t zero64s(void* destination, std::uint64_t bytes) {
    std::memset(destination, 0, bytes);
    return 0;
}

inline std::int32_t set32s(std::uint32_t value, void* destination, std::uint64_t bytes) {
    fillWords(destination, value, bytes / 4);
    return 0;
}

}  // namespace kv::memory::primitives
