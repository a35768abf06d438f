// The panel's commands as it sees them, and what each says of its reply.
#include <cerrno>
#include <cstdint>
#include <string>

#include "devices/line_calls.h"
#include "devices/panel.h"
#include "kvos/lcd.h"
#include "kvos/serial.h"

namespace {

using namespace kvtest;

const std::uint8_t* bytes(const char* text) { return reinterpret_cast<const std::uint8_t*>(text); }

class LcdCommands : public ::testing::Test {
protected:
    LcdCommands() {
        ghCOM = kvOSSerialOpenString(panel_.device().c_str());
        EXPECT_GT(ghCOM, 0);
        kvOSSerialSetup(ghCOM, 19200, 8, 0, 1);
    }
    ~LcdCommands() override { lcdCloseCom(); }

    void expectSeen(std::uint8_t command, const Bytes& data) {
        EXPECT_EQ(panel_.saw(), Panel::frame(19200, command, data));
    }

    Panel panel_;
};

TEST_F(LcdCommands, AreSentWithTheirData) {
    for (const std::uint64_t wait : {0u, 1u}) {
        gfDefaultWait = wait;
        EXPECT_EQ(lcdPing(), 0);
        expectSeen(0x00, {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'});
        EXPECT_EQ(lcdStoreAsBoot(), 0);
        expectSeen(0x04, {});
        EXPECT_EQ(lcdClear(), 0);
        expectSeen(0x06, {});
        EXPECT_EQ(lcdSetBaudRate(0), 0);
        expectSeen(0x21, {0});
        kvOSSerialFlush(ghCOM, 1, 0);
    }
}

TEST_F(LcdCommands, TheSpeedIsThePanelsAndNotTheLines) {
    gfDefaultWait = 1;
    EXPECT_EQ(lcdSetBaudRate(1), 0);
    expectSeen(0x21, {1});
    gfDefaultWait = 0;
    EXPECT_EQ(lcdClear(), 0);
    EXPECT_EQ(panel_.saw(), Panel::noise(19200, 0x06, {}));
}

TEST_F(LcdCommands, TextHasItsColumnAheadOfItsRow) {
    EXPECT_EQ(lcdSendText(1, 7, bytes("OnAir"), 5), 0);
    expectSeen(0x1F, {7, 1, 'O', 'n', 'A', 'i', 'r'});
    EXPECT_EQ(lcdSendText(0, 0, bytes("OnAir"), 2), 0);
    expectSeen(0x1F, {0, 0, 'O', 'n'});
    EXPECT_EQ(lcdSendText(1, 2, nullptr, 0), 0);
    expectSeen(0x1F, {2, 1});
}

TEST_F(LcdCommands, TextBeyondTwentyBytesIsRefusedUnsent) {
    const std::string text(300, 'x');
    for (const std::uint32_t length : {21u, 22u, 255u, 256u, 0xFFFFFFFFu}) {
        errno = 0;
        EXPECT_EQ(lcdSendText(0, 0, bytes(text.c_str()), length), -1) << length;
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(lcdSendText(0, 0, nullptr, 1), -1);
    EXPECT_EQ(lcdSendText(0, 0, bytes(text.c_str()), KVLCD_TEXT_SIZE), 0);
    expectSeen(0x1F, Bytes{0, 0} + Bytes(20, 'x'));
}

TEST_F(LcdCommands, KeysToPollAreSentTwiceAndCut) {
    gfDefaultWait = 1;
    EXPECT_EQ(lcdConfigureKeyPolling(0xFFFFFFFF), 0x2F);
    expectSeen(0x17, {0x2F, 0x2F});
    EXPECT_EQ(lcdConfigureKeyPolling(0x10), 0);  // bit 4 is no key
    expectSeen(0x17, {0, 0});
    panel_.next(replyTo(0x17, {1, 9}));
    EXPECT_EQ(lcdConfigureKeyPolling(3), 9);
    expectSeen(0x17, {3, 3});
    panel_.next(replyTo(0x17));
    EXPECT_EQ(lcdConfigureKeyPolling(3), 3);  // the mask as it was sent
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_EQ(lcdConfigureKeyPolling(3), -1);
    gfDefaultWait = 0;
    EXPECT_EQ(lcdConfigureKeyPolling(0xFF), 0x2F);
}

TEST_F(LcdCommands, ReadingKeysIsAlways0UnderBothNames) {
    for (const auto readKeys : {lcdReadKeyPress, lcdReadResponses}) {
        EXPECT_EQ(readKeys(1), 0);
        expectSeen(0x18, {});
        panel_.next(Bytes{0, 0, 0, 0});
        EXPECT_EQ(readKeys(1), 0);
        expectSeen(0x18, {});
        gfDefaultWait = 1;
        panel_.next({"silence"});
        EXPECT_EQ(readKeys(0), 0);  // its own wait counts
        expectSeen(0x18, {});
        gfDefaultWait = 0;
    }
}

TEST_F(LcdCommands, AnLedIsTwoLinesFromTheTop) {
    EXPECT_EQ(lcdSetLED(0, 100, 50), 0);
    expectSeen(0x22, {12, 100});
    expectSeen(0x22, {11, 50});
    EXPECT_EQ(lcdSetLED(5, 1, 2), 0);
    expectSeen(0x22, {2, 1});
    expectSeen(0x22, {1, 2});
    EXPECT_EQ(lcdSetLED(6, 1, 2), 0);
    expectSeen(0x22, {0, 1});
    expectSeen(0x22, {255, 2});  // there is no such line
}

TEST_F(LcdCommands, AnLedIs0WhateverThePanelSays) {
    gfDefaultWait = 1;
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_EQ(lcdSetLED(1, 0, 0), 0);
    expectSeen(0x22, {10, 0});
    expectSeen(0x22, {9, 0});
}

TEST_F(LcdCommands, TheGraphicIsEightCharacters) {
    const std::uint8_t rows[8][8] = {
        {0x00, 0x00, 0x10, 0x2F, 0x2F, 0x3F, 0x10, 0x00}, {0x00, 0x3F, 0x3F, 0x30, 0x30, 0x30, 0x30, 0x30},
        {0x00, 0x20, 0x30, 0x38, 0x1C, 0x0C, 0x0F, 0x0F}, {0x00, 0x00, 0x00, 0x00, 0x10, 0x18, 0x3E, 0x3F},
        {0x10, 0x2F, 0x2F, 0x3F, 0x10, 0x00, 0x00, 0x00}, {0x30, 0x30, 0x30, 0x30, 0x3F, 0x3F, 0x00, 0x00},
        {0x0F, 0x0C, 0x1C, 0x38, 0x30, 0x20, 0x00, 0x00}, {0x3E, 0x18, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00}};
    gfDefaultWait = 1;
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_EQ(lcdSetKorvaneDGraphic(), 0);  // also though the first got no reply
    for (std::uint8_t index = 0; index < 8; ++index) {
        expectSeen(0x09, Bytes{index} + Bytes(rows[index], rows[index] + 8));
        EXPECT_EQ(Bytes(korvaneD + 8 * index, korvaneD + 8 * index + 8), Bytes(rows[index], rows[index] + 8));
    }
}

TEST_F(LcdCommands, FailWhereTheReplyIsAwaitedAndDoesNotCome) {
    gfDefaultWait = 1;
    for (std::int32_t (*command)() : {lcdPing, lcdStoreAsBoot, lcdClear}) {
        panel_.next(Bytes{0, 0, 0, 0});
        EXPECT_EQ(command(), -1);
    }
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_EQ(lcdSendText(0, 0, bytes("x"), 1), -1);
    panel_.next(Bytes{0, 0, 0, 0});
    EXPECT_EQ(lcdSetBaudRate(0), -1);
}

TEST(LcdCommandsWithoutALine, SucceedUnlessAReplyIsAwaited) {
    EXPECT_EQ(lcdPing(), 0);
    EXPECT_EQ(lcdSendText(0, 0, bytes("x"), 1), 0);
    gfDefaultWait = std::uint64_t{1} << 40;
    EXPECT_EQ(lcdPing(), -1);
    EXPECT_EQ(lcdConfigureKeyPolling(1), -1);
    EXPECT_EQ(lcdSetLED(0, 0, 0), 0);
    EXPECT_EQ(lcdReadKeyPress(1), 0);
}

}  // namespace
