// The list of blocks: finding, waiting, evicting, and the states of a block.
//
// What is promised to callers as polling every 2 ms is a wait that a finished block ends at once: a reader that keeps
// up with the store would lose a millisecond a block.
#include "file/s3/blocks.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <utility>

#include "kvos/memory.h"
#include "kvos/time.h"

namespace kv::file::s3 {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPoll{2};
constexpr milliseconds kPauseAfterFailure{4};

void markFinished(Block& block) { std::atomic_ref<std::uint8_t>(block.fDone).store(1, std::memory_order_release); }

void makeEmpty(Block& block) {
    block.qwStart = 0;
    block.qwEnd = 0;
    block.pData = nullptr;
    block.buffer = {};
    block.dwUsedMs = kvOSGetMs();  // ages like any other, so that it does not hold its place for good
}

}  // namespace

Block::Block(kvOSFileHandle& file, std::uint64_t start, std::uint64_t end, Buffer space)
    : sCacheElem{}, buffer(std::move(space)) {
    pOwner = &file;
    pRequest = &request;
    pData = reinterpret_cast<std::uint8_t*>(buffer.bytes.get());
    qwStart = start;
    qwEnd = end;
}

bool Block::isFinished() const {
    auto& flag = const_cast<std::uint8_t&>(fDone);  // atomic_ref wants it so; it is only read
    return std::atomic_ref<std::uint8_t>(flag).load(std::memory_order_acquire) != 0;
}

void BlockList::add(BlockPointer block) {
    const std::lock_guard guard(lock_);
    blocks_.push_back(std::move(block));
}

bool BlockList::isEmpty() {
    const std::lock_guard guard(lock_);
    return blocks_.empty();
}

BlockPointer BlockList::find(std::uint64_t position) {
    const std::lock_guard guard(lock_);
    for (const BlockPointer& block : blocks_) {
        if (block->qwStart <= position && position < block->qwEnd) return block;
    }
    return nullptr;
}

bool BlockList::evictOldest() {
    const std::lock_guard guard(lock_);
    return evictOldestLocked();
}

void BlockList::evictDownTo(std::size_t most) {
    const std::lock_guard guard(lock_);
    while (blocks_.size() > most && evictOldestLocked()) {
    }
}

bool BlockList::evictOldestLocked() {
    BlockPointer* oldest = nullptr;
    for (BlockPointer& block : blocks_) {
        if (!block->isFinished()) continue;
        // A choice whose clock is 0 gives way to whatever comes after it. Meant.
        if (oldest == nullptr || (*oldest)->dwUsedMs == 0 || block->dwUsedMs < (*oldest)->dwUsedMs) oldest = &block;
    }
    if (oldest == nullptr) return false;
    (*oldest)->pOwner = nullptr;
    (*oldest)->pData = nullptr;
    spare_ = std::exchange((*oldest)->buffer, {});
    std::swap(*oldest, blocks_.back());
    blocks_.pop_back();
    return true;
}

Buffer BlockList::takeBuffer(std::uint64_t size) {
    Buffer spare;
    {
        const std::lock_guard guard(lock_);
        spare = std::exchange(spare_, {});
    }
    if (spare.size == size) return spare;
    spare = {};  // ahead of the new one, so that both are never held
    return {std::make_unique_for_overwrite<std::byte[]>(size), size};
}

void BlockList::close() {
    std::vector<BlockPointer> blocks;  // freed without the lock
    const std::lock_guard guard(lock_);
    closed_ = true;
    for (const BlockPointer& block : blocks_) block->pOwner = nullptr;
    blocks.swap(blocks_);
    spare_ = {};
}

void BlockList::waitFor(const Block& block) {
    std::unique_lock guard(lock_);
    while (!block.isFinished()) changed_.wait_for(guard, kPoll);
}

std::size_t BlockList::waitAndCopy(const Block& block, std::uint64_t offset, std::span<std::byte> target) {
    std::size_t copied = 0;
    std::unique_lock guard(lock_);
    while (!block.isFinished()) {
        changed_.wait_for(guard, kPoll);
        // A repetition writes the bytes anew. None begins while the lock is held.
        if (block.pData == nullptr || block.qwRetries > 0) continue;
        const std::uint64_t arrived = block.arrived.load(std::memory_order_acquire);
        const auto there =
            static_cast<std::size_t>(std::clamp<std::uint64_t>(arrived, offset, offset + target.size()) - offset);
        kvOSCopyMemory(target.data() + copied, block.pData + offset + copied, there - copied);
        copied = there;
    }
    return block.hasFailed() || block.qwRetries > 0 ? 0 : copied;
}

void BlockList::waitFor(const Block& block, milliseconds longest) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, longest, [&block] { return block.isFinished(); });
}

void BlockList::finish(Block& block, std::uint64_t arrived) {
    {
        const std::lock_guard guard(lock_);
        block.qwEnd = block.qwStart + std::min(arrived, block.qwEnd - block.qwStart);
        block.dwLoadedMs = kvOSGetMs();
        block.dwUsedMs = block.dwLoadedMs;
        markFinished(block);
    }
    changed_.notify_all();
}

bool BlockList::takeRetry(Block& block) {
    const std::lock_guard guard(lock_);
    if (closed_) return false;
    ++block.qwRetries;
    return true;
}

void BlockList::giveUp(Block& block) {
    {
        BlockPointer last;  // freed without the lock
        const std::lock_guard guard(lock_);
        makeEmpty(block);
        if (!blocks_.empty()) {  // the last one goes, whichever failed. Meant.
            last = std::move(blocks_.back());
            blocks_.pop_back();
            last->pOwner = nullptr;
        }
    }
    std::this_thread::sleep_for(kPauseAfterFailure);
    {
        const std::lock_guard guard(lock_);
        markFinished(block);
    }
    changed_.notify_all();
}

void BlockList::abandon(Block& block) {
    {
        const std::lock_guard guard(lock_);
        if (block.isFinished()) return;
        makeEmpty(block);
        markFinished(block);
    }
    changed_.notify_all();
}

bool BlockList::isClosed() {
    const std::lock_guard guard(lock_);
    return closed_;
}

}  // namespace kv::file::s3
