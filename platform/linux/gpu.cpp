// The load of graphics processors on Linux: by the kernel where the driver is one of its own, else by the vendor.
#include "platform/gpu.h"

#include "platform/linux/gpu_sources.h"

namespace kv::platform {

std::optional<GpuFigures> gpuFigures() noexcept {
    auto busy = gpu::busyInKernel("/sys/class/drm");
    if (!busy) busy = gpu::busyByVendor();
    if (!busy) return std::nullopt;
    return GpuFigures{.deviceUtilization = busy};
}

}  // namespace kv::platform
