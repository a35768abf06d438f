// Part objects, stored from the write block and loaded into it.
//
// The block's fields in the record: dwBlockIndex is the part that it is, dwBlockUsed the bytes of it that count, and 0
// as soon as they are stored. Its memory goes on holding them until it becomes another part (Object::partInBlock).
#include "file/s3/parts.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "border/guard.h"
#include "errlog.h"
#include "file/s3/object.h"
#include "kvos/memory.h"

namespace kv::file::s3 {
namespace {

struct FreeBlock {
    void operator()(void* block) const { KVFree(block); }
};
using OwnedBlock = std::unique_ptr<void, FreeBlock>;

/// Where a name does not fit no request is made; it is told in the words in which a store refuses such a key.
const Error& keyTooLong() {
    static const Error error{"KeyTooLongError", "Your key is too long", 0};
    return error;
}

bool tellNotStored(const Error& error) {
    const border::KeepErrno keep;
    ErrOut("Aws::GetObject exception/error: %s %s\n", error.exceptionName.c_str(), error.message.c_str());
    return false;
}

bool tellNotLoaded(const Error& error) {
    const border::KeepErrno keep;
    ErrOut("Aws::Error exception: %s \n", error.exceptionName.c_str());
    ErrOut("Aws::Error message: %s \n", error.message.c_str());
    return false;
}

void markStored(kvOSFileHandle& file, std::uint32_t bytes) {
    file.pObject->storedParts[file.dwBlockIndex] = {bytes, bytes};
    file.pObject->partInBlock = file.dwBlockIndex;
    file.dwBlockDirty = 0;
    file.dwBlockUsed = 0;
}

void takeLoaded(kvOSFileHandle& file, OwnedBlock block, std::uint32_t part, std::uint64_t bytes) {
    KVFree(file.pBlock);
    file.pBlock = block.release();
    file.dwBlockIndex = part;
    // Of a part that was cut the rest is not to come back. Of another one more can be there than is known: a request
    // that failed here may have reached the store.
    const auto stored = file.pObject->storedParts.find(part);
    const bool wasCut = stored != file.pObject->storedParts.end() && stored->second.bytes > stored->second.valid;
    const std::uint64_t valid = wasCut ? stored->second.valid : bytes;
    file.dwBlockUsed = static_cast<std::uint32_t>(std::min({bytes, valid, bytesAheadOfEnd(file, part)}));
    file.dwBlockDirty = 0;
    file.pObject->partInBlock = part;
}

}  // namespace

std::uint64_t bytesAheadOfEnd(const kvOSFileHandle& file, std::uint64_t part) {
    const std::uint64_t start = part * kBlockSize;
    return file.qwSize <= start ? 0 : std::min<std::uint64_t>(file.qwSize - start, kBlockSize);
}

void forgetCutBytes(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    if (const std::uint64_t ahead = bytesAheadOfEnd(file, file.dwBlockIndex); file.dwBlockUsed > ahead) {
        file.dwBlockUsed = static_cast<std::uint32_t>(ahead);
        object.wasCut = true;
    }
    const auto first = object.storedParts.lower_bound(static_cast<std::uint32_t>(partAt(file.qwSize)));
    for (auto stored = first; stored != object.storedParts.end(); ++stored) {
        const auto ahead = static_cast<std::uint32_t>(bytesAheadOfEnd(file, stored->first));
        if (stored->second.valid <= ahead) continue;
        stored->second.valid = ahead;
        object.wasCut = true;
    }
}

std::uint32_t storedBytes(const kvOSFileHandle& file, std::uint32_t part) {
    const auto& stored = file.pObject->storedParts;
    const auto found = stored.find(part);
    return found == stored.end() ? 0 : found->second.valid;
}

void beginPart(kvOSFileHandle& file, std::uint32_t part) {
    file.dwBlockIndex = part;
    file.dwBlockUsed = 0;
    file.pObject->partInBlock.reset();
}

bool ensureBlock(kvOSFileHandle& file) {
    if (file.pBlock != nullptr) return true;
    file.pBlock = KVAlloc(kBlockSize);
    if (file.pBlock == nullptr) return false;
    file.dwBlockUsed = 0;
    file.dwBlockIndex = 0;
    file.dwBlockDirty = 0;
    return true;
}

bool storeBlock(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    const auto key = partKey(object, file.dwBlockIndex);
    if (!key) return tellNotStored(keyTooLong());
    if (file.dwBlockDirty == 0) return true;
    forgetCutBytes(file);
    const std::size_t bytes = file.dwBlockUsed;
    if (bytes == 0) {  // of a part behind the new end
        file.dwBlockDirty = 0;
        file.dwBlockUsed = 0;
        return true;
    }
    const auto stored = object.client->putObject({.bucket = bareBucket(object.bucket),
                                                  .key = *key,
                                                  .contentType = object.contentType,
                                                  .body = {static_cast<const std::byte*>(file.pBlock), bytes}});
    if (!stored.isSuccess()) return tellNotStored(stored.error());
    markStored(file, static_cast<std::uint32_t>(bytes));
    return true;
}

bool loadPart(kvOSFileHandle& file, std::uint64_t part) {
    Object& object = *file.pObject;
    const auto key = partKey(object, part);
    if (!key) return tellNotLoaded(keyTooLong());
    // Into a block of its own, so that a body that breaks off leaves the old one as it was.
    OwnedBlock block(KVAlloc(kBlockSize));
    if (!block) {
        errno = ENOMEM;
        return tellNotLoaded({"OutOfMemory", std::strerror(ENOMEM), 0});
    }
    const auto loaded = object.client->getObject({.bucket = bareBucket(object.bucket),
                                                  .key = *key,
                                                  .range = {},
                                                  .destination = {static_cast<std::byte*>(block.get()), kBlockSize}});
    if (!loaded.isSuccess()) return tellNotLoaded(loaded.error());
    const ObjectBody& body = loaded.result();
    const auto bytes = std::min({body.contentLength, body.received, std::uint64_t{kBlockSize}});
    if (bytes < storedBytes(file, static_cast<std::uint32_t>(part))) {
        errno = EBADMSG;
        return tellNotLoaded({"IncompleteBody", "The part is shorter than it was stored", 0});
    }
    takeLoaded(file, std::move(block), static_cast<std::uint32_t>(part), bytes);
    return true;
}

bool changePart(kvOSFileHandle& file, std::uint64_t position) {
    forgetCutBytes(file);
    if (file.dwBlockUsed != 0) storeBlock(file);
    const std::uint64_t part = partAt(position);
    return part == file.dwBlockIndex || loadPart(file, part);
}

}  // namespace kv::file::s3
