// What every encoder and decoder of texts is asked: all bytes, all pairs of bytes, all short texts of the characters
// that mean something to it, and long random ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace kvtest {

/// A source of random texts that says its seed where a test fails.
class Dice {
public:
    Dice()
        : seed_(std::random_device{}()), engine_(seed_), trace_(__FILE__, __LINE__, "seed " + std::to_string(seed_)) {}

    std::size_t below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(engine_); }
    std::uint64_t word() { return std::uniform_int_distribution<std::uint64_t>()(engine_); }

    /// Bytes of all values.
    std::string bytes(std::size_t length) {
        std::string text(length, '\0');
        for (char& c : text) c = static_cast<char>(static_cast<unsigned char>(below(256)));
        return text;
    }

    /// Every second character one of `telling`, the others of any value but 0.
    std::string text(std::size_t length, std::string_view telling) {
        std::string text(length, '\0');
        for (char& c : text) {
            c = below(2) == 0 ? telling[below(telling.size())]
                              : static_cast<char>(static_cast<unsigned char>(1 + below(255)));
        }
        return text;
    }

private:
    unsigned seed_;
    std::mt19937_64 engine_;
    testing::ScopedTrace trace_;
};

inline std::string byteText(unsigned long byte) {
    return std::string(1, static_cast<char>(static_cast<unsigned char>(byte)));
}

/// Texts without zero bytes. `check` is asked for each until one fails.
template <class Check>
void forManyTexts(std::string_view telling, Check check) {
    const auto passes = [&](const std::string& text) {
        check(text);
        return !testing::Test::HasFailure();
    };
    if (!passes("")) return;
    for (unsigned first = 1; first < 256; ++first) {
        if (!passes(byteText(first))) return;
        for (unsigned second = 1; second < 256; ++second) {
            if (!passes(byteText(first) + byteText(second))) return;
        }
    }
    std::vector<std::string> shorter{""};
    for (int length = 1; length <= 5; ++length) {
        std::vector<std::string> texts;
        for (const std::string& text : shorter) {
            for (const char c : telling) texts.push_back(text + c);
        }
        for (const std::string& text : texts) {
            if (!passes(text)) return;
        }
        shorter = std::move(texts);
        if (shorter.size() > 20000) break;
    }
    Dice dice;
    for (int i = 0; i < 300; ++i) {
        if (!passes(dice.text(dice.below(2000), telling))) return;
    }
}

/// The output of a call on a text, in exactly as much room as it may use, checked against its result and for bytes
/// written behind that room.
template <class Call>
std::string outputOf(Call call, const std::string& input, std::size_t room) {
    std::string buffer(room + 4, '#');
    const std::uint64_t length = call(input.c_str(), buffer.data());
    EXPECT_EQ(buffer.substr(room), "####") << "written behind the room of " << room;
    const std::size_t end = buffer.find('\0');
    EXPECT_LT(end, room);
    EXPECT_EQ(length, end);
    return buffer.substr(0, end);
}

/// The same with the input in the output's place.
template <class Call>
std::string outputInPlace(Call call, std::string text) {
    const std::uint64_t length = call(text.c_str(), text.data());
    EXPECT_LE(length, text.size());
    return text.c_str();
}

}  // namespace kvtest
