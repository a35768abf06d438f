// A scramble under a key: each byte XOR the scrambled byte before it XOR its position modulo the key.
//
// Ahead of the text stand a prefix, which makes two results differ, and one byte that unscrambles to zero and so ends
// it. The first byte of all is written as it is. This hides a text from a glance and protects nothing.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

#include "kvos/encoding.h"
#include "kvos/memory.h"
#include "text/owned_block.h"

namespace kv::text {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kShortestPrefix = 4;
constexpr std::size_t kPrefixLengths = 13;
using DrawnPrefix = std::array<std::uint8_t, kShortestPrefix + kPrefixLengths - 1>;

/// Meant: the padding mark may be drawn, "A" never.
Bytes drawPrefix(DrawnPrefix& prefix) {
    const Bytes drawn(prefix.data(), static_cast<std::size_t>(std::rand()) % kPrefixLengths + kShortestPrefix);
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        prefix[i] = static_cast<std::uint8_t>(b64_table[1 + (std::rand() & 63)]);
    }
    return drawn;
}

/// What a position adds to its byte.
constexpr std::uint8_t keyAt(std::uint64_t position, std::uint32_t key) {
    return static_cast<std::uint8_t>(key == 0 ? position : position % key);
}

/// Prefix, separator, text and a terminator; the block holds one byte more than both texts and the separator.
void scramble(std::uint8_t* out, std::uint32_t key, Bytes prefix, Bytes text) {
    std::uint64_t at = 0;
    const auto put = [&](std::uint8_t byte) {
        out[at] = at == 0 ? byte : static_cast<std::uint8_t>(byte ^ out[at - 1] ^ keyAt(at, key));
        ++at;
    };
    for (const std::uint8_t byte : prefix) put(byte);
    put(0);
    for (const std::uint8_t byte : text) put(byte);
    out[at] = 0;
}

/// Takes scrambled bytes apart, from the last one back, so that the block's own bytes are the input. The length of the
/// text with its terminator, which takes the place of the last byte where no separator makes room for it.
std::uint64_t unscramble(std::span<std::uint8_t> bytes, std::uint32_t key) {
    std::uint64_t separator = 0;
    for (std::uint64_t i = bytes.size() - 1; i > 0; --i) {
        bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ keyAt(i, key) ^ bytes[i - 1]);
        if (bytes[i] == 0) separator = i;
    }
    const std::uint64_t length = bytes.size() - separator;
    if (separator != 0) std::memmove(bytes.data(), bytes.data() + separator + 1, length - 1);
    bytes[length - 1] = 0;
    return length;
}

/// The scrambled bytes with their terminator; `length` is without it.
OwnedBlock<std::uint8_t> encrypt(std::uint32_t key, Bytes input, Bytes prefix, std::uint64_t& length) {
    DrawnPrefix drawn;
    if (prefix.empty()) prefix = drawPrefix(drawn);
    length = prefix.size() + 1 + input.size();
    OwnedBlock<std::uint8_t> block(length + 1);
    if (block) scramble(block.get(), key, prefix, input);
    return block;
}

/// A caller's bytes; a null pointer holds none.
Bytes bytesOf(const void* data, std::uint64_t length) {
    return {static_cast<const std::uint8_t*>(data), data == nullptr ? 0 : length};
}

bool isRefused(const void* data, std::uint64_t length) {
    return length > kLargestBlock || (data == nullptr && length != 0);
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint64_t xor_encrypt(const char*, std::uint32_t dwKey, const void* pInput, std::uint64_t qwInput,
                          const void* pPrefix, std::uint64_t qwPrefix, std::uint8_t** ppOut,
                          std::uint64_t* pqwOutLength) {
    text::Result<std::uint8_t> result(ppOut, pqwOutLength);
    if (!result.isWanted() || text::isRefused(pInput, qwInput) || qwPrefix > text::kLargestBlock) return 0;
    std::uint64_t length = 0;
    auto block = text::encrypt(dwKey, text::bytesOf(pInput, qwInput), text::bytesOf(pPrefix, qwPrefix), length);
    if (!block) return 0;
    result.give(block, length);
    return qwInput;
}

std::uint64_t xor_decrypt(const char*, std::uint32_t dwKey, const void* pInput, std::uint64_t qwInput,
                          std::uint8_t** ppOut, std::uint64_t* pqwOutLength) {
    text::Result<std::uint8_t> result(ppOut, pqwOutLength);
    if (!result.isWanted() || pInput == nullptr || qwInput == 0) return 0;
    text::OwnedBlock<std::uint8_t> block(qwInput);
    if (!block) return 0;
    std::memcpy(block.get(), pInput, qwInput);
    const std::uint64_t length = text::unscramble({block.get(), qwInput}, dwKey);
    return result.give(block, length);
}

std::uint64_t kvXCEncode(const char*, std::uint32_t dwKey, const void* pInput, std::uint64_t qwInput,
                         const void* pPrefix, std::uint64_t qwPrefix, std::uint8_t** ppOut,
                         std::uint64_t* pqwOutLength) {
    text::Result<std::uint8_t> result(ppOut, pqwOutLength);
    if (!result.isWanted() || text::isRefused(pInput, qwInput) || qwPrefix > text::kLargestBlock) return 0;
    std::uint64_t length = 0;
    const auto scrambled =
        text::encrypt(dwKey, text::bytesOf(pInput, qwInput), text::bytesOf(pPrefix, qwPrefix), length);
    if (!scrambled) return 0;
    constexpr std::uint64_t kOneGroup = 6;  // four characters, a line feed and a terminator are more than twice a byte
    text::OwnedBlock<std::uint8_t> block(2 * length + kOneGroup);
    std::uint64_t encoded = 0;
    if (!block || base64_encode(scrambled.get(), length, &encoded, reinterpret_cast<char*>(block.get())) == nullptr) {
        return 0;
    }
    block.get()[encoded - 1] = 0;
    return result.give(block, encoded - 1);
}

std::uint64_t kvXCDEcode(const char*, std::uint32_t dwKey, const void* pInput, std::uint64_t qwInput,
                         std::uint8_t** ppOut, std::uint64_t* pqwOutLength) {
    text::Result<std::uint8_t> result(ppOut, pqwOutLength);
    if (!result.isWanted() || pInput == nullptr || qwInput > text::kLargestBlock) return 0;
    text::OwnedBlock<std::uint8_t> block(2 * qwInput);
    std::uint64_t scrambled = 0;
    if (!block || base64_decode(pInput, qwInput, &scrambled, block.get()) == nullptr) return 0;
    const std::uint64_t length = text::unscramble({block.get(), scrambled}, dwKey);
    return result.give(block, length);
}
