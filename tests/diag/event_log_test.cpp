// The event log: its files in their literal folder, their lines, their numbers.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "errlog.h"
#include "kvos/attributes.h"
#include "support/captured_messages.h"
#include "support/own_var.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;
using Names = std::vector<std::string>;

const std::string kHeader = "Date-Time, Timecode, Code, SubCode, Event, Description, Details\n";
const std::string kFolder = "/var/www/html/events/";

std::uint32_t event(const char* name = "name", std::uint32_t code = 1) {
    return kvEventLog_Event(code, 2, name, "what", "more", "01:02:03:04");
}

Names linesOf(const std::string& path) {
    std::istringstream content(contentOf(path));
    Names lines;
    for (std::string line; std::getline(content, line);) lines.push_back(line);
    return lines;
}

/// A line without its moment, which is checked for its form.
std::string behindTime(const std::string& line) {
    static const std::regex form("[0-9]{4}_[0-9]{1,2}_[0-9]{1,2}-[0-9]{2}_[0-9]{2}_[0-9]{2},(.*)");
    std::smatch parts;
    EXPECT_TRUE(std::regex_match(line, parts, form)) << line;
    return parts.size() == 2 ? parts[1].str() : line;
}

/// Files that a test names itself.
class EventFile : public ::testing::Test {
protected:
    EventFile() { gdwOutputToStdDebug = 0; }

    void open() const { EXPECT_EQ(kvEventLog_SetName(path_.c_str()), 0u); }

    ScratchFolder scratch_;
    std::string path_ = scratch_ / "events.csv";
};

TEST_F(EventFile, AnEmptyOneGetsTheHeader) {
    open();
    EXPECT_EQ(kvEventLog_GetName(), path_);
    EXPECT_EQ(kvEventLog_Close(), 0u);
    EXPECT_STREQ(kvEventLog_GetName(), "");
    EXPECT_EQ(contentOf(path_), kHeader);
}

TEST_F(EventFile, OneWithContentGetsNoSecondHeader) {
    makeFile(path_, "anything\n");
    open();
    EXPECT_EQ(event(), 0u);
    kvEventLog_Close();
    const Names lines = linesOf(path_);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "anything");
    EXPECT_EQ(behindTime(lines[1]), "01:02:03:04,name,0x00000001,0x00000002,what,more");
}

TEST_F(EventFile, ALineHoldsTheFieldsInTheirOrder) {
    open();
    EXPECT_EQ(kvEventLog_Event(0xABCDEF01, 0, "Lost signal", "Input 3", "no carrier", "23:59:59:24"), 0u);
    kvEventLog_Close();
    EXPECT_EQ(behindTime(linesOf(path_).at(1)), "23:59:59:24,Lost signal,0xABCDEF01,0x00000000,Input 3,no carrier");
}

TEST_F(EventFile, NullTextsAreEmpty) {
    open();
    EXPECT_EQ(kvEventLog_Event(1, 2, nullptr, nullptr, nullptr, ""), 0u);
    EXPECT_EQ(kvEventLog_Event(1, 2, nullptr, nullptr, nullptr, nullptr), 0u);
    kvEventLog_Close();
    EXPECT_EQ(behindTime(linesOf(path_).at(1)), ",,0x00000001,0x00000002,,");
    EXPECT_EQ(behindTime(linesOf(path_).at(2)), ",,0x00000001,0x00000002,,");
}

TEST_F(EventFile, TextsAreNeitherQuotedNorEscaped) {
    open();
    kvEventLog_Event(1, 2, "a,b", "\"c\"", "d\ne", "");
    kvEventLog_Close();
    EXPECT_EQ(behindTime(linesOf(path_).at(1)), ",a,b,0x00000001,0x00000002,\"c\",d");
    EXPECT_EQ(linesOf(path_).at(2), "e");
}

TEST_F(EventFile, TextsOfAnyLengthAreWrittenWhole) {
    const std::string text(70000, 'x');
    open();
    kvEventLog_Event(1, 2, text.c_str(), text.c_str(), text.c_str(), text.c_str());
    kvEventLog_Close();
    const std::string line = linesOf(path_).at(1);
    EXPECT_EQ(line.substr(line.find(',') + 1), text + "," + text + ",0x00000001,0x00000002," + text + "," + text);
}

TEST_F(EventFile, TheLastCodesAreKept) {
    EXPECT_EQ(kvEventLog_GetLastEventCode(), 0u);
    EXPECT_EQ(kvEventLog_GetLastEventSubCode(), 0u);
    open();
    kvEventLog_Event(0xFFFFFFFF, 7, "", "", "", "");
    kvEventLog_Close();
    EXPECT_EQ(kvEventLog_GetLastEventCode(), 0xFFFFFFFFu);
    EXPECT_EQ(kvEventLog_GetLastEventSubCode(), 7u);
}

