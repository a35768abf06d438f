// Languages.
#include "kvos/language.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>

namespace {

struct Row {
    std::uint32_t number;
    const char* read;
    const char* three;
    const char* two;
};

const Row kRows[] = {
    {0, "", "ENG", "EN"},        {1, "AR ARA", "ARA", "AR"},      {2, "BG BUL", "BUL", "BG"},
    {3, "CA CAT", "CAT", "CA"},  {4, "ZH ZHO", "ZHO", "ZH"},      {5, "CS CES", "CES", "CS"},
    {6, "DA DAN", "DAN", "DA"},  {7, "DE DEU", "DEU", "DE"},      {8, "EL ELL", "ELL", "EL"},
    {9, "EN ENG", "ENG", "EN"},  {10, "ES ESP SPA", "SPA", "SE"}, {11, "FI FIN", "FIN", "FI"},
    {12, "FR FRA", "FRA", "FR"}, {13, "HE HEB", "HEB", "HE"},     {14, "HU HUN", "HUN", "HU"},
    {15, "IS ISL", "ISL", "IS"}, {16, "IT ITA", "ITA", "IT"},     {17, "JA JPN", "JPN", "JA"},
    {18, "KO KOR", "KOR", "KO"}, {19, "NL NLD", "NLD", "NL"},     {20, "NN NB NNO NOB", "NOB", "NB"},
    {21, "PL POL", "POL", "PL"}, {22, "PT POR PRT", "POR", "PT"}, {23, "", "POR", "PT"},
    {24, "RO RON", "RON", "RO"}, {25, "RU RUS", "RUS", "RU"},     {26, "SR SRP", "SRP", "SR"},
    {27, "SK SLK", "KLS", "KS"}, {28, "SQ SQI", "SQI", "SQ"},     {29, "SV SWE", "SWE", "SV"},
    {30, "TH THA", "THA", "TH"}, {31, "TK TUK", "TUK", "TK"},     {32, "UR URD", "URD", "UR"},
    {33, "ID IND", "IND", "ID"}, {20044, "NOL", "NOL", "NOL"},
};

constexpr std::uint32_t kUnknown = 0xFFFFFFFF;

/// The number of exactly four bytes; the text is filled up with `end`.
std::uint32_t numberOf(std::string text, char end = '\0') {
    text.resize(4, end);
    std::array<char, 4> bytes;
    std::memcpy(bytes.data(), text.data(), 4);
    std::uint32_t id = 777;
    const std::uint32_t result = kvOSLangStrToID(bytes.data(), &id);
    if (result == 0) return id;
    EXPECT_EQ(result, kUnknown);
    EXPECT_EQ(id, 777u);
    return kUnknown;
}

std::string codeOf(std::uint32_t number, std::uint32_t twoLetter) {
    std::array<char, 6> out{'#', '#', '#', '#', '#', '#'};
    const std::uint32_t result = kvOSLangIDToStr(number, 0xDEAD, out.data(), twoLetter);
    if (result != 0) {
        EXPECT_EQ(result, kUnknown);
        EXPECT_EQ(std::string(out.data(), 6), "######");
        return "";
    }
    const std::string code(out.data());
    EXPECT_EQ(std::string(out.data() + code.size() + 1, 5 - code.size()), std::string(5 - code.size(), '#'));
    return code;
}

std::map<std::string, std::uint32_t> readCodes() {
    std::map<std::string, std::uint32_t> codes;
    for (const Row& row : kRows) {
        std::istringstream all(row.read);
        for (std::string code; all >> code;) codes[code] = row.number;
    }
    return codes;
}

TEST(Language, EveryRowIsReadInAnyCaseAndWithEitherEnd) {
    const auto codes = readCodes();
    EXPECT_EQ(codes.size(), 69u);
    for (const auto& [code, number] : codes) {
        std::string small = code;
        for (char& c : small) c = static_cast<char>(std::tolower(c));
        std::string mixed = code;
        mixed[1] = small[1];
        for (const std::string& text : {code, small, mixed}) {
            EXPECT_EQ(numberOf(text), number) << text;
            EXPECT_EQ(numberOf(text, ' '), number) << text;
        }
    }
}

TEST(Language, EveryRowIsWritten) {
    for (const Row& row : kRows) {
        EXPECT_EQ(codeOf(row.number, 0), row.three);
        EXPECT_EQ(codeOf(row.number, 1), row.two);
        EXPECT_EQ(codeOf(row.number, 0x80000000), row.two);
    }
}

TEST(Language, NoOtherTwoOrThreeLettersAreRead) {
    const auto codes = readCodes();
    const std::string letters = " ABCDEFGHIJKLMNOPQRSTUVWXYZ@[";
    for (const char a : letters) {
        for (const char b : letters) {
            for (const char c : letters) {
                std::string code{a, b, c};
                const std::string text = code;
                while (!code.empty() && code.back() == ' ') code.pop_back();
                const auto found = codes.find(code);
                ASSERT_EQ(numberOf(text), found == codes.end() ? kUnknown : found->second) << text;
            }
        }
    }
}

TEST(Language, EnglishInItsSpellings) {
    for (const char* text : {"en", "EN", "En", "EN  ", "eng", "ENG "}) EXPECT_EQ(numberOf(text), 9u) << text;
    EXPECT_EQ(numberOf(std::string("EN \0", 4)), 9u);
    EXPECT_EQ(numberOf(std::string("EN\0 ", 4)), 9u);
}

TEST(Language, TheFourthByteHasToEndTheCode) {
    EXPECT_EQ(numberOf("ENGLISH"), kUnknown);
    EXPECT_EQ(numberOf(std::string("EN\0G", 4)), kUnknown);
    EXPECT_EQ(numberOf(std::string("EN\0\0", 4)), 9u);
}

TEST(Language, AnUnknownNumberLeavesTheOutputAlone) {
    for (const std::uint32_t number : {34u, 100u, 20043u, 20045u, 0xFFFFFFFFu}) {
        EXPECT_EQ(codeOf(number, 0), "");
        EXPECT_EQ(codeOf(number, 1), "");
    }
}

TEST(Language, NumberZeroIsEnglishAndNothingLeadsBackToIt) {
    EXPECT_EQ(codeOf(0, 0), "ENG");
    EXPECT_EQ(codeOf(0, 1), "EN");
    for (const auto& [code, number] : readCodes()) EXPECT_NE(numberOf(code), 0u) << code << " is " << number;
}

TEST(Language, SpanishAndSlovakWriteWhatIsNotRead) {
    EXPECT_EQ(codeOf(10, 1), "SE");
    EXPECT_EQ(codeOf(27, 1), "KS");
    EXPECT_EQ(codeOf(27, 0), "KLS");
    for (const char* text : {"SE", "KS", "KLS", ""}) EXPECT_EQ(numberOf(text), kUnknown) << text;
}

TEST(Language, NullIsRefused) {
    std::uint32_t id = 777;
    EXPECT_EQ(kvOSLangStrToID(nullptr, &id), kUnknown);
    EXPECT_EQ(kvOSLangStrToID("EN\0", nullptr), kUnknown);
    EXPECT_EQ(kvOSLangIDToStr(9, 0, nullptr, 0), kUnknown);
}

}  // namespace
