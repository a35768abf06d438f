// The log file: how it begins, what a message becomes in it, repeats, its successor and its wrap.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "diag/log_reader.h"
#include "errlog.h"
#include "support/captured_messages.h"

using kvtest::CapturedMessages;
using kvtest::contentOf;
using kvtest::listed;
using kvtest::LogContent;
using kvtest::logPath;
using kvtest::namesIn;
using kvtest::parseLog;
using kvtest::readLog;
using Texts = std::vector<std::string>;

namespace {

class LogFile : public kvtest::LogTest {};

constexpr std::uint32_t kSwallowed = 0xFFFFFFFE;

/// Messages so large that the list alone fills a file.
void putLarge(int count, std::size_t size, int from = 0) {
    for (int i = from; i < from + count; ++i) {
        std::string text = "\n<" + std::to_string(i) + ">";
        text.resize(size, 'x');
        ErrLogPut(0, text.c_str());
    }
}

}  // namespace

TEST_F(LogFile, IsNotThereBeforeTheFirstMessage) {
    nameFile();
    EXPECT_EQ(gfErrLogListValid, 1u);
    EXPECT_TRUE(namesIn(folder.path()).empty());
    ErrLogPut(0, "\na");
    EXPECT_EQ(namesIn(folder.path()).size(), 1u);
}

TEST_F(LogFile, IsNotOpenedWhileTheLogIsOff) {
    nameFile();
    gfEnableLog = 0;
    ErrLogPut(0, "\na");
    EXPECT_TRUE(namesIn(folder.path()).empty());
    EXPECT_EQ(listed().size(), 1u);
}

TEST_F(LogFile, BeginsWithTheTimeAndEveryLineHasItsNumber) {
    nameFile();
    ErrLogPut(0, "\nfirst");
    ErrLogPut(0, "\nsecond\r\n");
    const std::string content = closedLog();
    EXPECT_TRUE(std::regex_match(
        content, std::regex("LOG STARTED ([0-9]{4}-[0-9]{2}-[0-9]{2})T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} "
                            "[ 0-9]{2}:[ 0-9]{2}:[ 0-9]{2} \n"
                            "\n0\t\\1T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}\tfirst"
                            "\n1\t\\1T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}\tsecond\r\n")))
        << content;
}

TEST_F(LogFile, StampsCountYearsAndMonthsAsPeopleDo) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::time_t now = std::time(nullptr);
    char today[32];
    std::strftime(today, sizeof today, "%Y-%m-%d", std::localtime(&now));
    EXPECT_EQ(parseLog(closedLog()).lines.at(0).stamp.substr(0, 10), today);
}

TEST_F(LogFile, OnlyOneLeadingLineFeedIsDropped) {
    nameFile();
    ErrLogPut(0, "\n\na");
    EXPECT_EQ(parseLog(closedLog()).lines.at(0).text, "\na");
}

TEST_F(LogFile, BeginsWithTheListKeptSoFar) {
    ErrLogPut(0, "one\n");
    ErrLogPut(0, "\ntwo");
    ErrLogPut(0, "three");
    nameFile();
    ErrLogPut(0, "\nfour");
    const LogContent log = parseLog(closedLog());
    EXPECT_EQ(log.history, "one");  // its line end was not kept
    ASSERT_EQ(log.lines.size(), 2u);
    EXPECT_EQ(log.lines[0].number, 1);
    EXPECT_EQ(log.lines[0].text, "twothree");
    EXPECT_EQ(log.lines[1].number, 3);
    EXPECT_EQ(log.lines[1].text, "four");
}

TEST_F(LogFile, EmptyTextIsStampedOrRunsOnAndIsNotKept) {
    nameFile();
    ErrLogPut(0, "\na");
    ErrLogPut(0, "");
    ErrLogPut(0, "\nb");
    EXPECT_EQ(listed(), (Texts{"\na", "\nb"}));
    const LogContent log = parseLog(closedLog());
    EXPECT_EQ(log.lines.back().number, 2);
}

