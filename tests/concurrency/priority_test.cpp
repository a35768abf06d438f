// Priorities of the process and of threads. What only a privileged user may set is skipped where the system refuses.
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <thread>

#include "concurrency/owned_thread.h"
#include "concurrency/priority_range.h"
#include "errlog.h"
#include "file/ordinary_user.h"
#include "kvos/thread.h"
#include "support/captured_messages.h"

namespace {

using kvtest::CapturedMessages;
using kvtest::IdleThread;

bool mayRaisePriorities() {
    const int before = getpriority(PRIO_PROCESS, 0);
    const bool may = setpriority(PRIO_PROCESS, 0, -20) == 0;
    setpriority(PRIO_PROCESS, 0, before);
    return may;
}

int niceValue() { return getpriority(PRIO_PROCESS, 0); }

struct ClassRow {
    std::uint32_t priorityClass;
    int nice;
};

constexpr ClassRow kClasses[] = {
    {64, 18}, {96, 0},  {128, -10}, {160, 0}, {192, 0}, {224, 0},         {256, -18},
    {32, 0},  {0, 0},   {31, 0},    {65, 0},  {95, 0},  {129, 0},         {255, 0},
    {257, 0}, {288, 0}, {0x40, 18}, {512, 0}, {1, 0},   {0xFFFFFFE0u, 0}, {0xFFFFFFFFu, 0},
};

TEST(PriorityClass, SetsTheNiceValueOfTheTable) {
    if (!mayRaisePriorities()) GTEST_SKIP() << "the system refuses to raise priorities";
    for (const ClassRow& row : kClasses) {
        SCOPED_TRACE(row.priorityClass);
        ASSERT_EQ(setpriority(PRIO_PROCESS, 0, 5), 0);
        errno = EBADF;
        EXPECT_EQ(kvOSSetPriorityClass(kvOSGetCurrentProcess(), row.priorityClass), 1u);
        EXPECT_EQ(niceValue(), row.nice);
        EXPECT_EQ(errno, 0);
    }
}

TEST(PriorityClass, WhoseProcessIsNamedDoesNotMatter) {
    EXPECT_EQ(kvOSSetPriorityClass(-12345, KVPRIORITY_CLASS_IDLE), 1u);
    EXPECT_EQ(niceValue(), 18);
}

TEST(PriorityClass, ThatTheSystemRefusesIsTold) {
    gfReadReg = 1;  // the settings are not another user's to read
    CapturedMessages messages;
    EXPECT_TRUE(kvtest::trueAsOrdinaryUser([] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NICE, &none);
        return kvOSSetPriorityClass(0, 0x100) == 0 && errno == EACCES;
    }));
    EXPECT_EQ(messages.count("Unable to set priority class 0x00000100 = 0x0000000D (13) "), 1u) << messages.text();
}

TEST(PriorityClass, IsToldByTheNiceValue) {
    if (!mayRaisePriorities()) GTEST_SKIP() << "the system refuses to raise priorities";
    for (int nice = -20; nice <= 19; ++nice) {
        SCOPED_TRACE(nice);
        ASSERT_EQ(setpriority(PRIO_PROCESS, 0, nice), 0);
        const std::uint32_t expected = nice >= 18 ? 64 : nice <= -18 ? 256 : nice <= -10 ? 128 : 32;
        EXPECT_EQ(kvOSGetPriorityClass(0), expected);
        EXPECT_EQ(kvOSGetPriorityClass(kvOSGetCurrentProcess()), expected);
    }
}

TEST(PriorityClass, OfTheProcessIsThatOfItsMainThread) {
    std::uint32_t own = 0;
    std::uint32_t process = 0;
    std::thread([&] {
        kvOSSetPriorityClass(kvOSGetCurrentProcess(), KVPRIORITY_CLASS_IDLE);
        own = kvOSGetPriorityClass(0);
        process = kvOSGetPriorityClass(kvOSGetCurrentProcess());
    }).join();
    EXPECT_EQ(own, KVPRIORITY_CLASS_IDLE);
    EXPECT_EQ(process, KVPRIORITY_CLASS_NORMAL);
}

TEST(PriorityClass, OfAProcessThatIsNotThereIsNormal) { EXPECT_EQ(kvOSGetPriorityClass(0x7FFFFFFF), 32u); }

int systemPriorityOf(kvOSThreadRec* thread, int& policy) {
    sched_param parameters{};
    EXPECT_EQ(pthread_getschedparam(thread->thread, &policy, &parameters), 0);
    return parameters.sched_priority;
}

/// Whether first-in-first-out may be set here at all, found out without the library.
bool mayBeFirstInFirstOut() {
    IdleThread thread;
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_max(SCHED_FIFO);
    return pthread_setschedparam(thread.record()->thread, SCHED_FIFO, &parameters) == 0;
}

/// A policy of the host's for a scope.
class PolicyFor {
public:
    explicit PolicyFor(std::int32_t policy) { nProcessPolicy = policy; }
    ~PolicyFor() { nProcessPolicy = before_; }
    PolicyFor(const PolicyFor&) = delete;
    PolicyFor& operator=(const PolicyFor&) = delete;

private:
    const std::int32_t before_ = nProcessPolicy;
};

TEST(ThreadPriority, PolicyIsKnownAsFour) { EXPECT_EQ(nProcessPolicy, 4); }

// Where there is a time constraint (macOS), it is from here on that a thread gets one.
static_assert(!kv::concurrency::isTimeConstrained(4) && kv::concurrency::isTimeConstrained(5));
static_assert(!kv::concurrency::isTimeConstrained(-15) && kv::concurrency::isTimeConstrained(15));

