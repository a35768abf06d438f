// The scramble under a key.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "kvos/encoding.h"
#include "kvos/memory.h"
#include "text/inputs.h"

namespace {

constexpr std::uint32_t kKeys[] = {0, 1, 2, 7, 255, 256, 1000, 0xFFFFFFFF};

std::string taken(std::uint8_t* bytes, std::uint64_t length) {
    std::string text(reinterpret_cast<char*>(bytes), length);
    KVFree(bytes);
    return text;
}

std::string encrypted(std::uint32_t key, const std::string& text, std::optional<std::string> prefix = std::nullopt) {
    std::uint8_t* out = nullptr;
    std::uint64_t length = 999;
    const char* const given = prefix.has_value() ? prefix->data() : nullptr;
    EXPECT_EQ(
        xor_encrypt("not looked at", key, text.data(), text.size(), given, prefix ? prefix->size() : 0, &out, &length),
        text.size());
    EXPECT_EQ(out[length], 0);
    return taken(out, length);
}

std::string decrypted(std::uint32_t key, const std::string& bytes) {
    std::uint8_t* out = nullptr;
    std::uint64_t length = 999;
    EXPECT_EQ(xor_decrypt(nullptr, key, bytes.data(), bytes.size(), &out, &length), length);
    return taken(out, length);
}

std::string encoded(std::uint32_t key, const std::string& text, std::string_view prefix = {}) {
    std::uint8_t* out = nullptr;
    std::uint64_t length = 999;
    EXPECT_EQ(kvXCEncode(nullptr, key, text.data(), text.size(), prefix.data(), prefix.size(), &out, &length), length);
    EXPECT_EQ(std::strlen(reinterpret_cast<char*>(out)), length);
    return taken(out, length);
}

std::optional<std::string> decoded(std::uint32_t key, const std::string& text) {
    auto* out = reinterpret_cast<std::uint8_t*>(1);
    std::uint64_t length = 999;
    EXPECT_EQ(kvXCDEcode(nullptr, key, text.data(), text.size(), &out, &length), length);
    if (out == nullptr) return std::nullopt;
    return taken(out, length);
}

std::string terminated(const std::string& text) { return text + '\0'; }

unsigned char at(const std::string& text, std::size_t i) { return static_cast<unsigned char>(text[i]); }

/// The chain written as one rule: the separator is the zero byte between prefix and text.
std::string encryptedByModel(std::uint32_t key, const std::string& text, const std::string& prefix) {
    const std::string plain = terminated(prefix) + text;
    std::string out = plain.substr(0, 1);
    for (std::size_t i = 1; i < plain.size(); ++i) {
        const std::size_t position = key == 0 ? i : i % key;
        out += kvtest::byteText((at(plain, i) ^ at(out, i - 1) ^ position) & 0xFF);
    }
    return out;
}

std::string decryptedByModel(std::uint32_t key, const std::string& bytes) {
    std::string plain = bytes.substr(0, 1);
    for (std::size_t i = 1; i < bytes.size(); ++i) {
        const std::size_t position = key == 0 ? i : i % key;
        plain += kvtest::byteText((at(bytes, i) ^ at(bytes, i - 1) ^ position) & 0xFF);
    }
    const std::size_t separator = plain.find('\0', 1);
    if (separator != std::string::npos) return terminated(plain.substr(separator + 1));
    plain.back() = '\0';
    return plain;
}

TEST(KeyedText, AGivenPrefixMakesTheResultPredictable) {
    // "k", then 'e' ^ 'k' ^ 1, the separator and the text, each with the byte before it and its position.
    EXPECT_EQ(encrypted(0, "A", "ke"), std::string("k\x0F\x0D\x4F", 4));
    EXPECT_EQ(encrypted(2, "A", "ke"), std::string("k\x0F\x0F\x4F", 4));
}

TEST(KeyedText, IsScrambledAsTheModelDoes) {
    kvtest::Dice dice;
    for (const std::uint32_t key : kKeys) {
        for (int i = 0; i < 100; ++i) {
            const std::string prefix = dice.bytes(1 + dice.below(20));
            const std::string text = dice.bytes(dice.below(700));
            ASSERT_EQ(encrypted(key, text, prefix), encryptedByModel(key, text, prefix));
        }
    }
}

TEST(KeyedText, IsTakenApartAsTheModelDoes) {
    kvtest::Dice dice;
    for (const std::uint32_t key : kKeys) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            ASSERT_EQ(decrypted(key, kvtest::byteText(byte)), decryptedByModel(key, kvtest::byteText(byte)));
        }
        for (int i = 0; i < 300; ++i) {
            const std::string bytes = dice.bytes(1 + dice.below(500));
            ASSERT_EQ(decrypted(key, bytes), decryptedByModel(key, bytes));
        }
    }
}

TEST(KeyedText, ComesBackUnderTheSameKeyWithAZeroThatCounts) {
    kvtest::Dice dice;
    for (const std::uint32_t key : kKeys) {
        for (std::size_t length = 0; length < 150; ++length) {
            const std::string text = dice.bytes(length);
            ASSERT_EQ(decrypted(key, encrypted(key, text)), terminated(text));
            ASSERT_EQ(decoded(key, encoded(key, text)), terminated(text));
        }
    }
}

