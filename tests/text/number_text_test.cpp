// Whole numbers as text.
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "kvos/conversion.h"
#include "text/inputs.h"

namespace {

std::string inBase(std::int32_t value, std::int32_t base) {
    char out[34];
    EXPECT_EQ(itoa(value, out, base), out);
    return out;
}

std::string padded(std::int32_t value, std::int32_t width) {
    char out[12];
    EXPECT_EQ(ULONGToString(value, width, out), out);
    return out;
}

std::string inBaseByModel(std::int64_t value, std::int64_t base) {
    std::string digits;
    for (std::int64_t left = value < 0 ? -value : value; left > 0 || digits.empty(); left /= base) {
        digits = "0123456789abcdefghijklmnopqrstuvwxyz"[left % base] + digits;
    }
    return (value < 0 ? "-" : "") + digits;
}

TEST(NumberInABase, Base36IsRefusedThoughThereAreDigits) {
    char out[34] = "before";
    EXPECT_EQ(itoa(5, out, 36), nullptr);
    EXPECT_STREQ(out, "");
}

TEST(NumberInABase, OtherBasesLeaveAnEmptyText) {
    for (const std::int32_t base : {1, 0, -1, -10, 37, INT32_MAX, INT32_MIN}) {
        char out[34] = "before";
        EXPECT_EQ(itoa(5, out, base), nullptr) << base;
        EXPECT_STREQ(out, "") << base;
    }
    EXPECT_EQ(itoa(5, nullptr, 10), nullptr);
}

TEST(NumberInABase, ANegativeOneHasItsSignInEveryBase) {
    EXPECT_EQ(inBase(-255, 16), "-ff");
    EXPECT_EQ(inBase(-5, 2), "-101");
    EXPECT_EQ(inBase(INT32_MIN, 2), "-1" + std::string(31, '0'));
    EXPECT_EQ(inBase(34, 35), "y");
}

TEST(NumberInABase, IsWrittenAsTheModelDoes) {
    kvtest::Dice dice;
    for (std::int32_t base = 2; base <= 35; ++base) {
        for (std::int32_t value = -300; value <= 300; ++value)
            ASSERT_EQ(inBase(value, base), inBaseByModel(value, base));
        for (const std::int32_t value : {INT32_MIN, INT32_MIN + 1, INT32_MAX}) {
            ASSERT_EQ(inBase(value, base), inBaseByModel(value, base));
        }
        for (int i = 0; i < 300; ++i) {
            const auto value = static_cast<std::int32_t>(dice.word());
            ASSERT_EQ(inBase(value, base), inBaseByModel(value, base));
        }
    }
}

TEST(PaddedNumber, ZerosStandAheadOfTheSign) {
    EXPECT_EQ(padded(-5, 4), "00-5");
    EXPECT_EQ(padded(42, 5), "00042");
}

TEST(PaddedNumber, TheWidthIsAtMostTen) {
    EXPECT_EQ(padded(7, 10), "0000000007");
    EXPECT_EQ(padded(7, 11), "0000000007");
    EXPECT_EQ(padded(7, INT32_MAX), "0000000007");
    EXPECT_EQ(padded(INT32_MIN, INT32_MAX), "-2147483648");
}

TEST(PaddedNumber, ALongerNumberIsWhole) {
    EXPECT_EQ(padded(12345, 3), "12345");
    EXPECT_EQ(padded(12345, 0), "12345");
    EXPECT_EQ(padded(12345, -7), "12345");
    EXPECT_EQ(padded(0, 0), "0");
}

TEST(PaddedNumber, IsWrittenAsTheModelDoes) {
    kvtest::Dice dice;
    for (int i = 0; i < 5000; ++i) {
        const auto value = static_cast<std::int32_t>(dice.word()) >> dice.below(32);
        const auto width = static_cast<std::int32_t>(dice.below(14)) - 1;
        std::string expected = std::to_string(value);
        while (static_cast<std::int32_t>(expected.size()) < (width < 10 ? width : 10)) expected = "0" + expected;
        ASSERT_EQ(padded(value, width), expected);
    }
    EXPECT_EQ(ULONGToString(1, 1, nullptr), nullptr);
}

}  // namespace
