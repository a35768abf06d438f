// The environment on Linux is a variable of the C library.
#include "platform/environment.h"

#include <unistd.h>

namespace kv::platform {

char** environment() noexcept { return environ; }

}  // namespace kv::platform