TEST_F(LogFile, RepeatIsCountedAndNotWritten) {
    nameFile();
    EXPECT_EQ(ErrLogPut(1, "\nsame"), 0u);
    EXPECT_EQ(ErrLogPut(1, "\nsame"), kSwallowed);
    EXPECT_EQ(ErrLogPut(1, "\nsame"), kSwallowed);
    EXPECT_EQ(listed(), (Texts{"\nsame"}));
    EXPECT_EQ(reinterpret_cast<kvErrLogRecord*>(gErrLogList.tail)->dwRepeats, 2u);
    EXPECT_EQ(ErrLogPut(1, "\nother"), 3u);
    EXPECT_EQ(reinterpret_cast<kvErrLogRecord*>(gErrLogList.head)->dwRepeats, 2u);
    EXPECT_EQ(ErrLogPut(1, "\nthird"), 0u);
    const LogContent log = parseLog(closedLog());
    ASSERT_EQ(log.lines.size(), 3u);
    EXPECT_EQ(log.lines[0].text, "same\t\t\t\t\t\t[repeat x3]\n");
    EXPECT_EQ(log.lines[1].number, 1);  // a repeat uses no number up
    EXPECT_EQ(log.lines[2].text, "third");
}

TEST_F(LogFile, AnotherCodeIsNoRepeat) {
    nameFile();
    ErrLogPut(1, "\nsame");
    EXPECT_EQ(ErrLogPut(2, "\nsame"), 0u);
    EXPECT_EQ(ErrLogPut(2, "\nsam"), 0u);
}

TEST_F(LogFile, TextThatEndsInALineFeedNeverRepeats) {
    nameFile();
    EXPECT_EQ(ErrLogPut(1, "\nsame\n"), 0u);
    EXPECT_EQ(ErrLogPut(1, "\nsame\n"), 0u);
    EXPECT_EQ(listed(), (Texts{"\nsame", "\nsame"}));
    EXPECT_EQ(ErrLogPut(1, "\nsame"), kSwallowed);  // what was kept is what counts
}

TEST_F(LogFile, SingleLineFeedDoesRepeat) {
    nameFile();
    EXPECT_EQ(ErrLogPut(1, "\n"), 0u);
    EXPECT_EQ(ErrLogPut(1, "\n"), kSwallowed);
}

TEST_F(LogFile, MessageBehindARunThatIsNotKeptEndsTheRunAgain) {
    nameFile();
    ErrLogPut(1, "\nsame");
    ErrLogPut(1, "\nsame");
    EXPECT_EQ(ErrLogPut(1, ""), 2u);
    EXPECT_EQ(ErrLogPut(1, "\nnext"), 2u);
}

TEST_F(LogFile, StandardErrorFollowsTheRepeats) {
    nameFile();
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    ErrOut("\nsame");
    ErrOut("\nsame");
    ErrOut("\nsame");
    EXPECT_EQ(messages.text(), "\nsame");
    ErrOut("\nother");
    EXPECT_EQ(messages.text(), "\nsame[repeat x3]\n\nother");
    ErrOut("\nother");
    ErrStrOut(5, "\nend", nullptr, 0);
    EXPECT_EQ(messages.text(), "\nsame[repeat x3]\n\nother[repeat x2]\n\nend");
    gdwOutputToStdDebug = 0;
}

TEST_F(LogFile, StandardErrorGetsEveryRepeatWhileNoFileIsOpen) {
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    for (int i = 0; i < 3; ++i) ErrOut("x");
    EXPECT_EQ(messages.text(), "xxx");
    gdwOutputToStdDebug = 0;
}

TEST_F(LogFile, CloseEndsTheListAndTheName) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string path = logPath();
    EXPECT_EQ(ErrLogClose(), 0u);
    EXPECT_EQ(gfErrLogListValid, 0u);
    EXPECT_EQ(gErrLogList.flags, 0u);
    EXPECT_EQ(d_ListCount(&gErrLogList), 0u);
    EXPECT_EQ(d_ListLock(&gErrLogList), 0u);
    EXPECT_EQ(logPath(), path);  // it stays, though nothing is opened by it
    ErrLogPut(0, "\nb");
    EXPECT_EQ(kvtest::get(0).number, 0u);
    EXPECT_EQ(listed(), (Texts{"\nb"}));
    EXPECT_EQ(readLog(path).lines.size(), 1u);
}

