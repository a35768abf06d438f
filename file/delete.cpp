// Deleting and renaming by name.
//
// Results are call by call and not uniform: a deleted local file gives 1, a deleted S3 object 0, a renamed file 0. No
// call here removes a directory: directories, too, are handed to the deletion of files, which the system refuses.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <unistd.h>

#include "border/guard.h"
#include "errlog.h"
#include "file/network.h"
#include "file/redirect.h"
#include "kvos/attributes.h"
#include "kvos/find.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kRefused = 0xFFFFFFFF;

std::uint32_t reportFailedDeletion(int result) {
    ErrOut("kvOSDeleteFile failed error = %d ", result);
    return 0;
}

std::uint32_t deleteLocal(const char* path) {
    const int result = unlink(path);
    return result == 0 ? 1 : reportFailedDeletion(result);
}

/// Asks the store to delete an object: 0 when it did, else kRefused. There is no client to ask with in this version.
std::uint32_t deleteObject(const char* /*address*/) {
    errno = ENOTSUP;
    return kRefused;
}

std::uint32_t deleteByName(const char* path) {
    border::PathBuffer target;
    if (!redirected(path, target)) return reportFailedDeletion(-1);
    if (kvOSUseAws(target) != 0) return deleteObject(target);
    if (kvOSFUseCurl(target) != 0) return kRefused;
    return deleteLocal(target);
}

/// An enumeration that ends with its scope, the last error kept.
class Search {
public:
    explicit Search(const char* pattern) : handle_(kvOSFindFirstFile(pattern, &entry_)) {}
    ~Search() {
        const border::KeepErrno keep;
        kvOSFindClose(handle_);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    bool isOpen() const { return handle_ != KVFIND_INVALID; }
    const kvOSFindData* next() { return kvOSFindNextFile(handle_, &entry_) != 0 ? &entry_ : nullptr; }

private:
    kvOSFindData entry_;
    std::int64_t handle_;
};

bool deleteEntry(const char* path, std::uint32_t attributes) {
    if ((attributes & KVATTR_DIRECTORY) != 0) {
        if (kvOSRemoveDirectoryRecursive(path) == 0) return false;
        kvOSDeleteFile(path);
        return true;
    }
    if ((attributes & KVATTR_READONLY) != 0) kvOSSetFileReadOnly(path, 0);
    return kvOSDeleteFile(path) != 0;
}

/// One level of a recursive removal. On the heap, because a level holds several paths and levels nest.
struct RemovalPaths {
    border::PathBuffer pattern;
    border::PathBuffer entry;
};

bool makeRemovalPaths(const char* path, RemovalPaths& paths) {
    if (!redirected(path, paths.pattern)) return false;
    if (border::appendText(paths.pattern, sizeof paths.pattern, "\\*") &&
        border::copyText(paths.entry, sizeof paths.entry, path) &&
        border::appendText(paths.entry, sizeof paths.entry, "\\")) {
        return true;
    }
    errno = ENAMETOOLONG;
    return false;
}

/// Deletes what the search still finds; false when something could not be deleted or the listing broke off.
bool deleteFound(Search& search, border::PathBuffer& path) {
    const std::size_t prefix = std::strlen(path);
    while (const kvOSFindData* entry = search.next()) {
        const std::string_view name = entry->szName;
        if (name == "." || name == "..") continue;
        path[prefix] = '\0';
        if (!border::appendText(path, sizeof path, name)) {
            errno = ENAMETOOLONG;
            return false;
        }
        if (!deleteEntry(path, entry->dwAttributes)) return false;
    }
    return errno == -1;  // the mark of a listing that came to its end
}

std::uint32_t removeRecursively(const char* path) {
    const auto paths = std::make_unique<RemovalPaths>();
    if (!makeRemovalPaths(path, *paths)) return 0;
    {
        Search search(paths->pattern);
        // The entry that opening the search delivered is passed over.
        if (!search.isOpen() || !deleteFound(search, paths->entry)) return 0;
    }
    return kvOSDeleteFile(path);
}

std::int32_t renameByName(const char* oldPath, const char* newPath) {
    border::PathBuffer from;
    border::PathBuffer to;
    if (!redirected(oldPath, from) || !redirected(newPath, to)) return -1;
    if (isNetworkPath(from)) return -1;
    return std::rename(from, to);
}

}  // namespace
}  // namespace kv::file

using namespace kv;
using namespace kv::file;

extern "C" {

uint32_t kvOSDeleteFile(const char* pPath) {
    return border::atBorder(0u, [&] { return deleteByName(pPath); });
}

uint32_t kvOSRemoveDirectory(const char* pPath) {
    return border::atBorder(0u, [&] {
        border::PathBuffer target;
        return redirected(pPath, target) ? kvOSDeleteFile(target) : reportFailedDeletion(-1);
    });
}

uint32_t kvOSRemoveDirectoryRecursive(const char* pPath) {
    return border::atBorder(0u, [&] { return removeRecursively(pPath); });
}

int32_t kvOSRenameFile(const char* pOldPath, const char* pNewPath) {
    return border::atBorder(-1, [&] { return renameByName(pOldPath, pNewPath); });
}

}  // extern "C"
