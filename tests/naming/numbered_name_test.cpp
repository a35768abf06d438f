// Numbers at the end of names.
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "kvos/naming.h"

namespace {

struct Number {
    std::int32_t number = 0;
    std::string base;
    std::uint32_t digits = 0;
    bool operator==(const Number&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Number& found) {
    return out << found.number << " [" << found.base << "] " << found.digits;
}

Number read(const std::string& path) {
    std::vector<char> base(4096, '#');
    Number found;
    found.digits = 77;
    found.number = GetBaseName(path.c_str(), base.data(), &found.digits);
    found.base = base.data();
    return found;
}

std::string built(const std::string& text, std::int32_t number, const char* ext) {
    std::vector<char> target(4096, '#');
    std::strcpy(target.data(), text.c_str());
    EXPECT_EQ(BuildFileName(target.data(), number, ext), target.data());
    return target.data();
}

std::string numbered(const char* source, const std::string& text, std::uint64_t width, std::int32_t number) {
    std::vector<char> target(4096, '#');
    std::strcpy(target.data(), text.c_str());
    EXPECT_EQ(MakeNumberedFileName(source, target.data(), width, number), target.data());
    return target.data();
}

TEST(NumberedName, NumberBaseAndDigitsAreRead) {
    EXPECT_EQ(read("clip0012.tga"), (Number{12, "clip", 4}));
    EXPECT_EQ(read("/dir99/clip0012.tga"), (Number{12, "clip", 4}));
    EXPECT_EQ(read("a1b2"), (Number{2, "a1b", 1}));
    EXPECT_EQ(read("ab1"), (Number{1, "ab", 1}));
    EXPECT_EQ(read("ab12"), (Number{12, "ab", 2}));
    EXPECT_EQ(read("clip-12"), (Number{12, "clip-", 2}));
}

TEST(NumberedName, ANameWithoutTrailingDigitHasNoNumber) {
    EXPECT_EQ(read("clip"), (Number{0, "clip", 0}));
    EXPECT_EQ(read("1a"), (Number{0, "1a", 0}));
}

TEST(NumberedName, ANameOfDigitsAloneIsAllNumber) {
    EXPECT_EQ(read("1234.tga"), (Number{1234, "", 4}));
    EXPECT_EQ(read("12"), (Number{12, "", 2}));
}

TEST(NumberedName, BehindASingleOtherCharacterDigitsAreCountedButNotRead) {
    EXPECT_EQ(read("a123"), (Number{0, "a", 3}));
    EXPECT_EQ(read("a1"), (Number{0, "a", 1}));
    EXPECT_EQ(read("*1"), (Number{0, "*", 1}));
}

TEST(NumberedName, OneCharacterNamesHaveRulesOfTheirOwn) {
    EXPECT_EQ(read("7"), (Number{7, "", 1}));
    EXPECT_EQ(read("/d/7.tga"), (Number{7, "", 1}));
    EXPECT_EQ(read("a"), (Number{0, "a", 0}));
    EXPECT_EQ(read("?"), (Number{0, "?", 0}));
}

TEST(NumberedName, ALoneStarStandsForANumberOfOneDigit) {
    EXPECT_EQ(read("*"), (Number{0, "", 1}));
    EXPECT_EQ(read("/d/*.tga"), (Number{0, "", 1}));
}

TEST(NumberedName, ATrailingWildcardMeansNoNumber) {
    EXPECT_EQ(read("clip0012*"), (Number{0, "clip0012", 0}));
    EXPECT_EQ(read("clip????.tga"), (Number{0, "clip", 0}));
    EXPECT_EQ(read("12*"), (Number{0, "12", 0}));
    EXPECT_EQ(read("clip*?*"), (Number{0, "clip", 0}));
    EXPECT_EQ(read("clip1?2*"), (Number{0, "clip1?2", 0}));
    EXPECT_EQ(read("a*"), (Number{0, "a", 0}));
    EXPECT_EQ(read("1*"), (Number{0, "1", 0}));
}

TEST(NumberedName, DigitsBehindAWildcardDoNotBringTheNumberBack) {
    EXPECT_EQ(read("clip*12"), (Number{0, "clip", 0}));
    EXPECT_EQ(read("a*12"), (Number{0, "a", 0}));
}

TEST(NumberedName, OnlyTheLastTenCharactersAreLookedAt) {
    EXPECT_EQ(read("clip123456789012"), (Number{static_cast<std::int32_t>(3456789012u), "clip12", 10}));
    EXPECT_EQ(read("ab1234567890"), (Number{1234567890, "ab", 10}));
    EXPECT_EQ(read("000000000012"), (Number{12, "00", 10}));
    EXPECT_EQ(read("clip????????????"), (Number{0, "clip??", 0}));
    EXPECT_EQ(read("clip*123456789"), (Number{0, "clip", 0}));
    EXPECT_EQ(read("clip*1234567890"), (Number{1234567890, "clip*", 10}));  // the wildcard is out of sight
}

TEST(NumberedName, ElevenCharactersFollowTheRulesOfTheFirstCharacter) {
    EXPECT_EQ(read("00000000012"), (Number{12, "", 11}));
    EXPECT_EQ(read("99999999999"), (Number{static_cast<std::int32_t>(99999999999u % 4294967296u), "", 11}));
    EXPECT_EQ(read("a1234567890"), (Number{0, "a", 10}));
}

TEST(NumberedName, AnEmptyNameHasNoNumber) {
    EXPECT_EQ(read(""), (Number{0, "", 0}));
    EXPECT_EQ(read("/d/"), (Number{0, "", 0}));
    EXPECT_EQ(read("/d/.12"), (Number{0, "", 0}));
    EXPECT_EQ(GetBaseName(nullptr, nullptr, nullptr), 0);
}

TEST(NumberedName, APathThatDoesNotFitHasNoNumber) {
    errno = 0;
    EXPECT_EQ(read(std::string(5000, 'x') + "12"), (Number{0, "", 0}));
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(NumberedName, BaseMayReplaceThePath) {
    char path[4096] = "/d/clip0012.tga";
    std::uint32_t digits = 0;
    EXPECT_EQ(GetBaseName(path, path, &digits), 12);
    EXPECT_STREQ(path, "clip");
    EXPECT_EQ(GetBaseName("clip0012", nullptr, nullptr), 12);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWild(char c) { return c == '*' || c == '?'; }

std::int32_t wrapped(const std::string& digits) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(digits.empty() ? 0 : std::stoull(digits)));
}

/// The rules told by counting suffixes: how many digits stand at the end, how many wildcards ahead of those.
Number modelOf(const std::string& name) {
    const std::size_t n = name.size();
    if (n == 0) return {};
    if (n == 1 && isDigit(name[0])) return {name[0] - '0', "", 1};
    if (n == 1) return name == "*" ? Number{0, "", 1} : Number{0, name, 0};
    const std::size_t reach = n - 1 < 10 ? n - 1 : 10;
    std::size_t digits = 0;
    while (digits < reach && isDigit(name[n - 1 - digits])) ++digits;
    std::size_t run = digits;
    while (run < reach && isWild(name[n - 1 - run])) ++run;
    if (run > digits) return {0, name.substr(0, n - run), 0};
    const auto count = static_cast<std::uint32_t>(digits);
    if (digits < n - 1) return {wrapped(name.substr(n - digits)), name.substr(0, n - digits), count};
    if (isDigit(name[0])) return {wrapped(name), "", count + 1};
    return {0, name.substr(0, 1), count};
}

TEST(NumberedName, RandomNamesAreReadLikeTheModel) {
    constexpr unsigned kSeed = 47110815;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    static constexpr char kCharacters[] = "00112345678999**?ab-";
    for (int i = 0; i < 100000; ++i) {
        std::string name;
        const std::size_t kinds = random() % 3 == 0 ? 14 : sizeof kCharacters - 1;  // a third of digits alone
        for (std::size_t left = random() % 15; left > 0; --left) name += kCharacters[random() % kinds];
        ASSERT_EQ(read("/d/" + name), modelOf(name)) << name;
        ASSERT_EQ(read("/d/" + name + ".tga"), modelOf(name)) << name;
    }
}

TEST(NumberedName, RandomNumbersThatAreWrittenAreReadAgain) {
    constexpr unsigned kSeed = 8150711;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    for (int i = 0; i < 20000; ++i) {
        const auto number = static_cast<std::int32_t>(random() & 0x7FFFFFFF);
        const std::uint64_t width = 10;
        ASSERT_EQ(read(numbered("x.tga", "/d/clip", width, number)), (Number{number, "clip", 10}));
    }
}

TEST(NumberedName, BuildingAppendsNumberAndExtension) {
    EXPECT_EQ(built("clip", 7, "tga"), "clip7.tga");
    EXPECT_EQ(built("clip", 7, ".tga"), "clip7.tga");
    EXPECT_EQ(built("clip", 7, nullptr), "clip7");
    EXPECT_EQ(built("", 0, nullptr), "0");
    EXPECT_EQ(built("clip", -7, ".tga"), "clip-7.tga");
    EXPECT_EQ(built("clip", INT32_MIN, nullptr), "clip-2147483648");
}

TEST(NumberedName, BuildingWithAnEmptyExtensionAddsALoneDot) { EXPECT_EQ(built("clip", 7, ""), "clip7."); }

TEST(NumberedName, BuildingWhatDoesNotFitLeavesTheText) {
    const std::string text(4090, 't');
    std::vector<char> target(4096, '#');
    std::strcpy(target.data(), text.c_str());
    errno = 0;
    EXPECT_EQ(BuildFileName(target.data(), 12, ".tga"), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(target.data(), text);
    EXPECT_EQ(BuildFileName(target.data(), 1, ".tga"), target.data());
    EXPECT_EQ(target.data(), text + "1.tga");
    EXPECT_EQ(BuildFileName(nullptr, 1, ".tga"), nullptr);
}

TEST(NumberedName, NumberingPadsAndTakesTheExtensionOfTheSource) {
    EXPECT_EQ(numbered("/d/clip0001.tga", "/d/clip", 4, 12), "/d/clip0012.tga");
    EXPECT_EQ(numbered("noext", "/d/clip", 4, 12), "/d/clip0012");
    EXPECT_EQ(numbered("x.tga", "", 1, 0), "0.tga");
    EXPECT_EQ(numbered("http://h/x.mov?a=b.c", "c", 2, 1), "c01.mov");
}

TEST(NumberedName, ZerosStandAheadOfTheSign) { EXPECT_EQ(numbered("x.tga", "clip", 4, -5), "clip00-5.tga"); }

TEST(NumberedName, AWidthOfZeroCopiesTheSource) {
    EXPECT_EQ(numbered("/d/clip0001.tga", "other", 0, 12), "/d/clip0001.tga");
    EXPECT_EQ(numbered("/d/clip0001.tga", "other", 0x100000000u, 12), "/d/clip0001.tga");
}

TEST(NumberedName, OnlyTheLowHalfOfTheWidthCounts) {
    EXPECT_EQ(numbered("x.tga", "clip", 0x300000004u, 12), "clip0012.tga");
}

TEST(NumberedName, ANumberWiderThanTheWidthIsWrittenWhole) {
    EXPECT_EQ(numbered("x.tga", "clip", 2, 12345), "clip12345.tga");
    EXPECT_EQ(numbered("x.tga", "clip", 1, INT32_MIN), "clip-2147483648.tga");
}

TEST(NumberedName, AHugeWidthIsTakenWhileItFits) {
    EXPECT_EQ(numbered("x", "", 4095, 1), std::string(4094, '0') + "1");
    char target[4096] = "clip";
    for (const std::uint64_t width : {std::uint64_t{4092}, std::uint64_t{4096}, std::uint64_t{0xFFFFFFFF}}) {
        errno = 0;
        EXPECT_EQ(MakeNumberedFileName("x", target, width, 1), nullptr);
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_STREQ(target, "clip");
    }
}

TEST(NumberedName, ASourceThatDoesNotFitIsRefused) {
    char target[4096] = "clip";
    const std::string source = "/d/" + std::string(5000, 'n') + ".tga";
    EXPECT_EQ(MakeNumberedFileName(source.c_str(), target, 0, 1), nullptr);
    EXPECT_EQ(MakeNumberedFileName(source.c_str(), target, 4, 1), nullptr);
    EXPECT_EQ(MakeNumberedFileName(nullptr, target, 4, 1), nullptr);
    EXPECT_EQ(MakeNumberedFileName("x", nullptr, 4, 1), nullptr);
    EXPECT_STREQ(target, "clip");
}

}  // namespace
