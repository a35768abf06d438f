// Moments counted in units of 100 ns since the beginning of 1601, and in seconds since 1970.
#include <cstdint>

#include "kvos/find.h"

namespace kv::file {
namespace {

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
constexpr std::uint64_t kNanosecondsPerUnit = 100;
constexpr std::uint64_t kUnitsUntil1970 = 0x19DB1DED53E8000;

}  // namespace
}  // namespace kv::file

using namespace kv::file;

extern "C" {

uint64_t FILEUnixTimeToFileTime(uint64_t qwSeconds, uint64_t qwNanoseconds) {
    return qwSeconds * kUnitsPerSecond + kUnitsUntil1970 + qwNanoseconds / kNanosecondsPerUnit;
}

uint64_t FILEFileTimeToUnixTime(uint64_t qwFileTime, uint64_t* pqwNanoseconds) {
    // A moment before 1970 goes down to the whole second below it, so that the rest is never negative.
    const bool before1970 = qwFileTime < kUnitsUntil1970;
    const std::uint64_t distance = before1970 ? kUnitsUntil1970 - qwFileTime : qwFileTime - kUnitsUntil1970;
    std::uint64_t seconds = distance / kUnitsPerSecond;
    std::uint64_t rest = distance % kUnitsPerSecond;
    if (before1970) {
        seconds = std::uint64_t{0} - seconds - (rest != 0 ? 1 : 0);
        rest = (kUnitsPerSecond - rest) % kUnitsPerSecond;
    }
    if (pqwNanoseconds != nullptr) *pqwNanoseconds = rest * kNanosecondsPerUnit;
    return seconds;
}

}  // extern "C"
