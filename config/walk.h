// Paths in the tree, and what can be a name in it.
#pragma once

#include <algorithm>
#include <string_view>
#include <tinyxml.h>

#include "config/limits.h"

namespace kv::config {

/// The element that a path leads to from an element; null if it is not there. A path that ends in a backslash descends
/// twice with its last name.
TiXmlElement* walk(TiXmlElement& from, std::string_view path);

/// Whether a name can be made: what XML takes for a tag, of at most 63 bytes.
constexpr bool isTag(std::string_view name) {
    constexpr auto isLetter = [](char character) {
        const char lower = static_cast<char>(character | 0x20);
        return (lower >= 'a' && lower <= 'z') || character == '_' || (character & 0x80) != 0;
    };
    constexpr auto isNameCharacter = [isLetter](char character) {
        return isLetter(character) || (character >= '0' && character <= '9') || character == '-' || character == '.' ||
               character == ':';
    };
    return !name.empty() && name.size() <= kLongestName && isLetter(name.front()) &&
           std::ranges::all_of(name, isNameCharacter);
}

/// Whether an element has room for a child.
bool canHoldMore(const TiXmlNode& element);

}  // namespace kv::config
