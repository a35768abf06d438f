// How a line is set: raw, and with nothing kept of what was set before.
//
// No rate is refused. A rate that is not in the list becomes 38400, and a value that no field knows becomes the field's
// last resort: 5 bits, odd parity, one stop bit.
#include <array>
#include <cstdint>
#include <termios.h>

#include "border/guard.h"
#include "devices/descriptor.h"
#include "kvos/serial.h"
#include "platform/serial_line.h"

namespace kv::devices {
namespace {

struct Rate {
    std::uint32_t baud;
    speed_t speed;  // the system's own number for it
};

constexpr std::array<Rate, 18> kRates{{{0, B0},
                                       {50, B50},
                                       {75, B75},
                                       {110, B110},
                                       {134, B134},
                                       {150, B150},
                                       {200, B200},
                                       {300, B300},
                                       {600, B600},
                                       {1200, B1200},
                                       {1800, B1800},
                                       {2400, B2400},
                                       {4800, B4800},
                                       {9600, B9600},
                                       {19200, B19200},
                                       {38400, B38400},
                                       {57600, B57600},
                                       {115200, B115200}}};

speed_t speedOf(std::uint32_t baud) {
    for (const Rate& rate : kRates) {
        if (rate.baud == baud) return rate.speed;
    }
    return B38400;
}

tcflag_t sizeOf(std::uint32_t bits) {
    switch (bits) {
        case 8:
            return CS8;
        case 7:
            return CS7;
        case 6:
            return CS6;
        default:
            return CS5;
    }
}

tcflag_t parityOf(std::uint32_t parity) {
    if (parity == 0) return 0;
    return parity == 2 ? PARENB : PARENB | PARODD;
}

}  // namespace
}  // namespace kv::devices

namespace devices = kv::devices;

std::int32_t kvOSSerialSetup(std::int64_t hSerial, std::uint32_t dwBaud, std::uint32_t dwBits, std::uint32_t dwParity,
                             std::uint32_t dwStop) {
    const kv::border::KeepErrno untouched;
    const int line = devices::descriptorOf(hSerial);
    termios settings{};
    settings.c_cflag = CLOCAL | CREAD | devices::sizeOf(dwBits) | devices::parityOf(dwParity);
    if (dwStop == 2) settings.c_cflag |= CSTOPB;
    settings.c_cc[VMIN] = 1;    // a read waits for its first byte without limit,
    settings.c_cc[VTIME] = 10;  // and at most a second, in tenths, for each further one
    cfsetispeed(&settings, devices::speedOf(dwBaud));
    cfsetospeed(&settings, devices::speedOf(dwBaud));
    tcsetattr(line, TCSANOW, &settings);
    kv::platform::setTerminalReady(line, true);
    kv::platform::lowerReceiveLatency(line);
    return 0;
}

std::int32_t kvOSSerialSetTimeOuts(std::int64_t hSerial) {
    const kv::border::KeepErrno untouched;
    kv::platform::lowerReceiveLatency(devices::descriptorOf(hSerial));
    return 0;
}
