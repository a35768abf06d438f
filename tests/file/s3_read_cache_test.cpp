// Reading S3 objects through blocks that are fetched ahead, on a client without a network.
#include <atomic>
#include <cerrno>
#include <random>

#include "file/s3/blocks.h"
#include "file/s3_fake_client.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

constexpr std::uint32_t kBlock = 0x500000;
constexpr std::uint64_t kMiB = 1048576;
using Requests = std::vector<std::string>;

s3::Error down() { return {"SlowDown", "Please reduce your request rate.", 503}; }

int low(const void* address) { return static_cast<int>(reinterpret_cast<std::intptr_t>(address)); }

bool isDone(sCacheElem* block) { return std::atomic_ref<std::uint8_t>(block->fDone).load() == 1; }

std::string warning(std::uint64_t start, std::uint64_t end) {
    return "S3Warning: Retry read block " + std::to_string(start) + '-' + std::to_string(end) +
           " Error: Please reduce your request rate.";
}
std::string failure(std::uint64_t start, std::uint64_t end) {
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

TEST(S3ReadCache, TuningValuesStartAtFiveMebibytesAndEightBlocks) {
    EXPECT_EQ(gdwS3DefaultCacheSize, 0x500000u);
    EXPECT_EQ(gdwS3MaxCacheBlocks, 8u);
}

TEST(S3Request, IsRefusedAtAndBeyondTheEndAndForNoBytes) {
    Clip clip(1000);
    EXPECT_EQ(clip.request(1000, 10), nullptr);
    EXPECT_EQ(clip.request(1001, 10), nullptr);
    EXPECT_EQ(clip.request(UINT64_MAX, 10), nullptr);
    EXPECT_EQ(clip.request(0, 0), nullptr);
    EXPECT_EQ(clip.client->requests(), Requests{});
}

TEST(S3Request, BlockTellsItsRangeAndItsOwner) {
    Later later;
    Clip clip(20 * kMiB, &later);
    sCacheElem* block = clip.request(100, kBlock);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->pOwner, &clip.file.record());
    EXPECT_NE(block->pRequest, nullptr);
    EXPECT_FALSE(isDone(block));
    later.doOne();
    ASSERT_TRUE(isDone(block));
    EXPECT_EQ(block->qwStart, 100u);
    EXPECT_EQ(block->qwEnd, 100u + kBlock);
    EXPECT_EQ(block->qwRetries, 0u);
    EXPECT_EQ(block->dwUsedMs, block->dwLoadedMs);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(block->pData), 50), patternFrom(100, 50));
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=100-5242979"});
}

TEST(S3Request, EndsWithTheObject) {
    Clip clip(6 * kMiB);
    clip.request(3 * kMiB, kBlock);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=3145728-6291455"});
}

TEST(S3Request, ShortOneAtTheEndBeginsSixtyFourKibibytesAheadOfIt) {
    Clip clip(200000);
    clip.request(199999, kBlock);
    EXPECT_EQ(clip.file.object().requestStart, 134464u);
    EXPECT_EQ(clip.file.object().requestEnd, 200000u);
    clip.request(134464, kBlock);  // 65,536 bytes are enough
    clip.request(134465, kBlock);  // 65,535 are not
    EXPECT_EQ(clip.client->requests(),
              (Requests{"GetObject clip bytes=134464-199999", "GetObject clip bytes=134464-199999",
                        "GetObject clip bytes=134464-199999"}));
}

TEST(S3Request, ShortOneThatStaysAheadOfTheEndIsNotWidened) {
    Clip clip(200000);
    clip.request(100, 10);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=100-109"});
}

TEST(S3Request, WidenedOneBeginsAtTheStartOfAnObjectOfSixtyFourKibibytesButNotOfOneByteMore) {
    Clip exact(65536);
    exact.request(65535, kBlock);
    EXPECT_EQ(exact.client->requests(), Requests{"GetObject clip bytes=0-65535"});
    Clip more(65537);
    more.request(65536, kBlock);
    EXPECT_EQ(more.client->requests(), Requests{"GetObject clip bytes=1-65536"});
}

