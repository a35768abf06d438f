// The making of UUIDs: their time, node and clock sequence.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "kvos/guid.h"
#include "text/random_source.h"
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
    // All of them have found that there is no node yet before the first one makes it.
    constexpr int kThreads = 4;
    kvtest::gatherAtRandomSource(kThreads);
    std::vector<uuid4122_t> firsts(kThreads);
    std::vector<std::thread> threads;
    for (uuid4122_t& first : firsts) threads.emplace_back([&first] { uuid4122_create(&first); });
    for (std::thread& thread : threads) thread.join();
    const uuid4122_t later = made();
    for (const uuid4122_t& first : firsts) EXPECT_EQ(std::memcmp(first.node, later.node, sizeof later.node), 0);
}

TEST(Uuid, WithoutTheSystemsRandomBytesTheNodeIsOfRand) {
    for (const bool isShort : {false, true}) {
        EXPECT_EXIT(
            {
                kvtest::takeRandomSourceAway(isShort);
                const uuid4122_t first = made();
                const std::uint64_t stamp = timeOf(first);
                std::srand(static_cast<unsigned>((stamp >> 42) ^ (stamp >> 10)));
                std::uint8_t values[16];
                for (std::uint8_t& value : values) value = static_cast<std::uint8_t>(std::rand());
                values[0] |= 1;
                EXPECT_EQ(std::memcmp(first.node, values, sizeof first.node), 0);
                expectSequenceOfRand(first);
                std::exit(HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "")
            << isShort;
    }
}

TEST(Uuid, AForkHasANodeOfItsOwn) {
    const uuid4122_t before = made();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t fork = ::fork();
    if (fork == 0) {
        const uuid4122_t inFork = made();
        _exit(write(ends[1], &inFork, sizeof inFork) == sizeof inFork ? 0 : 1);
    }
    uuid4122_t inFork;
    ASSERT_EQ(read(ends[0], &inFork, sizeof inFork), static_cast<ssize_t>(sizeof inFork));
    EXPECT_EQ(waitpid(fork, nullptr, 0), fork);
    EXPECT_NE(std::memcmp(inFork.node, before.node, sizeof before.node), 0);
    EXPECT_EQ(inFork.node[0] & 1, 1);
    EXPECT_EQ(std::memcmp(made().node, before.node, sizeof before.node), 0);
}

TEST(Uuid, NullIsRefused) {
    EXPECT_EQ(uuid4122_create(nullptr), 0u);
    EXPECT_EQ(kvOSMakeGUID(nullptr), 0u);
}

}  // namespace
