// The full-synchronise command of macOS; its result is not looked at.
// No machine of this project has run this file.
#include "platform/full_sync.h"

#include <fcntl.h>

namespace kv::platform {

void fullSync(int descriptor) noexcept { fcntl(descriptor, F_FULLFSYNC, 1); }

}  // namespace kv::platform
