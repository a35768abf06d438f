#include <cpl_vsi.h>
#include <vector>

#include "bench/comparison.h"
#include "bench/peers/peers.h"

namespace kv::bench {

void readByGdal(const std::string& path, std::uint64_t size, std::uint32_t call) {
    VSILFILE* const file = VSIFOpenL(path.c_str(), "rb");
    require(file != nullptr, "GDAL can't open " + path);
    std::vector<char> buffer(call);
    for (std::uint64_t at = 0; at < size; at += call) {
        require(VSIFReadL(buffer.data(), 1, call, file) == call, "a short read of GDAL");
    }
    VSIFCloseL(file);
    VSICurlClearCache();
}

}  // namespace kv::bench
