// Opening the panel's line: one speed for both, whichever the panel was at.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <thread>

#include "devices/line_calls.h"
#include "devices/panel.h"
#include "devices/pseudo_terminal.h"
#include "errlog.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

const Bytes kSignOfLife{'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
constexpr std::uint8_t kPing = 0x00;
constexpr std::uint8_t kSetSpeed = 0x21;

class LcdLine : public ::testing::Test {
protected:
    void SetUp() override {
        lineCalls().isShared = true;
        _ReadRegSettings();  // now, and not with the first message
    }
    ~LcdLine() override {
        lineCalls() = {};
        lcdCloseCom();
    }

    std::int64_t open(std::uint32_t baud) { return lcdOpenComString(panel_.device().c_str(), baud); }

    static std::ptrdiff_t timesAsked(const char* what) { return std::ranges::count(lineCalls().asked, what); }

    /// A pseudo-terminal is drained once its other side could read, a real line once the bytes are on the wire.
    void seeAllOnDrain() {
        lineCalls().onDrain = [this] { seen_ = panel_.saw(); };
    }
    void expectLine(speed_t speed) const {
        termios settings{};
        ASSERT_EQ(tcgetattr(static_cast<int>(ghCOM - 1), &settings), 0);
        EXPECT_EQ(cfgetospeed(&settings), speed);
        EXPECT_EQ(settings.c_cflag & (CSIZE | PARENB | CSTOPB), tcflag_t{CS8});
    }

    Panel panel_;
    std::string seen_;
};

TEST_F(LcdLine, APanelAt115200IsBroughtTo19200) {
    panel_.setSpeed(115200);
    seeAllOnDrain();
    const std::int64_t line = open(19200);
    EXPECT_GT(line, 0);
    EXPECT_EQ(ghCOM, line);
    EXPECT_EQ(seen_, Panel::frame(115200, kSetSpeed, {0}));
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kPing, kSignOfLife));
    expectLine(B19200);
}

TEST_F(LcdLine, APanelAt19200StaysThere) {
    seeAllOnDrain();
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(seen_, Panel::noise(115200, kSetSpeed, {0}));
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kPing, kSignOfLife));
}

TEST_F(LcdLine, APanelAt19200IsBroughtTo115200) {
    gdwBAUDRate = 115200;
    seeAllOnDrain();
    EXPECT_GT(open(115200), 0);
    EXPECT_EQ(seen_, Panel::frame(19200, kSetSpeed, {1}));
    EXPECT_EQ(panel_.saw(), Panel::frame(115200, kPing, kSignOfLife));
    expectLine(B115200);
}

TEST_F(LcdLine, AnySpeedBut19200Means115200ForThePanel) {
    seeAllOnDrain();
    EXPECT_GT(open(9600), 0);
    EXPECT_EQ(seen_, Panel::frame(19200, kSetSpeed, {1}));
    // The line follows the variable, which says otherwise.
    EXPECT_EQ(panel_.saw(), Panel::noise(19200, kPing, kSignOfLife));
    expectLine(B19200);
}

TEST_F(LcdLine, IsDrainedAheadOfItsCloseAndSetTwice) {
    seeAllOnDrain();
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(lineCalls().asked,
              (std::vector<std::string>{"alone", "settings now", "DTR up", "latency", "flush both",  // opened
                                        "settings now", "DTR up", "latency", "latency", "drain",  // at the other speed
                                        "alone", "settings now", "DTR up", "latency", "flush both",  // opened again
                                        "settings now", "DTR up", "latency", "latency"}));           // at its speed
}

TEST_F(LcdLine, ALineThatDoesNotSendIsGivenUpAfterASecond) {
    unsigned total_us = 0;
    lineCalls().unsent = 5;
    lineCalls().onPause = [&total_us](unsigned us) {
        total_us += us;
        return 0;
    };
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(total_us, 1000000u);
    EXPECT_EQ(timesAsked("drain"), 0);  // which would have no limit
    EXPECT_EQ(timesAsked("flush output"), 1);
}

TEST_F(LcdLine, ALineThatIsStillSendingIsWaitedForAndDrained) {
    int pauses = 0;
    lineCalls().unsent = 5;
    lineCalls().onPause = [&pauses](unsigned) {
        if (++pauses == 3) lineCalls().unsent = 0;
        return 0;
    };
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(pauses, 3);
    EXPECT_EQ(timesAsked("drain"), 1);
    EXPECT_EQ(timesAsked("flush output"), 0);
}

