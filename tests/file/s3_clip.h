// An object that is a pattern, on a client without a network, and the handle that the tests of the read-ahead blocks
// read.
#pragma once

#include <atomic>
#include <random>

#include "file/s3/blocks.h"
#include "file/s3_fake_client.h"

namespace kvtest {

inline constexpr std::uint32_t kBlock = 0x500000;
inline constexpr std::uint64_t kMiB = 1048576;

inline int low(const void* address) { return static_cast<int>(reinterpret_cast<std::intptr_t>(address)); }

inline bool isDone(sCacheElem* block) { return std::atomic_ref<std::uint8_t>(block->fDone).load() == 1; }

inline std::string warning(std::uint64_t start, std::uint64_t end) {
    return "S3Warning: Retry read block " + std::to_string(start) + '-' + std::to_string(end) +
           " Error: Please reduce your request rate.";
}
inline std::string failure(std::uint64_t start, std::uint64_t end) {
    return "S3Error: Failure on second try read block " + std::to_string(start) + '-' + std::to_string(end) +
           " Error: Please reduce your request rate.";
}

/// An object that is a pattern, and a handle on it that believes it to be of this size.
struct Clip {
    explicit Clip(std::uint64_t size, Later* later = nullptr) : Clip(size, size, later) {}
    Clip(std::uint64_t size, std::uint64_t believed, Later* later = nullptr)
        : client(std::make_shared<FakeClient>(later)), file(client, "clip", believed) {
        client->put("clip", makePattern(size));
    }

    std::int64_t handle() const { return file.handle(); }
    void seek(std::uint64_t position) { file.record().qwPos = position; }
    std::uint64_t tell() { return file.record().qwPos; }
    sCacheElem* request(std::uint64_t start, std::uint64_t size) { return s3cRequestBlock(handle(), start, size); }
    /// What s3cReadFromCache gives at a position; "miss" when it gives nothing.
    std::string cached(std::uint64_t position, std::uint32_t count) {
        seek(position);
        std::string bytes(count, '?');
        std::uint32_t got = 0;
        if (s3cReadFromCache(handle(), bytes.data(), count, &got) == 0) return "miss";
        bytes.resize(got);
        return bytes;
    }
    void expectPattern(std::uint64_t position, std::uint32_t count) {
        seek(position);
        const FakeHandle::Read read = file.read(count);
        ASSERT_TRUE(read.succeeded);
        ASSERT_TRUE(read.bytes == patternFrom(position, count));
        ASSERT_EQ(tell(), position + count);
    }
    void expectMiss(std::uint64_t position, std::uint32_t count) {
        seek(position);
        const FakeHandle::Read read = file.read(count);
        EXPECT_FALSE(read.succeeded);
        EXPECT_EQ(read.bytes, "");
        EXPECT_EQ(tell(), position);
    }

    std::shared_ptr<FakeClient> client;
    FakeHandle file;
};

/// Lets a later begin once a reader waits for the block, who is the third to hold it, with the list and the request.
class BeginOnceAwaited {
public:
    BeginOnceAwaited(Later& later, sCacheElem* block)
        : thread_([&later, block] {
              while (static_cast<s3::Block*>(block)->weak_from_this().use_count() < 3) std::this_thread::yield();
              later.start(1);
          }) {}
    ~BeginOnceAwaited() { thread_.join(); }

private:
    std::thread thread_;
};

/// Numbers that differ from run to run; a failure shows the seed.
class Dice {
public:
    std::uint32_t operator()(std::uint64_t below) { return static_cast<std::uint32_t>(engine_() % below); }
    unsigned seed() const { return seed_; }

private:
    unsigned seed_ = std::random_device{}();
    std::mt19937 engine_{seed_};
};

struct BlockSize {
    explicit BlockSize(std::uint32_t size) { gdwS3DefaultCacheSize = size; }
    ~BlockSize() { gdwS3DefaultCacheSize = kBlock; }
};
struct MostBlocks {
    explicit MostBlocks(std::uint32_t count) { gdwS3MaxCacheBlocks = count; }
    ~MostBlocks() { gdwS3MaxCacheBlocks = 8; }
};

}  // namespace kvtest
