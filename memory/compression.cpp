// One block through zlib, there and back.
//
// The totals of a stream are zlib's to count, but where they begin is ours: compressing begins them at the lengths,
// which is why its result is the destination's length plus that of the stream. Callers subtract it.
#include "kvos/compression.h"

#include <cstdint>
#include <zlib.h>

namespace kv::memory {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;

// The form of zlib's interface that is asked for, whichever version the headers are of.
constexpr char kZlibVersion[] = "1.2.3";
constexpr int kStreamSize = 112;
static_assert(sizeof(z_stream) == kStreamSize);

// The largest window, and 32 for a look at the head: zlib or gzip.
constexpr int kWindowBits = 15 + 32;

/// Points a stream that zlib has set up at the two blocks.
void connect(z_stream& stream, const void* source, std::uint32_t sourceLength, void* destination,
             std::uint32_t destinationLength) {
    // zlib's headers do not promise that the input stays as it is, its manual does.
    stream.next_in = static_cast<Bytef*>(const_cast<void*>(source));
    stream.avail_in = sourceLength;
    stream.next_out = static_cast<Bytef*>(destination);
    stream.avail_out = destinationLength;
}

}  // namespace
}  // namespace kv::memory

using kv::memory::kFailed;

std::uint32_t kvOSCalcCompressedLen(std::uint32_t dwLength) {
    constexpr std::uint32_t kBlock = 16384;
    const auto sum = static_cast<std::int32_t>(dwLength + (kBlock - 1));
    const std::int32_t blocks = sum / static_cast<std::int32_t>(kBlock);
    return static_cast<std::uint32_t>(blocks) * 5 + dwLength + 6;
}

std::uint32_t kvOSCompress(const void* pSource, std::uint32_t dwSourceLength, void* pDestination,
                           std::uint32_t dwDestinationLength) {
    z_stream stream{};
    std::uint32_t result = kFailed;
    if (deflateInit_(&stream, Z_DEFAULT_COMPRESSION, kv::memory::kZlibVersion, kv::memory::kStreamSize) == Z_OK) {
        kv::memory::connect(stream, pSource, dwSourceLength, pDestination, dwDestinationLength);
        stream.total_in = dwSourceLength;
        stream.total_out = dwDestinationLength;  // meant: it stays in the result
        if (deflate(&stream, Z_FINISH) == Z_STREAM_END) result = static_cast<std::uint32_t>(stream.total_out);
    }
    deflateEnd(&stream);
    return result;
}

std::uint32_t kvOSUncompress(const void* pSource, std::uint32_t dwSourceLength, void* pDestination,
                             std::uint32_t dwDestinationLength) {
    z_stream stream{};
    std::uint32_t result = kFailed;
    if (inflateInit2_(&stream, kv::memory::kWindowBits, kv::memory::kZlibVersion, kv::memory::kStreamSize) == Z_OK) {
        kv::memory::connect(stream, pSource, dwSourceLength, pDestination, dwDestinationLength);
        if (inflate(&stream, Z_FINISH) == Z_STREAM_END) result = static_cast<std::uint32_t>(stream.total_out);
    }
    inflateEnd(&stream);
    return result;
}
