// Texts taken apart at a delimiter, with a cursor of their own where strtok keeps one for the process.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

namespace kv::naming {

/// Takes the next token off `rest`, and one delimiter behind it; nothing at the end. Delimiters ahead of a token are
/// passed over, so that no token is empty.
inline std::optional<std::string_view> nextToken(std::string_view& rest, char delimiter) noexcept {
    rest.remove_prefix(std::min(rest.find_first_not_of(delimiter), rest.size()));
    if (rest.empty()) return std::nullopt;
    const std::string_view token = rest.substr(0, rest.find(delimiter));
    rest.remove_prefix(std::min(token.size() + 1, rest.size()));
    return token;
}

}  // namespace kv::naming
