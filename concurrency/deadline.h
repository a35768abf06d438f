// When a timed wait ends, on the wall clock, which is what a condition variable measures by unless told otherwise.
//
// The second that the two fractions may add up to is dropped, and callers know the waits as they are: a wait that
// crosses a full second ends up to one second early, and one of less than a second then does not wait at all.
#pragma once

#include <cstdint>
#include <ctime>
#include <sys/time.h>

namespace kv::concurrency {

inline timespec deadlineAfter(const timeval& now, std::uint32_t milliseconds) {
    const std::int64_t microseconds = std::int64_t{milliseconds % 1000} * 1000 + now.tv_usec;
    timespec deadline{};
    deadline.tv_sec = now.tv_sec + static_cast<std::time_t>(milliseconds / 1000);
    deadline.tv_nsec = static_cast<long>(microseconds % 1'000'000 * 1000);
    return deadline;
}

}  // namespace kv::concurrency
