// The time of day, the present local time and the zone's offset.
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>

#include "kvos/time.h"
#include "text/wall_clock.h"
#include "text/zone.h"

namespace {

using kvtest::setZone;

constexpr std::uint64_t kSecondsPerDay = 86400;

struct OfDay {
    std::uint64_t hours, minutes, seconds;
};

/// The time of day of a moment, some seconds ahead of UTC.
OfDay ofDay(std::time_t moment, std::int64_t ahead) {
    const std::uint64_t since = static_cast<std::uint64_t>(moment + ahead) % kSecondsPerDay;
    return {since / 3600, since / 60 % 60, since % 60};
}

/// The clock of the time-of-day counts. It may stand some milliseconds behind the finer one.
std::time_t coarseSeconds() { return std::time(nullptr); }

/// The clock of kvOSGetLocalTime.
std::time_t fineSeconds() { return static_cast<std::time_t>(kvOSGetTimeMs() / 1000); }

/// Asks until the second did not change under the question, by the clock that the question itself reads.
template <class Question>
auto askedWithinOneSecond(Question question, std::time_t& moment, std::time_t (*clock)() = coarseSeconds) {
    for (;;) {
        moment = clock();
        const auto answer = question();
        if (clock() == moment) return answer;
    }
}

/// What kvOSGetLocalTime fills.
struct Fields {
    std::uint16_t year, month, day, hour, minute, second, ms, weekday;
    bool operator==(const Fields&) const = default;
};

Fields localTime() {
    Fields at{};
    EXPECT_EQ(kvOSGetLocalTime(&at.year, &at.month, &at.day, &at.hour, &at.minute, &at.second, &at.ms, &at.weekday),
              0u);
    return at;
}

TEST(TimeOfDay, CountsWholeSecondsSinceLocalMidnight) {
    setZone("IST-5:30");
    std::time_t moment = 0;
    const std::uint64_t ms = askedWithinOneSecond(kvOSGetTimeOfDayMs, moment);
    const OfDay at = ofDay(moment, 19800);
    EXPECT_EQ(ms, at.hours * 3600000 + at.minutes * 60000 + at.seconds * 1000);
    const std::uint64_t micro = askedWithinOneSecond(kvOSGetTimeOfDayMicro, moment);
    const OfDay then = ofDay(moment, 19800);
    EXPECT_EQ(micro, then.hours * 3600000000 + then.minutes * 60000000 + then.seconds * 1000000);
}

TEST(TimeOfDay, NanoCountMixesItsUnits) {
    setZone("EST5");
    std::time_t moment = 0;
    const std::uint64_t nano = askedWithinOneSecond(kvOSGetTimeOfDayNano, moment);
    const OfDay at = ofDay(moment, -18000);
    EXPECT_EQ(nano, at.hours * 3600000000 + at.minutes * 60000000 + at.seconds * 1000000000);
}

TEST(TimeOfDay, PtpCountIsOfTheTimeInUtc) {
    setZone("IST-5:30");
    std::time_t moment = 0;
    const std::uint64_t nano = askedWithinOneSecond(kvOSGetTimePTPNano, moment);
    const OfDay at = ofDay(moment, 0);
    EXPECT_EQ(nano, at.hours * 3600000000 + at.minutes * 60000000 + at.seconds * 1000000000);
}

TEST(TimeOfDay, ANewZoneIsSeenAtOnce) {
    std::time_t moment = 0;
    setZone("UTC0");
    askedWithinOneSecond(kvOSGetTimeOfDayMs, moment);
    setZone("AAA-3");
    const std::uint64_t ms = askedWithinOneSecond(kvOSGetTimeOfDayMs, moment);
    EXPECT_EQ(ms / 3600000, ofDay(moment, 3 * 3600).hours);
}

TEST(TimeOfDay, LocalTimeComesInItsFields) {
    setZone("IST-5:30");
    kvtest::stopWallClock(1709971507, 123999);  // Saturday, 2024-03-09 08:05:07 UTC
    EXPECT_EQ(localTime(), (Fields{2024, 3, 9, 13, 35, 7, 123, 6}));
    kvtest::stopWallClock(1709404200, 999999);  // Saturday, 2024-03-02 18:30:00 UTC: Sunday begins
    EXPECT_EQ(localTime(), (Fields{2024, 3, 3, 0, 0, 0, 999, 0}));
    kvtest::stopWallClock(1704047399, 999);
    EXPECT_EQ(localTime(), (Fields{2023, 12, 31, 23, 59, 59, 0, 0}));
}

TEST(TimeOfDay, LocalTimeIsThePresentOne) {
    setZone("IST-5:30");
    std::time_t moment = 0;
    const Fields at = askedWithinOneSecond(localTime, moment, fineSeconds);
    const std::time_t shifted = moment + 19800;
    const std::tm expected = *std::gmtime(&shifted);
    EXPECT_EQ(at.year, expected.tm_year + 1900);
    EXPECT_EQ(at.month, expected.tm_mon + 1);
    EXPECT_EQ(at.day, expected.tm_mday);
    EXPECT_EQ(at.hour, expected.tm_hour);
    EXPECT_EQ(at.minute, expected.tm_min);
    EXPECT_EQ(at.second, expected.tm_sec);
}

TEST(TimeOfDay, FieldsNotWantedAreSkipped) {
    std::uint16_t year = 0;
    EXPECT_EQ(kvOSGetLocalTime(&year, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_GE(year, 2024);
    EXPECT_EQ(kvOSGetLocalTime(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0u);
}

TEST(TimeOfDay, OffsetIsPositiveEastOfUtc) {
    setZone("UTC0");
    EXPECT_EQ(kvOSGetTimeZoneOffset(), 0);
    setZone("IST-5:30");
    EXPECT_EQ(kvOSGetTimeZoneOffset(), 19800);
    setZone("EST5");
    EXPECT_EQ(kvOSGetTimeZoneOffset(), -18000);
}

TEST(TimeOfDay, OffsetFollowsDaylightSavingTime) {
    setZone("EST5EDT,0/0,J365/25");  // daylight saving time all the year round
    EXPECT_EQ(kvOSGetTimeZoneOffset(), -14400);
}

}  // namespace
