// The space of volumes that the tests describe. Those of this machine are in machine_facts_test.cpp.
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>

#include "kvos/machine.h"
#include "system/told_machine.h"

namespace {

using kvtest::machine;

TEST(Volume, SpaceIsCountedInBlocksOfItsOwnSize) {
    machine().volume = {.blockSize = 512, .blocks = 1000, .availableBlocks = 300};
    EXPECT_EQ(zmwGetDiskFreeSpace("/v"), 300u * 512);
    EXPECT_EQ(zmwGetDiskTotalSpace("/v"), 1000u * 512);
}

TEST(Volume, SpaceBeyond32Bits) {
    machine().volume = {.blockSize = 4096, .blocks = std::uint64_t{1} << 34, .availableBlocks = std::uint64_t{1} << 33};
    EXPECT_EQ(zmwGetDiskFreeSpace("/v"), std::uint64_t{1} << 45);
    EXPECT_EQ(zmwGetDiskTotalSpace("/v"), std::uint64_t{1} << 46);
}

TEST(Volume, FailureIsAllOnesForTheFreeSpaceAndZeroForTheTotal) {
    EXPECT_EQ(zmwGetDiskFreeSpace("/v"), ~std::uint64_t{0});
    EXPECT_EQ(zmwGetDiskTotalSpace("/v"), 0u);
    EXPECT_EQ(IsVolumeFAT("/v"), 0u);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Volume, FatIsToldByItsNumberAlone) {
    machine().volume = {.type = 19780};
    EXPECT_EQ(IsVolumeFAT("/v"), 1u);
    machine().volume = {.type = 19781};
    EXPECT_EQ(IsVolumeFAT("/v"), 0u);
    machine().volume = {.type = 0};
    EXPECT_EQ(IsVolumeFAT("/v"), 0u);
}

TEST(Volume, NullPathIsRefused) {
    machine().volume = {.blockSize = 1, .blocks = 1, .availableBlocks = 1, .type = 19780};
    errno = 0;
    EXPECT_EQ(zmwGetDiskFreeSpace(nullptr), ~std::uint64_t{0});
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(zmwGetDiskTotalSpace(nullptr), 0u);
    EXPECT_EQ(IsVolumeFAT(nullptr), 0u);
}

}  // namespace
