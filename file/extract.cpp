// A range of one file as a file of its own.
//
// Reads and writes that fail are told, and the result is 1 all the same; only an end of the source ahead of the range's
// end, and what fails ahead of the first block, gives 0. Meant.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>

#include "border/guard.h"
#include "border/relaxed.h"
#include "errlog.h"
#include "file/copied.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/time.h"

namespace kv::file {
namespace {

constexpr std::uint64_t kBlock = 1 << 20;

struct Progress {
    std::uint64_t* bytes;
    std::uint32_t* elapsed_ms;
    std::uint32_t* permille;
    std::uint32_t start_ms = kvOSGetMs();

    void tell(std::uint64_t done, std::uint64_t all) const {
        if (bytes != nullptr) border::relaxedStore(*bytes, done);
        if (permille != nullptr) border::relaxedStore(*permille, permilleOf(done, all));
        if (elapsed_ms != nullptr) border::relaxedStore(*elapsed_ms, kvOSGetMs() - start_ms);
    }
};

struct Range {
    std::uint64_t sourceOffset;
    std::uint64_t bytes;
    std::uint64_t destinationOffset;
};

std::uint32_t refuse() {
    const border::KeepErrno keep;
    ErrOut("\nERROR:kvOSExtractFileFast(%d, 0x%08X) ", keep.value(), static_cast<unsigned>(keep.value()));
    return 0;
}

enum class Ended {
    whole,
    refused,  // told: 0
    failed    // in a call on the way, told as well: 1. Meant.
};

Ended refuseOnTheWay() {
    refuse();
    return Ended::refused;
}

Ended tellFailure(const char* call) {
    const border::KeepErrno keep;
    ErrOut("kvOSExtractFileFast %s FAILED %d 0x%X ", call, keep.value(), static_cast<unsigned>(keep.value()));
    return Ended::failed;
}

/// What earlier calls left in errno must not pass for the reason of one that sets none: a position that is refused, or
/// the end of an object, which is a read that fails.
void forgetErrno() { errno = 0; }

bool seekTo(const Copied& file, std::uint64_t offset) {
    forgetErrno();
    return kvOSSeek(file.handle(), static_cast<std::int64_t>(offset)) != -1;
}

Ended extractBlocks(const Copied& source, const Copied& destination, std::uint64_t bytes, const Progress& progress) {
    const std::unique_ptr<void, void (*)(void*)> block(KVAlloc(kBlock), KVFree);
    if (block == nullptr) return refuseOnTheWay();
    for (std::uint64_t done = 0; done < bytes;) {
        std::uint32_t got = 0;
        std::uint32_t written = 0;
        const auto wanted = static_cast<std::uint32_t>(std::min(bytes - done, kBlock));
        forgetErrno();
        if (kvOSReadFile(source.handle(), block.get(), wanted, &got, nullptr) == 0) return tellFailure("Read");
        if (got == 0) return refuseOnTheWay();
        if (kvOSWriteFile(destination.handle(), block.get(), got, &written, nullptr) == 0) return tellFailure("Write");
        if (written != got) {
            ErrOut("kvOSExtractFileFast Write FAILED");
            return Ended::failed;
        }
        done += got;
        progress.tell(done, bytes);
    }
    return Ended::whole;
}

std::uint32_t extract(const char* from, const char* to, std::uint32_t flags, const Range& range,
                      const Progress& progress) {
    if (from == nullptr || to == nullptr) {
        errno = EINVAL;
        return refuse();
    }
    if (kvOSFileExists(to) != 0) {
        if ((flags & KVCOPY_KEEP_EXISTING) != 0) {
            errno = EEXIST;
            return 0;
        }
        kvOSDeleteFile(to);
    }
    const Copied source(kvOSCreateFile(from, KVFILE_READ, kShareAll, nullptr, KVFILE_OPEN_EXISTING, 0, 0));
    if (!source.isOpen()) return refuse();
    Copied destination(kvOSCreateFile(to, KVFILE_WRITE, 1, nullptr, KVFILE_OPEN_ALWAYS, 0, 0));
    if (!destination.isOpen()) return refuse();
    // A place that can't be reached would leave the position where it was, at other bytes.
    if (!seekTo(source, range.sourceOffset) || !seekTo(destination, range.destinationOffset)) return refuse();
    const Ended ended = extractBlocks(source, destination, range.bytes, progress);
    // Bytes that only fail to arrive at the close are the first failure there is, and those of a range that broke off
    // are no news.
    if (ended == Ended::whole) return destination.close() ? 1 : 0;
    return ended == Ended::failed ? 1 : 0;
}

}  // namespace
}  // namespace kv::file

uint32_t kvOSExtractFileFast(const char* pSource, const char* pDestination, uint32_t dwFlags, uint64_t qwSourceOffset,
                             uint64_t qwBytes, uint64_t qwDestinationOffset, uint64_t* pqwProgressBytes,
                             uint32_t* pdwElapsedMs, uint32_t* pdwProgressPermille) {
    return kv::file::copyAtBorder(0u, [&] {
        return kv::file::extract(pSource, pDestination, dwFlags, {qwSourceOffset, qwBytes, qwDestinationOffset},
                                 {pqwProgressBytes, pdwElapsedMs, pdwProgressPermille});
    });
}
