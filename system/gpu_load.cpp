// The load of the graphics processor, made of what its driver tells.
#include <cstdint>

#include "kvos/machine.h"
#include "platform/gpu.h"

namespace kv::system {
namespace {

constexpr std::uint64_t kNoFigure = static_cast<std::uint64_t>(-1);
constexpr std::uint64_t kPerPercent = 10'000'000;  // of a driver that counts in nanoseconds, a hundredth of a second

/// A figure told later counts more. Meant: where there are statistics and no figure among them, the start value is
/// divided as a figure would be.
constexpr std::uint32_t percentOf(const platform::GpuFigures& figures) {
    std::uint64_t load = kNoFigure;
    for (const auto& figure : {figures.coreUtilization, figures.deviceUtilization, figures.activity}) {
        if (figure) load = static_cast<std::uint64_t>(*figure);
    }
    return static_cast<std::uint32_t>(load <= 100 ? load : load / kPerPercent);
}
static_assert(percentOf({}) == 0x7F29ABCA);

}  // namespace
}  // namespace kv::system

std::uint32_t getGpuUsageApple() {
    const auto figures = kv::platform::gpuFigures();
    return figures ? kv::system::percentOf(*figures) : KVGPU_UNKNOWN;
}

std::uint32_t GetGpuUsage() { return getGpuUsageApple(); }
