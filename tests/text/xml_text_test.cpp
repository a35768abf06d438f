// The five entities of XML.
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "kvos/encoding.h"
#include "text/inputs.h"

namespace {

using kvtest::outputInPlace;
using kvtest::outputOf;

std::string encoded(const std::string& text) { return outputOf(kvEncodeXMLString, text, 6 * text.size() + 1); }
std::string decoded(const std::string& text) { return outputOf(kvDecodeXMLString, text, text.size() + 1); }

const std::pair<std::string, std::string> kEntities[] = {
    {"<", "&lt;"}, {">", "&gt;"}, {"\"", "&quot;"}, {"'", "&apos;"}, {"&", "&amp;"}};

TEST(XmlText, FiveCharactersBecomeEntities) {
    EXPECT_EQ(encoded("a<b> \"c\" & 'd'"), "a&lt;b&gt; &quot;c&quot; &amp; &apos;d&apos;");
    EXPECT_EQ(encoded("\x01\x7F\xC3\xA9\xFF"), "\x01\x7F\xC3\xA9\xFF");
}

TEST(XmlText, IsEncodedAsTheModelDoes) {
    kvtest::forManyTexts("&<>\"'a;", [](const std::string& text) {
        std::string expected;
        for (const char c : text) {
            std::string form(1, c);
            for (const auto& [character, entity] : kEntities) {
                if (character[0] == c) form = entity;
            }
            expected += form;
        }
        EXPECT_EQ(encoded(text), expected);
    });
}

TEST(XmlText, AnEntityIsDecodedOnlyAsTheLastThingOfTheText) {
    EXPECT_EQ(decoded("a&lt;"), "a<");
    EXPECT_EQ(decoded("a&lt;b"), "a&lt;b");
    EXPECT_EQ(decoded("&amp;&gt;"), "&amp;>");
    EXPECT_EQ(decoded("&amp;lt;"), "&amp;lt;");
}

TEST(XmlText, EachOfTheFiveIsDecodedInSmallLettersAlone) {
    for (const auto& [character, entity] : kEntities) {
        EXPECT_EQ(decoded(entity), character);
        EXPECT_EQ(decoded("x" + entity), "x" + character);
    }
    for (const char* text : {"&LT;", "&lt", "&nbsp;", "&#60;", "&", "&;"}) EXPECT_EQ(decoded(text), text);
}

TEST(XmlText, IsDecodedAsTheModelDoes) {
    const auto check = [](const std::string& text) {
        std::string expected = text;
        for (const auto& [character, entity] : kEntities) {
            if (text.size() < entity.size()) continue;
            const std::size_t at = text.size() - entity.size();
            if (text.substr(at) == entity) expected = text.substr(0, at) + character;
        }
        EXPECT_EQ(decoded(text), expected);
        EXPECT_EQ(outputInPlace(kvDecodeXMLString, text), expected);
    };
    kvtest::forManyTexts("&ltg;q", check);
    kvtest::Dice dice;
    for (int i = 0; i < 2000; ++i) {
        std::string text;
        for (std::size_t pieces = dice.below(6); pieces > 0; --pieces) {
            text += dice.below(2) == 0 ? kEntities[dice.below(5)].second : dice.text(dice.below(4), "&;a");
        }
        check(text);
    }
}

TEST(XmlText, OneCharacterComesBackASecondOneDoesNot) {
    for (const auto& [character, entity] : kEntities) {
        EXPECT_EQ(decoded(encoded(character)), character);
        EXPECT_EQ(decoded(encoded(character + "b")), entity + "b");
    }
}

TEST(XmlText, NullIsAnEmptyInputAndNoOutput) {
    char buffer[4] = "###";
    EXPECT_EQ(kvEncodeXMLString(nullptr, buffer), 0u);
    EXPECT_STREQ(buffer, "");
    buffer[0] = '#';
    EXPECT_EQ(kvDecodeXMLString(nullptr, buffer), 0u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(kvEncodeXMLString("a", nullptr), 0u);
    EXPECT_EQ(kvDecodeXMLString("a", nullptr), 0u);
}

}  // namespace
