// Scratch files: "mem://" and anything after it.
//
// The bytes live in one heap buffer and die with the handle. The text after "mem://" names nothing: two opens of the
// same text are two empty files. Position and size are kept in the record (file/position.cpp), not here.
#include "kvos/memory.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "border/text.h"
#include "file/kinds.h"
#include "file/openers.h"

namespace kv::file {
namespace {

std::byte* bytesOf(kvOSFileHandle& file) { return static_cast<std::byte*>(file.pBuf); }

Outcome readMemory(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    const bool isPast = file.qwPos > file.qwSize;
    const std::uint64_t left = isPast ? 0 : file.qwSize - file.qwPos;
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(transfer.count, left));
    if (transfer.moved != nullptr) *transfer.moved = count;
    if (count == 0 && (isPast || transfer.count != 0)) return Outcome::failed;  // the end fails here. Meant.

    kvOSCopyMemory(buffer, bytesOf(file) + file.qwPos, count);
    file.qwLastPos = file.qwPos;
    file.qwPos += count;
    return Outcome::done;
}

/// Makes room for `needed` bytes and one step more. What is held stays; what is new is whatever the heap gives.
bool grow(kvOSFileHandle& file, std::uint64_t needed) {
    if (needed > SIZE_MAX - kFirstBufferSize) {
        errno = EFBIG;
        return false;
    }
    const std::uint64_t size = needed + kFirstBufferSize;
    // realloc, since it moves pages where a copy would make a long file of many small writes cost its square.
    void* larger = std::realloc(file.pBuf, size);
    if (larger == nullptr) return false;
    file.pBuf = larger;
    file.qwBufSize = size;
    return true;
}

Outcome writeMemory(kvOSFileHandle& file, const void* buffer, const Transfer& transfer) {
    if (transfer.moved != nullptr) *transfer.moved = 0;
    if (file.qwPos > UINT64_MAX - transfer.count) {  // a refused seek left the position at all ones
        errno = EINVAL;
        return Outcome::failed;
    }
    const std::uint64_t end = file.qwPos + transfer.count;
    if (end > file.qwBufSize && !grow(file, end)) return Outcome::failed;

    kvOSCopyMemory(bytesOf(file) + file.qwPos, buffer, transfer.count);
    file.qwLastPos = file.qwPos;
    file.qwPos = end;
    file.qwSize = std::max(file.qwSize, end);
    file.qwBufLen = std::max(file.qwBufLen, file.qwSize);
    if (transfer.moved != nullptr) *transfer.moved = transfer.count;
    return Outcome::done;
}

bool closeMemory(kvOSFileHandle& file) {
    std::free(file.pBuf);
    freeRecord(file);
    return true;
}

}  // namespace

std::optional<std::int64_t> openMemory(const OpenRequest& request) {
    if (!border::beginsWithAnyCase(request.path, "mem://")) return std::nullopt;
    void* buffer = std::malloc(kFirstBufferSize);
    kvOSFileHandle* file = buffer == nullptr ? nullptr : newRecord(KVFILE_MEMORY, request);
    if (file == nullptr) {
        std::free(buffer);
        errno = ENOMEM;
        return kInvalidHandle;
    }
    border::copyText(file->szPath, sizeof file->szPath, request.path);
    file->fBufGrow = 1;
    file->pBuf = buffer;
    file->qwBufSize = kFirstBufferSize;
    file->dwBlockSize = kBlockSize;
    return handleOf(*file);
}

constinit const FileKind kMemoryFile{
    .read = readMemory, .write = writeMemory, .close = closeMemory, .takesOutputs = false};

}  // namespace kv::file
