// The one lock around OpenGL work. Each test is a process of its own, so each meets the lock unmade.
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "kvos/sync.h"

namespace {

TEST(OpenGLLock, UnlockingBeforeAnyLockIsHarmless) {
    kvOSUnlockOpenGL();
    EXPECT_EQ(fOpenGLCriticalSecontionInitialized, 0u);
    EXPECT_EQ(kvOSLockOpenGL(), 0);
    kvOSUnlockOpenGL();
}

TEST(OpenGLLock, FirstLockSetsTheFlagForGood) {
    EXPECT_EQ(fOpenGLCriticalSecontionInitialized, 0u);
    EXPECT_EQ(kvOSLockOpenGL(), 0);
    EXPECT_EQ(fOpenGLCriticalSecontionInitialized, 1u);
    kvOSUnlockOpenGL();
    EXPECT_EQ(fOpenGLCriticalSecontionInitialized, 1u);
}

TEST(OpenGLLock, HoldingThreadLocksAgain) {
    EXPECT_EQ(kvOSLockOpenGL(), 0);
    EXPECT_EQ(kvOSLockOpenGL(), 0);
    kvOSUnlockOpenGL();
    kvOSUnlockOpenGL();
}

TEST(OpenGLLock, ThreadsExcludeEachOther) {
    kvOSLockOpenGL();
    int guarded = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5000; ++round) {
                kvOSLockOpenGL();
                ++guarded;
                kvOSUnlockOpenGL();
            }
        });
    }
    EXPECT_EQ(guarded, 0) << "held here since before the threads began";
    kvOSUnlockOpenGL();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(guarded, 40000);
}

}  // namespace
