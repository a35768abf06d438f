// How a line is set: what the other side of a pseudo-terminal reads back, and what was asked for where one can't show
// it.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <linux/serial.h>
#include <utility>

#include "devices/line_calls.h"
#include "devices/pseudo_terminal.h"
#include "kvos/serial.h"

namespace {

using namespace kvtest;

class SerialSetup : public ::testing::Test {
protected:
    SerialSetup() : line_(kvOSSerialOpenString(terminal_.device().c_str())) { EXPECT_GT(line_, 0); }
    ~SerialSetup() override { kvOSSerialClose(line_); }

    speed_t speedAt(std::uint32_t baud) const {
        EXPECT_EQ(kvOSSerialSetup(line_, baud, 8, 0, 1), 0);
        const termios settings = terminal_.settings();
        EXPECT_EQ(cfgetispeed(&settings), cfgetospeed(&settings)) << baud;
        return cfgetospeed(&settings);
    }
    tcflag_t askedFor(std::uint32_t bits, std::uint32_t parity, std::uint32_t stop, tcflag_t which) const {
        EXPECT_EQ(kvOSSerialSetup(line_, 9600, bits, parity, stop), 0);
        return lineCalls().settings.c_cflag & which;
    }

    PseudoTerminal terminal_;
    std::int64_t line_;
};

TEST_F(SerialSetup, RatesOfTheListStandAsTheyAre) {
    const std::pair<std::uint32_t, speed_t> rates[] = {
        {0, B0},       {50, B50},     {75, B75},       {110, B110},     {134, B134},     {150, B150},
        {200, B200},   {300, B300},   {600, B600},     {1200, B1200},   {1800, B1800},   {2400, B2400},
        {4800, B4800}, {9600, B9600}, {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}};
    for (const auto& [baud, speed] : rates) EXPECT_EQ(speedAt(baud), speed) << baud;
}

TEST_F(SerialSetup, AnyOtherRateBecomes38400) {
    for (const std::uint32_t baud : {31250u, 1u, 9601u, 230400u, 0xFFFFFFFFu}) {
        speedAt(9600);
        EXPECT_EQ(speedAt(baud), static_cast<speed_t>(B38400)) << baud;
    }
}

TEST_F(SerialSetup, CharactersHaveEightSevenSixOrElseFiveBits) {
    EXPECT_EQ(askedFor(8, 0, 1, CSIZE), static_cast<tcflag_t>(CS8));
    EXPECT_EQ(askedFor(7, 0, 1, CSIZE), static_cast<tcflag_t>(CS7));
    EXPECT_EQ(askedFor(6, 0, 1, CSIZE), static_cast<tcflag_t>(CS6));
    for (const std::uint32_t bits : {5u, 0u, 9u, 16u}) EXPECT_EQ(askedFor(bits, 0, 1, CSIZE), tcflag_t{CS5}) << bits;
}

TEST_F(SerialSetup, ParityIsNoneOrEvenOrElseOdd) {
    constexpr tcflag_t kBoth = PARENB | PARODD;
    EXPECT_EQ(askedFor(8, 0, 1, kBoth), 0u);
    EXPECT_EQ(askedFor(8, 2, 1, kBoth), static_cast<tcflag_t>(PARENB));
    for (const std::uint32_t parity : {1u, 3u, 77u}) EXPECT_EQ(askedFor(8, parity, 1, kBoth), kBoth) << parity;
}

TEST_F(SerialSetup, OnlyTwoGivesTwoStopBits) {
    for (const std::uint32_t stop : {2u, 1u, 0u, 3u}) {
        kvOSSerialSetup(line_, 9600, 8, 0, stop);
        EXPECT_EQ((terminal_.settings().c_cflag & CSTOPB) != 0, stop == 2) << stop;
    }
}

TEST_F(SerialSetup, NothingOfWhatWasSetBeforeStays) {
    termios dirty = terminal_.settings();
    dirty.c_iflag = IXON | IXOFF | ICRNL | ISTRIP | IGNBRK;
    dirty.c_oflag = OPOST | ONLCR;
    dirty.c_lflag = ICANON | ECHO | ISIG | IEXTEN;
    dirty.c_cflag |= CRTSCTS | HUPCL;
    std::memset(dirty.c_cc, 7, sizeof dirty.c_cc);
    ASSERT_EQ(tcsetattr(static_cast<int>(line_ - 1), TCSANOW, &dirty), 0);
    kvOSSerialSetup(line_, 9600, 8, 0, 1);
    const termios settings = terminal_.settings();
    EXPECT_EQ(settings.c_iflag, 0u);
    EXPECT_EQ(settings.c_oflag, 0u);
    EXPECT_EQ(settings.c_lflag, 0u);
    EXPECT_EQ(settings.c_cflag & ~tcflag_t{CBAUD}, tcflag_t{CS8 | CREAD | CLOCAL});
    for (int i = 0; i < NCCS; ++i) {
        const int expected = i == VMIN ? 1 : i == VTIME ? 10 : 0;
        EXPECT_EQ(settings.c_cc[i], expected) << i;
    }
}

TEST_F(SerialSetup, DtrIsRaisedAndLatencyLoweredBehindTheSettings) {
    lineCalls() = {.hasDriver = true, .modemLines = TIOCM_RTS, .driverFlags = ASYNC_SPD_HI};
    kvOSSerialSetup(line_, 9600, 8, 0, 1);
    EXPECT_EQ(lineCalls().asked, (std::vector<std::string>{"settings now", "DTR up", "latency"}));
    EXPECT_EQ(lineCalls().modemLines, TIOCM_RTS | TIOCM_DTR);
    EXPECT_EQ(lineCalls().driverFlags, static_cast<int>(ASYNC_SPD_HI | ASYNC_LOW_LATENCY));
}

TEST_F(SerialSetup, ALineWithoutLatencyAndModemLinesIsNoFailure) {
    lineCalls() = {};  // a pseudo-terminal refuses both
    errno = 77;
    EXPECT_EQ(kvOSSerialSetup(line_, 9600, 8, 0, 1), 0);
    EXPECT_EQ(kvOSSerialSetTimeOuts(line_), 0);
    EXPECT_EQ(errno, 77);
}

TEST_F(SerialSetup, TimeoutsOnlyAskForTheLatencyAgain) {
    lineCalls() = {.hasDriver = true};
    EXPECT_EQ(kvOSSerialSetTimeOuts(line_), 0);
    EXPECT_EQ(lineCalls().asked, std::vector<std::string>{"latency"});
    EXPECT_EQ(lineCalls().driverFlags, static_cast<int>(ASYNC_LOW_LATENCY));
    EXPECT_EQ(terminal_.settings().c_cc[VTIME], 10);
}

TEST_F(SerialSetup, NoLineGives0AllTheSame) {
    errno = 77;
    for (const std::int64_t line : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40, std::int64_t{10000}}) {
        EXPECT_EQ(kvOSSerialSetup(line, 9600, 8, 0, 1), 0) << line;
        EXPECT_EQ(kvOSSerialSetTimeOuts(line), 0) << line;
    }
    EXPECT_EQ(errno, 77);
}

}  // namespace
