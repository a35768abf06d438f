// Opening a line by its device, and what is done with an open one.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <poll.h>
#include <string>
#include <thread>
#include <vector>

#include "devices/line_calls.h"
#include "devices/pseudo_terminal.h"
#include "kvos/serial.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

constexpr std::uint64_t kUntouched = 0x5555;

std::int64_t openLine(const PseudoTerminal& terminal) { return kvOSSerialOpenString(terminal.device().c_str()); }

int descriptorOf(std::int64_t line) { return static_cast<int>(line - 1); }

/// Waits until something can be read.
void awaitInput(std::int64_t line) {
    pollfd input{descriptorOf(line), POLLIN, 0};
    EXPECT_EQ(poll(&input, 1, -1), 1);
}

int unreadBytes(std::int64_t line) {
    int count = -1;
    EXPECT_EQ(ioctl(descriptorOf(line), FIONREAD, &count), 0);
    return count;
}

TEST(SerialLine, HandleIsTheDescriptorPlusOne) {
    const PseudoTerminal terminal;
    const int next = dup(0);
    close(next);
    const std::int64_t line = openLine(terminal);
    EXPECT_EQ(line, next + 1);
    EXPECT_EQ(std::string(ttyname(next)), terminal.device());
    errno = 77;
    EXPECT_EQ(kvOSSerialClose(line), 0);
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

TEST(SerialLine, StartsUpAt38400WithEightBitsAndOddParity) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    const termios settings = terminal.settings();
    EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B38400));
    EXPECT_EQ(settings.c_cflag & CSTOPB, 0u);
    // The rest is what a pseudo-terminal can't show.
    EXPECT_EQ(lineCalls().settings.c_cflag & (CSIZE | PARENB | PARODD), tcflag_t{CS8 | PARENB | PARODD});
    kvOSSerialClose(line);
}

TEST(SerialLine, IsTakenAloneThenSetThenFlushed) {
    const PseudoTerminal terminal;
    lineCalls() = {};
    const std::int64_t line = openLine(terminal);
    EXPECT_EQ(lineCalls().asked,
              (std::vector<std::string>{"alone", "settings now", "DTR up", "latency", "flush both"}));
    int isAlone = 0;
    EXPECT_EQ(ioctl(descriptorOf(line), TIOCGEXCL, &isAlone), 0);
    EXPECT_EQ(isAlone, 1);
    EXPECT_EQ(fcntl(descriptorOf(line), F_GETFL) & (O_NONBLOCK | O_ACCMODE), O_RDWR);
    kvOSSerialClose(line);
}

TEST(SerialLine, WhatCanNotBeOpenedGives0InSilence) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSSerialOpenString("/dev/no-such-line"), 0);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSSerialOpenString(nullptr), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSSerialOpenString("/"), 0);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(messages.text(), "");
}

TEST(SerialLine, BytesGoBothWaysAsTheyAre) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    std::string everyByte;
    for (int i = 0; i < 256; ++i) everyByte += static_cast<char>(i);
    std::uint64_t count = 0;
    EXPECT_EQ(kvOSSerialWrite(line, everyByte.data(), everyByte.size(), &count), 1u);
    EXPECT_EQ(count, 256u);
    EXPECT_EQ(terminal.read(256), everyByte);

    terminal.write(everyByte);
    std::string came(256, '\0');
    EXPECT_EQ(kvOSSerialRead(line, came.data(), came.size(), &count), 1u);
    EXPECT_EQ(count, 256u);
    EXPECT_EQ(came, everyByte);
    kvOSSerialClose(line);
}

/// A read of three bytes of which one is there; what becomes of the others is decided at each wait for one.
class SerialRead : public ::testing::Test {
protected:
    SerialRead() : line_(openLine(terminal_)) {
        terminal_.write("a");
        awaitInput(line_);
        lineCalls().awaitedLine = descriptorOf(line_);
    }
    ~SerialRead() override {
        lineCalls() = {};
        kvOSSerialClose(line_);
    }

    template <class OnWait>
    std::string read(const OnWait& onWait) {
        lineCalls().onWait = [this, &onWait](int wait_ms) {
            waits_.push_back(wait_ms);
            return onWait();
        };
        std::string bytes(3, '#');
        std::uint64_t count = kUntouched;
        EXPECT_EQ(kvOSSerialRead(line_, bytes.data(), bytes.size(), &count), 1u);
        EXPECT_LE(count, 3u);
        EXPECT_EQ(bytes.substr(count), std::string(3 - count, '#'));
        return bytes.substr(0, count);
    }

