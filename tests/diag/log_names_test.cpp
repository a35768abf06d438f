// What log files are called, and which of them make room for a new one.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "diag/log_reader.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "support/captured_messages.h"

using kvtest::logPath;
using kvtest::makeFile;
using kvtest::namesIn;
using Texts = std::vector<std::string>;

namespace {

class LogNames : public kvtest::LogTest {};
class LogRotation : public kvtest::LogTest {
protected:
    void rotate(std::uint32_t maximum, const char* extension = ".log") {
        kvErrLog_RotateFiles((folder.path() + "/").c_str(), 0, extension, maximum);
    }
};

/// "_" and the raw fields of today: years from 1900, months from 0.
std::string rawDate() {
    const std::time_t now = std::time(nullptr);
    const std::tm* fields = std::localtime(&now);
    char text[64];
    std::snprintf(text, sizeof text, "_%04d-%02d-%02dT", fields->tm_year, fields->tm_mon, fields->tm_mday);
    return text;
}

const std::string kMilliseconds = "[0-9]{2}-[0-9]{2}-[0-9]{2}-[0-9]{3}";

void expectName(const std::string& path, const std::string& head, const std::string& tail) {
    EXPECT_TRUE(std::regex_match(path, std::regex(head + rawDate() + kMilliseconds + tail))) << path;
}

void configure(const std::string& name) {
    name.copy(gszLogName, sizeof gszLogName - 1);
    gszLogName[name.size()] = '\0';
}

/// Waits until a new file is younger than one made before, by what the file system tells. Some tell time coarsely.
void makeYoungerFile(const std::string& path, const std::string& than) {
    struct stat older {};
    struct stat younger {};
    ASSERT_EQ(stat(than.c_str(), &older), 0);
    do {
        std::filesystem::remove(path);
        makeFile(path);
        ASSERT_EQ(stat(path.c_str(), &younger), 0);
    } while (older.st_ctim.tv_sec == younger.st_ctim.tv_sec && older.st_ctim.tv_nsec == younger.st_ctim.tv_nsec);
}

}  // namespace

TEST_F(LogNames, AreEmptyAtFirst) {
    EXPECT_EQ(logPath(), "");
    EXPECT_EQ(ErrLogGetName(nullptr, 0), 0u);
}

TEST_F(LogNames, PathIsStampedBehindItsBase) {
    EXPECT_EQ(ErrLogSetName((folder / "name.txt").c_str()), 0u);
    EXPECT_EQ(gszLogName, folder / "name.txt");
    expectName(logPath(), folder / "name", "\\.txt");
    EXPECT_EQ(gfErrLogListValid, 0u);
}

TEST_F(LogNames, PathGetsNoExtensionButABaseDoes) {
    ErrLogSetName((folder / "name").c_str());
    expectName(logPath(), folder / "name", "");
    ErrLogSetFileName("run");
    expectName(logPath(), folder / "run", "\\.log");
    EXPECT_EQ(gszLogName, folder / "run.log");
}

TEST_F(LogNames, BaseTakesTheConfiguredDirectoryAndExtension) {
    configure(folder / "old.txt");
    EXPECT_EQ(ErrLogSetFileName("run"), 0u);
    EXPECT_EQ(gszLogName, folder / "run.txt");
    expectName(logPath(), folder / "run", "\\.txt");
    EXPECT_EQ(gfErrLogListValid, 1u);
}

TEST_F(LogNames, EmptyOrBlankBaseGetsTheUsualName) {
    for (const char* base : {"", " ", " named"}) {
        configure(folder / "old.log");
        ErrLogSetFileName(base);
        expectName(logPath(), folder / "korvane_log_", "\\.log");
    }
    ErrLogSetName((folder / "").c_str());
    expectName(logPath(), folder / "korvane_log_", "");
    ErrLogSetName((folder / " x.txt").c_str());
    expectName(logPath(), folder / "korvane_log_", "\\.txt");
}

TEST_F(LogNames, OtherControlCharactersAreNoBlank) {
    ErrLogSetName((folder / "\tx").c_str());
    expectName(logPath(), folder / "\tx", "");
}

