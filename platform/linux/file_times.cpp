// The times of a file under their POSIX names.
#include "platform/file_times.h"

namespace kv::platform {

FileTimes fileTimes(const struct stat& status) noexcept { return {status.st_ctim, status.st_atim, status.st_mtim}; }

}  // namespace kv::platform
