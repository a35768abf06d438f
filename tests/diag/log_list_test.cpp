// The list of the last messages: what is kept, how it is numbered, and the way to a message.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "diag/log_reader.h"
#include "dlist.h"
#include "errlog.h"

using kvtest::get;
using kvtest::Got;
using kvtest::listed;
using Texts = std::vector<std::string>;

namespace {

class LogList : public kvtest::LogTest {};

constexpr std::uint32_t kNone = 0xFFFFFFFF;

void put(int count, int from = 0) {
    for (int i = from; i < from + count; ++i) EXPECT_EQ(ErrLogPut(0, ("m" + std::to_string(i)).c_str()), 0u);
}

}  // namespace

TEST_F(LogList, IsEmptyBeforeTheFirstMessage) {
    EXPECT_EQ(ErrLogGet(kNone, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(get(0).next, kNone);
    EXPECT_EQ(get(0).number, 0xDEADu);  // nothing is written
    EXPECT_EQ(ErrLogGetLastChange(), 0u);
    EXPECT_EQ(ErrLogGetStartMs(), 0u);
    EXPECT_EQ(gfErrLogListValid, 0u);
}

TEST_F(LogList, RecordHoldsItsFields) {
    const std::uint32_t before = ErrLogGetCurrentMs();
    ErrLogPut(0x80000001, "first");
    ErrLogPut(7, "second");
    ASSERT_EQ(d_ListCount(&gErrLogList), 2u);
    ASSERT_EQ(d_ListLock(&gErrLogList), 1u);
    const auto* record = reinterpret_cast<kvErrLogRecord*>(d_ListTail(&gErrLogList));
    EXPECT_EQ(record->node.parent, &gErrLogList);
    EXPECT_EQ(record->dwNumber, 1u);
    EXPECT_EQ(record->dwNodeType, 32768u);
    EXPECT_EQ(record->dwCode, 7u);
    EXPECT_LE(record->dwMs - before, ErrLogGetCurrentMs() - before);
    EXPECT_EQ(record->dwRepeats, 0u);
    EXPECT_STREQ(record->pText, "second");
    EXPECT_EQ(record->qwReserved, 0u);
    EXPECT_EQ(record->node.prev, gErrLogList.head);
    EXPECT_EQ(d_ListUnLock(&gErrLogList), 1u);
}

TEST_F(LogList, ReportingCallsEndInIt) {
    ErrOut("a %d", 1);
    ErrFmtOut(0x80000000, nullptr, 0, "b");
    ErrStrOut(5, "c", "x.cpp", 3);
    ErrMsgOut(0xFFFFFFFF, "d", 0, 0, nullptr, 0);
    ErrMsgBox(0xFFFFFFFF, "e", 0, 0, nullptr, 0);
    ErrMsgDbg(0, "not this one", 0, 0, nullptr, 0);
    _DbgOut("nor this one");
    EXPECT_EQ(listed(), (Texts{"a 1", "b", "\nx.cpp(3) : c  ", "d  -1 [0xFFFFFFFF] { }  ", "e"}));
    EXPECT_EQ(get(1).code, 0x80000000u);
    EXPECT_EQ(get(2).code, 5u);
}

TEST_F(LogList, EveryClassIsLoggedWhateverTheShowFlagsSay) {
    gfShowErrors = 0;
    for (const std::uint32_t code : {0x00000001u, 0x40000001u, 0x80000001u, 0xC0000001u}) {
        ErrMsg(code, "m", 0, 0, nullptr, 0);
    }
    EXPECT_EQ(listed().size(), 4u);
}

TEST_F(LogList, TooLongTextOfAReportIsNotLogged) {
    ErrStrOut(0, std::string(4097, 'x').c_str(), nullptr, 0);
    EXPECT_EQ(d_ListCount(&gErrLogList), 0u);
    ErrStrOut(0, std::string(4096, 'x').c_str(), nullptr, 0);
    EXPECT_EQ(listed(), (Texts{std::string(4096, 'x')}));
}

TEST_F(LogList, TextPutDirectlyMayBeOfAnyLength) {
    const std::string text(30000, 'y');
    ErrLogPut(0, text.c_str());
    EXPECT_EQ(get(0).text, text);
}

TEST_F(LogList, UpToTwoLineEndsAreRemoved) {
    for (const char* text : {"a\n", "a\r\n", "a\n\r", "a\n\n\n", "a\r", "a", "\na", "\n", "\r", "\r\n", "a\n "}) {
        ErrLogPut(0, text);
    }
    EXPECT_EQ(listed(), (Texts{"a", "a", "a", "a\n", "a", "a", "\na", "\n", "\r", "", "a\n "}));
}

TEST_F(LogList, EmptyTextUsesANumberUp) {
    ErrLogPut(0, "a");
    EXPECT_EQ(ErrLogPut(0, ""), 0u);
    ErrLogPut(0, "b");
    EXPECT_EQ(listed(), (Texts{"a", "b"}));
    EXPECT_EQ(get(2).text, "b");
    EXPECT_EQ(get(kNone).next, 2u);  // count plus first number: the gap is not in it
}

TEST_F(LogList, MissingTextIsRefused) {
    EXPECT_EQ(ErrLogPut(0, nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(d_ListCount(&gErrLogList), 0u);
    ErrLogPut(0, "a");
    EXPECT_EQ(get(0).number, 0u);
}

TEST_F(LogList, IdenticalMessagesAreAllKeptWhileNoFileIsOpen) {
    gfEnableLog = 1;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(ErrLogPut(3, "same"), 0u);
    EXPECT_EQ(listed(), Texts(5, "same"));
}

TEST_F(LogList, KeepsTheLast999) {
    put(999);
    EXPECT_EQ(d_ListCount(&gErrLogList), 999u);
    EXPECT_EQ(get(0).number, 0u);
    put(1, 999);
    EXPECT_EQ(d_ListCount(&gErrLogList), 999u);
    EXPECT_EQ(get(kNone).next, 1000u);
}

TEST_F(LogList, ThousandthMessageLeavesNumberOneAsTheOldest) {
    put(1000);
    const Got oldest = get(0);
    EXPECT_EQ(oldest.number, 1u);
    EXPECT_EQ(oldest.next, 2u);
    EXPECT_EQ(oldest.text, "m1");
}

TEST_F(LogList, OldestIsFoundFromAnywhereInALongLog) {
    put(1500);
    EXPECT_EQ(get(0).number, 501u);
    EXPECT_EQ(get(1400).text, "m1400");
    EXPECT_EQ(get(0).number, 501u);
    EXPECT_EQ(listed().size(), 999u);
}

TEST_F(LogList, ReaderGoesOnWhereItStands) {
    put(100);
    std::uint32_t index = 0;
    for (int i = 0; i < 100; ++i) {
        const Got got = get(index);
        EXPECT_EQ(got.number, static_cast<std::uint32_t>(i));
        EXPECT_EQ(got.next, got.number + 1);
        index = got.next;
    }
    EXPECT_EQ(get(index).next, kNone);
    put(1, 100);
    EXPECT_EQ(get(index).text, "m100");  // from the head again
}

TEST_F(LogList, AnyMessageIsFoundForwardsAndBackwards) {
    put(50);
    for (const std::uint32_t index : {40u, 10u, 11u, 0u, 49u, 1u}) EXPECT_EQ(get(index).number, index);
    EXPECT_EQ(get(50).next, kNone);
}

TEST_F(LogList, OneGapIsSteppedOverAndTwoAreNot) {
    put(3);
    ErrLogPut(0, "");  // 3
    put(1, 4);         // 4
    ErrLogPut(0, "");  // 5
    ErrLogPut(0, "");  // 6
    put(1, 7);
    EXPECT_EQ(get(3).number, 4u);
    EXPECT_EQ(get(4).number, 4u);
    EXPECT_EQ(get(5).next, kNone);
    EXPECT_EQ(get(6).number, 7u);
    get(7);
    EXPECT_EQ(get(3).number, 4u);  // backwards past the gap and forwards to its end
}

TEST_F(LogList, FromAThousandNumbersOnAReaderBeginsAThousandBehindTheNext) {
    put(10);
    for (int i = 0; i < 1500; ++i) ErrLogPut(0, "");
    EXPECT_EQ(d_ListCount(&gErrLogList), 10u);
    EXPECT_EQ(get(0).next, kNone);  // 510 is missing, and so is 511
    EXPECT_EQ(get(9).number, 9u);
}

TEST_F(LogList, WayBackPastTheOldestEndsAtIt) {
    put(1100);
    EXPECT_EQ(get(1099).number, 1099u);
    EXPECT_EQ(get(5).number, 101u);
    EXPECT_EQ(get(5000).next, kNone);
    EXPECT_EQ(get(5).number, 101u);  // from the head, too
}

TEST_F(LogList, RecordThatTheReaderStandsOnMayGo) {
    put(999);
    EXPECT_EQ(get(0).number, 0u);
    put(1, 999);
    EXPECT_EQ(get(1).number, 1u);
}

TEST_F(LogList, OutputsMayBeLeftOut) {
    put(1);
    char text[64];
    EXPECT_EQ(ErrLogGet(0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, text), 1u);
    EXPECT_EQ(ErrLogGet(0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), kNone);
}

TEST_F(LogList, TimesAreThoseOfTheFirstAndTheLastMessage) {
    put(2);
    const auto* first = reinterpret_cast<kvErrLogRecord*>(d_ListHead(&gErrLogList));
    const auto* last = reinterpret_cast<kvErrLogRecord*>(d_ListTail(&gErrLogList));
    EXPECT_EQ(ErrLogGetStartMs(), first->dwMs);
    EXPECT_EQ(ErrLogGetLastChange(), last->dwMs);
}

TEST_F(LogList, SwitchedOffItKeepsNothingAndEveryCallGivesZero) {
    put(2);
    gfEnableList = 0;
    char buffer[4096] = "/tmp/none/name.log";
    EXPECT_EQ(ErrLogPut(0, "x"), 0u);
    EXPECT_EQ(get(0).next, 0u);
    EXPECT_EQ(get(kNone).next, 0u);
    EXPECT_EQ(ErrLogGetStartMs() | ErrLogGetCurrentMs() | ErrLogGetLastChange(), 0u);
    EXPECT_EQ(ErrLogSetMode(-1, nullptr) | ErrLogSetMode(4097, nullptr) | ErrLogClose(), 0u);
    EXPECT_EQ(ErrLogSetName(buffer) | ErrLogSetFileName("x"), 0u);
    EXPECT_EQ(gdwOutputToStdDebug, 0u);
    EXPECT_STREQ(gszLogName, "");
    EXPECT_EQ(d_ListCount(&gErrLogList), 2u);
    gfEnableList = 1;
    EXPECT_EQ(listed(), (Texts{"m0", "m1"}));
}

TEST_F(LogList, CloseWithoutAFileLeavesItAlone) {
    put(3);
    get(2);
    EXPECT_EQ(ErrLogClose(), 0u);
    EXPECT_EQ(listed().size(), 3u);
    put(1, 3);
    EXPECT_EQ(get(3).text, "m3");
}

TEST_F(LogList, HostMayHoldItsLockAndReport) {
    ASSERT_EQ(d_ListLock(&gErrLogList), 0u);  // there is none before the first message
    put(1);
    ASSERT_EQ(d_ListLock(&gErrLogList), 1u);
    put(1, 1);
    EXPECT_EQ(get(1).text, "m1");
    EXPECT_EQ(d_ListUnLock(&gErrLogList), 1u);
}

TEST_F(LogList, NoCallDisturbsTheCallersErrno) {
    setenv("TZ", "Nowhere/City", 1);
    nameFile();
    char name[4096] = "/nowhere/at/all/x.log";
    errno = 4711;
    char clock[9];
    ErrGetMs(clock);
    put(5);
    get(2);
    get(9);
    ErrLogSetMode(0, name);
    ErrLogSetMode(4, name);
    ErrLogSetMode(1, nullptr);
    ErrLogSetName("/nowhere/at/all/x.log");
    ErrLogSetFileName("x");
    kvErrLog_RotateFiles("/nowhere/at/all/", 0, ".log", 1);
    ErrLogClose();
    EXPECT_EQ(errno, 4711);
}
