// Blocks that are let go of: the oldest for a new one, all of them by a close, which waits for none.
#include "file/s3_clip.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

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

}  // namespace
}  // namespace kvtest
