// The requests that fill blocks: their ranges, their answers, their repetitions.
//
// A request's context holds its block, and the identifier that it carries is the block's address. However a request
// ends, its reader is released: by the answer, or, when the client drops it without one, by the context's end.
#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

#include "border/guard.h"
#include "errlog.h"
#include "file/s3/blocks.h"
#include "file/s3/object.h"

namespace kv::file::s3 {
namespace {

constexpr std::chrono::milliseconds kPauseBeforeRetry{2};
constexpr std::uint64_t kSmallestTail = 65536;

using Unsigned = unsigned long long;  // what the formats want

std::string identifierOf(const sCacheElem& block) {
    char text[24];
    std::snprintf(text, sizeof text, "%llu", static_cast<Unsigned>(reinterpret_cast<std::uintptr_t>(&block)));
    return text;
}

BlockPointer blockOf(const AsyncCallerContext& context) {
    const auto address = static_cast<std::uintptr_t>(std::strtoull(context.uuid.c_str(), nullptr, 10));
    auto* block = static_cast<Block*>(reinterpret_cast<sCacheElem*>(address));
    return block == nullptr ? nullptr : block->weak_from_this().lock();
}

/// Of the contexts of one block, each repetition having its own, the last to go releases the reader.
struct BlockContext : AsyncCallerContext {
    explicit BlockContext(BlockPointer block_) : AsyncCallerContext(identifierOf(*block_)), block(std::move(block_)) {
        ++block->contexts;
    }
    ~BlockContext() override {
        if (--block->contexts > 0) return;
        if (const auto list = block->list.lock()) list->abandon(*block);
    }
    BlockContext(const BlockContext&) = delete;
    BlockContext& operator=(const BlockContext&) = delete;

    const BlockPointer block;
};

std::string rangeText(const Block& block) {
    char text[136];
    std::snprintf(text, sizeof text, "bytes=%llu-%llu", static_cast<Unsigned>(block.qwStart),
                  static_cast<Unsigned>(block.qwEnd - 1));
    return text;
}

void repeat(Client& client, BlockList& list, const BlockPointer& block, const Error& error) {
    std::this_thread::sleep_for(kPauseBeforeRetry);
    if (!list.takeRetry(*block)) return;
    ErrOut("S3Warning: Retry read block %llu-%llu Error: %s", static_cast<Unsigned>(block->qwStart),
           static_cast<Unsigned>(block->qwEnd), error.message.c_str());
    block->request.range = rangeText(*block);
    client.getObjectAsync(block->request, s3cObjectResponsReceived, std::make_shared<const BlockContext>(block));
}

void giveUp(BlockList& list, Block& block, const Error& error) {
    ErrOut("S3Error: Failure on second try read block %d-%d Error: %s", static_cast<int>(block.qwStart),
           static_cast<int>(block.qwEnd), error.message.c_str());
    list.giveUp(block);
}

void take(Client& client, const BlockPointer& block, const Answer<ObjectBody>& outcome) {
    const auto list = block->list.lock();
    if (!list || list->isClosed() || block->isFinished()) return;
    if (outcome.isSuccess()) {
        list->finish(*block, std::min(outcome.result().contentLength, outcome.result().received));
    } else if (block->qwRetries < kMostRetries) {
        repeat(client, *list, block, outcome.error());
    } else {
        giveUp(*list, *block, outcome.error());
    }
}

struct Range {
    std::uint64_t start;
    std::uint64_t end;
};

/// Short requests at the end begin earlier: they cost the same.
Range rangeOf(std::uint64_t start, std::uint64_t size, std::uint64_t objectSize) {
    if (objectSize - start > size) return {start, start + size};
    if (objectSize - start >= kSmallestTail) return {start, objectSize};
    return {objectSize <= kSmallestTail ? 0 : objectSize - kSmallestTail, objectSize};
}

BlockPointer makeBlock(kvOSFileHandle& file, const Range& range) {
    Object& object = *file.pObject;
    auto block =
        std::make_shared<Block>(file, range.start, range.end, object.cache->takeBuffer(range.end - range.start));
    block->list = object.cache;
    block->request.bucket = bareBucket(object.bucket);
    block->request.key = object.key;
    block->request.range = rangeText(*block);
    block->request.destination = {block->buffer.bytes.get(), block->buffer.size};
    block->request.arrived = &block->arrived;
    return block;
}

}  // namespace

BlockPointer requestBlock(kvOSFileHandle& file, std::uint64_t start, std::uint64_t size) {
    if (file.qwSize <= start || size == 0) return nullptr;
    Object& object = *file.pObject;
    if (!object.cache) object.cache = std::make_shared<BlockList>();
    const Range range = rangeOf(start, size, file.qwSize);
    BlockPointer block = makeBlock(file, range);
    auto context = std::make_shared<const BlockContext>(block);  // ahead of the list: what stands there gets finished
    object.cache->add(block);
    object.requestStart = range.start;
    object.requestEnd = range.end;
    object.client->getObjectAsync(block->request, s3cObjectResponsReceived, std::move(context));
    return block;
}

}  // namespace kv::file::s3

void s3cObjectResponsReceived(kv::file::s3::Client& client, const kv::file::s3::GetObjectRequest&,
                              const kv::file::s3::Answer<kv::file::s3::ObjectBody>& outcome,
                              const std::shared_ptr<const kv::file::s3::AsyncCallerContext>& context) {
    kv::border::atBorder(0, [&] {
        const auto block = context == nullptr ? nullptr : kv::file::s3::blockOf(*context);
        if (block) kv::file::s3::take(client, block, outcome);
        return 0;
    });
}
