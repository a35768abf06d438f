// How the system schedules a thread, as far as systems differ in it.
//
// Time constraints are macOS's: a thread says how much of each period it needs, and by when. Elsewhere there is nothing
// to say, and the scheduling priority stands alone.
#pragma once

#include <cstdint>
#include <pthread.h>

namespace kv::platform {

/// The number by which callers know the policy first-in-first-out, macOS's own.
inline constexpr std::int32_t kFirstInFirstOut = 4;

/// The system's number for a caller's: its own for first-in-first-out, any other number as it is.
int systemPolicy(std::int32_t policy) noexcept;

/// The policy alone, of what the system tells of a thread.
int plainPolicy(int told) noexcept;

/// Makes the thread's work due within a part of the bus's second: a short period, of which it gets a twentieth. A
/// failure is not told.
void setTimeConstraint(pthread_t thread) noexcept;

}  // namespace kv::platform
