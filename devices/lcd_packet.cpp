// One command out and, if it is awaited, its reply in.
//
// The first byte of a reply is awaited without limit, as the line is set. Once it is there, the rest has a second for
// each further byte, signals or not. Without as much as its length after that, nothing more is awaited: a panel that
// fell silent in the middle of a reply must not hold the caller for ever.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unistd.h>

#include "border/relaxed.h"
#include "devices/descriptor.h"
#include "devices/lcd_codes.h"
#include "devices/read_on.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"

namespace kv::devices {
namespace {

constexpr int kTries = 4;
constexpr useconds_t kPauseWithoutAByte_us = 10000;
constexpr std::uint8_t kMostReplyData = 20;  // with its CRC as much as the data of a packet
constexpr std::size_t kCrcSize = 2;
constexpr std::size_t kLargestFrame = 2 + KVLCD_DATA_SIZE + kCrcSize;

bool isHeadOfReply(std::uint8_t byte) { return (byte & 0xC0) == 0x40 && (byte & 0x3F) < kCommands; }

enum class Try { hasReply, hasNone, brokeOff };

/// One try for the reply to the command, which is in the packet then.
Try readReply(std::int64_t line, std::uint8_t command, COMMAND_PACKET& packet) {
    std::uint8_t head = 0;
    std::uint64_t got = 0;
    if (kvOSSerialRead(line, &head, 1, &got) == 0) {
        usleep(kPauseWithoutAByte_us);
        return Try::hasNone;
    }
    if (!isHeadOfReply(head)) return Try::hasNone;
    const bool isItsReply = (head & 0x3F) == (command & 0x3F);
    COMMAND_PACKET other{};
    if (lcdSaveReturnPacket(isItsReply ? &packet : &other, head) != 0) return Try::brokeOff;
    return isItsReply ? Try::hasReply : Try::hasNone;
}

bool awaitReply(std::int64_t line, std::uint8_t command, COMMAND_PACKET& packet) {
    Try last = Try::hasNone;
    for (int i = 0; last == Try::hasNone && i < kTries; ++i) last = readReply(line, command, packet);
    return last == Try::hasReply;
}

void writeFrame(std::int64_t line, const COMMAND_PACKET& packet, std::span<const std::uint8_t> checked) {
    std::array<std::uint8_t, kLargestFrame> frame;
    const auto end = std::ranges::copy(checked, frame.begin()).out;
    end[0] = static_cast<std::uint8_t>(packet.CRC & 0xFF);
    end[1] = static_cast<std::uint8_t>(packet.CRC >> 8);
    std::uint64_t written = 0;
    kvOSSerialWrite(line, frame.data(), checked.size() + kCrcSize, &written);  // meant: its result is not looked at
}

}  // namespace
}  // namespace kv::devices

namespace devices = kv::devices;

std::int32_t send_packet(COMMAND_PACKET* pPacket, std::uint64_t fWait) {
    if (pPacket == nullptr || pPacket->data_length > KVLCD_DATA_SIZE) {
        errno = EINVAL;
        return -1;
    }
    std::array<std::uint8_t, 2 + KVLCD_DATA_SIZE> checked{pPacket->command, pPacket->data_length};
    std::ranges::copy_n(pPacket->data, pPacket->data_length, checked.begin() + 2);
    const std::uint32_t length = 2u + pPacket->data_length;
    pPacket->CRC = get_crc(checked.data(), length);

    const std::int64_t line = kv::border::relaxedLoad(ghCOM);
    const std::uint8_t command = pPacket->command;  // the reply goes over it
    if (line != 0) devices::writeFrame(line, *pPacket, {checked.data(), length});
    if (fWait == 0) return 0;
    if (line != 0 && devices::awaitReply(line, command, *pPacket)) return 0;
    errno = ETIMEDOUT;
    return -1;
}

std::int32_t lcdSaveReturnPacket(COMMAND_PACKET* pPacket, std::uint8_t bCode) {
    const int line = devices::descriptorOf(kv::border::relaxedLoad(ghCOM));
    if (pPacket == nullptr || line < 0) {
        errno = pPacket == nullptr ? EINVAL : EBADF;
        return -1;
    }
    std::uint8_t told = 0;
    if (devices::readOn(line, {&told, 1}, devices::Signals::doNotCount) == 0) {
        errno = ETIMEDOUT;
        return -1;
    }
    const std::uint8_t length = std::min(told, devices::kMostReplyData);
    std::array<std::uint8_t, devices::kMostReplyData + devices::kCrcSize> rest{};
    const std::size_t came =
        devices::readOn(line, {rest.data(), length + devices::kCrcSize}, devices::Signals::doNotCount);
    pPacket->command = bCode;
    pPacket->data_length = static_cast<std::uint8_t>(std::min<std::size_t>(came, length));
    std::ranges::copy_n(rest.begin(), pPacket->data_length, pPacket->data);
    if (came == length + devices::kCrcSize) {
        pPacket->CRC = static_cast<std::uint16_t>(rest[length] | rest[length + 1u] << 8);
    }
    return 0;
}
