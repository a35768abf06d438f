// What Linux tells of its load, as texts and small files.
#include "platform/linux/proc_text.h"

#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "platform/linux/gpu_sources.h"
#include "support/scratch.h"

namespace {

namespace proc = kv::platform::proc;
namespace gpu = kv::platform::gpu;

TEST(ProcText, InterruptsAreWorkAndWaitingIsNot) {
    const auto ticks =
        proc::ticksOf("cpu  1 20 300 4000 50000 600000 7000000 80000000 900000000 9000000000\ncpu0 5 5\n");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 7600321u);  // user, nice, system, irq, softirq: neither stolen time nor guests
    EXPECT_EQ(ticks->idle, 54000u);
}

TEST(ProcText, KernelsOfOldTellFourCounts) {
    const auto ticks = proc::ticksOf("cpu 1 2 3 4\n");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 6u);
    EXPECT_EQ(ticks->idle, 4u);
    EXPECT_FALSE(proc::ticksOf("cpu 1 2 3\ncpu0 1 2 3 4\n"));
}

TEST(ProcText, WhatIsNoLineOfAllProcessorsIsRefused) {
    for (const char* text : {"", "cpu", "cpu \n", "cpu0 1 2 3 4", "intr 1 2 3 4", "cpu a b c d"}) {
        EXPECT_FALSE(proc::ticksOf(text)) << text;
    }
}

TEST(ProcText, RowsOfMemoryAreKibibytes) {
    const std::string text =
        "MemTotal:       16384000 kB\nMemFree:          102400 kB\nMemAvailable:    8 kB\nSwapFree: 0 kB";
    EXPECT_EQ(proc::memoryRow(text, "MemTotal:"), 16384000ull * 1024);
    EXPECT_EQ(proc::memoryRow(text, "MemFree:"), 102400ull * 1024);
    EXPECT_EQ(proc::memoryRow(text, "SwapFree:"), 0u);
    EXPECT_FALSE(proc::memoryRow(text, "Free:"));
    EXPECT_FALSE(proc::memoryRow(text, "Slab:"));
    EXPECT_FALSE(proc::memoryRow("", "MemTotal:"));
    EXPECT_FALSE(proc::memoryRow("MemTotal:\nMemFree: 3 kB\n", "MemTotal:"));
}

TEST(ProcText, ResidentPagesAreTheSecondNumber) {
    EXPECT_EQ(proc::residentPages("5120 731 400 1 0 88 0\n"), 731u);
    EXPECT_FALSE(proc::residentPages("5120\n"));
    EXPECT_FALSE(proc::residentPages(""));
}

void makeCard(const std::string& name, const std::string& busy) {
    std::filesystem::create_directories(name + "/device");
    kvtest::makeFile(name + "/device/gpu_busy_percent", busy);
}

TEST(KernelGpu, FirstCardThatTellsIsTaken) {
    EXPECT_EQ(gpu::busyInKernel("drm"), std::nullopt);
    std::filesystem::create_directories("drm/card0/device");
    std::filesystem::create_directories("drm/card0-HDMI-A-1/device");
    EXPECT_EQ(gpu::busyInKernel("drm"), std::nullopt);
    makeCard("drm/card10", "99\n");
    EXPECT_EQ(gpu::busyInKernel("drm"), 99);
    makeCard("drm/card2", "37\n");
    EXPECT_EQ(gpu::busyInKernel("drm"), 37);
    makeCard("drm/card1", "0");
    EXPECT_EQ(gpu::busyInKernel("drm"), 0);
}

TEST(KernelGpu, CardWithoutANumberIsPassedOver) {
    makeCard("drm/card0", "");
    makeCard("drm/card1", "busy\n");
    makeCard("drm/card2", "8\n");
    EXPECT_EQ(gpu::busyInKernel("drm"), 8);
}

TEST(VendorGpu, IsUnknownWhereTheLibraryIsNotInstalled) {
    if (void* const installed = dlopen("libnvidia-ml.so.1", RTLD_LAZY)) {
        dlclose(installed);
        GTEST_SKIP() << "it is installed here";
    }
    EXPECT_EQ(gpu::busyByVendor(), std::nullopt);
    EXPECT_EQ(gpu::busyByVendor(), std::nullopt);
}

}  // namespace
