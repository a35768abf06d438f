// What threads and semaphores ask of the system, and what becomes of its answers.
//
// The system's calls on threads and conditions, KVAlloc and KVFree are replaced in this program; the library finds
// these first. No thread is ever started here, and nobody waits.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <stdexcept>
#include <unistd.h>
#include <vector>

#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/thread.h"

namespace {

struct System {
    // its answers
    int create = 0;
    bool refusesOtherStacks = false;  // create says EINVAL unless the stack is of the default size
    int detach = 0;
    int kill = 0;
    int scheduling = 0;
    bool throwsInJoin = false;
    // what it was asked
    std::vector<std::size_t> stacks;  // of the starts
    int detached = 0;
    int killed = 0;
    int scheduled = 0;
    int joined = 0;
    int yields = 0;
    int signals = 0;
    int broadcasts = 0;
    int unlockedWakes = 0;  // that came without the semaphore's lock
    int mutexesDestroyed = 0;
    int conditionsDestroyed = 0;
    int blocks = 0;  // allocated and not freed

    pthread_mutex_t* lock = nullptr;  // of the semaphore under test
};
System scripted;

std::size_t usualStack() {
    pthread_attr_t attributes;
    std::size_t size = 0;
    pthread_attr_init(&attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
    return size;
}

int wake(int& counter) {
    ++counter;
    if (scripted.lock == nullptr || pthread_mutex_trylock(scripted.lock) == EBUSY) return 0;
    ++scripted.unlockedWakes;
    pthread_mutex_unlock(scripted.lock);
    return 0;
}

}  // namespace

// Seen by the library as well, whatever visibility the program is compiled with.
#pragma GCC visibility push(default)
extern "C" {

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*)(void*), void*) noexcept {
    std::size_t stack = 0;
    pthread_attr_getstacksize(attributes, &stack);
    scripted.stacks.push_back(stack);
    *thread = pthread_self();
    if (scripted.refusesOtherStacks && stack != usualStack()) return EINVAL;
    return scripted.create;
}
int pthread_detach(pthread_t) noexcept {
    ++scripted.detached;
    return scripted.detach;
}
int pthread_kill(pthread_t, int signal) noexcept {
    EXPECT_EQ(signal, 0);
    ++scripted.killed;
    return scripted.kill;
}
int pthread_getschedparam(pthread_t, int*, sched_param*) noexcept {
    ++scripted.scheduled;
    return scripted.scheduling;
}
int pthread_join(pthread_t, void**) {
    ++scripted.joined;
    if (scripted.throwsInJoin) throw std::runtime_error("not joined");
    return 0;
}
int sched_yield() noexcept {
    ++scripted.yields;
    return 0;
}
int pthread_cond_signal(pthread_cond_t*) noexcept { return wake(scripted.signals); }
int pthread_cond_broadcast(pthread_cond_t*) noexcept { return wake(scripted.broadcasts); }
int pthread_mutex_destroy(pthread_mutex_t*) noexcept {
    ++scripted.mutexesDestroyed;
    return 0;
}
int pthread_cond_destroy(pthread_cond_t*) noexcept {
    ++scripted.conditionsDestroyed;
    return 0;
}

void* KVAlloc(uint32_t dwSize) {
    ++scripted.blocks;
    return std::malloc(dwSize);
}
void KVFree(void* pBlock) {
    if (pBlock != nullptr) --scripted.blocks;
    std::free(pBlock);
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

void* nothing(void*) { return nullptr; }

class ThreadCalls : public testing::Test {
protected:
    void SetUp() override { scripted = {}; }

    struct Answer {
        std::uint32_t result;
        std::uint32_t code;
        bool operator==(const Answer&) const = default;
    };
    static Answer exitCode(kvOSThreadRec* thread) {
        Answer answer{7, 7};
        answer.result = kvOSGetExitCodeThread(thread, &answer.code);
        return answer;
    }
};

TEST_F(ThreadCalls, AThreadThatCanNotBeStartedLeavesNoRecord) {
    scripted.create = EAGAIN;
    errno = 0;
    EXPECT_EQ(kvOSCreateThread(nullptr, 0, nothing, nullptr), nullptr);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(scripted.stacks, std::vector{usualStack()}) << "once";
    EXPECT_EQ(scripted.blocks, 0);
}

TEST_F(ThreadCalls, AStackIsRoundedUpToWholePages) {
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    for (const std::uint64_t size : {100 * page - 1, 100 * page, 100 * page + 1}) {
        scripted.stacks.clear();
        kvOSCloseThread(kvOSCreateThread(nullptr, size, nothing, nullptr));
        EXPECT_EQ(scripted.stacks, std::vector<std::size_t>{(size + page - 1) / page * page});
    }
    scripted.stacks.clear();
    kvOSCloseThread(kvOSCreateThread(nullptr, ~std::uint64_t{0}, nothing, nullptr));
    EXPECT_EQ(scripted.stacks, std::vector<std::size_t>{~std::uint64_t{0} / page * page});
}

TEST_F(ThreadCalls, AStackThatIsRefusedAsTooSmallByTheStartBecomesTheDefault) {
    scripted.refusesOtherStacks = true;
    constexpr std::size_t kSmall = std::size_t{1} << 20;  // more than the least of any processor
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, kSmall, nothing, nullptr);
    EXPECT_NE(thread, nullptr);
    EXPECT_EQ(scripted.stacks, (std::vector<std::size_t>{kSmall, usualStack()}));
    kvOSCloseThread(thread);
}

