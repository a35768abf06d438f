// A text cut, stripped, its letters changed.
#include <cctype>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "kvos/conversion.h"
#include "text/inputs.h"

namespace {

std::string stripped(std::string text, std::uint64_t maxLength) {
    EXPECT_EQ(strStripEnd(text.data(), maxLength), text.size());
    return text.c_str();
}

std::string cut(std::string text, std::uint64_t maxLength) {
    EXPECT_EQ(strStripEndSAFE(text.data(), maxLength), text.size());
    return text.c_str();
}

TEST(TextEnd, AnAllBlankTextIsLeftEmpty) {
    EXPECT_EQ(stripped("   \t\r\n\x01", 0), "");
    EXPECT_EQ(stripped("", 0), "");
}

TEST(TextEnd, BytesFrom0x80OnAreNoBlanks) { EXPECT_EQ(stripped("a\xA0\x80\xFF ", 0), "a\xA0\x80\xFF"); }

TEST(TextEnd, TheCutComesFirst) {
    EXPECT_EQ(stripped("ab cd  ", 3), "ab");
    EXPECT_EQ(stripped("ab cd  ", 5), "ab cd");
    EXPECT_EQ(stripped("ab", 2), "ab");
    EXPECT_EQ(stripped("ab ", 100), "ab");
}

TEST(TextEnd, ZeroCutsNothing) {
    EXPECT_EQ(stripped("abc", 0), "abc");
    EXPECT_EQ(cut("abc ", 0), "abc ");
}

TEST(TextEnd, TheCutAloneLeavesBlanks) {
    EXPECT_EQ(cut("ab cd  ", 3), "ab ");
    EXPECT_EQ(cut("ab cd  ", 6), "ab cd ");
    EXPECT_EQ(cut("ab", 3), "ab");
}

TEST(TextEnd, NullHasNoLength) {
    EXPECT_EQ(strStripEnd(nullptr, 3), 0u);
    EXPECT_EQ(strStripEndSAFE(nullptr, 3), 0u);
}

TEST(TextEnd, IsStrippedAsTheModelDoes) {
    kvtest::forManyTexts("a \t\n\x80\x21", [](const std::string& text) {
        for (const std::size_t limit : {std::size_t{0}, std::size_t{1}, std::size_t{3}, text.size(), text.size() + 1}) {
            std::string expected = limit == 0 ? text : text.substr(0, limit);
            EXPECT_EQ(cut(text, limit), expected);
            while (!expected.empty() && static_cast<unsigned char>(expected.back()) <= 32) expected.pop_back();
            EXPECT_EQ(stripped(text, limit), expected);
        }
    });
}

TEST(Letters, AreChangedInPlaceByteByByte) {
    std::string all;
    for (unsigned byte = 1; byte < 256; ++byte) all += kvtest::byteText(byte);
    std::string small = all;
    std::string capital = all;
    EXPECT_EQ(kvStrToLower(small.data()), small.data());
    EXPECT_EQ(kvStrToUpper(capital.data()), capital.data());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const char c = all[i];
        EXPECT_EQ(small[i], c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
        EXPECT_EQ(capital[i], c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c);
    }
}

TEST(Letters, ACountLimitsTheChange) {
    char text[] = "AbCdEf";
    EXPECT_EQ(kvStrToLowerN(text, 3), text);
    EXPECT_STREQ(text, "abcdEf");
    EXPECT_EQ(kvStrToUpperN(text, 100), text);
    EXPECT_STREQ(text, "ABCDEF");
    kvStrToLowerN(text, 0);
    EXPECT_STREQ(text, "ABCDEF");
    char open[] = {'a', 'b'};  // no terminator
    kvStrToUpperN(open, 2);
    EXPECT_EQ(open[1], 'B');
    char inside[] = "ab\0cd";
    kvStrToUpperN(inside, 5);
    EXPECT_EQ(inside[3], 'c');
}

TEST(Letters, NullIsGivenBack) {
    for (const auto call : {kvStrToLower, kvStrToUpper}) EXPECT_EQ(call(nullptr), nullptr);
    for (const auto call : {kvStrToLowerN, kvStrToUpperN}) EXPECT_EQ(call(nullptr, 3), nullptr);
}

}  // namespace
