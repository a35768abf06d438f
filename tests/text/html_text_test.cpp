// HTML entities: the table of names, and texts.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

#include "kvos/encoding.h"
#include "text/inputs.h"
#include "text/printed_entities.h"

namespace {

std::string utf8ByModel(unsigned long character) {
    if (character < 0x80) return kvtest::byteText(static_cast<unsigned>(character));
    std::string tail;
    unsigned room = 0x40;  // what a lead byte has left shrinks with each byte that follows
    while (character >= room) {
        tail = kvtest::byteText(static_cast<unsigned>(0x80 | (character & 0x3F))) + tail;
        character >>= 6;
        room = room == 0x40 ? 0x20 : room / 2;
    }
    const unsigned marks[] = {0, 0xC0, 0xE0, 0xF0};
    return kvtest::byteText(marks[tail.size()] | static_cast<unsigned>(character)) + tail;
}

std::map<std::string, std::string> printedEntities() {
    std::map<std::string, std::string> entities{{"apos;", "'"}};
    std::istringstream latin{std::string(kvtest::kLatin1Entities)};
    unsigned character = 160;
    for (std::string name; latin >> name; ++character) entities[name + ";"] = utf8ByModel(character);
    EXPECT_EQ(character, 256u);
    for (const auto& entity : kvtest::kSymbolEntities)
        entities[std::string(entity.name) + ";"] = utf8ByModel(entity.character);
    for (const auto& entity : kvtest::kSpecialEntities)
        entities[std::string(entity.name) + ";"] = utf8ByModel(entity.character);
    return entities;
}

/// Into a buffer of its own and in place, with the bytes behind a zero in it.
std::string decoded(const std::string& text) {
    std::string buffer(text.size() + 2, '#');
    const std::uint64_t length = html_decode_html_entities_utf8(buffer.data(), text.c_str());
    EXPECT_EQ(buffer.back(), '#');
    EXPECT_EQ(buffer[length], '\0');
    buffer.resize(length);
    std::string place = text;
    EXPECT_EQ(html_decode_html_entities_utf8(place.data(), nullptr), length);
    EXPECT_EQ(place.substr(0, length), buffer);
    place = text;
    EXPECT_EQ(html_decode_html_entities_utf8(place.data(), place.data()), length);
    EXPECT_EQ(place.substr(0, length), buffer);
    return buffer;
}

std::string decodedByModel(std::string text) {
    static const std::map<std::string, std::string> entities = printedEntities();
    std::string out;
    while (!text.empty()) {
        const std::size_t end = text.find(';');
        std::string form;
        std::size_t used = 0;
        if (text[0] == '&' && end != std::string::npos) {
            if (text[1] == '#') {
                const bool hexadecimal = text[2] == 'x' || text[2] == 'X';
                const char* const begin = text.c_str() + (hexadecimal ? 3 : 2);
                char* stopped = nullptr;
                errno = 0;
                const unsigned long number = std::strtoul(begin, &stopped, hexadecimal ? 16 : 10);
                if (errno == 0 && stopped == text.c_str() + end && number < 0x110000) form = utf8ByModel(number);
            } else if (const auto entity = entities.find(text.substr(1, end)); entity != entities.end()) {
                form = entity->second;
            }
            used = form.empty() ? 0 : end + 1;
        }
        out += used == 0 ? text.substr(0, 1) : form;
        text.erase(0, used == 0 ? 1 : used);
    }
    return out;
}

TEST(NamedEntities, AreThose252OfHtml4AndApos) {
    std::map<std::string, std::string> table;
    for (const auto& [name, text] : NAMED_ENTITIES) table[name] = text;
    EXPECT_EQ(std::size(NAMED_ENTITIES), 253u);
    EXPECT_EQ(table.size(), 253u);
    EXPECT_EQ(table, printedEntities());
    EXPECT_EQ(std::size(kvtest::kSymbolEntities), 124u);
    EXPECT_EQ(std::size(kvtest::kSpecialEntities), 32u);
}

TEST(NamedEntities, AreSortedByTheBytesOfTheirNames) {
    for (std::size_t i = 1; i < std::size(NAMED_ENTITIES); ++i) {
        EXPECT_LT(std::strcmp(NAMED_ENTITIES[i - 1][0], NAMED_ENTITIES[i][0]), 0) << NAMED_ENTITIES[i][0];
    }
}

TEST(NamedEntities, EachIsFoundWhateverFollowsIt) {
    for (const auto& [name, text] : NAMED_ENTITIES) {
        EXPECT_STREQ(html_get_named_entity(name), text);
        EXPECT_STREQ(html_get_named_entity((std::string(name) + "more; of it").c_str()), text);
        EXPECT_EQ(html_get_named_entity(std::string(name, std::strlen(name) - 1).c_str()), nullptr);
        EXPECT_EQ(html_get_named_entity(("&" + std::string(name)).c_str()), nullptr);
        EXPECT_EQ(html_get_named_entity(("x" + std::string(name)).c_str()), nullptr);
    }
}

TEST(NamedEntities, NamesThatBeginAlikeAreToldApart) {
    EXPECT_STREQ(html_get_named_entity("sup;1"), "\u2283");
    EXPECT_STREQ(html_get_named_entity("sup1;"), "\u00B9");
    EXPECT_STREQ(html_get_named_entity("theta;"), "\u03B8");
    EXPECT_STREQ(html_get_named_entity("thetasym;"), "\u03D1");
    EXPECT_STREQ(html_get_named_entity("Dagger;"), "\u2021");
    EXPECT_EQ(html_get_named_entity("AMP;"), nullptr);
    EXPECT_EQ(html_get_named_entity(""), nullptr);
    EXPECT_EQ(html_get_named_entity(";"), nullptr);
    EXPECT_EQ(html_get_named_entity(nullptr), nullptr);
}

TEST(HtmlText, NamesAndNumbersBecomeUtf8) {
    EXPECT_EQ(decoded("a &lt;b&gt; &amp;amp; &eacute;&euro;"), "a <b> &amp; \u00E9\u20AC");
    EXPECT_EQ(decoded("&#65;&#x42;&#X43;&#233;&#x20ac;&#128512;"), "ABC\u00E9\u20AC\U0001F600");
}

TEST(HtmlText, TheNumberOfBytesGrowsWithTheCharacter) {
    EXPECT_EQ(decoded("&#127;&#128;&#2047;&#2048;&#65535;&#65536;&#1114111;"),
              "\x7F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF");
}

TEST(HtmlText, NumbersOutOfRangeStay) {
    for (const char* text :
         {"&#1114112;", "&#x110000;", "&#99999999999999999999999;", "&#-1;", "&#18446744073709551616;"}) {
        EXPECT_EQ(decoded(text), text);
    }
}

TEST(HtmlText, SurrogatesAreNotRefused) { EXPECT_EQ(decoded("&#xD83D;&#xDE00;"), "\xED\xA0\xBD\xED\xB8\x80"); }

TEST(HtmlText, WhatStandsInFrontOfANumberIsThatOfStrtoul) {
    EXPECT_EQ(decoded("&# 65;&#+66;&#x0x43;&#\t68;"), "ABCD");
    EXPECT_EQ(decoded("&#0x41;&#65 ;&#6.5;&# ;"), "&#0x41;&#65 ;&#6.5;&# ;");
}

TEST(HtmlText, ANumberWithoutDigitsIsZero) {
    EXPECT_EQ(decoded("a&#;b"), std::string("a\0b", 3));
    EXPECT_EQ(decoded("a&#x;b&#0;"), std::string("a\0b\0", 4));
}

TEST(HtmlText, AnAmpersandThatBeginsNothingIsCopied) {
    EXPECT_EQ(decoded("a & b; &nothing; &&lt; &lt &"), "a & b; &nothing; &< &lt &");
    EXPECT_EQ(decoded("&no&lt;"), "&no<");
    EXPECT_EQ(decoded("&lt"), "&lt");
    EXPECT_EQ(decoded("&#65"), "&#65");
    EXPECT_EQ(decoded(";&"), ";&");
}

TEST(HtmlText, WhatCameOutIsNotDecodedAgain) { EXPECT_EQ(decoded("&amp;lt;&#38;gt;"), "&lt;&gt;"); }

TEST(HtmlText, IsDecodedAsTheModelDoes) {
    kvtest::forManyTexts("&#;x1 lt", [](const std::string& text) { EXPECT_EQ(decoded(text), decodedByModel(text)); });
    kvtest::Dice dice;
    for (int i = 0; i < 3000; ++i) {
        std::string text;
        for (std::size_t pieces = dice.below(12); pieces > 0; --pieces) {
            char number[40];
            std::snprintf(number, sizeof number, dice.below(2) == 0 ? "&#%lu;" : "&#x%lx;",
                          dice.word() >> dice.below(64));
            const std::size_t kind = dice.below(3);
            if (kind == 0) text += "&" + std::string(NAMED_ENTITIES[dice.below(253)][0]);
            if (kind == 1) text += number;
            if (kind == 2) text += dice.text(dice.below(5), "&#;x");
        }
        ASSERT_EQ(decoded(text), decodedByModel(text));
    }
}

TEST(HtmlText, AHostileTextTakesNoLongerThanItsLength) {
    const std::string ampersands(100000, '&');
    EXPECT_EQ(decoded(ampersands), ampersands);
    EXPECT_EQ(decoded(ampersands + ";"), ampersands + ";");
}

TEST(HtmlText, TheLastErrorStays) {
    errno = 77;
    decoded("&#99999999999999999999999;&#65;");
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(html_decode_html_entities_utf8(nullptr, "a"), 0u);
}

}  // namespace
