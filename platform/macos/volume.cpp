// Volumes on macOS.
//
// No machine of this project has run this file.
#include "platform/volume.h"

#include <sys/mount.h>
#include <sys/param.h>

namespace kv::platform {

std::optional<Volume> volumeOf(const char* path) noexcept {
    struct statfs told {};
    if (statfs(path, &told) != 0) return std::nullopt;
    return Volume{told.f_bsize, told.f_blocks, told.f_bavail, told.f_type};
}

}  // namespace kv::platform
