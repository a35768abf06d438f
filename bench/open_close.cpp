// Opening and closing many small local files for reading, beside fopen and fclose.
//
// Ours also gives the stream its buffer, for which the C library asks the file for its block size; the second row's
// peer does so too.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "kvos/file.h"

namespace kv::bench {
namespace {

void openAndCloseHandles(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        const std::int64_t handle = kvOSCreateFile(path.c_str(), KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
        require(handle != KVFILE_INVALID, "a file can't be opened");
        kvOSCloseFile(handle);
    }
}

void openAndCloseStreams(const std::vector<std::string>& paths, bool withBuffer) {
    for (const std::string& path : paths) {
        std::FILE* stream = std::fopen(path.c_str(), "rb");
        require(stream != nullptr, "a file can't be opened");
        if (withBuffer) std::setvbuf(stream, nullptr, _IOFBF, 524288);
        std::fclose(stream);
    }
}

}  // namespace

void measureOpenClose(const Scale& scale) {
    const int files = scale.quick ? 10000 : 100000;
    const ScratchFolder folder;
    const std::vector<std::string> paths = folder.makeFrames(files);
    Table table("open_close: " + std::to_string(files) + " files of 16 bytes", scale);
    const std::string what = "kvOSCreateFile and kvOSCloseFile, a file";
    const Work work = callsPerPass(paths.size());
    const auto ours = [&] { openAndCloseHandles(paths); };
    table.compare({what, "fopen, fclose", work}, ours, [&] { openAndCloseStreams(paths, false); });
    table.compare({what, "fopen, setvbuf, fclose", work}, ours, [&] { openAndCloseStreams(paths, true); });
}

}  // namespace kv::bench
