// Moments in units of 100 ns since 1601 and in seconds since 1970.
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "kvos/find.h"

TEST(FindTimes, TheBeginningOf1970) {
    EXPECT_EQ(FILEUnixTimeToFileTime(0, 0), 0x19DB1DED53E8000u);
    std::uint64_t nanoseconds = 1;
    EXPECT_EQ(FILEFileTimeToUnixTime(0x19DB1DED53E8000u, &nanoseconds), 0u);
    EXPECT_EQ(nanoseconds, 0u);
}

TEST(FindTimes, NanosecondsCountInWholeUnits) {
    EXPECT_EQ(FILEUnixTimeToFileTime(1, 999), 0x19DB1DED53E8000u + 10000009u);
    EXPECT_EQ(FILEUnixTimeToFileTime(1, 99), 0x19DB1DED53E8000u + 10000000u);
    std::uint64_t nanoseconds = 0;
    EXPECT_EQ(FILEFileTimeToUnixTime(0x19DB1DED53E8000u + 10000009u, &nanoseconds), 1u);
    EXPECT_EQ(nanoseconds, 900u);
    EXPECT_EQ(FILEFileTimeToUnixTime(0x19DB1DED53E8000u + 10000009u, nullptr), 1u);
}

TEST(FindTimes, AMomentAheadOf1970GoesThereAndBack) {
    const auto second = static_cast<std::uint64_t>(-5);
    const std::uint64_t fileTime = FILEUnixTimeToFileTime(second, 300);
    EXPECT_EQ(fileTime, 0x19DB1DED53E8000u - 50000000u + 3u);
    std::uint64_t nanoseconds = 0;
    EXPECT_EQ(FILEFileTimeToUnixTime(fileTime, &nanoseconds), second);
    EXPECT_EQ(nanoseconds, 300u);
    EXPECT_EQ(FILEFileTimeToUnixTime(0, nullptr), static_cast<std::uint64_t>(-11644473600));
}

TEST(FindTimes, RandomMomentsGoThereAndBack) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int round = 0; round < 10000; ++round) {
        const auto seconds =
            static_cast<std::uint64_t>(static_cast<std::int64_t>(random() % 40000000000) - 11644473600);
        const std::uint64_t nanoseconds = random() % 10000000 * 100;
        std::uint64_t back = 0;
        ASSERT_EQ(FILEFileTimeToUnixTime(FILEUnixTimeToFileTime(seconds, nanoseconds), &back), seconds);
        ASSERT_EQ(back, nanoseconds);
    }
}