TEST(S3Request, ItsContextHoldsTheAddressOfTheBlockInDecimal) {
    struct Looking : FakeClient {
        void getObjectAsync(s3::GetObjectRequest, s3::GetObjectHandler,
                            std::shared_ptr<const s3::AsyncCallerContext> context) override {
            seen = context->uuid;
            kept = std::move(context);
        }
        std::string seen;
        std::shared_ptr<const s3::AsyncCallerContext> kept;
    };
    const auto client = std::make_shared<Looking>();
    FakeHandle file(client, "clip", 100);
    sCacheElem* block = s3cRequestBlock(file.handle(), 0, 100);
    EXPECT_EQ(client->seen, std::to_string(reinterpret_cast<std::uintptr_t>(block)));
    // Whoever holds that text can complete the block.
    const auto context = std::make_shared<s3::AsyncCallerContext>(client->seen);
    s3cObjectResponsReceived(*client, {}, s3::ObjectBody{40, 40}, context);
    EXPECT_TRUE(isDone(block));
    EXPECT_EQ(block->qwEnd, 40u);
    s3cObjectResponsReceived(*client, {}, s3::ObjectBody{40, 40}, std::make_shared<s3::AsyncCallerContext>("0"));
    s3cObjectResponsReceived(*client, {}, s3::ObjectBody{40, 40}, nullptr);
    file.close();
    client->kept.reset();
}

TEST(S3Read, ObjectOfAHundredBytesIsRequestedOnceFromItsStartWhateverTheStart) {
    Clip clip(100);
    clip.expectPattern(50, 10);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=0-99"});
    clip.expectPattern(0, 100);
    EXPECT_EQ(clip.client->requests().size(), 1u);
}

TEST(S3Read, OfSixMebibytesRequestsThemAndSixtyFourKibibytesMoreInOneBlock) {
    Clip clip(20 * kMiB);
    clip.expectPattern(0, 6 * kMiB);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=0-6356991"});
}

TEST(S3Read, SmallOneRequestsABlock) {
    Clip clip(20 * kMiB);
    clip.expectPattern(7, 1);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=7-5242886"});
}

TEST(S3Read, AtTheEndMissesWithoutARequest) {
    Clip clip(1000);
    clip.expectMiss(1000, 10);
    clip.expectMiss(1001, 10);
    EXPECT_EQ(clip.client->requests(), Requests{});
}

TEST(S3Read, BeyondTheEndIsNotCountedButAtTheEndIsAMiss) {
    Clip clip(1000);
    clip.expectMiss(1001, 10);
    EXPECT_EQ(clip.file.object().cacheMisses, 0u);
    clip.expectMiss(1000, 10);
    EXPECT_EQ(clip.file.object().cacheMisses, 1u);
}

TEST(S3Read, AcrossTheEndIsShortAndSucceeds) {
    Clip clip(100000);
    clip.seek(99990);
    const FakeHandle::Read read = clip.file.read(50);
    EXPECT_TRUE(read.succeeded);
    EXPECT_EQ(read.bytes, patternFrom(99990, 10));
    EXPECT_EQ(clip.tell(), 100000u);
    clip.expectMiss(100000, 1);
}

TEST(S3Read, CountMayBeLeftOut) {
    Clip clip(1000);
    std::string bytes(10, '?');
    EXPECT_EQ(s3::readObject(clip.file.record(), bytes.data(), {10, nullptr, nullptr}), kv::file::Outcome::done);
    EXPECT_EQ(bytes, patternFrom(0, 10));
    EXPECT_EQ(s2cRead(clip.handle(), bytes.data(), 10, nullptr), 1u);
    EXPECT_EQ(bytes, patternFrom(10, 10));
}

TEST(S3Read, OfNoBytesLoadsABlockAndSucceeds) {
    Clip clip(1000);
    clip.expectPattern(0, 0);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=0-999"});
}

TEST(S3Read, AcrossTwoBlocksIsServedByTwoCopiesAndNoRequest) {
    Clip clip(20 * kMiB);
    clip.request(kMiB, kMiB);
    clip.request(0, kMiB);  // the second half stands ahead of the first in the list
    EXPECT_TRUE(clip.cached(kMiB - 100, 200) == patternFrom(kMiB - 100, 200));
    EXPECT_EQ(clip.client->requests().size(), 2u);
}

