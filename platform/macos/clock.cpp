// The monotonic clock: absolute time, whose tick differs from machine to machine. It stands still during sleep.
//
// No machine of this project has run this file.
#include "platform/clock.h"

#include <bit>
#include <mach/mach_time.h>

#include "platform/macos/frameworks.h"

namespace kv::platform {

std::uint64_t monotonicTicks() noexcept { return mach_absolute_time(); }

// Both types are a 64-bit number in two 32-bit words, in the order in which the processor stores it.
std::uint64_t ticksToNanoseconds(std::uint64_t ticks) noexcept {
    return std::bit_cast<std::uint64_t>(AbsoluteToNanoseconds(std::bit_cast<AbsoluteTime>(ticks)));
}

}  // namespace kv::platform
