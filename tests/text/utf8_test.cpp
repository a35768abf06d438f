// Text of wide or 16-bit units to UTF-8.
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/text.h"
#include "text/inputs.h"

namespace {

constexpr std::int64_t kNoLimit = INT64_MAX;

/// The result, and the bytes written into as much room as the docstring asks for ('#' where nothing was).
struct Encoded {
    std::vector<char> bytes;
    std::int64_t result;

    Encoded(const wchar_t* text, std::int64_t limit)
        : bytes(static_cast<std::size_t>(limit > 0 ? limit : 0) + 2, '#'),
          result(kvStr_wchar_to_UTF8(bytes.data(), text, limit)) {}
    std::string all() const { return {bytes.begin(), bytes.end()}; }
};

std::string encoded(const std::wstring& text) {
    const Encoded out(text.c_str(), 100);
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, text.c_str(), kNoLimit), out.result);
    return std::string(out.bytes.data());
}

TEST(Utf8, EachRangeHasItsLength) {
    EXPECT_EQ(encoded(L"a\x7F"), "a\x7F");
    EXPECT_EQ(encoded(L"\x80\x7FF"), "\xC2\x80\xDF\xBF");
    EXPECT_EQ(encoded(L"\x800\xFFFE"), "\xE0\xA0\x80\xEF\xBF\xBE");
    EXPECT_EQ(encoded(L"\x20AC"), "\xE2\x82\xAC");
}

TEST(Utf8, HighBitsAreLost) { EXPECT_EQ(encoded(std::wstring(1, wchar_t{0x1F600})), "\xEF\x98\x80"); }

TEST(Utf8, AUnitWhoseLowBitsAreZeroEndsTheText) { EXPECT_EQ(encoded({L'a', wchar_t{0x10000}, L'b'}), "a"); }

TEST(Utf8, ASurrogateIsEncodedAlone) {
    EXPECT_EQ(encoded({wchar_t{0xD83D}, wchar_t{0xDE00}}), "\xED\xA0\xBD\xED\xB8\x80");
}

TEST(Utf8, TheLastUnitOfAllGivesNothing) {
    EXPECT_EQ(encoded(L"a\xFFFF"
                      L"b"),
              "ab");
}

TEST(Utf8, MeasuringCountsTheTerminator) {
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, L"", kNoLimit), 1);
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, L"abc", kNoLimit), 4);
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, L"\x20AC", kNoLimit), 4);
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, nullptr, kNoLimit), 1);
}

TEST(Utf8, ATextThatEndsBelowTheLimitIsTerminated) {
    const Encoded out(L"ab", 3);
    EXPECT_EQ(out.result, 3);
    EXPECT_EQ(out.all(), std::string("ab\0##", 5));
}

TEST(Utf8, ATextThatFillsTheLimitIsNot) {
    const Encoded out(L"abc", 3);
    EXPECT_EQ(out.result, 4);
    EXPECT_EQ(out.all(), "abc##");
}

TEST(Utf8, ATextBeyondTheLimitIsCut) {
    const Encoded out(L"abcdef", 3);
    EXPECT_EQ(out.result, 4);
    EXPECT_EQ(out.all(), "abc##");
    EXPECT_EQ(kvStr_wchar_to_UTF8(nullptr, L"abcdef", 3), 4);
}

TEST(Utf8, AFormThatWasBegunPassesTheLimitByUpToTwoBytes) {
    const Encoded three(
        L"ab\x20AC"
        L"c",
        3);
    EXPECT_EQ(three.result, 6);
    EXPECT_EQ(three.all(), "ab\xE2\x82\xAC");
    const Encoded two(
        L"ab\xE9"
        L"c",
        3);
    EXPECT_EQ(two.result, 5);
    EXPECT_EQ(two.all(), "ab\xC3\xA9#");
}

TEST(Utf8, ALimitBelowOneGivesOneAndWritesNothing) {
    for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        const Encoded out(L"abc", limit);
        EXPECT_EQ(out.result, 1);
        EXPECT_EQ(out.all(), "##");
    }
}

using Units = std::vector<std::uint16_t>;

std::string encodedByModel(const Units& units, std::int64_t limit) {
    std::string out;
    for (const unsigned unit : units) {
        if (static_cast<std::int64_t>(out.size()) >= limit || unit == 0) break;
        if (unit < 0x80) out += kvtest::byteText(unit);
        if (unit >= 0x80 && unit < 0x800) out += kvtest::byteText(192 + unit / 64) + kvtest::byteText(128 + unit % 64);
        if (unit >= 0x800 && unit < 0xFFFF) {
            out += kvtest::byteText(224 + unit / 4096) + kvtest::byteText(128 + unit / 64 % 64) +
                   kvtest::byteText(128 + unit % 64);
        }
    }
    return out;
}

/// Both widths, with the text ended by a zero unit.
void checkBothWidths(Units units, std::int64_t limit) {
    const std::string expected = encodedByModel(units, limit);
    units.push_back(0);
    std::wstring wide(units.begin(), units.end());
    for (wchar_t& unit : wide) unit = static_cast<wchar_t>(unit | 0x10000);  // lost
    const Encoded fromWide(wide.c_str(), limit);
    std::vector<char> from16(fromWide.bytes.size(), '#');
    EXPECT_EQ(kvStr_UTF16_to_UTF8(from16.data(), units.data(), limit), fromWide.result);
    EXPECT_EQ(from16, fromWide.bytes);
    EXPECT_EQ(kvStr_UTF16_to_UTF8(nullptr, units.data(), limit), fromWide.result);
    ASSERT_EQ(fromWide.result, static_cast<std::int64_t>(expected.size()) + 1);
    const bool isEnded = static_cast<std::int64_t>(expected.size()) < limit;
    std::string all = expected + (isEnded ? std::string(1, '\0') : "");
    all.resize(fromWide.bytes.size(), '#');
    ASSERT_EQ(fromWide.all(), all);
}

TEST(Utf8, EveryUnitIsEncodedAsTheModelDoes) {
    for (unsigned unit = 0; unit <= 0xFFFF && !testing::Test::HasFailure(); ++unit) {
        checkBothWidths({static_cast<std::uint16_t>(unit)}, 4);
    }
}

TEST(Utf8, TextsAtEveryLimitAreEncodedAsTheModelDoes) {
    kvtest::Dice dice;
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
        Units units(dice.below(12));
        for (std::uint16_t& unit : units)
            unit = static_cast<std::uint16_t>(1 + (dice.word() & 0xFFFF) % (dice.below(2) == 0 ? 0x900 : 0xFFFF));
        for (std::int64_t limit = -1; limit < 40; ++limit) checkBothWidths(units, limit);
    }
}

TEST(Utf8, TextOf16BitUnitsIsMeasuredToo) {
    EXPECT_EQ(kvStr_UTF16_to_UTF8(nullptr, nullptr, kNoLimit), 1);
    const std::uint16_t euro[] = {0x20AC, 0};
    EXPECT_EQ(kvStr_UTF16_to_UTF8(nullptr, euro, kNoLimit), 4);
}

}  // namespace
