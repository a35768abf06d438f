// What the library asks of a line: this program's own calls stand ahead of the system's, note the question and pass it
// on.
//
// A pseudo-terminal has no modem lines, no latency and no size of characters, and never holds back what it is to send:
// what it can't show is read here, and what it can't do is answered here. Nothing is answered unless a test asks for
// it.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <termios.h>
#include <vector>

namespace kvtest {

struct LineCalls {
    std::vector<std::string> asked{};  // in their order, as "flush input" or "DTR up"
    termios settings{};                // what tcsetattr was last given
    bool hasDriver = false;            // modem lines and latency are answered here, as a driver would
    int modemLines = 0;
    int driverFlags = 0;
    std::function<void()> onDrain{};  // when a line is to be empty
    bool isDrainInterrupted = false;  // as by a signal

    /// Ahead of each wait for this descriptor's input, with the milliseconds; what it gives is the answer.
    int awaitedLine = -1;
    std::function<std::optional<int>(int wait_ms)> onWait{};

    std::optional<int> unsent{};                // bytes that the driver says it has not sent
    std::function<int(unsigned us)> onPause{};  // in place of the pause

    /// Others may open a line that is taken alone: a pseudo-terminal stays so for as long as its other side is open.
    bool isShared = false;

    /// The names of terminals, and "ttyS..." anywhere, mean these or nothing. All are noted, in the order of the opens.
    bool hasOwnDevices = false;
    std::map<std::string, std::string> devices{};
    std::vector<std::string> opened{};
};

/// Those of this process since its start, or since they were last made anew.
LineCalls& lineCalls();

}  // namespace kvtest
