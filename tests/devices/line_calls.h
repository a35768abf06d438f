// What the library asks of a line: this program's own calls stand ahead of the system's, note the question and pass it
// on.
//
// A pseudo-terminal has no modem lines, no latency and no size of characters: what it can't show is read here.
#pragma once

#include <functional>
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
};

/// Those of this process since its start, or since they were last made anew.
LineCalls& lineCalls();

}  // namespace kvtest
