// The front panel: typed text as its bytes, and what comes from its line as the rest of a reply.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "kvos/lcd.h"

namespace {

constexpr std::uint8_t kUntouched = 0x5A;

void require(bool holds) {
    if (!holds) std::abort();
}

void convert(const std::string& typed) {
    std::uint8_t bytes[24];
    std::memset(bytes, kUntouched, sizeof bytes);
    const std::uint32_t count = lcdConvertInputStringToArray(typed.c_str(), bytes);
    require(count <= 23 && count <= std::strlen(typed.c_str()));
    require((count == 0) == (typed.c_str()[0] == '\0'));
    for (std::size_t i = count; i < sizeof bytes; ++i) require(bytes[i] == kUntouched);
}

/// The line ends behind these bytes, so that nothing is waited for.
void receive(const std::uint8_t* data, std::size_t size) {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    require(write(ends[1], data, size) == static_cast<ssize_t>(size));
    close(ends[1]);
    ghCOM = ends[0] + 1;
    COMMAND_PACKET packet{};
    const bool hasLength = lcdSaveReturnPacket(&packet, 0x46) == 0;
    require(hasLength == (size > 0));
    require(packet.data_length <= 20);
    require(std::memcmp(packet.data, data + (hasLength ? 1 : 0), packet.data_length) == 0);
    lcdCloseCom();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    convert(std::string(reinterpret_cast<const char*>(data), size));
    receive(data, size < 4096 ? size : 4096);
    return 0;
}
