// Writing into an S3 object: into the write block, which is stored as a part object when it is full or left.
//
// A part that was stored is loaded before less than the whole of it is written anew, whichever way the position came
// to it: what is stored stays, and where it can't be loaded the write fails. Bytes that nobody wrote are zeros, and so
// are those that were cut off.
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "border/guard.h"
#include "errlog.h"
#include "file/s3/object.h"
#include "file/s3/parts.h"
#include "file/s3/transfer.h"
#include "kvos/memory.h"

namespace kv::file::s3 {
namespace {

bool isWithinReach(const kvOSFileHandle& file, std::uint32_t count) {
    if (file.qwPos <= kMostParts * kBlockSize - count) return true;
    errno = file.qwPos == kNowhere ? EINVAL : EFBIG;
    return false;
}

bool blockFor(kvOSFileHandle& file) {
    if (file.dwBlockSize == 0) file.dwBlockSize = kBlockSize;
    if (ensureBlock(file)) return true;
    ErrFmtOut(KVERR_CLASS_ERROR, nullptr, 0, "ERROR(kvFile): %s\n\r", "Unable to allocate AWS cache block");
    return false;
}

/// Whether writing the next bytes into an empty block would drop stored ones when the block is stored.
bool wouldLose(const kvOSFileHandle& file, std::uint32_t part, std::uint64_t offset, std::uint64_t left) {
    const std::uint32_t stored = storedBytes(file, part);
    return stored != 0 && (offset != 0 || left < stored);
}

/// Whether a stored part has nothing that still counts.
bool isWhollyCutOff(const kvOSFileHandle& file, std::uint32_t part) {
    return file.pObject->storedParts.contains(part) && storedBytes(file, part) == 0;
}

/// The block is this part's already. One that was stored is empty since, though its memory may still hold the bytes.
bool takeUpAgain(kvOSFileHandle& file, std::uint32_t part, std::uint64_t offset, std::uint64_t left) {
    if (file.dwBlockUsed != 0 || !wouldLose(file, part, offset, left)) return true;
    if (file.pObject->partInBlock != part) return loadPart(file, part);
    file.dwBlockUsed = storedBytes(file, part);
    return true;
}

/// Makes the block that of the position's part. False where that would lose stored bytes that can't be loaded; those of
/// a part that was never stored are not there to be lost.
bool turnToPart(kvOSFileHandle& file, std::uint64_t left) {
    const auto part = static_cast<std::uint32_t>(partAt(file.qwPos));
    const std::uint64_t offset = file.qwPos % kBlockSize;
    if (part == file.dwBlockIndex) return takeUpAgain(file, part, offset, left);
    const bool isNew = part >= partAt(file.qwSize) && offset == 0;  // a new part at its first byte needs nothing
    const bool isNeeded = wouldLose(file, part, offset, left);
    const bool isLoaded = (isNeeded || !(isNew || isWhollyCutOff(file, part))) && changePart(file, file.qwPos);
    if (isNeeded && !isLoaded) return false;
    if (part != file.dwBlockIndex) beginPart(file, part);
    return true;
}

void copyIn(kvOSFileHandle& file, const std::byte* source, std::uint32_t count) {
    auto* const block = static_cast<std::byte*>(file.pBlock);
    const auto offset = static_cast<std::uint32_t>(file.qwPos % kBlockSize);
    if (offset > file.dwBlockUsed) kvOSZeroMemory(block + file.dwBlockUsed, offset - file.dwBlockUsed);
    kvOSCopyMemory(block + offset, source, count);
    file.qwPos += count;
    file.dwBlockDirty = 1;
    file.dwBlockUsed = std::max(file.dwBlockUsed, offset + count);
    file.qwSize = std::max(file.qwSize, file.qwPos);
}

/// A full block is stored when its last byte is written. Meant: one that is full is stored one byte earlier as well.
void storeIfFull(kvOSFileHandle& file) {
    if (file.dwBlockUsed != kBlockSize || partAt(file.qwPos + 1) == file.dwBlockIndex) return;
    if (!storeBlock(file)) file.pObject->partInBlock.reset();
    file.dwBlockUsed = 0;
    file.dwBlockIndex = static_cast<std::uint32_t>(partAt(file.qwPos));
}

bool write(kvOSFileHandle& file, const std::byte* source, const Transfer& transfer) {
    for (std::uint32_t left = transfer.count; left > 0;) {
        if (!turnToPart(file, left)) return false;
        const auto room = static_cast<std::uint32_t>(kBlockSize - file.qwPos % kBlockSize);
        const std::uint32_t count = std::min(left, room);
        copyIn(file, source, count);
        storeIfFull(file);
        source += count;
        left -= count;
        if (transfer.moved != nullptr) *transfer.moved += count;
    }
    return true;
}

}  // namespace

Outcome writeObject(kvOSFileHandle& file, const void* buffer, const Transfer& transfer) {
    return border::atBorder(Outcome::failed, [&] {
        if (!blockFor(file)) return Outcome::failed;
        if (!isWithinReach(file, transfer.count)) {
            if (transfer.moved != nullptr) *transfer.moved = 0;
            return Outcome::failed;
        }
        forgetCutBytes(file);
        if (partAt(file.qwPos) != file.dwBlockIndex && file.dwBlockUsed != 0) {
            file.dwBlockDirty = 1;
            storeBlock(file);
        }
        if (transfer.moved != nullptr) *transfer.moved = 0;
        if (transfer.count == 0) return Outcome::failed;
        return write(file, static_cast<const std::byte*>(buffer), transfer) ? Outcome::counted : Outcome::failed;
    });
}

}  // namespace kv::file::s3
