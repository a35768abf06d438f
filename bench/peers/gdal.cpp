#include <cpl_vsi.h>
#include <vector>

#include "bench/comparison.h"
#include "bench/peers/peers.h"

namespace kv::bench {
namespace {

class VsiFile {
public:
    explicit VsiFile(const std::string& path) : file_(VSIFOpenL(path.c_str(), "rb")) {
        require(file_ != nullptr, "GDAL can't open " + path);
    }
    VsiFile(const VsiFile&) = delete;
    VsiFile& operator=(const VsiFile&) = delete;
    ~VsiFile() {
        VSIFCloseL(file_);
        VSICurlClearCache();
    }

    void seek(std::uint64_t position) { VSIFSeekL(file_, position, SEEK_SET); }
    void read(std::vector<char>& buffer) {
        require(VSIFReadL(buffer.data(), 1, buffer.size(), file_) == buffer.size(), "a short read of GDAL");
    }

private:
    VSILFILE* file_;
};

}  // namespace

void readByGdal(const std::string& path, std::uint64_t size, std::uint32_t call) {
    VsiFile file(path);
    std::vector<char> buffer(call);
    for (std::uint64_t left = size; left > 0; left -= buffer.size()) {
        buffer.resize(left < call ? left : call);
        file.read(buffer);
    }
}

void readPlacesByGdal(const std::string& path, const std::vector<std::uint64_t>& places, std::uint32_t call) {
    VsiFile file(path);
    std::vector<char> buffer(call);
    for (const std::uint64_t place : places) {
        file.seek(place);
        file.read(buffer);
    }
}

}  // namespace kv::bench
