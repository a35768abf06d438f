// Threads: start, end, and the many calls that do nothing.
#include "kvos/thread.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <thread>
#include <unistd.h>

#include "concurrency/owned_thread.h"
#include "support/sanitizers.h"

namespace {

using kvtest::Event;
using kvtest::IdleThread;
using kvtest::kAutoReset;
using kvtest::kManual;
using kvtest::makeEvent;
using kvtest::untilEnded;

kvOSThreadRec* const kAllOnes = reinterpret_cast<kvOSThreadRec*>(~std::uintptr_t{0});
kvOSThreadRec* const kNoThreads[] = {nullptr, kAllOnes};

/// What a thread reports of itself.
struct Told {
    Event event = makeEvent(kAutoReset);
    std::size_t stackSize = 0;
    pthread_t thread{};
};

void* tell(void* argument) {
    auto& told = *static_cast<Told*>(argument);
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &told.stackSize);
    pthread_attr_destroy(&attributes);
    told.thread = pthread_self();
    kvOSSetEvent(told.event.get());
    return nullptr;
}

std::size_t stackSizeOfAThread(std::uint64_t asked) {
    Told told;
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, asked, tell, &told);
    EXPECT_NE(thread, nullptr);
    kvOSWaitForEvent(told.event.get(), KVWAIT_FOREVER);
    EXPECT_TRUE(pthread_equal(thread->thread, told.thread));
    untilEnded(thread);
    kvOSCloseThread(thread);
    return told.stackSize;
}

std::size_t usualStackSize() {
    Told told;
    std::thread(tell, &told).join();
    return told.stackSize;
}

TEST(Thread, RunsWithItsArgumentAndIsAlive) {
    IdleThread thread;
    EXPECT_EQ(thread.record()->fAlive, 1);
    EXPECT_TRUE(thread.isRunning());
    EXPECT_FALSE(pthread_equal(thread.record()->thread, pthread_self()));
}

TEST(Thread, StackSizeOfNothingIsTheDefault) { EXPECT_EQ(stackSizeOfAThread(0), usualStackSize()); }

TEST(Thread, StackSizeIsApplied) {
    constexpr std::size_t kLarge = 64 << 20;
    ASSERT_LT(usualStackSize(), kLarge);
    EXPECT_GE(stackSizeOfAThread(kLarge), kLarge);
    if (!kvtest::kThreadSanitizer && !kvtest::kAddressSanitizer) {  // they ask for more of their own
        EXPECT_LT(stackSizeOfAThread(256 << 10), usualStackSize());
    }
}

TEST(Thread, StackTooSmallForTheSystemIsTheDefault) { EXPECT_EQ(stackSizeOfAThread(1), usualStackSize()); }

TEST(Thread, ThatCannotBeStartedIsNull) {
    if (kvtest::kThreadSanitizer || kvtest::kAddressSanitizer) GTEST_SKIP() << "the sanitizer ends the process instead";
    Told told;
    errno = 0;
    EXPECT_EQ(kvOSCreateThread(nullptr, std::uint64_t{1} << 60, tell, &told), nullptr);
    EXPECT_NE(errno, 0);
}

TEST(Thread, WithoutABodyIsRefused) {
    errno = 0;
    EXPECT_EQ(kvOSCreateThread(nullptr, 0, nullptr, nullptr), nullptr);
    EXPECT_EQ(errno, EINVAL);
}

TEST(Thread, ThatHasEndedIsClosedLikeOneThatRuns) {
    const Event done = makeEvent(kAutoReset);
    kvOSThreadRec* const thread = kvOSCreateThread(
        nullptr, 0,
        [](void* event) -> void* {
            kvOSSetEvent(static_cast<kvOSEventRec*>(event));
            return nullptr;
        },
        done.get());
    EXPECT_EQ(kvOSWaitForEvent(done.get(), KVWAIT_FOREVER), 0u);
    while (pthread_kill(thread->thread, 0) == 0) {
        int policy = 0;
        sched_param parameters{};
        if (pthread_getschedparam(thread->thread, &policy, &parameters) == ESRCH) break;
        std::this_thread::yield();
    }
    EXPECT_EQ(kvOSCloseThread(thread), 1u) << "not joined by anyone, so it can be detached";
}

TEST(Thread, ClosingLetsItGoOn) {
    const Event begin = makeEvent(kAutoReset);
    const Event done = makeEvent(kAutoReset);
    struct Pair {
        kvOSEventRec* begin;
        kvOSEventRec* done;
    } pair{begin.get(), done.get()};
    kvOSThreadRec* const thread = kvOSCreateThread(
        nullptr, 0,
        [](void* argument) -> void* {
            const Pair events = *static_cast<Pair*>(argument);
            kvOSWaitForEvent(events.begin, KVWAIT_FOREVER);
            kvOSSetEvent(events.done);
            return nullptr;
        },
        &pair);
    EXPECT_EQ(kvOSCloseThread(thread), 1u);
    kvOSSetEvent(begin.get());
    EXPECT_EQ(kvOSWaitForEvent(done.get(), KVWAIT_FOREVER), 0u);
}

