#include "system/told_machine.h"

#include <cerrno>

namespace kvtest {

ToldMachine& machine() {
    static ToldMachine told;
    return told;
}

}  // namespace kvtest

namespace kv::platform {

using kvtest::machine;

std::uint32_t readProcessorTicks(ProcessorTicks& ticks) noexcept {
    if (machine().ticksError == 0) ticks = machine().ticks;
    return machine().ticksError;
}

std::optional<std::uint32_t> processorCount() noexcept { return machine().processors; }
std::uint64_t pageSize() noexcept { return machine().pageSize; }
MemoryPages memoryPages() noexcept { return machine().pages; }
std::uint64_t totalMemory() noexcept { return machine().totalMemory; }
std::optional<std::uint64_t> residentSize() noexcept { return machine().residentSize; }
std::optional<GpuFigures> gpuFigures() noexcept { return machine().gpu; }

std::optional<Volume> volumeOf(const char*) noexcept {
    if (!machine().volume) errno = ENOENT;
    return machine().volume;
}

}  // namespace kv::platform
