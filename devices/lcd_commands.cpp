// The panel's commands: each is one frame, or a few, with what the caller gave in its data.
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "border/relaxed.h"
#include "devices/lcd_codes.h"
#include "kvos/lcd.h"

// Eight characters that make one picture of four by two, rows from the top, the low six bits of each from the left.
constexpr std::uint8_t korvaneD[64] = {
    0x00, 0x00, 0x10, 0x2F, 0x2F, 0x3F, 0x10, 0x00,  // 0
    0x00, 0x3F, 0x3F, 0x30, 0x30, 0x30, 0x30, 0x30,  // 1
    0x00, 0x20, 0x30, 0x38, 0x1C, 0x0C, 0x0F, 0x0F,  // 2
    0x00, 0x00, 0x00, 0x00, 0x10, 0x18, 0x3E, 0x3F,  // 3
    0x10, 0x2F, 0x2F, 0x3F, 0x10, 0x00, 0x00, 0x00,  // 4
    0x30, 0x30, 0x30, 0x30, 0x3F, 0x3F, 0x00, 0x00,  // 5
    0x0F, 0x0C, 0x1C, 0x38, 0x30, 0x20, 0x00, 0x00,  // 6
    0x3E, 0x18, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00,  // 7
};

namespace kv::devices {
namespace {

constexpr std::size_t kRows = 8;             // of a character
constexpr std::uint32_t kPolledKeys = 0x2F;  // meant: without bit 4
constexpr std::uint8_t kSignOfLife[] = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
static_assert(sizeof korvaneD % kRows == 0 && 1 + kRows <= KVLCD_DATA_SIZE && sizeof kSignOfLife <= KVLCD_DATA_SIZE);

COMMAND_PACKET packetOf(std::uint8_t command, std::span<const std::uint8_t> data) {
    COMMAND_PACKET packet{};
    packet.command = command;
    packet.data_length = static_cast<std::uint8_t>(data.size());
    std::ranges::copy(data, packet.data);
    return packet;
}

std::int32_t send(COMMAND_PACKET packet) { return send_packet(&packet, border::relaxedLoad(gfDefaultWait)); }

std::int32_t send(std::uint8_t command, std::initializer_list<std::uint8_t> data = {}) {
    return send(packetOf(command, {data.begin(), data.size()}));
}

}  // namespace
}  // namespace kv::devices

namespace devices = kv::devices;

std::int32_t lcdPing() { return devices::send(devices::packetOf(devices::kPing, devices::kSignOfLife)); }

std::int32_t lcdSetBaudRate(std::uint8_t bIndex) { return devices::send(devices::kSetSpeed, {bIndex}); }

std::int32_t lcdStoreAsBoot() { return devices::send(devices::kStoreAsBoot); }

std::int32_t lcdClear() { return devices::send(devices::kClear); }

std::int32_t lcdSendText(std::uint8_t bRow, std::uint8_t bColumn, const std::uint8_t* pText, std::uint32_t dwLength) {
    if (dwLength > KVLCD_TEXT_SIZE || (pText == nullptr && dwLength != 0)) {
        errno = EINVAL;
        return -1;
    }
    COMMAND_PACKET packet{};
    packet.command = devices::kShowText;
    packet.data_length = static_cast<std::uint8_t>(dwLength + 2);
    packet.data[0] = bColumn;
    packet.data[1] = bRow;
    std::copy_n(pText, dwLength, packet.data + 2);
    return devices::send(packet);
}

std::int32_t lcdConfigureKeyPolling(std::uint32_t dwMask) {
    const auto mask = static_cast<std::uint8_t>(dwMask & devices::kPolledKeys);
    const std::uint8_t data[] = {mask, mask};
    COMMAND_PACKET packet = devices::packetOf(devices::kPollKeys, data);
    if (send_packet(&packet, kv::border::relaxedLoad(gfDefaultWait)) != 0) return -1;
    return packet.data[1];
}

std::int32_t lcdReadKeyPress(std::uint64_t fWait) {
    COMMAND_PACKET packet = devices::packetOf(devices::kReadKeys, {});
    send_packet(&packet, fWait);
    return 0;  // meant: whatever the panel said
}

std::int32_t lcdReadResponses(std::uint64_t fWait) { return lcdReadKeyPress(fWait); }

std::int32_t lcdSetLED(std::uint8_t bLed, std::uint8_t bLevel1, std::uint8_t bLevel2) {
    devices::send(devices::kSetLed, {static_cast<std::uint8_t>(12 - 2 * bLed), bLevel1});
    devices::send(devices::kSetLed, {static_cast<std::uint8_t>(11 - 2 * bLed), bLevel2});
    return 0;  // meant: whatever became of the two
}

std::int32_t lcdSetKorvaneDGraphic() {
    for (std::size_t index = 0; index < sizeof korvaneD / devices::kRows; ++index) {
        std::uint8_t data[1 + devices::kRows] = {static_cast<std::uint8_t>(index)};
        std::copy_n(korvaneD + index * devices::kRows, devices::kRows, data + 1);
        devices::send(devices::packetOf(devices::kSetCharacter, data));
    }
    return 0;  // meant: whatever became of them
}
