// Base 64 without lines and padding.
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

#include "kvos/encoding.h"
#include "kvos/memory.h"
#include "text/inputs.h"

namespace {

std::string encoded(const std::string& bytes) {
    char* out = nullptr;
    std::uint64_t length = 999;
    EXPECT_EQ(b64_encode(bytes.data(), bytes.size(), &out, &length), length);
    EXPECT_EQ(std::string_view(out).size(), length);
    std::string text(out);
    KVFree(out);
    return text;
}

std::optional<std::string> decoded(const std::string& text) {
    auto* out = reinterpret_cast<std::uint8_t*>(1);
    std::uint64_t length = 999;
    EXPECT_EQ(b64_decode(text.data(), text.size(), &out, &length), length);
    if (out == nullptr) {
        EXPECT_EQ(length, 0u);
        return std::nullopt;
    }
    EXPECT_EQ(out[length], 0);
    std::string bytes(reinterpret_cast<char*>(out), length);
    KVFree(out);
    return bytes;
}

std::optional<std::string> decodedByModel(const std::string& text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::size_t at[4];
        for (std::size_t j = 0; j < 4; ++j) {
            at[j] = std::string_view(b64_table).find(text[i + j]);
            if (at[j] == std::string_view::npos) return std::nullopt;
        }
        bytes += kvtest::byteText((at[0] * 4 | at[1] / 16) % 256);
        if (at[2] != 64) bytes += kvtest::byteText((at[1] * 16 | at[2] / 4) % 256);
        if (at[2] != 64 && at[3] != 64) bytes += kvtest::byteText((at[2] * 64 | at[3]) % 256);
    }
    return bytes;
}

TEST(BareBase64, TheTableHasThePaddingMarkAtItsEnd) {
    EXPECT_STREQ(b64_table, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=");
    EXPECT_EQ(b64_table[64], '=');
}

TEST(BareBase64, NoPaddingGoesOut) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("A"), "QQAA");
    EXPECT_EQ(encoded("AB"), "QUIA");
    EXPECT_EQ(encoded("ABC"), "QUJD");
    EXPECT_EQ(encoded(std::string(54, '\0')), std::string(72, 'A'));
    EXPECT_EQ(encoded(std::string(300, '\0')), std::string(400, 'A'));
}

TEST(BareBase64, TheZerosOfTheLastGroupComeBackAsBytes) {
    EXPECT_EQ(decoded(encoded("A")), std::string("A\0\0", 3));
    EXPECT_EQ(decoded(encoded("AB")), std::string("AB\0", 3));
}

TEST(BareBase64, WholeGroupsComeBack) {
    kvtest::Dice dice;
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string bytes(3, static_cast<char>(static_cast<unsigned char>(byte)));
        ASSERT_EQ(decoded(encoded(bytes)), bytes);
    }
    for (std::size_t length = 0; length < 400; ++length) {
        const std::string bytes = dice.bytes(length);
        ASSERT_EQ(decoded(encoded(bytes)), bytes + std::string((3 - length % 3) % 3, '\0'));
    }
}

TEST(BareBase64, TheDecoderKnowsPadding) {
    EXPECT_EQ(decoded("QQ=="), "A");
    EXPECT_EQ(decoded("QUI="), "AB");
    EXPECT_EQ(decoded("QQ=AQUJD"), "AABC");  // the next group follows
}

TEST(BareBase64, APaddingMarkAheadOfThatCountsAs64) {
    EXPECT_EQ(decoded("=QUI"), decodedByModel("=QUI"));
    EXPECT_EQ(decoded("Q=UI"), decodedByModel("Q=UI"));
    EXPECT_EQ(decoded("===="), std::string("\x04", 1));
}

TEST(BareBase64, WhatIsNotOfTheTableOrNotOfWholeGroupsIsRefused) {
    for (const char* text : {"Q", "QQ", "QUI", "QUJDQ", "QQ\n=", "QQ-_", "QUJD\n\n\n\n"}) {
        EXPECT_EQ(decoded(text), std::nullopt) << text;
    }
    EXPECT_EQ(decoded(std::string("QQ\0A", 4)), std::nullopt);
    EXPECT_EQ(decoded(""), "");
}

TEST(BareBase64, IsDecodedAsTheModelDoes) {
    kvtest::forManyTexts("AQ/=9-", [](const std::string& text) { EXPECT_EQ(decoded(text), decodedByModel(text)); });
    kvtest::Dice dice;
    for (int i = 0; i < 2000; ++i) {
        std::string text;
        for (std::size_t length = 4 * dice.below(30); length > 0; --length) text += b64_table[dice.below(65)];
        ASSERT_EQ(decoded(text), decodedByModel(text));
    }
}

TEST(BareBase64, NullIsRefused) {
    auto* text = reinterpret_cast<char*>(1);
    auto* bytes = reinterpret_cast<std::uint8_t*>(1);
    std::uint64_t length = 999;
    EXPECT_EQ(b64_encode(nullptr, 3, &text, &length), 0u);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(b64_decode(nullptr, 4, &bytes, nullptr), 0u);
    EXPECT_EQ(bytes, nullptr);
    EXPECT_EQ(b64_encode("abc", 3, nullptr, &length), 0u);
    EXPECT_EQ(b64_decode("QUJD", 4, nullptr, &length), 0u);
}

TEST(BareBase64, SizesThatCanNotBeAllocatedAreRefused) {
    char* text = nullptr;
    std::uint8_t* bytes = nullptr;
    EXPECT_EQ(b64_encode("abc", UINT64_MAX, &text, nullptr), 0u);
    EXPECT_EQ(b64_encode("abc", 0xFFFFFFFF, &text, nullptr), 0u);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(b64_decode("QUJD", UINT64_MAX - 3, &bytes, nullptr), 0u);
    EXPECT_EQ(bytes, nullptr);
}

}  // namespace