TEST(S3Read, ServedInPartLeavesThePositionAndIsRepeatedAsAWholeBehindARequest) {
    Clip clip(20 * kMiB);
    clip.request(0, kMiB);
    EXPECT_EQ(clip.cached(kMiB - 100, 200), "miss");
    EXPECT_EQ(clip.tell(), kMiB - 100);
    clip.expectPattern(kMiB - 100, 200);
    EXPECT_EQ(clip.client->requests(),
              (Requests{"GetObject clip bytes=0-1048575", "GetObject clip bytes=1048476-6291355"}));
}

TEST(S3Read, HitOnAnEmptyListIsAMiss) {
    Clip clip(1000);
    EXPECT_EQ(clip.cached(0, 10), "miss");
    EXPECT_EQ(clip.client->requests(), Requests{});
}

TEST(S3Read, HitsAndMissesAreCounted) {
    Clip clip(20 * kMiB);
    for (int i = 0; i < 5; ++i) clip.expectPattern(static_cast<std::uint64_t>(i) * 10, 10);
    EXPECT_EQ(clip.file.object().cacheMisses, 1u);
    EXPECT_EQ(clip.file.object().cacheHits, 4u);
}

TEST(S3Read, LastReadThatFinishedInABlockStampsIt) {
    Clip clip(20 * kMiB);
    sCacheElem* first = clip.request(0, kMiB);
    sCacheElem* second = clip.request(kMiB, kMiB);
    first->dwUsedMs = second->dwUsedMs = 1;
    clip.cached(kMiB - 10, 20);
    EXPECT_EQ(first->dwUsedMs, 1u);
    EXPECT_NE(second->dwUsedMs, 1u);
    clip.cached(0, 10);
    EXPECT_NE(first->dwUsedMs, 1u);
}

TEST(S3ReadAhead, FirstHitInTheLastRequestedRangeRequestsTheNextBlock) {
    Clip clip(20 * kMiB);
    clip.expectPattern(0, 10);  // a miss requests nothing ahead
    EXPECT_EQ(clip.client->requests().size(), 1u);
    clip.expectPattern(10, 10);
    EXPECT_EQ(clip.client->requests().back(), "GetObject clip bytes=5242880-10485759");
    clip.expectPattern(20, 10);  // that range is the last one now, and the position not in it
    EXPECT_EQ(clip.client->requests().size(), 2u);
    clip.expectPattern(kBlock, 10);
    EXPECT_EQ(clip.client->requests().back(), "GetObject clip bytes=10485760-15728639");
    EXPECT_EQ(clip.client->requests().size(), 3u);
}

TEST(S3ReadAhead, RunsOnWithEveryHitAsLongAsThePositionIsInTheLastRange) {
    Clip clip(20 * kMiB);
    clip.request(0, kBlock);
    for (int i = 0; i < 3; ++i) {
        clip.file.object().requestStart = 0;
        clip.expectPattern(static_cast<std::uint64_t>(i), 1);
    }
    EXPECT_EQ(clip.client->requests(),
              (Requests{"GetObject clip bytes=0-5242879", "GetObject clip bytes=5242880-10485759",
                        "GetObject clip bytes=10485760-15728639", "GetObject clip bytes=15728640-20971519"}));
}

TEST(S3ReadAhead, EndOfTheRangeIsOutsideIt) {
    Clip clip(20 * kMiB);
    clip.request(0, kBlock);
    clip.seek(kBlock);
    EXPECT_EQ(s3cLoadNextCacheChunk(clip.handle()), 1u);
    EXPECT_EQ(clip.client->requests().size(), 1u);
    clip.seek(kBlock - 1);
    EXPECT_EQ(s3cLoadNextCacheChunk(clip.handle()), 1u);
    EXPECT_EQ(clip.client->requests().size(), 2u);
}

TEST(S3ReadAhead, TellsThatTheEndHasBeenRequested) {
    Clip clip(20 * kMiB);
    clip.request(19 * kMiB, kBlock);
    clip.seek(19 * kMiB);
    EXPECT_EQ(s3cLoadNextCacheChunk(clip.handle()), 0u);
    EXPECT_EQ(clip.client->requests().size(), 1u);
}

TEST(S3ReadAhead, ReaderThatHasSoughtAwayStartsNone) {
    Clip clip(40 * kMiB);
    clip.expectPattern(0, 10);
    clip.request(30 * kMiB, kBlock);
    clip.expectPattern(20, 10);
    EXPECT_EQ(clip.client->requests().size(), 2u);
}