TEST(Thread, ClosingNoThreadReturnsZero) {
    for (kvOSThreadRec* const none : kNoThreads) EXPECT_EQ(kvOSCloseThread(none), 0u);
}

TEST(ExitCode, OfARunningThreadIsOne) {
    IdleThread thread;
    for (int i = 0; i < 3; ++i) {
        std::uint32_t code = 7;
        EXPECT_EQ(kvOSGetExitCodeThread(thread.record(), &code), 1u);
        EXPECT_EQ(code, 1u) << "not the 259 of a thread that is still active";
    }
}

TEST(ExitCode, OfAThreadThatEndedIsZeroWhateverItEndedWith) {
    void* (*const ends[])(void*) = {[](void*) { return reinterpret_cast<void*>(std::uintptr_t{77}); },
                                    [](void*) -> void* { kvOSExitThread(77); }};
    for (const auto end : ends) {
        kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, end, nullptr);
        untilEnded(thread);
        EXPECT_EQ(thread->fAlive, 1) << "the end of the thread is not its closing";
        for (int i = 0; i < 3; ++i) {
            std::uint32_t code = 7;
            EXPECT_EQ(kvOSGetExitCodeThread(thread, &code), 1u);
            EXPECT_EQ(code, 0u);
        }
        EXPECT_EQ(kvOSCloseThread(thread), 0u) << "joined, so not to be detached";
    }
}

TEST(ExitCode, OfNoThreadIsZero) {
    for (kvOSThreadRec* const none : kNoThreads) {
        std::uint32_t code = 7;
        EXPECT_EQ(kvOSGetExitCodeThread(none, &code), 0u);
        EXPECT_EQ(code, 0u);
        code = 7;
        EXPECT_EQ(kvOSGetExitCodeThread(reinterpret_cast<unsigned long>(none), &code), 0u);
        EXPECT_EQ(code, 0u);
    }
}

TEST(ExitCode, IsAskedForByANumberAsWell) {
    IdleThread thread;
    std::uint32_t code = 7;
    EXPECT_EQ(kvOSGetExitCodeThread(reinterpret_cast<unsigned long>(thread.record()), &code), 1u);
    EXPECT_EQ(code, 1u);
    EXPECT_EQ(kvOSGetExitCodeThread(thread.record(), nullptr), 1u);
}

TEST(ExitThread, EndsTheCallingThreadWithItsCode) {
    pthread_t thread{};
    std::atomic<int> steps = 0;
    const auto body = [](void* argument) -> void* {
        auto& counter = *static_cast<std::atomic<int>*>(argument);
        ++counter;
        kvOSExitThread(0xFFFFFFFE);
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, body, &steps), 0);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(result, reinterpret_cast<void*>(std::uintptr_t{0xFFFFFFFE}));
    EXPECT_EQ(steps, 1);
}

TEST(ExitSpecificThread, OfNoThreadReturnsTheHandlePlusOne) {
    EXPECT_EQ(kvOSExitSpecificThread(nullptr, 5), 1u);
    EXPECT_EQ(kvOSExitSpecificThread(kAllOnes, 5), 0u);
}

TEST(ExitSpecificThread, EndsTheCallerWhicheverThreadIsNamed) {
    IdleThread named;
    pthread_t caller{};
    const auto body = [](void* argument) -> void* {
        kvOSExitSpecificThread(static_cast<kvOSThreadRec*>(argument), 9);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&caller, nullptr, body, named.record()), 0);
    void* result = nullptr;
    pthread_join(caller, &result);
    EXPECT_EQ(result, reinterpret_cast<void*>(std::uintptr_t{9}));

    EXPECT_TRUE(named.isRunning());
    EXPECT_EQ(named.record()->fAlive, 0);
    std::uint32_t code = 7;
    EXPECT_EQ(kvOSGetExitCodeThread(named.record(), &code), 0u) << "not alive, as far as these calls know";
    EXPECT_EQ(code, 0u);
}

