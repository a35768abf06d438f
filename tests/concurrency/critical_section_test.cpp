// Critical sections and their scoped holder.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "kvos/sync.h"
#include "support/sanitizers.h"

namespace {

class Section {
public:
    Section() { EXPECT_EQ(kvOSInitializeCriticalSection(&section_), 0); }
    ~Section() { kvOSDeleteCriticalSection(&section_); }
    Section(const Section&) = delete;
    Section& operator=(const Section&) = delete;

    kvOSCriticalSection* get() { return &section_; }
    std::uint64_t depth() { return __atomic_load_n(&section_.qwCount, __ATOMIC_RELAXED); }

private:
    kvOSCriticalSection section_;
};

std::uint32_t tryFromAnotherThread(kvOSCriticalSection* section) {
    std::uint32_t taken = 7;
    std::thread([&] {
        taken = kvOSTryEnterCriticalSection(section);
        if (taken != 0) pthread_mutex_unlock(&section->mutex);
    }).join();
    return taken;
}

TEST(CriticalSection, InitialisingClearsWhatTheMemoryHeld) {
    kvOSCriticalSection section;
    std::memset(&section, 0xA5, sizeof section);
    EXPECT_EQ(kvOSInitializeCriticalSection(&section), 0);
    EXPECT_EQ(section.qwCount, 0u);
    EXPECT_TRUE(pthread_equal(section.owner, pthread_self()));
    EXPECT_EQ(kvOSDeleteCriticalSection(&section), 0);
}

TEST(CriticalSection, HoldingThreadEntersAgain) {
    Section section;
    EXPECT_EQ(kvOSEnterCriticalSection(section.get()), 0);
    EXPECT_EQ(kvOSEnterCriticalSection(section.get()), 0);
    EXPECT_EQ(section.depth(), 2u);
    EXPECT_EQ(kvOSLeaveCriticalSection(section.get()), 0);
    EXPECT_EQ(tryFromAnotherThread(section.get()), 0u);
    EXPECT_EQ(kvOSLeaveCriticalSection(section.get()), 0);
    EXPECT_EQ(section.depth(), 0u);
    EXPECT_EQ(tryFromAnotherThread(section.get()), 1u);
}

TEST(CriticalSection, OwnerStaysTheInitialisingThread) {
    Section section;
    std::thread([&] {
        kvOSEnterCriticalSection(section.get());
        EXPECT_FALSE(pthread_equal(section.get()->owner, pthread_self()));
        kvOSLeaveCriticalSection(section.get());
    }).join();
    EXPECT_TRUE(pthread_equal(section.get()->owner, pthread_self()));
}

TEST(CriticalSection, TryingLeavesTheDepthSoThatALeaveMakesItOneTooLow) {
    Section section;
    kvOSEnterCriticalSection(section.get());
    EXPECT_EQ(kvOSTryEnterCriticalSection(section.get()), 1u);
    EXPECT_EQ(section.depth(), 1u);
    kvOSLeaveCriticalSection(section.get());
    EXPECT_EQ(section.depth(), 0u);
    EXPECT_EQ(tryFromAnotherThread(section.get()), 0u) << "the lock itself is still held once";
    kvOSLeaveCriticalSection(section.get());
    EXPECT_EQ(section.depth(), ~std::uint64_t{0});
    EXPECT_EQ(tryFromAnotherThread(section.get()), 1u);
}

TEST(CriticalSection, LeavingOneThatAnotherThreadHoldsIsRefusedButCounted) {
    if (kvtest::kThreadSanitizer) GTEST_SKIP() << "the thread sanitizer takes the misuse itself for a failure";
    Section section;
    kvOSEnterCriticalSection(section.get());
    std::thread([&] { EXPECT_EQ(kvOSLeaveCriticalSection(section.get()), EPERM); }).join();
    EXPECT_EQ(section.depth(), 0u);
    EXPECT_EQ(tryFromAnotherThread(section.get()), 0u);
    kvOSLeaveCriticalSection(section.get());
}

TEST(CriticalSection, NullIsRefused) {
    EXPECT_EQ(kvOSInitializeCriticalSection(nullptr), EINVAL);
    EXPECT_EQ(kvOSEnterCriticalSection(nullptr), EINVAL);
    EXPECT_EQ(kvOSLeaveCriticalSection(nullptr), EINVAL);
    EXPECT_EQ(kvOSTryEnterCriticalSection(nullptr), 0u);
    EXPECT_EQ(kvOSDeleteCriticalSection(nullptr), EINVAL);
}

TEST(CriticalSection, ThreadsExcludeEachOtherAndNoDepthIsLost) {
    Section section;
    std::uint64_t guarded = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5000; ++round) {
                kvOSEnterCriticalSection(section.get());
                kvOSEnterCriticalSection(section.get());
                ++guarded;
                kvOSLeaveCriticalSection(section.get());
                kvOSLeaveCriticalSection(section.get());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(guarded, 40000u);
    EXPECT_EQ(section.depth(), 0u);
}

TEST(AutoLock, HoldsForItsScope) {
    Section section;
    {
        const CDAutoLock held(section.get());
        EXPECT_EQ(section.depth(), 1u);
        {
            const CDAutoLock again(section.get());
            EXPECT_EQ(section.depth(), 2u);
        }
        EXPECT_EQ(tryFromAnotherThread(section.get()), 0u);
    }
    EXPECT_EQ(section.depth(), 0u);
    EXPECT_EQ(tryFromAnotherThread(section.get()), 1u);
}

TEST(AutoLock, OfNothingHoldsNothing) { const CDAutoLock held(nullptr); }

}  // namespace
