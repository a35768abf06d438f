// GUIDs as text and bytes, the text form of UUIDs, and UMIDs: everything about identifiers but their making.
//
// Two forms of text live here. strSetGUID shows bytes in the order of memory, snpuid the fields of a UUID.
#include "kvos/guid.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>

#include "border/guard.h"

namespace kv::text {
namespace {

constexpr std::size_t kGuidSize = 16;
constexpr std::array<std::size_t, 5> kGroups{4, 2, 2, 2, 6};

constexpr std::array<std::uint8_t, 13> kUmidLabel{0x06, 0x0A, 0x2B, 0x34, 0x01, 0x01, 0x01,
                                                  0x05, 0x01, 0x01, 0x0F, 0x20, 0x13};
constexpr std::size_t kMaterialAt = 16;
static_assert(kMaterialAt + kGuidSize == KVUMID_SIZE);

char* putBytes(char* out, std::span<const std::uint8_t> bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const std::uint8_t byte : bytes) {
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 0xF];
    }
    return out;
}

void putGuid(char* out, std::span<const std::uint8_t, kGuidSize> bytes, std::uint32_t flags) {
    const bool braces = (flags & KVGUID_NO_BRACES) == 0;
    const bool dashes = (flags & KVGUID_NO_DASHES) == 0;
    if (braces) *out++ = '{';
    std::size_t at = 0;
    for (const std::size_t length : kGroups) {
        if (dashes && at != 0) *out++ = '-';
        out = putBytes(out, bytes.subspan(at, length));
        at += length;
    }
    if (braces) *out++ = '}';
    *out = '\0';
}

/// The value of a hexadecimal digit, -1 for any other character; isxdigit would ask the locale.
constexpr int digitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

void readGuid(std::span<std::uint8_t, kGuidSize> bytes, const char* text) {
    std::ranges::fill(bytes, std::uint8_t{0});
    std::size_t digits = 0;
    for (; *text != '\0' && digits < 2 * kGuidSize; ++text) {
        const int value = digitOf(*text);
        if (value < 0) continue;
        bytes[digits / 2] |= static_cast<std::uint8_t>(digits % 2 == 0 ? value << 4 : value);
        ++digits;
    }
}

/// The text form of a UUID, and its terminator.
using UuidText = std::array<char, 37>;

UuidText textOf(const uuid4122_t& uuid) {
    UuidText text;
    const auto& node = uuid.node;
    std::snprintf(text.data(), text.size(), "%8.8x-%4.4x-%4.4x-%2.2x%2.2x-%2.2x%2.2x%2.2x%2.2x%2.2x%2.2x",
                  uuid.time_low, uuid.time_mid, uuid.time_hi_and_version, uuid.clock_seq_hi_and_reserved,
                  uuid.clock_seq_low, node[0], node[1], node[2], node[3], node[4], node[5]);
    return text;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

char* strSetGUID(char* pOut, const void* pGuid, std::uint64_t qwOffset, std::uint32_t dwFlags) {
    if (pOut == nullptr || pGuid == nullptr) return pOut;
    std::array<std::uint8_t, text::kGuidSize> bytes;  // a copy, so that the text may take the place of the bytes
    std::memcpy(bytes.data(), pGuid, bytes.size());
    text::putGuid(pOut + qwOffset, bytes, dwFlags);
    return pOut;
}

void* strGetGUID(void* pGuid, const char* pText) {
    if (pGuid == nullptr) return nullptr;
    std::array<std::uint8_t, text::kGuidSize> bytes;
    text::readGuid(bytes, pText == nullptr ? "" : pText);
    return std::memcpy(pGuid, bytes.data(), bytes.size());
}

void puid(const uuid4122_t* pUuid) {
    const kv::border::KeepErrno keep;
    if (pUuid != nullptr) std::printf("%s\n", text::textOf(*pUuid).data());
}

std::int32_t snpuid(char* pOut, std::uint64_t qwSize, const uuid4122_t* pUuid) {
    constexpr std::uint64_t kAskedFor = 38;  // meant: one more than is needed
    if (pOut == nullptr || pUuid == nullptr) return -1;
    if (qwSize < kAskedFor) return std::snprintf(pOut, qwSize, "%s", "uuid string too small");
    return std::snprintf(pOut, kAskedFor, "%s", text::textOf(*pUuid).data());
}

std::int32_t get_uuid4122_string(char* pOut, std::uint64_t qwSize) {
    uuid4122_t uuid;
    uuid4122_create(&uuid);
    return snpuid(pOut, qwSize, &uuid);
}

std::uint32_t kvOSMakeGUID(uuid4122_t* pUuid) { return uuid4122_create(pUuid); }

std::uint32_t kvOSSetUMID330(std::uint8_t* pUmid, const void* pMaterial) {
    if (pUmid == nullptr || pMaterial == nullptr) return 0;
    std::array<std::uint8_t, KVUMID_SIZE> umid{};
    std::ranges::copy(text::kUmidLabel, umid.begin());
    std::memcpy(umid.data() + text::kMaterialAt, pMaterial, text::kGuidSize);
    std::ranges::copy(umid, pUmid);
    return 1;
}

std::uint32_t kvOSGenerateUMID330(std::uint8_t* pUmid) {
    uuid4122_t uuid;
    uuid4122_create(&uuid);
    return kvOSSetUMID330(pUmid, &uuid);
}