TEST(S3ReadAhead, SequentialReaderAsksForEachByteOnce) {
    Clip clip(32 * kMiB);
    for (std::uint64_t at = 0; at < 32 * kMiB; at += kMiB) clip.expectPattern(at, kMiB);
    EXPECT_EQ(clip.client->requests(),
              (Requests{"GetObject clip bytes=0-5242879", "GetObject clip bytes=5242880-10485759",
                        "GetObject clip bytes=10485760-15728639", "GetObject clip bytes=15728640-20971519",
                        "GetObject clip bytes=20971520-26214399", "GetObject clip bytes=26214400-31457279",
                        "GetObject clip bytes=31457280-33554431"}));
    EXPECT_EQ(clip.file.object().cacheMisses, 1u);
}

TEST(S3ReadAhead, NoBlockSizeSwitchesItOff) {
    const BlockSize none(0);
    Clip clip(20 * kMiB);
    clip.expectPattern(0, 10);
    clip.expectPattern(10, 10);
    EXPECT_EQ(clip.client->requests(), Requests{"GetObject clip bytes=0-65545"});
}

TEST(S3Eviction, TakesTheBlockThatWasUsedLongestAgo) {
    Clip clip(20 * kMiB);
    const std::uint32_t used[] = {30, 10, 20, 40};
    for (std::uint64_t i = 0; i < 4; ++i) clip.request(i * kMiB, kMiB)->dwUsedMs = used[i];
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0u);
    for (std::uint64_t i = 0; i < 4; ++i) EXPECT_EQ(clip.cached(i * kMiB, 1) == "miss", i == 1) << i;
}

TEST(S3Eviction, OnATieTakesTheEarliestInTheListWhereTheLastHasTakenThePlaceOfTheOneBefore) {
    Clip clip(20 * kMiB);
    for (std::uint64_t i = 0; i < 4; ++i) clip.request(i * kMiB, kMiB)->dwUsedMs = i == 0 ? 9 : 5;
    s3cDeleteOldestCacheBlock(clip.handle());
    EXPECT_EQ(clip.cached(kMiB, 0), "miss");
    s3cDeleteOldestCacheBlock(clip.handle());
    EXPECT_EQ(clip.cached(3 * kMiB, 1), "miss");
    EXPECT_NE(clip.cached(2 * kMiB, 1), "miss");
}

TEST(S3Eviction, BlockWhoseClockIsZeroGivesWayToTheNextInTheList) {
    Clip clip(20 * kMiB);
    const std::uint32_t used[] = {0, 7, 8};
    for (std::uint64_t i = 0; i < 3; ++i) clip.request(i * kMiB, kMiB)->dwUsedMs = used[i];
    s3cDeleteOldestCacheBlock(clip.handle());
    EXPECT_EQ(clip.cached(kMiB, 1), "miss");
    EXPECT_NE(clip.cached(0, 1), "miss");
}

TEST(S3Eviction, NeverTakesABlockUnderWay) {
    Later later;
    Clip clip(20 * kMiB, &later);
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0xFFFFFFFFu);  // no list yet
    clip.request(0, kMiB);
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0xFFFFFFFFu);
    later.doOne();
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0u);
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0xFFFFFFFFu);  // none left
}

TEST(S3Eviction, NineBlocksCanBeHeldAndNoMore) {
    const BlockSize small(100000);
    Clip clip(20 * kMiB);
    std::uint64_t position = 0;
    clip.expectPattern(position, 1);
    for (int i = 0; i < 15; ++i) {
        clip.expectPattern(position, 1);  // asks for one ahead
        position = clip.file.object().requestStart;
    }
    std::vector<std::uint64_t> held;
    for (std::uint64_t at = 0; at < 2000000; at += 100000) {
        if (clip.cached(at, 1) != "miss") held.push_back(at / 100000);
    }
    EXPECT_EQ(held.size(), 9u);
    EXPECT_EQ(clip.client->requests().size(), 16u);
}

