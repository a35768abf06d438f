// The signal primitives of the vendor's library. primitives/libc has the same on the C library; the include path
// chooses.
//
// No machine of this project has the vendor's library, so none has compiled this file against the vendor's header.
// Sizes here are bytes, and multiples of the element that the name ends in; the vendor counts elements in signed 32
// bits, so longer blocks go to it in pieces.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ipps.h>

#include "memory/word_fill.h"

namespace kv::memory::primitives {

/// Elements a call, below the largest int and a multiple of every alignment that the library may look at.
inline constexpr std::uint64_t kLongestPiece = std::uint64_t{1} << 30;

/// Calls `primitive(first, count)` for each piece; ends at the first status that is not 0, and returns it.
template <class Primitive>
std::int32_t inPieces(std::uint64_t count, Primitive&& primitive) {
    for (std::uint64_t first = 0; first < count; first += kLongestPiece) {
        const IppStatus status = primitive(first, static_cast<int>(std::min(count - first, kLongestPiece)));
        if (status != ippStsNoErr) return status;
    }
    return ippStsNoErr;
}

inline std::int32_t copy8u(const void* source, void* destination, std::uint64_t bytes) {
    return inPieces(bytes, [=](std::uint64_t first, int piece) {
        return ippsCopy_8u(static_cast<const Ipp8u*>(source) + first, static_cast<Ipp8u*>(destination) + first, piece);
    });
}

inline std::int32_t copy32s(const void* source, void* destination, std::uint64_t bytes) {
    return inPieces(bytes / 4, [=](std::uint64_t first, int piece) {
        return ippsCopy_32s(static_cast<const Ipp32s*>(source) + first, static_cast<Ipp32s*>(destination) + first,
                            piece);
    });
}

inline std::int32_t copy64s(const void* source, void* destination, std::uint64_t bytes) {
    return inPieces(bytes / 8, [=](std::uint64_t first, int piece) {
        return ippsCopy_64s(static_cast<const Ipp64s*>(source) + first, static_cast<Ipp64s*>(destination) + first,
                            piece);
    });
}

inline std::int32_t zero32s(void* destination, std::uint64_t bytes) {
    return inPieces(bytes / 4, [=](std::uint64_t first, int piece) {
        return ippsZero_32s(static_cast<Ipp32s*>(destination) + first, piece);
    });
}

inline std::int32_t zero64s(void* destination, std::uint64_t bytes) {
    return inPieces(bytes / 8, [=](std::uint64_t first, int piece) {
        return ippsZero_64s(static_cast<Ipp64s*>(destination) + first, piece);
    });
}

/// A set comes with any address; the vendor's wants one that its element may have.
inline std::int32_t set32s(std::uint32_t value, void* destination, std::uint64_t bytes) {
    if (reinterpret_cast<std::uintptr_t>(destination) % 4 != 0) {
        fillWords(destination, value, bytes / 4);
        return ippStsNoErr;
    }
    return inPieces(bytes / 4, [=](std::uint64_t first, int piece) {
        return ippsSet_32s(static_cast<Ipp32s>(value), static_cast<Ipp32s*>(destination) + first, piece);
    });
}

}  // namespace kv::memory::primitives
