// The volume on which a file lies, as the system describes it.
#pragma once

#include <cstdint>
#include <optional>

namespace kv::platform {

struct Volume {
    std::uint64_t blockSize = 0;  // bytes of the blocks that are counted here
    std::uint64_t blocks = 0;
    std::uint64_t availableBlocks = 0;  // those that an ordinary user may still fill
    std::uint64_t type = 0;             // the system's number of the kind of file system
};

/// Nothing, with errno set, on failure.
std::optional<Volume> volumeOf(const char* path) noexcept;

}  // namespace kv::platform