TEST(S3Eviction, MissTrimsToTheMostBlocksBehindItsRequest) {
    Clip clip(40 * kMiB);
    for (std::uint64_t i = 0; i < 12; ++i) clip.request(i * kMiB, kMiB)->dwUsedMs = static_cast<std::uint32_t>(i + 1);
    clip.expectPattern(20 * kMiB, 10);
    for (std::uint64_t i = 0; i < 12; ++i) EXPECT_EQ(clip.cached(i * kMiB, 1) == "miss", i < 5) << i;
}

TEST(S3Eviction, WithNoBlocksAllowedNoReadSucceeds) {
    const MostBlocks none(0);
    Clip clip(1000);
    clip.expectMiss(0, 10);
    EXPECT_EQ(clip.client->requests().size(), 1u);
}

TEST(S3Retry, FourAttemptsAreMade) {
    CapturedMessages messages;
    Clip clip(20 * kMiB);
    clip.client->refuse("GetObject", 3, down());
    clip.expectPattern(0, 10);
    EXPECT_EQ(clip.client->requests(), Requests(4, "GetObject clip bytes=0-5242879"));
    EXPECT_EQ(messages.count(warning(0, kBlock)), 3u);
    EXPECT_EQ(messages.count("S3Error"), 0u);
}

TEST(S3Retry, IsCountedInTheBlock) {
    const CapturedMessages messages;
    Clip clip(20 * kMiB);
    clip.client->refuse("GetObject", 2, down());
    EXPECT_EQ(clip.request(0, kMiB)->qwRetries, 2u);
}

TEST(S3Retry, FailureOfTheFourthEndsInAMiss) {
    CapturedMessages messages;
    Clip clip(20 * kMiB);
    clip.client->refuse("GetObject", 4, down());
    errno = 0;
    clip.expectMiss(100, 10);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(clip.client->requests().size(), 4u);
    EXPECT_EQ(messages.count(warning(100, 100 + kBlock)), 3u);
    EXPECT_EQ(messages.count(failure(100, 100 + kBlock)), 1u);
    clip.expectPattern(100, 10);  // a later read asks again
    EXPECT_EQ(clip.client->requests().size(), 5u);
}

TEST(S3Retry, FailureShowsOffsetsAsSignedWords) {
    CapturedMessages messages;
    Clip clip(1, std::uint64_t{1} << 40);
    clip.client->refuse("GetObject", 4, down());
    EXPECT_EQ(clip.request(0xFFFFFF00, 0x200), nullptr);  // nothing is left of it when the call returns
    EXPECT_EQ(messages.count(warning(4294967040, 4294967552)), 3u);
    EXPECT_EQ(messages.count("S3Error: Failure on second try read block -256-256 Error: "), 1u);
}

TEST(S3Retry, FailureTakesTheLastBlockAwayWhicheverFailed) {
    CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    sCacheElem* failing = clip.request(0, kMiB);
    clip.request(kMiB, kMiB);
    clip.request(2 * kMiB, kMiB);
    clip.client->refuse("GetObject", 1, down());
    later.doOne();  // fails, and is repeated behind the two others
    later.doOne();
    later.doOne();
    clip.client->refuse("GetObject", 3, down());
    for (int i = 0; i < 3; ++i) later.doOne();
    EXPECT_EQ(later.held(), 0u);
    EXPECT_TRUE(isDone(failing));  // it stays in the list, empty
    EXPECT_EQ(failing->qwStart, 0u);
    EXPECT_EQ(failing->qwEnd, 0u);
    EXPECT_EQ(failing->pData, nullptr);
    EXPECT_EQ(clip.cached(0, 1), "miss");
    EXPECT_EQ(clip.cached(kMiB, 1), patternFrom(kMiB, 1));
    EXPECT_EQ(clip.cached(2 * kMiB, 1), "miss");
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0u);
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0u);
    EXPECT_EQ(s3cDeleteOldestCacheBlock(clip.handle()), 0xFFFFFFFFu);
}

TEST(S3Wait, HitOnABlockUnderWayWaitsForIt) {
    Later later;
    Clip clip(20 * kMiB, &later);
    const BeginOnceAwaited begin(later, clip.request(0, kMiB));
    EXPECT_EQ(clip.cached(100, 10), patternFrom(100, 10));
}

TEST(S3Wait, ReaderOfABlockThatFailsIsReleasedAndMisses) {
    const CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    clip.client->refuse("GetObject", 4, down());
    const BeginOnceAwaited begin(later, clip.request(0, kMiB));
    EXPECT_EQ(clip.cached(100, 10), "miss");
    EXPECT_EQ(clip.tell(), 100u);
}

