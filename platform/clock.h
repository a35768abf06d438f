// The monotonic clock: it never steps, starts at no particular moment, and has nothing to do with the time of day.
//
// A tick has no fixed length: compare ticks with ticks, and turn a difference into nanoseconds before telling anyone.
// While the machine sleeps the clock may stand still.
#pragma once

#include <cstdint>

namespace kv::platform {

/// The clock's reading, in a unit of the system's own.
std::uint64_t monotonicTicks() noexcept;

/// How many nanoseconds a number of ticks comes to.
std::uint64_t ticksToNanoseconds(std::uint64_t ticks) noexcept;

}  // namespace kv::platform
