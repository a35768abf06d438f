// Conversion by the locale of a code page.
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/text.h"
#include "text/asked_locales.h"

namespace {

constexpr wchar_t kUntouched = 0x5A5A;

std::wstring converted(const char* text, std::int64_t limit, std::uint32_t page) {
    std::wstring units(12, kUntouched);
    EXPECT_STREQ(kvStr_CodePage_to_wchar(units.data(), text, limit, page), std::setlocale(LC_ALL, nullptr));
    return units;
}

std::wstring filled(std::wstring units) {
    units.resize(12, kUntouched);
    return units;
}

TEST(CodePage, EachPageHasItsName) {
    const char* const kNames[] = {"", ".UTF-8", ".UTF-16", ".850", ".860", ".1252", "", ""};
    for (std::uint32_t page = 0; page < 8; ++page) {
        kvtest::askedLocales().clear();
        wchar_t unit;
        const std::string before = kvStr_CodePage_to_wchar(&unit, "", 1, page);
        EXPECT_EQ(kvtest::askedLocales(), (std::vector<std::string>{kNames[page], before})) << page;
    }
}

TEST(CodePage, AsciiIsConvertedUnderEveryPage) {
    for (const std::uint32_t page : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 0xFFFFFFFFu}) {
        EXPECT_EQ(converted("abc", 12, page), filled(std::wstring(L"abc\0", 4))) << page;
        EXPECT_EQ(converted("abc", 2, page), filled(L"ab")) << page;
    }
}

TEST(CodePage, AnyOtherPageIsTheLocaleOfTheEnvironment) {
    setenv("LC_ALL", "C.UTF-8", 1);
    for (const std::uint32_t page : {0u, 6u, 65001u}) {
        EXPECT_EQ(converted("\xC3\xA9\xF0\x9F\x98\x80", 12, page), filled(std::wstring{0xE9, 0x1F600, 0})) << page;
    }
}

TEST(CodePage, AnUnknownNameLeavesTheLocaleInForce) {
    setenv("LC_ALL", "C", 1);
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    for (std::uint32_t page = 1; page <= 5; ++page) {
        if (std::setlocale(LC_ALL, page == 1 ? ".UTF-8" : ".1252") != nullptr) GTEST_SKIP() << "this system knows them";
        EXPECT_EQ(converted("\xC3\xA9", 12, page), filled(std::wstring{0xE9, 0})) << page;
    }
}

TEST(CodePage, AMalformedTextIsConvertedUpToItsBadByteAndNotTerminated) {
    setenv("LC_ALL", "C.UTF-8", 1);
    errno = 0;
    EXPECT_EQ(converted("ab\xFF"
                        "c",
                        8, 0),
              filled(L"ab"));
    EXPECT_EQ(errno, EILSEQ);
}

TEST(CodePage, NoLimitIsTooLarge) {
    for (const std::int64_t limit : {std::int64_t{1} << 61, std::int64_t{1} << 62, INT64_MAX}) {
        EXPECT_EQ(converted("abc", limit, 0), filled(std::wstring(L"abc\0", 4))) << limit;
    }
}

TEST(CodePage, TheLocaleIsPutBack) {
    setenv("LC_ALL", "C.UTF-8", 1);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "C"), nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    const std::string before = std::setlocale(LC_ALL, nullptr);  // one that differs by category
    for (std::uint32_t page = 0; page < 8; ++page) {
        wchar_t units[8];
        std::uint16_t narrow[8];
        EXPECT_EQ(kvStr_CodePage_to_wchar(units, "a", 8, page), before);
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
        EXPECT_EQ(kvStr_CodePage_to_UTF16(narrow, "a", 8, page), before);
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    }
}

TEST(CodePage, To16BitUnitsNothingIsConverted) {
    std::uint16_t units[4] = {1, 2, 3, 4};
    EXPECT_STREQ(kvStr_CodePage_to_UTF16(units, "abc", 4, 0), std::setlocale(LC_ALL, nullptr));
    EXPECT_EQ(units[0], 1);
    EXPECT_EQ(units[3], 4);
}

TEST(CodePage, WithoutRoomOrTargetNothingIsWritten) {
    EXPECT_EQ(converted("abc", 0, 0), filled(L""));
    EXPECT_EQ(converted("abc", -1, 0), filled(L""));
    EXPECT_EQ(converted(nullptr, 3, 0), filled(std::wstring(1, L'\0')));
    EXPECT_NE(kvStr_CodePage_to_wchar(nullptr, "abc", 3, 0), nullptr);
}

}  // namespace
