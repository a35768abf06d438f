// Codes as text: every label of every table, and the codes that are no structured ones.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "errlog.h"

namespace {

std::string textOf(std::uint32_t code) { return FormatWinMsg(code); }

}  // namespace

TEST(ErrorText, StructuredCodeReadsClassModuleAreaOperation) {
    EXPECT_EQ(textOf(0xE8023011), "ERROR [MediaFile] File->Not Found ");
}

TEST(ErrorText, BitTwentyEightMakesNoDifference) { EXPECT_EQ(textOf(0xF8023011), textOf(0xE8023011)); }

TEST(ErrorText, UnknownModuleShowsItsMaskedValue) {
    EXPECT_EQ(textOf(0xA0000000), "WARNING: [Unknown 0x00000000] Handle->DList ");
    EXPECT_EQ(textOf(0x281F0000), "SUCCESS: [Unknown 0x081F0000] Handle->DList ");
}

TEST(ErrorText, CodeWithoutTheStructuredBitIsAPlainNumber) {
    EXPECT_EQ(textOf(0x80000000), "ERR:-2147483648 (0x80000000) ");
    EXPECT_EQ(textOf(0x00000005), "ERR:5 (0x00000005) ");
}

TEST(ErrorText, ZeroAsksForTheLastError) {
    errno = 2;
    EXPECT_EQ(textOf(0), "ERR:2 (0x00000002) ");
    errno = 0;
    EXPECT_EQ(textOf(0), "ERR:0 (0x00000000) ");
}

TEST(ErrorText, LastErrorThatLooksLikeAStructuredCodeIsReadAsOne) {
    errno = static_cast<int>(0xE8023011);
    EXPECT_EQ(textOf(0), "ERROR [MediaFile] File->Not Found ");
    errno = -1;
    EXPECT_EQ(textOf(0), "ERROR [Korvane] Software->OutOfRange0x0000FFFF->");
}

TEST(ErrorText, NoCodeIsASingleBlank) { EXPECT_EQ(textOf(0xFFFFFFFF), " "); }

TEST(ErrorText, UnknownAreaAndOperationShowTheirBits) {
    EXPECT_EQ(textOf(0x20009FFF), "SUCCESS: [Unknown 0x00000000] Unknown0x00009000->OutOfRange0x00009FFF->");
}

TEST(ErrorText, OnlyTheErrorClassHasNoColon) {
    EXPECT_EQ(textOf(0x20000000).rfind("SUCCESS: ", 0), 0u);
    EXPECT_EQ(textOf(0x60000000).rfind("INFO: ", 0), 0u);
    EXPECT_EQ(textOf(0xA0000000).rfind("WARNING: ", 0), 0u);
    EXPECT_EQ(textOf(0xE0000000).rfind("ERROR [", 0), 0u);
}

TEST(ErrorText, EveryModuleHasItsLabel) {
    const std::pair<std::uint32_t, const char*> modules[] = {{0x08010000, "[AvHal] "},     {0x08020000, "[MediaFile] "},
                                                             {0x08030000, "[ZMW] "},       {0x08040000, "[zmwExt] "},
                                                             {0x08050000, "[zmwInt] "},    {0x08060000, "[zmwNet] "},
                                                             {0x08070000, "[zmwCtl] "},    {0x08100000, "[Mem] "},
                                                             {0x08110000, "[MediaBase] "}, {0x0FFF0000, "[Korvane] "}};
    for (const auto& [module, label] : modules) {
        EXPECT_EQ(textOf(0x20000000 | module), "SUCCESS: " + std::string(label) + "Handle->DList ");
    }
}

TEST(ErrorText, EveryAreaHasItsLabel) {
    const char* const areas[] = {"Handle->",
                                 "Channel->",
                                 "Memory->",
                                 "File->",
                                 "Read->",
                                 "Write->",
                                 "Hardware->",
                                 "MediaCmd->",
                                 "DFrame->",
                                 "Unknown0x00009000->",
                                 "Unknown0x0000A000->",
                                 "Unknown0x0000B000->",
                                 "Unknown0x0000C000->",
                                 "Unknown0x0000D000->",
                                 "Internal->",
                                 "Software->"};
    for (std::uint32_t area = 0; area < 16; ++area) {
        EXPECT_EQ(textOf(0x28100000 | area << 12), "SUCCESS: [Mem] " + std::string(areas[area]) + "DList ");
    }
}

TEST(ErrorText, EveryOperationHasItsLabel) {
    const char* const operations[] = {"DList ",
                                      "Doesn't Exist ",
                                      "Unknown ",
                                      "Is Invalid ",
                                      "Is Bad ",
                                      "Is Null ",
                                      "Bad Selection ",
                                      "Local ",
                                      "Global ",
                                      "Shared ",
                                      "Is Free ",
                                      "Is Too Small ",
                                      "Opening ",
                                      "End ",
                                      "Reading ",
                                      "Writing ",
                                      "Closing ",
                                      "Not Found ",
                                      "No Open ",
                                      "Param ",
                                      "Param1 ",
                                      "Param2 ",
                                      "Param3 ",
                                      "Param4 ",
                                      "Param5 ",
                                      "Indirection ",
                                      "Add ",
                                      "Delete ",
                                      "Find ",
                                      "Callback ",
                                      "File Exists ",
                                      "Is Locked ",
                                      "No Allocation Available ",
                                      "Caused An Exception "};
    std::uint32_t operation = 0;
    for (const char* label : operations) {
        EXPECT_EQ(textOf(0x28100000 | operation++), "SUCCESS: [Mem] Handle->" + std::string(label));
    }
    EXPECT_EQ(textOf(0x28100000 | operation), "SUCCESS: [Mem] Handle->OutOfRange0x00000022->");
}

TEST(ErrorText, StandsInTheProcessWideBuffer) {
    EXPECT_EQ(FormatWinMsg(0xE8023011), szWin);
    EXPECT_STREQ(szWin, "ERROR [MediaFile] File->Not Found ");
}
