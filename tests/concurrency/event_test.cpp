// Events: setting, resetting and waiting. What a pulse does is in pulse_test.cpp.
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

kvOSEventRec* const kAllOnes = reinterpret_cast<kvOSEventRec*>(~std::uintptr_t{0});

/// More than a test lasts, and without a fraction of a second.
constexpr std::uint32_t kLong_ms = 600000;

TEST(Event, WaitOfNothingOnAnUnsignalledOneTimesOut) {
    for (const std::uint32_t manual : {kAutoReset, kManual}) {
        const Event event = makeEvent(manual);
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
        EXPECT_EQ(event->qwSignalled, 0u);
    }
}

TEST(Event, TimedWaitThatNobodyEndsTimesOut) {
    const Event event = makeEvent(kAutoReset);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 1), 258u);
    EXPECT_EQ(event->qwWaiting, 0u);
}

TEST(Event, AutoResetOneGivesItsSignalToOneWait) {
    const Event event = makeEvent(kAutoReset);
    EXPECT_EQ(kvOSSetEvent(event.get()), 1u);
    EXPECT_EQ(event->qwSignalled, 1u);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), KVWAIT_FOREVER), 0u);
    EXPECT_EQ(event->qwSignalled, 0u);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
}

TEST(Event, SignalsOfAnAutoResetOneDoNotAddUp) {
    const Event event = makeEvent(kAutoReset);
    kvOSSetEvent(event.get());
    kvOSSetEvent(event.get());
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 0u);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
}

TEST(Event, WaitOnASignalledManualOneChangesNothing) {
    const Event event = makeEvent(kManual, 5);
    EXPECT_EQ(event->qwSignalled, 5u) << "kept as given";
    for (const std::uint32_t timeout : {0u, 1u, kLong_ms, KVWAIT_FOREVER}) {
        EXPECT_EQ(kvOSWaitForEvent(event.get(), timeout), 0u);
        EXPECT_EQ(event->qwSignalled, 5u);
    }
}

TEST(Event, ResettingTakesTheSignalAway) {
    for (const std::uint32_t manual : {kAutoReset, kManual}) {
        const Event event = makeEvent(manual, 1);
        EXPECT_EQ(kvOSResetEvent(event.get()), 1u);
        EXPECT_EQ(event->qwSignalled, 0u);
        EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 258u);
        EXPECT_EQ(kvOSResetEvent(event.get()), 1u);
    }
}

TEST(Event, SettingAnAutoResetOneWakesOneWaiterAndLeavesItUnsignalled) {
    const Event event = makeEvent(kAutoReset);
    Waiters waiters(*event, 3);
    for (std::uint64_t left : {2u, 1u, 0u}) {
        kvOSSetEvent(event.get());
        untilWaiting(*event, left);
        EXPECT_EQ(fieldOf(*event, &kvOSEventRec::qwSignalled), 0u);
    }
    waiters.join();
    EXPECT_EQ(waiters.released(), 3);
}

TEST(Event, SettingAManualOneWakesAllAndLeavesItSignalled) {
    const Event event = makeEvent(kManual);
    Waiters waiters(*event, 4);
    kvOSSetEvent(event.get());
    waiters.join();
    EXPECT_EQ(waiters.released(), 4);
    EXPECT_EQ(event->qwSignalled, 1u);
    EXPECT_EQ(kvOSWaitForEvent(event.get(), 0), 0u);
}

TEST(Event, TimedWaitEndsWithTheSignal) {
    const Event event = makeEvent(kAutoReset);
    std::uint32_t result = 7;
    std::thread waiter([&] { result = kvOSWaitForEvent(event.get(), kLong_ms); });
    untilWaiting(*event, 1);
    kvOSSetEvent(event.get());
    waiter.join();
    EXPECT_EQ(result, 0u);
}

TEST(Event, OpeningMakesAFreshOneFromItsTwoArguments) {
    const Event first(kvOSOpenEvent(kManual, 1));
    const Event second(kvOSOpenEvent(kManual, 1));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->qwManual, 1u);
    EXPECT_EQ(first->qwSignalled, 1u);
    kvOSResetEvent(first.get());
    EXPECT_EQ(kvOSWaitForEvent(second.get(), 0), 0u) << "nothing is shared";

    const Event third(kvOSOpenEvent(0x1F0003, 0));
    EXPECT_EQ(third->qwManual, 0x1F0003u) << "any access but 0 makes it manual";
    EXPECT_EQ(third->qwSignalled, 0u);
}

