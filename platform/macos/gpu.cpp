// The load of graphics processors on macOS: the statistics that an accelerator keeps among its properties.
//
// No machine of this project has run this file.
#include "platform/gpu.h"

#include "platform/macos/frameworks.h"

namespace kv::platform {
namespace {

constexpr mach_port_t kDefaultPort = 0;  // kIOMasterPortDefault, which has had two names

/// An object of the registry, released with its owner.
class RegistryObject {
public:
    RegistryObject() = default;
    explicit RegistryObject(io_object_t object) noexcept : object_(object) {}
    ~RegistryObject() {
        if (object_ != 0) IOObjectRelease(object_);
    }
    RegistryObject(const RegistryObject&) = delete;
    RegistryObject& operator=(const RegistryObject&) = delete;

    io_object_t get() const noexcept { return object_; }
    io_object_t* target() noexcept { return &object_; }

private:
    io_object_t object_ = 0;
};

/// Likewise, of what has a count of owners.
template <class Reference>
class Counted {
public:
    explicit Counted(Reference reference = nullptr) noexcept : reference_(reference) {}
    ~Counted() {
        if (reference_ != nullptr) CFRelease(reference_);
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    Reference get() const noexcept { return reference_; }
    Reference* target() noexcept { return &reference_; }

private:
    Reference reference_;
};

CFTypeRef valueIn(CFDictionaryRef dictionary, const char* name) noexcept {
    const Counted<CFStringRef> key(CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingUTF8));
    return key.get() != nullptr ? CFDictionaryGetValue(dictionary, key.get()) : nullptr;
}

std::optional<std::int64_t> numberIn(CFDictionaryRef dictionary, const char* name) noexcept {
    const CFTypeRef value = valueIn(dictionary, name);
    if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID()) return std::nullopt;
    std::int64_t number = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &number);
    return number;
}

std::optional<GpuFigures> figuresOf(io_object_t service) noexcept {
    Counted<CFMutableDictionaryRef> properties;
    if (IORegistryEntryCreateCFProperties(service, properties.target(), kCFAllocatorDefault, 0) != KERN_SUCCESS ||
        properties.get() == nullptr) {
        return std::nullopt;
    }
    const CFTypeRef found = valueIn(properties.get(), "PerformanceStatistics");
    if (found == nullptr || CFGetTypeID(found) != CFDictionaryGetTypeID()) return std::nullopt;
    const auto statistics = static_cast<CFDictionaryRef>(found);
    return GpuFigures{.coreUtilization = numberIn(statistics, "GPU Core Utilization"),
                      .deviceUtilization = numberIn(statistics, "Device Utilization %"),
                      .activity = numberIn(statistics, "GPU Activity (%)")};
}

}  // namespace

std::optional<GpuFigures> gpuFigures() noexcept {
    RegistryObject services;
    // What is to be matched is used up by the call.
    if (IOServiceGetMatchingServices(kDefaultPort, IOServiceMatching("IOAccelerator"), services.target()) !=
        KERN_SUCCESS) {
        return std::nullopt;
    }
    while (true) {
        const RegistryObject service(IOIteratorNext(services.get()));
        if (service.get() == 0) return std::nullopt;
        if (const auto figures = figuresOf(service.get())) return figures;
    }
}

}  // namespace kv::platform
