// What putting a message into the log says to the reporting call. Any other value counts a run of repeats that has
// just ended.
#pragma once

#include <cstdint>

namespace kv::diag {

inline constexpr std::uint32_t kLogStored = 0;
inline constexpr std::uint32_t kLogFailed = 0xFFFFFFFF;
inline constexpr std::uint32_t kLogSwallowed = 0xFFFFFFFE;

}  // namespace kv::diag
