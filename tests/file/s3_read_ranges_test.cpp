// The ranges that blocks are requested with, and blocks that come shorter than that.
#include "file/s3_clip.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

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

}  // namespace
}  // namespace kvtest
