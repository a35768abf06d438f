// The oldest files of a directory make room for a new one. The log's own names play no part in it: whatever has the
// extension counts.
#include <algorithm>
#include <cstdint>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "diag/listed_files.h"
#include "errlog.h"

namespace kv::diag {
namespace {

/// Creation time and name, so that equal times fall in the order of names.
using DatedFile = std::pair<std::uint64_t, std::string>;

std::vector<DatedFile> filesOf(const std::string& pattern) {
    std::vector<DatedFile> files;
    forEachFile(pattern.c_str(), [&files](const kvOSFindData& entry) {
        files.emplace_back(std::uint64_t{entry.ftCreation.dwHigh} << 32 | entry.ftCreation.dwLow, entry.szName);
    });
    return files;
}

void rotate(const std::string& prefix, const char* extension, std::uint32_t maximum) {
    std::vector<DatedFile> files = filesOf(prefix + "*" + extension);
    if (files.size() < maximum) return;
    std::ranges::sort(files);
    // A maximum of 0 asks for one more than there are.
    const std::size_t count = std::min(files.size() - maximum + 1, files.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::string path = prefix + files[i].second;
        // Not by kvOSDeleteFile, which reports, and would follow the redirect away from what was listed.
        if (kvOSFileExists(path.c_str()) != 0) unlink(path.c_str());
    }
}

}  // namespace
}  // namespace kv::diag

void kvErrLog_RotateFiles(const char* pPrefix, std::uint64_t, const char* pExtension, std::uint32_t dwMaximum) {
    const kv::border::KeepErrno keep;
    kv::border::atBorder(false, [&] {
        kv::diag::rotate(std::string(kv::border::orEmpty(pPrefix)), pExtension == nullptr ? "" : pExtension, dwMaximum);
        return true;
    });
}
