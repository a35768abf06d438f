// The close of a written S3 object: the requests, in their order, and every message of every failure.
//
// The parts are put into the store by hand, as short as a test likes: nothing here looks at their length.
#include "file/s3_write_support.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

/// A handle on "clips/a.mxf" whose parts are stored as "P/a_1.mxf" and so on.
struct Written {
    explicit Written(int parts, std::shared_ptr<FakeClient> client_ = std::make_shared<FakeClient>())
        : client(std::move(client_)), file(client, "clips/a.mxf", static_cast<std::uint64_t>(parts) * kPart) {
        file.object().partPrefix = "P/";
        for (int i = 1; i <= parts; ++i) store(i);
    }
    void store(int number) {
        const std::string bytes = "part " + std::to_string(number) + ' ';
        client->putObject({"bucket", partKey(number), "", std::as_bytes(std::span(bytes))});
    }
    static std::string partKey(int number) { return "P/a_" + std::to_string(number) + ".mxf"; }
    /// What the finishing asks for.
    Requests finish() {
        const std::size_t before = client->requests().size();
        file.close();
        const Requests all = client->requests();
        return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
    }
    std::string content() { return client->content("clips/a.mxf"); }

    std::shared_ptr<FakeClient> client;
    FakeHandle file;
};

std::string copyOf(int number, const std::string& upload = "upload") {
    return "UploadPartCopy clips/a.mxf " + upload + " /bucket/" + Written::partKey(number) + ' ' +
           std::to_string(number);
}

TEST(S3Finish, AsksForOneUploadOneListingACopyOfEachPartAndADeletionOfEach) {
    Written clip(2);
    EXPECT_EQ(clip.finish(), (Requests{"CreateMultipartUpload clips/a.mxf video/mxf", "ListObjectsV2 P/ ", copyOf(1),
                                       copyOf(2), "CompleteMultipartUpload clips/a.mxf upload", "ListObjects P/ ",
                                       "DeleteObject P/a_1.mxf", "ListObjects P/ ", "DeleteObject P/a_2.mxf"}));
    EXPECT_EQ(clip.content(), "part 1 part 2 ");
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Finish, TellsEachListingAndEachDeletion) {
    CapturedMessages messages;
    Written clip(2);
    clip.finish();
    EXPECT_EQ(messages.text(),
              "Aws::Object name: P/a_1.mxf and object size 7 \nAws::Deleted object: P/a_1.mxf \n"
              "Aws::Object name: P/a_2.mxf and object size 7 \nAws::Deleted object: P/a_2.mxf \n");
}

TEST(S3Finish, JoinsPartsByNumberThoughTheListingSortsTenAheadOfTwo) {
    Written clip(11);
    clip.finish();
    std::string expected;
    for (int i = 1; i <= 11; ++i) expected += "part " + std::to_string(i) + ' ';
    EXPECT_EQ(clip.content(), expected);
    const auto parts = clip.client->completedWith();
    ASSERT_EQ(parts.size(), 11u);
    for (int i = 0; i < 11; ++i) {
        const auto& part = parts[static_cast<std::size_t>(i)];
        EXPECT_EQ(part.partNumber, i + 1);
        EXPECT_EQ(part.eTag, "\"tag " + std::to_string(i + 1) + '"');  // the listing's, not the copy's
    }
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Finish, FollowsAListingOverItsPages) {
    Written clip(5);
    clip.client->setPageSize(2);
    const Requests requests = clip.finish();
    EXPECT_EQ(requests[1], "ListObjectsV2 P/ ");
    EXPECT_EQ(requests[2], "ListObjectsV2 P/ P/a_2.mxf");
    EXPECT_EQ(requests[3], "ListObjectsV2 P/ P/a_4.mxf");
    EXPECT_EQ(clip.content(), "part 1 part 2 part 3 part 4 part 5 ");
}

