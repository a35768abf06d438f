// The memory in use, on machines that the tests describe.
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>

#include "kvos/machine.h"
#include "support/captured_messages.h"
#include "system/told_machine.h"

namespace {

using kvtest::machine;

constexpr std::uint32_t kUntouched = 0xAAAAAAAA;

struct Usage {
    std::uint32_t process = kUntouched;
    std::uint32_t system = kUntouched;
    std::uint64_t total = kUntouched;
};

Usage usage() {
    Usage told;
    EXPECT_EQ(GetMemoryUsage(&told.process, &told.system, &told.total), 0u);
    return told;
}

TEST(MemoryLoad, IsMeasuredAgainstAllTheMemoryThereIs) {
    machine().pages = {600, 300};
    machine().totalMemory = 1000 * 4096;
    machine().residentSize = 70 * 4096 + 4095;
    const Usage told = usage();
    EXPECT_EQ(told.process, 7u);
    EXPECT_EQ(told.system, 60u);
    EXPECT_EQ(told.total, 1000u * 4096);
}

TEST(MemoryLoad, PagesOfAnotherSize) {
    machine().pageSize = 16384;
    machine().pages = {250, 1};
    machine().totalMemory = 1000 * 16384;
    EXPECT_EQ(usage().system, 25u);
}

TEST(MemoryLoad, TotalThatIsNotToldIsAllPages) {
    machine().pages = {300, 100};
    machine().residentSize = 40 * 4096;
    const Usage told = usage();
    EXPECT_EQ(told.total, 400u * 4096);
    EXPECT_EQ(told.system, 75u);
    EXPECT_EQ(told.process, 10u);
}

TEST(MemoryLoad, SystemThatTellsNothingLeavesItsPercentageAsItWas) {
    machine().residentSize = 4096;
    const Usage told = usage();
    EXPECT_EQ(told.total, 0u);
    EXPECT_EQ(told.system, kUntouched);
    EXPECT_EQ(told.process, 0u);
}

TEST(MemoryLoad, ProcessThatIsNotToldLeavesItsPercentageAsItWas) {
    machine().pages = {1, 1};
    machine().totalMemory = 2 * 4096;
    kvtest::CapturedMessages messages;
    const Usage told = usage();
    EXPECT_EQ(told.process, kUntouched);
    EXPECT_EQ(told.system, 50u);
    EXPECT_EQ(messages.text(), "");
}

TEST(MemoryLoad, SixteenTebibytes) {
    machine().totalMemory = std::uint64_t{1} << 44;
    machine().pages = {std::uint64_t{1} << 31, 0};
    machine().residentSize = std::uint64_t{1} << 43;
    const Usage told = usage();
    EXPECT_EQ(told.system, 50u);
    EXPECT_EQ(told.process, 50u);
}

TEST(MemoryLoad, NullIsRefusedAndNothingIsWritten) {
    std::uint32_t percent = kUntouched;
    std::uint64_t total = kUntouched;
    machine().totalMemory = 4096;
    errno = 0;
    EXPECT_EQ(GetMemoryUsage(nullptr, &percent, &total), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(GetMemoryUsage(&percent, nullptr, &total), 0xFFFFFFFFu);
    EXPECT_EQ(GetMemoryUsage(&percent, &percent, nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(percent, kUntouched);
    EXPECT_EQ(total, kUntouched);
}

}  // namespace