TEST_F(LcdLine, ASignalEndsTheWaitForWhatIsUnsent) {
    int pauses = 0;
    lineCalls().unsent = 5;
    lineCalls().onPause = [&pauses](unsigned) {
        ++pauses;
        errno = EINTR;
        return -1;
    };
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(pauses, 1);
    EXPECT_EQ(timesAsked("drain"), 0);
}

TEST_F(LcdLine, ADrainThatASignalEndsIsNotRepeated) {
    lineCalls().isDrainInterrupted = true;
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(timesAsked("drain"), 1);
    EXPECT_EQ(timesAsked("flush output"), 1);
}

TEST_F(LcdLine, SignalsEndTheWaitForAReplyThatNeverComes) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    gfDefaultWait = 1;  // and the panel has the speed already, so that it does not understand the change
    std::atomic<bool> isOver = false;
    std::thread opener([&] {
        const std::int64_t line = open(19200);
        EXPECT_EQ(line, ghCOM == 0 ? -1 : ghCOM);  // the question for a sign of life may meet signals as well
        isOver = true;
    });
    EXPECT_EQ(panel_.saw(), Panel::noise(115200, kSetSpeed, {0}));
    while (!isOver) {
        pthread_kill(opener.native_handle(), SIGUSR1);
        poll(nullptr, 0, 1);
    }
    opener.join();
}

TEST_F(LcdLine, WithWaitingThePanelIsAskedForSignsOfLife) {
    gfDefaultWait = 1;
    panel_.setSpeed(115200);
    CapturedMessages messages;
    EXPECT_GT(open(19200), 0);
    EXPECT_EQ(messages.text(), "LCD opening com <" + panel_.device() + "> ");
    gdwBAUDRate = 115200;
    lcdCloseCom();
    EXPECT_GT(open(115200), 0);
    EXPECT_EQ(messages.text(), "LCD opening com <" + panel_.device() + "> ");  // 19200 alone is told
}

TEST_F(LcdLine, TheReplyToTheChangeOfSpeedDoesNotMatter) {
    gfDefaultWait = 1;
    panel_.setSpeed(115200);
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_GT(open(19200), 0);
}

TEST_F(LcdLine, APanelThatDoesNotAnswerIsToldAndTheLineClosed) {
    gfDefaultWait = 1;
    panel_.setSpeed(115200);
    panel_.next({"answer", "hang up"});
    CapturedMessages messages;
    EXPECT_EQ(open(19200), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(ghCOM, 0);
    EXPECT_EQ(messages.text(),
              "LCD opening com <" + panel_.device() + "> WARNING(kvOSLcd): Front Panel LCD NOT FOUND\n\r");
}

TEST_F(LcdLine, ALineThatIsGoneAtItsSecondOpenIsTold) {
    panel_.setSpeed(115200);
    panel_.next({"hang up"});
    seeAllOnDrain();
    CapturedMessages messages;
    EXPECT_EQ(open(19200), -1);
    EXPECT_EQ(ghCOM, 0);
    EXPECT_EQ(messages.text(),
              "LCD opening com <" + panel_.device() + "> WARNING(kvOSLcd): Unable to open front panel COM port.\n\r");
}

TEST_F(LcdLine, ALineThatCanNotBeOpenedLeavesTheOpenOneInItsPlace) {
    seeAllOnDrain();
    const std::int64_t line = open(19200);
    ASSERT_GT(line, 0);
    EXPECT_EQ(lcdOpenComString("/dev/no-such-line", 115200), -1);
    EXPECT_EQ(ghCOM, line);
    EXPECT_EQ(lcdOpenCom(4000000000, 115200), -1);
    EXPECT_EQ(ghCOM, line);
    EXPECT_EQ(lcdClear(), 0);
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kPing, kSignOfLife));
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, 0x06, {}));
}

TEST_F(LcdLine, ANewLineTakesThePlaceOfTheOpenOneWhichStaysOpen) {
    const PseudoTerminal other;
    const std::int64_t first = kvOSSerialOpenString(other.device().c_str());
    ghCOM = first;
    const std::int64_t second = open(19200);
    EXPECT_GT(second, 0);
    EXPECT_NE(second, first);
    EXPECT_EQ(ghCOM, second);
    lcdCloseCom();
    EXPECT_NE(fcntl(static_cast<int>(first - 1), F_GETFD), -1);
    kvOSSerialClose(first);
}

TEST_F(LcdLine, ALineThatIsGoneAtItsSecondOpenIsNoLongerTheOpenOne) {
    const PseudoTerminal other;
    const std::int64_t first = kvOSSerialOpenString(other.device().c_str());
    ghCOM = first;
    panel_.setSpeed(115200);
    panel_.next({"hang up"});
    seeAllOnDrain();
    EXPECT_EQ(open(19200), -1);
    EXPECT_EQ(ghCOM, 0);
    EXPECT_NE(fcntl(static_cast<int>(first - 1), F_GETFD), -1);
    kvOSSerialClose(first);
}

