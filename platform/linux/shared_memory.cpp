// Segments are files of a file system in memory, which has a limit of its own.
#include "platform/shared_memory.h"

#include <cerrno>
#include <fcntl.h>

namespace kv::platform {

bool reserveSegment(int descriptor, std::size_t size) noexcept {
    if (size == 0) return true;
    int error = 0;
    do {
        error = posix_fallocate(descriptor, 0, static_cast<off_t>(size));
    } while (error == EINTR);
    if (error != 0) errno = error;
    return error == 0;
}

}  // namespace kv::platform
