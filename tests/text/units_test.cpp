// Text of units as it is, and the surrogates.
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/conversion.h"
#include "kvos/text.h"
#include "text/inputs.h"

namespace {

constexpr wchar_t kUntouched = 0x5A5A;

TEST(Units, AreCopiedAcrossWidthsWithTheirZero) {
    kvtest::Dice dice;
    for (std::size_t length = 0; length < 200; ++length) {
        std::vector<std::uint16_t> narrow(length);
        std::vector<std::uint32_t> wide(length);
        for (std::uint16_t& unit : narrow) unit = static_cast<std::uint16_t>(1 + dice.below(0xFFFF));
        for (std::uint32_t& unit : wide) unit = static_cast<std::uint32_t>(1 + dice.below(0x10FFFF));
        const std::wstring expected16(narrow.begin(), narrow.end());
        const std::wstring expected32(wide.begin(), wide.end());
        narrow.push_back(0);
        wide.push_back(0);
        std::wstring target(length + 2, kUntouched);
        EXPECT_EQ(kvStr_UTF16_to_wchar(target.data(), narrow.data()), 1u);
        EXPECT_EQ(target, expected16 + L'\0' + kUntouched);
        EXPECT_EQ(kvStr_UTF32_to_wchar(target.data(), wide.data()), 1u);
        EXPECT_EQ(target, expected32 + L'\0' + kUntouched);
        EXPECT_EQ(kvwstrlen(narrow.data()), length);
        std::vector<std::uint16_t> copy(length + 1, 0xFFFF);
        EXPECT_EQ(kvwstrcpy(copy.data(), narrow.data()), copy.data());
        EXPECT_EQ(copy, narrow);
    }
}

TEST(Units, SurrogatesAreNotPaired) {
    const std::uint16_t pair[] = {0xD83D, 0xDE00, 0};
    wchar_t wide[3];
    kvStr_UTF16_to_wchar(wide, pair);
    EXPECT_EQ(std::wstring(wide), (std::wstring{0xD83D, 0xDE00}));
}

TEST(Units, NullIsAnEmptyTextAndNoTarget) {
    wchar_t wide = kUntouched;
    std::uint16_t unit = 7;
    EXPECT_EQ(kvStr_UTF16_to_wchar(&wide, nullptr), 1u);
    EXPECT_EQ(wide, L'\0');
    EXPECT_EQ(kvStr_UTF32_to_wchar(nullptr, nullptr), 1u);
    EXPECT_EQ(kvwstrcpy(&unit, nullptr), &unit);
    EXPECT_EQ(unit, 0);
    EXPECT_EQ(kvwstrcpy(nullptr, &unit), nullptr);
    EXPECT_EQ(kvwstrlen(nullptr), 0u);
}

TEST(Surrogates, EachUnitBelowTheirEndCounts) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto word = static_cast<std::uint16_t>(unit);
        ASSERT_EQ(is_surrogate(word), unit < 0xE000 ? 1u : 0u);
        ASSERT_EQ(is_high_surrogate(word), unit >= 0xD800 && unit <= 0xDBFF ? 1u : 0u);
        ASSERT_EQ(is_low_surrogate(word), unit >= 0xDC00 && unit <= 0xDFFF ? 1u : 0u);
    }
}

TEST(Surrogates, EveryPairIsItsCharacter) {
    EXPECT_EQ(surrogate_to_utf32(0xD83D, 0xDE00), 0x1F600u);
    for (std::uint32_t character = 0x10000; character < 0x110000; ++character) {
        const std::uint32_t bits = character - 0x10000;
        ASSERT_EQ(surrogate_to_utf32(static_cast<std::uint16_t>(0xD800 + bits / 0x400),
                                     static_cast<std::uint16_t>(0xDC00 + bits % 0x400)),
                  character);
    }
}

TEST(Surrogates, OtherUnitsGiveANumberAllTheSame) { EXPECT_EQ(surrogate_to_utf32(0, 0), 0xFCA02400u); }

}  // namespace
