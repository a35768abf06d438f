// Strings of C++.
#include "kvos/wide_string.h"

#include <cerrno>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "text/inputs.h"

namespace {

TEST(WideString, BecomesUtf8FromEachKindOfText) {
    const std::uint16_t units[] = {'a', 0xE9, 0x20AC, 0};
    const std::string expected = "a\u00E9\u20AC";
    EXPECT_EQ(wideToString(std::wstring(L"a\u00E9\u20AC")), expected);
    EXPECT_EQ(wideToString(L"a\u00E9\u20AC"), expected);
    EXPECT_EQ(wideToString(units), expected);
}

TEST(WideString, ComesFromUtf8OfEachKindOfText) {
    const std::wstring expected = L"a\u00E9\u20AC";
    EXPECT_EQ(stringToWide(std::string("a\u00E9\u20AC")), expected);
    EXPECT_EQ(stringToWide("a\u00E9\u20AC"), expected);
    EXPECT_EQ(stringToWide(reinterpret_cast<const unsigned char*>("a\u00E9\u20AC")), expected);
}

TEST(WideString, LettersBeyondTheFirstPlaneDoNotSurvive) {
    EXPECT_EQ(wideToString(std::wstring(1, wchar_t{0x1F600})), "\xEF\x98\x80");
    EXPECT_EQ(wideToString(std::wstring{L'a', wchar_t{0x10000}, L'b'}), "a");
    EXPECT_EQ(stringToWide("\xF0\x9F\x98\x80"), L"\xF0\x9F\x98\x80");
}

TEST(WideString, AZeroInsideEndsTheText) {
    EXPECT_EQ(wideToString(std::wstring(L"a\0b", 3)), "a");
    EXPECT_EQ(stringToWide(std::string("a\0b", 3)), L"a");
    EXPECT_EQ(stringToWide("a\xC0\x80"
                           "b"),
              L"a");
}

TEST(WideString, LongTextsComeBack) {
    kvtest::Dice dice;
    for (int i = 0; i < 300; ++i) {
        std::wstring text(dice.below(2000), L'\0');
        for (wchar_t& unit : text) unit = static_cast<wchar_t>(1 + dice.below(0xFFFE));
        ASSERT_EQ(stringToWide(wideToString(text)), text);
    }
}

TEST(WideString, NullIsAnEmptyText) {
    EXPECT_EQ(wideToString(static_cast<const wchar_t*>(nullptr)), "");
    EXPECT_EQ(wideToString(static_cast<const std::uint16_t*>(nullptr)), "");
    EXPECT_EQ(stringToWide(static_cast<const char*>(nullptr)), L"");
    EXPECT_EQ(stringToWide(static_cast<const unsigned char*>(nullptr)), L"");
}

TEST(WideString, CaseIsChangedUnitByUnit) {
    EXPECT_EQ(wStrToLower(L"aBc-Z 9_[`{"), L"abc-z 9_[`{");
    EXPECT_EQ(wStrToUpper(L"aBc-Z 9_[`{"), L"ABC-Z 9_[`{");
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    EXPECT_EQ(wStrToLower(L"\u00C9\u0416\u00DF\u20AC"), L"\u00E9\u0436\u00DF\u20AC");
    EXPECT_EQ(wStrToUpper(L"\u00E9\u0436\u20AC"), L"\u00C9\u0416\u20AC");
    EXPECT_EQ(wStrToUpper(std::wstring(L"a\0b", 3)), std::wstring(L"A\0B", 3));
}

TEST(WideString, NumbersAreReadFromItsStart) {
    EXPECT_EQ(wideToInt(L" -42 and more"), -42);
    EXPECT_EQ(wideToLongLong(L"9223372036854775807"), INT64_MAX);
    EXPECT_EQ(wideToLongLong(L"-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(wideToDouble(L"2.5e3x"), 2500.0);
    for (const wchar_t* text : {L"", L"x1", L"\u0661"}) {
        EXPECT_EQ(wideToInt(text), 0);
        EXPECT_EQ(wideToLongLong(text), 0);
        EXPECT_EQ(wideToDouble(text), 0.0);
    }
}

TEST(WideString, NumbersThatAreTooLargeGiveTheLargest) {
    errno = 77;
    EXPECT_EQ(wideToInt(L"2147483648"), INT_MAX);
    EXPECT_EQ(wideToInt(L"-99999999999999999999"), INT_MIN);
    EXPECT_EQ(wideToLongLong(L"9223372036854775808"), INT64_MAX);
    EXPECT_TRUE(std::isinf(wideToDouble(L"1e999")));
    EXPECT_EQ(errno, 77);
}

TEST(WideString, NumbersAreWrittenByTheCallersFormat) {
    EXPECT_EQ(intToWStr(-42, L"%05d"), L"-0042");
    EXPECT_EQ(intToWStr(255, L"<%x>"), L"<ff>");
    EXPECT_EQ(longLongToWStr(INT64_MAX, L"%lld"), L"9223372036854775807");
    EXPECT_EQ(doubleToWStr(0.125, L"%.2f"), L"0.12");
    EXPECT_EQ(intToWStr(1, nullptr), L"");
}

TEST(WideString, WhatDoesNotFitInTheBufferIsEmpty) {
    EXPECT_EQ(intToWStr(7, L"%019d"), L"0000000000000000007");
    EXPECT_EQ(intToWStr(7, L"%020d"), L"");
    EXPECT_EQ(longLongToWStr(INT64_MIN + 1, L"%lld"), L"");  // 20 characters
    EXPECT_EQ(longLongToWStr(-999999999999999999, L"%lld"), L"-999999999999999999");
    EXPECT_EQ(doubleToWStr(1, L"%099.0f").size(), 99u);
    EXPECT_EQ(doubleToWStr(1, L"%0100.0f"), L"");
}

}  // namespace