TEST(S3Wait, WholeReadAsksAgainForWhatFailedWhileItWaited) {
    CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    clip.client->refuse("GetObject", 4, down());
    const BeginOnceAwaited begin(later, clip.request(0, kMiB));
    clip.expectPattern(100, 10);
    EXPECT_EQ(clip.client->requests().back(), "GetObject clip bytes=100-5242979");
    EXPECT_EQ(messages.count(failure(0, kMiB)), 1u);
}

TEST(S3Wait, ReaderIsReleasedWhenTheRequestIsDropped) {
    CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    sCacheElem* block = clip.request(0, kMiB);
    std::thread dropper([&] {
        while (static_cast<s3::Block*>(block)->weak_from_this().use_count() < 3) std::this_thread::yield();
        later.dropOne();
    });
    EXPECT_EQ(clip.cached(100, 10), "miss");
    dropper.join();
    EXPECT_TRUE(isDone(block));
    EXPECT_EQ(messages.text(), "");
}

TEST(S3Shorter, BlockEndsWithWhatArrivedAndAReadAtTheNewEndMisses) {
    CapturedMessages messages;
    Clip clip(100000, 200000);
    clip.expectPattern(0, 100);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(clip.cached(99990, 10), patternFrom(99990, 10));
    clip.client->put("clip", makePattern(100000));
    clip.expectMiss(100000, 10);
    clip.expectMiss(99990, 20);  // there is more by the size, so that a part of it is not enough
}

TEST(S3Shorter, BodyThatBreaksOffCountsForWhatCame) {
    Clip clip(100000);
    clip.client->setReceived(1000);
    sCacheElem* block = clip.request(0, kBlock);
    EXPECT_EQ(block->qwEnd, 1000u);
}

TEST(S3Shorter, BodyThatIsLongerThanAskedForIsCut) {
    struct Longer : FakeClient {
        s3::Answer<s3::ObjectBody> getObject(const s3::GetObjectRequest& request) override {
            return s3::ObjectBody{request.destination.size() + 100, request.destination.size()};
        }
    };
    FakeHandle file(std::make_shared<Longer>(), "clip", 20 * kMiB);
    EXPECT_EQ(s3cRequestBlock(file.handle(), 0, kMiB)->qwEnd, kMiB);
}

TEST(S3Shorter, ReaderWaitingBeyondTheNewEndIsToldOfTwiceAndGetsNothing) {
    CapturedMessages messages;
    Later later;
    Clip clip(1000, 20 * kMiB, &later);
    sCacheElem* block = clip.request(100, kMiB);
    const int list = low(clip.file.object().cache.get());
    const BeginOnceAwaited begin(later, block);
    EXPECT_EQ(clip.cached(2000, 50), "miss");
    EXPECT_EQ(clip.tell(), 2000u);
    char expected[200];
    std::snprintf(expected, sizeof expected,
                  "\nERROR: Overwrite cache[1900] start (900 >= %d) "
                  "\nERROR: Overwrite cache[1950] end (900 >= %d) ",
                  list, low(block));
    EXPECT_EQ(messages.text(), expected);
}

TEST(S3Shorter, ReaderWaitingAtTheNewEndIsToldOfOnce) {
    CapturedMessages messages;
    Later later;
    Clip clip(1000, 20 * kMiB, &later);
    const BeginOnceAwaited begin(later, clip.request(100, kMiB));
    const int list = low(clip.file.object().cache.get());
    EXPECT_EQ(clip.cached(1000, 50), "miss");
    char expected[100];
    std::snprintf(expected, sizeof expected, "\nERROR: Overwrite cache[900] start (900 >= %d) ", list);
    EXPECT_EQ(messages.text(), expected);
}

TEST(S3Close, DoesNotWaitAndTheAnswerThatComesLaterIsHarmless) {
    CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    clip.client->refuse("GetObject", 1, down());
    for (std::uint64_t i = 0; i < 3; ++i) clip.request(i * kMiB, kMiB);
    clip.file.close();
    EXPECT_EQ(later.held(), 3u);
    for (int i = 0; i < 3; ++i) later.doOne();
    EXPECT_EQ(later.held(), 0u);  // what failed is not repeated
    EXPECT_EQ(messages.text(), "");
}

