// The panel's line: opening it at whichever speed the panel has, and closing it.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <termios.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "devices/descriptor.h"
#include "errlog.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"
#include "platform/serial_line.h"

std::int64_t ghCOM = 0;
std::uint32_t gdwBAUDRate = 19200;
std::uint64_t gfDefaultWait = 0;
COMMAND_PACKET incoming_response = {};

namespace kv::devices {
namespace {

constexpr std::uint32_t kSlow = 19200;
constexpr std::uint32_t kFast = 115200;
constexpr useconds_t kLookAgain_us = 5000;
constexpr int kMostLooks = 200;  // a second of them

// What callers in other languages rely on.
static_assert(sizeof(COMMAND_PACKET) == 26 && offsetof(COMMAND_PACKET, CRC) == 24);

void warn(const char* text) { ErrFmtOut(KVERR_CLASS_WARNING, nullptr, 0, "WARNING(kvOSLcd): %s\n\r", text); }

void setLine(std::int64_t line, std::uint32_t baud) {
    kvOSSerialSetup(line, baud, 8, 0, 1);
    kvOSSerialSetTimeOuts(line);  // which asks for the shortest latency
}

/// Whether the driver has nothing left to send. Waits for that, at most a second, and until a signal's handler comes.
bool isSent(int line) {
    for (int i = 0; platform::unsentBytes(line) != 0; ++i) {
        if (i == kMostLooks || usleep(kLookAgain_us) != 0) return false;
    }
    return tcdrain(line) == 0;  // what the device itself still holds
}

/// A frame that was just written is sent before the line is closed: the flush of the next open would take it. A line
/// that does not send loses it here, or the close would wait for it as well.
void closeWhenSent(std::int64_t line) {
    if (!isSent(descriptorOf(line))) kvOSSerialFlush(line, 0, 1);
    kvOSSerialClose(line);
}

template <class OpenLine>
std::int64_t openPanel(const OpenLine& openLine, std::uint32_t baud) {
    std::int64_t line = openLine();
    if (line == 0) return -1;
    border::relaxedStore(ghCOM, line);
    setLine(line, baud == kSlow ? kFast : kSlow);
    lcdSetBaudRate(baud == kSlow ? 0 : 1);  // whatever the reply: the panel may be at its new speed already
    closeWhenSent(line);
    line = openLine();
    border::relaxedStore(ghCOM, line);  // 0 as well: the line that it holds is closed
    return lcdFinishOpen(line);
}

}  // namespace
}  // namespace kv::devices

namespace devices = kv::devices;

std::int64_t lcdOpenCom(std::uint32_t dwPort, std::uint32_t dwBaud) {
    if (dwBaud == devices::kSlow) ErrOut("LCD opening com %ld ", static_cast<long>(dwPort));
    return devices::openPanel([dwPort] { return kvOSSerialOpen(dwPort); }, dwBaud);
}

std::int64_t lcdOpenComString(const char* pPath, std::uint32_t dwBaud) {
    if (dwBaud == devices::kSlow && pPath != nullptr) ErrOut("LCD opening com <%s> ", pPath);
    return devices::openPanel([pPath] { return kvOSSerialOpenString(pPath); }, dwBaud);
}

std::int64_t lcdFinishOpen(std::int64_t hSerial) {
    if (hSerial == 0) {
        devices::warn("Unable to open front panel COM port.");
        return -1;
    }
    devices::setLine(hSerial, kv::border::relaxedLoad(gdwBAUDRate));
    if (lcdPing() == 0) return hSerial;
    const kv::border::KeepErrno noReply;
    devices::warn("Front Panel LCD NOT FOUND");
    kvOSSerialClose(hSerial);
    if (kv::border::relaxedLoad(ghCOM) == hSerial) kv::border::relaxedStore(ghCOM, std::int64_t{0});
    return -1;
}

std::int32_t lcdCloseCom() {
    kvOSSerialClose(kv::border::relaxedLoad(ghCOM));
    kv::border::relaxedStore(ghCOM, std::int64_t{0});
    return 0;
}
