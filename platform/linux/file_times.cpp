// The times of a file under their POSIX names.
//
// How fine they are is the file system's affair: some store whole seconds only, and two writes within one tick of the
// kernel's timer get the same time.
#include "platform/file_times.h"

namespace kv::platform {

FileTimes fileTimes(const struct stat& status) noexcept { return {status.st_ctim, status.st_atim, status.st_mtim}; }

}  // namespace kv::platform
