// Reading S3 objects from blocks: hits and misses, and the block that is fetched ahead.
#include <chrono>
#include <thread>

#include "file/s3_clip.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

TEST(S3ReadCache, TuningValuesStartAtFiveMebibytesAndEightBlocks) {
    EXPECT_EQ(gdwS3DefaultCacheSize, 0x500000u);
    EXPECT_EQ(gdwS3MaxCacheBlocks, 8u);
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

TEST(S3Read, SeveralOfSixMebibytesInOrderAreMissesEachWithARequestOfItsOwn) {
    Clip clip(20 * kMiB);
    for (std::uint64_t i = 0; i < 3; ++i) clip.expectPattern(i * 6 * kMiB, 6 * kMiB);
    EXPECT_EQ(clip.client->requests(),
              (Requests{"GetObject clip bytes=0-6356991", "GetObject clip bytes=6291456-12648447",
                        "GetObject clip bytes=12582912-18939903"}));
    EXPECT_EQ(clip.file.object().cacheMisses, 3u);
    EXPECT_EQ(clip.file.object().cacheHits, 0u);
}

TEST(S3Read, OnesOfMoreThanHalfABlockInOrderAreMissesAsWell) {
    Clip clip(20 * kMiB);
    for (std::uint64_t i = 0; i < 4; ++i) clip.expectPattern(i * 4 * kMiB, 4 * kMiB);
    EXPECT_EQ(clip.file.object().cacheMisses, 4u);
    EXPECT_EQ(clip.file.object().cacheHits, 0u);
}

/// The room of a read, looked at while the read fills it.
class Room {
public:
    explicit Room(std::size_t size) : bytes_(size, '?') {}

    char* data() { return bytes_.data(); }
    const std::string& bytes() const { return bytes_; }
    /// Waits for the first byte of a read; false if it does not come within half a minute.
    __attribute__((no_sanitize("thread"))) bool hasBegun() const {
        const volatile char& first = bytes_.front();
        for (int i = 0; i < 30000 && first == '?'; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return first != '?';
    }

private:
    std::string bytes_;
};

TEST(S3Read, BehindARequestIsCopiedWhileItsBlockArrives) {
    Later later;
    Clip clip(6 * kMiB, &later);
    Room room(6 * kMiB);
    bool hasBegun = false;
    clip.client->atHalf([&] {
        hasBegun = room.hasBegun();
        return std::nullopt;
    });
    later.start(1);
    std::uint32_t got = 0;
    EXPECT_EQ(s2cRead(clip.handle(), room.data(), 6 * kMiB, &got), 1u);
    EXPECT_TRUE(hasBegun);
    EXPECT_EQ(got, 6 * kMiB);
    EXPECT_TRUE(room.bytes() == patternFrom(0, 6 * kMiB));
}

TEST(S3Read, WhatWasCopiedOfARequestThatThenFailedIsReplaced) {
    Later later;
    Clip clip(6 * kMiB, &later);
    Room room(6 * kMiB);
    const std::string other(6 * kMiB, 'o');
    StoredObject replacement = makePattern(other.size());
    replacement.read = [&other](std::uint64_t from, std::uint64_t count) { return other.substr(from, count); };
    clip.client->atHalf([&]() -> std::optional<s3::Error> {
        EXPECT_TRUE(room.hasBegun());
        clip.client->put("clip", replacement);
        return down();
    });
    later.start(1);
    CapturedMessages messages;
    std::uint32_t got = 0;
    EXPECT_EQ(s2cRead(clip.handle(), room.data(), 6 * kMiB, &got), 1u);
    EXPECT_TRUE(room.bytes() == other);
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

TEST(S3Read, BehindARefusedSeekFails) {
    Clip clip(kMiB);
    EXPECT_EQ(kvOSSeek(clip.handle(), -1), -1);
    char byte = 0;
    std::uint32_t got = 77;
    errno = 0;
    EXPECT_EQ(kvOSReadFile(clip.handle(), &byte, 1, &got, nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(got, 0u);
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
