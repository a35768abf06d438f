// HTML entities to UTF-8.
//
// Numbers are taken by strtoul, with all that it lets stand in front of them. Surrogates are written like others.
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

#include "border/guard.h"
#include "kvos/encoding.h"

namespace kv::text {
namespace {

/// UTF-8 of one character, which may hold a zero.
struct Utf8 {
    char bytes[4];
    std::size_t length;
};

constexpr unsigned long kBehindLast = 0x110000;

Utf8 utf8Of(unsigned long character) {
    const auto byte = [&](unsigned mark, unsigned shift, unsigned mask) {
        return static_cast<char>(static_cast<unsigned char>(mark | (character >> shift & mask)));
    };
    if (character < 0x80) return {{byte(0, 0, 0x7F)}, 1};
    if (character < 0x800) return {{byte(0xC0, 6, 0x1F), byte(0x80, 0, 0x3F)}, 2};
    if (character < 0x10000) return {{byte(0xE0, 12, 0xF), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)}, 3};
    return {{byte(0xF0, 18, 7), byte(0x80, 12, 0x3F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)}, 4};
}

/// The number from `text` to exactly its end, at a ";".
std::optional<Utf8> numbered(const char* text, const char* end) {
    const border::KeepErrno outer;
    const bool isHexadecimal = *text == 'x' || *text == 'X';
    char* stopped = nullptr;
    errno = 0;
    const unsigned long character = std::strtoul(isHexadecimal ? text + 1 : text, &stopped, isHexadecimal ? 16 : 10);
    // ERANGE alone: some C libraries set EINVAL where there are no digits, which is the number 0.
    if (errno == ERANGE || stopped != end || character >= kBehindLast) return std::nullopt;
    return utf8Of(character);
}

std::optional<Utf8> named(const char* name) {
    const char* const text = html_get_named_entity(name);
    if (text == nullptr) return std::nullopt;
    Utf8 utf8{{}, std::strlen(text)};
    std::memcpy(utf8.bytes, text, utf8.length);
    return utf8;
}

/// Copies `length` bytes, which may overlap, and says where the next go.
char* put(char* out, const char* from, std::size_t length) {
    std::memmove(out, from, length);
    return out + length;
}

}  // namespace
}  // namespace kv::text

const char* html_get_named_entity(const char* pName) {
    if (pName == nullptr) return nullptr;
    // A name fits in far less: what is looked at of a long text has to end.
    constexpr std::size_t kLookedAt = 16;
    const std::string_view text(pName, strnlen(pName, kLookedAt));
    const std::string_view name = text.substr(0, text.find(';') + 1);  // empty without a ";"
    const auto* const row = std::ranges::lower_bound(NAMED_ENTITIES, name, {},
                                                     [](const auto& entity) { return std::string_view(entity[0]); });
    return row == std::end(NAMED_ENTITIES) || (*row)[0] != name ? nullptr : (*row)[1];
}

std::uint64_t html_decode_html_entities_utf8(char* pText, const char* pSource) {
    namespace text = kv::text;
    if (pText == nullptr) return 0;
    const char* from = pSource == nullptr ? pText : pSource;
    const char* const end = from + std::strlen(from);
    char* out = pText;
    const char* semicolon = from;  // the next one, looked for anew only once it is passed
    for (;;) {
        const char* ampersand = std::find(from, end, '&');
        out = text::put(out, from, static_cast<std::size_t>(ampersand - from));
        from = ampersand;
        if (semicolon <= from) semicolon = std::find(from, end, ';');
        if (semicolon == end) break;
        const std::optional<text::Utf8> character =
            from[1] == '#' ? text::numbered(from + 2, semicolon) : text::named(from + 1);
        if (character.has_value()) {
            out = text::put(out, character->bytes, character->length);
            from = semicolon + 1;
        } else {
            *out++ = *from++;
        }
    }
    out = text::put(out, from, static_cast<std::size_t>(end - from));
    *out = '\0';
    return static_cast<std::uint64_t>(out - pText);
}
