// Writing to a path in its buffer: all of it or nothing, so that no caller goes on with half a name.
#pragma once

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "border/text.h"

namespace kv::naming {

/// Appends the pieces to the text in `target`, a buffer of 4096 bytes. When they don't all fit, it stays as it was,
/// errno is ENAMETOOLONG and the answer false. A piece may lie inside the text that is there already.
inline bool appendPieces(char* target, std::initializer_list<std::string_view> pieces) noexcept {
    std::size_t used = strnlen(target, border::kPathSize);
    std::size_t total = used;
    for (const std::string_view piece : pieces) total += piece.size();
    if (total >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return false;
    }
    for (const std::string_view piece : pieces) {
        if (!piece.empty()) std::memmove(target + used, piece.data(), piece.size());
        used += piece.size();
    }
    target[used] = '\0';
    return true;
}

/// Puts a text in place of the one in `target`, under the same rule. It may lie inside that one.
inline bool replaceText(char* target, std::string_view text) noexcept {
    if (text.size() >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return false;
    }
    border::copyText(target, border::kPathSize, text);
    return true;
}

/// The "/" that has to follow `path`: none behind an empty text or another "/".
constexpr std::string_view slashBehind(std::string_view path) noexcept {
    return path.empty() || path.ends_with('/') ? "" : "/";
}

}  // namespace kv::naming
