// Which signal primitive each copy, zero and set takes, and when a copy takes none.
//
// This program compiles copy_by_primitives.cpp itself, against primitives that write down how they were called. In the
// library the choice can't be seen: whichever is taken, the bytes are the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "kvos/memory.h"
#include "signal_primitives.h"

namespace primitives = kv::memory::primitives;

namespace {

using Calls = std::vector<primitives::Call>;

/// Room for blocks at any distance from a multiple of 16.
struct Blocks {
    alignas(16) unsigned char source[512];
    alignas(16) unsigned char destination[512];

    Blocks() {
        for (std::size_t i = 0; i < sizeof source; ++i) source[i] = static_cast<unsigned char>(i * 7 + 1);
        std::memset(destination, 0xEE, sizeof destination);
    }
};

/// The widest element that all of the values are multiples of.
std::size_t widthOf(std::size_t gathered) {
    if (gathered % 8 == 0) return 8;
    return gathered % 4 == 0 ? 4 : 1;
}

const char* copyOfWidth(std::size_t width) { return width == 8 ? "copy64s" : width == 4 ? "copy32s" : "copy8u"; }

struct NamedCopy {
    const char* name;
    kvOSCopyRoutine copy;
};

/// A test of each of the two calls that choose.
class CopyCalls : public ::testing::TestWithParam<NamedCopy> {
protected:
    std::int32_t copy(void* destination, const void* source, std::uint64_t bytes) {
        return GetParam().copy(destination, source, bytes);
    }
};

// Without it the name of a test would carry addresses, which are others in each run.
void PrintTo(const NamedCopy& row, std::ostream* out) { *out << row.name; }

TEST_P(CopyCalls, TakeTheWidestPrimitiveThatSizeAndBothAddressesAllow) {
    for (const std::uint32_t word : {0u, 0x80u, 0x2000u, 0x6277u}) {
        CPUFeatureFlagsIntern = word;
        for (const std::size_t size : {0u, 1u, 2u, 4u, 8u, 12u, 16u, 20u, 126u, 128u, 132u, 200u}) {
            for (std::size_t from = 0; from < 9; ++from) {
                for (std::size_t to = 0; to < 9; ++to) {
                    Blocks blocks;
                    primitives::recorded.clear();
                    ASSERT_EQ(copy(blocks.destination + to, blocks.source + from, size), 0);
                    ASSERT_EQ(std::memcmp(blocks.destination + to, blocks.source + from, size), 0);
                    ASSERT_EQ(primitives::recorded, (Calls{{copyOfWidth(widthOf(size | from | to)), size}}))
                        << size << " bytes from +" << from << " to +" << to << ", word " << word;
                }
            }
        }
    }
}

TEST_P(CopyCalls, TakeNoPrimitiveWhenBothBitsOfThePlainCopyAreSet) {
    for (const std::uint32_t word : {0x2080u, 0x62F7u, 0xFFFFFFFFu}) {
        CPUFeatureFlagsIntern = word;
        primitives::recorded.clear();
        Blocks blocks;
        EXPECT_EQ(copy(blocks.destination, blocks.source, 200), 0);
        EXPECT_EQ(std::memcmp(blocks.destination, blocks.source, 200), 0);
        EXPECT_EQ(primitives::recorded, Calls{}) << word;
    }
}

TEST_P(CopyCalls, ReturnThePrimitivesStatus) {
    primitives::status = -7;
    Blocks blocks;
    for (const std::uint64_t size : {8u, 4u, 1u}) EXPECT_EQ(copy(blocks.destination, blocks.source, size), -7);
    CPUFeatureFlagsIntern = 0x2080;
    EXPECT_EQ(copy(blocks.destination, blocks.source, 8), 0) << "the plain copy has none";
}

INSTANTIATE_TEST_SUITE_P(Both, CopyCalls,
                         ::testing::Values(NamedCopy{"Everyday", kvOSCopyMemory}, NamedCopy{"Fast", CopyMemoryFast}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ZeroMemoryFast, TakesTheWidestPrimitiveThatSizeAndAddressAllow) {
    for (const std::uint32_t word : {0u, 0x2080u}) {
        CPUFeatureFlagsIntern = word;  // the bits of the plain copy do not count here
        for (const std::size_t size : {0u, 1u, 4u, 8u, 12u, 126u, 128u, 132u}) {
            for (std::size_t to = 0; to < 9; ++to) {
                Blocks blocks;
                primitives::recorded.clear();
                ASSERT_EQ(ZeroMemoryFast(blocks.destination + to, size), 0);
                const std::size_t width = widthOf(size | to);
                const Calls expected =
                    width == 1 ? Calls{} : Calls{{width == 8 ? "zero64s" : "zero32s", std::uint64_t{size}}};
                ASSERT_EQ(primitives::recorded, expected) << size << " bytes at +" << to;
                const unsigned char* begin = blocks.destination + to;
                ASSERT_TRUE(std::all_of(begin, begin + size, [](unsigned char byte) { return byte == 0; }));
            }
        }
    }
}

TEST(ZeroMemoryFast, ReturnsThePrimitivesStatus) {
    primitives::status = -7;
    Blocks blocks;
    EXPECT_EQ(ZeroMemoryFast(blocks.destination, 8), -7);
    EXPECT_EQ(ZeroMemoryFast(blocks.destination, 4), -7);
    EXPECT_EQ(ZeroMemoryFast(blocks.destination, 1), 0) << "the plain zero has none";
}

TEST(SetMemoryFast, PassesWholeWordsAtAnyAddress) {
    for (std::size_t to = 0; to < 9; ++to) {
        Blocks blocks;
        primitives::recorded.clear();
        EXPECT_EQ(SetMemoryFast(blocks.destination + to, 0x04030201, 10), 0);
        EXPECT_EQ(primitives::recorded, (Calls{{"set32s", 8}}));
    }
    primitives::status = -7;
    Blocks blocks;
    EXPECT_EQ(SetMemoryFast(blocks.destination, 1, 8), -7);
}

}  // namespace
