// Reading an S3 object through its blocks: hits, misses, and one block ahead.
//
// A hit may be on a block that is still under way; it is waited for. A read that finds no block for a part of what it
// wants is a miss as a whole and starts over behind a request of its own.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "border/guard.h"
#include "border/relaxed.h"
#include "errlog.h"
#include "file/s3/blocks.h"
#include "file/s3/transfer.h"
#include "kvos/memory.h"
#include "kvos/s3.h"
#include "kvos/time.h"

std::uint32_t gdwS3DefaultCacheSize = 0x500000;
std::uint32_t gdwS3MaxCacheBlocks = 8;

namespace kv::file::s3 {
namespace {

constexpr std::uint64_t kBeyondWanted = 65536;
constexpr std::chrono::milliseconds kPauseAfterRequest{1};

int printedAddress(const void* address) { return static_cast<int>(reinterpret_cast<std::intptr_t>(address)); }

/// The block has shrunk below the position while it was waited for. Meant: the numbers, the address among them.
void tellOverwrite(const BlockList& list, const Block& block, std::uint64_t offset, std::uint64_t count) {
    const std::uint64_t length = block.qwEnd - block.qwStart;
    ErrOut("\nERROR: Overwrite cache[%d] start (%d >= %d) ", static_cast<int>(offset), static_cast<int>(length),
           printedAddress(&list));
    if (offset + count <= length) return;
    ErrOut("\nERROR: Overwrite cache[%d] end (%d >= %d) ", static_cast<int>(offset + count), static_cast<int>(length),
           printedAddress(static_cast<const sCacheElem*>(&block)));
}

/// What a read still has to fill. Its first bytes may have been copied while their block was under way.
struct Target {
    std::byte* next;
    std::uint32_t wanted;
    std::uint32_t ready = 0;

    void moveOn(std::uint32_t count) {
        next += count;
        wanted -= count;
        ready -= std::min(ready, count);
    }
};

Target targetOf(void* destination, std::uint32_t bytes) { return {static_cast<std::byte*>(destination), bytes}; }

/// Copies what a finished block holds at the position, and moves both on; nothing of a failed block.
void copyFrom(const Block& block, const BlockList& list, kvOSFileHandle& file, Target& target) {
    if (block.hasFailed()) return;
    if (file.qwPos >= block.qwEnd) {
        tellOverwrite(list, block, file.qwPos - block.qwStart, file.qwPos == block.qwEnd ? 0 : target.wanted);
        return;
    }
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(target.wanted, block.qwEnd - file.qwPos));
    const std::uint32_t ready = std::min(target.ready, count);
    kvOSCopyMemory(target.next + ready, block.pData + (file.qwPos - block.qwStart) + ready, count - ready);
    file.qwPos += count;
    target.moveOn(count);
}

void store(std::uint32_t* target, std::uint32_t count) {
    if (target != nullptr) *target = count;
}

bool readFromCache(kvOSFileHandle& file, Target target, std::uint32_t* bytesRead) {
    const auto list = file.pObject->cache;
    if (!list || list->isEmpty()) return false;
    const std::uint64_t remembered = file.qwPos;
    while (const BlockPointer block = list->find(file.qwPos)) {
        list->waitFor(*block);
        copyFrom(*block, *list, file, target);
        if (target.wanted > 0) continue;
        block->dwUsedMs = kvOSGetMs();
        store(bytesRead, static_cast<std::uint32_t>(file.qwPos - remembered));
        return true;
    }
    if (file.qwPos == remembered || file.qwPos < file.qwSize) {
        file.qwPos = remembered;
        return false;
    }
    store(bytesRead, static_cast<std::uint32_t>(file.qwPos - remembered));
    return true;
}

void evictSurplus(Object& object) {
    if (object.cache) object.cache->evictDownTo(border::relaxedLoad(gdwS3MaxCacheBlocks));
}

bool readThroughRequest(kvOSFileHandle& file, Target target, std::uint32_t* bytesRead) {
    const Object& object = *file.pObject;
    const auto size =
        std::max<std::uint64_t>(target.wanted + kBeyondWanted, border::relaxedLoad(gdwS3DefaultCacheSize));
    const BlockPointer block = requestBlock(file, file.qwPos, size);
    if (block) {
        target.ready = static_cast<std::uint32_t>(
            object.cache->waitAndCopy(*block, file.qwPos - object.requestStart, {target.next, target.wanted}));
    }
    evictSurplus(*file.pObject);
    if (readFromCache(file, target, bytesRead)) return true;
    // Also where the block came well: another one that failed meanwhile may have taken it away.
    if (block) errno = EIO;
    return false;
}

/// The pause lets the client begin; it ends early with the block, as then nothing is left to begin.
bool loadNextBlock(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    if (object.requestEnd >= file.qwSize) return false;
    if (file.qwPos < object.requestStart || file.qwPos >= object.requestEnd) return true;
    evictSurplus(object);
    const BlockPointer block = requestBlock(file, object.requestEnd, border::relaxedLoad(gdwS3DefaultCacheSize));
    if (block) object.cache->waitFor(*block, kPauseAfterRequest);
    return true;
}

bool readWhole(kvOSFileHandle& file, Target target, std::uint32_t* bytesRead) {
    if (readFromCache(file, target, bytesRead)) {
        border::atBorder(false, [&file] { return loadNextBlock(file); });  // what was read is read
        ++file.pObject->cacheHits;
        return true;
    }
    ++file.pObject->cacheMisses;
    return readThroughRequest(file, target, bytesRead);
}

/// Runs `body` with the record of an S3 handle; `failure` for all other handles, and when memory is short.
template <class Result, class Body>
Result onObject(std::int64_t handle, Result failure, Body&& body) {
    if (!isValid(handle) || recordOf(handle).pObject == nullptr) return failure;
    return border::atBorder(failure, [&]() -> Result { return body(recordOf(handle)); });
}

}  // namespace

