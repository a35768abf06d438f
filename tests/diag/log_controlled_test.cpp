// What hangs on clocks, on memory and on exceptions: bursts in the file, stamps to the digit, and the ways out.
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "diag/controls.h"
#include "diag/log_reader.h"
#include "errlog.h"
#include "kvcfg.h"
#include "kvos/sync.h"
#include "support/captured_messages.h"
#include "support/sanitizers.h"

using kvtest::contentOf;
using kvtest::controls;
using kvtest::get;
using kvtest::listed;
using kvtest::logPath;
using Texts = std::vector<std::string>;

namespace {

class LogControlled : public kvtest::LogTest {
protected:
    LogControlled() { setenv("TZ", "UTC0", 1); }
    ~LogControlled() override {
        controls().freeThrows = false;
        controls().sleepThrows = false;
        controls().beforeEnteringLog = nullptr;
        controls().beforeReadingText = nullptr;
    }
};

/// Does something once, as soon as anybody is about to enter the log's lock.
template <class Action>
void onceBeforeEnteringLog(Action action) {
    controls().beforeEnteringLog = [action] {
        controls().beforeEnteringLog = nullptr;
        action();
    };
}

}  // namespace

TEST_F(LogControlled, NamesAndLinesAreStampedToTheDigit) {
    nameFile();
    EXPECT_EQ(logPath(), folder / "run_0124-00-09T10-05-07-000.log");  // January is month 00 and 2024 the year 124
    ErrLogPut(0, "\na");
    controls().advance_ms(1234);
    ErrLogPut(0, "\nb");
    EXPECT_EQ(closedLog(),
              "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n"
              "\n0\t2024-01-09T10:05:07.008\ta"
              "\n1\t2024-01-09T10:05:08.242\tb");
}

TEST_F(LogControlled, NameOfModeZeroHasNoMilliseconds) {
    std::string name = folder / "x.log";
    ErrLogSetMode(0, name.data());
    EXPECT_EQ(logPath(), folder / "x_0124-00-09T10-05-07.log");
}

TEST_F(LogControlled, ClockTimeIsPaddedWithBlanks) {
    controls().wall_s -= 2 * 3600;
    char text[16] = "zzzzzzzzzzzzzzz";
    EXPECT_EQ(ErrGetMs(text), 0u);
    EXPECT_STREQ(text, " 8: 5: 7");
    EXPECT_EQ(ErrGetMs(nullptr), 0u);
}

TEST_F(LogControlled, TimesAreLocalByTheZoneOfTheMoment) {
    nameFile();
    ErrLogPut(0, "\na");
    setenv("TZ", "AAA-3", 1);
    ErrLogPut(0, "\nb");
    unsetenv("TZ");
    setenv("TZ", "BBB+10:30", 1);
    ErrLogPut(0, "\nc");
    const auto log = kvtest::parseLog(closedLog());
    EXPECT_EQ(log.lines[0].stamp, "2024-01-09T10:05:07.008");
    EXPECT_EQ(log.lines[1].stamp, "2024-01-09T13:05:07.008");
    EXPECT_EQ(log.lines[2].stamp, "2024-01-08T23:35:07.008");
}

TEST_F(LogControlled, MessagesWithinAHundredMillisecondsShareALine) {
    nameFile();
    ErrLogPut(0, "a");
    controls().advance_ms(100);
    ErrLogPut(0, "b\n");
    ErrLogPut(0, "c");
    controls().advance_ms(1);
    ErrLogPut(0, "d");
    controls().advance_ms(1);
    ErrLogPut(0, "\ne");  // asks for a line of its own, and counts as one
    controls().advance_ms(100);
    ErrLogPut(0, "f");
    EXPECT_EQ(closedLog(),
              "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n"
              "\n0\t2024-01-09T10:05:07.008\tab\nc"
              "\n3\t2024-01-09T10:05:07.109\td"
              "\n4\t2024-01-09T10:05:07.110\tef");
}

TEST_F(LogControlled, WrappingOfTheClockDisturbsNoBurst) {
    controls().monotonic_ms = 0xFFFFFFF0;
    nameFile();
    ErrLogPut(0, "a");
    controls().advance_ms(60);
    ErrLogPut(0, "b");
    controls().advance_ms(60);
    ErrLogPut(0, "c");
    const auto log = kvtest::parseLog(closedLog());
    ASSERT_EQ(log.lines.size(), 2u);
    EXPECT_EQ(log.lines[0].text, "ab");
}

TEST_F(LogControlled, TwoIdenticalMessagesGiveOneLineWithTheFirstOnesTime) {
    nameFile();
    ErrLogPut(0, "same");
    controls().advance_ms(500);
    EXPECT_EQ(ErrLogPut(0, "same"), 0xFFFFFFFEu);
    EXPECT_EQ(closedLog(), "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n\n0\t2024-01-09T10:05:07.008\tsame");
}

