// The vendor's management library, which comes with the driver and is no part of this one: its few calls are declared
// here as they have been since it has them.
#include <dlfcn.h>

#include "platform/linux/gpu_sources.h"

namespace kv::platform::gpu {
namespace {

using Device = void*;
struct Utilization {
    unsigned gpu;     // percent of the last sampling period
    unsigned memory;  // likewise, of reading and writing
};
constexpr int kSuccess = 0;

/// The library, open and started; closed again where it lacks a call or finds no driver.
class ManagementLibrary {
public:
    ManagementLibrary() noexcept : library_(dlopen("libnvidia-ml.so.1", RTLD_NOW | RTLD_LOCAL)) {
        // No later call of the program's is to find the reason of this one.
        if (library_ == nullptr) {
            dropReason();
            return;
        }
        int (*init)() = nullptr;
        if (find(init, "nvmlInit_v2") && find(count_, "nvmlDeviceGetCount_v2") &&
            find(device_, "nvmlDeviceGetHandleByIndex_v2") && find(utilization_, "nvmlDeviceGetUtilizationRates") &&
            init() == kSuccess) {
            return;
        }
        dropReason();
        dlclose(library_);
        library_ = nullptr;
    }

    std::optional<std::int64_t> busy() const noexcept {
        unsigned devices = 0;
        if (library_ == nullptr || count_(&devices) != kSuccess) return std::nullopt;
        for (unsigned i = 0; i < devices; ++i) {
            Device device = nullptr;
            Utilization utilization{};
            if (device_(i, &device) == kSuccess && utilization_(device, &utilization) == kSuccess) {
                return utilization.gpu;
            }
        }
        return std::nullopt;
    }

private:
    static void dropReason() noexcept { dlerror(); }  // NOLINT(concurrency-mt-unsafe)

    template <class Function>
    bool find(Function& function, const char* name) noexcept {
        function = reinterpret_cast<Function>(dlsym(library_, name));
        return function != nullptr;
    }

    void* library_;
    int (*count_)(unsigned*) = nullptr;
    int (*device_)(unsigned, Device*) = nullptr;
    int (*utilization_)(Device, Utilization*) = nullptr;
};

}  // namespace

std::optional<std::int64_t> busyByVendor() noexcept {
    static const ManagementLibrary library;
    return library.busy();
}

}  // namespace kv::platform::gpu
