// The monotonic clock, whose tick is a nanosecond here.
//
// It stands still while the machine sleeps, unlike CLOCK_BOOTTIME, so that a wait is not over just because of a sleep.
#include "platform/clock.h"

#include <ctime>

namespace kv::platform {

std::uint64_t monotonicTicks() noexcept {
    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

std::uint64_t ticksToNanoseconds(std::uint64_t ticks) noexcept { return ticks; }

}  // namespace kv::platform
