// Text in buffers of a fixed size: nothing here writes past the size it was given.
//
// copyText and appendText take a text whole or not at all, and say which; what does not fit leaves no cut path behind
// that could name another file. Only formatText cuts, and says nothing of it: it is for messages, not for paths.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

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

/// The letter, small if it is a capital of ASCII. The host's locale has no say, as it has in tolower and strcasecmp: in
/// a Turkish one "SIP:" is not "sip:" there.
constexpr char lowerCase(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Whether two texts are the same, in any case of ASCII letters.
constexpr bool equalAnyCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, lowerCase, lowerCase);
}

/// Whether `text` begins with `prefix`, in any case of ASCII letters.
constexpr bool beginsWithAnyCase(std::string_view text, std::string_view prefix) noexcept {
    return equalAnyCase(text.substr(0, prefix.size()), prefix);
}

/// Where `part` first stands in `text`, in any case of ASCII letters; npos if nowhere.
constexpr std::size_t findAnyCase(std::string_view text, std::string_view part) noexcept {
    for (std::size_t at = 0; at + part.size() <= text.size(); ++at) {
        if (beginsWithAnyCase(text.substr(at), part)) return at;
    }
    return std::string_view::npos;
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
