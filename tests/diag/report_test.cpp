// The reporting calls: layouts to the letter, routing by the switches, and callers that are never disturbed.
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "errlog.h"
#include "support/captured_messages.h"

using kvtest::CapturedMessages;

namespace {

constexpr std::uint32_t kError = 0xE8023011;  // "ERROR [MediaFile] File->Not Found "
const std::string kLine = "bad  -402509807 [0xE8023011] {ERROR [MediaFile] File->Not Found }  ";
const std::string kBox = "bad\n-402509807 [0xE8023011]\nERROR [MediaFile] File->Not Found ";

/// What one call writes to standard error; the call must return 0.
template <class Call>
std::string messageOf(Call call) {
    CapturedMessages messages;
    EXPECT_EQ(call(), 0u);
    return messages.text();
}

}  // namespace

TEST(Report, SwitchesStartAsTheirContractSays) {
    EXPECT_EQ(gfReadReg, 0u);
    EXPECT_EQ(gfShowInfomational, 0u);
    EXPECT_EQ(gfShowWarnings, 0u);
    EXPECT_EQ(gfShowErrors, 1u);
    EXPECT_EQ(gfUseErrorBox, 0u);
    EXPECT_EQ(gfMKTestActive, 0u);
    EXPECT_EQ(gf2MKActive, 0u);
    EXPECT_EQ(gfNotifyMKOutput, 0u);
    EXPECT_EQ(gfUseErrorWin, 0u);
    EXPECT_EQ(gdwDebugLevel, 0u);
    EXPECT_EQ(gfEnableLog, 0u);
    EXPECT_EQ(gfEnableList, 1u);
    EXPECT_EQ(gdwOutputToStdDebug, 1u);
    EXPECT_STREQ(szLogName, "");
    EXPECT_STREQ(gszLogName, "");
    EXPECT_STREQ(szWin, "");
}

TEST(Report, LineWithoutASourcePosition) {
    EXPECT_EQ(messageOf([] { return ErrMsgOut(kError, "bad", 0, 0, nullptr, 7); }), kLine);
    EXPECT_EQ(messageOf([] { return ErrMsgDbg(kError, "bad", 0, 0, nullptr, 7); }), kLine);
}

TEST(Report, LineZeroCountsAsNoSourcePosition) {
    EXPECT_EQ(messageOf([] { return ErrMsgOut(kError, "bad", 0, 0, "a.cpp", 0); }), kLine);
}

TEST(Report, LineWithASourcePosition) {
    const std::string expected = "\na.cpp(7) : bad  -402509807 [0xE8023011] ERROR [MediaFile] File->Not Found   ";
    EXPECT_EQ(messageOf([] { return ErrMsgOut(kError, "bad", 0, 0, "a.cpp", 7); }), expected);
    EXPECT_EQ(messageOf([] { return ErrMsgDbg(kError, "bad", 0, 0, "a.cpp", 7); }), expected);
}

TEST(Report, NegativeLineIsASourcePosition) {
    EXPECT_EQ(messageOf([] { return ErrStrOut(0, "bad", "a.cpp", -1); }), "\na.cpp(-1) : bad  ");
}

TEST(Report, CodeZeroShowsTheCallersLastError) {
    errno = ENOENT;
    EXPECT_EQ(messageOf([] { return ErrMsgOut(0, "bad", 0, 0, nullptr, 0); }),
              "bad  0 [0x00000000] {ERR:2 (0x00000002) }  ");
}

TEST(Report, CodeZeroShowsItAlsoOnTheFirstGeneralReport) {
    errno = ENOENT;
    EXPECT_EQ(messageOf([] { return ErrMsg(0, "bad", 0, 0, nullptr, 0); }),
              "bad  0 [0x00000000] {ERR:2 (0x00000002) }  ");
}

TEST(Report, BoxLayouts) {
    EXPECT_EQ(messageOf([] { return ErrMsgBox(kError, "bad", 0, 0, nullptr, 0); }), kBox);
    EXPECT_EQ(messageOf([] { return ErrMsgBox(kError, "bad", 0, 0, "a.cpp", 7); }), kBox + "\na.cpp @ line 7");
    EXPECT_EQ(messageOf([] { return ErrMsgBox(KVERR_NONE, "bad", 0, 0, nullptr, 0); }), "bad");
    EXPECT_EQ(messageOf([] { return ErrMsgBox(KVERR_NONE, "bad", 0, 0, "a.cpp", 7); }), "bad\na.cpp @ line 7");
}

TEST(Report, BoxWithoutACodeLeavesTheCodeTextAlone) {
    FormatWinMsg(kError);
    messageOf([] { return ErrMsgBox(KVERR_NONE, "bad", 0, 0, nullptr, 0); });
    EXPECT_STREQ(szWin, "ERROR [MediaFile] File->Not Found ");
}

