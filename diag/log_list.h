// Where a reported message is kept, and what the keeping says to the reporting call.
#pragma once

#include <cstdint>

namespace kv::diag {

/// Results of putting a message into the log. Any other value counts a run of repeats that has just ended.
inline constexpr std::uint32_t kLogStored = 0;
inline constexpr std::uint32_t kLogFailed = 0xFFFFFFFF;
inline constexpr std::uint32_t kLogSwallowed = 0xFFFFFFFE;

std::uint32_t putInLog(std::uint32_t code, const char* text);

}  // namespace kv::diag
