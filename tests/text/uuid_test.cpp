// The making of UUIDs: their time, node and clock sequence.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "kvos/guid.h"
#include "text/wall_clock.h"

namespace {

constexpr std::uint64_t kGregorianToUnix = 0x01B21DD213814000;

uuid4122_t made() {
    uuid4122_t uuid;
    EXPECT_EQ(uuid4122_create(&uuid), 1u);
    return uuid;
}

std::uint64_t timeOf(const uuid4122_t& uuid) {
    return std::uint64_t{uuid.time_low} | std::uint64_t{uuid.time_mid} << 32 |
           std::uint64_t{uuid.time_hi_and_version & 0x0FFFu} << 48;
}

TEST(Uuid, IsOfVersionOneAndOfTheUsualVariant) {
    for (int i = 0; i < 1000; ++i) {
        const uuid4122_t uuid = made();
        EXPECT_EQ(uuid.time_hi_and_version & 0xF000, 0x1000);
        EXPECT_EQ(uuid.clock_seq_hi_and_reserved & 0xC0, 0x80);
    }
}

TEST(Uuid, ItsTimeCountsFromTheGregorianCalendar) {
    kvtest::stopWallClock(1'700'000'000, 123'456);
    EXPECT_EQ(timeOf(made()), kGregorianToUnix + 17'000'000'001'234'560);
}

TEST(Uuid, ThoseOfOneMicrosecondAreCounted) {
    kvtest::stopWallClock(1'700'000'000, 0);
    const std::uint64_t first = timeOf(made());
    for (std::uint64_t i = 1; i <= 1024; ++i) EXPECT_EQ(timeOf(made()), first + i);
}

TEST(Uuid, TheOneBehindTheFullCountWaitsForTheClock) {
    kvtest::stopWallClock(1'700'000'000, 0, 2000);
    const std::uint64_t first = timeOf(made());
    for (std::uint64_t i = 1; i <= 1024; ++i) made();
    EXPECT_EQ(timeOf(made()), first + 10);
    EXPECT_EQ(timeOf(made()), first + 11);
}

TEST(Uuid, ALaterMicrosecondCanGiveATimeAgain) {
    kvtest::stopWallClock(1'700'000'000, 0, 12);
    std::vector<std::uint64_t> times;
    for (int i = 0; i < 13; ++i) times.push_back(timeOf(made()));
    EXPECT_EQ(times[12], times[10]);
}

TEST(Uuid, AClockSetBackIsFollowed) {
    kvtest::stopWallClock(1'700'000'000, 0);
    const std::uint64_t first = timeOf(made());
    kvtest::stopWallClock(1'600'000'000, 0);
    EXPECT_EQ(timeOf(made()), first - 1'000'000'000'000'000);
}

TEST(Uuid, TheNodeIsRandomAndStays) {
    const uuid4122_t first = made();
    EXPECT_EQ(first.node[0] & 1, 1);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(std::memcmp(made().node, first.node, sizeof first.node), 0);
}

/// The clock sequence that the next value of rand stands for.
void expectSequenceOfRand(const uuid4122_t& uuid) {
    const int random = std::rand();
    EXPECT_EQ(uuid.clock_seq_low, random & 0xFF);
    EXPECT_EQ(uuid.clock_seq_hi_and_reserved, (random >> 8 & 0x3F) | 0x80);
}

TEST(Uuid, SeedsRandWithTheTimeOnceAndTakesOneValueForEach) {
    const uuid4122_t first = made();
    const uuid4122_t second = made();
    const std::uint64_t stamp = timeOf(first);
    std::srand(static_cast<unsigned>((stamp >> 42) ^ (stamp >> 10)));
    expectSequenceOfRand(first);
    expectSequenceOfRand(second);
    std::srand(7);
    const uuid4122_t third = made();
    std::srand(7);
    expectSequenceOfRand(third);
}

TEST(Uuid, ThreadsShareOneNode) {
    std::vector<uuid4122_t> uuids(8);
    std::vector<std::thread> threads;
    for (uuid4122_t& uuid : uuids) {
        threads.emplace_back([&uuid] {
            for (int i = 0; i < 1000; ++i) uuid4122_create(&uuid);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const uuid4122_t& uuid : uuids) EXPECT_EQ(std::memcmp(uuid.node, uuids[0].node, 6), 0);
}

TEST(Uuid, NullIsRefused) {
    EXPECT_EQ(uuid4122_create(nullptr), 0u);
    EXPECT_EQ(kvOSMakeGUID(nullptr), 0u);
}

}  // namespace
