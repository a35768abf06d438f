// Base 64 in lines, with padding.
#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kvos/encoding.h"
#include "kvos/memory.h"
#include "support/captured_messages.h"
#include "text/inputs.h"

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::size_t room(std::size_t length) {
    const std::size_t characters = length * 4 / 3;
    return characters + (characters + 4) / 72 + 5;
}

std::string encoded(const std::string& bytes) {
    std::string buffer(room(bytes.size()) + 4, '#');
    std::uint64_t length = 0;
    EXPECT_EQ(base64_encode(bytes.data(), bytes.size(), &length, buffer.data()), buffer.data());
    EXPECT_EQ(buffer.substr(room(bytes.size())), "####");
    EXPECT_EQ(buffer[length], '\0');
    buffer.resize(length);

    std::uint64_t again = 0;
    char* const allocated = base64_encode(bytes.data(), bytes.size(), &again, nullptr);
    EXPECT_EQ(std::string(allocated), buffer);
    EXPECT_EQ(again, length);
    KVFree(allocated);
    return buffer;
}

/// The bytes, or nothing if the text was refused; the same in a buffer of exactly the room that it may take.
std::optional<std::string> decoded(const std::string& text) {
    std::uint64_t length = 999;
    std::uint8_t* const allocated = base64_decode(text.data(), text.size(), &length, nullptr);
    std::optional<std::string> bytes;
    if (allocated != nullptr) bytes.emplace(reinterpret_cast<char*>(allocated), length);
    KVFree(allocated);
    if (!bytes.has_value()) {
        EXPECT_EQ(length, 999u);
    }
    const auto counts = [](char c) { return c == '=' || kAlphabet.find(c) != std::string_view::npos; };
    std::vector<std::uint8_t> own(static_cast<std::size_t>(std::ranges::count_if(text, counts)) / 4 * 3 + 4, '#');
    std::uint8_t* const result = base64_decode(text.data(), text.size(), nullptr, own.data());
    EXPECT_EQ(result, bytes.has_value() ? own.data() : nullptr);
    EXPECT_EQ(std::string(own.end() - 4, own.end()), "####");
    if (bytes.has_value()) {
        EXPECT_TRUE(std::equal(bytes->begin(), bytes->end(), own.begin(),
                               [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }));
    }
    return bytes;
}

std::string encodedByModel(const std::string& bytes) {
    std::string bits;
    for (const char c : bytes) {
        for (int i = 7; i >= 0; --i) bits += (static_cast<unsigned char>(c) >> i & 1) != 0 ? '1' : '0';
    }
    while (bits.size() % 6 != 0) bits += '0';
    std::string characters;
    for (std::size_t i = 0; i < bits.size(); i += 6) characters += kAlphabet[std::stoul(bits.substr(i, 6), nullptr, 2)];
    while (characters.size() % 4 != 0) characters += '=';
    std::string lines;
    for (std::size_t i = 0; i < characters.size(); i += 72) lines += characters.substr(i, 72) + "\n";
    return lines;
}

std::optional<std::string> decodedByModel(const std::string& text) {
    std::string accepted;
    for (const char c : text) {
        if (c == '=' || kAlphabet.find(c) != std::string_view::npos) accepted += c;
    }
    if (accepted.empty() || accepted.size() % 4 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < accepted.size(); i += 4) {
        const std::string group = accepted.substr(i, 4);
        const auto pads = static_cast<std::size_t>(std::ranges::count(group, '='));
        if (pads > 2) return std::nullopt;
        unsigned long value = 0;
        for (const char c : group) value = value * 64 + (c == '=' ? 0 : kAlphabet.find(c));
        const std::string three =
            kvtest::byteText(value >> 16 & 255) + kvtest::byteText(value >> 8 & 255) + kvtest::byteText(value & 255);
        bytes += three.substr(0, 3 - pads);
        if (pads > 0) break;
    }
    return bytes;
}

TEST(Base64, TheTextsThatTheStandardGives) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg==\n");
    EXPECT_EQ(encoded("fo"), "Zm8=\n");
    EXPECT_EQ(encoded("foo"), "Zm9v\n");
    EXPECT_EQ(encoded("foob"), "Zm9vYg==\n");
    EXPECT_EQ(encoded("fooba"), "Zm9vYmE=\n");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy\n");
}

TEST(Base64, ALineFeedFollows72CharactersAndALastLineThatIsNotEmpty) {
    const std::string line(72, 'A');
    EXPECT_EQ(encoded(std::string(54, '\0')), line + "\n");
    EXPECT_EQ(encoded(std::string(55, '\0')), line + "\nAA==\n");
    EXPECT_EQ(encoded(std::string(108, '\0')), line + "\n" + line + "\n");
    EXPECT_EQ(encoded(std::string(53, '\0')), std::string(71, 'A') + "=\n");
}

