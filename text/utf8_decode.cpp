// UTF-8 to text of wide or 16-bit units.
//
// The limit counts bytes of the source and is looked at once a form: one that was begun is finished, up to two bytes
// past it. Nothing behind the terminator is read: a form that it cuts is finished with zero bits.
#include <cstddef>
#include <cstdint>

#include "kvos/text.h"

namespace kv::text {
namespace {

/// How many continuation bytes a lead byte asks for, and which of its own bits count.
struct Lead {
    unsigned following;
    std::uint32_t bits;
};

/// Meant: what would begin a form of four bytes is a unit by itself, and so is a continuation byte that stands alone.
constexpr Lead leadOf(std::uint8_t byte) {
    switch (byte >> 4) {
        case 0xC:
        case 0xD:
            return {1, byte & 0x1FU};
        case 0xE:
            return {2, byte & 0xFU};
        default:
            return {0, byte};
    }
}

template <class Unit>
std::uint32_t decode(Unit* target, const char* source, std::int64_t limit) {
    std::int64_t read = 0;
    std::int64_t written = 0;
    std::uint32_t isWellFormed = 1;
    // 0 where the text has ended.
    const auto nextByte = [source](std::int64_t& at) {
        const auto byte = source == nullptr ? std::uint8_t{0} : static_cast<std::uint8_t>(source[at]);
        if (byte != 0) ++at;
        return byte;
    };
    while (read < limit) {
        const std::uint8_t byte = nextByte(read);
        if (byte == 0) {
            if (target != nullptr) target[written] = 0;
            break;
        }
        auto [following, bits] = leadOf(byte);
        for (; following > 0; --following) {
            const std::uint8_t next = nextByte(read);
            if ((next & 0xC0) != 0x80) isWellFormed = 0;
            bits = bits << 6 | (next & 0x3FU);
        }
        if (target != nullptr) target[written] = static_cast<Unit>(bits);
        ++written;
    }
    return isWellFormed;
}

}  // namespace
}  // namespace kv::text

std::uint32_t kvStr_UTF8_to_wchar(wchar_t* pTarget, const char* pSource, std::int64_t nLimit) {
    return kv::text::decode(pTarget, pSource, nLimit);
}

std::uint32_t kvStr_UTF8_to_UTF16(std::uint16_t* pTarget, const char* pSource, std::int64_t nLimit) {
    return kv::text::decode(pTarget, pSource, nLimit);
}