TEST(S3Finish, StopsAListingThatGoesOnWithoutAToken) {
    struct Endless : FakeClient {
        s3::Answer<s3::Listing> listObjectsV2(const s3::ListObjectsV2Request& request) override {
            s3::Listing listing = FakeClient::listObjectsV2(request).result();
            listing.isTruncated = true;
            listing.nextContinuationToken = token;
            return listing;
        }
        std::string token;
    };
    for (const char* token : {"", "same"}) {
        const auto client = std::make_shared<Endless>();
        client->token = token;
        Written clip(1, client);
        clip.finish();
        EXPECT_LE(client->count("ListObjectsV2"), 2u);
    }
}

TEST(S3Finish, OfAHandleThatWroteNothingAsksForNothing) {
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 3 * kPart);
    file.close();
    EXPECT_EQ(client->requests(), Requests{});
}

TEST(S3Finish, WithoutAKeyStoresThePartAlone) {
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "", 0);
    file.write("abc");
    file.close();
    EXPECT_EQ(client->requests().size(), 1u);
    EXPECT_EQ(client->count("PutObject"), 1u);
}

TEST(S3Finish, RoundsTheNumberOfPartsUp) {
    for (const auto& [size, copies] : {std::pair{kPart, 1}, {kPart + 1, 2}, {kPart - 1, 1}, {std::uint64_t{1}, 1}}) {
        const auto client = std::make_shared<FakeClient>();
        FakeHandle file(client, "clips/a.mxf", size);
        file.object().partPrefix = "P/";
        const CapturedMessages messages;
        file.close();
        EXPECT_EQ(client->count("UploadPartCopy"), static_cast<std::size_t>(copies)) << size;
    }
}

TEST(S3Finish, RefusedUploadIsToldAndTheOneOfTheOpenUsed) {
    CapturedMessages messages;
    Written clip(1);
    clip.client->refuse("CreateMultipartUpload", 1, down());
    const Requests requests = clip.finish();
    EXPECT_EQ(messages.count("Aws::HeadObject exception/error    THREE: SlowDown Please reduce your request rate.\n"),
              1u);
    EXPECT_EQ(requests[2], copyOf(1, "upload of the open"));
    EXPECT_EQ(requests[3], "CompleteMultipartUpload clips/a.mxf upload of the open");
}

TEST(S3Finish, RefusedListingIsToldAndNothingCanBeCompletedNorDeleted) {
    CapturedMessages messages;
    Written clip(2);
    clip.client->refuse("ListObjectsV2", 1, down());
    EXPECT_EQ(clip.finish(),
              (Requests{"CreateMultipartUpload clips/a.mxf video/mxf", "ListObjectsV2 P/ ", copyOf(1), copyOf(2)}));
    EXPECT_EQ(messages.text(),
              "Aws::Deleted err exception: SlowDown \n"
              "Aws::Deleted err ERROR: Please reduce your request rate. \n"
              "Aws:: Adding first object, but list is empty <0, max=0> "
              "Aws:: Adding first object, but list is empty <1, max=0> ");
    EXPECT_EQ(clip.client->keys().size(), 2u);
}

TEST(S3Finish, RefusedListingOfALaterPageKeepsTheEarlierOnes) {
    CapturedMessages messages;
    Written clip(3);
    clip.client->setPageSize(2);
    clip.client->pass("ListObjectsV2", 1);
    clip.client->refuse("ListObjectsV2", 1, down());
    clip.finish();
    EXPECT_EQ(messages.count("Aws:: !Found object, but part does not exist <2, max=2> "), 1u);
    EXPECT_EQ(clip.content(), "part 1 part 2 ");
}

TEST(S3Finish, RefusedCopyIsToldAndTheOthersGoOn) {
    CapturedMessages messages;
    Written clip(3);
    clip.client->pass("UploadPartCopy", 2);
    clip.client->refuse("UploadPartCopy", 1, down());
    clip.finish();
    EXPECT_EQ(
        messages.count("Aws::GetObject <clips/a.mxf> exception/error: SlowDown Please reduce your request rate.\n"),
        1u);
    EXPECT_EQ(clip.content(), "part 1 part 2 ");
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});  // its part goes as well
}

