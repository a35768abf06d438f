// Semaphores: counts and their bounds; no call of theirs ever blocks.
#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "kvos/memory.h"
#include "kvos/sync.h"

namespace {

constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

struct EndSemaphore {
    void operator()(kvOSSemaphoreRec* semaphore) const {
        kvOSCloseSemaphore(semaphore);
        KVFree(semaphore);
    }
};
using Semaphore = std::unique_ptr<kvOSSemaphoreRec, EndSemaphore>;

Semaphore makeSemaphore(std::int64_t initial, std::int64_t maximum) {
    return Semaphore(kvOSCreateSemaphore(nullptr, initial, maximum));
}

TEST(Semaphore, StoresItsCountsAsGiven) {
    const Semaphore usual = makeSemaphore(3, 7);
    EXPECT_EQ(usual->nCount, 3);
    EXPECT_EQ(usual->nMaximum, 7);
    const Semaphore odd = makeSemaphore(-1, -2);
    EXPECT_EQ(odd->nCount, -1);
    EXPECT_EQ(odd->nMaximum, -2);
}

TEST(Semaphore, WaitTakesOneUntilNoneIsLeftAndDoesNotBlock) {
    const Semaphore semaphore = makeSemaphore(2, 7);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 0u);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 0u);
    EXPECT_EQ(semaphore->nCount, 0);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 258u);
    EXPECT_EQ(semaphore->nCount, 0);
}

TEST(Semaphore, ANegativeCountIsTakenFromLikeAnyOtherThatIsNotZero) {
    const Semaphore semaphore = makeSemaphore(-2, 7);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 0u);
    EXPECT_EQ(semaphore->nCount, -3);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 3), 1u);
    EXPECT_EQ(semaphore->nCount, 0);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 258u);
}

TEST(Semaphore, WaitHoldsNoLock) {
    const Semaphore semaphore = makeSemaphore(1, 7);
    pthread_mutex_lock(&semaphore->mutex);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 0u);
    pthread_mutex_unlock(&semaphore->mutex);
}

TEST(Semaphore, ReleasingAFullOneLeavesItAlone) {
    const Semaphore semaphore = makeSemaphore(7, 7);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 1), 0u);
    EXPECT_EQ(semaphore->nCount, 7);
    const Semaphore above = makeSemaphore(9, 7);
    EXPECT_EQ(kvOSReleaseSemaphore(above.get(), 1), 0u);
    EXPECT_EQ(above->nCount, 9);
}

TEST(Semaphore, ReleasingMoreThanThereIsRoomForFillsIt) {
    const Semaphore semaphore = makeSemaphore(5, 7);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 5), 1u);
    EXPECT_EQ(semaphore->nCount, 7);
    EXPECT_EQ(kvOSWaitForSingleSemaphore(semaphore.get()), 0u);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), kHighest), 1u) << "the sum alone would not fit";
    EXPECT_EQ(semaphore->nCount, 7);
}

TEST(Semaphore, ReleasingRaisesTheCount) {
    const Semaphore semaphore = makeSemaphore(0, 7);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 1), 1u);
    EXPECT_EQ(semaphore->nCount, 1);
    EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 4), 1u);
    EXPECT_EQ(semaphore->nCount, 5);
}

TEST(Semaphore, ReleasingLessThanOneDoesNothing) {
    const Semaphore semaphore = makeSemaphore(3, 7);
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), count), 0u);
        EXPECT_EQ(semaphore->nCount, 3);
    }
}

TEST(Semaphore, NoneCanBeOpened) { EXPECT_EQ(kvOSOpenSemaphore(0x1F0003, 1, "name"), nullptr); }

TEST(Semaphore, ClosingLeavesTheRecord) {
    kvOSSemaphoreRec* const semaphore = kvOSCreateSemaphore(nullptr, 3, 7);
    EXPECT_EQ(kvOSCloseSemaphore(semaphore), 0u);
    EXPECT_EQ(semaphore->nCount, 3);
    EXPECT_EQ(semaphore->nMaximum, 7);
    KVFree(semaphore);
}

TEST(Semaphore, NoSemaphoreIsRefused) {
    for (kvOSSemaphoreRec* const none :
         {static_cast<kvOSSemaphoreRec*>(nullptr), reinterpret_cast<kvOSSemaphoreRec*>(~std::uintptr_t{0})}) {
        EXPECT_EQ(kvOSCloseSemaphore(none), 0u);
        EXPECT_EQ(kvOSWaitForSingleSemaphore(none), 258u);
        EXPECT_EQ(kvOSReleaseSemaphore(none, 1), 0u);
    }
}

TEST(Semaphore, ThreadsTakeAsManyAsWereReleased) {
    constexpr int kThreads = 4;
    constexpr int kEach = 5000;
    const Semaphore semaphore = makeSemaphore(0, kThreads * kEach);
    std::atomic<int> taken = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < kEach; ++k) EXPECT_EQ(kvOSReleaseSemaphore(semaphore.get(), 1), 1u);
        });
        threads.emplace_back([&] {
            while (taken < kThreads * kEach) {
                if (kvOSWaitForSingleSemaphore(semaphore.get()) == KVWAIT_SIGNALLED) {
                    ++taken;
                } else {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(taken, kThreads * kEach);
    EXPECT_EQ(semaphore->nCount, 0);
}

}  // namespace
