// Opening the panel's line: one speed for both, whichever the panel was at.
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <termios.h>

#include "devices/line_calls.h"
#include "devices/own_devices.h"
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
        if (!mayReopen()) GTEST_SKIP() << "only root opens a pseudo-terminal again while its other side is open";
        _ReadRegSettings();  // now, and not with the first message
    }
    ~LcdLine() override {
        lineCalls() = {};
        lcdCloseCom();
    }

    std::int64_t open(std::uint32_t baud) { return lcdOpenComString(panel_.device().c_str(), baud); }

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
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "this machine has settings for all";
    std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane");
    const OwnDevices devices;
    if (!devices.why().empty()) GTEST_SKIP() << devices.why();
    OwnDevices::name(panel_.device(), "ttyACM3");
    gfDefaultWait = 1;
    panel_.setSpeed(115200);
    CapturedMessages messages;
    EXPECT_GT(lcdOpenCom(1, 19200), 0);
    EXPECT_EQ(messages.text(), "LCD opening com 1 ");
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

}  // namespace
