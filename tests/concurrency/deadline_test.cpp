// The deadline of a timed wait, as the system gets it, and what becomes of the system's answer.
//
// gettimeofday and the two waits on a condition are replaced in this program; the library finds these first.
#include "concurrency/deadline.h"

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>
#include <vector>

#include "concurrency/event_waiters.h"
#include "kvos/sync.h"

namespace {

constexpr std::time_t kStart = 1700000000;

struct System {
    timeval wallClock{kStart, 0};
    std::vector<timespec> deadlines;  // of the timed waits
    int endlessWaits = 0;
    int answer = ETIMEDOUT;
    kvOSEventRec* setBeforeTheAnswer = nullptr;
    kvOSEventRec* pulsedBeforeTheAnswer = nullptr;
    std::time_t secondsAWait = 0;  // how far the clock is on after one
};
System scripted;

/// As the system does, it waits without the mutex and has it again for its answer.
int answerFor(pthread_mutex_t* mutex) {
    if (scripted.setBeforeTheAnswer != nullptr) scripted.setBeforeTheAnswer->qwSignalled = 1;
    if (scripted.pulsedBeforeTheAnswer != nullptr) {
        pthread_mutex_unlock(mutex);
        kvOSPulseEvent(scripted.pulsedBeforeTheAnswer);
        pthread_mutex_lock(mutex);
    }
    scripted.wallClock.tv_sec += scripted.secondsAWait;
    return scripted.answer;
}

}  // namespace

extern "C" {

KVUTIL_API int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    *now = scripted.wallClock;
    return 0;
}

KVUTIL_API int pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t* mutex, const timespec* deadline) {
    scripted.deadlines.push_back(*deadline);
    return answerFor(mutex);
}

KVUTIL_API int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* mutex) {
    ++scripted.endlessWaits;
    return answerFor(mutex);
}

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

class Deadline : public testing::Test {
protected:
    void SetUp() override { scripted = {}; }
};
using Wait = Deadline;
using Pulse = Deadline;

TEST_F(Deadline, DropsTheSecondThatTheFractionsAddUpTo) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.now_us << " us, " << row.wait_ms << " ms");
        const timespec deadline = kv::concurrency::deadlineAfter({kStart, row.now_us}, row.wait_ms);
        EXPECT_EQ(deadline.tv_sec, kStart + row.seconds);
        EXPECT_EQ(deadline.tv_nsec, row.nanoseconds);
    }
}

TEST_F(Deadline, IsWhatATimedWaitHandsToTheSystem) {
    const Event event = makeEvent(kAutoReset);
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.now_us << " us, " << row.wait_ms << " ms");
        scripted.wallClock.tv_usec = row.now_us;
        EXPECT_EQ(kvOSWaitForEvent(event.get(), row.wait_ms), 258u);
        ASSERT_FALSE(scripted.deadlines.empty());
        EXPECT_EQ(scripted.deadlines.back().tv_sec, kStart + row.seconds);
        EXPECT_EQ(scripted.deadlines.back().tv_nsec, row.nanoseconds);
    }
    EXPECT_EQ(scripted.endlessWaits, 0);
}

TEST_F(Deadline, DoesNotBindAWaitForever) {
    const Event event = makeEvent(kAutoReset);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), static_cast<std::uint32_t>(-1)), 258u) << "the wait failed";
    EXPECT_EQ(scripted.endlessWaits, 1);
    EXPECT_TRUE(scripted.deadlines.empty());
}

TEST_F(Deadline, OfEachEventOfSeveralIsReckonedAnewWithTheWholeTimeout) {
    std::vector<Event> events;
    std::vector<kvOSEventRec*> records;
    for (int i = 0; i < 5; ++i) {
        events.push_back(makeEvent(kAutoReset));
        records.push_back(events.back().get());
    }
    for (const std::uint32_t waitAll : {0u, 1u}) {
        scripted = {};
        scripted.secondsAWait = 7;
        EXPECT_EQ(kvOSWaitForMultipleEvents(5, records.data(), waitAll, 3250), 258u);
        ASSERT_EQ(scripted.deadlines.size(), 5u) << "none is left out after a timeout";
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(scripted.deadlines[static_cast<std::size_t>(i)].tv_sec, kStart + 7 * i + 3);
            EXPECT_EQ(scripted.deadlines[static_cast<std::size_t>(i)].tv_nsec, 250'000'000);
        }
    }
}

TEST_F(Wait, OfNothingAsksTheSystemForNothing) {
    const Event clear = makeEvent(kAutoReset);
    const Event set = makeEvent(kManual, 1);
    EXPECT_EQ(kvOSWaitForEvent(clear.get(), 0), 258u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), 0), 0u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), 1000), 0u);
    EXPECT_EQ(kvOSWaitForEvent(set.get(), KVWAIT_FOREVER), 0u);
    EXPECT_TRUE(scripted.deadlines.empty());
    EXPECT_EQ(scripted.endlessWaits, 0);
}

TEST_F(Wait, ThatFailsTimesOutAlsoWhereTheSignalCameMeanwhile) {
    for (const std::uint32_t timeout : {1000u, KVWAIT_FOREVER}) {
        for (const int error : {ETIMEDOUT, EINVAL, EPERM}) {
            const Event event = makeEvent(kAutoReset);
            scripted.answer = error;
            scripted.setBeforeTheAnswer = event.get();
            EXPECT_EQ(kvOSWaitForEvent(event.get(), timeout), 258u);
            EXPECT_EQ(event->qwSignalled, 1u) << "left for the next";
            EXPECT_EQ(pthread_mutex_trylock(&event->mutex), 0) << "unlocked";
            pthread_mutex_unlock(&event->mutex);
        }
    }
}

TEST_F(Wait, GoesOnAfterAWakeUpThatBringsNoSignal) {
    const Event event = makeEvent(kAutoReset);
    scripted.answer = 0;
    scripted.setBeforeTheAnswer = event.get();
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1000), 0u);
    EXPECT_EQ(scripted.deadlines.size(), 1u);
    EXPECT_EQ(event->qwSignalled, 0u);
}

TEST_F(Pulse, OfAWaiterThatTimesOutAllTheSameIsLeftToNobody) {
    const Event event = makeEvent(kAutoReset);
    scripted.pulsedBeforeTheAnswer = event.get();
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1000), 258u);
    EXPECT_EQ(event->qwPulses, 1u);
    EXPECT_EQ(event->qwReleases, 0u);
    EXPECT_EQ(event->qwPulsed, 0u);
    EXPECT_EQ(event->qwWaiting, 0u);
    scripted.pulsedBeforeTheAnswer = nullptr;
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1000), 258u) << "nor to one who waits later";
}

TEST_F(Pulse, LetsGoAWaiterThatWakesUpForIt) {
    const Event event = makeEvent(kAutoReset);
    scripted.pulsedBeforeTheAnswer = event.get();
    scripted.answer = 0;
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1000), 0u);
    EXPECT_EQ(event->qwReleases, 0u);
    EXPECT_EQ(event->qwSignalled, 0u);
}

}  // namespace
