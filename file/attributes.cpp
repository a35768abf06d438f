// Attributes, times and the read-only state of a file by its name.
//
// There are two tests for read-only and they differ: the attribute bit asks the mode bits of the caller's own class,
// kvOSFileIsReadOnly asks whether anybody at all may write.
#include "kvos/attributes.h"

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"
#include "file/existence.h"
#include "file/network.h"
#include "file/open_reading.h"
#include "file/redirect.h"
#include "kvos/file.h"

namespace kv::file {
namespace {

constexpr mode_t kAnyWrite = 0222;

// Which bits setting read-only adds: all of the mode but the write bits.
constexpr mode_t kReadOnlyAdds = 0xFF6D;

// What kvOSFileIsDir looks at: one bit of the type field, which sockets and block devices carry as well.
constexpr mode_t kDirectoryBit = 0x4000;

std::optional<struct stat> statusOf(const char* path) noexcept {
    struct stat status;
    if (stat(path, &status) != 0) return std::nullopt;
    return status;
}

/// Applies the redirect, and asks the one or the other: `onNetwork()` or `onDisk(redirected)`. `failure` is the answer
/// for a path that is null or does not fit.
template <class Result, class OnNetwork, class OnDisk>
Result byKindOfPath(const char* path, Result failure, OnNetwork&& onNetwork, OnDisk&& onDisk) noexcept {
    return border::atBorder(failure, [&]() -> Result {
        border::PathBuffer target;
        if (!redirected(path, target)) return failure;
        return isNetworkPath(target) ? onNetwork() : onDisk(target);
    });
}

template <class TimeOf>
std::int64_t fileTime(const char* path, TimeOf&& timeOf) noexcept {
    return byKindOfPath(
        path, std::int64_t{0}, [] { return KVFILETIME_NETWORK; },
        [&](const char* target) -> std::int64_t {
            const auto status = statusOf(target);
            return status ? std::int64_t{timeOf(*status)} : 0;
        });
}

bool endsAsDirectory(std::string_view text) { return text.ends_with('/') || text.ends_with('\\'); }

std::uint32_t objectAttributes(const char* path, std::string_view target) {
    const std::int64_t object = openForReading(path);
    if (object == KVFILE_INVALID) return endsAsDirectory(target) ? KVATTR_DIRECTORY : KVATTR_INVALID;
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(object, &size);
    kvOSCloseFile(object);
    return size != 0 ? KVATTR_NORMAL : KVATTR_DIRECTORY;
}

std::uint32_t urlAttributes(const char* path, const char* target) {
    if (!isOnNameList(target) && kvOSFileExistsInternal(path) == 0) return KVATTR_INVALID;
    return endsAsDirectory(target) ? KVATTR_DIRECTORY : KVATTR_NORMAL;
}

std::uint32_t localAttributes(const char* target) {
    const auto status = statusOf(target);
    if (!status) return 0;
    if (!S_ISDIR(status->st_mode) && !S_ISREG(status->st_mode)) {
        errno = -1;
        return KVATTR_INVALID;
    }
    std::uint32_t attributes = S_ISDIR(status->st_mode) ? KVATTR_DIRECTORY : 0;
    if (UTIL_IsReadOnlyBitsSet(&*status) != 0) attributes |= KVATTR_READONLY;
    return attributes != 0 ? attributes : KVATTR_NORMAL;
}

std::uint32_t attributesOf(const char* path) {
    border::PathBuffer target;
    if (!redirected(path, target)) return KVATTR_INVALID;
    if (kvOSUseAws(target) != 0) return objectAttributes(path, target);
    if (kvOSFUseCurl(target) != 0) return urlAttributes(path, target);
    return localAttributes(target);
}

std::uint32_t hasAttribute(const char* path, std::uint32_t bit) {
    const std::uint32_t attributes = kvOSGetFileAttributes(path);
    return attributes != KVATTR_INVALID && (attributes & bit) != 0 ? 1 : 0;
}

bool nobodyMayWrite(const char* target) {
    const auto status = statusOf(target);
    return status && (status->st_mode & kAnyWrite) == 0;
}

std::uint32_t setReadOnly(const char* target, bool readOnly) {
    if (nobodyMayWrite(target) == readOnly) return 0;
    if (const auto status = statusOf(target)) {
        chmod(target, status->st_mode | (readOnly ? kReadOnlyAdds : kAnyWrite));
    }
    return 1;
}

/// Shift that brings the mode bits of the caller's own class down to the lowest three.
unsigned shiftOfOwnClass(const struct stat& status) {
    if (geteuid() == status.st_uid) return 6;
    return getegid() == status.st_gid ? 3 : 0;
}

}  // namespace
}  // namespace kv::file

namespace border = kv::border;
namespace file = kv::file;

std::int64_t kvOSFileTimeCreated(const char* pPath) {
    return file::fileTime(pPath, [](const struct stat& status) { return status.st_ctime; });
}

std::int64_t kvOSFileTimeModified(const char* pPath) {
    return file::fileTime(pPath, [](const struct stat& status) { return status.st_mtime; });
}

std::int64_t kvOSFileTimeAccessed(const char* pPath) {
    return file::fileTime(pPath, [](const struct stat& status) { return status.st_atime; });
}

std::uint32_t kvOSGetFileAttributes(const char* pPath) {
    if (pPath == nullptr) {
        errno = -1;
        return KVATTR_INVALID;
    }
    return border::atBorder(KVATTR_INVALID, [&] { return file::attributesOf(pPath); });
}

std::uint32_t kvOSFileIsHidden(const char* pPath) {
    return file::byKindOfPath(
        pPath, 0u, [&] { return file::hasAttribute(pPath, KVATTR_HIDDEN); }, [](const char*) { return 0u; });
}

std::uint32_t kvOSFileIsSystem(const char* pPath) {
    return file::byKindOfPath(
        pPath, 0u, [&] { return file::hasAttribute(pPath, KVATTR_SYSTEM); }, [](const char*) { return 0u; });
}

std::uint32_t kvOSFileIsDir(const char* pPath) {
    return file::byKindOfPath(
        pPath, 0u, [&] { return file::hasAttribute(pPath, KVATTR_DIRECTORY); },
        [](const char* target) {
            const auto status = file::statusOf(target);
            return status && (status->st_mode & file::kDirectoryBit) != 0 ? 1u : 0u;
        });
}

std::uint32_t kvOSFileIsReadOnly(const char* pPath) {
    return file::byKindOfPath(
        pPath, 0u, [] { return 0u; }, [](const char* target) { return file::nobodyMayWrite(target) ? 1u : 0u; });
}

std::uint32_t kvOSSetFileReadOnly(const char* pPath, std::uint32_t fReadOnly) {
    return file::byKindOfPath(
        pPath, 0xFFFFFFFFu, [] { return 0xFFFFFFFFu; },
        [&](const char* target) { return file::setReadOnly(target, fReadOnly != 0); });
}

std::uint32_t UTIL_IsReadOnlyBitsSet(const struct stat* pStat) {
    if (pStat == nullptr) return 0;
    const unsigned shift = file::shiftOfOwnClass(*pStat);
    return (pStat->st_mode & (06u << shift)) == (04u << shift) ? 1 : 0;
}

std::uint32_t UTIL_IsExecuteBitsSet(const struct stat* pStat) {
    if (pStat == nullptr || S_ISDIR(pStat->st_mode)) return 0;
    return (pStat->st_mode & (01u << file::shiftOfOwnClass(*pStat))) != 0 ? 1 : 0;
}
