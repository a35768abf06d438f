// The part objects of a written S3 object: their names, their loads and stores by hand, and loads that fail during a
// write. And the two small calls beside them, for the texts of permissions and the order of completed parts.
#include <cerrno>
#include <regex>

#include "file/s3_write_support.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

TEST(S3PartName, IsMadeOfDirectoryNameIdentifierAndNumber) {
    Recording clip;
    char key[4096];
    ASSERT_EQ(kvOSCreateAWSObjName(0, clip.handle(), key), 1u);
    const std::regex form("clips/a_[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}/a_1\\.mxf");
    EXPECT_TRUE(std::regex_match(key, form)) << key;
}

TEST(S3PartName, KeepsItsPrefixForTheWholeHandle) {
    Recording clip;
    char first[4096];
    char tenth[4096];
    kvOSCreateAWSObjName(0, clip.handle(), first);
    kvOSCreateAWSObjName(9, clip.handle(), tenth);
    EXPECT_EQ(std::string(first), clip.file.prefix() + "a_1.mxf");
    EXPECT_EQ(std::string(tenth), clip.file.prefix() + "a_10.mxf");
    Recording other;
    kvOSCreateAWSObjName(0, other.handle(), first);
    EXPECT_NE(clip.file.prefix(), other.file.prefix());
}

TEST(S3PartName, KeyWithoutAFolderIsAFolderInThatOfItsParts) {
    Recording clip("a.mxf");
    char key[4096];
    kvOSCreateAWSObjName(1, clip.handle(), key);
    EXPECT_TRUE(std::regex_match(key, std::regex("a\\.mxf/a_[0-9a-f-]{36}/a_2\\.mxf"))) << key;
}

