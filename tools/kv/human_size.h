// Sizes as people read them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kv::tool {

/// "0 B", "1023 B", "1.0 KiB", "147.6 MiB": bytes as they are, larger units of 1024 with one decimal.
std::string humanSize(std::uint64_t bytes);

/// The same, and "-" for what has no size or does not tell it.
std::string humanSize(const std::optional<std::uint64_t>& bytes);

}  // namespace kv::tool
