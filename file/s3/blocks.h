// The read-ahead blocks of one handle, and the requests that fill them.
//
// A block is shared between the list and its request, and knows the list only as long as the handle holds it: whoever
// lets go last frees it. A close therefore waits for nobody, and an answer that comes after it finds nothing to do.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "file/handle.h"
#include "file/s3/client.h"
#include "kvos/s3.h"

namespace kv::file::s3 {

struct Object;
class BlockList;

inline constexpr std::uint64_t kMostRetries = 3;

struct Buffer {
    std::unique_ptr<std::byte[]> bytes;
    std::uint64_t size = 0;
};

/// The public record and what stands behind it. Its range, counts and clocks belong to the request's side until fDone
/// is set, which is why they are changed and looked for under the list's lock.
struct Block : sCacheElem, std::enable_shared_from_this<Block> {
    Block(kvOSFileHandle& file, std::uint64_t start, std::uint64_t end, Buffer space);

    bool isFinished() const;
    /// Finished without bytes.
    bool hasFailed() const { return isFinished() && pData == nullptr; }

    GetObjectRequest request;
    Buffer buffer;
    std::atomic<std::uint64_t> arrived = 0;  // bytes of the buffer that the request under way has filled
    std::weak_ptr<BlockList> list;
    std::atomic<int> contexts = 0;  // of its requests
};

using BlockPointer = std::shared_ptr<Block>;

/// Blocks in no useful order once one was let go. Only the thread that reads the handle adds, evicts and closes; the
/// client's threads finish blocks and, when one fails, take the last away.
class BlockList {
public:
    void add(BlockPointer block);
    bool isEmpty();
    /// The first block that holds the position, whether or not it is there yet; null without one.
    BlockPointer find(std::uint64_t position);
    /// Lets go of the finished block that was used longest ago; false without a finished one.
    bool evictOldest();
    /// Evicts until no more than `most` are left, as far as there are finished ones.
    void evictDownTo(std::size_t most);
    /// Room of exactly this size: that of the block that was evicted last, or new.
    Buffer takeBuffer(std::uint64_t size);
    /// Lets go of all blocks, and of whatever their requests still bring.
    void close();

    void waitFor(const Block& block);
    /// Waits, and meanwhile copies what arrives at `offset` in the block and behind it. Returns how much of the target
    /// is as the finished block has it.
    std::size_t waitAndCopy(const Block& block, std::uint64_t offset, std::span<std::byte> target);
    /// Waits, but not longer than this.
    void waitFor(const Block& block, std::chrono::milliseconds longest);

    // What the client's threads do with a block, each once.
    void finish(Block& block, std::uint64_t arrived);
    /// Counts a retry; false once the list is closed, when nobody is there to retry for.
    bool takeRetry(Block& block);
    void giveUp(Block& block);
    /// Releases the reader of a block whose request went away without an answer; one that is finished stays as it is.
    void abandon(Block& block);
    bool isClosed();

private:
    bool evictOldestLocked();

    std::mutex lock_;  // guards all that follows and the blocks' ranges; no other lock is taken while it is held
    std::condition_variable changed_;  // a block was finished
    std::vector<BlockPointer> blocks_;
    Buffer spare_;  // so that a steady reader does not have each block's pages made anew
    bool closed_ = false;
};

/// Requests a block of the handle's object; null where nothing lies at `start`.
BlockPointer requestBlock(kvOSFileHandle& file, std::uint64_t start, std::uint64_t size);

}  // namespace kv::file::s3
