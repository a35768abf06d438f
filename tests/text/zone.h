// The zone of the environment, set for a test.
//
// It is never set back: each test is a process of its own. One that depends on the zone sets it, because the machine's
// may be any.
#pragma once

#include <cstdlib>

namespace kvtest {

/// POSIX zone texts such as "EST5EDT,M3.2.0,M11.1.0", which need no zone files. Each test is a process of its own.
inline void setZone(const char* text) { setenv("TZ", text, 1); }

}  // namespace kvtest
