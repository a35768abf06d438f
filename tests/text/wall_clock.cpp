// gettimeofday of the test program: the system's, until a test stops it.
#include "text/wall_clock.h"

#include <cstdint>
#include <dlfcn.h>
#include <optional>
#include <sys/time.h>

#include "kvos/export.h"

namespace {

std::optional<timeval> stoppedAt;

}  // namespace

void kvtest::stopWallClock(std::int64_t seconds, std::int64_t microseconds) {
    stoppedAt = timeval{seconds, microseconds};
}

KVUTIL_API int gettimeofday(timeval* now, void* zone) noexcept {
    static const auto systems = reinterpret_cast<int (*)(timeval*, void*)>(dlsym(RTLD_NEXT, "gettimeofday"));
    if (!stoppedAt) return systems(now, zone);
    *now = *stoppedAt;
    return 0;
}