TEST_F(EventFile, TheLineIsAMessageToo) {
    open();
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    event();
    EXPECT_EQ(messages.count(",01:02:03:04,name,0x00000001,0x00000002,what,more\n"), 1u);
}

TEST_F(EventFile, TheLineIsTheFormatOfTheMessage) {
    open();
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    event("50%%");
    EXPECT_EQ(messages.count(",50%,0x00000001"), 1u);
    kvEventLog_Close();
    EXPECT_EQ(behindTime(linesOf(path_).at(1)), "01:02:03:04,50%%,0x00000001,0x00000002,what,more");
}

TEST_F(EventFile, AnotherNameClosesTheOneThatIsOpen) {
    open();
    event("first");
    EXPECT_EQ(kvEventLog_SetName((scratch_ / "other.csv").c_str()), 0u);
    EXPECT_EQ(linesOf(path_).size(), 2u);
    event("second");
    kvEventLog_Close();
    EXPECT_EQ(linesOf(path_).size(), 2u);
    EXPECT_EQ(linesOf(scratch_ / "other.csv").size(), 2u);
}

TEST_F(EventFile, TheOpenFilesOwnNameIsEmptiedByTheClose) {
    open();
    EXPECT_EQ(kvEventLog_SetName(kvEventLog_GetName()), 0u);
    EXPECT_STREQ(kvEventLog_GetName(), "");
    EXPECT_EQ(contentOf(path_), kHeader);
}

TEST_F(EventFile, OneThatCanNotBeOpenedKeepsItsName) {
    EXPECT_EQ(kvEventLog_SetName("/no/such/events.csv"), 0u);
    EXPECT_STREQ(kvEventLog_GetName(), "/no/such/events.csv");
    open();  // nothing to be closed first
    EXPECT_EQ(kvEventLog_GetName(), path_);
}

TEST_F(EventFile, OneThatCanNotBeOpenedIsToldByTheOpenAlone) {
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    kvEventLog_SetName("/no/such/events.csv");
    const std::string told = messages.text();
    EXPECT_TRUE(told.starts_with("kvOSCreateFile(/no/such/events.csv")) << told;
    open();
    EXPECT_EQ(messages.text(), told);  // nothing for a file that was not there
}