TEST(ExitSpecificThread, LeavesTheRecordToBeClosed) {
    struct Self {
        Event known = makeEvent(kAutoReset);
        Event leaving = makeEvent(kAutoReset);
        kvOSThreadRec* record = nullptr;
    } self;
    self.record = kvOSCreateThread(
        nullptr, 0,
        [](void* argument) -> void* {
            auto& me = *static_cast<Self*>(argument);
            kvOSWaitForEvent(me.known.get(), KVWAIT_FOREVER);
            kvOSThreadRec* const record = me.record;
            kvOSSetEvent(me.leaving.get());
            kvOSExitSpecificThread(record, 3);
            return nullptr;
        },
        &self);
    kvOSSetEvent(self.known.get());
    kvOSWaitForEvent(self.leaving.get(), KVWAIT_FOREVER);
    std::uint32_t code = 7;
    while (kvOSGetExitCodeThread(self.record, &code) != 0) EXPECT_EQ(code, 1u);
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(self.record->fAlive, 0);
    EXPECT_EQ(kvOSCloseThread(self.record), 0u) << "detached already";
}

TEST(ExitSpecificThread, MayBeCalledWhileOthersAskAboutTheRecord) {
    for (int round = 0; round < 300; ++round) {
        std::atomic<kvOSThreadRec*> known = nullptr;
        kvOSThreadRec* const record = kvOSCreateThread(
            nullptr, 0,
            [](void* argument) -> void* {
                auto& self = *static_cast<std::atomic<kvOSThreadRec*>*>(argument);
                while (self.load() == nullptr) std::this_thread::yield();
                kvOSExitSpecificThread(self.load(), 3);
                return nullptr;
            },
            &known);
        ASSERT_NE(record, nullptr);
        const auto askUntilItHasLeft = [record] {
            std::uint32_t code = 7;
            while (kvOSGetExitCodeThread(record, &code) != 0) EXPECT_EQ(code, 1u) << "it never ends without leaving";
            EXPECT_EQ(code, 0u);
        };
        std::thread other(askUntilItHasLeft);
        known = record;
        askUntilItHasLeft();
        other.join();
        EXPECT_EQ(kvOSCloseThread(record), 0u);
    }
}

TEST(ExitCode, TwoWhoAskJoinAThreadOnce) {
    for (int round = 0; round < 300; ++round) {
        kvOSThreadRec* const record = kvOSCreateThread(
            nullptr, 0, [](void*) -> void* { return nullptr; }, nullptr);
        ASSERT_NE(record, nullptr);
        std::thread other(untilEnded, record);
        untilEnded(record);
        other.join();
        EXPECT_EQ(kvOSCloseThread(record), 0u);
    }
}

TEST(Placeholders, TerminatingLeavesTheThreadRunning) {
    IdleThread thread;
    EXPECT_EQ(kvOSTerminateThread(thread.record(), 1), 0u);
    EXPECT_TRUE(thread.isRunning());
    std::uint32_t code = 7;
    EXPECT_EQ(kvOSGetExitCodeThread(thread.record(), &code), 1u);
    EXPECT_EQ(code, 1u);
}

TEST(Placeholders, SuspendAndResumeDoNothing) {
    IdleThread thread;
    EXPECT_EQ(kvOSSuspendThread(), 0u);
    EXPECT_EQ(kvOSResumeThread(thread.record()), 0u);
    EXPECT_EQ(kvOSResumeThread(nullptr), 0u);
    EXPECT_TRUE(thread.isRunning());
}

TEST(Placeholders, AffinityReturnsTheMask) {
    IdleThread thread;
    cpu_set_t before;
    cpu_set_t after;
    ASSERT_EQ(pthread_getaffinity_np(thread.record()->thread, sizeof before, &before), 0);
    EXPECT_EQ(kvOSSetThreadAffinityMask(thread.record(), 0x8000000000000001), 0x8000000000000001u);
    ASSERT_EQ(pthread_getaffinity_np(thread.record()->thread, sizeof after, &after), 0);
    EXPECT_TRUE(CPU_EQUAL(&before, &after)) << "nothing is set";
    for (kvOSThreadRec* const none : kNoThreads) EXPECT_EQ(kvOSSetThreadAffinityMask(none, 1), 0u);
}

TEST(Placeholders, BoostIsAccepted) {
    IdleThread thread;
    EXPECT_EQ(kvOSSetThreadPriorityBoost(thread.record()), 1u);
    for (kvOSThreadRec* const none : kNoThreads) EXPECT_EQ(kvOSSetThreadPriorityBoost(none), 0u);
}

TEST(Placeholders, CurrentThreadIsAFixedValueThatNamesNone) {
    EXPECT_EQ(kvOSGetCurrentThread(), kAllOnes);
    EXPECT_EQ(kvOSSetThreadPriority(kvOSGetCurrentThread(), 0), 0u);
}

TEST(CurrentProcess, IsItsNumber) {
    EXPECT_EQ(kvOSGetCurrentProcess(), getpid());
    EXPECT_EQ(kvOSGetCurrentProcessId(), getpid());
}

}  // namespace
