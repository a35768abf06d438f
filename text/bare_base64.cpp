// Base 64 in one line and without padding, beside that of base64.cpp.
//
// The encoder fills its last group with zero bits, which come back as bytes. The decoder knows padding all the same,
// and computes with its index of 64 wherever it stands.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvos/encoding.h"
#include "text/owned_block.h"

constexpr const char b64_table[66] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

namespace kv::text {
namespace {

constexpr std::uint32_t kPadding = 64;
static_assert(b64_table[kPadding] == '=');

/// The index of four characters each; false where one has none.
bool indicesOf(std::string_view group, std::array<std::uint32_t, 4>& indices) {
    constexpr std::string_view kTable(b64_table);
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const std::size_t index = kTable.find(group[i]);
        if (index == std::string_view::npos) return false;
        indices[i] = static_cast<std::uint32_t>(index);
    }
    return true;
}

constexpr std::uint8_t low(std::uint32_t bits) { return static_cast<std::uint8_t>(bits); }

/// The bytes of the whole text; nothing where a character has no index.
std::size_t decodeGroups(std::string_view text, std::uint8_t* out, bool& isRead) {
    std::size_t written = 0;
    std::array<std::uint32_t, 4> at{};
    for (; !text.empty(); text.remove_prefix(4)) {
        isRead = indicesOf(text, at);
        if (!isRead) return 0;
        out[written++] = low(at[0] << 2 | at[1] >> 4);
        if (at[2] == kPadding) continue;
        out[written++] = low(at[1] << 4 | at[2] >> 2);
        if (at[3] == kPadding) continue;
        out[written++] = low(at[2] << 6 | at[3]);
    }
    return written;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint64_t b64_encode(const void* pInput, std::uint64_t qwInput, char** ppOut, std::uint64_t* pqwOutLength) {
    text::Result<char> result(ppOut, pqwOutLength);
    if (!result.isWanted() || pInput == nullptr || qwInput > text::kLargestBlock) return 0;
    const auto* const bytes = static_cast<const std::uint8_t*>(pInput);
    const std::uint64_t length = (qwInput + 2) / 3 * 4;
    text::OwnedBlock<char> block(length + 1);
    if (!block) return 0;
    char* out = block.get();
    const auto byteAt = [&](std::uint64_t i) { return i < qwInput ? std::uint32_t{bytes[i]} : 0; };
    for (std::uint64_t i = 0; i < qwInput; i += 3) {
        const std::uint32_t bits = byteAt(i) << 16 | byteAt(i + 1) << 8 | byteAt(i + 2);
        for (const int shift : {18, 12, 6, 0}) *out++ = b64_table[bits >> shift & 0x3F];
    }
    *out = '\0';
    return result.give(block, length);
}

std::uint64_t b64_decode(const char* pInput, std::uint64_t qwInput, std::uint8_t** ppOut, std::uint64_t* pqwOutLength) {
    text::Result<std::uint8_t> result(ppOut, pqwOutLength);
    if (!result.isWanted() || pInput == nullptr || qwInput % 4 != 0) return 0;
    text::OwnedBlock<std::uint8_t> block(qwInput / 4 * 3 + 1);
    if (!block) return 0;
    bool isRead = true;
    const std::size_t written = text::decodeGroups({pInput, qwInput}, block.get(), isRead);
    if (!isRead) return 0;
    block.get()[written] = 0;
    return result.give(block, written);
}
