// One command and its reply: what goes over the line, and which of all that may come back counts as the reply.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/ioctl.h>
#include <thread>

#include "devices/line_calls.h"
#include "devices/panel.h"
#include "devices/pseudo_terminal.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"

namespace {

using namespace kvtest;

constexpr std::uint8_t kClear = 0x06;
constexpr std::uint8_t kReadKeys = 0x18;
const Bytes kOther = replyTo(kClear, {1, 2, 3});

COMMAND_PACKET packetOf(std::uint8_t command, const Bytes& data = {}) {
    COMMAND_PACKET packet{};
    packet.command = command;
    packet.data_length = static_cast<std::uint8_t>(data.size());
    std::copy(data.begin(), data.end(), packet.data);
    return packet;
}

Bytes dataOf(const COMMAND_PACKET& packet) { return {packet.data, packet.data + packet.data_length}; }

/// Keeps the number of bytes in the reply's data and counts up in it.
Bytes counted(std::uint8_t count) {
    Bytes data(count);
    for (std::uint8_t i = 0; i < count; ++i) data[i] = static_cast<std::uint8_t>(i + 1);
    return data;
}

class LcdPacket : public ::testing::Test {
protected:
    LcdPacket() {
        ghCOM = kvOSSerialOpenString(panel_.device().c_str());
        EXPECT_GT(ghCOM, 0);
        kvOSSerialSetup(ghCOM, 19200, 8, 0, 1);
    }
    ~LcdPacket() override {
        lineCalls() = {};
        lcdCloseCom();
    }

    /// What becomes of each wait for a further byte.
    template <class OnWait>
    static void atEachWait(const OnWait& onWait) {
        lineCalls().awaitedLine = static_cast<int>(ghCOM - 1);
        lineCalls().onWait = [onWait](int) -> std::optional<int> { return onWait(); };
    }

    std::int32_t readKeys() {
        packet_ = packetOf(kReadKeys);
        return send_packet(&packet_, 1);
    }
    /// All that is still on the line, up to the end of these bytes.
    static Bytes left(std::size_t count) {
        Bytes bytes(count);
        std::size_t at = 0;
        std::uint64_t got = 0;
        while (at < count && kvOSSerialRead(ghCOM, bytes.data() + at, count - at, &got) != 0) at += got;
        return bytes;
    }
    static int unread() {
        int count = -1;
        ioctl(static_cast<int>(ghCOM - 1), FIONREAD, &count);
        return count;
    }

    Panel panel_;
    COMMAND_PACKET packet_{};
};

TEST_F(LcdPacket, GoesOutAsOneFrame) {
    for (const std::uint8_t length : Bytes{0, 1, 16, 22}) {
        COMMAND_PACKET packet = packetOf(0x1F, counted(length));
        EXPECT_EQ(send_packet(&packet, 0), 0);
        EXPECT_EQ(panel_.saw(), Panel::frame(19200, 0x1F, counted(length)));
        const Bytes frame = frameOf(0x1F, counted(length));
        EXPECT_EQ(packet.CRC, frame[length + 2u] | frame[length + 3u] << 8) << int{length};
    }
}

TEST_F(LcdPacket, TakesTheReply) {
    EXPECT_EQ(readKeys(), 0);
    EXPECT_EQ(packet_.command, 0x40 | kReadKeys);
    EXPECT_EQ(dataOf(packet_), (Bytes{0x01, 0x20, 0x08}));
    const Bytes reply = replyTo(kReadKeys, dataOf(packet_));
    EXPECT_EQ(packet_.CRC, reply[5] | reply[6] << 8);
    EXPECT_EQ(packet_.data[3], 0);  // behind its length nothing is written
}

TEST_F(LcdPacket, WaitsForALateReply) {
    panel_.next({"late"});
    std::thread caller([this] { EXPECT_EQ(readKeys(), 0); });
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kReadKeys, {}));
    panel_.answerTheLate();
    caller.join();
    EXPECT_EQ(dataOf(packet_), (Bytes{0x01, 0x20, 0x08}));
}

