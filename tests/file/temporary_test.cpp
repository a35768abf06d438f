// Temporary names, and the short answers about the program and its files.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "kvos/attributes.h"

TEST(TempPath, IsTheEnvironmentsAsItStands) {
    char buffer[4096];
    setenv("TMPDIR", "/somewhere/else", 1);
    EXPECT_EQ(kvOSGetTempPath(0, buffer), 15u);
    EXPECT_STREQ(buffer, "/somewhere/else");
    setenv("TMPDIR", "", 1);
    EXPECT_EQ(kvOSGetTempPath(4096, buffer), 0u);
    EXPECT_STREQ(buffer, "");
    unsetenv("TMPDIR");
    EXPECT_EQ(kvOSGetTempPath(1, buffer), 5u);
    EXPECT_STREQ(buffer, "/tmp/");
}

TEST(TempPath, ThatDoesNotFitLeavesTheBufferEmpty) {
    char buffer[4096] = "untouched";
    setenv("TMPDIR", std::string(4095, 'x').c_str(), 1);
    EXPECT_EQ(kvOSGetTempPath(0, buffer), 4095u);
    setenv("TMPDIR", std::string(4096, 'x').c_str(), 1);
    EXPECT_EQ(kvOSGetTempPath(0, buffer), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_STREQ(buffer, "");
}

TEST(TempFileName, IsNewEachTimeAndIgnoresWhatItIsGiven) {
    char first[4096];
    char second[4096];
    const std::uint32_t length = kvOSGetTempFileName("/somewhere/else", "prefix", 7, first);
    EXPECT_EQ(length, std::string(first).size());
    EXPECT_GT(length, 0u);
    EXPECT_EQ(std::string(first).find("prefix"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_GT(kvOSGetTempFileName(nullptr, nullptr, 0, second), 0u);
    EXPECT_STRNE(first, second);
}

TEST(CommandLine, IsTheProgramsNameAlone) {
    const std::vector<std::string> words = ::testing::internal::GetArgvs();
    char buffer[4096];
    EXPECT_EQ(kvOsGetCommandLine(buffer), words.at(0).size());
    EXPECT_EQ(buffer, words.at(0));
}

TEST(CommandLine, NothingIsWrittenBehindTheName) {
    if (::testing::internal::GetArgvs().size() < 2) GTEST_SKIP() << "needs a second word";
    char buffer[4096];
    std::fill(std::begin(buffer), std::end(buffer), '#');
    const std::uint32_t length = kvOsGetCommandLine(buffer);
    EXPECT_TRUE(std::all_of(buffer + length + 1, std::end(buffer), [](char c) { return c == '#'; }));
}

TEST(FileVersion, IsAlwaysOnePointNothing) {
    std::uint32_t version = 0;
    EXPECT_EQ(kvOSGetFileVersion(nullptr, &version), 1u);
    EXPECT_EQ(version, 0x1000000u);
    EXPECT_EQ(kvOSGetFileVersion("/nowhere", nullptr), 0u);
}

TEST(EmptyAnswers, HandleNamesAndDriveTypesAreAlwaysZero) {
    EXPECT_EQ(kvOSGetFilenameFromHandle(0), 0u);
    EXPECT_EQ(kvOSGetFilenameFromHandle(-1), 0u);
    EXPECT_EQ(kvOSGetDriveType("C:/"), 0u);
    EXPECT_EQ(kvOSGetDriveType(nullptr), 0u);
}

TEST(TemporaryNames, ANullBufferIsRefused) {
    errno = 0;
    EXPECT_EQ(kvOSGetTempPath(0, nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSGetTempFileName(nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(kvOsGetCommandLine(nullptr), 0u);
}
