// The times of a file under their BSD names. No compiler of this project has seen this file yet.
#include "platform/file_times.h"

namespace kv::platform {

FileTimes fileTimes(const struct stat& status) noexcept {
    return {status.st_ctimespec, status.st_atimespec, status.st_mtimespec};
}

}  // namespace kv::platform