TEST_F(LcdPacket, WithoutWaitingReadsNothing) {
    panel_.next(replyTo(kReadKeys, {9}));
    packet_ = packetOf(kReadKeys);
    EXPECT_EQ(send_packet(&packet_, 0), 0);
    EXPECT_EQ(packet_.command, kReadKeys);
    EXPECT_EQ(left(5), replyTo(kReadKeys, {9}));
}

TEST_F(LcdPacket, DropsUpToThreeRepliesToOtherCommands) {
    panel_.next(kOther + replyTo(0x22) + kOther + replyTo(kReadKeys, {7}));
    EXPECT_EQ(readKeys(), 0);
    EXPECT_EQ(dataOf(packet_), Bytes{7});
    EXPECT_EQ(unread(), 0);
}

TEST_F(LcdPacket, GivesUpAfterFourRepliesToOtherCommands) {
    panel_.next(kOther + kOther + kOther + kOther + replyTo(kReadKeys, {7}));
    errno = 0;
    EXPECT_EQ(readKeys(), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(packet_.command, kReadKeys);  // what is dropped does not come into the caller's packet
    EXPECT_EQ(packet_.data_length, 0);
    EXPECT_EQ(left(5), replyTo(kReadKeys, {7}));
}

TEST_F(LcdPacket, AByteThatBeginsNoReplyCostsATry) {
    // Top bits 00, 10 and 11; and a reply to a command that does not exist.
    for (const std::uint8_t byte : {kReadKeys, std::uint8_t{0x98}, std::uint8_t{0xD8}, std::uint8_t{0x40 | 36}}) {
        panel_.next(Bytes{byte, byte, byte} + replyTo(kReadKeys, {7}));
        EXPECT_EQ(readKeys(), 0) << int{byte};
        EXPECT_EQ(dataOf(packet_), Bytes{7});
        panel_.next(Bytes{byte, byte, byte, byte} + replyTo(kReadKeys, {8}));
        EXPECT_EQ(readKeys(), -1) << int{byte};
        EXPECT_EQ(left(5), replyTo(kReadKeys, {8}));
    }
}

TEST_F(LcdPacket, CommandsAreComparedByTheirLowSixBits) {
    panel_.next(replyTo(kReadKeys, {7}));
    COMMAND_PACKET packet = packetOf(0xC0 | kReadKeys);
    EXPECT_EQ(send_packet(&packet, 1), 0);
    EXPECT_EQ(dataOf(packet), Bytes{7});
}

TEST_F(LcdPacket, TheHighestCommandWithAReplyIs35) {
    for (const std::uint8_t command : {std::uint8_t{0}, std::uint8_t{35}}) {
        panel_.next(replyTo(command, {7}));
        COMMAND_PACKET packet = packetOf(command);
        EXPECT_EQ(send_packet(&packet, 1), 0) << int{command};
    }
    panel_.next(replyTo(36) + Bytes{0, 0, 0});
    COMMAND_PACKET packet = packetOf(36);
    EXPECT_EQ(send_packet(&packet, 1), -1);
}

TEST_F(LcdPacket, TheCheckSumOfAReplyIsNotChecked) {
    panel_.next(Bytes{0x40 | kReadKeys, 2, 5, 6, 0xDE, 0xAD});
    EXPECT_EQ(readKeys(), 0);
    EXPECT_EQ(dataOf(packet_), (Bytes{5, 6}));
    EXPECT_EQ(packet_.CRC, 0xADDE);
}

TEST_F(LcdPacket, AReplyHoldsTwentyBytesOfData) {
    panel_.next(replyTo(kReadKeys, counted(20)));
    EXPECT_EQ(readKeys(), 0);
    EXPECT_EQ(dataOf(packet_), counted(20));
    EXPECT_EQ(unread(), 0);
}

TEST_F(LcdPacket, ALongerReplyIsReadAsTwentyBytesAndItsRestStaysOnTheLine) {
    for (const std::uint8_t length : Bytes{21, 22, 200, 255}) {
        const Bytes reply = replyTo(kReadKeys, counted(length));
        panel_.next(reply);
        EXPECT_EQ(readKeys(), 0) << int{length};
        EXPECT_EQ(packet_.data_length, 20);
        EXPECT_EQ(dataOf(packet_), counted(20));
        EXPECT_EQ(packet_.CRC, 21 | (length == 21 ? reply[23] : 22) << 8);  // data, taken for the check sum
        const auto rest = reply.begin() + 2 + 22;
        EXPECT_EQ(left(length - 20u), Bytes(rest, reply.end())) << int{length};
        EXPECT_EQ(unread(), 0);
    }
}

TEST_F(LcdPacket, ALongReplyToAnotherCommandIsCutAtTheSamePlace) {
    panel_.next(replyTo(kClear, Bytes(24, 0x80)) + replyTo(kReadKeys, {7}));
    EXPECT_EQ(readKeys(), -1);  // what is left of it costs the other three tries
    EXPECT_EQ(left(3), (Bytes{replyTo(kClear, Bytes(24, 0x80))[27]} + Bytes{0x58, 1}));
}

TEST_F(LcdPacket, AReplyThatBreaksOffHasTheDataThatCame) {
    panel_.next(Bytes{0x40 | kReadKeys, 5, 1, 2});
    packet_ = packetOf(kReadKeys, counted(5));
    EXPECT_EQ(send_packet(&packet_, 1), 0);
    const std::uint16_t sum = checkSumOf({kReadKeys, 5, 1, 2, 3, 4, 5});
    EXPECT_EQ(packet_.CRC, sum);  // no other came
    EXPECT_EQ(dataOf(packet_), (Bytes{1, 2}));
}

TEST_F(LcdPacket, AHeadAheadOfTheEndOfTheLineIsNoReply) {
    panel_.next(Bytes{0x40 | kReadKeys});
    std::thread caller([this] { EXPECT_EQ(readKeys(), -1); });
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kReadKeys, {}));
    panel_.hangUp();
    caller.join();
    EXPECT_EQ(packet_.command, kReadKeys);
}