TEST_F(LogControlled, HistoryIsStampedWithThePresentTime) {
    ErrLogPut(0, "\nold");
    controls().advance_ms(5000);
    nameFile();
    ErrLogPut(0, "new");
    EXPECT_EQ(closedLog(),
              "LOG STARTED 2024-01-09T10:05:12.008 10: 5:12 \n"
              "\n0\t2024-01-09T10:05:12.008\told"
              "\n1\t2024-01-09T10:05:12.008\tnew");
}

TEST_F(LogControlled, StampIsOfTheWritingAndTheRecordOfTheArrival) {
    nameFile();
    ErrLogPut(0, "\na");
    onceBeforeEnteringLog([] { controls().advance_ms(2500); });
    ErrLogPut(0, "\nb");
    EXPECT_EQ(ErrLogGetLastChange(), static_cast<std::uint32_t>(1704794707008ULL));
    EXPECT_EQ(kvtest::parseLog(closedLog()).lines.back().stamp, "2024-01-09T10:05:09.508");
}

TEST_F(LogControlled, WaiterForTheLockOfAListThatEndsGetsNothingAndHoldsNothing) {
    nameFile();
    ErrLogPut(0, "a");
    onceBeforeEnteringLog([] { std::jthread closing(&ErrLogClose); });
    const std::uint32_t locked = d_ListLock(&gErrLogList);
    EXPECT_EQ(locked, 0u);
    std::uint32_t free = 0;
    std::jthread([&free] {
        free = kvOSTryEnterCriticalSection(&gErrLogList.lock);
        if (free != 0) kvOSLeaveCriticalSection(&gErrLogList.lock);
    }).join();
    EXPECT_EQ(free, 1u);
    if (locked != 0) kvOSLeaveCriticalSection(&gErrLogList.lock);
}

TEST_F(LogControlled, LengthOfASettingHoldsUntilItsTextIsRead) {
    std::string directory = std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane";
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "the machine has settings of its own";
    std::filesystem::create_directories(directory);
    kvtest::makeFile(directory + "/config.xml",
                     "<?xml version=\"1.0\" ?>\n<KorvaneConfig><ZMW Type=\"0\"><Advanced Type=\"0\"><Debug Type=\"0\">"
                     "<DefaultLogName Type=\"1\">/a/b.log</DefaultLogName></Debug></Advanced></ZMW></KorvaneConfig>\n");
    int reads = 0;
    int changeable = 0;
    controls().beforeReadingText = [&] {
        ++reads;
        std::jthread([&] {
            kvOSCriticalSection& lock = kvCFGCheckHandle(KVSTDCONFIG)->lock;
            if (kvOSTryEnterCriticalSection(&lock) == 0) return;
            ++changeable;
            kvOSLeaveCriticalSection(&lock);
        }).join();
    };
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "/a/b.log");
    EXPECT_GT(reads, 0);
    EXPECT_EQ(changeable, 0);
}

TEST_F(LogControlled, FileIsOnDiskAtLeastWithTheNextMessageAfterAPause) {
    nameFile();
    ErrLogPut(0, "\na");
    ErrLogPut(0, "\nb");
    controls().advance_ms(100);
    ErrLogPut(0, "\nc");
    EXPECT_EQ(kvtest::readLog(logPath()).lines.size(), 3u);
}

TEST_F(LogControlled, RecordsCarryTheWallClockCutTo32Bits) {
    ErrLogPut(0, "a");
    EXPECT_EQ(ErrLogGetStartMs(), static_cast<std::uint32_t>(1704794707008ULL));
    controls().advance_ms(77);
    ErrLogPut(0, "b");
    EXPECT_EQ(ErrLogGetLastChange(), static_cast<std::uint32_t>(1704794707085ULL));
    EXPECT_EQ(ErrLogGetCurrentMs(), static_cast<std::uint32_t>(1704794707085ULL));
    EXPECT_EQ(get(1, 0).text,
              "1@" + std::to_string(static_cast<int>(1704794707085ULL & 0xFFFFFFFF)) + "ms: 0x00000000  b\n");
}

TEST_F(LogControlled, LongWaysSleepAMillisecondAfterEveryThirtySteps) {
    for (int i = 0; i < 500; ++i) ErrLogPut(0, "m");
    EXPECT_EQ(get(29).number, 29u);
    EXPECT_EQ(controls().sleeps, 0);
    get(59);
    EXPECT_EQ(controls().sleeps, 1);
    get(60);
    get(61);
    EXPECT_EQ(controls().sleeps, 1);
    get(361);
    EXPECT_EQ(controls().sleeps, 11);
    get(300);
    EXPECT_EQ(controls().sleeps, 13);
    EXPECT_EQ(controls().otherSleeps, 0);
}

