// A whole file in memory, for the commands that need all of it at once.
#pragma once

#include <optional>
#include <string>

namespace kv::tool {

/// All of a file; nothing on failure, which is told.
std::optional<std::string> contentOf(const std::string& locator);

}  // namespace kv::tool
