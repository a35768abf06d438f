// Local files: a buffered stdio stream with 64-bit offsets behind every call.
//
// Data written reaches the system when the stream's buffer overflows or the file is closed, never by a flush call.
#include <cerrno>
#include <cstdio>
#include <optional>
#include <unistd.h>
#include <utility>

#include "border/guard.h"
#include "errlog.h"
#include "file/kinds.h"
#include "file/openers.h"
#include "file/transfer.h"
#include "platform/full_sync.h"

namespace kv::file {
namespace {

constexpr std::size_t kReadBufferSize = 524288;
constexpr int kUnexpectedNetworkError = 59;

std::FILE* streamOf(kvOSFileHandle& file) { return static_cast<std::FILE*>(file.pFile); }

bool isCreating(std::uint32_t creation) { return creation == KVFILE_CREATE_NEW || creation == KVFILE_CREATE_ALWAYS; }

/// The whole mapping of access and creation to stdio modes. Looser than the Win32 call's, and meant so. The "e" is no
/// part of it: it keeps the file from programs that are started meanwhile, which would hold what was deleted on the
/// disk.
std::FILE* openStream(const char* path, std::uint32_t access, std::uint32_t creation) {
    if (access == KVFILE_READ) return std::fopen(path, "rbe");
    if (access != KVFILE_WRITE) return std::fopen(path, isCreating(creation) ? "wb+e" : "rb+e");
    if (isCreating(creation)) return std::fopen(path, "wbe");
    std::FILE* existing = std::fopen(path, "rb+e");
    return existing != nullptr ? existing : std::fopen(path, "wb+e");
}

/// A buffer that the system allocates, its size halved until the system accepts it. A system may accept a size and keep
/// its own, as glibc does with the block size of the file: a larger one makes every seek read a whole buffer there.
void giveReadBuffer(std::FILE* stream) {
    for (std::size_t size = kReadBufferSize; size > 0; size /= 2) {
        if (std::setvbuf(stream, nullptr, _IOFBF, size) == 0) return;
    }
}

/// Every change of the position goes through here: after it, either direction is free.
bool seekStream(kvOSFileHandle& file, std::int64_t distance, int whence) {
    if (fseeko(streamOf(file), distance, whence) != 0) return false;
    file.lastTransfer = Direction::none;
    return true;
}

/// Readies the stream for a transfer in the other direction. stdio wants a seek in between: without it, bytes that were
/// written and still stand in the buffer can be lost. A stream that can't seek has its buffer flushed.
bool turnTo(Direction direction, kvOSFileHandle& file) {
    if (file.lastTransfer != direction && file.lastTransfer != Direction::none && !seekStream(file, 0, SEEK_CUR) &&
        (errno != ESPIPE || std::fflush(streamOf(file)) != 0)) {
        return false;
    }
    file.lastTransfer = direction;
    return true;
}

/// Bytes that were read ahead and are gone from the file must not be delivered: a seek ends writing, so that the flush
/// then drops what was read.
bool dropReadAhead(kvOSFileHandle& file) { return seekStream(file, 0, SEEK_CUR) && std::fflush(streamOf(file)) == 0; }

int whenceOf(std::uint32_t method) {
    switch (method) {
        case 1:
            return SEEK_CUR;
        case 2:
            return SEEK_END;
        default:
            return SEEK_SET;
    }
}

Outcome readLocal(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    if (transfer.overlapped != nullptr) {
        kvOSSeek(handleOf(file), static_cast<std::int64_t>(transfer.overlapped->qwOffset));
    }
    std::FILE* stream = streamOf(file);
    const bool ready = turnTo(Direction::read, file);
    const std::size_t got = ready ? std::fread(buffer, 1, transfer.count, stream) : 0;
    if (transfer.moved != nullptr) *transfer.moved = static_cast<std::uint32_t>(got);
    if (transfer.moved != nullptr && got != 0) return Outcome::done;
    if (ready && (got == transfer.count || std::feof(stream) != 0)) return Outcome::done;

    const int error = errno;
    if (error == kUnexpectedNetworkError) {
        ErrOut("kvOSReadFile An unexpected network error occurred. (%d %d)-FAIL=0x%08X(%d)\n", printed(handleOf(file)),
               static_cast<int>(transfer.count), static_cast<unsigned>(error), error);
        return Outcome::tryAgain;
    }
    reportFailedRead(file, transfer.count, error);
    return Outcome::failed;
}

Outcome writeLocal(kvOSFileHandle& file, const void* buffer, const Transfer& transfer) {
    if (transfer.overlapped != nullptr) {
        kvOSSeek(handleOf(file), static_cast<std::int64_t>(transfer.overlapped->qwOffset));
    }
    const bool ready = turnTo(Direction::write, file);
    const std::size_t put = ready ? std::fwrite(buffer, 1, transfer.count, streamOf(file)) : 0;
    if (transfer.moved != nullptr) *transfer.moved = static_cast<std::uint32_t>(put);
    if (transfer.moved != nullptr && put != 0) return Outcome::done;
    if (ready && put == transfer.count) return Outcome::done;

    reportFailedWrite(file, transfer.count, errno);
    return Outcome::failed;
}

std::int64_t tellLocal(kvOSFileHandle& file) { return ftello(streamOf(file)); }

std::int64_t seekLocal(kvOSFileHandle& file, std::int64_t position) {
    return seekStream(file, position, SEEK_SET) ? tellLocal(file) : -1;
}

std::int64_t seekEndLocal(kvOSFileHandle& file) { return seekStream(file, 0, SEEK_END) ? tellLocal(file) : -1; }

/// With no high word the low one carries its sign; with one the two are joined.
std::uint32_t movePointerLocal(kvOSFileHandle& file, std::int32_t low, std::int32_t* high, std::uint32_t method) {
    const std::int64_t distance =
        high == nullptr
            ? low
            : static_cast<std::int64_t>(static_cast<std::uint64_t>(static_cast<std::uint32_t>(*high)) << 32 |
                                        static_cast<std::uint32_t>(low));
    const std::int64_t position = seekStream(file, distance, whenceOf(method)) ? tellLocal(file) : -1;
    if (high != nullptr) *high = static_cast<std::int32_t>(position >> 32);
    return static_cast<std::uint32_t>(position);
}

std::uint32_t movePointerExLocal(kvOSFileHandle& file, std::int64_t distance, std::int64_t* result,
                                 std::uint32_t method) {
    const std::int64_t position = seekStream(file, distance, whenceOf(method)) ? tellLocal(file) : -1;
    if (result != nullptr) *result = position;
    return position != -1 ? 1 : 0;
}

std::uint64_t sizeLocal(kvOSFileHandle& file) {
    std::FILE* stream = streamOf(file);
    const off_t before = ftello(stream);
    if (before < 0 || !seekStream(file, 0, SEEK_END)) return 0;
    const off_t size = ftello(stream);
    seekStream(file, before, SEEK_SET);
    return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

bool cutLocal(kvOSFileHandle& file) {
    std::FILE* stream = streamOf(file);
    if (ftruncate(fileno(stream), ftello(stream)) == 0 && dropReadAhead(file)) return true;
    const int error = errno;
    if (!isSilentError(error)) {
        ErrOut("kvOSSetEndOfFile(%d)-FAIL=0x%08X(%d) ", printed(handleOf(file)), static_cast<unsigned>(error), error);
    }
    return false;
}

/// The stream is not flushed, and the answer says so. Meant, as is the descriptor: the low half of the stream's
/// address.
bool flushLocal(kvOSFileHandle& file) {
    const border::KeepErrno keep;
    platform::fullSync(static_cast<int>(reinterpret_cast<std::intptr_t>(file.pFile)));
    return false;
}

bool isAtEndLocal(kvOSFileHandle& file) { return std::feof(streamOf(file)) != 0; }

bool closeLocal(kvOSFileHandle& file) {
    const bool closed = std::fclose(streamOf(file)) == 0;
    const border::KeepErrno keep;
    if (!closed && !isSilentError(keep.value())) {
        ErrOut("kvOSCloseFile(%d)-FAIL=0x%08X(%d) ", printed(handleOf(file)), static_cast<unsigned>(keep.value()),
               keep.value());
    }
    freeRecord(file);
    return closed;
}

}  // namespace

std::optional<std::int64_t> openLocal(const OpenRequest& request) {
    std::FILE* stream = openStream(request.redirected, request.access, request.creation);
    if (stream == nullptr) {
        reportFailedOpen(request, request.redirected);
        return kInvalidHandle;
    }
    kvOSFileHandle* file = newRecord(KVFILE_LOCAL, request);
    if (file == nullptr) {
        std::fclose(stream);
        errno = ENOMEM;
        return kInvalidHandle;
    }
    if (request.access == KVFILE_READ) giveReadBuffer(stream);
    file->pFile = stream;
    return handleOf(*file);
}

constinit const FileKind kLocalFile{.read = readLocal,
                                    .write = writeLocal,
                                    .seek = seekLocal,
                                    .seekEnd = seekEndLocal,
                                    .tell = tellLocal,
                                    .movePointer = movePointerLocal,
                                    .movePointerEx = movePointerExLocal,
                                    .size = sizeLocal,
                                    .cutHere = cutLocal,
                                    .flush = flushLocal,
                                    .isAtEnd = isAtEndLocal,
                                    .close = closeLocal,
                                    .repeatsWrites = true};

}  // namespace kv::file