TEST_F(LogControlled, WithoutMemoryForTheRecordTheMessageStillReachesStandardError) {
    nameFile();
    gdwOutputToStdDebug = 1;
    kvtest::CapturedMessages messages;
    controls().allocationsUntilFailure = 1;
    ErrOut("lost");
    EXPECT_EQ(messages.text(), "lost");
    controls().allocationsUntilFailure = 1;
    EXPECT_EQ(ErrLogPut(0, "lost"), 0xFFFFFFFFu);
    EXPECT_EQ(d_ListCount(&gErrLogList), 0u);
    EXPECT_TRUE(kvtest::namesIn(folder.path()).empty());
    ErrLogPut(0, "a");
    EXPECT_EQ(get(0).number, 0u);
    gdwOutputToStdDebug = 0;
}

TEST_F(LogControlled, WithoutMemoryForTheTextTheMessageIsInTheFileAndItsNumberIsUsed) {
    nameFile();
    ErrLogPut(0, "\na");
    controls().allocationsUntilFailure = 0;
    EXPECT_EQ(ErrLogPut(0, "\nb"), 0u);
    ErrLogPut(0, "\nc");
    EXPECT_EQ(listed(), (Texts{"\na", "\nc"}));
    const auto log = kvtest::parseLog(closedLog());
    ASSERT_EQ(log.lines.size(), 3u);
    EXPECT_EQ(log.lines[1].text, "b");
    EXPECT_EQ(log.lines[2].number, 2);
}

TEST_F(LogControlled, FullListNeedsNoMoreRecords) {
    for (int i = 0; i < 999; ++i) ErrLogPut(0, "m");
    const int blocks = controls().blocks;
    controls().allocationsUntilFailure = 1;
    EXPECT_EQ(ErrLogPut(0, "n"), 0u);
    EXPECT_EQ(controls().allocationsUntilFailure, 0);
    controls().allocationsUntilFailure = -1;
    EXPECT_EQ(controls().blocks, blocks);
    EXPECT_EQ(listed().back(), "n");
}

TEST_F(LogControlled, PutIsTriedTwiceAndNoMore) {
    for (const int allocation : {0, 1}) {
        controls().allocationsUntilThrow = allocation;
        EXPECT_EQ(ErrLogPut(0, "a"), 0u);
    }
    EXPECT_EQ(listed(), (Texts{"a", "a"}));
    controls().throwsAlways = true;
    controls().throws = 0;
    EXPECT_EQ(ErrLogPut(0, "b"), 0xFFFFFFFFu);
    controls().throwsAlways = false;
    EXPECT_EQ(controls().throws, 2);
    EXPECT_EQ(listed().size(), 2u);
}

TEST_F(LogControlled, BrokenOffReadingIsReportedAndForgetsItsPlace) {
    for (int i = 0; i < 100; ++i) ErrLogPut(0, "m");
    get(10);
    controls().sleepThrows = true;
    EXPECT_EQ(get(90).next, 0xFFFFFFFFu);
    controls().sleepThrows = false;
    EXPECT_EQ(listed().back(), "WARNING(gen): Error retrieving error message from log list");
    EXPECT_EQ(get(100).code, 0x80000000u);
}

TEST_F(LogControlled, BrokenOffClearingIsReported) {
    if (kvtest::kAddressSanitizer) GTEST_SKIP() << "what can't be freed here counts as a leak";
    ErrLogPut(0, "a");
    controls().freeThrows = true;
    ErrLogSetMode(-1, nullptr);
    controls().freeThrows = false;
    EXPECT_EQ(listed(), (Texts{"WARNING(gen): Exception: ErrLogClear()"}));
}

TEST_F(LogControlled, BrokenOffClearingIsReportedWithoutTheLock) {
    if (kvtest::kAddressSanitizer) GTEST_SKIP() << "what can't be freed here counts as a leak";
    std::uint64_t depth = 0;
    ErrLogPut(0, "a");
    controls().freeThrows = true;
    controls().beforeEnteringLog = [&depth] { depth = gErrLogList.lock.qwCount; };
    ErrLogSetMode(-1, nullptr);
    EXPECT_EQ(depth, 0u);  // at the last entering, which is the report's
    controls().beforeEnteringLog = nullptr;
    controls().freeThrows = false;
    nameFile();
    ErrLogPut(0, "b");
    controls().freeThrows = true;
    ErrLogClose();
    controls().freeThrows = false;
    EXPECT_EQ(listed(), (Texts{"WARNING(gen): Exception: ErrLogClear()"}));  // on the next list
}

TEST_F(LogControlled, NothingIsLeftAllocated) {
    controls().blocks = 0;
    nameFile();
    for (int i = 0; i < 1500; ++i) ErrLogPut(0, i % 7 == 0 ? "" : "\nx\n");
    for (int i = 0; i < 10; ++i) ErrLogPut(0, "\nsame");
    EXPECT_EQ(controls().blocks, 2 * 999);
    ErrLogClose();
    EXPECT_EQ(controls().blocks, 0);
    ErrLogPut(0, "a");
    ErrLogSetMode(-1, nullptr);
    EXPECT_EQ(controls().blocks, 0);
}
