// glob with flags and results that are the same numbers on every system.
//
// Nothing found is a success here, with an empty record, while glob itself calls it an error. The error values are the
// system's own, and errno says nothing about them.
#pragma once

#include <glob.h>

namespace kv::platform {

inline constexpr int kGlobAppend = 1;              // add to what the record holds
inline constexpr int kGlobBackslashQuotes = 1024;  // a backslash makes the next character an ordinary one

/// Runs glob. Flags other than the two above are ignored. 0 also when nothing matched, else the system's error value.
int globFiles(const char* pattern, int flags, glob_t& found) noexcept;

}  // namespace kv::platform
