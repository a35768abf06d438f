// From the handle of a serial line to its file descriptor.
#pragma once

#include <cstdint>
#include <limits>

namespace kv::devices {

/// The descriptor of a handle, which is one less; -1, which every call of the system refuses, for no line.
constexpr int descriptorOf(std::int64_t handle) noexcept {
    const bool isOne = handle > 0 && handle <= std::int64_t{std::numeric_limits<int>::max()} + 1;
    return isOne ? static_cast<int>(handle - 1) : -1;
}

}  // namespace kv::devices
