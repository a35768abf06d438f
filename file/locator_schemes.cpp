// Which schemes make a text a URL, a network file or a live stream.
//
// The tables are prefixes, tested from top to bottom. Those of the URLs end in "//", the others in ":" alone, so that
// "http:x" is a network file that no transfer opens.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "border/text.h"
#include "kvos/locator.h"

namespace kv::file {
namespace {

constexpr std::array<std::string_view, 3> kUrlSchemes{"http://", "https://", "ftp://"};

constexpr std::array<std::string_view, 5> kNetworkFileSchemes{"http:", "https:", "s3:", "glacier:", "ftp:"};

constexpr std::array<std::string_view, 23> kStreamSchemes{
    "rtp:", "srt:", "rist:",  "rtsp:",  "rtmp:",     "rtmps:",  "rtmf:", "sip:",
    "ndi:", "sdi:", "s2110:", "s2022:", "rivermax:", "cdi:",    "whip:", "webrtc:",
    "tcp:", "bls:", "blss:",  "hls:",   "hlslive:",  "hlsvod:", "udp:"};

template <std::size_t N>
bool beginsWithOneOf(const std::array<std::string_view, N>& schemes, const char* text) noexcept {
    const std::string_view given = border::orEmpty(text);
    return std::ranges::any_of(schemes,
                               [&](std::string_view scheme) { return border::beginsWithAnyCase(given, scheme); });
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::uint32_t kvOSFUseCurl(const char* pText) { return file::beginsWithOneOf(file::kUrlSchemes, pText) ? 1 : 0; }

std::uint32_t kvOSIsNetworkFile(const char* pText) {
    return file::beginsWithOneOf(file::kNetworkFileSchemes, pText) ? 1 : 0;
}

std::uint32_t kvOSIsNetworkStream(const char* pText) {
    return file::beginsWithOneOf(file::kStreamSchemes, pText) ? 1 : 0;
}

std::uint32_t kvOSIsNetworkSource(const char* pText) {
    return kvOSIsNetworkFile(pText) != 0 || kvOSIsNetworkStream(pText) != 0 ? 1 : 0;
}
