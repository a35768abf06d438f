// URL texts and quoted values.
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "kvos/encoding.h"
#include "text/inputs.h"

namespace {

using kvtest::byteText;
using kvtest::outputInPlace;
using kvtest::outputOf;

std::string urlEncoded(const std::string& text) { return outputOf(kvEncodeURLString, text, 3 * text.size() + 1); }
std::string urlDecoded(const std::string& text) { return outputOf(kvDecodeURLString, text, text.size() + 1); }
std::string escaped(const std::string& text) { return outputOf(kvEncodeEscapeString, text, 4 * text.size() + 1); }
std::string unescaped(const std::string& text) { return outputOf(kvDecodeEscapeString, text, text.size() + 1); }

std::string upToZero(const std::string& text) { return text.c_str(); }

/// The digits as they come out of an alphabet with the digits behind it, looked up by a signed nibble.
std::string digitsByModel(char c) {
    const std::string storage = std::string("0123456789abcdefghijklmnopqrstuvwxyz") + '\0' + "0123456789ABCDEF";
    const int high = static_cast<signed char>(c) >> 4;
    return {storage[static_cast<std::size_t>(37 + high)], storage[37 + (static_cast<unsigned char>(c) & 15U)]};
}

std::string urlByModel(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const bool passes = c >= ' ' && c <= '~' && c != '"' && c != '\\';
        out += passes ? std::string(1, c) : "%" + digitsByModel(c);
    }
    return upToZero(out);
}

std::string escapedByModel(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const std::string_view special = "\tt\nn\rr\"\"\\\\";
        std::string form;
        for (std::size_t i = 0; i < special.size(); i += 2) {
            if (special[i] == c) form = std::string("\\") + special[i + 1];
        }
        if (form.empty()) form = c >= ' ' && c <= '~' ? std::string(1, c) : "\\x" + digitsByModel(c);
        out += form;
    }
    return upToZero(out);
}

int digitByModel(unsigned char c) {
    if (c >= 'a' && c <= 'z') c = static_cast<unsigned char>(c - 32);
    return c < ':' ? c - '0' : c - 'A' + 10;
}

/// A byte of the two characters at `at`; behind the text there are zeros.
std::string byteByModel(const std::string& text, std::size_t at) {
    const std::string padded = text + std::string(2, '\0');
    const auto digit = [&](std::size_t i) { return digitByModel(static_cast<unsigned char>(padded[i])); };
    return byteText(static_cast<unsigned>(digit(at) * 16 + digit(at + 1)) & 0xFF);
}

std::string urlDecodedByModel(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); i += text[i] == '%' ? 3 : 1) {
        out += text[i] == '%' ? byteByModel(text, i + 1) : std::string(1, text[i]);
    }
    return upToZero(out);
}

std::string unescapedByModel(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        const std::size_t known = std::string_view("\\nrt\"").find(next);
        if (text[i] != '\\') {
            out += text[i];
        } else if (known != std::string_view::npos) {
            out += "\\\n\r\t\""[known];
            i += 1;
        } else {
            out += byteByModel(text, i + 1);
            i += 2;
        }
    }
    return upToZero(out);
}

TEST(UrlText, PrintableCharactersPassButForTwo) {
    EXPECT_EQ(urlEncoded("a b+c%/?&=~"), "a b+c%/?&=~");
    EXPECT_EQ(urlEncoded("\"\\\x7F\x01"), "%22%5C%7F%01");
}

TEST(UrlText, BytesFrom0x80OnDoNotEncodeAsTheirValue) {
    EXPECT_EQ(urlEncoded("\x80\x9A\xA1\xBF\xC3\xD4\xEF"), "%t0%uA%v1%wF%x3%y4%zF");
}

TEST(UrlText, AByteFrom0xF0OnEndsTheText) {
    EXPECT_EQ(urlEncoded("a\xF0z"), "a%");
    EXPECT_EQ(urlEncoded("\xFF"), "%");
}

TEST(UrlText, IsEncodedAsTheModelDoes) {
    kvtest::forManyTexts("%\"\\ \x8F\xF0zA",
                         [](const std::string& text) { EXPECT_EQ(urlEncoded(text), urlByModel(text)); });
}

TEST(UrlText, DecodingReadsBothCasesAndLeavesThePlus) { EXPECT_EQ(urlDecoded("%41%6a%6A+%2b"), "Ajj++"); }

