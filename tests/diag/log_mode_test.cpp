// The control call: what each mode does, and what none of them touches.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "diag/log_reader.h"
#include "errlog.h"
#include "kvos/attributes.h"

using kvtest::contentOf;
using kvtest::get;
using kvtest::listed;
using kvtest::logPath;
using kvtest::makeFile;
using kvtest::namesIn;
using kvtest::parseLog;
using Texts = std::vector<std::string>;

namespace {

class LogMode : public kvtest::LogTest {
protected:
    std::uint32_t set(std::int32_t mode, const std::string& name) {
        std::snprintf(name_, sizeof name_, "%s", name.c_str());
        return ErrLogSetMode(mode, name_);
    }

    char name_[4096] = "";
};

std::string startLine() {
    return "LOG STARTED [0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} [ 0-9]{2}:[ 0-9]{2}:[ 0-9]{2} "
           "\n";
}

}  // namespace

TEST_F(LogMode, ClearEmptiesTheListAndCountsFromZeroAndTheFileStaysOpen) {
    nameFile();
    ErrLogPut(0, "\na");
    ErrLogPut(0, "\nb");
    get(1);
    EXPECT_EQ(ErrLogSetMode(-1, nullptr), 0u);
    EXPECT_EQ(d_ListCount(&gErrLogList), 0u);
    EXPECT_EQ(get(0).next, 0xFFFFFFFFu);
    EXPECT_EQ(ErrLogPut(0, "\nb"), 0u);
    EXPECT_EQ(get(0).number, 0u);
    EXPECT_EQ(gfErrLogListValid, 1u);
    const auto log = parseLog(closedLog());
    ASSERT_EQ(log.lines.size(), 3u);
    EXPECT_EQ(log.lines[2].number, 0);
}

TEST_F(LogMode, FileIsStampedToTheSecondAndBeginsWithoutTheHistory) {
    ErrLogPut(0, "\nhistory");
    EXPECT_EQ(set(0, folder / "by_mode.txt"), 0u);
    EXPECT_EQ(gfEnableLog, 1u);
    const std::time_t now = std::time(nullptr);
    char date[64];
    const std::tm* fields = std::localtime(&now);
    std::snprintf(date, sizeof date, "_%04d-%02d-%02dT", fields->tm_year, fields->tm_mon, fields->tm_mday);
    EXPECT_TRUE(
        std::regex_match(logPath(), std::regex((folder / "by_mode") + date + "[0-9]{2}-[0-9]{2}-[0-9]{2}\\.txt")))
        << logPath();
    ErrLogPut(0, "\na");
    EXPECT_EQ(gfErrLogListValid, 0u);
    EXPECT_TRUE(std::regex_match(closedLog(), std::regex(startLine() + "\n1\t[^\t]+\ta")));
}

TEST_F(LogMode, FileWithoutABaseGetsTheUsualName) {
    set(0, folder / " .log");
    EXPECT_TRUE(logPath().starts_with(folder / "korvane_log__")) << logPath();
}

TEST_F(LogMode, FileTruncatesWhatHasItsName) {
    ErrLogSetName((folder / "x.log").c_str());
    const std::string path = logPath();
    makeFile(path, std::string(1000, 'o'));
    ErrLogSetMode(0, nullptr);
    EXPECT_EQ(logPath(), path);
    EXPECT_TRUE(std::regex_match(closedLog(), std::regex(startLine())));
}

TEST_F(LogMode, FileThatIsOpenGetsAnotherStartLineAndANewNameOnly) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string path = logPath();
    set(0, folder / "other.log");
    EXPECT_NE(logPath(), path);
    set(0, "");
    ErrLogPut(0, "\nb");
    ErrLogClose();
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
    EXPECT_TRUE(std::regex_match(
        contentOf(path), std::regex(startLine() + "\n0\t[^\t]+\ta" + startLine() + startLine() + "\n1\t[^\t]+\tb")));
}

