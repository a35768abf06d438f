// The front panel: typed text as its bytes, and what its line brings as the rest of a reply.
//
// What must hold: no byte behind the 23 of a text or the 22 of a packet is written, nothing is read beyond the text,
// and a reply holds the bytes that came.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "fuzz/input.h"
#include "kvos/lcd.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::must;

void convert(const std::string& typed) {
    ExactBuffer source(typed);
    ExactBuffer bytes(23);
    const std::uint32_t count = lcdConvertInputStringToArray(source, reinterpret_cast<std::uint8_t*>(bytes.data()));
    must(count <= std::min<std::size_t>(23, typed.size()), "no character gives more than a byte");
    must((count == 0) == typed.empty(), "an empty text alone gives nothing");
}

/// The line ends behind these bytes, so that nothing is waited for.
void receive(const std::uint8_t* data, std::size_t size) {
    int ends[2];
    must(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "there is a line");
    must(write(ends[1], data, size) == static_cast<ssize_t>(size), "it takes the bytes");
    close(ends[1]);
    ghCOM = std::int64_t{ends[0]} + 1;
    COMMAND_PACKET packet{};
    const bool hasLength = lcdSaveReturnPacket(&packet, 0x46) == 0;
    must(hasLength == (size > 0), "a length is all that a reply needs");
    must(packet.data_length <= 20, "a reply holds at most 20 bytes");
    if (hasLength) must(std::memcmp(packet.data, data + 1, packet.data_length) == 0, "they are those that came");
    lcdCloseCom();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    convert(text.substr(0, text.find('\0')));
    receive(data, std::min<std::size_t>(size, 256));
    return 0;
}
