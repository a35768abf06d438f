// A machine that a test describes: the library's measuring calls, which are compiled into the program, are told this in
// place of what the system tells.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/gpu.h"
#include "platform/load.h"
#include "platform/volume.h"

namespace kvtest {

struct ToldMachine {
    kv::platform::ProcessorTicks ticks{};
    std::uint32_t ticksError = 0;
    std::optional<std::uint32_t> processors{};
    std::uint64_t pageSize = 4096;
    kv::platform::MemoryPages pages{};
    std::uint64_t totalMemory = 0;
    std::optional<std::uint64_t> residentSize{};
    std::optional<kv::platform::GpuFigures> gpu{};
    std::optional<kv::platform::Volume> volume{};
};

ToldMachine& machine();

}  // namespace kvtest
