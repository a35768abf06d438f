// Copy, zero and set: every alignment, the limits, the rows, the named methods.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "kvos/memory.h"
#include "support/captured_messages.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xEE;

Bytes counting(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7 + 1);
    return bytes;
}

/// How many bytes from the start differ from kUntouched; the rest must be untouched.
std::size_t touched(const Bytes& bytes) {
    std::size_t count = bytes.size();
    while (count > 0 && bytes[count - 1] == kUntouched) --count;
    return count;
}

struct NamedCopy {
    const char* name;
    kvOSCopyRoutine copy;
};

constexpr NamedCopy kCopies[] = {
    {"kvOSCopyMemory", kvOSCopyMemory},       {"CopyMemoryFast", CopyMemoryFast},
    {"CopyMemoryByte", CopyMemoryByte},       {"CopyMemoryWarmByte", CopyMemoryWarmByte},
    {"CopyMemoryWord", CopyMemoryWord},       {"CopyMemoryWarmWord", CopyMemoryWarmWord},
    {"CopyMemoryDword", CopyMemoryDword},     {"CopyMemoryWarmDword", CopyMemoryWarmDword},
    {"CopyMemoryFPU", CopyMemoryFPU},         {"CopyMemoryWarmFPU", CopyMemoryWarmFPU},
    {"CopyMemoryMMX", CopyMemoryMMX},         {"CopyMemoryWarmMMX", CopyMemoryWarmMMX},
    {"CopyMemoryMMX_2", CopyMemoryMMX_2},     {"CopyMemorySSE", CopyMemorySSE},
    {"CopyMemorySSE_Pre", CopyMemorySSE_Pre}, {"CopyMemorySSE2", CopyMemorySSE2},
    {"CopyMemoryAMD", CopyMemoryAMD},         {"CopyMemoryAMD2", CopyMemoryAMD2},
    {"CopyMemoryAMD_OPT", CopyMemoryAMD_OPT},
};

TEST(Copy, EveryMethodCopiesEveryAlignmentAndSizeExactly) {
    for (const NamedCopy& method : kCopies) {
        SCOPED_TRACE(method.name);
        for (std::size_t size : {0u, 1u, 3u, 4u, 7u, 8u, 12u, 64u, 100u, 127u, 128u, 129u, 130u, 136u, 1000u}) {
            const Bytes source = counting(size + 16);
            for (std::size_t from = 0; from < 9; ++from) {
                for (std::size_t to = 0; to < 9; ++to) {
                    Bytes destination(size + 16, kUntouched);
                    Bytes expected = destination;
                    if (size != 0) std::memcpy(expected.data() + to, source.data() + from, size);
                    ASSERT_EQ(method.copy(destination.data() + to, source.data() + from, size), 0);
                    ASSERT_EQ(destination, expected) << size << " bytes from +" << from << " to +" << to;
                }
            }
        }
    }
}

// That the plain copy is taken at all is seen by primitives_test.cpp.
TEST(Copy, BothBitsOfThePlainCopyChangeNothingThatCallersSee) {
    CPUFeatureFlagsIntern = 0x2080;
    const Bytes source = counting(1000);
    Bytes destination(1000, kUntouched);
    EXPECT_EQ(kvOSCopyMemory(destination.data(), source.data(), 1000), 0);
    EXPECT_EQ(destination, source);
}