TEST(S3Close, ReadingBeginsAnewBehindTheCallThatLetsBlocksGo) {
    Clip clip(20 * kMiB);
    clip.expectPattern(0, 10);
    s3cClose(clip.handle());
    EXPECT_EQ(clip.cached(0, 10), "miss");
    clip.expectPattern(0, 10);
    EXPECT_EQ(clip.client->requests().size(), 2u);
}

TEST(S3Close, OfNoHandleAndOfAnEmptyListDoesNothing) {
    s3cClose(0);
    s3cClose(KVFILE_INVALID);
    Clip clip(1000);
    s3cClose(clip.handle());
    s3cClose(clip.handle());
}

TEST(S3Calls, AnswerHandlesThatAreNoS3HandlesLikeAnObjectWithoutBlocks) {
    kvOSFileHandle local{};
    for (const std::int64_t handle : {std::int64_t{0}, KVFILE_INVALID, kv::file::handleOf(local)}) {
        char byte = 0;
        std::uint32_t got = 77;
        EXPECT_EQ(s3cRequestBlock(handle, 0, 10), nullptr);
        EXPECT_EQ(s3cReadFromCache(handle, &byte, 1, &got), 0u);
        EXPECT_EQ(s3cGetCacheAndRead(handle, &byte, 1, &got), 0u);
        EXPECT_EQ(s2cRead(handle, &byte, 1, &got), 0u);
        EXPECT_EQ(s3cLoadNextCacheChunk(handle), 0u);
        EXPECT_EQ(s3cDeleteOldestCacheBlock(handle), 0xFFFFFFFFu);
        s3cClose(handle);
        EXPECT_EQ(got, 77u);
    }
}

// Closes that meet requests in every state: waiting, running, failing, being repeated, just answered.
TEST(S3Close, ThousandsWithRequestsInFlight) {
    const CapturedMessages messages;
    const BlockSize small(70000);
    Dice random;
    SCOPED_TRACE(random.seed());
    Later later;
    later.start(3);
    const auto client = std::make_shared<FakeClient>(&later);
    client->put("clip", makePattern(kMiB));
    for (int i = 0; i < 4000; ++i) {
        if (random(16) == 0) client->refuse("GetObject", random(6), {"Gone", "", 500});
        FakeHandle file(client, "clip", kMiB);
        for (unsigned requests = random(5); requests > 0; --requests) {
            s3cRequestBlock(file.handle(), random(kMiB), random(1000) + 1);
        }
        if (random(4) == 0) {
            file.record().qwPos = random(kMiB);
            const std::uint64_t position = file.record().qwPos;
            const FakeHandle::Read read = file.read(random(5000));
            ASSERT_TRUE(!read.succeeded || read.bytes == patternFrom(position, read.bytes.size()));
        }
        if (random(8) == 0) s3cDeleteOldestCacheBlock(file.handle());
        if (random(8) == 0) s3cClose(file.handle());
    }
    later.stop();
}

TEST(S3Read, RandomReadsAndSeeksGiveTheObjectsBytes) {
    const CapturedMessages messages;
    const BlockSize small(100000);
    Dice random;
    SCOPED_TRACE(random.seed());
    Later later;
    later.start(2);
    constexpr std::uint64_t kSize = 3 * kMiB + 12345;
    {
        Clip clip(kSize, &later);
        for (int i = 0; i < 2000; ++i) {
            if (random(50) == 0) clip.client->refuse("GetObject", random(8), {"Gone", "", 500});
            if (random(3) == 0) clip.seek(random(kSize + 10));
            const std::uint64_t position = clip.tell();
            const std::uint32_t wanted = random(5) == 0 ? random(400000) : random(5000);
            const FakeHandle::Read read = clip.file.read(wanted);
            if (!read.succeeded) {
                ASSERT_EQ(clip.tell(), position);
                continue;
            }
            ASSERT_EQ(read.bytes.size(), std::min<std::uint64_t>(wanted, kSize - position));
            ASSERT_TRUE(read.bytes == patternFrom(position, read.bytes.size()));
        }
    }
    later.stop();
}

}  // namespace
}  // namespace kvtest