TEST(S3PartName, ThatDoesNotFitIsRefused) {
    Recording clip(filled(2030, 'd') + '/' + filled(2000, 'n'));
    char key[4096] = "before";
    errno = 0;
    EXPECT_EQ(kvOSCreateAWSObjName(0, clip.handle(), key), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_STREQ(key, "");
    CapturedMessages messages;
    clip.file.write("ten bytes ");
    clip.file.close();
    EXPECT_EQ(messages.count("Aws::GetObject exception/error: KeyTooLongError Your key is too long\n"), 1u);
}

TEST(S3Part, CallsAnswerZeroForHandlesThatAreNoS3Handles) {
    kvOSFileHandle local{};
    for (const std::int64_t handle : {std::int64_t{0}, KVFILE_INVALID, kv::file::handleOf(local)}) {
        char key[4096] = "before";
        EXPECT_EQ(kvOSCreateAWSObjName(0, handle, key), 0u);
        EXPECT_STREQ(key, "");
        EXPECT_EQ(skvOSWriteAWSBlock(handle), 0u);
        EXPECT_EQ(kvOSReadAWSBlock(handle, 0), 0u);
    }
    Recording clip;
    EXPECT_EQ(kvOSCreateAWSObjName(0, clip.handle(), nullptr), 0u);
}

TEST(S3Part, LoadStopsAtThePartThatTheBlockIs) {
    Recording clip;
    clip.file.write("0123456789");
    EXPECT_EQ(kvOSReadAWSBlock(clip.handle(), 5), 1u);
    EXPECT_EQ(clip.requests(), Requests{"PutObject P/a_1.mxf 10"});  // though it was stored first
}

TEST(S3Part, LoadMakesTheBlockThatOfThePosition) {
    Recording clip;
    clip.file.write(filled(kPart, 'a') + "tail");
    EXPECT_EQ(kvOSReadAWSBlock(clip.handle(), 17), 1u);
    EXPECT_EQ(clip.file.record().dwBlockIndex, 0u);
    EXPECT_EQ(clip.file.record().dwBlockUsed, kPart);
    EXPECT_EQ(*static_cast<char*>(clip.file.record().pBlock), 'a');
}

TEST(S3Part, LoadThatFailsKeepsTheBlocksBytes) {
    Recording clip;
    CapturedMessages messages;
    clip.file.write("0123456789");
    clip.client->refuse("PutObject", 1, down());
    EXPECT_EQ(kvOSReadAWSBlock(clip.handle(), kPart), 0u);
    EXPECT_EQ(clip.file.record().dwBlockIndex, 0u);
    EXPECT_EQ(clip.file.record().dwBlockUsed, 10u);
    EXPECT_EQ(std::string(static_cast<char*>(clip.file.record().pBlock), 10), "0123456789");
    EXPECT_EQ(clip.finished(), "0123456789");
}

TEST(S3Part, LoadThatFailsDuringAWriteFailsItAndLeavesWhatIsStored) {
    Recording clip;
    CapturedMessages messages;
    clip.file.write(filled(kPart, 'a'));
    clip.client->refuse("GetObject", 1, down());
    EXPECT_EQ(clip.failAt(2, "b"), 0u);
    EXPECT_EQ(messages.text(),
              "Aws::Error exception: SlowDown \nAws::Error message: Please reduce your request rate. \n");
    EXPECT_TRUE(clip.finished() == filled(kPart, 'a'));
    EXPECT_EQ(clip.requests("PutObject").size(), 1u);
}

TEST(S3Part, LoadThatFailsInsideAWriteLeavesWhatIsBehindAndCountsWhatWasAhead) {
    Recording clip;
    CapturedMessages messages;
    const std::string all = filled(kPart, 'a') + filled(100, 'b');
    clip.file.write(all);
    clip.client->pass("GetObject", 1);  // the first part is loaded, the second is not
    clip.client->refuse("GetObject", 1, down());
    EXPECT_EQ(clip.failAt(kPart - 2, "1234"), 2u);
    EXPECT_EQ(kvOSTell(clip.handle()), static_cast<std::int64_t>(kPart));
    EXPECT_TRUE(clip.finished() == filled(kPart - 2, 'a') + "12" + filled(100, 'b'));
}

TEST(S3Part, ThatWasStoredIsTakenUpAgainByTheNextWriteBehindAFailedLoad) {
    Recording clip;
    CapturedMessages messages;
    std::string all = filled(kPart, 'a');
    clip.file.write(all);
    clip.client->refuse("GetObject", 1, down());
    EXPECT_EQ(clip.failAt(7, "x"), 0u);
    clip.file.writeAt(7, "x");
    EXPECT_TRUE(clip.finished() == all.replace(7, 1, "x"));
}

// The position comes to the stored part behind a full one, which is the block's by then without its bytes.
TEST(S3Part, ThatTheBlockIsAlreadyIsNotWrittenOverWhenItCannotBeLoaded) {
    Recording clip;
    CapturedMessages messages;
    const std::string all = filled(kPart, 'a') + filled(100, 'b');
    clip.file.write(all);
    clip.file.writeAt(kPart - 1, "A");  // full again: stored, and the block is the second part
    EXPECT_EQ(clip.file.record().dwBlockIndex, 1u);
    clip.client->refuse("GetObject", 1, down());
    EXPECT_EQ(clip.failAt(kPart + 3, "x"), 0u);
    EXPECT_TRUE(clip.finished() == filled(kPart - 1, 'a') + "A" + filled(100, 'b'));
}

// The store took the full part, and its answer was lost.
TEST(S3Part, ThatArrivedInSpiteOfAFailureKeepsItsBytes) {
    Recording clip;
    const CapturedMessages messages;
    clip.file.write("0123456789");
    clip.file.writeAt(kPart, "x");
    clip.client->pass("PutObject", 1);
    clip.client->refuse("PutObject", 1, down());
    clip.file.writeAt(10, filled(kPart - 10, 'b'));
    const std::string whole = "0123456789" + filled(kPart - 10, 'b');
    char key[4096];
    ASSERT_EQ(kvOSCreateAWSObjName(0, clip.handle(), key), 1u);
    ASSERT_TRUE(clip.client->putObject({"bucket", key, "", std::as_bytes(std::span(whole))}).isSuccess());
    EXPECT_TRUE(clip.finished() == whole + "x");
}

TEST(S3Part, ThatComesBackShorterThanItWasStoredCountsAsNotLoaded) {
    Recording clip;
    CapturedMessages messages;
    clip.file.write(filled(kPart, 'a'));
    clip.client->setReceived(1000);
    EXPECT_EQ(clip.failAt(7, "x", EBADMSG), 0u);
    EXPECT_EQ(messages.text(),
              "Aws::Error exception: IncompleteBody \n"
              "Aws::Error message: The part is shorter than it was stored \n");
    EXPECT_TRUE(clip.finished() == filled(kPart, 'a'));
}

TEST(S3Part, StoreOfAnUntouchedHandleMakesThePrefixAlone) {
    Recording clip;
    EXPECT_EQ(skvOSWriteAWSBlock(clip.handle()), 1u);
    EXPECT_NE(clip.file.prefix(), "");
    EXPECT_EQ(clip.requests(), Requests{});
}

TEST(S3Permission, HasItsText) {
    const std::string texts[] = {"NOT_SET", "FULL_CONTROL", "WRITE", "WRITE_ACP", "READ", "READ_ACP"};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(GetPermissionString(i), texts[i]);
    EXPECT_STREQ(GetPermissionString(6), "*unknown!*");
    EXPECT_STREQ(GetPermissionString(-1), "*unknown!*");
}

TEST(S3CompletedParts, AreOrderedByTheirSignedNumbers) {
    const sCompletedPart minus{"", -1};
    const sCompletedPart two{"", 2};
    const sCompletedPart ten{"", 10};
    EXPECT_EQ(compareParts(&two, &ten), 1u);
    EXPECT_EQ(compareParts(&ten, &two), 0u);
    EXPECT_EQ(compareParts(&minus, &two), 1u);
    EXPECT_EQ(compareParts(&two, &two), 0u);
    EXPECT_EQ(compareParts(nullptr, &two), 0u);
    EXPECT_EQ(compareParts(&two, nullptr), 1u);
    EXPECT_EQ(compareParts(nullptr, nullptr), 0u);
}

}  // namespace
}  // namespace kvtest
