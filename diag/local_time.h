// The present local time, as the log writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace kv::diag {

/// A reading of the wall clock.
struct Moment {
    std::time_t second;
    int milliseconds;

    /// Milliseconds since 1970, cut to 32 bits.
    std::uint32_t count_ms() const noexcept {
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(second) * 1000 +
                                          static_cast<std::uint64_t>(milliseconds));
    }
};

Moment wallClock() noexcept;

/// A moment's fields, by the zone of the environment as it is now.
std::tm localFields(const Moment& moment) noexcept;

/// The time of day as in " 8: 5:59".
void writeClockTime(const std::tm& fields, char (&out)[16]) noexcept;

/// Date and time as in "2024-03-09T08:05:59.123", remembered for the second that they belong to.
class LineStamp {
public:
    /// The text of a moment. It is good until the next call.
    std::string_view of(const Moment& moment) noexcept;

private:
    static constexpr std::size_t kLongestZone = 63;

    bool holds(const Moment& moment, const char* zone) const noexcept;
    void fill(const Moment& moment, const char* zone) noexcept;

    std::time_t second_ = -1;
    char zone_[kLongestZone + 1] = {};  // what TZ was; a longer one is not remembered
    bool zoneGiven_ = false;
    char text_[72] = {};
    std::size_t length_ = 0;  // of the text up to its milliseconds
};

}  // namespace kv::diag
