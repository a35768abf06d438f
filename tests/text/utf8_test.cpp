// Wide text to UTF-8.
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/text.h"

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

}  // namespace
