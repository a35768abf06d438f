// Copies, zeroes and sets that stop at a limit, rows with pitches, and the plain zero.
//
// Copies compare as unsigned 32-bit words, zeroes and sets as signed 64-bit ones. Every message shows a size as a
// signed 32-bit number.
#include <algorithm>
#include <cstdint>
#include <strings.h>

#include "errlog.h"
#include "kvos/memory.h"

namespace kv::memory {
namespace {

/// The bytes that a zero or set call may touch; none for a negative size or limit.
std::uint64_t clipped(std::int64_t bytes, std::int64_t limit) {
    if (bytes > limit) {
        ErrOut("WARNING: ZeroOverwrite requested %d, allow %d ", static_cast<int>(bytes), static_cast<int>(limit));
        bytes = limit;
    }
    return static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0));
}

}  // namespace
}  // namespace kv::memory

int32_t kvOSCopyMemorySafe(void* pDestination, const void* pSource, uint32_t dwBytes, uint32_t dwLimit) {
    if (dwBytes > dwLimit) {
        ErrOut("kvOSCopyMemory-Overwrite %d > %d\n", static_cast<int>(dwBytes), static_cast<int>(dwLimit));
        dwBytes = dwLimit;
    }
    return kvOSCopyMemory(pDestination, pSource, dwBytes);
}

int32_t kvOSCopyMemorySafeFast(void* pDestination, const void* pSource, uint32_t dwBytes, uint32_t dwLimit) {
    if (dwBytes > dwLimit) {
        ErrOut("CopyMemoryFast-Overwrite %d > %d\n", static_cast<int>(dwBytes), static_cast<int>(dwLimit));
        dwBytes = dwLimit;
    }
    return CopyMemoryFast(pDestination, pSource, dwBytes);
}

uint64_t kvOSCopyWithPitch(void* pDestination, uint64_t qwDestinationPitch, const void* pSource, uint64_t qwSourcePitch,
                           uint32_t dwRows) {
    const std::uint64_t length = std::min(qwDestinationPitch, qwSourcePitch);
    if (dwRows == 0) return length;
    auto* destination = static_cast<char*>(pDestination);
    const auto* source = static_cast<const char*>(pSource);
    std::int32_t result = 0;
    for (std::uint64_t row = 0; row < dwRows; ++row) {
        result = kvOSCopyMemory(destination + row * qwDestinationPitch, source + row * qwSourcePitch, length);
    }
    return static_cast<std::uint64_t>(result);
}

int32_t kvOSZeroMemory(void* pDestination, uint64_t qwBytes) {
    bzero(pDestination, qwBytes);
    return 0;
}

int32_t kvOSZeroMemorySafe(void* pDestination, int64_t nBytes, int64_t nLimit) {
    return kvOSZeroMemory(pDestination, kv::memory::clipped(nBytes, nLimit));
}

int32_t kvOSSetMemorySafe(void* pDestination, uint32_t dwValue, int64_t nBytes, int64_t nLimit) {
    return SetMemoryFast(pDestination, dwValue, kv::memory::clipped(nBytes, nLimit));
}
