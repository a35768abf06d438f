// Where Linux tells the load of graphics processors.
#pragma once

#include <cstdint>
#include <optional>

namespace kv::platform::gpu {

/// The busy figure of the kernel's first card that has one; `folder` holds the cards.
std::optional<std::int64_t> busyInKernel(const char* folder) noexcept;

/// The figure of the first device that the vendor's management library tells. The library is opened once, if it is
/// installed, and stays open: its start asks every device.
std::optional<std::int64_t> busyByVendor() noexcept;

}  // namespace kv::platform::gpu
