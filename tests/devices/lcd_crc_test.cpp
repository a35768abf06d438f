// The check sum of frames, against the rule worked through bit by bit.
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

#include "devices/frame.h"
#include "kvos/lcd.h"

namespace {

using namespace kvtest;

std::uint16_t crcOf(const Bytes& bytes) { return get_crc(bytes.data(), static_cast<std::uint32_t>(bytes.size())); }

TEST(LcdCrc, NothingGives0) {
    const std::uint8_t byte = 1;
    EXPECT_EQ(get_crc(&byte, 0), 0);
    EXPECT_EQ(get_crc(nullptr, 5), 0);
}

TEST(LcdCrc, IsTheKnownOneOfTheNineDigits) { EXPECT_EQ(crcOf({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x906E); }

TEST(LcdCrc, EveryByteAloneAndLongRandomOnesFollowTheRule) {
    for (int byte = 0; byte < 256; ++byte) {
        const Bytes one{static_cast<std::uint8_t>(byte)};
        EXPECT_EQ(crcOf(one), checkSumOf(one)) << byte;
    }
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int i = 0; i < 200; ++i) {
        Bytes bytes(random() % 300);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
        EXPECT_EQ(crcOf(bytes), bytes.empty() ? 0 : checkSumOf(bytes));
    }
}

}  // namespace
