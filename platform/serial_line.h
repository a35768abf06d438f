// Serial lines, as far as systems differ in them: which devices there are, and what is asked of their drivers.
//
// What a driver refuses is not told: not every line has modem lines or a latency. The terminal settings themselves are
// the same calls everywhere and are not here.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>

namespace kv::platform {

/// The devices that get a port number, in the order in which they get it.
std::span<const char* const> serialDevices() noexcept;

/// Keeps others from opening the line while it is open. Root is not kept out.
void takeAlone(int line) noexcept;

/// Lets received bytes through at once, as far as the driver can: a microsecond where a time can be told.
void lowerReceiveLatency(int line) noexcept;

/// Raises or drops DTR.
void setTerminalReady(int line, bool on) noexcept;

/// The modem lines in the system's TIOCM_ bits, which are the same on all; 0 if the line can't tell.
std::uint32_t modemLines(int line) noexcept;

/// Bytes that were written and are not sent; 0 if the line can't tell.
std::uint32_t unsentBytes(int line) noexcept;

/// Waits until a read of the line, an open descriptor, would not wait; at its end, or once it failed, none does. 1
/// then, 0 when that time has passed, -1 with errno set: EINTR for a signal's handler.
int awaitInput(int line, std::chrono::milliseconds atMost) noexcept;

}  // namespace kv::platform
