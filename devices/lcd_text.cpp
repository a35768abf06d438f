// Typed text to the panel's bytes: a backslash begins a byte by its number, or is itself.
//
// The text is read no further than the bytes need, since it may be a field without a terminator.
#include <cstddef>
#include <cstdint>
#include <optional>

#include "kvos/lcd.h"

namespace kv::devices {
namespace {

constexpr std::uint32_t kMostBytes = 23;

int digitOf(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return 16;
}

/// The value of the first `count` digits; nothing if they are not all digits of that base, or come to more than a byte.
/// Nothing is read behind the first that is none.
std::optional<std::uint8_t> number(const char* text, int count, int base) {
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const int digit = digitOf(text[i]);
        if (digit >= base) return std::nullopt;
        value = value * base + digit;
    }
    return value <= 255 ? std::optional(static_cast<std::uint8_t>(value)) : std::nullopt;
}

struct Piece {
    std::uint8_t byte;
    std::size_t length;  // characters that it takes
};

Piece firstPiece(const char* text) {
    if (text[0] == '\\') {
        if (text[1] == '\\') return {'\\', 2};
        if (const auto value = number(text + 1, 3, 10)) return {*value, 4};
        if (const auto value = text[1] == 'b' ? number(text + 2, 8, 2) : std::nullopt) return {*value, 10};
        if (const auto value = text[1] == 'x' ? number(text + 2, 2, 16) : std::nullopt) return {*value, 4};
    }
    return {static_cast<std::uint8_t>(text[0]), 1};
}

}  // namespace
}  // namespace kv::devices

std::uint32_t lcdConvertInputStringToArray(const char* pInput, std::uint8_t* pOutput) {
    if (pInput == nullptr || pOutput == nullptr) return 0;
    std::uint32_t written = 0;
    while (written < kv::devices::kMostBytes && *pInput != '\0') {
        const auto [byte, length] = kv::devices::firstPiece(pInput);
        pOutput[written++] = byte;
        pInput += length;
    }
    return written;
}
