// A pseudo-terminal whose other side is the test itself.
#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace kvtest {

class PseudoTerminal {
public:
    PseudoTerminal() : other_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_GE(other_, 0);
        EXPECT_EQ(grantpt(other_), 0);
        EXPECT_EQ(unlockpt(other_), 0);
        device_ = ptsname(other_);
    }
    ~PseudoTerminal() { hangUp(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    const std::string& device() const { return device_; }

    /// The line's settings as the other side sees them.
    termios settings() const {
        termios read{};
        EXPECT_EQ(tcgetattr(other_, &read), 0);
        return read;
    }

    void write(std::string_view text) const {
        EXPECT_EQ(::write(other_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// What came from the line, up to `count` bytes: waits for all of them.
    std::string read(std::size_t count) const {
        std::string text(count, '\0');
        std::size_t at = 0;
        while (at < count) {
            const ssize_t got = ::read(other_, text.data() + at, count - at);
            if (got <= 0) break;
            at += static_cast<std::size_t>(got);
        }
        text.resize(at);
        return text;
    }
    void hangUp() {
        if (other_ >= 0) close(other_);
        other_ = -1;
    }

private:
    int other_;
    std::string device_;
};

}  // namespace kvtest
