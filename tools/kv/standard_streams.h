// Standard input and output, as bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "kv/commands.h"

namespace kv::tool {

/// Bytes moved by one call of a transfer: few calls, and still little memory.
inline constexpr std::size_t kBlockSize = std::size_t{1} << 20;

/// Writes all bytes. A failure is told in one line, but for a reader that went away: that one is not told.
Exit writeOut(std::string_view bytes);

/// Reads until the block is full or the input ends; the bytes read, 0 at the end. Nothing on failure, which is told.
std::optional<std::size_t> readIn(std::span<char> block);

}  // namespace kv::tool
