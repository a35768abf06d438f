// URL texts and quoted values: bytes behind a "%" or a backslash.
//
// The two write their digits by the same odd rule (text/hex_digits.h). Output may be written behind a zero byte that
// was decoded; the length that is told ends at it.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "border/text.h"
#include "kvos/encoding.h"
#include "text/hex_digits.h"

namespace kv::text {
namespace {

constexpr bool passes(char c) { return c >= 0x20 && c <= 0x7E && c != '"' && c != '\\'; }

/// What the escape form writes as a backslash and one letter; 0 for any other byte.
constexpr char letterFor(char c) {
    switch (c) {
        case '\t':
            return 't';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '"':
        case '\\':
            return c;
        default:
            return '\0';
    }
}

/// The byte that a letter behind a backslash stands for; 0 for any other.
constexpr char byteFor(char letter) {
    for (const char c : {'\t', '\n', '\r', '"', '\\'}) {
        if (letterFor(c) == letter) return c;
    }
    return '\0';
}

char* put(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

/// A mark and a byte's digits; null where the first digit is none and the text ends behind the mark.
char* putDigits(char* out, std::string_view mark, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out = put(out, mark);
    *out++ = firstDigit(byte);
    if (firstDigit(byte) == '\0') return nullptr;
    *out++ = secondDigit(byte);
    return out;
}

char* putForUrl(char* out, char c) { return passes(c) ? put(out, {&c, 1}) : putDigits(out, "%", c); }

char* putEscaped(char* out, char c) {
    if (passes(c)) return put(out, {&c, 1});
    const char letter = letterFor(c);
    if (letter == '\0') return putDigits(out, "\\x", c);
    return put(put(out, "\\"), {&letter, 1});
}

std::uint64_t encode(std::string_view input, char* output, char* (*putByte)(char* out, char c)) {
    if (output == nullptr) return 0;
    char* out = output;
    for (const char c : input) {
        out = putByte(out, c);
        if (out == nullptr) return std::strlen(output);
    }
    *out = '\0';
    return std::strlen(output);
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;
using kv::border::orEmpty;

std::uint64_t kvEncodeURLString(const char* pInput, char* pOutput) {
    return text::encode(orEmpty(pInput), pOutput, text::putForUrl);
}

std::uint64_t kvEncodeEscapeString(const char* pInput, char* pOutput) {
    return text::encode(orEmpty(pInput), pOutput, text::putEscaped);
}

std::uint64_t kvDecodeURLString(const char* pInput, char* pOutput) {
    if (pOutput == nullptr) return 0;
    const std::string_view input = orEmpty(pInput);
    char* out = pOutput;
    for (std::size_t i = 0; i < input.size(); ++i) {
        const bool isDigits = input[i] == '%';
        *out++ = isDigits ? text::uncheckedByte(input, i + 1) : input[i];
        if (isDigits) i += 2;
    }
    *out = '\0';
    return std::strlen(pOutput);
}

std::uint64_t kvDecodeEscapeString(const char* pInput, char* pOutput) {
    if (pOutput == nullptr) return 0;
    const std::string_view input = orEmpty(pInput);
    char* out = pOutput;
    for (std::size_t i = 0; i < input.size(); ++i) {
        if (input[i] != '\\') {
            *out++ = input[i];
            continue;
        }
        const char byte = i + 1 < input.size() ? text::byteFor(input[i + 1]) : '\0';
        *out++ = byte != '\0' ? byte : text::uncheckedByte(input, i + 1);
        i += byte != '\0' ? 1 : 2;
    }
    *out = '\0';
    return std::strlen(pOutput);
}
