// The load and the number of processors, on machines that the tests describe.
#include <cstdint>
#include <gtest/gtest.h>

#include "kvos/machine.h"
#include "support/captured_messages.h"
#include "system/told_machine.h"

namespace {

using kvtest::machine;

std::uint32_t loadAt(std::uint64_t busy, std::uint64_t idle) {
    machine().ticks = {busy, idle};
    return GetCpuUsage();
}

TEST(ProcessorLoad, FirstCallMeasuresSinceTheStartOfTheMachine) { EXPECT_EQ(loadAt(250, 750), 25u); }

TEST(ProcessorLoad, LaterCallsMeasureSinceTheLast) {
    EXPECT_EQ(loadAt(250, 750), 25u);
    EXPECT_EQ(loadAt(340, 760), 90u);
    EXPECT_EQ(loadAt(340, 860), 0u);
    EXPECT_EQ(loadAt(440, 860), 100u);
}

TEST(ProcessorLoad, SecondCallWithoutATickGivesThirty) {
    EXPECT_EQ(loadAt(100, 0), 100u);
    EXPECT_EQ(loadAt(100, 0), 30u);
    EXPECT_EQ(loadAt(100, 0), 30u);
    EXPECT_EQ(loadAt(101, 3), 25u);
}

TEST(ProcessorLoad, MachineWithoutATickIsIdleOnceAndThenTooSoonToMeasure) {
    EXPECT_EQ(loadAt(0, 0), 0u);
    EXPECT_EQ(loadAt(0, 0), 30u);
    EXPECT_EQ(loadAt(0, 1), 30u);  // the total of none counted as 1
}

TEST(ProcessorLoad, FractionsOfAPercentAreDropped) {
    EXPECT_EQ(loadAt(2, 1), 66u);
    EXPECT_EQ(loadAt(2, 1000), 0u);
}

TEST(ProcessorLoad, CountsBeyond32Bits) {
    const std::uint64_t many = std::uint64_t{1} << 40;
    EXPECT_EQ(loadAt(many, many * 3), 25u);
    EXPECT_EQ(loadAt(many + 50, many * 3 + 50), 50u);
}

TEST(ProcessorLoad, CountThatFallsIsNoLoad) {
    EXPECT_EQ(loadAt(1000, 1000), 50u);
    EXPECT_EQ(loadAt(1000, 990), 0u);
    EXPECT_EQ(loadAt(1010, 1000), 50u);
    EXPECT_EQ(loadAt(1005, 1100), 0u);  // the busy ones alone
    EXPECT_EQ(loadAt(1004, 900), 0u);
}

TEST(ProcessorLoad, IsNoMoreThanAllThereIs) {
    EXPECT_EQ(loadAt(2000, 2000), 50u);
    EXPECT_EQ(loadAt(2003, 1998), 100u);  // the idle ones fell
}

TEST(ProcessorLoad, AllThreeCallsShareTheOneLastCall) {
    EXPECT_EQ(loadAt(10, 90), 10u);
    machine().ticks = {60, 140};
    EXPECT_EQ(GetCpuUsageProc(), 50u);
    EXPECT_EQ(GetSystemCpuUsage(), 30u);
    machine().ticks = {80, 140};
    EXPECT_EQ(GetSystemCpuUsage(), 100u);
    EXPECT_EQ(GetCpuUsage(), 30u);
}

TEST(ProcessorLoad, ErrorNumberIsTheResultAndLeavesTheLastCallAsItWas) {
    EXPECT_EQ(loadAt(50, 50), 50u);
    machine().ticksError = 5;
    EXPECT_EQ(loadAt(150, 50), 5u);
    machine().ticksError = 0;
    EXPECT_EQ(loadAt(150, 50), 100u);
}

struct Count {
    std::uint32_t processors;
    std::uint32_t cores;
    std::uint32_t logical;
};

TEST(ProcessorCount, CoresAreHalfFromFourOnAndNoCountIsAbove24) {
    constexpr Count kCounts[]{{1, 1, 1},    {2, 2, 2},    {3, 3, 3},    {4, 2, 4},    {5, 2, 5},    {8, 4, 8},
                              {24, 12, 24}, {25, 12, 24}, {48, 24, 24}, {50, 24, 24}, {64, 24, 24}, {0, 0, 0}};
    for (const Count& count : kCounts) {
        machine().processors = count.processors;
        EXPECT_EQ(kvOSGetNumCpu(0), count.cores) << count.processors;
        EXPECT_EQ(kvOSGetNumCpu(1), count.logical) << count.processors;
    }
}

TEST(ProcessorCount, OnlyTheLowestBitOfTheFlagCounts) {
    machine().processors = 8;
    EXPECT_EQ(kvOSGetNumCpu(2), 4u);
    EXPECT_EQ(kvOSGetNumCpu(0xFFFFFFFE), 4u);
    EXPECT_EQ(kvOSGetNumCpu(3), 8u);
}

TEST(ProcessorCount, IsTwoWhereTheSystemDoesNotTell) {
    EXPECT_EQ(kvOSGetNumCpu(0), 2u);
    EXPECT_EQ(kvOSGetNumCpu(1), 2u);
}

TEST(ProcessorCount, FirstCallReportsBothCountsAndAMemoryThatIsNotMeasured) {
    machine().processors = 8;
    machine().totalMemory = std::uint64_t{64} << 30;
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSGetNumCpu(1), 8u);
    EXPECT_EQ(messages.count("CPU:  Actual Cores=4, Virtual Cores=8 Physical Memory : 2.00 Gb"), 1u) << messages.text();
    EXPECT_EQ(kvOSGetNumCpu(0), 4u);
    EXPECT_EQ(messages.count("CPU:"), 1u);
}

}  // namespace
