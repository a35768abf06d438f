// Whether a path names something that exists: the list of names first, then the file system or the server.
//
// A network path is opened by the path as the caller gave it, since the open applies the redirect itself; the
// redirected text only decides that it is one.
#include "file/existence.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "file/network.h"
#include "file/open_reading.h"
#include "file/redirect.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

constinit std::vector<const char*> gvecNames;

namespace kv::file {
namespace {

bool opensForReading(const char* path) {
    const std::int64_t file = openForReading(path);
    if (file == KVFILE_INVALID) return false;
    kvOSCloseFile(file);
    return true;
}

/// A file that stat can't examine may still open, as some network mounts show.
bool existsLocally(const char* path) {
    struct stat status;
    if (stat(path, &status) == 0) return true;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path, "rbe"), std::fclose);
    return stream != nullptr;
}

bool exists(const char* path) {
    border::PathBuffer target;
    if (!redirected(path, target) || border::orEmpty(path).empty()) return false;
    return isNetworkPath(target) ? opensForReading(path) : existsLocally(target);
}

}  // namespace

bool isOnNameList(const char* text) noexcept {
    return std::any_of(gvecNames.begin(), gvecNames.end(),
                       [text](const char* name) { return name != nullptr && std::strcmp(name, text) == 0; });
}

}  // namespace kv::file

namespace file = kv::file;

std::uint32_t kvOSFileExists(const char* pPath) {
    if (pPath != nullptr && file::isOnNameList(pPath)) return 1;
    return kvOSFileExistsInternal(pPath);
}

std::uint32_t kvOSFileExistsInternal(const char* pPath) {
    return kv::border::atBorder(0u, [&] { return file::exists(pPath) ? 1u : 0u; });
}
