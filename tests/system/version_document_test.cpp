// What is read out of the document of the update server. The piece is compiled into these tests.
#include "system/version_document.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using kv::system::Release;
using kv::system::releaseIn;

const std::string kNumbers = R"("version_major":"5","version_minor":"3","version_build":"1")";

std::string documentOf(const std::string& product, const std::string& pairs) {
    return R"({")" + product + R"(":{"mac":{)" + pairs + "}}}";
}

Release releaseOf(const std::string& major, const std::string& minor, const std::string& build) {
    return {major, minor, build, "", ""};
}

}  // namespace

TEST(VersionDocument, AProductsReleaseIsItsFiveTexts) {
    const auto release = releaseIn(
        documentOf("player", kNumbers + R"(,"url":"https://host/p","description":"A \"new\" one")"), "player");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->version(), "5.3.1");
    EXPECT_EQ(release->url, "https://host/p");
    EXPECT_EQ(release->description, R"(A \"new\" one)");
}

TEST(VersionDocument, NumbersWithoutQuotesAreTextsAsWell) {
    const auto release = releaseIn(documentOf("p", R"("version_major":5,"version_minor":03,"version_build":1)"), "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->version(), "5.03.1");
}

TEST(VersionDocument, TheBeginningOfALongerNameIsNoProduct) {
    EXPECT_FALSE(releaseIn(documentOf("player-pro", kNumbers), "player").has_value());
    EXPECT_FALSE(releaseIn(documentOf("player", kNumbers), "player-pro").has_value());
    EXPECT_FALSE(releaseIn(documentOf("Player", kNumbers), "player").has_value());
}

TEST(VersionDocument, AProductIsAStringWhereverItStands) {
    EXPECT_FALSE(releaseIn("{player:{\"mac\":{" + kNumbers + "}}}", "player").has_value());
    EXPECT_TRUE(releaseIn(R"({"list":["player"],"mac":{)" + kNumbers + "}}", "player").has_value());
}

TEST(VersionDocument, TheSystemIsSoughtBehindTheProductAtAnyDistanceAndInAnyType) {
    EXPECT_FALSE(releaseIn(R"({"mac":{)" + kNumbers + R"(},"player":{"win":{}}})", "player").has_value());
    EXPECT_FALSE(releaseIn(R"({"player":{"macos":{)" + kNumbers + "}}}", "player").has_value());
    EXPECT_FALSE(releaseIn(R"({"player":{"ma":{)" + kNumbers + "}}}", "player").has_value());
    EXPECT_TRUE(releaseIn(R"({"player":{"win":{"a":"b"},"mac":{)" + kNumbers + "}}}", "player").has_value());
    EXPECT_TRUE(releaseIn(R"({"player":{mac:{)" + kNumbers + "}}}", "player").has_value());
    // Meant: also in the next product.
    EXPECT_TRUE(releaseIn(R"({"player":{},"other":{"mac":{)" + kNumbers + "}}}", "player").has_value());
}

TEST(VersionDocument, TheSearchForTheSystemEndsAtTheLastToken) {
    // The text itself begins with the system's name, where tokens that are not there point to.
    EXPECT_FALSE(releaseIn(R"(mac "player")", "player").has_value());
}

TEST(VersionDocument, KeysAreSeenUpTo13TokensBehindTheSystem) {
    // The object is the first token, each filler one more: the last pair begins at 2 + 4 + fillers.
    const auto withFillers = [](int count) {
        std::string pairs = R"("version_major":"5","version_minor":"3",)";
        for (int i = 0; i < count; ++i) pairs += "\"x" + std::to_string(i) + "\",";
        return documentOf("p", pairs + R"("version_build":"1")");
    };
    EXPECT_TRUE(releaseIn(withFillers(6), "p").has_value());   // the key is the 12th
    EXPECT_TRUE(releaseIn(withFillers(7), "p").has_value());   // the 13th
    EXPECT_FALSE(releaseIn(withFillers(8), "p").has_value());  // the 14th
}

TEST(VersionDocument, AfterSixPairsOfAnObjectNoMoreAreRead) {
    const std::string document =
        documentOf("p", kNumbers + R"(,"url":"1","url":"2","url":"3","url":"4","version_major":"9")");
    const auto release = releaseIn(document, "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->url, "3");
    EXPECT_EQ(release->major, "5");
}

TEST(VersionDocument, OfTwoPairsWithOneKeyTheLastCounts) {
    const auto release = releaseIn(documentOf("p", kNumbers + R"(,"version_major":"9")"), "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->major, "9");
}

TEST(VersionDocument, TheBeginningOfAKeyPassesForIt) {
    const auto release =
        releaseIn(documentOf("p", R"("version":"5","version_mi":"3","version_b":"1","u":"here","descr":"text")"), "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->version(), "5.3.1");
    EXPECT_EQ(release->url, "here");
    EXPECT_EQ(release->description, "text");
}

TEST(VersionDocument, TheValueOfAnUnknownKeyIsLookedAtAsAKey) {
    const auto release = releaseIn(documentOf("p", kNumbers + R"(,"see":"url","more":"x")"), "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->url, "more");
}

TEST(VersionDocument, WithoutOneOfTheNumbersThereIsNoRelease) {
    EXPECT_FALSE(releaseIn(documentOf("p", R"("version_major":"5","version_minor":"3")"), "p").has_value());
    EXPECT_FALSE(releaseIn(documentOf("p", R"("version_major":"5","version_build":"3")"), "p").has_value());
    EXPECT_FALSE(releaseIn(documentOf("p", R"("version_minor":"5","version_build":"3")"), "p").has_value());
    EXPECT_FALSE(releaseIn(documentOf("p", ""), "p").has_value());
}

TEST(VersionDocument, WithoutUrlAndDescriptionTheyAreEmpty) {
    const auto release = releaseIn(documentOf("p", kNumbers), "p");
    ASSERT_TRUE(release.has_value());
    EXPECT_EQ(release->url, "");
    EXPECT_EQ(release->description, "");
}

TEST(VersionDocument, ADamagedDocumentIsReadAsFarAsItIsOne) {
    const std::string whole = documentOf("p", kNumbers);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const bool hasAll = whole.substr(0, length).find(R"("1")") != std::string::npos;
        EXPECT_EQ(releaseIn(whole.substr(0, length), "p").has_value(), hasAll) << whole.substr(0, length);
    }
    EXPECT_FALSE(releaseIn("<html>405 Not Allowed</html>", "p").has_value());
}

TEST(VersionDocument, ADocumentOfMoreThan600TokensIsSearchedAsFarAsTheyReach) {
    const auto behind = [](int fillers) {
        std::string document = "[";
        for (int i = 0; i < fillers; ++i) document += "0,";
        return document + R"("p","mac",)" + R"("version_major","5","version_minor","3","version_build","1"])";
    };
    EXPECT_TRUE(releaseIn(behind(500), "p").has_value());
    EXPECT_TRUE(releaseIn(behind(591), "p").has_value());  // the last value is the 600th token
    EXPECT_FALSE(releaseIn(behind(592), "p").has_value());
    EXPECT_FALSE(releaseIn(behind(700), "p").has_value());
}

TEST(VersionDocument, TheFirstNumberThatDiffersDecides) {
    EXPECT_TRUE(releaseOf("5", "3", "1").isNewerThan({5, 2, 9}));
    EXPECT_FALSE(releaseOf("5", "9", "9").isNewerThan({6, 0, 0}));
    EXPECT_FALSE(releaseOf("5", "2", "9").isNewerThan({5, 3, 1}));
    EXPECT_TRUE(releaseOf("6", "0", "0").isNewerThan({5, 9, 9}));
    EXPECT_TRUE(releaseOf("5", "3", "2").isNewerThan({5, 3, 1}));
    EXPECT_FALSE(releaseOf("5", "3", "1").isNewerThan({5, 3, 1}));
}

TEST(VersionDocument, OfANumberTheLow16BitsCount) {
    EXPECT_FALSE(releaseOf("65536", "0", "0").isNewerThan({0, 0, 0}));
    EXPECT_TRUE(releaseOf("65541", "0", "0").isNewerThan({4, 0, 0}));
    EXPECT_FALSE(releaseOf("65541", "0", "0").isNewerThan({5, 0, 0}));
    EXPECT_TRUE(releaseOf("-1", "0", "0").isNewerThan({65534, 0, 0}));
    EXPECT_FALSE(releaseOf("9", "0", "0").isNewerThan({65536, 0, 0}));  // the caller's own number counts whole
    EXPECT_FALSE(releaseOf("x", "0", "0").isNewerThan({0, 0, 0}));
}
