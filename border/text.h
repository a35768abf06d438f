// Text in buffers of a fixed size: nothing here writes past the size it was given.
//
// copyText and appendText take a text whole or not at all, and say which; what does not fit leaves no cut path behind
// that could name another file. Only formatText cuts, and says nothing of it: it is for messages, not for paths.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace kv::border {

/// Bytes of every path buffer, terminator included; callers of the exported calls supply buffers of this size.
inline constexpr std::size_t kPathSize = 4096;

using PathBuffer = char[kPathSize];

/// Copies the whole text with its terminator, or, when it does not fit, leaves `target` an empty text and says false.
inline bool copyText(char* target, std::size_t size, std::string_view text) {
    if (size == 0) return false;
    if (text.size() >= size) {
        target[0] = '\0';
        return false;
    }
    if (!text.empty()) std::memmove(target, text.data(), text.size());
    target[text.size()] = '\0';
    return true;
}

/// Appends the whole text, or, when it does not fit, leaves `target` as it was and says false.
inline bool appendText(char* target, std::size_t size, std::string_view text) {
    const std::size_t used = std::strlen(target);
    if (used >= size || text.size() >= size - used) return false;
    if (!text.empty()) std::memcpy(target + used, text.data(), text.size());
    target[used + text.size()] = '\0';
    return true;
}

/// copyText for a path in a buffer of kPathSize bytes; errno is ENAMETOOLONG when it does not fit.
inline bool copyPath(char* target, std::string_view path) {
    if (copyText(target, kPathSize, path)) return true;
    errno = ENAMETOOLONG;
    return false;
}

/// appendText for a path in a buffer of kPathSize bytes; errno is ENAMETOOLONG when it does not fit.
inline bool appendPath(char* target, std::string_view text) {
    if (appendText(target, kPathSize, text)) return true;
    errno = ENAMETOOLONG;
    return false;
}

/// Whether `text` begins with `prefix`, in any case of ASCII letters.
inline bool beginsWithAnyCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

/// A null text as an empty one.
inline std::string_view orEmpty(const char* text) { return text == nullptr ? std::string_view{} : text; }

/// Formats into a buffer of `size` bytes; what does not fit is cut, and the text is always terminated.
template <class... Arguments>
__attribute__((format(printf, 3, 0))) inline void formatText(char* target, std::size_t size, const char* format,
                                                             Arguments... arguments) {
    std::snprintf(target, size, format, arguments...);
}

}  // namespace kv::border
