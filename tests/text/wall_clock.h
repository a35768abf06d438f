// The wall clock, stopped for a test.
//
// gettimeofday is replaced in this program (wall_clock.cpp), and the library finds the replacement first, because the
// program comes before its libraries when names are bound. Only that call stops: time() and the steady clock run on.
#pragma once

#include <cstdint>

namespace kvtest {

/// Makes gettimeofday show this moment until the end of the process.
void stopWallClock(std::int64_t seconds, std::int64_t microseconds);

/// The same, but each time that it has been read so often the clock moves on by a microsecond.
void stopWallClock(std::int64_t seconds, std::int64_t microseconds, int readsEach);

}  // namespace kvtest
