// A year that the calendar of the system does not hold gives "-".
#include "kv/moment.h"

#include <array>
#include <ctime>

#include "kvos/find.h"

namespace kv::tool {
namespace {

using BreakDown = std::tm*(const std::time_t*, std::tm*);

std::string formatted(std::int64_t seconds, BreakDown& breakDown, const char* format) {
    const std::time_t moment = seconds;
    std::tm fields{};
    std::array<char, 64> text;
    if (breakDown(&moment, &fields) == nullptr) return "-";
    return {text.data(), std::strftime(text.data(), text.size(), format, &fields)};
}

}  // namespace

std::string localTime(std::int64_t seconds) {
    tzset();
    return formatted(seconds, localtime_r, "%Y-%m-%d %H:%M:%S");
}

std::string utcTime(std::int64_t seconds) { return formatted(seconds, gmtime_r, "%Y-%m-%dT%H:%M:%SZ"); }

std::int64_t secondsOf(const kvOSFileTime& time) {
    const std::uint64_t units = std::uint64_t{time.dwHigh} << 32 | time.dwLow;
    return static_cast<std::int64_t>(FILEFileTimeToUnixTime(units, nullptr));
}

}  // namespace kv::tool
