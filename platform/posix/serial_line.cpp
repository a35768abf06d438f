// What Linux and macOS ask of a line in the same words. The rest of the header is in the file of each system.
#include "platform/serial_line.h"

#include <sys/ioctl.h>

namespace kv::platform {

void takeAlone(int line) noexcept { ioctl(line, TIOCEXCL); }

std::uint32_t modemLines(int line) noexcept {
    int lines = 0;
    return ioctl(line, TIOCMGET, &lines) == 0 ? static_cast<std::uint32_t>(lines) : 0;
}

std::uint32_t unsentBytes(int line) noexcept {
    int count = 0;
    return ioctl(line, TIOCOUTQ, &count) == 0 ? static_cast<std::uint32_t>(count) : 0;
}

}  // namespace kv::platform
