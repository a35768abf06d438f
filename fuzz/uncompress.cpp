// Streams that claim to be zlib's or gzip's.
//
// What must hold: nothing is written behind the destination, and the same input compressed comes back. The first two
// bytes are the destination's length.
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz/input.h"
#include "kvos/compression.h"

namespace {

using kv::fuzz::must;

std::unique_ptr<char[]> room(std::uint32_t length) { return std::unique_ptr<char[]>(new char[length]); }

void unpack(const char* stream, std::uint32_t length, std::uint32_t limit) {
    const auto out = room(limit);
    const std::uint32_t result = kvOSUncompress(stream, length, out.get(), limit);
    must(result == 0xFFFFFFFF || result <= limit, "what is unpacked fits");
}

void packAndUnpack(const char* bytes, std::uint32_t length) {
    const std::uint32_t limit = kvOSCalcCompressedLen(length) + 8;
    const auto packed = room(limit);
    const std::uint32_t result = kvOSCompress(bytes, length, packed.get(), limit);
    must(result != 0xFFFFFFFF && result >= limit, "there is room enough");
    const auto back = room(length);
    must(kvOSUncompress(packed.get(), result - limit, back.get(), length) == length, "its length comes back");
    must(std::memcmp(back.get(), bytes, length) == 0, "what was compressed comes back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::uint16_t limit = 0;
    if (size < sizeof limit) return 0;
    std::memcpy(&limit, data, sizeof limit);
    const auto length = static_cast<std::uint32_t>(size - sizeof limit);
    const auto exact = room(length);
    std::memcpy(exact.get(), data + sizeof limit, length);
    unpack(exact.get(), length, limit);
    packAndUnpack(exact.get(), length);
    return 0;
}
