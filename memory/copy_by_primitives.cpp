// Copy, zero and set in a build with the signal primitives. copy_by_selection.cpp is the other build's answer.
//
// The widest primitive that addresses and size allow is taken; nothing but that test stands before it. Where the
// primitives are the C library's the compiler sees that all widths are one call, and drops the test as well.
#include <cstdint>
#include <cstring>

#include "border/relaxed.h"
#include "kvos/memory.h"
#include "signal_primitives.h"

namespace kv::memory {
namespace {

/// Both bits set take the plain copy. The library itself never stores a word that has both.
constexpr std::uint32_t kPlainCopy = 0x2080;

std::uint64_t address(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

/// Whether every one of the values, gathered by "or", is a multiple of `width`, a power of two.
bool allMultiplesOf(std::uint64_t width, std::uint64_t gathered) { return (gathered & (width - 1)) == 0; }

inline std::int32_t copy(void* destination, const void* source, std::uint64_t bytes) {
    if ((border::relaxedLoad(CPUFeatureFlagsIntern) & kPlainCopy) == kPlainCopy) {
        std::memcpy(destination, source, bytes);
        return 0;
    }
    const std::uint64_t gathered = bytes | address(source) | address(destination);
    if (allMultiplesOf(8, gathered)) return primitives::copy64s(source, destination, bytes);
    if (allMultiplesOf(4, gathered)) return primitives::copy32s(source, destination, bytes);
    return primitives::copy8u(source, destination, bytes);
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
    const std::uint64_t gathered = qwBytes | memory::address(pDestination);
    if (memory::allMultiplesOf(8, gathered)) return memory::primitives::zero64s(pDestination, qwBytes);
    if (memory::allMultiplesOf(4, gathered)) return memory::primitives::zero32s(pDestination, qwBytes);
    std::memset(pDestination, 0, qwBytes);
    return 0;
}

int32_t SetMemoryFast(void* pDestination, uint32_t dwValue, uint64_t qwBytes) {
    return memory::primitives::set32s(dwValue, pDestination, qwBytes / 4 * 4);
}
