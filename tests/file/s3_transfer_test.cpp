// S3 objects read and written through the calls that all kinds of files share, on a store in the process.
#include <random>
#include <string>

#include "file/s3_fixture.h"

namespace kvtest {
namespace {

constexpr std::uint64_t kMiB = 1048576;
constexpr std::uint32_t kPart = 62914560;

std::string readAt(const OwnedFile& file, std::int64_t position, std::uint32_t count) {
    EXPECT_EQ(kvOSSeek(file.handle(), position), position);
    return readSome(file, count);
}

class S3Transfer : public S3Test {
protected:
    ScriptedStore store;
};

TEST_F(S3Transfer, ReadsInOrderAndAskedForEachByteOnce) {
    store.putPattern("clip.mxf", 17 * kMiB + 5);
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    for (std::uint64_t at = 0; at < 17 * kMiB; at += kMiB) ASSERT_TRUE(readSome(file, kMiB) == patternFrom(at, kMiB));
    EXPECT_EQ(readSome(file, 100), patternFrom(17 * kMiB, 5));
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
    const auto requests = store.requests("GetObject");
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].http.header("Range"), "bytes=0-5242879");
    EXPECT_EQ(requests[3].http.header("Range"), "bytes=15728640-17825796");
}

TEST_F(S3Transfer, ReadsAtRandom) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr std::uint32_t kSize = 30 * kMiB;
    store.putPattern("clip.mxf", kSize);
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    for (int i = 0; i < 40; ++i) {
        const auto position = static_cast<std::uint32_t>(random() % kSize);
        const std::uint32_t count = std::min<std::uint32_t>(65536, kSize - position);
        ASSERT_TRUE(readAt(file, position, 65536) == patternFrom(position, count));
    }
}

TEST_F(S3Transfer, ReadAtTheEndFailsWithNoBytes) {
    store.put("clip.mxf", "0123456789");
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    kvOSSeekEnd(file.handle());
    char byte = 0;
    std::uint32_t got = 77;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, &got, nullptr), 0u);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(store.count("GetObject"), 0u);
}

TEST_F(S3Transfer, LinesAreReadAsFromEveryFile) {
    store.put("list.txt", "first\r\nsecond\n");
    const OwnedFile file = openForReading(store.locator("list.txt"));
    char line[7];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "first");
}

TEST_F(S3Transfer, ReadOutlivesThreeRefusals) {
    store.putPattern("clip.mxf", 100000);
    store.next("GetObject", 3, fault::refused(503, "SlowDown", "Please reduce your request rate."));
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    CapturedMessages messages;
    EXPECT_TRUE(readSome(file, 1000) == patternFrom(0, 1000));
    EXPECT_EQ(messages.count("S3Warning: Retry read block 0-100000 Error: Please reduce your request rate."), 3u);
    EXPECT_EQ(store.count("GetObject"), 4u);
}

TEST_F(S3Transfer, ReadFailsBehindTheFourth) {
    store.putPattern("clip.mxf", 100000);
    store.next("GetObject", 4, fault::refused(500, "InternalError", "We encountered an internal error."));
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    CapturedMessages messages;
    EXPECT_EQ(readSome(file, 1000), "");
    EXPECT_EQ(messages.count("S3Error: Failure on second try read block 0-100000 Error: We encountered an internal "
                             "error."),
              1u);
    EXPECT_EQ(store.count("GetObject"), 4u);
    EXPECT_TRUE(readSome(file, 1000) == patternFrom(0, 1000));
}

TEST_F(S3Transfer, BodyThatIsCutIsFetchedAgain) {
    store.putPattern("clip.mxf", 100000);
    store.next("GetObject", 1, fault::cutAfter(30000));
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    const CapturedMessages messages;
    EXPECT_TRUE(readSome(file, 100000) == patternFrom(0, 100000));
    EXPECT_EQ(store.count("GetObject"), 2u);
}

TEST_F(S3Transfer, BodyThatIsTooLongGivesNoWrongBytes) {
    store.putPattern("clip.mxf", 100000);
    store.next("GetObject", 1, fault::tooLong("more than was announced"));
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    const CapturedMessages messages;
    EXPECT_TRUE(readSome(file, 100000) == patternFrom(0, 100000));
}

TEST_F(S3Transfer, WholeBodyInPlaceOfARangeGivesNoWrongBytes) {
    const std::string content = patternFrom(0, 300000);
    store.put("clip.mxf", content);
    store.next("GetObject", ScriptedStore::kAlways, fault::body(content));
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    const CapturedMessages messages;
    const std::string read = readAt(file, 1000, 100);
    EXPECT_TRUE(read.empty() || read == patternFrom(1000, 100));
}

TEST_F(S3Transfer, ObjectThatGoesWhileItIsReadEndsTheRead) {
    store.putPattern("clip.mxf", 100000);
    const OwnedFile file = openForReading(store.locator("clip.mxf"));
    store.remove("clip.mxf");
    CapturedMessages messages;
    EXPECT_EQ(readSome(file, 10), "");
    EXPECT_EQ(messages.count("S3Error: Failure on second try read block 0-100000 Error: "), 1u);
}

