// The deadline of a timed wait, as the system gets it, and what becomes of the system's answer.
//
// gettimeofday and the two waits on a condition are replaced in this program; the library finds these first.
#include "concurrency/deadline.h"

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>

#include "concurrency/event_waiters.h"
#include "kvos/sync.h"

namespace {

timeval wallClock{1700000000, 0};
timespec deadlineSeen{};
int timedWaits = 0;
int endlessWaits = 0;
int answer = ETIMEDOUT;
kvOSEventRec* setBeforeTheAnswer = nullptr;

int answerTo(int& counter) {
    ++counter;
    if (setBeforeTheAnswer != nullptr) setBeforeTheAnswer->qwSignalled = 1;
    return answer;
}

}  // namespace

extern "C" {

KVUTIL_API int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    *now = wallClock;
    return 0;
}

KVUTIL_API int pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec* deadline) {
    deadlineSeen = *deadline;
    return answerTo(timedWaits);
}

KVUTIL_API int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t*) { return answerTo(endlessWaits); }

}  // extern "C"

namespace {

using kvtest::Event;
using kvtest::kAutoReset;
using kvtest::kManual;
using kvtest::makeEvent;

struct Row {
    suseconds_t now_us;
    std::uint32_t wait_ms;
    std::time_t seconds;  // from the present one
    long nanoseconds;
};

constexpr Row kRows[] = {
    {0, 1, 0, 1'000'000},
    {0, 999, 0, 999'000'000},
    {0, 1000, 1, 0},
    {0, 2500, 2, 500'000'000},
    {499'999, 500, 0, 999'999'000},
    {500'000, 500, 0, 0},                         // a full second short: the deadline is past
    {999'999, 1, 0, 999'000},                     // likewise
    {999'999, 1000, 1, 999'999'000},              // no fraction, nothing dropped
    {700'000, 1400, 1, 100'000'000},              // 0.4 s instead of 1.4 s
    {250'000, 0xFFFFFFFE, 4294967, 544'000'000},  // the longest that ends
    {999'999, 0x80000000, 2147483, 647'999'000},  // not a negative number
};

TEST(Deadline, DropsTheSecondThatTheFractionsAddUpTo) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.now_us << " us, " << row.wait_ms << " ms");
        const timespec deadline = kv::concurrency::deadlineAfter({1700000000, row.now_us}, row.wait_ms);
        EXPECT_EQ(deadline.tv_sec, 1700000000 + row.seconds);
        EXPECT_EQ(deadline.tv_nsec, row.nanoseconds);
    }
}

TEST(Deadline, IsWhatATimedWaitHandsToTheSystem) {
    const Event event = makeEvent(kAutoReset);
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.now_us << " us, " << row.wait_ms << " ms");
        wallClock.tv_usec = row.now_us;
        EXPECT_EQ(kvOSWaitForEvent(event.get(), row.wait_ms), 258u);
        EXPECT_EQ(deadlineSeen.tv_sec, 1700000000 + row.seconds);
        EXPECT_EQ(deadlineSeen.tv_nsec, row.nanoseconds);
    }
    EXPECT_EQ(endlessWaits, 0);
}

TEST(Deadline, DoesNotBindAWaitForever) {
    const Event event = makeEvent(kAutoReset);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), static_cast<std::uint32_t>(-1)), 258u) << "the wait failed";
    EXPECT_EQ(endlessWaits, 1);
    EXPECT_EQ(timedWaits, 0);
}

TEST(Wait, OfNothingAsksTheSystemForNothing) {
    const Event clear = makeEvent(kAutoReset);
    const Event set = makeEvent(kManual, 1);
    EXPECT_EQ(kvOSWaitForEvent(clear.get(), 0), 258u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), 0), 0u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), 1000), 0u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), KVWAIT_FOREVER), 0u);
    EXPECT_EQ(timedWaits + endlessWaits, 0);
}

TEST(Wait, ThatFailsTimesOutAlsoWhereTheSignalCameMeanwhile) {
    for (const std::uint32_t timeout : {1000u, KVWAIT_FOREVER}) {
        for (const int error : {ETIMEDOUT, EINVAL, EPERM}) {
            const Event event = makeEvent(kAutoReset);
            answer = error;
            setBeforeTheAnswer = event.get();
            EXPECT_EQ(kvOSWaitForEvent(event.get(), timeout), 258u);
            EXPECT_EQ(event->qwSignalled, 1u) << "left for the next";
            EXPECT_EQ(pthread_mutex_trylock(&event->mutex), 0) << "unlocked";
            pthread_mutex_unlock(&event->mutex);
        }
    }
}

TEST(Wait, GoesOnAfterAWakeUpThatBringsNoSignal) {
    const Event event = makeEvent(kAutoReset);
    answer = 0;
    setBeforeTheAnswer = event.get();
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1000), 0u);
    EXPECT_EQ(timedWaits, 1);
    EXPECT_EQ(event->qwSignalled, 0u);
}

}  // namespace