TEST(Report, LineWithoutACodeHasABlankForItsText) {
    EXPECT_EQ(messageOf([] { return ErrMsgOut(KVERR_NONE, "bad", 0, 0, nullptr, 0); }), "bad  -1 [0xFFFFFFFF] { }  ");
}

TEST(Report, MissingTextIsReplaced) {
    EXPECT_EQ(messageOf([] { return ErrMsgBox(KVERR_NONE, nullptr, 0, 0, nullptr, 0); }), "No error supplied");
    EXPECT_EQ(messageOf([] { return ErrMsgOut(KVERR_NONE, nullptr, 0, 0, nullptr, 0); }),
              "No error supplied  -1 [0xFFFFFFFF] { }  ");
}

TEST(Report, GeneralReportOfAnErrorTakesTheBoxOnlyWhenBothSwitchesSaySo) {
    _ReadRegSettings();  // the first report would, and set the switches back
    gfUseErrorBox = 1;
    EXPECT_EQ(messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); }), kBox);
    gfShowErrors = 0;
    EXPECT_EQ(messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); }), kLine);
    gfShowErrors = 5;
    EXPECT_EQ(messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); }), kBox);
    gfUseErrorBox = 2;
    EXPECT_EQ(messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); }), kLine);
}

TEST(Report, OtherClassesNeverTakeTheBoxAndAreNeverSilenced) {
    gfUseErrorBox = 1;
    for (const std::uint32_t shown : {0u, 1u}) {
        gfShowInfomational = shown;
        gfShowWarnings = shown;
        EXPECT_EQ(messageOf([] { return ErrMsg(0x40000001, "note", 0, 0, nullptr, 0); }),
                  "note  1073741825 [0x40000001] {ERR:1073741825 (0x40000001) }  ");
        EXPECT_EQ(messageOf([] { return ErrMsg(0x80000001, "care", 0, 0, nullptr, 0); }),
                  "care  -2147483647 [0x80000001] {ERR:-2147483647 (0x80000001) }  ");
    }
}

TEST(Report, TestSwitchesTurnTheLineIntoTheBox) {
    gfMKTestActive = 1;
    EXPECT_EQ(messageOf([] { return ErrMsgOut(kError, "bad", 0, 0, nullptr, 0); }), kBox);
    EXPECT_EQ(messageOf([] { return ErrMsgDbg(kError, "bad", 0, 0, nullptr, 0); }), kLine);
    gfMKTestActive = 0;
    gf2MKActive = 7;
    EXPECT_EQ(messageOf([] { return ErrMsgOut(kError, "bad", 0, 0, nullptr, 0); }), kBox);
}

TEST(Report, TextOf4096BytesIsComposedAndALongerOneGoesOutWhole) {
    const std::string fits(4096, 'a');
    const std::string tooLong(4097, 'b');
    // What does not fit behind the text is cut by the composition buffer of 4097 bytes.
    EXPECT_EQ(messageOf([&] { return ErrMsgOut(kError, fits.c_str(), 0, 0, nullptr, 0); }), fits);
    EXPECT_EQ(messageOf([&] { return ErrMsgOut(kError, tooLong.c_str(), 0, 0, "a.cpp", 7); }), tooLong);
    EXPECT_EQ(messageOf([&] { return ErrMsgBox(kError, tooLong.c_str(), 0, 0, "a.cpp", 7); }), tooLong);
    EXPECT_EQ(messageOf([&] { return ErrMsgDbg(kError, tooLong.c_str(), 0, 0, "a.cpp", 7); }), tooLong);
    EXPECT_EQ(messageOf([&] { return ErrStrOut(kError, tooLong.c_str(), "a.cpp", 7); }), tooLong);
}

TEST(Report, ReadyTextStandsAsItIs) {
    EXPECT_EQ(messageOf([] { return ErrStrOut(kError, "ready %d\n", nullptr, 9); }), "ready %d\n");
    EXPECT_EQ(messageOf([] { return ErrStrOut(kError, "ready", "a.cpp", 9); }), "\na.cpp(9) : ready  ");
}

TEST(Report, NullReadyTextIsTheOneFailure) {
    CapturedMessages messages;
    EXPECT_EQ(ErrStrOut(kError, nullptr, "a.cpp", 9), 0xFFFFFFFFu);
    EXPECT_EQ(messages.text(), "");
}

TEST(Report, FormattedReports) {
    EXPECT_EQ(messageOf([] { return ErrOut("%s %d", "x", 42); }), "x 42");
    EXPECT_EQ(messageOf([] { return ErrFmtOut(0x80000000, nullptr, 0, "WARNING(gen): %s\n\r", "x"); }),
              "WARNING(gen): x\n\r");
    EXPECT_EQ(messageOf([] { return ErrFmtOut(0, "a.cpp", 3, "%d", 5); }), "\na.cpp(3) : 5  ");
}