TEST_F(LogNames, RelativePathIsMadeAbsolute) {
    ErrLogSetName("./name.log");
    expectName(logPath(), std::filesystem::current_path().string() + "/\\./name", "\\.log");
}

TEST_F(LogNames, NullOnlyCloses) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string path = logPath();
    EXPECT_EQ(ErrLogSetName(nullptr), 0u);
    EXPECT_EQ(gfErrLogListValid, 0u);
    EXPECT_EQ(logPath(), path);
    EXPECT_EQ(ErrLogSetFileName(nullptr), 0u);
    EXPECT_EQ(logPath(), path);
}

TEST_F(LogNames, PathAloneDoesNotOpenTheFile) {
    gfEnableLog = 1;
    ErrLogSetName((folder / "name.log").c_str());
    ErrLogPut(0, "\na");
    EXPECT_TRUE(namesIn(folder.path()).empty());
    ErrLogSetMode(0, nullptr);
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
}

TEST_F(LogNames, FullListNamesAFileByTheConfiguredNameButOpensNone) {
    configure(folder / "deep.txt");
    gfEnableLog = 1;
    for (int i = 0; i < 999; ++i) ErrLogPut(0, "m");
    EXPECT_EQ(logPath(), "");
    ErrLogPut(0, "m");
    expectName(logPath(), folder / "deep", "\\.txt");
    EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST_F(LogNames, GettingWithAFlagSets) {
    char buffer[4096];
    std::snprintf(buffer, sizeof buffer, "%s", (folder / "by_get.log").c_str());
    EXPECT_EQ(ErrLogGetName(buffer, 7), 0u);
    EXPECT_EQ(buffer, folder / "by_get.log");
    expectName(logPath(), folder / "by_get", "\\.log");
}

TEST_F(LogNames, ThatDoNotFitChangeNothing) {
    ErrLogSetName((folder / "good.log").c_str());
    const std::string path = logPath();
    for (const std::size_t length : {std::size_t{4090}, std::size_t{4095}, std::size_t{4096}, std::size_t{9000}}) {
        errno = 0;
        EXPECT_EQ(ErrLogSetName((folder / std::string(length - folder.path().size() - 1, 'n')).c_str()), 0u);
        EXPECT_EQ(errno, ENAMETOOLONG);
        errno = 0;
        EXPECT_EQ(ErrLogSetFileName(std::string(length, 'n').c_str()), 0u);
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_EQ(logPath(), path);
        EXPECT_EQ(gszLogName, folder / "good.log");
        EXPECT_EQ(gfErrLogListValid, 0u);
    }
}

TEST_F(LogNames, ThatCannotBeMadeAbsoluteChangeNothingAndTheErrorIsTheSystems) {
    ErrLogSetName((folder / "good.log").c_str());
    const std::string path = logPath();
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directory(folder / "gone");
    std::filesystem::current_path(folder / "gone");
    std::filesystem::remove(folder / "gone");
    errno = 0;
    EXPECT_EQ(ErrLogSetName("./x.log"), 0u);
    EXPECT_EQ(errno, ENOENT);
    configure("./x.log");
    errno = 0;
    EXPECT_EQ(ErrLogSetFileName("run"), 0u);
    EXPECT_EQ(errno, ENOENT);
    std::filesystem::current_path(before);
    EXPECT_EQ(logPath(), path);
    EXPECT_STREQ(gszLogName, "./x.log");
    EXPECT_EQ(gfErrLogListValid, 0u);
}

TEST_F(LogNames, BaseWithoutAConfiguredNameIsADirectoryTheNextTime) {
    configure("run");
    ErrLogSetFileName("run");
    ErrLogSetFileName("next");
    EXPECT_STREQ(gszLogName, "run/next.log");
}

TEST_F(LogNames, PathIsOpenedByTheNextMessageWhileTheNameOfARunIsGood) {
    nameFile();
    ErrLogSetName((folder / "name.log").c_str());
    EXPECT_EQ(gfErrLogListValid, 1u);
    ErrLogPut(0, "\na");
    EXPECT_TRUE(std::filesystem::exists(logPath()));
}

TEST_F(LogRotation, OldestByCreationTimeGoUntilOneLessThanTheMaximumIsLeft) {
    const Texts names{"e.log", "c.log", "a.log", "d.log", "b.log"};
    makeFile(folder / names[0]);
    for (std::size_t i = 1; i < names.size(); ++i) makeYoungerFile(folder / names[i], folder / names[i - 1]);
    rotate(3);
    EXPECT_EQ(namesIn(folder.path()), (Texts{"b.log", "d.log"}));
}

TEST_F(LogRotation, FewerFilesThanTheMaximumStay) {
    makeFile(folder / "a.log");
    makeFile(folder / "b.log");
    rotate(3);
    EXPECT_EQ(namesIn(folder.path()).size(), 2u);
    rotate(2);
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
}

TEST_F(LogRotation, OtherExtensionsAndFoldersDoNotCount) {
    for (const char* name : {"a.log", "b.log", "c.txt", "d.logs", "log"}) makeFile(folder / name);
    std::filesystem::create_directory(folder / "folder.log");
    rotate(1);
    EXPECT_EQ(namesIn(folder.path()), (Texts{"c.txt", "d.logs", "folder.log", "log"}));
}

TEST_F(LogRotation, OfEqualTimesTheFirstNamesGo) {
    // Links to one file have one time, whatever the file system's clock does.
    makeFile(folder / "b.log");
    std::filesystem::create_hard_link(folder / "b.log", folder / "a.log");
    std::filesystem::create_hard_link(folder / "b.log", folder / "c.log");
    rotate(3);
    EXPECT_EQ(namesIn(folder.path()), (Texts{"b.log", "c.log"}));
    rotate(2);
    EXPECT_EQ(namesIn(folder.path()), (Texts{"c.log"}));
}

TEST_F(LogRotation, WhatIsNoFolderCounts) {
    ASSERT_EQ(mkfifo((folder / "a.log").c_str(), 0600), 0);
    makeFile(folder / "b.log");
    rotate(2);
    EXPECT_EQ(namesIn(folder.path()), (Texts{"b.log"}));
}

TEST_F(LogRotation, PrefixMayBeginTheName) {
    for (const char* name : {"run1.log", "run2.log", "other.log"}) makeFile(folder / name);
    kvErrLog_RotateFiles((folder / "run").c_str(), 0, ".log", 1);
    // What is listed has its whole name, so that no path that is made of it exists.
    EXPECT_EQ(namesIn(folder.path()).size(), 3u);
}

TEST_F(LogRotation, MaximumOfZeroDeletesAllAndNoMore) {
    for (const char* name : {"a.log", "b.log", "c.log"}) makeFile(folder / name);
    rotate(0);
    EXPECT_TRUE(namesIn(folder.path()).empty());
    rotate(0);
}

TEST_F(LogRotation, WhatCannotBeFoundIsPassedOverInSilence) {
    gdwOutputToStdDebug = 1;
    kvtest::CapturedMessages messages;
    kvErrLog_RotateFiles("/no/such/folder/", 0, ".log", 1);
    kvErrLog_RotateFiles(nullptr, 0, nullptr, 1);
    kvErrLog_RotateFiles(std::string(5000, '/').c_str(), 0, ".log", 1);
    EXPECT_EQ(messages.text(), "");
    gdwOutputToStdDebug = 0;
}

TEST_F(LogRotation, HundredsOfFilesMakeRoomForTheNewOne) {
    for (int i = 0; i < 400; ++i) makeFile(folder / ("f" + std::to_string(1000 + i) + ".log"));
    makeYoungerFile(folder / "a_young.log", folder / "f1399.log");
    rotate(100);
    const Texts left = namesIn(folder.path());
    EXPECT_EQ(left.size(), 99u);
    EXPECT_EQ(left.front(), "a_young.log");
    EXPECT_EQ(left.back(), "f1399.log");
}

TEST_F(LogRotation, BeginningARunKeepsTenThousandUnlessConfigured) {
    for (int i = 0; i < 50; ++i) makeFile(folder / ("f" + std::to_string(i) + ".log"));
    nameFile();
    EXPECT_EQ(namesIn(folder.path()).size(), 50u);
}
