// The feature word, and which routine is selected by it: by a build without the signal primitives at the first call of
// 128 bytes or more, by one with them never. Each test is a process of its own, so each begins with nothing selected.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "kvos/memory.h"

namespace {

using Bytes = std::vector<unsigned char>;

TEST(FeatureWord, IsAConstantStoredOnDemand) {
    EXPECT_EQ(CPUFeatureFlagsIntern, 0u);
    EXPECT_EQ(CPUFeatureFlags(), 25207u);
    EXPECT_EQ(CPUFeatureFlagsIntern, 0x6277u);
}

TEST(FeatureWord, OfAHostIsKeptUntilSetUpAnew) {
    CPUFeatureFlagsIntern = 5;
    EXPECT_EQ(CPUFeatureFlags(), 5u);
    CPUSetupFeatureFlag();
    EXPECT_EQ(CPUFeatureFlags(), 25207u);
}

void callAll(std::uint64_t bytes) {
    const Bytes source(bytes, 1);
    Bytes destination(bytes + 4);
    kvOSCopyMemory(destination.data(), source.data(), bytes);
    CopyMemoryFast(destination.data(), source.data(), bytes);
    ZeroMemoryFast(destination.data(), bytes);
    SetMemoryFast(destination.data(), 1, bytes);
}

#ifdef KVUTIL_TESTS_WITH_SIGNAL_PRIMITIVES

TEST(Selection, IsNeverMadeWithTheSignalPrimitives) {
    for (const std::uint32_t word : {0u, 0x20u, 0x80u, 0x2000u, 0x2080u, 0x6277u}) {
        CPUFeatureFlagsIntern = word;
        callAll(64);
        callAll(128);
        callAll(100000);
    }
    EXPECT_EQ(pfcnCopyMemoryFast, nullptr);
    EXPECT_EQ(pfcnSetMemoryFast, nullptr);
    EXPECT_EQ(pfcnZeroMemoryFast, nullptr);
}

#else

struct Choice {
    std::uint32_t word;
    kvOSCopyRoutine copy;
    kvOSZeroRoutine zero;
    kvOSSetRoutine set;
};

class Selections : public ::testing::TestWithParam<Choice> {};

TEST_P(Selections, FollowTheWord) {
    CPUFeatureFlagsIntern = GetParam().word;
    callAll(128);
    EXPECT_EQ(pfcnCopyMemoryFast, GetParam().copy);
    EXPECT_EQ(pfcnZeroMemoryFast, GetParam().zero);
    EXPECT_EQ(pfcnSetMemoryFast, GetParam().set);
    EXPECT_EQ(CPUFeatureFlagsIntern, GetParam().word) << "selecting does not set the word up";
}

INSTANTIATE_TEST_SUITE_P(Words, Selections,
                         ::testing::Values(Choice{0, CopyMemoryDword, ZeroMemoryDword, SetMemoryDword},
                                           Choice{0x20, CopyMemoryMMX, ZeroMemoryMMX, SetMemoryMMX},
                                           Choice{0x80, CopyMemoryAMD, ZeroMemoryDword, SetMemoryDword},
                                           Choice{0xA0, CopyMemoryAMD, ZeroMemoryMMX, SetMemoryMMX},
                                           Choice{0x2000, CopyMemorySSE, ZeroMemoryDword, SetMemoryDword},
                                           Choice{0x2020, CopyMemorySSE, ZeroMemoryMMX, SetMemoryMMX},
                                           Choice{0x2080, CopyMemoryAMD_OPT, ZeroMemoryDword, SetMemoryDword},
                                           Choice{0x20A0, CopyMemoryAMD_OPT, ZeroMemoryMMX, SetMemoryMMX},
                                           Choice{0x6277, CopyMemorySSE, ZeroMemoryMMX, SetMemoryMMX}));

TEST(Selection, IsNotMadeBelow128Bytes) {
    callAll(127);
    EXPECT_EQ(pfcnCopyMemoryFast, nullptr);
    EXPECT_EQ(pfcnZeroMemoryFast, nullptr);
    EXPECT_EQ(pfcnSetMemoryFast, nullptr);
}

TEST(Selection, IsKeptWhenTheWordChanges) {
    callAll(128);
    CPUFeatureFlagsIntern = 0x20A0;
    callAll(128);
    EXPECT_EQ(pfcnCopyMemoryFast, CopyMemoryDword);
    EXPECT_EQ(pfcnZeroMemoryFast, ZeroMemoryDword);
    EXPECT_EQ(pfcnSetMemoryFast, SetMemoryDword);
}

TEST(Selection, OfSeveralThreadsAtOnceIsOne) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([] { callAll(1000); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(pfcnCopyMemoryFast, CopyMemoryDword);
}

// Routines of a host that leave the last ten, or the last eight, bytes for the caller.
int32_t copyAllButTen(void* destination, const void* source, uint64_t bytes) {
    std::memcpy(destination, source, bytes - 10);
    return 10;
}

int32_t zeroAllButTen(void* destination, uint64_t bytes) {
    std::memset(destination, 0, bytes - 10);
    return 10;
}

int32_t setAllButEight(void* destination, uint32_t value, uint64_t bytes) {
    SetMemoryDword(destination, value, bytes - 8);
    return 8;
}

TEST(Selection, WhatARoutineOfAHostLeavesIsFinished) {
    pfcnCopyMemoryFast = copyAllButTen;
    pfcnZeroMemoryFast = zeroAllButTen;
    pfcnSetMemoryFast = setAllButEight;
    const Bytes source(200, 1);
    Bytes destination(200, 2);
    EXPECT_EQ(kvOSCopyMemory(destination.data(), source.data(), 200), 0);
    EXPECT_EQ(destination, source);
    EXPECT_EQ(ZeroMemoryFast(destination.data(), 200), 0);
    EXPECT_EQ(destination, Bytes(200, 0));
    EXPECT_EQ(SetMemoryFast(destination.data(), 0x01010101, 200), 0);
    EXPECT_EQ(destination, source);
}

// Writes single bytes, so that the number left is no multiple of a word.
int32_t setAllButTen(void* destination, uint32_t value, uint64_t bytes) {
    std::memset(destination, static_cast<int>(value & 0xFF), bytes - 10);
    return 10;
}

TEST(Selection, AWordThatARoutineOfAHostLeavesInPartIsWrittenWhole) {
    pfcnSetMemoryFast = setAllButTen;
    Bytes destination(204, 2);
    EXPECT_EQ(SetMemoryFast(destination.data(), 0x01010101, 203), 0);
    Bytes expected(204, 1);
    for (std::size_t i = 200; i < expected.size(); ++i) expected[i] = 2;  // the remainder of the 203 bytes
    EXPECT_EQ(destination, expected);
}

int32_t setNothingAndClaimMore(void*, uint32_t, uint64_t bytes) { return static_cast<int32_t>(bytes + 1001); }

TEST(Selection, SetThatLeavesMoreThanThereIsGetsTheWholeBlockFinished) {
    pfcnSetMemoryFast = setNothingAndClaimMore;
    Bytes destination(204, 2);
    EXPECT_EQ(SetMemoryFast(destination.data(), 0x01010101, 200), 0);
    Bytes expected(204, 1);
    for (std::size_t i = 200; i < expected.size(); ++i) expected[i] = 2;
    EXPECT_EQ(destination, expected);
}

int32_t copyNothingAndClaimMore(void*, const void*, uint64_t bytes) { return static_cast<int32_t>(bytes + 1000); }

TEST(Selection, RoutineThatLeavesMoreThanThereIsGetsTheWholeBlockFinished) {
    pfcnCopyMemoryFast = copyNothingAndClaimMore;
    const Bytes source(200, 1);
    Bytes destination(200, 2);
    EXPECT_EQ(kvOSCopyMemory(destination.data(), source.data(), 200), 0);
    EXPECT_EQ(destination, source);
}

TEST(Selection, RoutineOfAHostIsNotUsedBelow128Bytes) {
    pfcnCopyMemoryFast = copyNothingAndClaimMore;
    const Bytes source(127, 1);
    Bytes destination(127, 2);
    kvOSCopyMemory(destination.data(), source.data(), 127);
    EXPECT_EQ(destination, source);
}

#endif

}  // namespace
