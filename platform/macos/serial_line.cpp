// Serial lines on macOS, by the names that open without waiting for a carrier.
//
// No machine of this project has run this file.
#include "platform/serial_line.h"

#include <array>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/time.h>

namespace kv::platform {
namespace {

// Built in, on a PCI card, then the USB adapters of four ports by their known serial numbers.
constexpr std::array kDevices{"/dev/cu.serial",
                              "/dev/cu.serial0",
                              "/dev/cu.serial1",
                              "/dev/cu.serial2",
                              "/dev/cu.serial3",
                              "/dev/cu.serial4",
                              "/dev/cu.serial5",
                              "/dev/cu.serial6",
                              "/dev/cu.serial7",
                              "/dev/cu.serial8",
                              "/dev/cu.serial9",
                              "/dev/cu.pci-serial0",
                              "/dev/cu.pci-serial1",
                              "/dev/cu.pci-serial2",
                              "/dev/cu.pci-serial3",
                              "/dev/cu.pci-serial4",
                              "/dev/cu.pci-serial5",
                              "/dev/cu.pci-serial6",
                              "/dev/cu.pci-serial7",
                              "/dev/cu.pci-serial8",
                              "/dev/cu.pci-serial9",
                              "/dev/cu.usbserial-0000203AA",
                              "/dev/cu.usbserial-0000203AB",
                              "/dev/cu.usbserial-0000105DA",
                              "/dev/cu.usbserial-0000105DB",
                              "/dev/cu.usbserial-0000101DA",
                              "/dev/cu.usbserial-0000101DB",
                              "/dev/cu.usbserial-0000201AA",
                              "/dev/cu.usbserial-0000201AB",
                              "/dev/cu.usbserial-0000103DA",
                              "/dev/cu.usbserial-0000103DB",
                              "/dev/cu.usbserial"};
static_assert(kDevices.size() == 32);

// IOSSDATALAT of the serial driver kit, whose header is not among the system's.
constexpr unsigned long kSetDataLatency = 0x80085400;

}  // namespace

std::span<const char* const> serialDevices() noexcept { return kDevices; }

void lowerReceiveLatency(int line) noexcept {
    unsigned long latency_us = 1;
    ioctl(line, kSetDataLatency, &latency_us);
}

void setTerminalReady(int line, bool on) noexcept { ioctl(line, on ? TIOCSDTR : TIOCCDTR); }

// With select, since poll did not take devices for long. Only a descriptor that no set holds is left to it.
int awaitInput(int line, std::chrono::milliseconds atMost) noexcept {
    const auto wait_ms = static_cast<int>(atMost.count());
    if (line >= FD_SETSIZE) {
        pollfd input{line, POLLIN, 0};
        return poll(&input, 1, wait_ms);
    }
    fd_set lines;
    FD_ZERO(&lines);
    FD_SET(line, &lines);
    timeval wait{wait_ms / 1000, wait_ms % 1000 * 1000};
    return select(line + 1, &lines, nullptr, nullptr, &wait);
}

}  // namespace kv::platform