TEST(Base64, AllShortInputsAndLongOnesComeBack) {
    const auto check = [](const std::string& bytes) {
        const std::string text = encoded(bytes);
        ASSERT_EQ(text, encodedByModel(bytes));
        ASSERT_EQ(decoded(text), bytes.empty() ? std::nullopt : std::optional(bytes));
    };
    for (unsigned first = 0; first < 256; ++first) check(kvtest::byteText(first));
    for (unsigned first = 0; first < 256; first += 5) {
        for (unsigned second = 0; second < 256; ++second) check(kvtest::byteText(first) + kvtest::byteText(second));
    }
    kvtest::Dice dice;
    for (std::size_t length = 0; length < 300; ++length) check(dice.bytes(length));
    for (int i = 0; i < 50; ++i) check(dice.bytes(dice.below(5000)));
}

TEST(Base64, TwoPadsGiveOneByteOnePadTwo) {
    std::uint8_t out[3] = {'#', '#', '#'};
    std::uint64_t length = 0;
    EXPECT_EQ(base64_decode("QQ==", 4, &length, out), out);
    EXPECT_EQ(length, 1u);
    EXPECT_EQ(out[0], 'A');
    EXPECT_EQ(decoded("QUI="), "AB");
}

TEST(Base64, MoreThanTwoPadsAreRefused) {
    EXPECT_EQ(decoded("Q==="), std::nullopt);
    EXPECT_EQ(decoded("===="), std::nullopt);
    EXPECT_EQ(decoded("QUJDQ==="), std::nullopt);
    EXPECT_EQ(decoded("QQ==Q==="), "A");  // behind the end nothing is looked at but for the count
}

TEST(Base64, APadCountsWhereverInItsGroupItStands) {
    EXPECT_EQ(decoded("=UJD"), std::string("\x01\x42", 2));
    EXPECT_EQ(decoded("=U=D"), "\x01");
}

TEST(Base64, OtherBytesAreSkippedWhereverTheyStand) {
    EXPECT_EQ(decoded(" Q\tU\r\nJ-D_"), "ABC");
    EXPECT_EQ(decoded(std::string("Q\0U\xFFJD", 6)), "ABC");
}

TEST(Base64, TheCountOfAcceptedBytesDecides) {
    EXPECT_EQ(decoded(""), std::nullopt);
    EXPECT_EQ(decoded("QUI"), std::nullopt);
    EXPECT_EQ(decoded("QUJDQ"), std::nullopt);
    EXPECT_EQ(decoded("\n-_ "), std::nullopt);
    EXPECT_EQ(decoded("QQ==\nQ"), std::nullopt);
}

TEST(Base64, IsDecodedAsTheModelDoes) {
    kvtest::forManyTexts("AQ/=\n-", [](const std::string& text) { EXPECT_EQ(decoded(text), decodedByModel(text)); });
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (std::size_t at = 0; at < 4; ++at) {
            std::string text = "QUJD";
            text.insert(at, kvtest::byteText(byte));
            EXPECT_EQ(decoded(text), decodedByModel(text));
            text[at == 0 ? 1 : at] = '=';
            EXPECT_EQ(decoded(text), decodedByModel(text));
        }
    }
}

TEST(Base64, LengthsThatCanNotBeCountedOrAllocatedAreRefused) {
    const kvtest::CapturedMessages quiet;
    for (const std::uint64_t length : {std::numeric_limits<std::uint64_t>::max(), std::uint64_t{1} << 63,
                                       std::uint64_t{1} << 62, std::uint64_t{0xC0000000}, std::uint64_t{1} << 40}) {
        std::uint64_t told = 999;
        EXPECT_EQ(base64_encode("x", length, &told, nullptr), nullptr);
        EXPECT_EQ(told, 999u);
    }
}

TEST(Base64, NullIsRefusedButForNoBytesAtAll) {
    char buffer[8] = "#######";
    std::uint64_t length = 999;
    EXPECT_EQ(base64_encode(nullptr, 3, &length, buffer), nullptr);
    EXPECT_EQ(base64_encode(nullptr, 0, &length, buffer), buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(base64_encode("a", 1, nullptr, buffer), buffer);
    EXPECT_EQ(base64_decode(nullptr, 4, &length, nullptr), nullptr);
    EXPECT_EQ(base64_decode("QQ==", 0, &length, nullptr), nullptr);
}

}  // namespace