TEST_F(LogMode, FileThatCannotBeOpenedOrHasNoNameTurnsTheLogOff) {
    gfEnableLog = 1;
    EXPECT_EQ(ErrLogSetMode(0, nullptr), 0u);
    EXPECT_EQ(gfEnableLog, 0u);
    gfEnableLog = 1;
    set(0, "/no/such/folder/x.log");
    EXPECT_EQ(gfEnableLog, 0u);
    EXPECT_TRUE(logPath().starts_with("/no/such/folder/x_"));
}

TEST_F(LogMode, FileNameThatDoesNotFitLeavesNone) {
    set(0, folder / "x.log");
    ErrLogClose();
    errno = 0;
    EXPECT_EQ(set(0, folder / std::string(4090 - folder.path().size(), 'n')), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(logPath(), "");
    EXPECT_EQ(gfEnableLog, 0u);
    std::string longer(6000, 'n');
    errno = 0;
    EXPECT_EQ(ErrLogSetMode(0, longer.data()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    errno = 0;
    EXPECT_EQ(ErrLogSetMode(4, longer.data()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(LogMode, FilePastItsFillIsClosedWithoutASuccessor) {
    set(0, folder / "x.log");
    const std::string path = logPath();
    for (int i = 0; i < 2700; ++i) ErrLogPut(0, ("\n" + std::to_string(i) + std::string(4090, 'x')).c_str());
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
    EXPECT_EQ(gfEnableLog, 1u);
    EXPECT_LT(std::filesystem::file_size(path), 0xA00001u + 4200);
    EXPECT_EQ(listed().back().substr(0, 5), "\n2699");
}

TEST_F(LogMode, DeleteRemovesTheFileAndTheNextMessageBeginsItAnew) {
    nameFile();
    ErrLogPut(0, "\na");
    get(0);
    const std::string path = logPath();
    EXPECT_EQ(ErrLogSetMode(1, nullptr), 0u);
    EXPECT_TRUE(namesIn(folder.path()).empty());
    EXPECT_EQ(logPath(), path);
    ErrLogPut(0, "\nb");
    const auto log = parseLog(closedLog());
    EXPECT_EQ(log.lines.size(), 2u);
    EXPECT_EQ(ErrLogSetMode(1, nullptr), 0u);  // by its name alone
    EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST_F(LogMode, DumpWritesTheListInItsOwnForm) {
    ErrLogPut(0x80000005, "first\n");
    ErrLogPut(0, "\nsecond");
    const std::string path = folder / "dump.txt";
    EXPECT_EQ(set(4, path + " \t\n"), 0u);
    EXPECT_EQ(contentOf(path), "Error     Time(ms)                Message\n0         first1         \nsecond");
    EXPECT_EQ(name_, path + " \t\n");
    EXPECT_EQ(logPath(), "");
    EXPECT_EQ(listed().size(), 2u);
    EXPECT_EQ(gfEnableLog, 0u);
}

TEST_F(LogMode, DumpOfAnEmptyListIsItsHeader) {
    set(4, folder / "dump.txt");
    EXPECT_EQ(contentOf(folder / "dump.txt"), "Error     Time(ms)                Message\n");
}

TEST_F(LogMode, DumpNameKeepsLettersBeyondAscii) {
    set(4, folder / "größe");
    EXPECT_EQ(namesIn(folder.path()), (Texts{"größe"}));
}

TEST_F(LogMode, DumpThatCannotBeOpenedIsPassedOver) {
    EXPECT_EQ(set(4, "/no/such/folder/dump.txt"), 0u);
    EXPECT_EQ(set(4, folder.path()), 0u);
}

TEST_F(LogMode, DumpWithoutANameGoesToTheConfigurationDirectoryAndHandsOutAnotherName) {
    const std::string home = std::getenv("HOME");
    std::filesystem::create_directories(home + "/Library/Application Support/Korvane");
    ErrLogPut(0, "a");
    char directory[4096];
    ASSERT_EQ(kvOSGetConfigDir(directory, 0), 0);
    for (const char* name : {"", "  \t"}) {
        EXPECT_EQ(set(4, name), 0u);
        EXPECT_TRUE(std::regex_match(
            name_, std::regex(std::string(directory) + "debugout_[0-9]{4}(-[0-9]{2}){2}T([0-9]{2}-){3}[0-9]{3}\\.log")))
            << name_;
        EXPECT_FALSE(std::filesystem::exists(name_));
        EXPECT_TRUE(contentOf(std::string(directory) + "debugout.log").ends_with("0         a"));
    }
    EXPECT_EQ(ErrLogSetMode(4, nullptr), 0u);
}

TEST_F(LogMode, DumpWithoutANameIsRefusedWhereTheConfigurationDirectoryDoesNotFit) {
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "the machine has one for all users";
    setenv("HOME", ("/" + std::string(4090, 'h')).c_str(), 1);
    errno = 0;
    EXPECT_EQ(set(4, ""), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_STREQ(name_, "");
    EXPECT_FALSE(std::filesystem::exists("debugout.log"));
    setenv("HOME", "/no/such/home", 1);  // its name fits, though it can't be made
    errno = 0;
    EXPECT_EQ(set(4, ""), 0u);
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(std::string(name_).starts_with("/no/such/home/")) << name_;
}

TEST_F(LogMode, OpenFileIsTold) {
    EXPECT_EQ(kvErrLog_IsOpen(), 0u);
    set(0, folder / "x.log");
    EXPECT_EQ(kvErrLog_IsOpen(), 1u);
    ErrLogSetMode(-1, nullptr);
    EXPECT_EQ(kvErrLog_IsOpen(), 1u);
    ErrLogClose();
    EXPECT_EQ(kvErrLog_IsOpen(), 0u);
    EXPECT_EQ(gErrLogList.flags, 0u);  // no list is begun for it
    gfEnableList = 0;
    EXPECT_EQ(kvErrLog_IsOpen(), 0u);
    gfEnableList = 1;
}

TEST_F(LogMode, FilePastItsFillHasASuccessorWhileANameOfARunIsGood) {
    nameFile();
    set(0, folder / "x.log");
    EXPECT_EQ(gfErrLogListValid, 1u);
    for (int i = 0; i < 2700; ++i) ErrLogPut(0, ("\n" + std::to_string(i) + std::string(4090, 'x')).c_str());
    EXPECT_EQ(namesIn(folder.path()).size(), 2u);
    EXPECT_TRUE(logPath().ends_with("_001.log")) << logPath();
}

TEST_F(LogMode, DeleteGoesByThePathThatModeZeroChanged) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string opened = logPath();
    set(0, folder / "other.log");
    makeFile(logPath());
    ErrLogSetMode(1, nullptr);
    EXPECT_FALSE(std::filesystem::exists(logPath()));
    EXPECT_TRUE(std::filesystem::exists(opened));
}

TEST_F(LogMode, StandardErrorIsSwitched) {
    EXPECT_EQ(ErrLogSetMode(4097, nullptr), 0u);
    EXPECT_EQ(gdwOutputToStdDebug, 1u);
    EXPECT_EQ(ErrLogSetMode(4096, nullptr), 0u);
    EXPECT_EQ(gdwOutputToStdDebug, 0u);
}

TEST_F(LogMode, TwoAndThreeAndAllOthersAreAcceptedAndDoNothing) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string path = logPath();
    for (const std::int32_t mode : {2, 3, 5, 6, 100, 4095, 4098, -2}) EXPECT_EQ(set(mode, folder / "x.log"), 0u);
    EXPECT_EQ(listed().size(), 1u);
    EXPECT_EQ(logPath(), path);
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
}
