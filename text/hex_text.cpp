// Bytes as hexadecimal digits, and back by digits that nothing checks.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "border/text.h"
#include "kvos/encoding.h"
#include "text/hex_digits.h"

std::uint32_t kvEncodeHEXString(const void* pInput, std::uint64_t qwLength, char* pOutput) {
    constexpr char kDigits[] = "0123456789abcdef";
    if (pOutput == nullptr) return 0;
    const auto* const bytes = static_cast<const std::uint8_t*>(pInput);
    const std::uint64_t length = pInput == nullptr ? 0 : qwLength;
    for (std::uint64_t i = 0; i < length; ++i) {
        pOutput[2 * i] = kDigits[bytes[i] >> 4];
        pOutput[2 * i + 1] = kDigits[bytes[i] & 0xF];
    }
    pOutput[2 * length] = '\0';
    return 0;
}

std::uint32_t kvDecodeHEXString(const char* pInput, void* pOutput, std::uint64_t* pqwOutLength) {
    const std::string_view input = kv::border::orEmpty(pInput);
    if (pqwOutLength != nullptr) *pqwOutLength = (input.size() + 1) / 2;
    if (pOutput == nullptr) return 0;
    auto* out = static_cast<char*>(pOutput);
    for (std::size_t i = 0; i < input.size(); i += 2) *out++ = kv::text::uncheckedByte(input, i);
    return 0;
}
