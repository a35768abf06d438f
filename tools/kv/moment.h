// Moments as text: local time for people, UTC for programs.
#pragma once

#include <cstdint>
#include <string>

struct kvOSFileTime;

namespace kv::tool {

/// A moment in seconds since 1970 as "2026-11-21 17:05:09", in local time.
std::string localTime(std::int64_t seconds);

/// A moment in seconds since 1970 as "2026-11-21T17:05:09Z".
std::string utcTime(std::int64_t seconds);

/// The seconds since 1970 of a time of the find calls; what is below a second is dropped.
std::int64_t secondsOf(const kvOSFileTime& time);

}  // namespace kv::tool