    PseudoTerminal terminal_;
    std::int64_t line_;
    std::vector<int> waits_;
};

TEST_F(SerialRead, GoesOnUntilTheCountIsMet) {
    const std::string bytes = read([this]() -> std::optional<int> {
        terminal_.write(waits_.size() == 1 ? "b" : "cd");
        return std::nullopt;
    });
    EXPECT_EQ(bytes, "abc");
    EXPECT_EQ(waits_.size(), 2u);
    EXPECT_EQ(unreadBytes(line_), 1);
}

TEST_F(SerialRead, GivesEachFurtherByteASecond) {
    read([this]() -> std::optional<int> {
        terminal_.write("x");
        return std::nullopt;
    });
    EXPECT_EQ(waits_.size(), 2u);
    for (const int wait_ms : waits_) {
        EXPECT_LE(wait_ms, 1000);
        EXPECT_GT(wait_ms, 100);  // what is left of the second once the system is asked
    }
}

TEST_F(SerialRead, EndsWithTheBytesAheadOfASilence) {
    EXPECT_EQ(read([] { return std::optional(0); }), "a");
    EXPECT_EQ(waits_.size(), 1u);
}

TEST_F(SerialRead, EndsWithTheBytesAheadOfASignal) {
    const std::string bytes = read([] {
        errno = EINTR;
        return std::optional(-1);
    });
    EXPECT_EQ(bytes, "a");
    EXPECT_EQ(waits_.size(), 1u);
}

TEST_F(SerialRead, EndsWithTheBytesAheadOfTheEndOfTheLine) {
    const std::string bytes = read([this]() -> std::optional<int> {
        terminal_.hangUp();
        return std::nullopt;
    });
    EXPECT_EQ(bytes, "a");
    EXPECT_EQ(waits_.size(), 1u);
}

TEST_F(SerialRead, WaitsForNothingBehindItsLastByte) {
    terminal_.write("bc");
    while (unreadBytes(line_) < 3) poll(nullptr, 0, 1);
    EXPECT_EQ(read([] { return std::optional(0); }), "abc");
    EXPECT_TRUE(waits_.empty());
}

TEST(SerialLine, AFileThatIsNoLineIsReadToItsEnd) {
    const ScratchFolder scratch;
    makeFile(scratch / "file", "ab");
    const std::int64_t line = kvOSSerialOpenString((scratch / "file").c_str());
    char block[8];
    std::uint64_t count = 0;
    EXPECT_EQ(kvOSSerialRead(line, block, sizeof block, &count), 1u);
    EXPECT_EQ(std::string(block, count), "ab");
    EXPECT_EQ(kvOSSerialRead(line, block, sizeof block, &count), 0u);
    kvOSSerialClose(line);
}

TEST(SerialLine, NoCountOrANullPointerTouchesNothing) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    terminal.write("x");
    awaitInput(line);
    char byte = 'a';
    std::uint64_t count = kUntouched;
    EXPECT_EQ(kvOSSerialWrite(line, &byte, 0, &count), 0u);
    EXPECT_EQ(kvOSSerialWrite(line, nullptr, 1, &count), 0u);
    EXPECT_EQ(kvOSSerialWrite(line, &byte, 1, nullptr), 0u);
    EXPECT_EQ(kvOSSerialRead(line, &byte, 0, &count), 0u);
    EXPECT_EQ(kvOSSerialRead(line, nullptr, 1, &count), 0u);
    EXPECT_EQ(kvOSSerialRead(line, &byte, 1, nullptr), 0u);
    EXPECT_EQ(count, kUntouched);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(unreadBytes(line), 1);
    kvOSSerialClose(line);
}

