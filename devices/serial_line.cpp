// Opening a line, and what is done with an open one.
//
// What a signal interrupts is not repeated: the interruption is how a caller gets out of a read that waits for its
// first byte.
#include "platform/serial_line.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <termios.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"
#include "devices/descriptor.h"
#include "devices/read_on.h"
#include "devices/serial_links.h"
#include "kvos/attributes.h"
#include "kvos/serial.h"

namespace kv::devices {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::uint32_t kPorts = 100;  // "ttyS0" to "ttyS99"

/// Port 0 is a deck's own line where the machine has one.
const char* defaultDevice() {
    for (const char* device : {"/dev/tty.Kona Serial", "/dev/tty.RS422 Deck Control"}) {
        if (kvOSFileExists(device) != 0) return device;
    }
    return "/dev/ttyS0";
}

std::int64_t openNumbered(std::uint32_t number) {
    border::PathBuffer path;
    if (linkPath(path, number) && kvOSFileExists(path) != 0) return kvOSSerialOpenString(path);
    std::snprintf(path, sizeof path, "/dev/ttyS%u", number);
    return kvOSSerialOpenString(path);
}

/// One read or write of the system, told as a count and whether anything was moved at all.
std::uint32_t told(ssize_t moved, std::uint64_t& count) {
    count = moved > 0 ? static_cast<std::uint64_t>(moved) : 0;
    return moved > 0 ? 1 : 0;
}

}  // namespace
}  // namespace kv::devices

namespace devices = kv::devices;
namespace platform = kv::platform;

std::int64_t kvOSSerialOpen(std::uint32_t dwPort) {
    kvOSSerialSetupSystem(0);
    if (dwPort == 0) return kvOSSerialOpenString(devices::defaultDevice());
    if (dwPort <= devices::kPorts) return devices::openNumbered(dwPort - 1);
    errno = ENODEV;
    return 0;
}

std::int64_t kvOSSerialOpenString(const char* pPath) {
    if (pPath == nullptr) {
        errno = EINVAL;
        return 0;
    }
    kvOSSerialSetupSystem(0);
    // Without blocking, since a line may wait for a carrier to open. Reads are to block again after that.
    const int line = open(pPath, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (line < 0) return 0;
    const kv::border::KeepErrno untouched;
    const std::int64_t handle = std::int64_t{line} + 1;
    platform::takeAlone(line);
    fcntl(line, F_SETFL, 0);
    kvOSSerialSetup(handle, 38400, 8, 1, 1);
    tcflush(line, TCIOFLUSH);
    return handle;
}

std::uint32_t kvOSSerialDirection() { return devices::kFailed; }

std::int32_t kvOSSerialFlush(std::int64_t hSerial, std::uint32_t fRx, std::uint32_t fTx) {
    int queues = TCOFLUSH;  // meant: also with both clear
    if (fRx != 0) queues = fTx != 0 ? TCIOFLUSH : TCIFLUSH;
    return tcflush(devices::descriptorOf(hSerial), queues);
}

std::int32_t kvOSSerialClose(std::int64_t hSerial) {
    const kv::border::KeepErrno untouched;
    close(devices::descriptorOf(hSerial));
    return 0;
}

std::uint32_t kvOSSerialWrite(std::int64_t hSerial, const void* pBuffer, std::uint64_t qwCount,
                              std::uint64_t* pqwWritten) {
    if (qwCount == 0 || pBuffer == nullptr || pqwWritten == nullptr) return 0;
    return devices::told(write(devices::descriptorOf(hSerial), pBuffer, qwCount), *pqwWritten);
}

std::uint32_t kvOSSerialRead(std::int64_t hSerial, void* pBuffer, std::uint64_t qwCount, std::uint64_t* pqwRead) {
    if (qwCount == 0 || pBuffer == nullptr || pqwRead == nullptr) return 0;
    const int line = devices::descriptorOf(hSerial);
    if (devices::told(read(line, pBuffer, qwCount), *pqwRead) == 0) return 0;
    const std::span rest(static_cast<std::uint8_t*>(pBuffer) + *pqwRead, qwCount - *pqwRead);
    *pqwRead += devices::readOn(line, rest, devices::Signals::endIt);
    return 1;
}

std::uint32_t kvOSSerialGetStat(std::int64_t hSerial, std::uint32_t dwSelector) {
    if (dwSelector != KVSERIAL_MODEM_LINES) return 0;
    return platform::modemLines(devices::descriptorOf(hSerial));
}

std::uint32_t kvOSSerialSetStat(std::int64_t hSerial, std::uint32_t dwSelector, std::uint32_t fOn) {
    if (dwSelector != KVSERIAL_DTR) return devices::kFailed;
    platform::setTerminalReady(devices::descriptorOf(hSerial), fOn != 0);
    return 0;
}
