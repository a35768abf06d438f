// Clocks, memory and sleep in the test's hands: this program's own kvOSGetMs, gettimeofday, KVAlloc, KVFree and usleep
// stand in for those that the library would call. Two calls of the library are passed on, behind what the test does
// ahead of them.
#pragma once

#include <cstdint>
#include <functional>

namespace kvtest {

struct Controls {
    std::uint32_t monotonic_ms = 1000000;
    std::int64_t wall_s = 1704794707;  // 2024-01-09T10:05:07 UTC
    std::int64_t wall_us = 8000;
    int allocationsUntilFailure = -1;  // how many succeed before one gives null; below 0: all succeed
    int allocationsUntilThrow = -1;    // the same, before one throws
    bool throwsAlways = false;         // every allocation
    int throws = 0;                    // of allocations, so far
    bool freeThrows = false;
    bool sleepThrows = false;
    int sleeps = 0;  // of exactly a millisecond
    int otherSleeps = 0;
    int blocks = 0;                           // allocated and not freed
    std::function<void()> beforeEnteringLog;  // each entering of the lock of gErrLogList
    std::function<void()> beforeReadingText;  // each kvCFGValueString that is to fill a buffer

    void advance_ms(std::uint32_t by) {
        monotonic_ms += by;
        wall_us += std::int64_t{by} * 1000;
        wall_s += wall_us / 1000000;
        wall_us %= 1000000;
    }
};

Controls& controls();

}  // namespace kvtest