TEST_F(S3Transfer, WriteTellsTheCountWhereAllOtherKindsTellOne) {
    const CapturedMessages messages;
    const OwnedFile file = openNew(store.locator("clip.mxf"));
    std::uint32_t written = 77;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "0123456789", 10, &written, nullptr), 10u);
    EXPECT_EQ(written, 10u);
    EXPECT_EQ(kvOSWriteFile(file.handle(), "0123456789", 1, &written, nullptr), 1u);
    EXPECT_EQ(kvOSWriteFile(file.handle(), "", 0, &written, nullptr), 0u);
    EXPECT_EQ(written, 0u);
}

TEST_F(S3Transfer, TextCallsTakeThatCountForAFailureUnlessItIsOne) {
    const CapturedMessages messages;
    OwnedFile file = openNew(store.locator("clip.txt"));
    EXPECT_EQ(kvOSfputs("two", file.handle()), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSfputs("1", file.handle()), 1u);
    EXPECT_EQ(kvOSfputc('c', file.handle()), 1u);
    EXPECT_EQ(kvOSfprintf(file.handle(), "%d", 1234), 4u);
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(store.content("clip.txt"), "two1c1234");
}

TEST_F(S3Transfer, WrittenObjectIsJoinedOfItsPartsWhichGo) {
    CapturedMessages messages;
    OwnedFile file = openNew(store.locator("clips/take 1.mxf"));
    const std::string all = std::string(kPart, 'a') + "and the rest";
    EXPECT_EQ(kvOSWriteFile(file.handle(), all.data(), static_cast<std::uint32_t>(all.size()), nullptr, nullptr),
              all.size());
    EXPECT_EQ(store.count("PutObject"), 1u);
    EXPECT_EQ(file.close(), 1u);
    EXPECT_TRUE(store.content("clips/take 1.mxf") == all);
    EXPECT_EQ(store.contentType("clips/take 1.mxf"), "application/mxf");
    EXPECT_EQ(store.keys(), std::vector<std::string>{"clips/take 1.mxf"});
    EXPECT_EQ(store.count("CreateMultipartUpload"), 2u);  // one of the open, left behind, and one of the close
    EXPECT_EQ(store.openUploads(), 1u);
    EXPECT_EQ(store.count("PutObject"), 2u);
    EXPECT_EQ(store.count("ListObjectsV2"), 1u);
    EXPECT_EQ(store.count("UploadPartCopy"), 2u);
    EXPECT_EQ(store.count("CompleteMultipartUpload"), 1u);
    EXPECT_EQ(store.count("ListObjects"), 2u);
    EXPECT_EQ(store.count("DeleteObject"), 2u);
    EXPECT_EQ(store.count("GetObject"), 0u);
    EXPECT_EQ(messages.count("exception"), 0u);
}

TEST_F(S3Transfer, HandleClosedWithNothingWrittenLeavesTheUploadOfTheOpenAlone) {
    OwnedFile file = openNew(store.locator("clip.mxf"));
    EXPECT_EQ(file.close(), 1u);
    EXPECT_TRUE(store.keys().empty());
    EXPECT_EQ(store.requests().size(), 1u);
    EXPECT_EQ(store.openUploads(), 1u);
}

TEST_F(S3Transfer, CloseSucceedsWhateverTheStoreRefuses) {
    OwnedFile file = openNew(store.locator("clip.mxf"));
    std::uint32_t written = 0;
    kvOSWriteFile(file.handle(), "abc", 3, &written, nullptr);
    store.next([](const StoreRequest&) { return true; }, ScriptedStore::kAlways,
               fault::refused(403, "AccessDenied", "Access Denied"));
    CapturedMessages messages;
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(messages.count("AccessDenied"), 4u);
}

TEST_F(S3Transfer, ClosesWithRequestsInFlightNeitherWaitNorHarm) {
    const CapturedMessages messages;
    store.putPattern("clip.mxf", 4 * kMiB);
    // Requests that have just begun, that are answered, and all that lies between.
    for (int i = 0; i < 2000; ++i) {
        OwnedFile file = openForReading(store.locator("clip.mxf"));
        for (int request = 0; request < 1 + i % 3; ++request) s3cRequestBlock(file.handle(), kMiB, 20000);
        if (i % 4 == 0) readSome(file, 100);
        EXPECT_EQ(file.close(), 1u);
    }
    store.hold("GetObject");
    OwnedFile file = openForReading(store.locator("clip.mxf"));
    s3cRequestBlock(file.handle(), 0, 1000);
    EXPECT_TRUE(store.waitForHeld(1));
    EXPECT_EQ(file.close(), 1u);
    store.release();
}

}  // namespace
}  // namespace kvtest
