// Whole-number arithmetic and byte order.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/conversion.h"
#include "text/inputs.h"

namespace {

TEST(MulDiv, IsCutTowardZero) {
    EXPECT_EQ(MulDivTrunc(7, 3, 2), 10);
    EXPECT_EQ(MulDivTrunc(-7, 3, 2), -10);
    EXPECT_EQ(MulDivTrunc(7, 3, -2), -10);
    EXPECT_EQ(MulDivTrunc(-7, 3, -2), 10);
    EXPECT_EQ(MulDivTrunc(90000, 1001, 30000), 3003);
}

TEST(MulDiv, OverZeroIsZero) { EXPECT_EQ(MulDivTrunc(7, 3, 0), 0); }

TEST(MulDiv, OverMinusOneIsMinusTheProduct) {
    EXPECT_EQ(MulDivTrunc(7, 3, -1), -21);
    EXPECT_EQ(MulDivTrunc(INT64_MIN, 1, -1), INT64_MIN);
}

TEST(MulDiv, TheProductWrapsTo64Bits) {
    EXPECT_EQ(MulDivTrunc(std::int64_t{1} << 32, std::int64_t{1} << 32, 5), 0);
    EXPECT_EQ(MulDivTrunc(INT64_MAX, 2, 1), -2);
    EXPECT_EQ(MulDivTrunc(INT64_MAX, 2, 2), -1);
}

TEST(MulDiv, SmallProductsAreThoseOfTheSchool) {
    kvtest::Dice dice;
    for (int i = 0; i < 10000; ++i) {
        const auto a = static_cast<std::int32_t>(dice.word());
        const auto b = static_cast<std::int32_t>(dice.word());
        const auto c = static_cast<std::int64_t>(dice.word()) >> dice.below(64);
        if (c == 0) continue;
        const std::int64_t product = std::int64_t{a} * b;
        if (c == -1 && product == INT64_MIN) continue;
        ASSERT_EQ(MulDivTrunc(a, b, c), product / c);
    }
}

std::int32_t nearest(std::int64_t value, const std::vector<std::int64_t>& table) {
    return NearestLongValue(value, table.data(), static_cast<std::int32_t>(table.size()));
}

TEST(NearestValue, AnExactMidpointGoesToTheHigherEntry) {
    EXPECT_EQ(nearest(15, {10, 20}), 1);
    EXPECT_EQ(nearest(14, {10, 20}), 0);
    EXPECT_EQ(nearest(-15, {-20, -10}), 1);
}

TEST(NearestValue, BeyondTheTableTheEndsCount) {
    EXPECT_EQ(nearest(-100, {10, 20, 30}), 0);
    EXPECT_EQ(nearest(100, {10, 20, 30}), 2);
}

TEST(NearestValue, FewerThanTwoEntriesGiveTheFirst) {
    const std::int64_t one[] = {10};
    EXPECT_EQ(NearestLongValue(99, one, 1), 0);
    EXPECT_EQ(NearestLongValue(99, nullptr, 0), 0);
    EXPECT_EQ(NearestLongValue(99, nullptr, -5), 0);
    EXPECT_EQ(NearestLongValue(99, nullptr, 5), 0);
}

TEST(NearestValue, TheLargestNumbersDoNotWrap) {
    EXPECT_EQ(nearest(INT64_MAX, {0, INT64_MAX}), 1);
    EXPECT_EQ(nearest(INT64_MIN, {INT64_MIN, INT64_MIN + 4}), 0);
    EXPECT_EQ(nearest(INT64_MAX - 1, {INT64_MAX - 10, INT64_MAX}), 1);
}

TEST(NearestValue, IsThatOfASearchThroughAll) {
    kvtest::Dice dice;
    for (int i = 0; i < 5000; ++i) {
        std::vector<std::int64_t> table(2 + dice.below(8));
        for (std::int64_t& entry : table) entry = static_cast<std::int64_t>(dice.below(100)) - 50;
        std::ranges::sort(table);
        table.erase(std::unique(table.begin(), table.end()), table.end());
        const std::int64_t value = static_cast<std::int64_t>(dice.below(140)) - 70;
        std::size_t best = 0;
        for (std::size_t j = 0; j < table.size(); ++j) {
            if (std::abs(table[j] - value) <= std::abs(table[best] - value)) best = j;
        }
        ASSERT_EQ(nearest(value, table), static_cast<std::int32_t>(best));
    }
}

template <class Number, class Call>
void checkReversal(Call call, std::size_t count) {
    kvtest::Dice dice;
    std::string bytes = dice.bytes(count * sizeof(Number));
    std::string expected = bytes;
    for (std::size_t i = 0; i < count; ++i) {
        const auto begin = expected.begin() + static_cast<std::ptrdiff_t>(i * sizeof(Number));
        std::reverse(begin, begin + static_cast<std::ptrdiff_t>(sizeof(Number)));
    }
    std::vector<Number> source(count + 1);
    std::memcpy(source.data(), bytes.data(), bytes.size());
    std::vector<Number> target(count + 1, Number{0x5A});
    EXPECT_EQ(call(target.data(), source.data(), count), target.data() + count);
    EXPECT_EQ(std::memcmp(target.data(), expected.data(), expected.size()), 0);
    EXPECT_EQ(target.back(), Number{0x5A});
    EXPECT_EQ(call(source.data(), source.data(), count), source.data() + count);  // in place
    EXPECT_EQ(std::memcmp(source.data(), expected.data(), expected.size()), 0);
}

TEST(ByteOrder, EveryElementIsReversed) {
    for (std::size_t count = 0; count < 70; ++count) {
        checkReversal<std::uint16_t>(EndianConvertWord, count);
        checkReversal<std::uint32_t>(EndianConvertDword, count);
        checkReversal<std::uint64_t>(EndianConvertQword, count);
    }
}

TEST(ByteOrder, NoElementsGiveTheTarget) {
    std::uint32_t word = 7;
    EXPECT_EQ(EndianConvertDword(&word, nullptr, 0), &word);
    EXPECT_EQ(word, 7u);
}

TEST(ByteOrder, NullWritesNothing) {
    std::uint16_t word = 7;
    EXPECT_EQ(EndianConvertWord(&word, nullptr, 1), &word);
    EXPECT_EQ(word, 7);
    EXPECT_EQ(EndianConvertWord(nullptr, &word, 1), nullptr);
    EXPECT_EQ(EndianConvertQword(nullptr, nullptr, 1), nullptr);
}

}  // namespace