TEST_F(LcdPacket, AHeadWithoutALengthIsNoReply) {
    panel_.next(Bytes{0x40 | kReadKeys});
    packet_ = packetOf(kReadKeys);
    EXPECT_EQ(send_packet(&packet_, 0), 0);
    EXPECT_EQ(left(1), Bytes{0x40 | kReadKeys});
    packet_.data_length = 3;
    EXPECT_EQ(lcdSaveReturnPacket(&packet_, 0x40 | kReadKeys), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(packet_.command, kReadKeys);
    EXPECT_EQ(packet_.data_length, 3);
}

TEST_F(LcdPacket, ASilenceBehindAHeadEndsTheWaitWithItsFirstTry) {
    int waits = 0;
    atEachWait([&waits] {
        ++waits;
        return 0;  // a second has passed
    });
    for (const std::uint8_t command : {kReadKeys, kClear}) {
        panel_.next(Bytes{static_cast<std::uint8_t>(0x40 | command)});
        errno = 0;
        EXPECT_EQ(readKeys(), -1);  // no further byte is awaited, which would be without limit
        EXPECT_EQ(errno, ETIMEDOUT);
        EXPECT_EQ(packet_.command, kReadKeys);
        EXPECT_EQ(packet_.data_length, 0);
    }
    EXPECT_EQ(waits, 2);
}

TEST_F(LcdPacket, SignalsDoNotBreakAReplyOff) {
    int waits = 0;
    atEachWait([&waits]() -> std::optional<int> {
        if (++waits % 2 == 0) return std::nullopt;
        errno = EINTR;
        return -1;
    });
    EXPECT_EQ(readKeys(), 0);
    EXPECT_EQ(dataOf(packet_), (Bytes{0x01, 0x20, 0x08}));
    EXPECT_GE(waits, 4);
}

TEST_F(LcdPacket, RepliesThatNobodyAwaitedUseUpALaterWait) {
    const auto clearFourTimes = [this] {
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(lcdClear(), 0);
            EXPECT_EQ(panel_.saw(), Panel::frame(19200, kClear, {}));
        }
    };
    clearFourTimes();
    errno = 0;
    EXPECT_EQ(readKeys(), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(left(7), replyTo(kReadKeys, {0x01, 0x20, 0x08}));
    panel_.saw();

    clearFourTimes();
    while (unread() < 4 * static_cast<int>(replyTo(kClear).size())) poll(nullptr, 0, 1);
    EXPECT_EQ(kvOSSerialFlush(ghCOM, 1, 0), 0);
    EXPECT_EQ(readKeys(), 0);
}

TEST_F(LcdPacket, ASilentPanelThatHangsUpIsNoReply) {
    panel_.next({"hang up"});
    errno = 0;
    EXPECT_EQ(readKeys(), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST_F(LcdPacket, AWriteThatFailsIsNotLookedAt) {
    panel_.next({"hang up"});
    EXPECT_EQ(readKeys(), -1);
    packet_ = packetOf(kClear);
    EXPECT_EQ(send_packet(&packet_, 0), 0);
}

TEST_F(LcdPacket, LengthsBeyondAPacketAreRefusedUnsent) {
    for (const std::uint8_t length : Bytes{23, 255}) {
        packet_ = packetOf(kClear);
        packet_.data_length = length;
        errno = 0;
        EXPECT_EQ(send_packet(&packet_, 0), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(send_packet(nullptr, 0), -1);
    packet_ = packetOf(kReadKeys);
    EXPECT_EQ(send_packet(&packet_, 0), 0);
    EXPECT_EQ(panel_.saw(), Panel::frame(19200, kReadKeys, {}));
}

TEST_F(LcdPacket, TheRestOfAReplyIsReadOnceItsFirstByteIsKnown) {
    panel_.next(Bytes{200} + counted(21) + Bytes{77, 78});
    packet_ = packetOf(kClear);
    EXPECT_EQ(send_packet(&packet_, 0), 0);
    EXPECT_EQ(lcdSaveReturnPacket(&packet_, 0xEE), 0);
    EXPECT_EQ(packet_.command, 0xEE);  // which is not checked
    EXPECT_EQ(dataOf(packet_), counted(20));
    EXPECT_EQ(packet_.CRC, 21 | 77 << 8);
    EXPECT_EQ(left(1), Bytes{78});
    EXPECT_EQ(lcdSaveReturnPacket(nullptr, 0x46), -1);
}

TEST(LcdPacketWithoutALine, IsAFailureOnlyWhereAReplyIsAwaited) {
    ASSERT_EQ(ghCOM, 0);
    COMMAND_PACKET packet = packetOf(kClear);
    EXPECT_EQ(send_packet(&packet, 0), 0);
    EXPECT_EQ(packet.CRC, checkSumOf({kClear, 0}));
    errno = 0;
    EXPECT_EQ(send_packet(&packet, 1), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(send_packet(&packet, std::uint64_t{1} << 40), -1);
}

TEST(LcdPacketWithoutALine, HasNoRestOfAReplyAndDoesNotWaitForIt) {
    bool isAwaited = false;
    lineCalls().onWait = [&isAwaited](int) {
        isAwaited = true;
        return 0;
    };
    COMMAND_PACKET packet = packetOf(kClear);
    for (const std::int64_t line : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40}) {
        ghCOM = line;
        errno = 0;
        EXPECT_EQ(lcdSaveReturnPacket(&packet, 0x46), -1) << line;
        EXPECT_EQ(errno, EBADF) << line;
    }
    EXPECT_EQ(lcdSaveReturnPacket(nullptr, 0x46), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(isAwaited);
    EXPECT_EQ(packet.command, kClear);
    lineCalls() = {};
}

TEST(LcdPacketRecord, HasItsFieldsInTheirOrder) {
    EXPECT_EQ(sizeof(COMMAND_PACKET), 26u);
    EXPECT_EQ(offsetof(COMMAND_PACKET, data_length), 1u);
    EXPECT_EQ(offsetof(COMMAND_PACKET, data), 2u);
    EXPECT_EQ(offsetof(COMMAND_PACKET, CRC), 24u);
}

TEST(LcdVariables, StartAsTold) {
    EXPECT_EQ(ghCOM, 0);
    EXPECT_EQ(gdwBAUDRate, 19200u);
    EXPECT_EQ(gfDefaultWait, 0u);
    const COMMAND_PACKET nothing{};
    EXPECT_EQ(std::memcmp(&incoming_response, &nothing, sizeof nothing), 0);
}

}  // namespace
