// The monotonic clock in its units, and the wall clock.
#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <latch>
#include <thread>
#include <vector>

#include "kvos/time.h"

namespace {

std::uint64_t wallMs() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

std::uint64_t steadyNano() {
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

TEST(Clock, NeverRunsBackwards) {
    std::uint64_t nano = kvOSGetNano();
    std::uint64_t micro = kvOSGetMicro();
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t nextNano = kvOSGetNano();
        const std::uint64_t nextMicro = kvOSGetMicro();
        ASSERT_GE(nextNano, nano);
        ASSERT_GE(nextMicro, micro);
        nano = nextNano;
        micro = nextMicro;
    }
}

// Each reading lies between two of the finer clock; one unit is left to the rounding of each.
TEST(Clock, UnitsAgree) {
    const std::uint64_t nanoBefore = kvOSGetNano();
    const std::uint64_t micro = kvOSGetMicro();
    const std::uint64_t nanoAfter = kvOSGetNano();
    EXPECT_GE(micro + 1, nanoBefore / 1000);
    EXPECT_LE(micro, nanoAfter / 1000 + 1);
}

TEST(Clock, MillisecondsAreTheLow32BitsOfTheSameClock) {
    const std::uint64_t microBefore = kvOSGetMicro();
    const std::uint32_t ms = kvOSGetMs();
    const std::uint64_t microAfter = kvOSGetMicro();
    const auto first = static_cast<std::uint32_t>(microBefore / 1000 - 1);
    EXPECT_LE(ms - first, static_cast<std::uint32_t>(microAfter / 1000 + 1) - first);
}

TEST(Clock, MonotonicClockIsTheSystemsSteadyClock) {
    const std::uint64_t before = steadyNano();
    const std::uint64_t nano = kvOSGetNano();
    const std::uint64_t after = steadyNano();
    constexpr std::uint64_t kRounding = 1024;  // of a double that holds a decade in nanoseconds, and then some
    EXPECT_GE(nano + kRounding, before);
    EXPECT_LE(nano, after + kRounding);
}

TEST(Clock, WallClockCountsMillisecondsSinceTheEpoch) {
    const std::uint64_t before = wallMs();
    const std::uint64_t now = kvOSGetTimeMs();
    const std::uint64_t after = wallMs();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

// No clock of the library is read ahead of the threads: the first to read measures its speed, and all eight come first.
TEST(Clock, ThreadsThatMeasureAtOnceAgree) {
    const std::uint64_t before = steadyNano();
    std::vector<std::uint64_t> readings(8);
    std::latch start(8);
    std::vector<std::thread> threads;
    threads.reserve(readings.size());
    for (std::uint64_t& reading : readings) {
        threads.emplace_back([&reading, &start] {
            start.arrive_and_wait();
            reading = kvOSGetMicro();
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::uint64_t after = steadyNano();
    for (const std::uint64_t reading : readings) {
        EXPECT_GE(reading + 1, before / 1000);
        EXPECT_LE(reading, after / 1000 + 1);
    }
}

}  // namespace