TEST_F(LogFile, PastTenMebibytesItGetsANumberedSuccessorThatBeginsWithTheList) {
    nameFile();
    const std::string first = logPath();
    putLarge(2600, 4096);
    const std::string second = logPath();
    EXPECT_EQ(second, first.substr(0, first.size() - 4) + "_001.log");
    EXPECT_EQ(namesIn(folder.path()).size(), 2u);
    ErrLogClose();

    const LogContent before = readLog(first);
    const auto size = std::filesystem::file_size(first);
    EXPECT_GE(size, 0xA00001u);
    EXPECT_LT(size, 0xA00001u + 4096 + 64);
    for (std::size_t i = 0; i < before.lines.size(); ++i) ASSERT_EQ(before.lines[i].number, static_cast<int>(i));

    const LogContent after = readLog(second);
    const int carried = before.lines.back().number;
    ASSERT_GE(after.lines.size(), 999u);
    EXPECT_EQ(after.lines.front().number, carried - 998);
    for (std::size_t i = 0; i < after.lines.size(); ++i) {
        ASSERT_EQ(after.lines[i].number, carried - 998 + static_cast<int>(i));
    }
    EXPECT_EQ(after.lines.back().number, 2599);
}

TEST_F(LogFile, SuccessorsCountOnAndPassOverFilesThatExist) {
    nameFile();
    const std::string first = logPath();
    const std::string stem = first.substr(0, first.size() - 4);
    kvtest::makeFile(stem + "_001.log", "mine");
    putLarge(5000, 4096);
    EXPECT_EQ(logPath(), stem + "_003.log");
    EXPECT_EQ(contentOf(stem + "_001.log"), "mine");
}

TEST_F(LogFile, SuffixCountsOnOverTheFilesOfTheProcess) {
    nameFile();
    kvtest::makeFile(logPath());
    ErrLogPut(0, "\na");
    EXPECT_TRUE(logPath().ends_with("_001.log"));
    nameFile("next");
    kvtest::makeFile(logPath());
    ErrLogPut(0, "\nb");
    EXPECT_TRUE(logPath().ends_with("_002.log"));
}

TEST_F(LogFile, HistoryLargerThanAFileWrapsToItsStart) {
    putLarge(999, 12000);
    nameFile();
    EXPECT_EQ(ErrLogPut(0, "\nlast"), 0u);
    const std::string path = logPath();
    ErrLogPut(0, "\nmore");
    EXPECT_EQ(logPath(), path);  // it goes on from the start, so that it is not full
    const std::string content = closedLog();
    EXPECT_GT(content.size(), 999u * 12000u);
    // The mark and what follows it stand over the start line and the first record.
    EXPECT_TRUE(std::regex_search(content.substr(0, 120),
                                  std::regex("^999\t[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{3}\tLog Wrapped\n"
                                             "\n999\t[^\t]+\tlast\n1000\t[^\t]+\tmore.*x+")))
        << content.substr(0, 120);
}

TEST_F(LogFile, WrapsFromItsLimitOnAndNotBelow) {
    constexpr std::size_t kStartLine = sizeof "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n" - 1;
    constexpr std::size_t kLimit = 0xA00400;
    for (const std::size_t position : {kLimit - 1, kLimit}) {
        // A history without line feeds is written as it is.
        ErrLogPut(0, std::string(position - kStartLine, 'x').c_str());
        nameFile();
        ErrLogPut(0, "\nlast");
        const std::string content = closedLog();
        if (position < kLimit) {
            EXPECT_TRUE(content.starts_with("LOG STARTED "));
            EXPECT_GT(content.size(), position);
            EXPECT_EQ(parseLog(content).lines.back().text, "last");
        } else {
            EXPECT_TRUE(
                std::regex_search(content.substr(0, 80), std::regex("^1\t[^\t]*\tLog Wrapped\n\n1\t[^\t]+\tlast")))
                << content.substr(0, 80);
            EXPECT_EQ(content.size(), position);  // what stood there stays behind
        }
    }
}

TEST_F(LogFile, WrapsAheadOfTheEndOfARun) {
    const std::string large(0xA00400, 'x');
    nameFile();
    ErrLogPut(0, large.c_str());
    EXPECT_EQ(ErrLogPut(0, large.c_str()), kSwallowed);  // in a successor, which begins with the list
    EXPECT_EQ(ErrLogPut(0, "\nother"), 2u);              // and in the next one
    const std::string content = closedLog().substr(0, 120);
    EXPECT_TRUE(std::regex_search(
        content, std::regex("^1\t[^\t]*\tLog Wrapped\n\t\t\t\t\t\t\\[repeat x2\\]\n\n1\t[^\t]+\tother")))
        << content;
}

