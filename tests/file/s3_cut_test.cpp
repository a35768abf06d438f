// Written S3 objects that are cut: bytes behind the cut are zeros for whatever is written later, wherever they had got
// to by then, the block, a part in the store, or a gap.
#include "file/s3_write_support.h"
#include "support/captured_messages.h"

namespace kvtest {
namespace {

TEST(S3Cut, InsideTheBlockIsForgottenByAWriteBehindIt) {
    Recording clip;
    clip.file.write("0123456789");
    clip.cutAt(4);
    clip.file.writeAt(6, "b");
    EXPECT_EQ(clip.finished(), std::string("0123\0\0b", 7));
}

TEST(S3Cut, AtTheStartIsForgottenToo) {
    Recording clip;
    clip.file.write("0123456789");
    clip.cutAt(0);
    clip.file.writeAt(3, "b");
    EXPECT_EQ(clip.finished(), std::string("\0\0\0b", 4));
}

TEST(S3Cut, InsideABlockThatWasStoredIsForgotten) {
    Recording clip;
    clip.file.write("0123456789");
    EXPECT_EQ(skvOSWriteAWSBlock(clip.handle()), 1u);
    clip.cutAt(4);
    clip.file.writeAt(6, "b");
    EXPECT_EQ(clip.finished(), std::string("0123\0\0b", 7));
}

TEST(S3Cut, OfAStoredPartIsForgottenByAWriteInTheNext) {
    Recording clip;
    clip.file.write(filled(kPart, 'a'));
    clip.cutAt(4);
    clip.file.writeAt(kPart, "b");
    EXPECT_TRUE(clip.finished() == "aaaa" + filled(kPart - 4, '\0') + "b");
}

TEST(S3Cut, AheadOfAWholePartLeavesZerosOfItAndItIsNotLoaded) {
    Recording clip;
    clip.file.write(filled(2 * kPart, 'a'));
    clip.cutAt(4);
    clip.file.writeAt(2 * kPart, "b");
    EXPECT_TRUE(clip.finished() == "aaaa" + filled(2 * kPart - 4, '\0') + "b");
    EXPECT_EQ(clip.requests("GetObject"), Requests{"GetObject P/a_1.mxf "});
}

TEST(S3Cut, IsForgottenByAWriteInsideTheSamePartAndByALoad) {
    Recording clip;
    clip.file.write(filled(kPart, 'a') + "tail");
    clip.cutAt(4);
    clip.file.writeAt(kPart + 1, "b");
    EXPECT_EQ(kvOSReadAWSBlock(clip.handle(), 0), 1u);
    EXPECT_EQ(clip.file.record().dwBlockUsed, 4u);
    clip.file.writeAt(6, "c");
    std::string expected = "aaaa" + filled(kPart - 4, '\0') + '\0' + "b";
    EXPECT_TRUE(clip.finished() == expected.replace(6, 1, "c"));
}

TEST(S3Cut, InsideAGapEndsTheObjectThereWithZeros) {
    Recording clip;
    const CapturedMessages messages;
    clip.file.write("head");
    clip.file.writeAt(kPart + 3, "tail");
    clip.cutAt(1000);
    EXPECT_EQ(clip.finished(), "head" + filled(996, '\0'));
}

TEST(S3Cut, InsideAGapIsRememberedByAStoreAndALoadByHand) {
    for (const bool loads : {false, true}) {
        Recording clip;
        const CapturedMessages messages;
        clip.file.write("head");
        clip.file.writeAt(kPart + 3, "tail");
        clip.cutAt(1000);
        if (loads) {
            kvOSReadAWSBlock(clip.handle(), 0);
        } else {
            EXPECT_EQ(skvOSWriteAWSBlock(clip.handle()), 1u);
        }
        EXPECT_EQ(clip.finished(), "head" + filled(996, '\0')) << loads;
    }
}

TEST(S3Cut, OfAWholePartIsNotAskedForByAWriteInsideIt) {
    Recording clip;
    clip.file.write(filled(2 * kPart, 'a'));
    clip.cutAt(kPart);
    clip.file.writeAt(kPart + 7, "b");
    EXPECT_EQ(clip.requests("GetObject"), Requests{});
    EXPECT_TRUE(clip.finished() == filled(kPart, 'a') + filled(7, '\0') + "b");
}

TEST(S3Cut, TwiceCountsTheLower) {
    Recording clip;
    clip.file.write(filled(kPart, 'a'));
    clip.cutAt(1000);
    clip.cutAt(4);
    clip.file.writeAt(2000, "b");
    clip.cutAt(1500);
    clip.file.writeAt(1600, "c");
    EXPECT_TRUE(clip.finished() == "aaaa" + filled(1596, '\0') + "c");
}

TEST(S3Cut, ToNothingOfWhatWasNeverStoredLeavesNothing) {
    Recording clip;
    clip.file.write("0123456789");
    clip.cutAt(0);
    EXPECT_EQ(clip.finished(), "");
    EXPECT_EQ(clip.client->keys(), Requests{});
}

}  // namespace
}  // namespace kvtest