TEST(Event, NoEventIsRefused) {
    for (kvOSEventRec* const none : {static_cast<kvOSEventRec*>(nullptr), kAllOnes}) {
        EXPECT_EQ(kvOSCloseEvent(none), 0u);
        EXPECT_EQ(kvOSSetEvent(none), 0u);
        EXPECT_EQ(kvOSResetEvent(none), 0u);
        EXPECT_EQ(kvOSPulseEvent(none), 0u);
        EXPECT_EQ(kvOSWaitForEvent(none, KVWAIT_FOREVER), 258u);
    }
}

TEST(Event, ClosingReturnsZero) { EXPECT_EQ(kvOSCloseEvent(kvOSCreateEvent(nullptr, 0, 0)), 0u); }

TEST(MultipleEvents, NoneTimesOut) {
    const Event event = makeEvent(kManual, 1);
    kvOSEventRec* const events[] = {event.get()};
    EXPECT_EQ(kvOSWaitForMultipleEvents(0, events, 0, KVWAIT_FOREVER), 258u);
    EXPECT_EQ(kvOSWaitForMultipleEvents(0, nullptr, 0, 0), 258u);
    EXPECT_EQ(kvOSWaitForMultipleEvents(1, nullptr, 0, KVWAIT_FOREVER), 258u);
}

TEST(MultipleEvents, OnlyTheLastResultIsToldWhetherOrNotAllAreWanted) {
    for (const std::uint32_t all : {0u, 1u}) {
        const Event set = makeEvent(kManual, 1);
        const Event clear = makeEvent(kManual);
        kvOSEventRec* const endsClear[] = {set.get(), clear.get()};
        kvOSEventRec* const endsSet[] = {clear.get(), set.get()};
        EXPECT_EQ(kvOSWaitForMultipleEvents(2, endsClear, all, 0), 258u) << "a wait for any is a wait for all";
        EXPECT_EQ(kvOSWaitForMultipleEvents(2, endsSet, all, 0), 0u);
    }
}

TEST(MultipleEvents, EachIsWaitedForAlsoBehindOneThatTimedOut) {
    const Event clear = makeEvent(kAutoReset);
    const Event first = makeEvent(kAutoReset, 1);
    const Event second = makeEvent(kAutoReset, 1);
    kvOSEventRec* const events[] = {first.get(), clear.get(), second.get()};
    EXPECT_EQ(kvOSWaitForMultipleEvents(3, events, 0, 1), 0u);
    EXPECT_EQ(first->qwSignalled, 0u) << "its signal is taken away by the way";
    EXPECT_EQ(second->qwSignalled, 0u);
}

TEST(Event, HandsPlainDataToAndFro) {
    const Event there = makeEvent(kAutoReset);
    const Event back = makeEvent(kAutoReset);
    constexpr int kRounds = 2000;
    int value = 0;
    std::thread partner([&] {
        for (int i = 0; i < kRounds; ++i) {
            kvOSWaitForEvent(there.get(), KVWAIT_FOREVER);
            ++value;
            kvOSSetEvent(back.get());
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        ++value;
        kvOSSetEvent(there.get());
        EXPECT_EQ(kvOSWaitForEvent(back.get(), i % 2 == 0 ? KVWAIT_FOREVER : kLong_ms), 0u);
    }
    partner.join();
    EXPECT_EQ(value, 2 * kRounds);
}

TEST(Event, MayBeClosedByTheThreadThatItWoke) {
    for (int i = 0; i < 500; ++i) {
        kvOSEventRec* const event = kvOSCreateEvent(nullptr, kAutoReset, 0);
        std::thread setter([event] { kvOSSetEvent(event); });
        EXPECT_EQ(kvOSWaitForEvent(event, KVWAIT_FOREVER), 0u);
        kvOSCloseEvent(event);
        setter.join();
    }
}

}  // namespace