TEST(S3Finish, WhatStandsBehindARefusedCopyMovesUp) {
    const CapturedMessages messages;
    Written clip(3);
    clip.client->pass("UploadPartCopy", 1);
    clip.client->refuse("UploadPartCopy", 1, down());
    clip.finish();
    EXPECT_EQ(clip.content(), "part 1 part 3 ");
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Finish, PartBehindAMissingOneHasNoEntryAtItsIndex) {
    CapturedMessages messages;
    Written clip(3);
    clip.client->deleteObject({"bucket", "P/a_2.mxf"});
    clip.finish();
    EXPECT_EQ(messages.count("Aws::GetObject <clips/a.mxf> exception/error: NoSuchKey no such part\n"), 1u);
    EXPECT_EQ(messages.count("Aws:: !Found object, but part does not exist <2, max=2> "), 1u);
    EXPECT_EQ(clip.content(), "part 1 ");
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Finish, PartThatIsKnownAlreadyGetsTheTagAtItsPlace) {
    Written clip(2);
    clip.file.object().completedParts = {{"old", 1}};
    clip.finish();
    const auto parts = clip.client->completedWith();
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].eTag, "\"tag 1\"");
    EXPECT_EQ(parts[1].eTag, "\"tag 2\"");
}

TEST(S3Finish, PartThatIsKnownAlreadyAndNotListedKeepsItsTag) {
    CapturedMessages messages;
    Written clip(2);
    clip.file.object().completedParts = {{"old", 1}};
    clip.client->refuse("ListObjectsV2", 1, down());
    clip.finish();
    EXPECT_EQ(messages.count("Aws:: Found object, but part does not exist <0, max=0> "), 1u);
    EXPECT_EQ(messages.count("Aws:: !Found object, but part does not exist <1, max=0> "), 1u);
    const auto parts = clip.client->completedWith();
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0].eTag, "old");
}

TEST(S3Finish, RefusedCompletionIsToldAndThePartsGoAllTheSame) {
    CapturedMessages messages;
    Written clip(2);
    clip.client->refuse("CompleteMultipartUpload", 1, down());
    clip.finish();
    EXPECT_EQ(messages.count("\nAws::HeadObject exception/error    FOUR: SlowDown Please reduce your request rate.\n"),
              1u);
    EXPECT_EQ(clip.client->keys(), Requests{});
}

TEST(S3Finish, RefusedListingForADeletionIsToldAndTheNextPartTried) {
    CapturedMessages messages;
    Written clip(2);
    clip.client->refuse("ListObjects", 1, down());
    clip.finish();
    EXPECT_EQ(messages.count("\nAws::HeadObject exception/error  FIVE: SlowDown Please reduce your request rate.\n"),
              1u);
    EXPECT_EQ(clip.client->keys(), (Requests{"P/a_1.mxf", "clips/a.mxf"}));
    EXPECT_EQ(messages.count("Aws::Object name: P/a_1.mxf and object size 7 \n"), 1u);  // on the way to the second
}

TEST(S3Finish, RefusedDeletionIsToldAndTheListingWalkedOn) {
    CapturedMessages messages;
    Written clip(2);
    clip.client->refuse("DeleteObject", 1, down());
    clip.finish();
    EXPECT_EQ(messages.text(),
              "Aws::Object name: P/a_1.mxf and object size 7 \n"
              "Aws::Deleted err exception: SlowDown \n"
              "Aws::Deleted err message: Please reduce your request rate. \n"
              "Aws::Object name: P/a_2.mxf and object size 7 \n"
              "Aws::Object name: P/a_1.mxf and object size 7 \n"
              "Aws::Object name: P/a_2.mxf and object size 7 \n"
              "Aws::Deleted object: P/a_2.mxf \n");
    EXPECT_EQ(clip.client->keys(), (Requests{"P/a_1.mxf", "clips/a.mxf"}));
}