TEST_F(LogFile, ThatCannotBeOpenedIsToldOnceWithItsPathAndTheLogIsOff) {
    nameFile();
    const std::string path = logPath();
    std::filesystem::remove_all(folder.path());
    CapturedMessages messages;
    EXPECT_EQ(ErrLogPut(0, "\na"), 0u);
    EXPECT_EQ(gfEnableLog, 0u);
    EXPECT_EQ(messages.text(), "ERROR: Unable to open log file for output (2): " + path);
    ErrLogPut(0, "\nb");
    EXPECT_EQ(messages.count("ERROR"), 1u);
    EXPECT_EQ(listed(), (Texts{"\na", "\nb"}));
}

TEST_F(LogFile, OnAFullDiskNothingFailsAndTheListGoesOn) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    char name[4096];
    // The stamped name is a link to the device, made before the file is: by its second, and the one after.
    for (int i = 0; i < 3; ++i) {
        const std::time_t when = std::time(nullptr) + i;
        char stamp[64];
        const std::tm* fields = std::localtime(&when);
        std::snprintf(stamp, sizeof stamp, "_%04d-%02d-%02dT%02d-%02d-%02d", fields->tm_year, fields->tm_mon,
                      fields->tm_mday, fields->tm_hour, fields->tm_min, fields->tm_sec);
        std::filesystem::create_symlink("/dev/full", folder / ("full" + std::string(stamp) + ".log"));
    }
    std::snprintf(name, sizeof name, "%s", (folder / "full.log").c_str());
    ErrLogSetMode(0, name);
    ASSERT_EQ(gfEnableLog, 1u);
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(ErrLogPut(0, ("\n" + std::string(500, 'z') + std::to_string(i)).c_str()), 0u);
    }
    EXPECT_EQ(listed().size(), 500u);
    EXPECT_EQ(gfEnableLog, 1u);
}

TEST_F(LogFile, IsWholeWhenAPlugInThatWroteItWasUnloaded) {
    const std::string command = "LOG_FILE=" + (folder / "plugged.log") + " " PLUG_IN_HOST " " KVUTIL_LIBRARY_PATH;
    ASSERT_EQ(std::system(command.c_str()), 0);
    const auto names = namesIn(folder.path());
    ASSERT_EQ(names.size(), 1u);
    const std::string text = readLog(folder / names[0]).allText();
    EXPECT_NE(text.find("last"), std::string::npos) << text;
}

TEST_F(LogFile, IsNotInheritedByPrograms) {
    nameFile();
    ErrLogPut(0, "\na");
    const std::string command = "ls -l /proc/self/fd | grep -qF '" + logPath() + "'";
    EXPECT_NE(std::system(command.c_str()), 0);
}

TEST_F(LogFile, EightThreadsReportAndNothingIsLostOrDoubled) {
    constexpr int kThreads = 8;
    constexpr int kMessages = 3000;
    nameFile();
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < kMessages; ++i) ErrOut(i % 3 == 0 ? "\n<%d:%d>" : "<%d:%d>", t, i);
            });
        }
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i) kvtest::get(0, 200);
        });
    }
    EXPECT_EQ(d_ListCount(&gErrLogList), 999u);
    EXPECT_EQ(kvtest::get(0xFFFFFFFF).next, static_cast<std::uint32_t>(kThreads * kMessages));
    const LogContent log = parseLog(closedLog());
    int previous = -1;
    for (const auto& line : log.lines) {
        EXPECT_GT(line.number, previous);
        previous = line.number;
    }
    const std::string all = log.allText();
    std::map<int, int> nextOf;
    int total = 0;
    static const std::regex message("<([0-9]+):([0-9]+)>");
    for (std::sregex_iterator at(all.begin(), all.end(), message), none; at != none; ++at, ++total) {
        EXPECT_EQ(std::stoi((*at)[2]), nextOf[std::stoi((*at)[1])]++);  // each thread's in its order
    }
    EXPECT_EQ(total, kThreads * kMessages);
}

TEST_F(LogFile, MayBeClosedAndNamedAnewWhileOthersReport) {
    nameFile();
    std::atomic<bool> done{false};
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; !done; ++i) ErrOut("\n<%d:%d>", t, i);
            });
        }
        for (int i = 0; i < 30; ++i) {
            ErrLogSetFileName("run");
            ErrLogPut(0, "\nmine");
            ErrLogClose();
        }
        done = true;
    }
    for (const std::string& name : namesIn(folder.path())) {
        EXPECT_TRUE(contentOf(folder / name).starts_with("LOG STARTED ")) << name;
    }
}
