// Copy, zero and set in a build without the signal primitives. copy_by_primitives.cpp is the other build's answer.
//
// The first call of 128 bytes or more selects a routine by the feature word as it is then, 0 included, and keeps it in
// an exported pointer. A smaller call neither selects nor uses it. Threads that come first at one moment select the
// same routine, so that the pointers need no lock.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "border/relaxed.h"
#include "kvos/memory.h"
#include "memory/word_fill.h"

namespace kv::memory {
namespace {

using border::relaxedLoad;
using border::relaxedStore;

/// Below this size the call itself is what costs.
constexpr std::uint64_t kSelectFrom = 128;

// Bits of the feature word.
constexpr std::uint32_t kMmx = 0x20;
constexpr std::uint32_t kAmd = 0x80;
constexpr std::uint32_t kSse = 0x2000;

kvOSCopyRoutine copyRoutineFor(std::uint32_t features) {
    switch (features & (kSse | kAmd)) {
        case kSse | kAmd:
            return CopyMemoryAMD_OPT;
        case kSse:
            return CopyMemorySSE;
        case kAmd:
            return CopyMemoryAMD;
        default:
            return (features & kMmx) != 0 ? CopyMemoryMMX : CopyMemoryDword;
    }
}

kvOSZeroRoutine zeroRoutineFor(std::uint32_t features) {
    return (features & kMmx) != 0 ? ZeroMemoryMMX : ZeroMemoryDword;
}

kvOSSetRoutine setRoutineFor(std::uint32_t features) { return (features & kMmx) != 0 ? SetMemoryMMX : SetMemoryDword; }

/// The routine kept in `pointer`, selected first if there is none.
template <class Routine>
Routine routineIn(Routine& pointer, Routine (&select)(std::uint32_t features)) {
    Routine routine = relaxedLoad(pointer);
    if (routine == nullptr) {
        routine = select(relaxedLoad(CPUFeatureFlagsIntern));
        relaxedStore(pointer, routine);
    }
    return routine;
}

/// What a routine left undone, never more than the whole block.
std::uint64_t leftOf(std::int32_t result, std::uint64_t bytes) {
    return std::min<std::uint64_t>(static_cast<std::uint32_t>(result), bytes);
}

inline std::int32_t copy(void* destination, const void* source, std::uint64_t bytes) {
    if (bytes < kSelectFrom) {
        std::memcpy(destination, source, bytes);
        return 0;
    }
    const std::int32_t result = routineIn(pfcnCopyMemoryFast, copyRoutineFor)(destination, source, bytes);
    if (result != 0) {
        const std::uint64_t left = leftOf(result, bytes);
        const std::uint64_t done = bytes - left;
        std::memcpy(static_cast<char*>(destination) + done, static_cast<const char*>(source) + done, left);
    }
    return 0;
}

}  // namespace
}  // namespace kv::memory

namespace memory = kv::memory;

int32_t kvOSCopyMemory(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryFast(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t ZeroMemoryFast(void* pDestination, uint64_t qwBytes) {
    if (qwBytes < memory::kSelectFrom) {
        std::memset(pDestination, 0, qwBytes);
        return 0;
    }
    const std::int32_t result = memory::routineIn(pfcnZeroMemoryFast, memory::zeroRoutineFor)(pDestination, qwBytes);
    if (result != 0) {
        const std::uint64_t left = memory::leftOf(result, qwBytes);
        std::memset(static_cast<char*>(pDestination) + (qwBytes - left), 0, left);
    }
    return 0;
}

int32_t SetMemoryFast(void* pDestination, uint32_t dwValue, uint64_t qwBytes) {
    // The routines write a partial last word whole; this call leaves it untouched, so they get whole words.
    const std::uint64_t whole = qwBytes / 4 * 4;
    if (whole < memory::kSelectFrom) {
        memory::fillWords(pDestination, dwValue, whole / 4);
        return 0;
    }
    const std::int32_t result =
        memory::routineIn(pfcnSetMemoryFast, memory::setRoutineFor)(pDestination, dwValue, whole);
    if (result != 0) {
        // A word of which any byte was left is written whole.
        const std::uint64_t left = (memory::leftOf(result, whole) + 3) / 4 * 4;
        memory::fillWords(static_cast<char*>(pDestination) + (whole - left), dwValue, left / 4);
    }
    return 0;
}
