// gettimeofday of the test program: the system's, until a test stops it.
#include "text/wall_clock.h"

#include <cstdint>
#include <dlfcn.h>
#include <optional>
#include <sys/time.h>

#include "kvos/export.h"

namespace {

std::optional<timeval> stoppedAt;
int readsOfEach = 0;  // 0: the clock stands still
int readsLeft = 0;

}  // namespace

void kvtest::stopWallClock(std::int64_t seconds, std::int64_t microseconds) { stopWallClock(seconds, microseconds, 0); }

void kvtest::stopWallClock(std::int64_t seconds, std::int64_t microseconds, int readsEach) {
    stoppedAt = timeval{seconds, microseconds};
    readsOfEach = readsLeft = readsEach;
}

KVUTIL_API int gettimeofday(timeval* now, void* zone) noexcept {
    static const auto systems = reinterpret_cast<int (*)(timeval*, void*)>(dlsym(RTLD_NEXT, "gettimeofday"));
    if (!stoppedAt) return systems(now, zone);
    *now = *stoppedAt;
    if (readsOfEach != 0 && --readsLeft == 0) {
        ++stoppedAt->tv_usec;
        readsLeft = readsOfEach;
    }
    return 0;
}
