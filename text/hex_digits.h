// The two rules of hexadecimal digits that the text encodings share, neither of which is the usual one.
//
// Reading checks nothing and gives a value for every byte. Writing takes the first digit of bytes from 0x80 on from in
// front of the digits. Stored texts depend on both.
#pragma once

#include <cstddef>
#include <string_view>

namespace kv::text {

/// The value of one unchecked digit: the terminator's is -48, that of "z" 35.
constexpr int uncheckedDigit(char c) {
    const int byte = static_cast<unsigned char>(c);
    if (byte < ':') return byte - '0';
    const int capital = byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte;
    return capital - 'A' + 10;
}

/// The byte of two unchecked digits at `at`, the terminator standing for those that the text no longer has.
constexpr char uncheckedByte(std::string_view text, std::size_t at) {
    const int high = uncheckedDigit(at < text.size() ? text[at] : '\0');
    const int low = uncheckedDigit(at + 1 < text.size() ? text[at + 1] : '\0');
    return static_cast<char>(static_cast<unsigned char>(16 * high + low));
}

/// The first digit that a byte is written with. Bytes from 0x80 on count down from the end of the alphabet that lies in
/// front of the digits: 0x8_ has "t", 0xE_ has "z", and 0xF_ has the alphabet's terminator.
constexpr char firstDigit(unsigned char byte) {
    constexpr std::string_view kDigits(
        "tuvwxyz\0"
        "01234567",
        16);
    return kDigits[(byte >> 4) ^ 8U];
}

constexpr char secondDigit(unsigned char byte) { return "0123456789ABCDEF"[byte & 0xF]; }

static_assert(firstDigit(0x7F) == '7' && firstDigit(0x8F) == 't' && firstDigit(0xE0) == 'z' &&
              firstDigit(0xF0) == '\0');

}  // namespace kv::text
