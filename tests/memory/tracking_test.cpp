// Tracked allocation. Each test is a process of its own, so each begins with nothing tracked.
//
// KVAlloc is wrapped here, so that a test can let the allocation of a record fail: the library finds this one first,
// because the program comes before its libraries when names are bound.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "dlist.h"
#include "errlog.h"
#include "kvos/memory.h"
#include "kvos/sync.h"
#include "support/captured_messages.h"

namespace {

/// The allocation, counted from 1, that finds no memory; 0 for none.
thread_local int failingAllocation = 0;

}  // namespace

void* KVAlloc(uint32_t dwSize) {
    static const auto real = reinterpret_cast<void* (*)(std::uint32_t)>(dlsym(RTLD_NEXT, "KVAlloc"));
    if (failingAllocation > 0 && --failingAllocation == 0) return nullptr;
    return real(dwSize);
}

namespace {

kvMemRecord* firstRecord() { return reinterpret_cast<kvMemRecord*>(d_ListHead(&dlMem)); }

std::string tagOf(const kvMemRecord& record) { return {record.tag, strnlen(record.tag, sizeof record.tag)}; }

class Tracking : public ::testing::Test {
protected:
    Tracking() { EXPECT_EQ(dbgzmMemInitTracking(), 1u); }
    ~Tracking() override { dbgzmMemQuitTracking(); }
};

TEST_F(Tracking, RecordHoldsBlockSizeAndTag) {
    void* block = _zmwAlloc(100, "frame store");
    ASSERT_NE(block, nullptr);
    std::memset(block, 0x5A, 100);
    ASSERT_EQ(d_ListCount(&dlMem), 1u);
    EXPECT_EQ(firstRecord()->block, block);
    EXPECT_EQ(firstRecord()->size, 100u);
    EXPECT_EQ(tagOf(*firstRecord()), "frame store");
}

TEST_F(Tracking, LastBlockIsFirstInTheList) {
    void* first = _zmwAlloc(1, "first");
    void* second = _zmwFixedAlloc(2, "second");
    EXPECT_EQ(firstRecord()->block, second);
    EXPECT_EQ(reinterpret_cast<kvMemRecord*>(d_ListTail(&dlMem))->block, first);
    EXPECT_EQ(d_ListCount(&dlFixed), 0u) << "fixed blocks are listed with all others";
}

TEST_F(Tracking, TagIsKeptCutAndUnterminated) {
    const std::string tag63(63, 'a');
    const std::string tag64(64, 'b');
    const std::string tag65(65, 'c');
    _zmwAlloc(1, tag63.c_str());
    EXPECT_EQ(firstRecord()->tag[63], '\0');
    _zmwAlloc(1, tag64.c_str());
    EXPECT_EQ(tagOf(*firstRecord()), tag64);
    _zmwAlloc(1, tag65.c_str());
    EXPECT_EQ(tagOf(*firstRecord()), std::string(64, 'c'));
}

TEST_F(Tracking, ShortTagIsFilledUpWithZeros) {
    _zmwAlloc(1, "x");
    for (std::size_t i = 1; i < sizeof firstRecord()->tag; ++i) EXPECT_EQ(firstRecord()->tag[i], '\0') << i;
    _zmwAlloc(1, nullptr);
    EXPECT_EQ(tagOf(*firstRecord()), "");
}

TEST_F(Tracking, FreeingClearsThePointerAndForgetsTheBlock) {
    void* first = _zmwAlloc(10, "a");
    void* second = _zmwAlloc(10, "b");
    void* third = _zmwAlloc(10, "c");
    EXPECT_EQ(_zmwFree(&second), 0);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(d_ListCount(&dlMem), 2u);
    EXPECT_EQ(_zmwFixedFree(&third), 0);
    EXPECT_EQ(third, nullptr);
    EXPECT_EQ(_zmwFree(&first), 0);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
}

TEST_F(Tracking, FreeingANullBlockChangesNothing) {
    _zmwAlloc(10, "held");
    void* none = nullptr;
    EXPECT_EQ(_zmwFree(&none), 0);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(_zmwFree(nullptr), 0);
    EXPECT_EQ(d_ListCount(&dlMem), 1u);
}

TEST_F(Tracking, BlockThatIsNotTrackedIsLeftAlone) {
    void* plain = KVAlloc(10);
    void* before = plain;
    EXPECT_EQ(_zmwFree(&plain), 0);
    EXPECT_EQ(plain, before);
    std::memset(plain, 1, 10);
    KVFree(plain);
}

TEST_F(Tracking, SizeBeyond32BitsIsRefusedAndToldWhole) {
    gdwOutputToStdDebug = 1;
    kvtest::CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(_zmwAlloc(std::uint64_t{1} << 32, "large"), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(messages.text(), "Error allocating 4294967296 bytes 12 0x0000000C");
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
}

TEST_F(Tracking, BlockThatCannotBeHadIsNotTracked) {
    failingAllocation = 1;
    EXPECT_EQ(_zmwAlloc(10, "none"), nullptr);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    EXPECT_EQ(csMem.qwCount, 0u);
}

TEST_F(Tracking, BlockWithoutARecordIsStillTheCallers) {
    failingAllocation = 2;
    void* block = _zmwAlloc(10, "alone");
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, 10);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    EXPECT_EQ(csMem.qwCount, 0u);
    KVFree(block);
}

TEST_F(Tracking, SetsUpBothListsAndBothLocks) {
    EXPECT_EQ(dlMem.flags, 256u);
    EXPECT_EQ(dlFixed.flags, 256u);
    for (kvOSCriticalSection* section : {&csMem, &csFixed}) {
        EXPECT_TRUE(pthread_equal(section->owner, pthread_self()));
        EXPECT_EQ(kvOSEnterCriticalSection(section), 0);
        EXPECT_EQ(kvOSEnterCriticalSection(section), 0);
        EXPECT_EQ(kvOSLeaveCriticalSection(section), 0);
        EXPECT_EQ(kvOSLeaveCriticalSection(section), 0);
    }
}

TEST_F(Tracking, CallsPassForAThreadThatHoldsTheLocks) {
    kvOSEnterCriticalSection(&csMem);
    d_ListLock(&dlMem);
    void* block = _zmwAlloc(10, "nested");
    EXPECT_EQ(_zmwFree(&block), 0);
    EXPECT_EQ(block, nullptr);
    d_ListUnLock(&dlMem);
    kvOSLeaveCriticalSection(&csMem);
}

TEST_F(Tracking, EndFreesWhatIsStillHeld) {
    // The address sanitizer's leak check is what proves that the blocks and the records are gone.
    for (int i = 0; i < 10; ++i) _zmwAlloc(100, "held");
    EXPECT_EQ(dbgzmMemQuitTracking(), 0);
    EXPECT_EQ(dlMem.flags, 0u);
    EXPECT_EQ(dlFixed.flags, 0u);
    EXPECT_EQ(dlMem.head, nullptr);
}

TEST_F(Tracking, AfterTheEndBlocksAreGivenButNotTracked) {
    dbgzmMemQuitTracking();
    void* block = _zmwAlloc(10, "late");
    void* before = block;
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    EXPECT_EQ(_zmwFree(&block), 0);
    EXPECT_EQ(block, before);
    KVFree(block);
    EXPECT_EQ(dbgzmMemQuitTracking(), 0) << "a second end is harmless";
}

TEST_F(Tracking, CanBeginAgain) {
    dbgzmMemQuitTracking();
    EXPECT_EQ(dbgzmMemInitTracking(), 1u);
    void* block = _zmwAlloc(10, "again");
    EXPECT_EQ(d_ListCount(&dlMem), 1u);
    _zmwFree(&block);
    EXPECT_EQ(block, nullptr);
}

TEST(TrackingNotBegun, BlocksAreGivenAndCannotBeFreedTracked) {
    void* block = _zmwAlloc(10, "early");
    void* before = block;
    ASSERT_NE(block, nullptr);
    dbgzmMemInitTracking();
    EXPECT_EQ(_zmwFree(&block), 0);
    EXPECT_EQ(block, before);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    KVFree(block);
    dbgzmMemQuitTracking();
}

std::uint32_t tryFromAnotherThread(kvOSCriticalSection& section) {
    std::uint32_t taken = 7;
    std::thread([&] {
        taken = kvOSTryEnterCriticalSection(&section);
        if (taken != 0) pthread_mutex_unlock(&section.mutex);
    }).join();
    return taken;
}

TEST(TrackingNotBegun, BothLocksAreUsableAndRecursive) {
    for (kvOSCriticalSection* section : {&csMem, &csFixed}) {
        ASSERT_EQ(kvOSTryEnterCriticalSection(section), 1u);
        EXPECT_EQ(kvOSTryEnterCriticalSection(section), 1u);
        EXPECT_EQ(tryFromAnotherThread(*section), 0u);
        pthread_mutex_unlock(&section->mutex);
        pthread_mutex_unlock(&section->mutex);
        EXPECT_EQ(tryFromAnotherThread(*section), 1u);
    }
}

TEST(TrackingNotBegun, ALockThatIsHeldOutlastsTheFirstTrackedCalls) {
    ASSERT_EQ(kvOSTryEnterCriticalSection(&csMem), 1u);
    ASSERT_EQ(kvOSEnterCriticalSection(&csFixed), 0);
    void* block = _zmwAlloc(10, "first");
    _zmwFree(&block);
    EXPECT_EQ(tryFromAnotherThread(csMem), 0u);
    EXPECT_EQ(csFixed.qwCount, 1u);
    EXPECT_EQ(tryFromAnotherThread(csFixed), 0u);
    pthread_mutex_unlock(&csMem.mutex);
    EXPECT_EQ(kvOSLeaveCriticalSection(&csFixed), 0);
    KVFree(block);
}

TEST(TrackingNotBegun, EndIsHarmless) { EXPECT_EQ(dbgzmMemQuitTracking(), 0); }

void allocateAndFreeOnEightThreads() {
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                std::vector<void*> blocks;
                for (std::uint64_t size = 1; size <= 8; ++size) blocks.push_back(_zmwAlloc(size, "thread"));
                for (void*& block : blocks) {
                    EXPECT_NE(block, nullptr);
                    _zmwFree(&block);
                    if (block != nullptr) KVFree(block);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(Tracking, ThreadsLoseNoBlock) {
    allocateAndFreeOnEightThreads();
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    EXPECT_EQ(csMem.qwCount, 0u);
}

TEST(TrackingNotBegun, ThreadsGetTheirBlocks) {
    allocateAndFreeOnEightThreads();
    EXPECT_EQ(csMem.qwCount, 0u);
}

}  // namespace
