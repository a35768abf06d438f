// A folder of its own below TMPDIR, and the files that a topic needs in it. It goes with all that is in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kv::bench {

class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const std::string& path() const { return path_; }

    /// Writes a file of `bytes` random bytes, and leaves it in the page cache. Returns its path.
    std::string makeFile(std::string_view name, std::uint64_t bytes) const;

    /// Writes files of 16 bytes, named as the frames of a sequence. Returns their paths, in order.
    std::vector<std::string> makeFrames(int count) const;

private:
    std::string path_;
};

}  // namespace kv::bench
