// The times of a file under their BSD names.
//
// No machine of this project has run this file.
#include "platform/file_times.h"

namespace kv::platform {

FileTimes fileTimes(const struct stat& status) noexcept {
    return {status.st_ctimespec, status.st_atimespec, status.st_mtimespec};
}

}  // namespace kv::platform
