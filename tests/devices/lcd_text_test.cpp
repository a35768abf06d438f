// Typed text as the panel's bytes.
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "kvos/lcd.h"

namespace {

/// The bytes, with a check that nothing behind them was touched.
std::string converted(const std::string& typed) {
    std::string bytes(64, '\x5A');
    const std::uint32_t count =
        lcdConvertInputStringToArray(typed.c_str(), reinterpret_cast<std::uint8_t*>(bytes.data()));
    EXPECT_LE(count, 23u);
    EXPECT_EQ(bytes.substr(count), std::string(64 - count, '\x5A')) << typed;
    return bytes.substr(0, count);
}

TEST(LcdText, PlainTextIsCopied) {
    EXPECT_EQ(converted("Recording 01:00"), "Recording 01:00");
    EXPECT_EQ(converted("\xC3\xA9\xFF\x01"), "\xC3\xA9\xFF\x01");
}

TEST(LcdText, NothingGivesNothing) {
    EXPECT_EQ(converted(""), "");
    std::uint8_t byte = 7;
    EXPECT_EQ(lcdConvertInputStringToArray(nullptr, &byte), 0u);
    EXPECT_EQ(lcdConvertInputStringToArray("a", nullptr), 0u);
    EXPECT_EQ(byte, 7);
}

TEST(LcdText, TwoBackslashesAreOne) {
    EXPECT_EQ(converted(R"(a\\b)"), R"(a\b)");
    EXPECT_EQ(converted(R"(\\065)"), R"(\065)");
    EXPECT_EQ(converted(R"(\\\065)"), R"(\A)");
}

TEST(LcdText, EveryByteCanBeTypedInThreeForms) {
    for (int value = 0; value < 256; ++value) {
        const std::string byte(1, static_cast<char>(value));
        char typed[16];
        std::snprintf(typed, sizeof typed, "\\%03d", value);
        EXPECT_EQ(converted(typed), byte) << typed;
        std::snprintf(typed, sizeof typed, "\\x%02X", static_cast<unsigned>(value));
        EXPECT_EQ(converted(typed), byte) << typed;
        std::snprintf(typed, sizeof typed, "\\x%02x", static_cast<unsigned>(value));
        EXPECT_EQ(converted(typed), byte) << typed;
        std::string digits;
        for (int bit = 7; bit >= 0; --bit) digits += (value >> bit & 1) != 0 ? '1' : '0';
        EXPECT_EQ(converted("\\b" + digits), byte) << digits;
    }
}

TEST(LcdText, DigitsBehindAFormAreText) {
    EXPECT_EQ(converted(R"(\0651)"), "A1");
    EXPECT_EQ(converted(R"(\x411)"), "A1");
    EXPECT_EQ(converted(R"(\b010000011)"), "A1");
}

TEST(LcdText, ADecimalAboveAByteIsCopiedAsItStands) {
    for (int value = 256; value < 1000; ++value) {
        const std::string typed = "\\" + std::to_string(value);
        EXPECT_EQ(converted(typed), typed);
    }
}

TEST(LcdText, ABackslashThatBeginsNoFormIsCopiedAsItStands) {
    for (const char* typed :
         {R"(\)", R"(\a)", R"(\n)", R"(\1)", R"(\12)", R"(\12a)", R"(\b)", R"(\b0100000)", R"(\b01000002)", R"(\x)",
          R"(\x4)", R"(\x4g)", R"(\X41)", R"(\B01000001)", R"(\-12)", R"(\ 12)"}) {
        EXPECT_EQ(converted(typed), typed);
    }
    EXPECT_EQ(converted(R"(\12\065)"), R"(\12A)");
}

TEST(LcdText, EndsWithTwentyThreeBytes) {
    EXPECT_EQ(converted(std::string(40, 'x')), std::string(23, 'x'));
    std::string typed;
    for (int i = 0; i < 30; ++i) typed += R"(\065)";
    EXPECT_EQ(converted(typed), std::string(23, 'A'));
    EXPECT_EQ(converted(std::string(22, 'x') + R"(\256)"), std::string(22, 'x') + "\\");
}

/// The bytes of a text whose last character is the last byte that may be read.
std::string convertedAtTheEndOfAPage(const std::string& typed) {
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const mapped = mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    char* const pages = static_cast<char*>(mapped);
    EXPECT_EQ(mprotect(pages + size, size, PROT_NONE), 0);
    char* const text = pages + size - typed.size();
    typed.copy(text, typed.size());
    std::uint8_t bytes[23];
    const std::uint32_t count = lcdConvertInputStringToArray(text, bytes);
    munmap(mapped, 2 * size);
    return {bytes, bytes + count};
}

TEST(LcdText, NothingIsReadBehindWhatTheBytesNeed) {
    EXPECT_EQ(convertedAtTheEndOfAPage(std::string(23, 'x')), std::string(23, 'x'));
    for (const char* last : {R"(\\)", R"(\092)", R"(\x5C)", R"(\b01011100)"}) {
        EXPECT_EQ(convertedAtTheEndOfAPage(std::string(22, 'x') + last), std::string(22, 'x') + "\\") << last;
    }
    // A terminator within a form ends the text as well.
    for (const char* last : {R"(\)", R"(\1)", R"(\12)", R"(\x)", R"(\x4)", R"(\b)", R"(\b0101110)"}) {
        EXPECT_EQ(convertedAtTheEndOfAPage(last + std::string(1, '\0')), last);
    }
}

TEST(LcdText, AZeroByteIsAByteLikeAnyOther) { EXPECT_EQ(converted(R"(a\000b)"), std::string("a\0b", 3)); }

}  // namespace
