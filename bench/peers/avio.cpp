extern "C" {
#include <libavformat/avformat.h>
#include <libavformat/avio.h>
}
#include <vector>

#include "bench/comparison.h"
#include "bench/peers/peers.h"

namespace kv::bench {

void readByAvio(const std::string& url, std::uint64_t size, std::uint32_t call) {
    AVIOContext* stream = nullptr;
    require(avio_open(&stream, url.c_str(), AVIO_FLAG_READ) >= 0, "libavformat can't open " + url);
    std::vector<unsigned char> buffer(call);
    for (std::uint64_t at = 0; at < size; at += call) {
        require(avio_read(stream, buffer.data(), static_cast<int>(call)) == static_cast<int>(call),
                "a short read of libavformat");
    }
    avio_closep(&stream);
}

}  // namespace kv::bench
