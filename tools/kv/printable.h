// Names as they can be shown on one line of a terminal.
#pragma once

#include <string>
#include <string_view>

namespace kv::tool {

/// The text with each control character as "\x0A"; all other bytes, UTF-8 or not, stay as they are.
std::string printable(std::string_view text);

}  // namespace kv::tool