TEST_F(EventFile, NullClosesAndAPathTooLongLeavesNoName) {
    open();
    EXPECT_EQ(kvEventLog_SetName(nullptr), 0u);
    EXPECT_STREQ(kvEventLog_GetName(), "");
    open();
    errno = 0;
    EXPECT_EQ(kvEventLog_SetName(("/" + std::string(4095, 'x')).c_str()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_STREQ(kvEventLog_GetName(), "");
}

TEST_F(EventFile, LastErrorIsKept) {
    errno = 77;
    open();
    event();
    kvEventLog_Close();
    kvEventLog_SetName("/no/such/events.csv");
    EXPECT_EQ(errno, 77);
}

TEST_F(EventFile, BehindACloseEventsAreMessagesAlone) {
    open();
    event();
    kvEventLog_Close();
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    event("unwritten");
    EXPECT_EQ(messages.count(",unwritten,"), 1u);
    EXPECT_STREQ(kvEventLog_GetName(), "");
    EXPECT_EQ(linesOf(path_).size(), 2u);
    open();
    event("again");
    kvEventLog_Close();
    EXPECT_EQ(linesOf(path_).size(), 3u);
}

TEST_F(EventFile, LinesAreCountedOnFromFileToFile) {
    open();
    for (int i = 0; i < 1000; ++i) event();
    EXPECT_EQ(kvEventLog_SetName((scratch_ / "other.csv").c_str()), 0u);
    for (int i = 0; i < 1499; ++i) event();
    EXPECT_EQ(kvEventLog_GetName(), scratch_ / "other.csv");
    event();
    EXPECT_STREQ(kvEventLog_GetName(), "");
    EXPECT_EQ(linesOf(scratch_ / "other.csv").size(), 1501u);
}

/// What a CSV reader that knows nothing of this library makes of a file: each field behind its length.
std::string asReadElsewhere(const std::string& path) {
    const std::string command =
        "python3 -c 'import csv, sys\n"
        "for row in csv.reader(open(sys.argv[1], newline=\"\"), skipinitialspace=True):\n"
        "    print(len(row), \"|\".join(row))' \"" +
        path + "\"";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    char block[4096];
    while (const std::size_t got = std::fread(block, 1, sizeof block, pipe.get())) text.append(block, got);
    return text;
}

TEST_F(EventFile, AnOrdinaryReaderFindsSevenColumns) {
    open();
    kvEventLog_Event(16, 255, "Lost signal", "Input 3; no carrier", "caf\xC3\xA9", "01:00:00:00");
    kvEventLog_Event(17, 0, "Signal back", nullptr, nullptr, "01:00:02:10");
    kvEventLog_Close();
    std::istringstream rows(asReadElsewhere(path_));
    std::string header, first, second, none;
    std::getline(rows, header);
    std::getline(rows, first);
    std::getline(rows, second);
    EXPECT_FALSE(std::getline(rows, none));
    EXPECT_EQ(header, "7 Date-Time|Timecode|Code|SubCode|Event|Description|Details");
    EXPECT_EQ(first.substr(0, 2), "7 ");
    EXPECT_EQ(first.substr(first.find('|')),
              "|01:00:00:00|Lost signal|0x00000010|0x000000FF|Input 3; no carrier|caf\xC3\xA9");
    EXPECT_EQ(second.substr(0, 2), "7 ");
    EXPECT_EQ(second.substr(second.find('|')), "|01:00:02:10|Signal back|0x00000011|0x00000000||");
}

// ---- the literal folder ------------------------------------------------------------------------------------------

class EventFolder : public ::testing::Test {
protected:
    void SetUp() override {
        if (!var_.why().empty()) GTEST_SKIP() << var_.why();
        gdwOutputToStdDebug = 0;
    }

    static void makeFolder() { std::filesystem::create_directories(kFolder); }
    static void make(const std::string& name) { makeFile(kFolder + name, "x"); }
    static void makeNumbered(int first, int last) {
        makeFolder();
        for (int i = first; i <= last; ++i) {
            char name[64];
            std::snprintf(name, sizeof name, "event_%010d_2026_1_9-08_05_07.csv", i);
            make(name);
        }
    }
    static Names there() {
        Names names;
        for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }
    /// "event_0000000012" of the file that is open.
    static std::string openName() {
        static const std::regex form(
            "/var/www/html/events/(event_[0-9]{10})_[0-9]{4}_[0-9]{1,2}_[0-9]{1,2}-[0-9]{2}_[0-9]{2}_[0-9]{2}\\.csv");
        std::cmatch parts;
        EXPECT_TRUE(std::regex_match(kvEventLog_GetName(), parts, form)) << kvEventLog_GetName();
        return parts.size() == 2 ? parts[1].str() : "";
    }
    static std::uint32_t found(Names* names = nullptr) {
        Names ours;
        return kvEventLog_FindFiles(names == nullptr ? &ours : names);
    }

    OwnVar var_;
};

TEST_F(EventFolder, TheFirstEventMakesTheFolderAndFileNumberOne) {
    ASSERT_FALSE(std::filesystem::exists("/var/www"));
    EXPECT_EQ(event(), 0u);
    EXPECT_EQ(openName(), "event_0000000001");
    const std::string path = kvEventLog_GetName();
    kvEventLog_Close();
    const Names lines = linesOf(path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0] + "\n", kHeader);
    EXPECT_EQ(behindTime(lines[1]), "01:02:03:04,name,0x00000001,0x00000002,what,more");
}

TEST_F(EventFolder, AnEmptyFolderGivesFileNumberOne) {
    makeFolder();
    event();
    EXPECT_EQ(openName(), "event_0000000001");
}

TEST_F(EventFolder, ANewFileIsNumberedBehindTheHighest) {
    makeNumbered(3, 5);
    make("event_0000000011_2026_11_13-06_30_29.csv");
    event();
    EXPECT_EQ(openName(), "event_0000000012");
}

TEST_F(EventFolder, TheEventBehindAFullFileBeginsTheNext) {
    for (int i = 0; i < 2499; ++i) event();
    const std::string first = kvEventLog_GetName();
    EXPECT_EQ(openName(), "event_0000000001");
    event("last");
    EXPECT_STREQ(kvEventLog_GetName(), "");
    Names lines = linesOf(first);
    EXPECT_EQ(lines.size(), 2501u);
    EXPECT_EQ(behindTime(lines.back()), "01:02:03:04,last,0x00000001,0x00000002,what,more");
    event("next");
    EXPECT_EQ(openName(), "event_0000000002");
    const std::string second = kvEventLog_GetName();
    kvEventLog_Close();
    lines = linesOf(second);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0] + "\n", kHeader);
    EXPECT_EQ(behindTime(lines[1]), "01:02:03:04,next,0x00000001,0x00000002,what,more");
    EXPECT_EQ(asReadElsewhere(first).find("6 "), std::string::npos);
}

