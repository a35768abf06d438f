// The commands that the panel knows.
#pragma once

#include <cstdint>

namespace kv::devices {

inline constexpr std::uint8_t kPing = 0x00;
inline constexpr std::uint8_t kStoreAsBoot = 0x04;
inline constexpr std::uint8_t kClear = 0x06;
inline constexpr std::uint8_t kSetCharacter = 0x09;
inline constexpr std::uint8_t kPollKeys = 0x17;
inline constexpr std::uint8_t kReadKeys = 0x18;
inline constexpr std::uint8_t kShowText = 0x1F;
inline constexpr std::uint8_t kSetSpeed = 0x21;
inline constexpr std::uint8_t kSetLed = 0x22;
inline constexpr std::uint8_t kCommands = 36;  // replies name a command below this

}  // namespace kv::devices
