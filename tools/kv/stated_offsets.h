// Which segments of a playlist are told where they begin in their file. The library's records do not say: in one that
// is not told the place in the whole stands there, which may as well be what the playlist tells.
#pragma once

#include <string>
#include <vector>

namespace kv::tool {

/// For each segment, in their order, as far as the playlist can be read.
std::vector<bool> statedOffsets(const std::string& playlist);

}  // namespace kv::tool