Outcome readObject(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    store(transfer.moved, 0);
    if (file.qwPos > file.qwSize) {
        if (file.qwPos == kNowhere) errno = EINVAL;
        return Outcome::failed;
    }
    return border::atBorder(Outcome::failed, [&] {
        return readWhole(file, targetOf(buffer, transfer.count), transfer.moved) ? Outcome::done : Outcome::failed;
    });
}

void closeBlocks(Object& object) {
    if (object.cache) object.cache->close();
    object.cache.reset();
}

}  // namespace kv::file::s3

namespace s3 = kv::file::s3;

sCacheElem* s3cRequestBlock(std::int64_t hFile, std::uint64_t qwStart, std::uint64_t qwSize) {
    return s3::onObject<sCacheElem*>(hFile, nullptr, [&](kvOSFileHandle& file) -> sCacheElem* {
        const auto block = s3::requestBlock(file, qwStart, qwSize);
        // One that has failed by now may be nobody's any more.
        return block == nullptr || block->hasFailed() ? nullptr : block.get();
    });
}

std::uint32_t s3cReadFromCache(std::int64_t hFile, void* pDestination, std::uint32_t dwBytes, std::uint32_t* pdwRead) {
    return s3::onObject(hFile, 0u, [&](kvOSFileHandle& file) {
        return s3::readFromCache(file, s3::targetOf(pDestination, dwBytes), pdwRead) ? 1u : 0u;
    });
}

std::uint32_t s3cDeleteOldestCacheBlock(std::int64_t hFile) {
    return s3::onObject(hFile, 0xFFFFFFFFu, [](kvOSFileHandle& file) {
        const auto& list = file.pObject->cache;
        return list && list->evictOldest() ? 0u : 0xFFFFFFFFu;
    });
}

std::uint32_t s3cGetCacheAndRead(std::int64_t hFile, void* pDestination, std::uint32_t dwBytes,
                                 std::uint32_t* pdwRead) {
    return s3::onObject(hFile, 0u, [&](kvOSFileHandle& file) {
        return s3::readThroughRequest(file, s3::targetOf(pDestination, dwBytes), pdwRead) ? 1u : 0u;
    });
}

std::uint32_t s3cLoadNextCacheChunk(std::int64_t hFile) {
    return s3::onObject(hFile, 0u, [](kvOSFileHandle& file) { return s3::loadNextBlock(file) ? 1u : 0u; });
}

std::uint32_t s2cRead(std::int64_t hFile, void* pDestination, std::uint32_t dwBytes, std::uint32_t* pdwRead) {
    return s3::onObject(hFile, 0u, [&](kvOSFileHandle& file) {
        return s3::readWhole(file, s3::targetOf(pDestination, dwBytes), pdwRead) ? 1u : 0u;
    });
}

void s3cClose(std::int64_t hFile) {
    s3::onObject(hFile, 0, [](kvOSFileHandle& file) {
        s3::closeBlocks(*file.pObject);
        return 0;
    });
}
