// The running program, as the dynamic loader shows it. Links are not followed, and the path may hold "." and "..".
//
// No machine of this project has run this file.
#include "platform/executable.h"

#include <cerrno>
#include <crt_externs.h>
#include <cstdint>

#include <mach-o/dyld.h>

#include "border/text.h"

namespace kv::platform {

bool executablePath(char* target, std::size_t size) noexcept {
    auto room = static_cast<std::uint32_t>(size);
    if (_NSGetExecutablePath(target, &room) == 0) return true;
    target[0] = '\0';
    errno = ENAMETOOLONG;
    return false;
}

bool firstArgument(char* target, std::size_t size) noexcept {
    target[0] = '\0';
    const int* count = _NSGetArgc();
    char*** words = _NSGetArgv();
    if (count == nullptr || *count < 1 || words == nullptr || *words == nullptr || **words == nullptr) return false;
    if (border::copyText(target, size, **words)) return true;
    errno = ENAMETOOLONG;
    return false;
}

}  // namespace kv::platform
