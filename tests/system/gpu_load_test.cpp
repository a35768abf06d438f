// What is made of the figures of a graphics processor's driver.
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

#include "kvos/machine.h"
#include "support/captured_messages.h"
#include "system/told_machine.h"

namespace {

using kv::platform::GpuFigures;
using kvtest::machine;

std::uint32_t loadOf(const GpuFigures& figures) {
    machine().gpu = figures;
    const std::uint32_t load = getGpuUsageApple();
    EXPECT_EQ(GetGpuUsage(), load);
    return load;
}

TEST(GpuLoad, MachineWithoutAProcessorThatTellsIsUnknownAndSaysNothing) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(getGpuUsageApple(), 0xFFFFFFFFu);
    EXPECT_EQ(GetGpuUsage(), KVGPU_UNKNOWN);
    EXPECT_EQ(messages.text(), "");
}

TEST(GpuLoad, PercentagesAreTakenAsTheyAre) {
    EXPECT_EQ(loadOf({.coreUtilization = 0}), 0u);
    EXPECT_EQ(loadOf({.deviceUtilization = 37}), 37u);
    EXPECT_EQ(loadOf({.activity = 100}), 100u);
}

TEST(GpuLoad, FigureLookedForLaterCountsMore) {
    EXPECT_EQ(loadOf({.coreUtilization = 10, .deviceUtilization = 20, .activity = 30}), 30u);
    EXPECT_EQ(loadOf({.coreUtilization = 10, .deviceUtilization = 20}), 20u);
    EXPECT_EQ(loadOf({.coreUtilization = 10, .activity = 0}), 0u);
}

TEST(GpuLoad, LargerFiguresAreDivided) {
    EXPECT_EQ(loadOf({.coreUtilization = 101}), 0u);
    EXPECT_EQ(loadOf({.coreUtilization = 9'999'999}), 0u);
    EXPECT_EQ(loadOf({.coreUtilization = 10'000'000}), 1u);
    EXPECT_EQ(loadOf({.coreUtilization = 420'000'000}), 42u);
    EXPECT_EQ(loadOf({.coreUtilization = std::numeric_limits<std::int64_t>::max()}), 0xBF94D5E5u);
}

TEST(GpuLoad, FiguresBelowZeroAreLargeOnes) {
    EXPECT_EQ(loadOf({.coreUtilization = -1}), 0x7F29ABCAu);
    EXPECT_EQ(loadOf({.coreUtilization = std::numeric_limits<std::int64_t>::min()}), 0xBF94D5E5u);
}

TEST(GpuLoad, StatisticsWithoutAFigureAreNoErrorValue) { EXPECT_EQ(loadOf({}), 0x7F29ABCAu); }

}  // namespace
