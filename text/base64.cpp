// Base 64 in lines of 72 characters, with padding.
//
// The decoder skips whatever is not of the alphabet, counts before it writes, and takes "=" for the value 0. The other
// base 64, without lines and padding, is in bare_base64.cpp; the two do not read all of each other.
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "kvos/encoding.h"
#include "kvos/memory.h"

namespace kv::text {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLine = 72;
constexpr std::uint8_t kSkipped = 0x80;

constexpr auto kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kSkipped);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    values['='] = 0;
    return values;
}();

/// A buffer of KVAlloc; null for more than that can be asked for.
template <class Byte>
Byte* allocate(std::uint64_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max()) return nullptr;
    return static_cast<Byte*>(KVAlloc(static_cast<std::uint32_t>(size)));
}

/// Bytes of the buffer for a text; 0 if they can't be counted.
constexpr std::uint64_t encodedRoom(std::uint64_t length) {
    const std::uint64_t characters = length * 4 / 3;
    const std::uint64_t room = characters + (characters + 4) / kLine + 5;
    return room < length ? 0 : room;
}

/// One group of one to three bytes.
char* putGroup(char* out, std::span<const std::uint8_t> bytes) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) bits = bits << 8 | (i < bytes.size() ? bytes[i] : 0U);
    for (std::size_t i = 0; i < 4; ++i) {
        *out++ = i <= bytes.size() ? kAlphabet[bits >> (18 - 6 * i) & 0x3F] : '=';
    }
    return out;
}

char* putLines(char* out, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kBytesInLine = kLine / 4 * 3;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        out = putGroup(out, bytes.subspan(i, bytes.size() - i < 3 ? bytes.size() - i : 3));
        if ((i + 3) % kBytesInLine == 0 || i + 3 >= bytes.size()) *out++ = '\n';
    }
    *out = '\0';
    return out;
}

/// The bytes written, or nothing for a group of more than two "=".
constexpr std::size_t kRefused = std::numeric_limits<std::size_t>::max();

std::size_t decode(std::span<const std::uint8_t> input, std::uint8_t* output) {
    std::size_t written = 0;
    std::uint32_t bits = 0;
    unsigned inGroup = 0;
    unsigned pads = 0;
    for (const std::uint8_t byte : input) {
        if (kValues[byte] == kSkipped) continue;
        bits = bits << 6 | kValues[byte];
        if (byte == '=') ++pads;
        if (++inGroup < 4) continue;
        if (pads > 2) return kRefused;
        for (unsigned i = 0; i < 3 - pads; ++i) output[written++] = static_cast<std::uint8_t>(bits >> (16 - 8 * i));
        if (pads != 0) break;
        inGroup = 0;
    }
    return written;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

char* base64_encode(const void* pInput, std::uint64_t qwLength, std::uint64_t* pqwOutLength, char* pOutput) {
    const std::uint64_t room = text::encodedRoom(qwLength);
    if (room == 0 || (pInput == nullptr && qwLength != 0)) return nullptr;
    char* const output = pOutput == nullptr ? text::allocate<char>(room) : pOutput;
    if (output == nullptr) return nullptr;
    const char* const end = text::putLines(output, {static_cast<const std::uint8_t*>(pInput), qwLength});
    if (pqwOutLength != nullptr) *pqwOutLength = static_cast<std::uint64_t>(end - output);
    return output;
}

std::uint8_t* base64_decode(const void* pInput, std::uint64_t qwLength, std::uint64_t* pqwOutLength,
                            std::uint8_t* pOutput) {
    const std::span input(static_cast<const std::uint8_t*>(pInput), pInput == nullptr ? 0 : qwLength);
    std::uint64_t accepted = 0;
    for (const std::uint8_t byte : input) accepted += text::kValues[byte] == text::kSkipped ? 0 : 1;
    if (accepted == 0 || accepted % 4 != 0) return nullptr;
    std::uint8_t* const output = pOutput == nullptr ? text::allocate<std::uint8_t>(accepted / 4 * 3) : pOutput;
    if (output == nullptr) return nullptr;
    const std::size_t written = text::decode(input, output);
    if (written == text::kRefused) {
        if (pOutput == nullptr) KVFree(output);
        return nullptr;
    }
    if (pqwOutLength != nullptr) *pqwOutLength = written;
    return output;
}
