// Where the link of a port number lies.
#pragma once

#include <cstdint>

namespace kv::devices {

/// How many links there are: "ttyS0" to "ttyS9".
inline constexpr std::uint32_t kLinks = 10;

/// The path of the link "ttyS" and `number` into a path buffer; false, with errno set, if it has none.
bool linkPath(char* path, std::uint32_t number) noexcept;

}  // namespace kv::devices
