// Other libraries that read what lies on a network: each reads one object from its start to its end in calls of one
// size and then forgets all it has kept, so that every pass begins alike.
//
// They are there when the build found them (scripts/setup bench installs them); KVUTIL_BENCH_GDAL and
// KVUTIL_BENCH_AVIO tell.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kv::bench {

/// A path of GDAL's virtual file systems: "/vsicurl/" and a URL, or "/vsis3/", bucket and key.
void readByGdal(const std::string& path, std::uint64_t size, std::uint32_t call);

/// The same file read at one place after the other.
void readPlacesByGdal(const std::string& path, const std::vector<std::uint64_t>& places, std::uint32_t call);

/// libavformat's protocols: "http://...". One answer is read on as a stream, without ranges.
void readByAvio(const std::string& url, std::uint64_t size, std::uint32_t call);

}  // namespace kv::bench
