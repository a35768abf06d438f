// The pulse of an event: those who wait at its moment go, and nobody else.
#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "concurrency/event_waiters.h"
#include "kvos/sync.h"

namespace {

using kvtest::Event;
using kvtest::fieldOf;
using kvtest::kAutoReset;
using kvtest::kManual;
using kvtest::makeEvent;
using kvtest::untilWaiting;
using kvtest::Waiters;

TEST(Pulse, ReleasesAllWaitersOfAManualEventAndLeavesItUnsignalled) {
    const Event event = makeEvent(kManual);
    Waiters waiters(*event, 4);
    EXPECT_EQ(kvOSPulseEvent(event.get()), 1u);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
    waiters.join();
    EXPECT_EQ(waiters.released(), 4);
    EXPECT_EQ(event->qwSignalled, 0u);
}

TEST(Pulse, ReleasesOneWaiterOfAnAutoResetEvent) {
    const Event event = makeEvent(kAutoReset);
    Waiters waiters(*event, 4);
    for (std::uint64_t left : {3u, 2u, 1u, 0u}) {
        EXPECT_EQ(kvOSPulseEvent(event.get()), 1u);
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
        untilWaiting(*event, left);
        EXPECT_EQ(fieldOf(*event, &kvOSEventRec::qwReleases), 0u) << "none is left for another";
    }
    waiters.join();
    EXPECT_EQ(waiters.released(), 4);
}

TEST(Pulse, TwoInARowReleaseTwo) {
    const Event event = makeEvent(kAutoReset);
    Waiters waiters(*event, 3);
    kvOSPulseEvent(event.get());
    kvOSPulseEvent(event.get());
    untilWaiting(*event, 1);
    EXPECT_EQ(fieldOf(*event, &kvOSEventRec::qwReleases), 0u);
    kvOSPulseEvent(event.get());
    waiters.join();
    EXPECT_EQ(waiters.released(), 3);
}

TEST(Pulse, IsNotSeenByAThreadThatIsNotYetWaiting) {
    for (const std::uint32_t manual : {kAutoReset, kManual}) {
        const Event event = makeEvent(manual);
        kvOSPulseEvent(event.get());
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 1), 258u);
    }
}

TEST(Pulse, TakesAwayASignalThatWasThere) {
    for (const std::uint32_t manual : {kAutoReset, kManual}) {
        const Event event = makeEvent(manual, 1);
        EXPECT_EQ(kvOSPulseEvent(event.get()), 1u);
        EXPECT_EQ(event->qwSignalled, 0u);
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
    }
}

TEST(Pulse, IsNotTakenFromTheWaiterByOneWhoComesAfterIt) {
    for (const std::uint32_t manual : {kAutoReset, kManual}) {
        const Event event = makeEvent(manual);
        for (int i = 0; i < 200; ++i) {
            Waiters waiter(*event, 1);
            kvOSPulseEvent(event.get());
            EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
            waiter.join();
            EXPECT_EQ(waiter.released(), 1);
        }
    }
}

TEST(Pulse, AndASignalAfterItReleaseTwo) {
    const Event event = makeEvent(kAutoReset);
    Waiters waiters(*event, 2);
    kvOSPulseEvent(event.get());
    kvOSSetEvent(event.get());
    waiters.join();
    EXPECT_EQ(waiters.released(), 2);
    EXPECT_EQ(event->qwSignalled, 0u);
}

TEST(Pulse, ReleasesNoMoreThanItMayAmongWaitersThatTimeOut) {
    const Event event = makeEvent(kAutoReset);
    std::atomic<bool> over = false;
    std::atomic<int> released = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            while (!over) {
                if (kvOSWaitForEvent(event.get(), 1) == KVWAIT_SIGNALLED) ++released;
            }
        });
    }
    constexpr int kPulses = 2000;
    for (int i = 0; i < kPulses; ++i) {
        kvOSPulseEvent(event.get());
        std::this_thread::yield();
    }
    over = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_LE(released, kPulses);
    EXPECT_EQ(event->qwWaiting, 0u);
    EXPECT_EQ(event->qwPulsed, 0u);
    EXPECT_EQ(event->qwReleases, 0u) << "nothing is left behind for later waiters";
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
}

}  // namespace
