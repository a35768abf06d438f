// The named copy, zero and set methods. Callers once chose among them; today each kind is one and the same.
//
// They stay apart as functions because callers compare and keep their addresses.
#include <cstdint>
#include <cstring>
#include <strings.h>

#include "kvos/memory.h"
#include "memory/word_fill.h"

namespace kv::memory {
namespace {

inline std::int32_t copy(void* destination, const void* source, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return 0;
}

inline std::int32_t zero(void* destination, std::uint64_t bytes) {
    bzero(destination, bytes);
    return 0;
}

/// Fills whole words, the last one past the end of the block if it must.
inline std::int32_t set(void* destination, std::uint32_t value, std::uint64_t bytes) {
    fillWords(destination, value, bytes / 4 + (bytes % 4 != 0 ? 1 : 0));
    return 0;
}

}  // namespace
}  // namespace kv::memory

namespace memory = kv::memory;

int32_t CopyMemoryByte(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWarmByte(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWord(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWarmWord(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryDword(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWarmDword(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryFPU(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWarmFPU(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryMMX(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryWarmMMX(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryMMX_2(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemorySSE(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemorySSE_Pre(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemorySSE2(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryAMD(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryAMD2(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t CopyMemoryAMD_OPT(void* pDestination, const void* pSource, uint64_t qwBytes) {
    return memory::copy(pDestination, pSource, qwBytes);
}

int32_t ZeroMemoryDword(void* pDestination, uint64_t qwBytes) { return memory::zero(pDestination, qwBytes); }

int32_t ZeroMemoryMMX(void* pDestination, uint64_t qwBytes) { return memory::zero(pDestination, qwBytes); }

int32_t SetMemoryDword(void* pDestination, uint32_t dwValue, uint64_t qwBytes) {
    return memory::set(pDestination, dwValue, qwBytes);
}

int32_t SetMemoryMMX(void* pDestination, uint32_t dwValue, uint64_t qwBytes) {
    return memory::set(pDestination, dwValue, qwBytes);
}