class RandomCopies : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomCopies, AgreeWithTheCLibrary) {
    const std::uint32_t seed = GetParam();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const Bytes source = counting(300000);
    Bytes destination(300000, kUntouched);
    Bytes expected = destination;
    for (int i = 0; i < 300; ++i) {
        const std::size_t from = random() % 100000;
        const std::size_t to = random() % 100000;
        const std::size_t size = random() % 200000;
        std::memcpy(expected.data() + to, source.data() + from, size);
        kvOSCopyMemory(destination.data() + to, source.data() + from, size);
        ASSERT_EQ(destination, expected) << size << " bytes from " << from << " to " << to;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCopies, ::testing::Values(1u, 2u, 20261121u));

// ---- limits of copies

struct SafeCopy {
    const char* name;
    int32_t (*copy)(void*, const void*, uint32_t, uint32_t);
    std::string message;
};

class SafeCopies : public ::testing::TestWithParam<SafeCopy> {};

TEST_P(SafeCopies, ClipToTheLimitAndTellOnce) {
    const Bytes source = counting(100);
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(GetParam().copy(destination.data(), source.data(), 100, 60), 0);
    EXPECT_EQ(touched(destination), 60u);
    EXPECT_EQ(std::memcmp(destination.data(), source.data(), 60), 0);
    EXPECT_EQ(messages.count(GetParam().message + " 100 > 60\n"), 1u) << messages.text();
    EXPECT_EQ(messages.count("Overwrite"), 1u);
}

TEST_P(SafeCopies, OfExactlyTheLimitAreSilent) {
    const Bytes source = counting(100);
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(GetParam().copy(destination.data(), source.data(), 100, 100), 0);
    EXPECT_EQ(destination, source);
    EXPECT_EQ(messages.text(), "");
}

TEST_P(SafeCopies, CompareAsUnsignedAndShowAsSigned) {
    const Bytes source = counting(100);
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    GetParam().copy(destination.data(), source.data(), 10, 0xFFFFFFFFu);
    EXPECT_EQ(touched(destination), 10u);
    EXPECT_EQ(messages.text(), "");
    GetParam().copy(destination.data(), source.data(), 0xFFFFFFFFu, 20);
    EXPECT_EQ(touched(destination), 20u);
    EXPECT_EQ(messages.count(GetParam().message + " -1 > 20\n"), 1u) << messages.text();
}

TEST_P(SafeCopies, WithALimitOfNothingCopyNothing) {
    const Bytes source = counting(10);
    Bytes destination(10, kUntouched);
    kvtest::CapturedMessages messages;
    GetParam().copy(destination.data(), source.data(), 10, 0);
    EXPECT_EQ(touched(destination), 0u);
    EXPECT_EQ(messages.count(" 10 > 0\n"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Both, SafeCopies,
                         ::testing::Values(SafeCopy{"Everyday", kvOSCopyMemorySafe, "kvOSCopyMemory-Overwrite"},
                                           SafeCopy{"Fast", kvOSCopyMemorySafeFast, "CopyMemoryFast-Overwrite"}),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- rows

TEST(CopyWithPitch, RowsAreAsLongAsTheSmallerPitch) {
    for (const auto& [to, from] : {std::pair<std::size_t, std::size_t>{100, 80}, {80, 100}, {80, 80}}) {
        SCOPED_TRACE(std::to_string(to) + " from " + std::to_string(from));
        const Bytes source = counting(500);
        Bytes destination(500, kUntouched);
        Bytes expected = destination;
        for (std::size_t row = 0; row < 3; ++row) std::memcpy(&expected[row * to], &source[row * from], 80);
        EXPECT_EQ(kvOSCopyWithPitch(destination.data(), to, source.data(), from, 3), 0u);
        EXPECT_EQ(destination, expected);
    }
}

TEST(CopyWithPitch, NoRowsGiveTheLengthOfARow) {
    EXPECT_EQ(kvOSCopyWithPitch(nullptr, 100, nullptr, 80, 0), 80u);
    EXPECT_EQ(kvOSCopyWithPitch(nullptr, 7, nullptr, 80, 0), 7u);
}

// ---- zero

struct NamedZero {
    const char* name;
    kvOSZeroRoutine zero;
};

TEST(Zero, EveryMethodZeroesEveryAlignmentAndSizeExactly) {
    constexpr NamedZero kZeroes[] = {{"kvOSZeroMemory", kvOSZeroMemory},
                                     {"ZeroMemoryFast", ZeroMemoryFast},
                                     {"ZeroMemoryDword", ZeroMemoryDword},
                                     {"ZeroMemoryMMX", ZeroMemoryMMX}};
    for (const NamedZero& method : kZeroes) {
        SCOPED_TRACE(method.name);
        for (std::size_t size : {0u, 1u, 3u, 4u, 8u, 12u, 100u, 127u, 128u, 129u, 132u, 1000u}) {
            for (std::size_t to = 0; to < 9; ++to) {
                Bytes destination(size + 16, kUntouched);
                Bytes expected = destination;
                std::memset(expected.data() + to, 0, size);
                ASSERT_EQ(method.zero(destination.data() + to, size), 0);
                ASSERT_EQ(destination, expected) << size << " bytes at +" << to;
            }
        }
    }
}

TEST(SafeZero, ClipsToTheLimitAndTellsOnce) {
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSZeroMemorySafe(destination.data(), 100, 60), 0);
    EXPECT_EQ(touched(destination), 60u);
    EXPECT_EQ(messages.count("WARNING: ZeroOverwrite requested 100, allow 60 "), 1u) << messages.text();
    EXPECT_EQ(messages.count("ZeroOverwrite"), 1u);
}

TEST(SafeZero, OfExactlyTheLimitIsSilent) {
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSZeroMemorySafe(destination.data(), 60, 60), 0);
    EXPECT_EQ(touched(destination), 60u);
    EXPECT_EQ(messages.text(), "");
}

TEST(SafeZero, ComparesSignedSoThatNegativeSizesDoNothing) {
    Bytes destination(10, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSZeroMemorySafe(destination.data(), -5, 10), 0);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(kvOSZeroMemorySafe(destination.data(), 10, -1), 0);
    EXPECT_EQ(messages.count("WARNING: ZeroOverwrite requested 10, allow -1 "), 1u) << messages.text();
    EXPECT_EQ(touched(destination), 0u);
}

TEST(SafeZero, ComparesAllOf64Bits) {
    Bytes destination(10, kUntouched);
    kvtest::CapturedMessages messages;
    kvOSZeroMemorySafe(destination.data(), (std::int64_t{1} << 32) + 2, 4);
    EXPECT_EQ(touched(destination), 4u);
    EXPECT_EQ(messages.count("WARNING: ZeroOverwrite requested 2, allow 4 "), 1u) << "the low 32 bits are shown";
}

// ---- set

Bytes wordsOf(std::size_t size, std::size_t to, std::size_t words) {
    const std::uint32_t value = 0x04030201;
    Bytes bytes(size, kUntouched);
    for (std::size_t i = 0; i < words; ++i) std::memcpy(&bytes[to + 4 * i], &value, 4);
    return bytes;
}

TEST(Set, FastWritesWholeWordsAndLeavesTheRemainder) {
    for (std::size_t size : {0u, 1u, 3u, 4u, 10u, 127u, 128u, 129u, 131u, 132u, 1000u, 4099u}) {
        for (std::size_t to = 0; to < 5; ++to) {
            Bytes destination(size + 16, kUntouched);
            ASSERT_EQ(SetMemoryFast(destination.data() + to, 0x04030201, size), 0);
            ASSERT_EQ(destination, wordsOf(size + 16, to, size / 4)) << size << " bytes at +" << to;
        }
    }
}

TEST(Set, FastOfTenBytesWritesEight) {
    Bytes destination(16, kUntouched);
    SetMemoryFast(destination.data(), 0x04030201, 10);
    EXPECT_EQ(touched(destination), 8u);
}

TEST(Set, NamedMethodsWriteAPartialLastWordWhole) {
    for (kvOSSetRoutine set : {SetMemoryDword, SetMemoryMMX}) {
        for (std::size_t size : {0u, 1u, 3u, 4u, 5u, 10u, 128u, 129u, 1000u, 1003u}) {
            for (std::size_t to = 0; to < 5; ++to) {
                Bytes destination(size + 16, kUntouched);
                ASSERT_EQ(set(destination.data() + to, 0x04030201, size), 0);
                ASSERT_EQ(destination, wordsOf(size + 16, to, (size + 3) / 4)) << size << " bytes at +" << to;
            }
        }
    }
}

TEST(SafeSet, ClipsToTheLimitAndTellsInTheWordsOfZero) {
    Bytes destination(100, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSSetMemorySafe(destination.data(), 0x04030201, 100, 61), 0);
    EXPECT_EQ(destination, wordsOf(100, 0, 15));
    EXPECT_EQ(messages.count("WARNING: ZeroOverwrite requested 100, allow 61 "), 1u) << messages.text();
}

TEST(SafeSet, NegativeSizesDoNothing) {
    Bytes destination(10, kUntouched);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSSetMemorySafe(destination.data(), 1, -4, 10), 0);
    EXPECT_EQ(kvOSSetMemorySafe(destination.data(), 1, -4, -4), 0);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(touched(destination), 0u);
}

}  // namespace
