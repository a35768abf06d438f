// The machine that the tests run on. What a described one would give is in processor_load_test.cpp and its neighbours.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/machine.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

TEST(Machine, FixedAnswersStayFixed) {
    char drive = 'x';
    std::uint32_t drives = 77;
    EXPECT_EQ(kvOSGetMemSize(), 2048u);
    EXPECT_EQ(kvOSGetCpuSpeed(), 2400u);
    EXPECT_EQ(FindLastPhysicalDrive(&drive), 0u);
    EXPECT_EQ(drive, '~');
    EXPECT_EQ(FindRecordDrives(&drives), 0u);
    EXPECT_EQ(drives, 1u);
    EXPECT_EQ(kvOSGetDriveType("/"), 0u);
    EXPECT_EQ(kvOSGetDriveType(nullptr), 0u);
}

TEST(Machine, FixedAnswersRefuseNull) {
    errno = 0;
    EXPECT_EQ(FindLastPhysicalDrive(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(FindRecordDrives(nullptr), 0xFFFFFFFFu);
}

TEST(Machine, NameIsTheHosts) {
    char expected[256] = "";
    ASSERT_EQ(gethostname(expected, sizeof expected), 0);
    std::string buffer(200, '#');
    EXPECT_EQ(kvOSGetComputerName(buffer.data()), 0u);
    EXPECT_STREQ(buffer.c_str(), expected);
    const std::size_t used = std::strlen(expected) + 1;
    EXPECT_EQ(buffer.substr(used), std::string(200 - used, '#'));
}

TEST(Machine, NullForTheNameIsRefused) {
    errno = 0;
    EXPECT_EQ(kvOSGetComputerName(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
}

TEST(Machine, LoadIsAPercentage) {
    EXPECT_LE(GetCpuUsage(), 100u);
    EXPECT_LE(GetCpuUsageProc(), 100u);
    EXPECT_LE(GetSystemCpuUsage(), 100u);
}

TEST(Machine, LoadKeepsErrno) {
    errno = 77;
    GetCpuUsage();
    EXPECT_EQ(errno, 77);
}

TEST(Machine, LookForAGraphicsProcessorLeavesNoReasonBehind) {
    dlerror();
    GetGpuUsage();
    EXPECT_EQ(dlerror(), nullptr);
}

TEST(Machine, MemoryIsThatOfTheMachineAndGrowsWithTheProcess) {
    std::uint32_t process = 0;
    std::uint32_t system = 0;
    std::uint64_t total = 0;
    ASSERT_EQ(GetMemoryUsage(&process, &system, &total), 0u);
    EXPECT_GT(total, std::uint64_t{1} << 26);
    EXPECT_GE(system, 1u);
    EXPECT_LE(system, 100u);
    EXPECT_LE(process, system);

    if (total > std::uint64_t{32} << 30) GTEST_SKIP() << "two percent of this machine are too much for a test";
    const std::vector<char> much(static_cast<std::size_t>(total / 50), 'x');
    std::uint32_t later = 0;
    ASSERT_EQ(GetMemoryUsage(&later, &system, &total), 0u);
    EXPECT_GE(later, process + 1);
    EXPECT_EQ(much.back(), 'x');
}

TEST(Machine, ProcessorsAreThoseThatRun) {
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    ASSERT_GT(online, 0);
    const auto logical = static_cast<std::uint32_t>(online > 24 ? 24 : online);
    EXPECT_EQ(kvOSGetNumCpu(1), logical);
    EXPECT_EQ(kvOSGetNumCpu(0), static_cast<std::uint32_t>(online < 4 ? online : online / 2 > 24 ? 24 : online / 2));
}

TEST(Machine, GpuIsAPercentageOrUnknown) {
    kvtest::CapturedMessages messages;
    const std::uint32_t load = GetGpuUsage();
    EXPECT_TRUE(load <= 100 || load == KVGPU_UNKNOWN) << load;
    EXPECT_EQ(messages.text(), "");
}

TEST(Machine, VolumeIsTheOneOfThePath) {
    const kvtest::ScratchFolder folder;
    struct statvfs told {};
    ASSERT_EQ(statvfs(folder.path().c_str(), &told), 0);
    const std::uint64_t total = zmwGetDiskTotalSpace(folder.path().c_str());
    const std::uint64_t free = zmwGetDiskFreeSpace(folder.path().c_str());
    EXPECT_EQ(total, std::uint64_t{told.f_blocks} * told.f_frsize);
    EXPECT_LE(free, total);
    // Others write to it while this runs.
    const std::uint64_t before = std::uint64_t{told.f_bavail} * told.f_frsize;
    EXPECT_NEAR(static_cast<double>(free), static_cast<double>(before), static_cast<double>(total) / 20);
    EXPECT_EQ(IsVolumeFAT(folder.path().c_str()), 0u);
}

TEST(Machine, MissingPathHasAllOnesFreeAndNothingInAll) {
    kvtest::CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(zmwGetDiskFreeSpace("/no/such/path"), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(zmwGetDiskTotalSpace("/no/such/path"), 0u);
    EXPECT_EQ(IsVolumeFAT("/no/such/path"), 0u);
    EXPECT_EQ(messages.text(), "");
}

}  // namespace