TEST(S3Finish, EverythingRefusedStillEnds) {
    CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    for (const char* operation : {"PutObject", "CreateMultipartUpload", "ListObjectsV2", "UploadPartCopy"}) {
        client->refuse(operation, 100, down());
    }
    FakeHandle file(client, "clips/a.mxf", 0);
    file.write("abc");
    file.close();
    EXPECT_EQ(client->requests().size(), 4u);
    EXPECT_EQ(messages.count("SlowDown"), 4u);
}

/// Two parts, of which the first is short and has to be filled up.
void writeShortPart(FakeHandle& file) {
    file.write("head");
    file.writeAt(kPart, "tail");
}

TEST(S3Finish, PartThatCannotBeLoadedToFillItUpMakesNoObjectAndAllPartsStay) {
    CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 0);
    writeShortPart(file);
    const std::string prefix = file.prefix();
    client->refuse("GetObject", 3, down());
    file.close();
    std::string expected;
    for (int i = 0; i < 3; ++i) {
        expected += "Aws::Error exception: SlowDown \nAws::Error message: Please reduce your request rate. \n";
    }
    EXPECT_EQ(messages.text(), expected + "\nAws::HeadObject exception/error    FOUR: IncompletePart The parts below " +
                                   prefix + " stay as they are\n");
    EXPECT_EQ(client->keys(), (Requests{prefix + "a_1.mxf", prefix + "a_2.mxf"}));
    EXPECT_EQ(client->content(prefix + "a_1.mxf"), "head");
    EXPECT_EQ(client->content(prefix + "a_2.mxf"), "tail");
    EXPECT_EQ(client->count("CreateMultipartUpload"), 0u);
}

TEST(S3Finish, PartThatCannotBeStoredFilledUpMakesNoObjectEither) {
    CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 0);
    writeShortPart(file);
    const std::string prefix = file.prefix();
    client->pass("PutObject", 1);  // the rest
    client->refuse("PutObject", 3, down());
    file.close();
    EXPECT_EQ(messages.count("Aws::GetObject exception/error: SlowDown Please reduce your request rate.\n"), 3u);
    EXPECT_EQ(messages.count("    FOUR: IncompletePart The parts below "), 1u);
    EXPECT_EQ(client->content(prefix + "a_1.mxf"), "head");
    EXPECT_EQ(client->count("CreateMultipartUpload"), 0u);
}

TEST(S3Finish, ShortPartAheadOfAnotherIsFilledUpAlsoWhereALaterOneIsMissing) {
    const CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 0);
    writeShortPart(file);
    file.writeAt(3 * kPart, "far");
    file.close();
    EXPECT_TRUE(client->content("clips/a.mxf") == "head" + std::string(kPart - 4, '\0') + "tail");
}

TEST(S3Finish, PartThatHasToBeFilledUpIsTriedThreeTimes) {
    CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 0);
    writeShortPart(file);
    client->refuse("GetObject", 1, down());
    client->pass("PutObject", 1);
    client->refuse("PutObject", 1, down());
    file.close();
    EXPECT_TRUE(client->content("clips/a.mxf") == "head" + std::string(kPart - 4, '\0') + "tail");
    EXPECT_EQ(client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Finish, PartThatWasCutAndCannotBeShortenedMakesNoObject) {
    CapturedMessages messages;
    const auto client = std::make_shared<FakeClient>();
    FakeHandle file(client, "clips/a.mxf", 0);
    file.write("0123456789");
    EXPECT_EQ(skvOSWriteAWSBlock(file.handle()), 1u);
    file.record().qwPos = file.record().qwSize = 4;
    client->refuse("GetObject", 3, down());
    file.close();
    EXPECT_FALSE(client->has("clips/a.mxf"));
    EXPECT_EQ(messages.count("    FOUR: IncompletePart The parts below "), 1u);
}

TEST(S3Finish, PartsOfAnotherObjectWithTheSamePrefixStay) {
    Written clip(1);
    clip.client->put("P/other", makePattern(3));
    const CapturedMessages messages;
    clip.finish();
    EXPECT_EQ(clip.client->keys(), (Requests{"P/other", "clips/a.mxf"}));
}

}  // namespace
}  // namespace kvtest
