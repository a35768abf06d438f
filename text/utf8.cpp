// Text of wide or 16-bit units to UTF-8.
//
// The limit is looked at once a unit, not once a byte: a form that was begun is finished, up to two bytes past it.
#include <cstddef>
#include <cstdint>

#include "kvos/text.h"

namespace kv::text {
namespace {

/// The bytes of one unit.
struct Form {
    unsigned char bytes[3];
    std::size_t length;
};

constexpr unsigned char lead(std::uint32_t mark, std::uint32_t bits) { return static_cast<unsigned char>(mark | bits); }
constexpr unsigned char following(std::uint32_t bits) { return static_cast<unsigned char>(0x80 | (bits & 0x3F)); }

/// Surrogates are units like others. Meant: 0xFFFF has no form.
constexpr Form formOf(std::uint32_t unit) {
    if (unit < 0x80) return {{lead(0, unit)}, 1};
    if (unit < 0x800) return {{lead(0xC0, unit >> 6), following(unit)}, 2};
    if (unit < 0xFFFF) return {{lead(0xE0, unit >> 12), following(unit >> 6), following(unit)}, 3};
    return {{}, 0};
}

template <class Unit>
std::int64_t encode(char* target, const Unit* source, std::int64_t limit) {
    constexpr std::uint32_t kUnitMask = 0xFFFF;
    std::int64_t written = 0;
    while (written < limit) {
        const std::uint32_t unit = source == nullptr ? 0 : static_cast<std::uint32_t>(*source++) & kUnitMask;
        if (unit == 0) {
            if (target != nullptr) target[written] = '\0';
            break;
        }
        const Form form = formOf(unit);
        for (std::size_t i = 0; i < form.length; ++i, ++written) {
            if (target != nullptr) target[written] = static_cast<char>(form.bytes[i]);
        }
    }
    return written + 1;
}

}  // namespace
}  // namespace kv::text

std::int64_t kvStr_wchar_to_UTF8(char* pTarget, const wchar_t* pSource, std::int64_t nLimit) {
    return kv::text::encode(pTarget, pSource, nLimit);
}

std::int64_t kvStr_UTF16_to_UTF8(char* pTarget, const std::uint16_t* pSource, std::int64_t nLimit) {
    return kv::text::encode(pTarget, pSource, nLimit);
}
