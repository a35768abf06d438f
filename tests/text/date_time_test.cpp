// Moments as text.
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "kvos/time.h"
#include "text/wall_clock.h"
#include "text/zone.h"

namespace {

using kvtest::setZone;

constexpr std::int64_t kMarch = 1709971507;     // Saturday, 2024-03-09 08:05:07 UTC
constexpr std::int64_t kNoon = 1709987405;      // 2024-03-09 12:30:05 UTC
constexpr std::int64_t kMidnight = 1709944205;  // 2024-03-09 00:30:05 UTC
constexpr std::int64_t kJuly = 1720180800;      // Friday, 2024-07-05 12:00:00 UTC

/// Buffers of the size that the docstring asks for.
struct Texts {
    std::vector<char> date = std::vector<char>(64, '#');
    std::vector<char> time = std::vector<char>(64, '#');
    std::uint32_t result;

    Texts(std::int64_t seconds, std::uint32_t flags, std::uint32_t fraction = 0)
        : result(kvOSGetEpochDateTimeString(seconds, date.data(), time.data(), fraction, flags)) {}
    std::string both() const { return std::string(date.data()) + " | " + time.data(); }
};

std::string utc(std::int64_t seconds, std::uint32_t flags, std::uint32_t fraction = 0) {
    return Texts(seconds, flags | KVTIME_UTC, fraction).both();
}

TEST(DateTime, TablesHoldTheNames) {
    const std::vector<std::string> days(garszDays, garszDays + 7);
    const std::vector<std::string> months(garszMonths, garszMonths + 12);
    EXPECT_EQ(days,
              (std::vector<std::string>{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}));
    EXPECT_EQ(months, (std::vector<std::string>{"January", "February", "March", "April", "May", "June", "July",
                                                "August", "September", "October", "November", "December"}));
}

TEST(DateTime, FractionIsPrintedAsItIsGiven) {
    EXPECT_EQ(utc(kMarch, 0x80, 5), "2024-03-09 | T08:05:07.005");
    EXPECT_EQ(utc(kMarch, 0x100, 5), "2024-03-09 | T08:05:07.000005");
    EXPECT_EQ(utc(kMarch, 0x200, 5), "2024-03-09 | T08:05:07.000000005");
    EXPECT_EQ(utc(kMarch, 0x80, 123456), "2024-03-09 | T08:05:07.123456");
}

TEST(DateTime, MixedFractionFlagsTakeThreeDigits) {
    for (const std::uint32_t flags : {0x180u, 0x280u, 0x300u, 0x380u}) {
        EXPECT_EQ(utc(kMarch, flags, 5), "2024-03-09 | T08:05:07.005") << flags;
    }
}

TEST(DateTime, HugeFractionsAreSignedButForNineDigits) {
    EXPECT_EQ(utc(kMarch, 0x80, 0xFFFFFFFF), "2024-03-09 | T08:05:07.-01");
    EXPECT_EQ(utc(kMarch, 0x100, 0xFFFFFFFF), "2024-03-09 | T08:05:07.-00001");
    EXPECT_EQ(utc(kMarch, 0x200, 0xFFFFFFFF), "2024-03-09 | T08:05:07.4294967295");
}

TEST(DateTime, FixedZoneIsAConstant) {
    setZone("EST5");
    EXPECT_EQ(Texts(kMarch, 0x40, 5).both(), "2024-03-09 | T03:05:07.000+05:00");
    EXPECT_EQ(utc(kMarch, 0x40, 5), "2024-03-09 | T08:05:07.000+05:00");
}

TEST(DateTime, UnderscoresCountMonthsFromOne) {
    EXPECT_EQ(utc(kMarch, 0x10), "9_3_2024 | 08_05_07");
    EXPECT_EQ(utc(kMarch, 0x8010), "2024_3_9 | 08_05_07");
}

TEST(DateTime, DashesCountMonthsFromZeroUnlessTheYearIsFirst) {
    EXPECT_EQ(utc(kMarch, 0x20), "9-2-2024 | 08-05-07");
    EXPECT_EQ(utc(kMarch, 0x8020), "2024-3-9 | 08-05-07");
}

TEST(DateTime, WordsAreTheDefault) {
    EXPECT_EQ(utc(kMarch, 1), "Saturday, March 9, 2024 | 08:05:07");
    EXPECT_EQ(utc(kMarch, 0), "Saturday, March 9, 2024 | 8:05:07AM");
    EXPECT_EQ(utc(kMarch, 0x8000), "Saturday, March 9, 2024 | 8:05:07AM");
}

TEST(DateTime, TwelveHourFormKnowsNoTwelve) {
    EXPECT_EQ(utc(kNoon, 0), "Saturday, March 9, 2024 | 0:30:05PM");
    EXPECT_EQ(utc(kMidnight, 0), "Saturday, March 9, 2024 | 0:30:05AM");
    EXPECT_EQ(utc(kNoon + 3600, 0), "Saturday, March 9, 2024 | 1:30:05PM");
    EXPECT_EQ(utc(kNoon, 1), "Saturday, March 9, 2024 | 12:30:05");
}

TEST(DateTime, TheFirstFormInOrderDecides) {
    EXPECT_EQ(utc(kMarch, 0x80 | 0x40 | 0x20 | 0x10 | 1, 5), utc(kMarch, 0x80, 5));
    EXPECT_EQ(utc(kMarch, 0x40 | 0x20 | 0x10 | 1), utc(kMarch, 0x40));
    EXPECT_EQ(utc(kMarch, 0x20 | 0x10 | 1), utc(kMarch, 0x10));
    EXPECT_EQ(utc(kMarch, 0x20 | 1), utc(kMarch, 0x20));
}

TEST(DateTime, LocalTimeFollowsTheZone) {
    setZone("UTC0");
    EXPECT_EQ(Texts(kMarch, 1).both(), "Saturday, March 9, 2024 | 08:05:07");
    setZone("IST-5:30");
    EXPECT_EQ(Texts(kMarch, 1).both(), "Saturday, March 9, 2024 | 13:35:07");
    setZone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(Texts(kMidnight, 1).both(), "Friday, March 8, 2024 | 19:30:05");
    EXPECT_EQ(Texts(kJuly, 1).both(), "Friday, July 5, 2024 | 08:00:00");
    EXPECT_EQ(utc(kJuly, 1), "Friday, July 5, 2024 | 12:00:00");
}

TEST(DateTime, MomentsBeforeTheEpochAreFine) {
    EXPECT_EQ(utc(-1, 0x80), "1969-12-31 | T23:59:59.000");
    EXPECT_EQ(utc(0, 1), "Thursday, January 1, 1970 | 00:00:00");
}

TEST(DateTime, EachBufferIsOptional) {
    char text[64] = "#";
    EXPECT_EQ(kvOSGetEpochDateTimeString(kMarch, nullptr, text, 0, KVTIME_UTC | 1), 0u);
    EXPECT_STREQ(text, "08:05:07");
    EXPECT_EQ(kvOSGetEpochDateTimeString(kMarch, text, nullptr, 0, KVTIME_UTC | 1), 0u);
    EXPECT_STREQ(text, "Saturday, March 9, 2024");
    EXPECT_EQ(kvOSGetEpochDateTimeString(kMarch, nullptr, nullptr, 0, 0), 0u);
    EXPECT_EQ(kvOSGetDateTimeString(nullptr, nullptr, 0), 0u);
}

TEST(DateTime, AYearThatDoesNotFitFails) {
    for (const std::uint32_t flags : {0u, 0x10000u}) {
        const Texts texts(std::numeric_limits<std::int64_t>::max(), flags);
        EXPECT_EQ(texts.result, 0xFFFFFFFFu);
        EXPECT_EQ(texts.date[0], '#');
        EXPECT_EQ(texts.time[0], '#');
    }
    constexpr std::int64_t kYear = 31556952;  // seconds, on average
    EXPECT_EQ(Texts((std::numeric_limits<std::int32_t>::max() - 100LL) * kYear, KVTIME_UTC).result, 0xFFFFFFFFu);
}

TEST(DateTime, TheLastYearsThatFitStayWithinTheBuffers) {
    constexpr std::int64_t kYear = 31556952;
    for (const std::uint32_t flags : {0u, 0x40u, 0x10u, 0x20u, 0x200u}) {
        EXPECT_EQ(Texts((std::numeric_limits<std::int32_t>::max() - 2000LL) * kYear, flags | KVTIME_UTC).result, 0u);
        EXPECT_EQ(Texts((std::numeric_limits<std::int32_t>::min() + 2000LL) * kYear, flags | KVTIME_UTC).result, 0u);
    }
}

/// The present moment's time text.
std::string timeNow(std::uint32_t flags) {
    char text[64] = "";
    EXPECT_EQ(kvOSGetDateTimeString(nullptr, text, flags), 0u);
    return text;
}

TEST(DateTime, ThePresentMomentComesInTheDigitsAskedFor) {
    kvtest::stopWallClock(kMarch, 123456);
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x80), "T08:05:07.123");
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x100), "T08:05:07.123456");
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x200), "T08:05:07.123456000");
}

