// Moments counted in units of 100 ns since the beginning of 1601, and in seconds since 1970.
//
// All counts are unsigned and wrap: seconds before 1970 are the two's complement of a negative number, and so is what
// comes back for a moment before it.
#include <cstdint>

#include "kvos/find.h"

namespace kv::file {
namespace {

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
constexpr std::uint64_t kNanosecondsPerUnit = 100;
constexpr std::uint64_t kUnitsUntil1970 = 0x19DB1DED53E8000;

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::uint64_t FILEUnixTimeToFileTime(std::uint64_t qwSeconds, std::uint64_t qwNanoseconds) {
    return qwSeconds * file::kUnitsPerSecond + file::kUnitsUntil1970 + qwNanoseconds / file::kNanosecondsPerUnit;
}

std::uint64_t FILEFileTimeToUnixTime(std::uint64_t qwFileTime, std::uint64_t* pqwNanoseconds) {
    // A moment before 1970 goes down to the whole second below it, so that the rest is never negative.
    const bool before1970 = qwFileTime < file::kUnitsUntil1970;
    const std::uint64_t distance = before1970 ? file::kUnitsUntil1970 - qwFileTime : qwFileTime - file::kUnitsUntil1970;
    std::uint64_t seconds = distance / file::kUnitsPerSecond;
    std::uint64_t rest = distance % file::kUnitsPerSecond;
    if (before1970) {
        seconds = std::uint64_t{0} - seconds - (rest != 0 ? 1 : 0);
        rest = (file::kUnitsPerSecond - rest) % file::kUnitsPerSecond;
    }
    if (pqwNanoseconds != nullptr) *pqwNanoseconds = rest * file::kNanosecondsPerUnit;
    return seconds;
}
