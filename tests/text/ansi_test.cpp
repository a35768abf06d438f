// Bytes that are letters.
#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "kvos/text.h"
#include "text/inputs.h"

namespace {

constexpr wchar_t kUntouched = 0x5A5A;

struct Widened {
    std::wstring units;
    std::uint32_t result;
    bool operator==(const Widened&) const = default;
};

/// Exactly the given bytes are there to be read.
Widened widened(const std::string& bytes, std::int64_t limit) {
    const std::vector<char> exact(bytes.begin(), bytes.end());
    const std::size_t room = static_cast<std::size_t>(limit > 0 ? limit : 0) + 1;
    std::wstring wide(room, kUntouched);
    std::vector<std::uint16_t> narrow(room, kUntouched);
    const std::uint32_t result = kvStr_ANSI_to_wchar(wide.data(), exact.data(), limit);
    EXPECT_EQ(kvStr_ANSI_to_UTF16(narrow.data(), exact.data(), limit), result);
    EXPECT_EQ(kvStr_ANSI_to_wchar(nullptr, exact.data(), limit), result);
    EXPECT_EQ(std::wstring(narrow.begin(), narrow.end()), wide);
    return {wide, result};
}

std::uint32_t isPlain(const std::string& bytes) {
    return widened(bytes + '\0', static_cast<std::int64_t>(bytes.size()) + 1).result;
}

TEST(AnsiText, PlainAsciiIsWidened) {
    EXPECT_EQ(widened(std::string("abc\0", 4), 10),
              (Widened{std::wstring(L"abc\0", 4) + std::wstring(7, kUntouched), 1}));
}

TEST(AnsiText, Utf8IsWidenedAllTheSameAndTold) {
    EXPECT_EQ(widened(std::string("\xC3\xA9\0", 3), 3), (Widened{{0xC3, 0xA9, 0, kUntouched}, 0}));
}

TEST(AnsiText, BytesHaveNoSign) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(widened(kvtest::byteText(byte), 1), (Widened{{static_cast<wchar_t>(byte), kUntouched}, 1}));
    }
}

TEST(AnsiText, TheFormsThatCountAsUtf8) {
    for (const char* text :
         {"\xC2\x80", "\xDF\xBF", "\xE0\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\xBF\xBF\xBF"}) {
        EXPECT_EQ(isPlain(text), 0u);
        EXPECT_EQ(isPlain(std::string("ab") + text + "c"), 0u);
        EXPECT_EQ(isPlain(std::string("\xC3") + text), 0u);  // a lead byte that came to nothing hides none
    }
}

TEST(AnsiText, TheFormsThatDoNot) {
    for (const char* text :
         {"\xC0\x80", "\xC1\xBF", "\xC2", "\xC2z", "\xC2\xC0", "\xE0\x80", "\xE0\x80z", "\xF0\x8F\xBF\xBF",
          "\xF1\x80\x80\x80", "\xF0\x90\x80", "\xF5\x90\x80\x80", "\x80\x80\x80"}) {
        EXPECT_EQ(isPlain(text), 1u) << text;
    }
}

TEST(AnsiText, TheLimitCutsAFormAndNothingBehindItIsRead) {
    EXPECT_EQ(widened("\xC3", 1), (Widened{{0xC3, kUntouched}, 1}));
    EXPECT_EQ(widened("\xE2\x82", 2).result, 1u);
    EXPECT_EQ(widened("abc", 0), (Widened{{kUntouched}, 1}));
    EXPECT_EQ(widened("abc", INT64_MIN), (Widened{{kUntouched}, 1}));
}

TEST(AnsiText, IsJudgedAsTheModelDoes) {
    const std::regex form("[\xC2-\xDF][\x80-\xBF]|[\xE0-\xEF][\x80-\xBF]{2}|[\xF0-\xF4][\x90-\xBF][\x80-\xBF]{2}");
    kvtest::forManyTexts("a\x80\x9F\xC3\xE2\xF1", [&](const std::string& text) {
        EXPECT_EQ(isPlain(text), std::regex_search(text, form) ? 0u : 1u);
    });
}

TEST(AnsiText, NarrowingKeepsTheLowByteOfEachUnit) {
    const std::uint16_t units[] = {'a', 0x1E9, 0x20AC, 0};
    const std::wstring wide(std::begin(units), std::end(units));
    char bytes[8];
    EXPECT_EQ(kvStr_UTF16_to_ANSI(bytes, units, 8), bytes);
    EXPECT_STREQ(bytes, "a\xE9\xAC");
    EXPECT_EQ(kvStr_wchar_to_ANSI(bytes, wide.c_str(), 8), bytes);
    EXPECT_STREQ(bytes, "a\xE9\xAC");
}

TEST(AnsiText, AUnitWithAZeroLowByteDoesNotEndTheText) {
    const std::uint16_t units[] = {'a', 0x100, 'b', 0};
    char bytes[] = "####";
    kvStr_UTF16_to_ANSI(bytes, units, 5);
    EXPECT_EQ(std::string(bytes, 5), std::string("a\0b\0\0", 5));
}

TEST(AnsiText, NarrowingEndsWithTheZeroOrTheLimit) {
    for (std::int64_t limit = -1; limit < 6; ++limit) {
        std::string bytes(6, '#');
        kvStr_wchar_to_ANSI(bytes.data(), L"abc", limit);
        std::string expected = std::string("abc\0", 4).substr(0, static_cast<std::size_t>(limit > 0 ? limit : 0));
        expected.resize(6, '#');
        EXPECT_EQ(bytes, expected);
    }
}

TEST(AnsiText, EveryByteComesBack) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        const std::string text = kvtest::byteText(byte);
        wchar_t wide[2];
        std::uint16_t units[2];
        char back[2];
        kvStr_ANSI_to_wchar(wide, text.c_str(), 2);
        EXPECT_EQ(kvStr_wchar_to_ANSI(back, wide, 2), text);
        kvStr_ANSI_to_UTF16(units, text.c_str(), 2);
        EXPECT_EQ(kvStr_UTF16_to_ANSI(back, units, 2), text);
    }
}

TEST(AnsiText, NullIsAnEmptyTextAndNoTarget) {
    char byte = '#';
    EXPECT_EQ(kvStr_wchar_to_ANSI(&byte, nullptr, 1), &byte);
    EXPECT_EQ(byte, '\0');
    EXPECT_EQ(kvStr_UTF16_to_ANSI(nullptr, nullptr, 1), nullptr);
    wchar_t unit = kUntouched;
    EXPECT_EQ(kvStr_ANSI_to_wchar(&unit, nullptr, 1), 1u);
    EXPECT_EQ(unit, L'\0');
}

}  // namespace
