// The files that are read, listed, opened and closed.
#include "bench/scratch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "bench/comparison.h"

namespace kv::bench {

ScratchFolder::ScratchFolder() : path_((std::filesystem::temp_directory_path() / "kvutil-bench-XXXXXX").string()) {
    require(mkdtemp(path_.data()) != nullptr, "no scratch folder");
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::makeFile(std::string_view name, std::uint64_t bytes) const {
    std::string path = path_ + "/" + std::string(name);
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    require(stream != nullptr, "a scratch file can't be made");
    std::mt19937_64 random(1);
    for (std::uint64_t left = bytes; left > 0;) {
        std::vector<std::uint64_t> block(std::min<std::uint64_t>(left / sizeof(std::uint64_t) + 1, 131072));
        std::ranges::generate(block, random);
        const std::size_t count = std::min<std::uint64_t>(left, block.size() * sizeof block[0]);
        require(std::fwrite(block.data(), 1, count, stream) == count, "a scratch file can't be written");
        left -= count;
    }
    require(std::fclose(stream) == 0, "a scratch file can't be written");
    return path;
}

std::vector<std::string> ScratchFolder::makeFrames(int count) const {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "clip%06d.tga", i);
        paths.push_back(makeFile(name, 16));
    }
    return paths;
}

}  // namespace kv::bench