TEST(DateTime, TheFractionOfThePresentMomentIsFilledUpWithZeros) {
    kvtest::stopWallClock(kMarch, 4005);
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x80), "T08:05:07.004");
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x100), "T08:05:07.004005");
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x200), "T08:05:07.004005000");
    kvtest::stopWallClock(kMarch, 999999);
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x80), "T08:05:07.999") << "cut, not rounded";
    EXPECT_EQ(timeNow(KVTIME_UTC | 0x200), "T08:05:07.999999000");
}

TEST(DateTime, MixedFlagsGetMillisecondsOfThePresentMoment) {
    kvtest::stopWallClock(kMarch, 123456);
    for (const std::uint32_t flags : {0x180u, 0x280u, 0x300u, 0x380u}) {
        EXPECT_EQ(timeNow(KVTIME_UTC | flags), "T08:05:07.123") << flags;
    }
}

TEST(DateTime, ThePresentMomentTakesEveryOtherFormAsWell) {
    kvtest::stopWallClock(kMarch, 123456);
    setZone("EST5");
    EXPECT_EQ(timeNow(0x40), "T03:05:07.000+05:00");
    EXPECT_EQ(timeNow(0), "3:05:07AM");
    char date[64] = "";
    EXPECT_EQ(kvOSGetDateTimeString(date, nullptr, 0x20), 0u);
    EXPECT_STREQ(date, "9-2-2024");
}

TEST(DateTime, ThePresentMomentIsNow) {
    char date[64] = "";
    std::int64_t before = 0;
    do {
        before = static_cast<std::int64_t>(kvOSGetTimeMs() / 1000 / 86400);
        EXPECT_EQ(kvOSGetDateTimeString(date, nullptr, 0x80 | KVTIME_UTC), 0u);
    } while (static_cast<std::int64_t>(kvOSGetTimeMs() / 1000 / 86400) != before);
    EXPECT_STREQ(date, Texts(before * 86400, 0x80 | KVTIME_UTC).date.data());
}

}  // namespace
