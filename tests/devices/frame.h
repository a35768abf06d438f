// The panel's frames as bytes and as text, by the rule of the check sum instead of a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace kvtest {

using Bytes = std::vector<std::uint8_t>;

/// Bit by bit: reflected polynomial 0x8408, start 0xFFFF, one's complement at the end.
inline std::uint16_t checkSumOf(const Bytes& bytes) {
    std::uint32_t sum = 0xFFFF;
    for (const std::uint8_t byte : bytes) {
        for (int bit = 0; bit < 8; ++bit) {
            const bool isOdd = ((sum ^ byte >> bit) & 1) != 0;
            sum = isOdd ? sum >> 1 ^ 0x8408u : sum >> 1;
        }
    }
    return static_cast<std::uint16_t>(~sum);
}

inline Bytes frameOf(std::uint8_t command, const Bytes& data) {
    Bytes frame{command, static_cast<std::uint8_t>(data.size())};
    frame.insert(frame.end(), data.begin(), data.end());
    const std::uint16_t sum = checkSumOf(frame);
    frame.push_back(static_cast<std::uint8_t>(sum & 0xFF));
    frame.push_back(static_cast<std::uint8_t>(sum >> 8));
    return frame;
}

inline Bytes replyTo(std::uint8_t command, const Bytes& data = {}) {
    return frameOf(static_cast<std::uint8_t>(0x40 | (command & 0x3F)), data);
}

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline std::string hexOf(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char two[3];
        std::snprintf(two, sizeof two, "%02X", static_cast<unsigned>(byte));
        text += two;
    }
    return text;
}

inline Bytes bytesOf(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::strtoul(std::string(hex.substr(i, 2)).c_str(), nullptr, 16)));
    }
    return bytes;
}

}  // namespace kvtest