TEST(UrlText, DecodingChecksNoDigit) {
    EXPECT_EQ(urlDecoded("%zz"), "\x53");
    EXPECT_EQ(urlDecoded("%%41"), byteText((static_cast<unsigned>('%' - '0') * 16 + 4) & 0xFF) + "1");
    EXPECT_EQ(urlDecoded("%\xC3\xA9"), byteText(((0xC3U - 55) * 16 + 0xA9 - 55) & 0xFF));
}

TEST(UrlText, ACutEscapeEndsWithTheText) {
    EXPECT_EQ(urlDecoded("a%4"), "a\x10");
    EXPECT_EQ(urlDecoded("a%"), "a\xD0");
}

TEST(UrlText, ADecodedZeroEndsTheTextAndTheRestIsWrittenBehindIt) {
    char buffer[16] = "###############";
    EXPECT_EQ(kvDecodeURLString("ab%00cd", buffer), 2u);
    EXPECT_EQ(std::string(buffer, 6), std::string("ab\0cd\0", 6));
}

TEST(UrlText, IsDecodedAsTheModelDoes) {
    kvtest::forManyTexts("%04zA+\xC3", [](const std::string& text) {
        const std::string expected = urlDecodedByModel(text);
        EXPECT_EQ(urlDecoded(text), expected);
        EXPECT_EQ(outputInPlace(kvDecodeURLString, text), expected);
    });
}

TEST(UrlText, EveryPairOfDigitsIsItsByte) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        char digits[8];
        std::snprintf(digits, sizeof digits, byte % 2 == 0 ? "%%%02x" : "%%%02X", byte);
        EXPECT_EQ(urlDecoded(digits), byteText(byte));
    }
}

TEST(UrlText, ComesBackBelow0x80UnlessItHoldsAPercentSign) {
    for (unsigned byte = 1; byte < 0x80; ++byte) {
        if (byte == '%') continue;
        EXPECT_EQ(urlDecoded(urlEncoded(byteText(byte))), byteText(byte));
    }
    EXPECT_EQ(urlDecoded(urlEncoded("100%41")), "100A");
}

TEST(QuotedValue, FiveCharactersHaveALetter) {
    EXPECT_EQ(escaped("\t\n\r\"\\"), "\\t\\n\\r\\\"\\\\");
    EXPECT_EQ(escaped("a'b %\x01\x7F"), "a'b %\\x01\\x7F");
}

TEST(QuotedValue, HighBytesGoWrongAsInUrls) {
    EXPECT_EQ(escaped("\x80\xEF"), "\\xt0\\xzF");
    EXPECT_EQ(escaped("a\xF8z"), "a\\x");
}

TEST(QuotedValue, IsEncodedAsTheModelDoes) {
    kvtest::forManyTexts("\\\"\t\nx\x8F\xF0",
                         [](const std::string& text) { EXPECT_EQ(escaped(text), escapedByModel(text)); });
}

TEST(QuotedValue, TheDecoderTakesTheXForADigit) {
    EXPECT_EQ(unescaped("\\x41"),
              "\x14"
              "1");
    EXPECT_EQ(unescaped("\\41"), "A");
}

TEST(QuotedValue, TheFiveLettersComeBack) { EXPECT_EQ(unescaped("\\t\\n\\r\\\"\\\\"), "\t\n\r\"\\"); }

TEST(QuotedValue, ABackslashAtTheEndReadsNothingBehindIt) {
    EXPECT_EQ(unescaped("a\\"), "a\xD0");
    EXPECT_EQ(unescaped("a\\4"), "a\x10");
}

TEST(QuotedValue, IsDecodedAsTheModelDoes) {
    kvtest::forManyTexts("\\ntx4\"0\xC3", [](const std::string& text) {
        const std::string expected = unescapedByModel(text);
        EXPECT_EQ(unescaped(text), expected);
        EXPECT_EQ(outputInPlace(kvDecodeEscapeString, text), expected);
    });
}

TEST(QuotedValue, ComesBackIfPrintableOrOneOfTheFive) {
    for (unsigned byte = 1; byte < 0x7F; ++byte) {
        const bool returns = byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r';
        EXPECT_EQ(unescaped(escaped(byteText(byte))) == byteText(byte), returns) << byte;
    }
}

TEST(EscapedTexts, NullIsAnEmptyInputAndNoOutput) {
    for (const auto call : {kvEncodeURLString, kvDecodeURLString, kvEncodeEscapeString, kvDecodeEscapeString}) {
        char buffer[4] = "###";
        EXPECT_EQ(call(nullptr, buffer), 0u);
        EXPECT_STREQ(buffer, "");
        EXPECT_EQ(call("abc", nullptr), 0u);
    }
}

}  // namespace
