// One command out and, if it is awaited, its reply in.
//
// The first byte of a reply is awaited without limit, as the line is set. Once it is there, the rest has a second for
// each further byte: some systems hand out what has come at once, so that one read may not bring a whole reply, and a
// reply that breaks off must not hold the caller for ever.
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <poll.h>
#include <span>
#include <unistd.h>

#include "border/relaxed.h"
#include "devices/descriptor.h"
#include "devices/lcd_codes.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"

namespace kv::devices {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTries = 4;
constexpr useconds_t kPauseWithoutAByte_us = 10000;
constexpr std::chrono::milliseconds kSilence{1000};
constexpr std::uint8_t kMostReplyData = 20;  // with its CRC as much as the data of a packet
constexpr std::size_t kCrcSize = 2;
constexpr std::size_t kLargestFrame = 2 + KVLCD_DATA_SIZE + kCrcSize;

/// Whether something can be read before the line has been silent for that long. Interruptions do not count.
bool speaks(std::int64_t line, std::chrono::milliseconds silence) {
    const auto deadline = Clock::now() + silence;
    pollfd awaited{descriptorOf(line), POLLIN, 0};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int ready = poll(&awaited, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

/// Reads until the target is full, or the line fell silent or failed; the bytes read.
std::size_t readOn(std::int64_t line, std::span<std::uint8_t> target) {
    std::size_t count = 0;
    while (count < target.size() && speaks(line, kSilence)) {
        std::uint64_t got = 0;
        if (kvOSSerialRead(line, target.data() + count, target.size() - count, &got) == 0) break;
        count += got;
    }
    return count;
}

bool isHeadOfReply(std::uint8_t byte) { return (byte & 0xC0) == 0x40 && (byte & 0x3F) < kCommands; }

/// One try: whether the reply to the command came, which is in the packet then.
bool readReply(std::int64_t line, std::uint8_t command, COMMAND_PACKET& packet) {
    std::uint8_t head = 0;
    std::uint64_t got = 0;
    if (kvOSSerialRead(line, &head, 1, &got) == 0) {
        usleep(kPauseWithoutAByte_us);
        return false;
    }
    if (!isHeadOfReply(head)) return false;
    const bool isItsReply = (head & 0x3F) == (command & 0x3F);
    COMMAND_PACKET other{};
    return lcdSaveReturnPacket(isItsReply ? &packet : &other, head) == 0 && isItsReply;
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
    for (int i = 0; line != 0 && i < devices::kTries; ++i) {
        if (devices::readReply(line, command, *pPacket)) return 0;
    }
    errno = ETIMEDOUT;
    return -1;
}

std::int32_t lcdSaveReturnPacket(COMMAND_PACKET* pPacket, std::uint8_t bCode) {
    const std::int64_t line = kv::border::relaxedLoad(ghCOM);
    std::uint8_t told = 0;
    if (pPacket == nullptr || devices::readOn(line, {&told, 1}) == 0) return -1;
    const std::uint8_t length = std::min(told, devices::kMostReplyData);
    std::array<std::uint8_t, devices::kMostReplyData + devices::kCrcSize> rest{};
    const std::size_t came = devices::readOn(line, {rest.data(), length + devices::kCrcSize});
    pPacket->command = bCode;
    pPacket->data_length = static_cast<std::uint8_t>(std::min<std::size_t>(came, length));
    std::ranges::copy_n(rest.begin(), pPacket->data_length, pPacket->data);
    if (came == length + devices::kCrcSize) {
        pPacket->CRC = static_cast<std::uint16_t>(rest[length] | rest[length + 1u] << 8);
    }
    return 0;
}