TEST_F(LcdLine, ALineThatCanNotBeOpenedIsNotWarnedOf) {
    CapturedMessages messages;
    EXPECT_EQ(lcdOpenComString("/dev/no-such-line", 115200), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(ghCOM, 0);
    EXPECT_EQ(lcdOpenComString(nullptr, 19200), -1);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(lcdOpenComString("/dev/no-such-line", 19200), -1);
    EXPECT_EQ(lcdOpenCom(4000000000, 19200), -1);
    EXPECT_EQ(messages.text(), "LCD opening com </dev/no-such-line> LCD opening com 4000000000 ");
}

TEST_F(LcdLine, IsOpenedByItsPortNumberToo) {
    lineCalls().hasOwnDevices = true;
    lineCalls().devices = {{"/dev/ttyS10", panel_.device()}};
    gfDefaultWait = 1;
    panel_.setSpeed(115200);
    CapturedMessages messages;
    EXPECT_GT(lcdOpenCom(11, 19200), 0);
    EXPECT_EQ(messages.text(), "LCD opening com 11 ");
    EXPECT_EQ(panel_.saw(), Panel::frame(115200, kSetSpeed, {0}));
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kPing, kSignOfLife));
}

TEST(LcdFinishOpen, WithoutAHandleIsToldAndFails) {
    _ReadRegSettings();
    CapturedMessages messages;
    EXPECT_EQ(lcdFinishOpen(0), -1);
    EXPECT_EQ(messages.text(), "WARNING(kvOSLcd): Unable to open front panel COM port.\n\r");
}

TEST(LcdFinishOpen, WithoutWaitingAMissingPanelIsNotNoticed) {
    const PseudoTerminal nobody;
    ghCOM = kvOSSerialOpenString(nobody.device().c_str());
    EXPECT_EQ(lcdFinishOpen(ghCOM), ghCOM);
    EXPECT_EQ(lcdClear(), 0);
    EXPECT_EQ(lcdCloseCom(), 0);
    EXPECT_EQ(ghCOM, 0);
    EXPECT_EQ(lcdCloseCom(), 0);
}

TEST(LcdFinishOpen, SetsTheLineToTheVariablesSpeed) {
    const PseudoTerminal line;
    ghCOM = kvOSSerialOpenString(line.device().c_str());
    lineCalls() = {};
    gdwBAUDRate = 57600;
    EXPECT_EQ(lcdFinishOpen(ghCOM), ghCOM);
    const termios settings = line.settings();
    EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B57600));
    EXPECT_EQ(lineCalls().asked, (std::vector<std::string>{"settings now", "DTR up", "latency", "latency"}));
    EXPECT_EQ(lineCalls().settings.c_cflag & (CSIZE | PARENB | PARODD | CSTOPB), tcflag_t{CS8});
    lcdCloseCom();
}

TEST(LcdFinishOpen, WithoutALineInTheVariableSendsNothing) {
    const PseudoTerminal terminal;
    const std::int64_t line = kvOSSerialOpenString(terminal.device().c_str());
    ASSERT_EQ(ghCOM, 0);
    EXPECT_EQ(lcdFinishOpen(line), line);
    EXPECT_EQ(ghCOM, 0);
    std::uint64_t written = 0;
    EXPECT_EQ(kvOSSerialWrite(line, "x", 1, &written), 1u);
    EXPECT_EQ(terminal.read(1), "x");

    gfDefaultWait = 1;
    EXPECT_EQ(lcdFinishOpen(line), -1);
    EXPECT_EQ(fcntl(static_cast<int>(line - 1), F_GETFD), -1);
    EXPECT_EQ(ghCOM, 0);
}

TEST(LcdFinishOpen, LeavesAnotherLineInTheVariable) {
    PseudoTerminal gone;
    const PseudoTerminal terminal;
    const std::int64_t other = kvOSSerialOpenString(gone.device().c_str());
    const std::int64_t line = kvOSSerialOpenString(terminal.device().c_str());
    gone.hangUp();
    ghCOM = other;
    gfDefaultWait = 1;
    errno = 0;
    EXPECT_EQ(lcdFinishOpen(line), -1);  // the question went to the other one
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(fcntl(static_cast<int>(line - 1), F_GETFD), -1);
    EXPECT_EQ(ghCOM, other);
    lcdCloseCom();
    EXPECT_EQ(fcntl(static_cast<int>(other - 1), F_GETFD), -1);
}

}  // namespace
