// Reading on once a first byte has come: the rest has a second for each further byte.
//
// The line is set to that second as well, but a system that hands out one byte as soon as it is there never gets as far
// as counting it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kv::devices {

/// What a signal's handler does to the reading.
enum class Signals { endIt, doNotCount };

/// Reads until the target is full, a second has passed without a further byte, or the line ended or failed; the number
/// of bytes. The line is an open descriptor.
std::size_t readOn(int line, std::span<std::uint8_t> target, Signals signals) noexcept;

}  // namespace kv::devices
