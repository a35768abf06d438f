// Volumes on Linux. Blocks are counted in units of a fragment; the block's size is only what is best to transfer, which
// on file systems of programs and networks can be a hundred times that.
#include "platform/volume.h"

#include <sys/statfs.h>

namespace kv::platform {

std::optional<Volume> volumeOf(const char* path) noexcept {
    struct statfs told {};
    if (statfs(path, &told) != 0) return std::nullopt;
    const auto unit = told.f_frsize != 0 ? told.f_frsize : told.f_bsize;
    return Volume{static_cast<std::uint64_t>(unit), told.f_blocks, told.f_bavail,
                  static_cast<std::uint64_t>(told.f_type) & 0xFFFFFFFFu};
}

}  // namespace kv::platform