TEST(SerialLine, AFailureOfTheSystemStores0) {
    PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    terminal.hangUp();
    char byte = 'a';
    std::uint64_t count = kUntouched;
    EXPECT_EQ(kvOSSerialRead(line, &byte, 1, &count), 0u);
    EXPECT_EQ(count, 0u);
    count = kUntouched;
    EXPECT_EQ(kvOSSerialWrite(line, &byte, 1, &count), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(errno, EIO);
    kvOSSerialClose(line);
    count = kUntouched;
    EXPECT_EQ(kvOSSerialRead(0, &byte, 1, &count), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(errno, EBADF);
}

TEST(SerialLine, AReadThatWaitsEndsWithAnInterruption) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    std::atomic<bool> isOver = false;
    std::thread reader([&] {
        char byte = 0;
        std::uint64_t count = kUntouched;
        EXPECT_EQ(kvOSSerialRead(line, &byte, 1, &count), 0u);
        EXPECT_EQ(errno, EINTR);
        EXPECT_EQ(count, 0u);
        isOver = true;
    });
    while (!isOver) {  // until one of them meets the read
        pthread_kill(reader.native_handle(), SIGUSR1);
        poll(nullptr, 0, 1);
    }
    reader.join();
    kvOSSerialClose(line);
}

TEST(SerialLine, FlushTakesTheDirectionsThatAreTold) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    lineCalls() = {};
    EXPECT_EQ(kvOSSerialFlush(line, 1, 1), 0);
    EXPECT_EQ(kvOSSerialFlush(line, 1, 0), 0);
    EXPECT_EQ(kvOSSerialFlush(line, 0, 1), 0);
    EXPECT_EQ(kvOSSerialFlush(line, 0, 0), 0);
    EXPECT_EQ(lineCalls().asked,
              (std::vector<std::string>{"flush both", "flush input", "flush output", "flush output"}));
    EXPECT_EQ(kvOSSerialFlush(0, 1, 1), -1);
    EXPECT_EQ(errno, EBADF);
    kvOSSerialClose(line);
}

TEST(SerialLine, FlushOfNeitherDirectionKeepsTheInput) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    terminal.write("x");
    awaitInput(line);
    EXPECT_EQ(kvOSSerialFlush(line, 0, 0), 0);
    EXPECT_EQ(unreadBytes(line), 1);
    EXPECT_EQ(kvOSSerialFlush(line, 1, 0), 0);
    EXPECT_EQ(unreadBytes(line), 0);
    kvOSSerialClose(line);
}

TEST(SerialLine, DirectionIsNotSupported) { EXPECT_EQ(kvOSSerialDirection(), 0xFFFFFFFFu); }

TEST(SerialLine, ModemLinesAreToldForOneSelectorAlone) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    EXPECT_EQ(kvOSSerialGetStat(line, KVSERIAL_MODEM_LINES), 0u);  // a pseudo-terminal has none
    lineCalls() = {.hasDriver = true, .modemLines = TIOCM_CTS | TIOCM_DSR};
    EXPECT_EQ(kvOSSerialGetStat(line, KVSERIAL_MODEM_LINES), static_cast<std::uint32_t>(TIOCM_CTS | TIOCM_DSR));
    for (const std::uint32_t selector : {0u, 2u, 5u}) EXPECT_EQ(kvOSSerialGetStat(line, selector), 0u) << selector;
    kvOSSerialClose(line);
}

TEST(SerialLine, OneSelectorRaisesAndDropsDtr) {
    const PseudoTerminal terminal;
    const std::int64_t line = openLine(terminal);
    EXPECT_EQ(kvOSSerialSetStat(line, KVSERIAL_DTR, 1), 0u);  // refused by a pseudo-terminal, and 0 all the same
    lineCalls() = {.hasDriver = true, .modemLines = TIOCM_RTS};
    EXPECT_EQ(kvOSSerialSetStat(line, KVSERIAL_DTR, 7), 0u);
    EXPECT_EQ(lineCalls().modemLines, TIOCM_RTS | TIOCM_DTR);
    EXPECT_EQ(kvOSSerialSetStat(line, KVSERIAL_DTR, 0), 0u);
    EXPECT_EQ(lineCalls().modemLines, TIOCM_RTS);
    for (const std::uint32_t selector : {0u, 1u, 4u, 6u}) {
        EXPECT_EQ(kvOSSerialSetStat(line, selector, 1), 0xFFFFFFFFu) << selector;
    }
    EXPECT_EQ(lineCalls().asked, (std::vector<std::string>{"DTR up", "DTR down"}));
    kvOSSerialClose(line);
}

}  // namespace
