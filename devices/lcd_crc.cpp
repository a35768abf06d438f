// The check sum of the panel's frames, a byte at a time through a table.
#include <array>
#include <cstdint>

#include "kvos/lcd.h"

namespace kv::devices {
namespace {

/// What a byte does to the sum: eight steps of the reflected polynomial.
consteval std::array<std::uint16_t, 256> table() {
    constexpr std::uint32_t kPolynomial = 0x8408;
    std::array<std::uint16_t, 256> entries{};
    for (std::uint32_t byte = 0; byte < entries.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit) value = (value & 1) != 0 ? value >> 1 ^ kPolynomial : value >> 1;
        entries[byte] = static_cast<std::uint16_t>(value);
    }
    return entries;
}

constexpr auto kTable = table();
static_assert(kTable[0] == 0x0000 && kTable[1] == 0x1189 && kTable[2] == 0x2312 && kTable[3] == 0x329B);

}  // namespace
}  // namespace kv::devices

std::uint16_t get_crc(const std::uint8_t* pBuffer, std::uint32_t dwLength) {
    if (pBuffer == nullptr) return 0;
    std::uint32_t crc = 0xFFFF;
    for (std::uint32_t i = 0; i < dwLength; ++i) crc = kv::devices::kTable[(crc ^ pBuffer[i]) & 0xFF] ^ crc >> 8;
    return static_cast<std::uint16_t>(~crc);
}