TEST(Report, FormattedTextIsCutAtItsLimit) {
    const std::string text(6000, 'x');
    EXPECT_EQ(messageOf([&] { return ErrOut("%s", text.c_str()); }), text.substr(0, 4095));
    EXPECT_EQ(messageOf([&] { return ErrFmtOut(0, nullptr, 0, "%s", text.c_str()); }), text.substr(0, 4095));
    EXPECT_EQ(messageOf([&] { return _DbgOut("%s", text.c_str()); }), text.substr(0, 1023));
}

TEST(Report, DebugTextGoesToStandardErrorAsItIs) {
    EXPECT_EQ(messageOf([] { return _DbgOut("%d!", 3); }), "3!");
    EXPECT_EQ(messageOf([] { return _DbgOutString(77, "%d!"); }), "%d!");
    EXPECT_EQ(messageOf([] { return _DbgOutString(0, nullptr); }), "");
}

TEST(Report, NothingReachesStandardErrorWhileItIsOff) {
    gdwOutputToStdDebug = 0;
    const std::string tooLong(5000, 'b');
    EXPECT_EQ(messageOf([&] {
                  return ErrOut("a") | ErrFmtOut(0, nullptr, 0, "b") | ErrMsg(kError, "c", 0, 0, nullptr, 0) |
                         ErrMsgBox(kError, "d", 0, 0, nullptr, 0) | ErrMsgDbg(kError, "e", 0, 0, nullptr, 0) |
                         ErrStrOut(0, tooLong.c_str(), nullptr, 0) | _DbgOut("f") | _DbgOutString(0, "g");
              }),
              "");
}

TEST(Report, NoCallDisturbsTheCallersErrno) {
    // A full device makes every write to standard error fail, and sets errno.
    const int before = dup(STDERR_FILENO);
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    dup2(full, STDERR_FILENO);
    const std::string longText(5000, 'x');
    const std::function<void()> calls[] = {
        [&] { ErrOut("%s", longText.c_str()); },
        [] { ErrMsg(kError, "a", 0, 0, nullptr, 0); },
        [] { ErrMsgOut(kError, "a", 0, 0, nullptr, 0); },
        [] { ErrMsgBox(0, "a", 0, 0, nullptr, 0); },
        [] { ErrMsgDbg(0, "a", 0, 0, nullptr, 0); },
        [&] { ErrStrOut(0, longText.c_str(), nullptr, 0); },
        [] { ErrFmtOut(0, nullptr, 0, "%d", 3); },
        [] { _DbgOut("x"); },
        [] { _DbgOutString(0, "x"); },
        [] { FormatWinMsg(kError); },
        [] { _ReadRegSettings(); },
    };
    std::string disturbed;
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        errno = 4711;
        calls[i]();
        if (errno != 4711) disturbed += std::to_string(i) + " ";
    }
    dup2(before, STDERR_FILENO);
    close(before);
    close(full);
    EXPECT_EQ(disturbed, "");
}

TEST(Report, GeneralReportReadsTheSettingsOnce) {
    EXPECT_EQ(gfReadReg, 0u);
    messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); });
    EXPECT_EQ(gfReadReg, 1u);
    gfReadReg = 2;  // a reading would set it to 1 again
    messageOf([] { return ErrMsg(kError, "bad", 0, 0, nullptr, 0); });
    EXPECT_EQ(gfReadReg, 2u);
}

TEST(Report, SettingsReaderGivesTheLogName) { EXPECT_EQ(_ReadRegSettings(), gszLogName); }

TEST(Report, ErrorLevelIsAlwaysZero) { EXPECT_EQ(_GetErrorLevel(), 0u); }

TEST(Report, BoxSwitchIsStored) {
    EXPECT_EQ(ErrMsgUseBox(2), 0u);
    EXPECT_EQ(gfUseErrorBox, 2u);
}

TEST(Report, EmptyShellsChangeNothing) {
    gfMKTestActive = 3;
    EXPECT_EQ(ErrMsgNotifyMK(1) | ErrMsgMKTestActive(1) | ErrMsg2MKActive(1) | ErrMsgUseWindow(1), 0u);
    EXPECT_EQ(gfMKTestActive, 3u);
    EXPECT_EQ(gf2MKActive, 0u);
    EXPECT_EQ(gfNotifyMKOutput, 0u);
    EXPECT_EQ(gfUseErrorWin, 0u);
}

TEST(Report, EightThreadsMayReportAtOnceAndEveryMessageArrives) {
    constexpr int kThreads = 8;
    constexpr int kMessages = 500;
    CapturedMessages messages;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < kMessages; ++i) {
                    ErrOut("<%d:%d>", t, i);
                    ErrMsg(kError + static_cast<std::uint32_t>(t), "[m]", 0, 0, nullptr, 0);
                }
            });
        }
    }
    EXPECT_EQ(messages.count("[m]  -"), static_cast<std::size_t>(kThreads * kMessages));
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(messages.count("<" + std::to_string(t) + ":499>"), 1u);
}
