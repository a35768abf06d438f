// How busy the system is, in its own counts: ticks of processors, pages of memory.
//
// What is made of the counts is the same everywhere and is not here (system/processor_load.cpp,
// system/memory_load.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kv::platform {

/// Ticks of all processors together since the system's start.
struct ProcessorTicks {
    std::uint64_t busy = 0;
    std::uint64_t idle = 0;
};

/// 0; or the system's error number, the reason having been written to standard error behind kNoTicks.
std::uint32_t readProcessorTicks(ProcessorTicks& ticks) noexcept;

inline constexpr const char* kNoTicks = "host_processor_info error:";

/// How many processors run; nothing where the system does not tell.
std::optional<std::uint32_t> processorCount() noexcept;

/// Bytes of a page; 4096 where the system does not tell.
std::uint64_t pageSize() noexcept;

/// Pages of memory. Both 0 where the system does not tell.
struct MemoryPages {
    std::uint64_t used = 0;  // active, inactive, and what can't be moved away
    std::uint64_t free = 0;
};
MemoryPages memoryPages() noexcept;

/// Bytes of memory in the machine; 0 where the system does not tell.
std::uint64_t totalMemory() noexcept;

/// Bytes of memory in which this process's pages lie; nothing where the system does not tell.
std::optional<std::uint64_t> residentSize() noexcept;

}  // namespace kv::platform
