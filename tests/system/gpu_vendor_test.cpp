// The vendor's management library, opened at run time: one of its form stands where this program looks for it.
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>

#include "kvos/machine.h"
#include "platform/linux/gpu_sources.h"

namespace {

namespace gpu = kv::platform::gpu;

TEST(VendorGpu, TellsTheFirstDevice) {
    setenv("VENDOR_DEVICES", "42 7", 1);
    EXPECT_EQ(gpu::busyByVendor(), 42);
    EXPECT_EQ(gpu::busyByVendor(), 42);
}

TEST(VendorGpu, DeviceThatDoesNotTellIsPassedOver) {
    setenv("VENDOR_DEVICES", "- - 100", 1);
    EXPECT_EQ(gpu::busyByVendor(), 100);
}

TEST(VendorGpu, WithoutADeviceItIsUnknown) {
    setenv("VENDOR_DEVICES", "", 1);
    EXPECT_EQ(gpu::busyByVendor(), std::nullopt);
}

TEST(VendorGpu, WithoutADriverItIsUnknown) {
    unsetenv("VENDOR_DEVICES");
    EXPECT_EQ(gpu::busyByVendor(), std::nullopt);
}

TEST(VendorGpu, IsAskedWhereTheKernelTellsNothing) {
    if (gpu::busyInKernel("/sys/class/drm")) GTEST_SKIP() << "the kernel tells a card's load here";
    setenv("VENDOR_DEVICES", "63", 1);
    EXPECT_EQ(GetGpuUsage(), 63u);
}

}  // namespace
