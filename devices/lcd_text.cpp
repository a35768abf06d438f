// Typed text to the panel's bytes: a backslash begins a byte by its number, or is itself.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

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
std::optional<std::uint8_t> number(std::string_view text, std::size_t count, int base) {
    if (text.size() < count) return std::nullopt;
    int value = 0;
    for (const char character : text.substr(0, count)) {
        const int digit = digitOf(character);
        if (digit >= base) return std::nullopt;
        value = value * base + digit;
    }
    return value <= 255 ? std::optional(static_cast<std::uint8_t>(value)) : std::nullopt;
}

struct Piece {
    std::uint8_t byte;
    std::size_t length;  // characters that it takes
};

Piece firstPiece(std::string_view text) {
    if (text.starts_with("\\\\")) return {'\\', 2};
    if (text.front() == '\\') {
        if (const auto value = number(text.substr(1), 3, 10)) return {*value, 4};
        if (const auto value = number(text.substr(1).starts_with('b') ? text.substr(2) : "", 8, 2)) return {*value, 10};
        if (const auto value = number(text.substr(1).starts_with('x') ? text.substr(2) : "", 2, 16)) return {*value, 4};
    }
    return {static_cast<std::uint8_t>(text.front()), 1};
}

}  // namespace
}  // namespace kv::devices

std::uint32_t lcdConvertInputStringToArray(const char* pInput, std::uint8_t* pOutput) {
    if (pInput == nullptr || pOutput == nullptr) return 0;
    std::string_view left = pInput;
    std::uint32_t written = 0;
    while (!left.empty() && written < kv::devices::kMostBytes) {
        const auto [byte, length] = kv::devices::firstPiece(left);
        pOutput[written++] = byte;
        left.remove_prefix(length);
    }
    return written;
}