TEST(ThreadPriority, LowestMiddleAndHighestComeBack) {
    if (!mayBeFirstInFirstOut()) GTEST_SKIP() << "the system refuses first-in-first-out scheduling";
    const int minimum = sched_get_priority_min(SCHED_FIFO);
    const int maximum = sched_get_priority_max(SCHED_FIFO);
    IdleThread thread;
    int policy = 0;
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), -15), 1u);
    EXPECT_EQ(systemPriorityOf(thread.record(), policy), minimum);
    EXPECT_EQ(policy, SCHED_FIFO);
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), -15);
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), 0), 1u);
    EXPECT_EQ(systemPriorityOf(thread.record(), policy), minimum + (maximum - minimum) / 2);
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 0);
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), 15), 1u);
    EXPECT_EQ(systemPriorityOf(thread.record(), policy), maximum);
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 15);
}

#ifdef SCHED_RESET_ON_FORK
TEST(ThreadPriority, IsToldWhereChildrenDoNotInheritThePolicy) {
    if (!mayBeFirstInFirstOut()) GTEST_SKIP() << "the system refuses first-in-first-out scheduling";
    IdleThread thread;
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_max(SCHED_FIFO);
    ASSERT_EQ(pthread_setschedparam(thread.record()->thread, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters), 0);
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 15);
}
#endif

TEST(ThreadPriority, SharesAreRoundedDownBothWays) {
    if (!mayBeFirstInFirstOut()) GTEST_SKIP() << "the system refuses first-in-first-out scheduling";
    const int minimum = sched_get_priority_min(SCHED_FIFO);
    const int width = sched_get_priority_max(SCHED_FIFO) - minimum;
    IdleThread thread;
    for (int share = -15; share <= 15; ++share) {
        SCOPED_TRACE(share);
        const int steps = width * (share + 15) / 30;
        int policy = 0;
        EXPECT_EQ(kvOSSetThreadPriority(thread.record(), share), 1u);
        EXPECT_EQ(systemPriorityOf(thread.record(), policy), minimum + steps);
        EXPECT_EQ(policy, SCHED_FIFO);
        EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 30 * steps / width - 15);
    }
}

TEST(ThreadPriority, OtherPoliciesAreTheSystemsOwnNumbers) {
    const PolicyFor other(SCHED_OTHER);
    IdleThread thread;
    // With one priority only every share is that one, and is told as the middle.
    ASSERT_EQ(sched_get_priority_min(SCHED_OTHER), sched_get_priority_max(SCHED_OTHER));
    int policy = -1;
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), 15), 1u);
    EXPECT_EQ(systemPriorityOf(thread.record(), policy), sched_get_priority_min(SCHED_OTHER));
    EXPECT_EQ(policy, SCHED_OTHER);
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 0);
}

TEST(ThreadPriority, OfANewThreadIsTheMiddle) {
    CapturedMessages messages;
    IdleThread thread;
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 0);
    EXPECT_EQ(messages.text(), "");
}

TEST(ThreadPriority, OutsideItsRangeIsRefused) {
    IdleThread thread;
    CapturedMessages messages;
    for (const std::int32_t priority : {-16, 16, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(kvOSSetThreadPriority(thread.record(), priority), 0u);
    }
    EXPECT_EQ(messages.count("Unable to set thread priority = 0x00000016 (22) "), 4u) << messages.text();
}

TEST(ThreadPriority, OfAPolicyThatTheSystemDoesNotKnowIsRefused) {
    const PolicyFor unknown(77);
    IdleThread thread;
    CapturedMessages messages;
    errno = 4711;
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), 0), 0u);
    EXPECT_EQ(errno, 4711);
    EXPECT_EQ(messages.count("Unable to set thread priority = 0x00000016 (22) "), 1u) << messages.text();
}

TEST(ThreadPriority, ThatTheSystemRefusesIsTold) {
    gfReadReg = 1;  // the settings are not another user's to read
    CapturedMessages messages;
    EXPECT_TRUE(kvtest::trueAsOrdinaryUser([] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_RTPRIO, &none);
        IdleThread thread;
        errno = 4711;
        return kvOSSetThreadPriority(thread.record(), 0) == 0 && errno == 4711;
    }));
    EXPECT_EQ(messages.count("Unable to set thread priority = 0x00000001 (1) "), 1u) << messages.text();
}

TEST(ThreadPriority, OfAThreadThatHasGoneIsRefusedInTheSameWords) {
    IdleThread thread;
    thread.end();
    CapturedMessages messages;
    EXPECT_EQ(kvOSGetThreadPriority(thread.record()), 0);
    EXPECT_EQ(messages.count("Unable to set thread priority = 0x00000003 (3) "), 1u) << messages.text();
    EXPECT_EQ(kvOSSetThreadPriority(thread.record(), 0), 0u);
    EXPECT_EQ(messages.count("Unable to set thread priority = 0x00000003 (3) "), 2u) << messages.text();
}

TEST(ThreadPriority, OfNoThreadIsNothing) {
    CapturedMessages messages;
    for (kvOSThreadRec* const none : {static_cast<kvOSThreadRec*>(nullptr), kvOSGetCurrentThread()}) {
        EXPECT_EQ(kvOSSetThreadPriority(none, 0), 0u);
        EXPECT_EQ(kvOSGetThreadPriority(none), 0);
    }
    EXPECT_EQ(messages.text(), "");
}

}  // namespace
