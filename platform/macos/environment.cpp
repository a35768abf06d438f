// The environment on macOS: libraries have to ask for the program's.
//
// No machine of this project has run this file.
#include "platform/environment.h"

#include <crt_externs.h>

namespace kv::platform {

char** environment() noexcept { return *_NSGetEnviron(); }

}  // namespace kv::platform
