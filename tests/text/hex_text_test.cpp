// Bytes as hexadecimal digits, and back.
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

#include "kvos/encoding.h"
#include "text/inputs.h"

namespace {

std::string encoded(const std::string& bytes) {
    std::string buffer(2 * bytes.size() + 2, '#');
    EXPECT_EQ(kvEncodeHEXString(bytes.data(), bytes.size(), buffer.data()), 0u);
    EXPECT_EQ(buffer.substr(2 * bytes.size()), std::string("\0#", 2));
    return buffer.substr(0, 2 * bytes.size());
}

std::string decoded(const std::string& digits) {
    std::string buffer((digits.size() + 1) / 2 + 1, '#');
    std::uint64_t length = 999;
    EXPECT_EQ(kvDecodeHEXString(digits.c_str(), buffer.data(), &length), 0u);
    EXPECT_EQ(length, (digits.size() + 1) / 2);
    EXPECT_EQ(buffer.back(), '#');
    buffer.pop_back();
    return buffer;
}

TEST(HexText, EveryByteHasTwoSmallDigitsAndComesBack) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        EXPECT_EQ(encoded(kvtest::byteText(byte)), digits);
        EXPECT_EQ(decoded(digits), kvtest::byteText(byte));
        std::snprintf(digits, sizeof digits, "%02X", byte);
        EXPECT_EQ(decoded(digits), kvtest::byteText(byte));
    }
}

TEST(HexText, LongBytesComeBack) {
    kvtest::Dice dice;
    for (int i = 0; i < 200; ++i) {
        const std::string bytes = dice.bytes(dice.below(3000));
        ASSERT_EQ(decoded(encoded(bytes)), bytes);
    }
}

TEST(HexText, ALastDigitAloneIsPairedWithTheTerminator) {
    EXPECT_EQ(decoded("4"), "\x10");
    EXPECT_EQ(decoded("414"), "A\x10");
}

TEST(HexText, IsDecodedAsTheModelDoes) {
    const auto digit = [](unsigned char c) {
        if (c >= 'a' && c <= 'z') c = static_cast<unsigned char>(c - 32);
        return c < ':' ? c - '0' : c - 'A' + 10;
    };
    kvtest::forManyTexts("0aFzg \xC3", [&](const std::string& text) {
        std::string expected;
        const std::string padded = text + '\0';
        for (std::size_t i = 0; i < text.size(); i += 2) {
            const int value =
                16 * digit(static_cast<unsigned char>(padded[i])) + digit(static_cast<unsigned char>(padded[i + 1]));
            expected += static_cast<char>(static_cast<unsigned char>(value & 0xFF));
        }
        EXPECT_EQ(decoded(text), expected);
    });
}

TEST(HexText, TheSizeIsToldWithoutABuffer) {
    std::uint64_t length = 999;
    EXPECT_EQ(kvDecodeHEXString("12345", nullptr, &length), 0u);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(kvDecodeHEXString(nullptr, nullptr, &length), 0u);
    EXPECT_EQ(length, 0u);
}

TEST(HexText, AnEmptyInputWritesNoByte) {
    char buffer[2] = "#";
    std::uint64_t length = 999;
    EXPECT_EQ(kvDecodeHEXString("", buffer, &length), 0u);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(kvDecodeHEXString("41", buffer, nullptr), 0u);
    EXPECT_EQ(buffer[0], 'A');
    EXPECT_EQ(kvEncodeHEXString(nullptr, 5, buffer), 0u);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(kvEncodeHEXString("a", 1, nullptr), 0u);
}

}  // namespace
