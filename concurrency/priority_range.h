// Priorities of threads as callers know them, -15 to 15, and as a policy of the system has them.
//
// Both ways are in whole numbers, rounded towards the lowest: only some values come back as they were set.
#pragma once

#include <cstdint>

namespace kv::concurrency {

// 31 values, 30 steps.
inline constexpr std::int64_t kLowestPriority = -15;
inline constexpr std::int64_t kPrioritySteps = 30;

/// The priorities of a policy.
struct PriorityRange {
    std::int64_t minimum;
    std::int64_t maximum;
};

constexpr bool isPriority(std::int32_t priority) {
    return priority >= kLowestPriority && priority <= kLowestPriority + kPrioritySteps;
}

/// Whether the thread's work is due by a time as well, where the system has such a thing.
constexpr bool isTimeConstrained(std::int32_t priority) { return priority >= 5; }

constexpr int systemPriorityOf(std::int32_t priority, const PriorityRange& range) {
    return static_cast<int>(range.minimum +
                            (range.maximum - range.minimum) * (priority - kLowestPriority) / kPrioritySteps);
}

constexpr std::int32_t priorityOf(int systemPriority, const PriorityRange& range) {
    const std::int64_t width = range.maximum - range.minimum;
    if (width == 0) return 0;
    return static_cast<std::int32_t>(kPrioritySteps * (systemPriority - range.minimum) / width + kLowestPriority);
}

}  // namespace kv::concurrency
