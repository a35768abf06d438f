// Serial lines on Linux. A driver tells no latency in time: it has a flag for low latency, or it refuses.
#include "platform/serial_line.h"

#include <array>
#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace kv::platform {
namespace {

// Adapters for USB, then those that call themselves modems.
constexpr std::array kDevices{"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyUSB2", "/dev/ttyUSB3", "/dev/ttyUSB4",
                              "/dev/ttyUSB5", "/dev/ttyUSB6", "/dev/ttyUSB7", "/dev/ttyUSB8", "/dev/ttyUSB9",
                              "/dev/ttyACM0", "/dev/ttyACM1", "/dev/ttyACM2", "/dev/ttyACM3", "/dev/ttyACM4",
                              "/dev/ttyACM5", "/dev/ttyACM6", "/dev/ttyACM7", "/dev/ttyACM8", "/dev/ttyACM9"};
static_assert(kDevices.size() == 20);

}  // namespace

std::span<const char* const> serialDevices() noexcept { return kDevices; }

void lowerReceiveLatency(int line) noexcept {
    serial_struct state{};
    if (ioctl(line, TIOCGSERIAL, &state) != 0) return;
    state.flags |= ASYNC_LOW_LATENCY;
    ioctl(line, TIOCSSERIAL, &state);
}

void setTerminalReady(int line, bool on) noexcept {
    const int lines = TIOCM_DTR;
    ioctl(line, on ? TIOCMBIS : TIOCMBIC, &lines);
}

int awaitInput(int line, std::chrono::milliseconds atMost) noexcept {
    pollfd input{line, POLLIN, 0};
    return poll(&input, 1, static_cast<int>(atMost.count()));
}

}  // namespace kv::platform
