// Backups of a file, in a ring of numbered copies beside it: "config.xml" has "config.000.xml", the newest, and so on.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "border/guard.h"
#include "border/text.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/naming.h"
#include "naming/append.h"
#include "naming/path_parts.h"

namespace kv::naming {
namespace {

constexpr std::uint32_t kLastNumber = 999;

/// The name of a backup. "name" gives "name.000.": the dot ahead of the extension is there without one too.
bool nameBackup(const char* path, std::uint32_t number, border::PathBuffer& backup) {
    const auto parts = splitPath(path, DriveRule::keep);
    if (!parts) return false;
    const std::string_view last = parts->name.empty() ? parts->dir : parts->name;
    const std::string_view whole(path, last.empty() ? 0 : static_cast<std::size_t>(last.data() + last.size() - path));
    std::string_view ext = parts->ext;
    if (ext.starts_with('.')) ext.remove_prefix(1);
    char middle[8];
    std::snprintf(middle, sizeof middle, ".%03u.", number);
    backup[0] = '\0';
    return appendPieces(backup, {whole, middle, ext});
}

bool isPresent(const char* path) { return kvOSFileExists(path) != 0; }

/// False if the move had to be a copy, or was not possible at all.
bool moveBackup(const char* from, const char* to) {
    if (kvOSRenameFile(from, to) == 0) return true;
    if (kvOSCopyFile(from, to, 0) == 0) ErrOut("\nError backing up config FALSE (%d) ", errno);
    return false;
}

/// Moves each backup to the next number, the highest first. False if one of the moves was not a rename.
bool moveAllOn(const char* path, std::uint32_t count) {
    bool renamed = true;
    for (std::uint32_t k = count; k >= 2; --k) {
        border::PathBuffer from, to;
        if (!nameBackup(path, k - 2, from) || !nameBackup(path, k - 1, to) || !isPresent(from)) continue;
        renamed = moveBackup(from, to) && renamed;
    }
    return renamed;
}

void makeBackups(const char* path, std::uint32_t count) {
    border::PathBuffer name;
    if (nameBackup(path, std::max(count, 1u), name) && isPresent(name)) kvOSDeleteFile(name);
    const bool renamed = moveAllOn(path, count);
    if (!nameBackup(path, 0, name)) return;
    if (renamed) {
        kvOSCopyFile(path, name, 0);
    } else {
        DuplicateContents(name, path);  // a folder that refuses renames may still let the file be written
    }
}

/// A handle that is closed with its scope, whatever else happens.
class OpenFile {
public:
    OpenFile(const char* path, std::uint32_t access, std::uint32_t share)
        : handle_(kvOSCreateFile(path, access, share, nullptr, KVFILE_OPEN_EXISTING, 0x10000000, 0)) {}
    ~OpenFile() {
        if (isOpen()) kvOSCloseFile(handle_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isOpen() const { return handle_ != KVFILE_INVALID && handle_ != 0; }
    std::int64_t handle() const { return handle_; }

private:
    std::int64_t handle_;
};

constexpr std::uint32_t kSpare = 4096;
constexpr std::uint64_t kLargest = 0xFFFFFFFF - kSpare;  // one block, one transfer, 32 bits

void writeWhole(std::int64_t file, const void* bytes, std::uint32_t size) {
    std::uint32_t written = 0;
    kvOSSeek(file, 0);
    kvOSWriteFile(file, bytes, size, &written, nullptr);
    kvOSSetEndOfFile(file);
}

void duplicate(std::int64_t destination, std::int64_t source) {
    std::uint64_t size = 0;
    // All ones is a URL that does not tell its size.
    if (kvOSGetFileSizeEx(source, &size) == 0 || size >= kLargest) return;
    const auto count = static_cast<std::uint32_t>(size);
    const std::unique_ptr<void, void (*)(void*)> bytes(KVAlloc(count + kSpare), KVFree);
    if (bytes == nullptr) return;
    std::uint32_t got = 0;
    kvOSReadFile(source, bytes.get(), count, &got, nullptr);
    if (got != 0) writeWhole(destination, bytes.get(), got);
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;
namespace border = kv::border;

std::int32_t MakeFileBackups(const char* pPath, std::uint32_t dwCount) {
    if (pPath == nullptr) return -1;
    return border::atBorder(-1, [&] {
        if (naming::isPresent(pPath)) naming::makeBackups(pPath, std::min(dwCount, naming::kLastNumber));
        return 0;
    });
}

std::int32_t GetFileBackups(char* pPath, std::uint32_t dwMaxLength, std::int32_t nIndex) {
    if (pPath == nullptr) return -1;
    return border::atBorder(-1, [&] {
        const std::uint32_t number =
            nIndex < 0 || nIndex > 998 ? naming::kLastNumber : static_cast<std::uint32_t>(nIndex);
        border::PathBuffer name;
        if (!naming::nameBackup(pPath, number, name) || !naming::isPresent(name)) return -1;
        if (std::strlen(name) > dwMaxLength) return -2;
        naming::replaceText(pPath, name);
        return 0;
    });
}

void DuplicateContents(const char* pDestination, const char* pSource) {
    if (pDestination == nullptr || pSource == nullptr) return;
    border::atBorder(0, [&] {
        const naming::OpenFile destination(pDestination, KVFILE_WRITE, 1);
        const naming::OpenFile source(pSource, KVFILE_READ, 3);
        if (destination.isOpen() && source.isOpen()) naming::duplicate(destination.handle(), source.handle());
        return 0;
    });
}
