// Requests for blocks that fail and are repeated, and the readers that wait for them.
#include <cerrno>
#include <thread>

#include "file/s3_clip.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

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

TEST(S3Retry, MissWhoseGoodBlockWentWithAnOlderOneThatFailedLeavesItsErrorToo) {
    const CapturedMessages messages;
    Later later;
    Clip clip(20 * kMiB, &later);
    clip.client->refuse("GetObject", 4, down());
    clip.request(0, kMiB);
    for (int i = 0; i < 3; ++i) later.doOne();
    // What is held now is the last attempt of the old block, and it fails while the miss waits for its own.
    std::thread answering([&] {
        while (later.held() < 2) std::this_thread::yield();
        later.doOne();
        later.doOne();
    });
    errno = 0;
    clip.expectMiss(10 * kMiB, 10);
    EXPECT_EQ(errno, EIO);
    answering.join();
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

}  // namespace
}  // namespace kvtest
