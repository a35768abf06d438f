// glob by its portable names: only their numbers differ from system to system.
//
// Quoting by backslash is what glob does unless it is told otherwise, so that its flag here is the reverse of the
// system's.
#include "platform/glob_files.h"

namespace kv::platform {

int globFiles(const char* pattern, int flags, glob_t& found) noexcept {
    int systemFlags = 0;
    if ((flags & kGlobAppend) != 0) systemFlags |= GLOB_APPEND;
    if ((flags & kGlobBackslashQuotes) == 0) systemFlags |= GLOB_NOESCAPE;
    const int result = glob(pattern, systemFlags, nullptr, &found);
    return result == GLOB_NOMATCH ? 0 : result;
}

}  // namespace kv::platform