TEST(KeyedText, EveryByteComesBack) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string text = kvtest::byteText(byte) + "x" + kvtest::byteText(byte);
        ASSERT_EQ(decoded(12345, encoded(12345, text)), terminated(text));
    }
}

TEST(KeyedText, WithoutAPrefixTwoResultsDiffer) {
    std::srand(7);
    std::set<std::string> results;
    for (int i = 0; i < 50; ++i) results.insert(encoded(5, "the same text"));
    EXPECT_GT(results.size(), 45u);
}

TEST(KeyedText, ThePrefixFollowsFromTheCallersSeed) {
    std::srand(99);
    const std::string first = encrypted(5, "text");
    std::srand(99);
    EXPECT_EQ(encrypted(5, "text"), first);

    std::srand(99);
    std::string prefix(static_cast<std::size_t>(std::rand() % 13 + 4), '\0');
    for (char& c : prefix) c = b64_table[1 + (std::rand() & 63)];
    EXPECT_EQ(first, encryptedByModel(5, "text", prefix));
}

TEST(KeyedText, AnEmptyPrefixIsNone) {
    std::srand(3);
    const std::string drawn = encrypted(9, "text");
    std::srand(3);
    EXPECT_EQ(encrypted(9, "text", ""), drawn);
}

TEST(KeyedText, DrawnPrefixesHave4To16Characters) {
    std::set<std::size_t> lengths;
    for (int i = 0; i < 2000; ++i) lengths.insert(encrypted(0, "").size() - 1);
    EXPECT_EQ(*lengths.begin(), 4u);
    EXPECT_EQ(*lengths.rbegin(), 16u);
    EXPECT_EQ(lengths.size(), 13u);
}

TEST(KeyedText, TheFirstZeroBehindTheFirstByteEndsThePrefix) {
    EXPECT_EQ(decrypted(3, encrypted(3, "text", std::string("ab\0cd", 5))), terminated(std::string("cd\0text", 7)));
    EXPECT_EQ(decrypted(3, encrypted(3, "text", std::string("\0bcd", 4))), terminated("text"));
}

TEST(KeyedText, WithoutASeparatorTheZeroTakesTheLastByte) {
    const std::string bytes("abc");  // 'b' ^ 'a' ^ 1 = 2, 'c' ^ 'b' ^ 2 = 3
    EXPECT_EQ(decrypted(0, bytes), std::string("a\x02\0", 3));
    EXPECT_EQ(decrypted(0, "a"), std::string(1, '\0'));
}

TEST(KeyedText, TheLastLineFeedOfTheTextGoesTheOthersStay) {
    const std::string one = encoded(1, std::string(52, 'x'), "p");
    EXPECT_EQ(one.size(), 72u);
    EXPECT_EQ(one.find('\n'), std::string::npos);
    const std::string two = encoded(1, std::string(53, 'x'), "p");
    EXPECT_EQ(two.size(), 77u);
    EXPECT_EQ(two[72], '\n');
    EXPECT_EQ(decoded(1, two), terminated(std::string(53, 'x')));
}

TEST(KeyedText, TheShortestTextsHaveRoom) {
    EXPECT_EQ(encoded(0, "", "k"), "a2o=");
    EXPECT_EQ(decoded(0, "a2o="), std::string(1, '\0'));
    EXPECT_EQ(decoded(0, "aw=="), std::string(1, '\0'));
}

TEST(KeyedText, WhatIsNotBase64GivesNoResult) {
    for (const char* text : {"", "a", "abc", "a===", "----"}) EXPECT_EQ(decoded(4, text), std::nullopt) << text;
}

TEST(KeyedText, RefusedInputTellsThatThereIsNoResult) {
    auto* out = reinterpret_cast<std::uint8_t*>(1);
    std::uint64_t length = 999;
    const auto isTold = [&] {
        const bool told = out == nullptr && length == 0;
        out = reinterpret_cast<std::uint8_t*>(1);
        length = 999;
        return told;
    };
    EXPECT_EQ(xor_encrypt(nullptr, 1, nullptr, 5, nullptr, 0, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(xor_encrypt(nullptr, 1, "a", UINT64_MAX, nullptr, 0, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(kvXCEncode(nullptr, 1, "a", 1, "p", UINT64_MAX, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(xor_decrypt(nullptr, 1, "a", 0, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(xor_decrypt(nullptr, 1, nullptr, 4, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(kvXCDEcode(nullptr, 1, nullptr, 4, &out, &length), 0u);
    EXPECT_TRUE(isTold());
    EXPECT_EQ(kvXCDEcode(nullptr, 1, "aw==", std::uint64_t{2} << 30, &out, &length), 0u);  // unread
    EXPECT_TRUE(isTold());
    EXPECT_EQ(xor_encrypt(nullptr, 1, "a", 1, nullptr, 0, nullptr, &length), 0u);
    EXPECT_EQ(xor_decrypt(nullptr, 1, "a", 1, nullptr, nullptr), 0u);
}

TEST(KeyedText, NoInputIsAnEmptyText) {
    std::uint8_t* out = nullptr;
    EXPECT_EQ(xor_encrypt(nullptr, 0, nullptr, 0, "k", 1, &out, nullptr), 0u);
    EXPECT_EQ(taken(out, 3), std::string("kj\0", 3));
}

}  // namespace
