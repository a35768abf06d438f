// What the copying calls share: handles that close themselves, whole writes, and the message of an exception.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "border/guard.h"
#include "errlog.h"
#include "file/handle.h"
#include "kvos/file.h"

namespace kv::file {

/// Handed to the opens of a copy, which then go without it for a last block that is no whole one.
inline constexpr std::uint32_t kUnbuffered = 0x20000000;

inline constexpr std::uint32_t kShareAll = 7;

/// A handle that is closed at the latest with its scope.
class Copied {
public:
    explicit Copied(std::int64_t handle) : handle_(handle) {}
    ~Copied() {
        const border::KeepErrno keep;
        close();
    }
    Copied(const Copied&) = delete;
    Copied& operator=(const Copied&) = delete;

    bool isOpen() const { return isValid(handle_); }
    std::int64_t handle() const { return handle_; }
    /// False if the data may not have arrived. A second call does nothing and says true.
    bool close() {
        if (!isOpen()) return true;
        return kvOSCloseFile(std::exchange(handle_, KVFILE_INVALID)) != 0;
    }

private:
    std::int64_t handle_;
};

/// A short write succeeds for the file layer, so the count decides.
inline bool writeBlock(std::int64_t file, const void* block, std::uint32_t count) {
    std::uint32_t written = 0;
    return kvOSWriteFile(file, block, count, &written, nullptr) != 0 && written == count;
}

inline bool writeBlockAt(std::int64_t file, std::int64_t offset, const void* block, std::uint32_t count) {
    return isValid(file) && kvOSSeek(file, offset) != -1 && writeBlock(file, block, count);
}

/// Whether a handle is that of an object, which is what was written through this one handle, from its close on: a
/// second open would find none, or an older one that the close replaces.
inline bool isMadeByClose(std::int64_t file) { return isValid(file) && recordOf(file).dwType == KVFILE_S3; }

/// Writes the last block at an offset, through an open of its own where the file is there while it is written.
inline bool writeTail(std::int64_t destination, const char* path, std::int64_t offset, const void* block,
                      std::uint32_t count) {
    if (isMadeByClose(destination)) return writeBlockAt(destination, offset, block, count);
    Copied again(kvOSCreateFile(path, KVFILE_WRITE, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0));
    return writeBlockAt(again.handle(), offset, block, count) && again.close();
}

/// How far a copy is, in thousandths, as far as 32 bits tell: a last block may go far beyond what was asked for. `all`
/// is not 0; no copy moves as many bytes as would overflow the product.
inline std::uint32_t permilleOf(std::uint64_t done, std::uint64_t all) {
    constexpr std::uint64_t kHighest = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(done * 1000 / all, kHighest));
}

/// The guard of these calls, which tells what it caught.
template <class Result, class Body>
Result copyAtBorder(Result failure, Body&& body) noexcept {
    return border::atBorder(failure, std::forward<Body>(body), [](const char* what) {
        ErrFmtOut(KVERR_CLASS_WARNING, nullptr, 0, "WARNING(kvCopyFile): %s\n\r", what);
    });
}

}  // namespace kv::file