TEST_F(ThreadCalls, AStackThatIsRefusedAndLargerThanTheDefaultIsAFailure) {
    scripted.refusesOtherStacks = true;
    EXPECT_EQ(kvOSCreateThread(nullptr, 2 * usualStack(), nothing, nullptr), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(scripted.stacks, std::vector{2 * usualStack()});
    EXPECT_EQ(scripted.blocks, 0);
}

TEST_F(ThreadCalls, ClosingDetachesAndFrees) {
    EXPECT_EQ(kvOSCloseThread(kvOSCreateThread(nullptr, 0, nothing, nullptr)), 1u);
    EXPECT_EQ(scripted.detached, 1);
    EXPECT_EQ(scripted.joined, 0);
    EXPECT_EQ(scripted.blocks, 0);
    scripted.detach = EINVAL;
    EXPECT_EQ(kvOSCloseThread(kvOSCreateThread(nullptr, 0, nothing, nullptr)), 0u);
    EXPECT_EQ(scripted.detached, 2);
    EXPECT_EQ(scripted.blocks, 0) << "freed all the same";
}

TEST_F(ThreadCalls, AThreadThatTheSystemDoesNotFindHasCodeZero) {
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, nothing, nullptr);
    scripted.kill = ESRCH;
    EXPECT_EQ(exitCode(thread), (Answer{1, 0}));
    EXPECT_EQ(scripted.scheduled + scripted.joined, 0) << "nothing more is asked";
    kvOSCloseThread(thread);
}

TEST_F(ThreadCalls, AnyAnswerButNoSuchThreadIsARunningThread) {
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, nothing, nullptr);
    for (const int answer : {0, EPERM, EINVAL, -1}) {
        scripted.scheduling = answer;
        EXPECT_EQ(exitCode(thread), (Answer{1, 1})) << answer;
    }
    EXPECT_EQ(scripted.joined, 0);
    kvOSCloseThread(thread);
}

TEST_F(ThreadCalls, AThreadThatHasEndedIsJoinedOnceAndNotAskedAboutAgain) {
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, nothing, nullptr);
    scripted.scheduling = ESRCH;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(exitCode(thread), (Answer{1, 0}));
    EXPECT_EQ(scripted.joined, 1);
    EXPECT_EQ(scripted.killed, 1);
    EXPECT_EQ(kvOSCloseThread(thread), 0u);
    EXPECT_EQ(scripted.detached, 0);
    EXPECT_EQ(scripted.blocks, 0);
}

TEST_F(ThreadCalls, AnExceptionInTheseCallsIsCodeZero) {
    kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, nothing, nullptr);
    scripted.scheduling = ESRCH;
    scripted.throwsInJoin = true;
    EXPECT_EQ(exitCode(thread), (Answer{1, 0}));
    scripted.throwsInJoin = false;
    EXPECT_EQ(exitCode(thread), (Answer{1, 0})) << "the thread may be asked about again";
    EXPECT_EQ(scripted.joined, 2);
    kvOSCloseThread(thread);
}

TEST_F(ThreadCalls, SuspendingYieldsOnce) {
    EXPECT_EQ(kvOSSuspendThread(), 0u);
    EXPECT_EQ(scripted.yields, 1);
}

class SemaphoreCalls : public testing::Test {
protected:
    void SetUp() override {
        scripted = {};
        semaphore_ = kvOSCreateSemaphore(nullptr, 0, 10);
        scripted.lock = &semaphore_->mutex;
    }
    void TearDown() override { KVFree(semaphore_); }

    kvOSSemaphoreRec* semaphore_ = nullptr;
};

TEST_F(SemaphoreCalls, ReleasingOneSignalsUnderTheLock) {
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore_, 1), 1u);
    EXPECT_EQ(scripted.signals, 1);
    EXPECT_EQ(scripted.broadcasts, 0);
    EXPECT_EQ(scripted.unlockedWakes, 0);
    EXPECT_EQ(pthread_mutex_trylock(&semaphore_->mutex), 0) << "unlocked";
    pthread_mutex_unlock(&semaphore_->mutex);
}

TEST_F(SemaphoreCalls, ReleasingMoreBroadcastsUnderTheLock) {
    for (const std::int64_t count : {2, 5, 100}) EXPECT_EQ(kvOSReleaseSemaphore(semaphore_, count), 1u);
    EXPECT_EQ(scripted.broadcasts, 3);
    EXPECT_EQ(scripted.signals, 0);
    EXPECT_EQ(scripted.unlockedWakes, 0);
}

TEST_F(SemaphoreCalls, AReleaseThatRaisesNothingWakesNobody) {
    semaphore_->nCount = 10;
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore_, 1), 0u);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore_, 2), 0u);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore_, 0), 0u);
    EXPECT_EQ(scripted.signals + scripted.broadcasts, 0);
}

TEST_F(SemaphoreCalls, ClosingDestroysLockAndConditionAndKeepsTheRecord) {
    EXPECT_EQ(kvOSCloseSemaphore(semaphore_), 0u);
    EXPECT_EQ(scripted.mutexesDestroyed, 1);
    EXPECT_EQ(scripted.conditionsDestroyed, 1);
    EXPECT_EQ(scripted.blocks, 1);
}

}  // namespace
