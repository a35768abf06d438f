// Letters of names compared in any case: ASCII alone, whatever the locale.
#pragma once

#include <algorithm>
#include <string_view>

namespace kv::naming {

constexpr char lowerCase(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool equalAnyCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, lowerCase, lowerCase);
}

constexpr bool endsWithAnyCase(std::string_view text, std::string_view ending) noexcept {
    return text.size() >= ending.size() && equalAnyCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace kv::naming
