// What the driver of a graphics processor tells of its load.
#pragma once

#include <cstdint>
#include <optional>

namespace kv::platform {

/// The figures by which drivers know the load, each there or not. They are percentages, but for drivers that count in
/// another unit: nothing is made of them here.
struct GpuFigures {
    std::optional<std::int64_t> coreUtilization{};
    std::optional<std::int64_t> deviceUtilization{};
    std::optional<std::int64_t> activity{};
};

/// Those of the first graphics processor that has statistics; nothing where none has.
std::optional<GpuFigures> gpuFigures() noexcept;

}  // namespace kv::platform
