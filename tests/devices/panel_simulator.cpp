// A panel at the other end of a pseudo-terminal, told what to do by lines on its standard input.
//
//   next answer | silence | hang up | late | HEX...   what the next command gets; one line a command, in their order.
//                                                      Commands beyond these lines are answered.
//   hang up                                            the line ends at once
//   go                                                 the answer that a "late" command still waits for
//   speed BAUD                                         the panel's own speed; 19200 at start
//
// It tells on standard output: "at DEVICE" at its start, "frame BAUD HEX" for each whole command that came at its own
// speed, "noise BAUD HEX" for bytes that came at another. As a panel does, it looks for the next frame whose check sum
// is right, and changes its speed behind its reply to that command. Ends with its standard input.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <unistd.h>

#include "devices/frame.h"

namespace {

using kvtest::Bytes;

constexpr std::uint8_t kPing = 0x00;
constexpr std::uint8_t kPollKeys = 0x17;
constexpr std::uint8_t kReadKeys = 0x18;
constexpr std::uint8_t kSetSpeed = 0x21;
constexpr std::size_t kMostData = 22;
constexpr int kLookAgain_ms = 2;  // a line that nobody has open can't be waited for

class Panel {
public:
    Panel() : line_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (line_ < 0 || grantpt(line_) != 0 || unlockpt(line_) != 0) std::exit(1);
        std::printf("at %s\n", ptsname(line_));
        std::fflush(stdout);
    }

    void run() {
        fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
        while (obeyAll()) {
            pollfd either[] = {{STDIN_FILENO, POLLIN, 0}, {line_, POLLIN, 0}};
            poll(either, line_ >= 0 ? 2 : 1, -1);
            if ((either[1].revents & POLLIN) != 0) {
                listen();
            } else if (either[1].revents != 0) {
                poll(either, 1, kLookAgain_ms);
            }
        }
    }

private:
    /// What stands on standard input goes ahead of every frame: it was written ahead of it. False at its end.
    bool obeyAll() {
        char block[4096];
        ssize_t got;
        while ((got = read(STDIN_FILENO, block, sizeof block)) > 0)
            orders_.append(block, static_cast<std::size_t>(got));
        for (std::size_t end; (end = orders_.find('\n')) != std::string::npos; orders_.erase(0, end + 1)) {
            obey(orders_.substr(0, end));
        }
        return got < 0;
    }

    void obey(const std::string& order) {
        if (order.starts_with("next ")) next_.push_back(order.substr(5));
        if (order.starts_with("speed ")) baud_ = static_cast<unsigned>(std::atoi(order.c_str() + 6));
        if (order == "go") say(late_);
        if (order == "hang up") hangUp();
    }

    void listen() {
        std::uint8_t block[4096];
        const ssize_t got = read(line_, block, sizeof block);
        if (got <= 0) return;
        obeyAll();
        const Bytes came(block, block + got);
        if (const unsigned baud = lineSpeed(); baud != baud_) return tell("noise", baud, came);
        heard_.insert(heard_.end(), came.begin(), came.end());
        while (takeFrame()) {
        }
    }

    /// The speed that the other side has set.
    unsigned lineSpeed() const {
        termios settings{};
        tcgetattr(line_, &settings);
        switch (cfgetospeed(&settings)) {
            case B19200:
                return 19200;
            case B115200:
                return 115200;
            default:
                return 0;
        }
    }

    /// Drops a byte, or takes a frame; false while more has to come.
    bool takeFrame() {
        if (heard_.size() < 4) return false;
        const std::size_t size = std::size_t{heard_[1]} + 4;
        if (heard_[1] <= kMostData && heard_.size() < size) return false;
        const Bytes data(heard_.begin() + 2,
                         heard_.begin() + static_cast<std::ptrdiff_t>(std::min(size, heard_.size())) - 2);
        const bool isOne =
            heard_[1] <= kMostData && kvtest::frameOf(heard_[0], data) ==
                                          Bytes(heard_.begin(), heard_.begin() + static_cast<std::ptrdiff_t>(size));
        if (isOne) answer(heard_[0], data);
        heard_.erase(heard_.begin(), heard_.begin() + static_cast<std::ptrdiff_t>(isOne ? size : 1));
        return true;
    }

    void answer(std::uint8_t command, const Bytes& data) {
        std::string how = "answer";
        if (!next_.empty()) {
            how = next_.front();
            next_.pop_front();
        }
        const Bytes reply = kvtest::replyTo(command, answerTo(command, data));
        const unsigned spoken = baud_;
        if (command == kSetSpeed && data.size() == 1) baud_ = data[0] == 1 ? 115200 : 19200;
        if (how == "answer") say(reply);
        if (how == "late") late_ = reply;
        if (how == "hang up") hangUp();
        if (how.find_first_not_of("0123456789ABCDEF") == std::string::npos) say(kvtest::bytesOf(how));
        tell("frame", spoken, kvtest::frameOf(command, data));
    }

    static Bytes answerTo(std::uint8_t command, const Bytes& data) {
        if (command == kPing || command == kPollKeys) return data;
        if (command == kReadKeys) return {0x01, 0x20, 0x08};
        return {};
    }

    void hangUp() {
        close(line_);
        line_ = -1;
    }

    void say(const Bytes& bytes) const {
        const ssize_t said = write(line_, bytes.data(), bytes.size());
        if (said < 0) std::perror("panel");
    }

    static void tell(const char* what, unsigned baud, const Bytes& bytes) {
        std::printf("%s %u %s\n", what, baud, kvtest::hexOf(bytes).c_str());
        std::fflush(stdout);
    }

    int line_;
    unsigned baud_ = 19200;
    Bytes heard_;
    Bytes late_;
    std::string orders_;
    std::deque<std::string> next_;
};

}  // namespace

int main() {
    Panel().run();
    return 0;
}
