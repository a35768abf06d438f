// Counters: the monotonic clock in three units, and the wall clock.
//
// The monotonic clock's speed is measured on first use. The arithmetic is in double precision throughout, so that all
// units come from one division and never disagree by more than their own rounding.
#include "platform/clock.h"

#include <atomic>
#include <cstdint>
#include <sys/time.h>

#include "kvos/time.h"

namespace kv::text {
namespace {

constexpr std::uint64_t kNotMeasured = 1;

/// Ticks a second. Relaxed, and without a lock: threads that race measure the same value.
constinit std::atomic<std::uint64_t> freq{kNotMeasured};

std::uint64_t ticksPerSecond() noexcept {
    const std::uint64_t known = freq.load(std::memory_order_relaxed);
    if (known != kNotMeasured) return known;
    constexpr std::uint64_t kTicks = 1'000'000'000;
    constexpr std::uint64_t kTicksInNanoseconds = 1'000'000'000'000'000'000;
    const std::uint64_t measured = kTicksInNanoseconds / platform::ticksToNanoseconds(kTicks);
    freq.store(measured, std::memory_order_relaxed);
    return measured;
}

std::uint64_t monotonic(double unitsPerSecond) noexcept {
    const auto frequency = static_cast<double>(ticksPerSecond());
    return static_cast<std::uint64_t>(static_cast<double>(platform::monotonicTicks()) / frequency * unitsPerSecond);
}

}  // namespace
}  // namespace kv::text

std::uint32_t kvOSGetMs(void) { return static_cast<std::uint32_t>(kv::text::monotonic(1000.0)); }

std::uint64_t kvOSGetMicro(void) { return kv::text::monotonic(1000000.0); }

std::uint64_t kvOSGetNano(void) { return kv::text::monotonic(1000000000.0); }

std::uint64_t kvOSGetTimeMs(void) {
    timeval now{};
    gettimeofday(&now, nullptr);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_usec) / 1000;
}
