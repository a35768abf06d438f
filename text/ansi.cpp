// Bytes that are letters: units cut to their low byte, and bytes widened.
//
// Widening watches for UTF-8, which changes nothing of what is written: the caller asks to know whether he widened what
// he should have decoded.
#include <cstddef>
#include <cstdint>

#include "kvos/text.h"

namespace kv::text {
namespace {

template <class Unit>
char* narrow(char* target, const Unit* source, std::int64_t limit) {
    if (target == nullptr) return nullptr;
    for (std::int64_t i = 0; i < limit; ++i) {
        const Unit unit = source == nullptr ? Unit{0} : source[i];
        target[i] = static_cast<char>(static_cast<std::uint8_t>(unit));
        if (unit == 0) break;
    }
    return target;
}

constexpr bool isContinuation(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }

/// Whether a form of UTF-8 begins at `source`; each byte is looked at only if the one before it is no terminator.
bool beginsForm(const char* source, std::int64_t left) {
    const auto at = [&](std::int64_t i) { return i < left ? static_cast<std::uint8_t>(source[i]) : std::uint8_t{0}; };
    const std::uint8_t lead = at(0);
    if (lead >= 0xC2 && lead <= 0xDF) return isContinuation(at(1));
    if (lead >= 0xE0 && lead <= 0xEF) return isContinuation(at(1)) && isContinuation(at(2));
    // Meant: not from 0x80 on, though 0xF1 to 0xF3 allow that.
    if (lead >= 0xF0 && lead <= 0xF4) {
        return at(1) >= 0x90 && at(1) <= 0xBF && isContinuation(at(2)) && isContinuation(at(3));
    }
    return false;
}

template <class Unit>
std::uint32_t widen(Unit* target, const char* source, std::int64_t limit) {
    std::uint32_t isPlain = 1;
    for (std::int64_t i = 0; i < limit; ++i) {
        const std::uint8_t byte = source == nullptr ? std::uint8_t{0} : static_cast<std::uint8_t>(source[i]);
        if (target != nullptr) target[i] = byte;
        if (byte == 0) break;
        if (beginsForm(source + i, limit - i)) isPlain = 0;
    }
    return isPlain;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

char* kvStr_wchar_to_ANSI(char* pTarget, const wchar_t* pSource, std::int64_t nLimit) {
    return text::narrow(pTarget, pSource, nLimit);
}

char* kvStr_UTF16_to_ANSI(char* pTarget, const std::uint16_t* pSource, std::int64_t nLimit) {
    return text::narrow(pTarget, pSource, nLimit);
}

std::uint32_t kvStr_ANSI_to_wchar(wchar_t* pTarget, const char* pSource, std::int64_t nLimit) {
    return text::widen(pTarget, pSource, nLimit);
}

std::uint32_t kvStr_ANSI_to_UTF16(std::uint16_t* pTarget, const char* pSource, std::int64_t nLimit) {
    return text::widen(pTarget, pSource, nLimit);
}