TEST_F(EventFolder, OfExactlyAHundredFilesTheFirstGoes) {
    makeNumbered(1, 100);
    event();
    EXPECT_EQ(openName(), "event_0000000101");
    const Names names = there();
    EXPECT_EQ(names.size(), 100u);
    EXPECT_TRUE(names.front().starts_with("event_0000000002_"));
}

TEST_F(EventFolder, OfFewerOrMoreThanAHundredNoneGoes) {
    makeNumbered(1, 99);
    event();
    EXPECT_EQ(there().size(), 100u);
    kvEventLog_Close();
    make("readme.csv");
    makeNumbered(200, 200);
    for (int i = 1; i < 2501; ++i) {  // till the next file begins
        if (i == 1) kvEventLog_SetName((kFolder + "mine.csv").c_str());
        event();
    }
    EXPECT_EQ(openName(), "event_0000000201");
    EXPECT_EQ(there().size(), 104u);
}

TEST_F(EventFolder, TheFirstIsTheFirstOfTheFindCallsWhateverItsName) {
    makeNumbered(1, 99);
    make("Archive.csv");
    event();
    EXPECT_FALSE(std::filesystem::exists(kFolder + "Archive.csv"));
    EXPECT_EQ(there().size(), 100u);
}

TEST_F(EventFolder, FilesAreFoundInTheOrderOfTheFindCalls) {
    makeFolder();
    for (const char* name : {"b_7_x.csv", "A_2_x.csv", "c_5_x.txt", "event.csv"}) make(name);
    Names names{"kept"};
    EXPECT_EQ(found(&names), 7u);
    EXPECT_EQ(names, (Names{"kept", "A_2_x.csv", "b_7_x.csv", "event.csv"}));
}

TEST_F(EventFolder, WhatIsNoFolderCounts) {
    makeFolder();
    make("event_0000000008_x.csv");
    ASSERT_EQ(mkfifo(KVEVENTLOG_FOLDER "event_0000000009_x.csv", 0600), 0);
    ASSERT_EQ(mkdir(KVEVENTLOG_FOLDER "event_0000000010_x.csv", 0700), 0);
    Names names;
    EXPECT_EQ(found(&names), 9u);
    EXPECT_EQ(names.size(), 2u);
}

TEST_F(EventFolder, AMissingFolderHoldsNothing) {
    Names names;
    EXPECT_EQ(found(&names), 0u);
    EXPECT_TRUE(names.empty());
}

TEST_F(EventFolder, OnlyANameWithTwoUnderscoresHasANumber) {
    makeFolder();
    make("event_99.csv");
    EXPECT_EQ(found(), 0u);
    make("event_12_.csv");
    EXPECT_EQ(found(), 12u);
}

TEST_F(EventFolder, ANumbersSignDoesNotCount) {
    makeFolder();
    make("a_-40_x.csv");
    EXPECT_EQ(found(), 40u);
    make("a_4294967246_x.csv");  // as a signed word: -50
    EXPECT_EQ(found(), 50u);
    make("a_2147483648_x.csv");
    EXPECT_EQ(found(), 2147483648u);
}

TEST_F(EventFolder, WhatIsNoNumberCountsAsZero) {
    makeFolder();
    make("a_x7_x.csv");
    make("a__7_x.csv");
    EXPECT_EQ(found(), 0u);
    make("a_7x_x.csv");
    EXPECT_EQ(found(), 7u);
}

TEST_F(EventFolder, AFolderThatCanNotBeMadeLeavesTheMessage) {
    makeFile("/var/www", "in the way");
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    EXPECT_EQ(event("lonely"), 0u);
    EXPECT_EQ(messages.count(",lonely,"), 1u);
    std::filesystem::remove("/var/www");
    EXPECT_EQ(event("written"), 0u);  // nothing was counted, so the next event tries again
    EXPECT_EQ(openName(), "event_0000000001");
}

TEST_F(EventFolder, ANameThatCanNotBeOpenedLeavesTheEventToANumberedFile) {
    kvEventLog_SetName("/no/such/events.csv");
    event();
    EXPECT_EQ(openName(), "event_0000000001");
}

TEST(EventFiles, ANullListIsRefused) { EXPECT_EQ(kvEventLog_FindFiles(nullptr), 0u); }

}  // namespace
