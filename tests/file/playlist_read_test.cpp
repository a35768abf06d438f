// Reading a playlist as one file: what a read gives, and where the walk to a segment ends.
#include <gtest/gtest.h>
#include <string>

#include "file/owned_playlist.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

/// Four segments of 10 bytes, "aaaaaaaaaa" to "dddddddddd", each a file of its own entered at its start.
class PlaylistRead : public ::testing::Test {
protected:
    PlaylistRead() {
        std::string text = "#EXTM3U\n";
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            makeFile(scratch_ / std::string(1, letter), std::string(10, letter));
            text += "#EXTINF:1,\n#EXT-X-BYTERANGE:10@0\n" + std::string(1, letter) + "\n";
        }
        makeFile(path_, text);
    }

    ScratchFolder scratch_;
    std::string path_ = scratch_ / "list.m3u8";
};

TEST_F(PlaylistRead, ReadsWithinTheFirstSegment) {
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(4);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "aaaa");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 4u);
    EXPECT_EQ(list.read(4).bytes, "aaaa");
    EXPECT_EQ(list->pCurrent, list.segments()[0]);
    EXPECT_EQ(list->qwPos, 8u);
}

TEST_F(PlaylistRead, GoesOnInTheNextSegmentAndCountsTheFirstPartTwice) {
    const OwnedPlaylist list(path_);
    kvOSSeekM3U8(list.get(), 7);
    const auto [result, bytes] = list.read(8);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "aaabbbbb");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 13u);  // 7 and twice 3
    EXPECT_EQ(list->pCurrent, list.segments()[1]);
}

TEST_F(PlaylistRead, SpansTwoSegmentsAtMost) {
    const OwnedPlaylist list(path_);
    EXPECT_EQ(list.read(40).bytes, "aaaaaaaaaabbbbbbbbbb");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 20u);
}

TEST_F(PlaylistRead, TheSecondPartBeginsAtTheStartOfItsFile) {
    makeFile(scratch_ / "x", "0123456789");
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:4@0\nx\n#EXTINF:1,\n#EXT-X-BYTERANGE:4@4\nx\n");
    const OwnedPlaylist list(path_);
    kvOSSeekM3U8(list.get(), 2);
    EXPECT_EQ(list.read(4).bytes, "2301");
}

TEST_F(PlaylistRead, AReadThatBeginsAtTheEndOfASegmentPassesOverTheNext) {
    const OwnedPlaylist list(path_);
    const auto [firstResult, firstBytes] = list.read(10);
    EXPECT_EQ(firstResult, 1u);
    EXPECT_EQ(firstBytes, "aaaaaaaaaa");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 10u);
    EXPECT_NE(list.segments()[0]->hFile, -1) << "still open";
    const auto [result, bytes] = list.read(1);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "c");  // 10 lies ahead of it, so that its file, just opened, is read from its start
    EXPECT_EQ(kvOSTellM3U8(list.get()), 11u);
    EXPECT_EQ(list->pCurrent, list.segments()[2]);
    EXPECT_EQ(list.segments()[0]->hFile, -1) << "closed on leaving it";
}

TEST_F(PlaylistRead, TurnsOfWholeSegmentsReadEverySecondOneAndThenItAgain) {
    const OwnedPlaylist list(path_);
    std::string all;
    for (int i = 0; i < 3; ++i) {
        const auto [result, bytes] = list.read(10);
        EXPECT_EQ(result, 1u);
        all += bytes;
    }
    EXPECT_EQ(all,
              "aaaaaaaaaa"
              "cccccccccc"
              "cccccccccc");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 30u);
    EXPECT_EQ(list.read(10).result, 0u) << "the last one holds the position, and there is none behind it";
    EXPECT_EQ(list->pCurrent, list.segments()[3]);
    EXPECT_EQ(list.read(10).bytes, "dddddddddd");
}

TEST_F(PlaylistRead, ASegmentThatIsLeftIsClosed) {
    const OwnedPlaylist list(path_);
    kvOSSeekM3U8(list.get(), 8);
    EXPECT_EQ(list.read(4).bytes, "aabb");
    EXPECT_EQ(list.segments()[0]->hFile, -1);
    EXPECT_GT(list.segments()[1]->hFile, 0);
    EXPECT_EQ(list.segments()[2]->hFile, 0) << "never opened";
}

TEST_F(PlaylistRead, TheAnswerOfTheSecondReadIsNotLookedAt) {
    std::filesystem::remove(scratch_ / "b");
    std::filesystem::create_directory(scratch_ / "b");  // opens, and can't be read
    CapturedMessages messages;
    const OwnedPlaylist list(path_);
    kvOSSeekM3U8(list.get(), 7);
    const auto [result, bytes] = list.read(8);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "aaa");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 13u);
}

TEST_F(PlaylistRead, TheSecondPartEndsWithItsSegmentThoughItsFileGoesOn) {
    makeFile(scratch_ / "b", std::string(30, 'b'));
    const OwnedPlaylist list(path_);
    kvOSSeekM3U8(list.get(), 8);
    const auto [result, bytes] = list.read(25);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes,
              "aa"
              "bbbbbbbbbb");
}

TEST_F(PlaylistRead, TheWalkStopsAtTheFirstSegmentThatDoesNotHoldThePosition) {
    const OwnedPlaylist list(path_);
    list.read(1);
    kvOSSeekM3U8(list.get(), 35);
    list.read(1);
    EXPECT_EQ(list->pCurrent, list.segments()[1]);
    kvOSSeekM3U8(list.get(), 5);  // backward: the first one holds it, and there is no further one
    EXPECT_EQ(list.read(1).result, 0u);
    EXPECT_EQ(list->pCurrent, list.segments()[0]);
    EXPECT_EQ(list.read(1).bytes, "a");
}

TEST_F(PlaylistRead, OutsideTheCurrentSegmentTheOffsetIsReckonedFromItsStart) {
    makeFile(scratch_ / "x", "0123456789abcdefghij");
    makeFile(path_,
             "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:4@0\nx\n#EXTINF:1,\n#EXT-X-BYTERANGE:20@0\nx\n"
             "#EXTINF:1,\n#EXT-X-BYTERANGE:18@4\nx\n");
    const OwnedPlaylist list(path_);
    EXPECT_EQ(list.read(4).bytes, "0123");
    kvOSSeekM3U8(list.get(), 22);  // the second one holds it, so that the third is read, at 22 - 24 + 4
    const auto [result, bytes] = list.read(5);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "23456");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 27u);
}

TEST_F(PlaylistRead, TheAmountIsTheLengthLessTheOffsetInTheFile) {
    makeFile(scratch_ / "x", "0123456789");
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:6@2\nx\n");
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(6);
    EXPECT_EQ(result, 0u);  // there is no segment for the rest
    EXPECT_EQ(bytes, "2345");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 4u);
}

TEST_F(PlaylistRead, AnOffsetBeyondTheLengthTakesAllThatIsAskedFor) {
    makeFile(scratch_ / "x", "0123456789");
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:2@4\nx\n");
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(5);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "45678");
}

TEST_F(PlaylistRead, FilesOfTheirOwnWithoutRangesAreCutShortByTheirOffset) {
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\na\n#EXTINF:1,\nb\n");
    const OwnedPlaylist list(path_);
    EXPECT_EQ(list.read(15).bytes, "aaaaaaaaaabbbbb");
    kvOSSeekM3U8(list.get(), 10);
    EXPECT_EQ(list.read(5).bytes, "");
}

TEST_F(PlaylistRead, PastTheLastSegmentItGivesNothing) {
    const OwnedPlaylist list(path_);
    list.read(1);
    EXPECT_EQ(kvOSSeekM3U8(list.get(), 40), 40u);
    for (int i = 0; i < 3; ++i) {
        const auto [result, bytes] = list.read(1);
        EXPECT_EQ(result, 0u);
        EXPECT_EQ(bytes, "");
        EXPECT_EQ(kvOSTellM3U8(list.get()), 40u);
        EXPECT_EQ(list->pCurrent, list.segments()[3]) << "the last one seen";
    }
}

TEST_F(PlaylistRead, ASeekPastTheEndSucceedsAndTheNextReadWalksOffTheList) {
    for (const std::uint64_t position : {std::uint64_t{40}, std::uint64_t{1000000}, ~std::uint64_t{0}}) {
        for (const bool hasReadBefore : {false, true}) {
            const OwnedPlaylist list(path_);
            if (hasReadBefore) list.read(1);
            EXPECT_EQ(kvOSSeekM3U8(list.get(), position), position);
            EXPECT_EQ(kvOSTellM3U8(list.get()), position);
            const auto [result, bytes] = list.read(7);
            EXPECT_EQ(result, 0u);
            EXPECT_EQ(bytes, "");
            EXPECT_EQ(kvOSTellM3U8(list.get()), position);
            EXPECT_EQ(list->pCurrent, list.segments()[3]);
            EXPECT_EQ(list.segments()[3]->hFile, 0) << "nothing is opened for it";
        }
    }
}

TEST_F(PlaylistRead, AReadAcrossTheEndOfTheLastSegmentCountsItsBytesAndFails) {
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\na\n");
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(11);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(bytes, "aaaaaaaaaa");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 10u);
    EXPECT_EQ(list->pCurrent, list.segments()[0]) << "there is no next one to stand on";
    EXPECT_EQ(list.segments()[0]->hFile, -1);
}

TEST_F(PlaylistRead, ASegmentThatIsMissingEndsAReadInFrontOfItOrWithinIt) {
    std::filesystem::remove(scratch_ / "b");
    CapturedMessages messages;
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(15);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(bytes, "aaaaaaaaaa");
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
    EXPECT_EQ(list->pCurrent, list.segments()[1]);
    EXPECT_EQ(list.read(1).result, 0u);
}

TEST_F(PlaylistRead, ASegmentWithoutAPathEndsARead) {
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:9\n");
    const OwnedPlaylist list(path_);
    EXPECT_EQ(list.read(3).result, 0u);
}

TEST_F(PlaylistRead, APlaylistOfNothingGivesNothing) {
    makeFile(path_, "#EXTM3U\n");
    const OwnedPlaylist list(path_);
    EXPECT_EQ(list.read(3).result, 0u);
    EXPECT_EQ(list.read(0).result, 0u);
}

TEST_F(PlaylistRead, AFileThatIsShorterThanItsSegmentGivesWhatItHas) {
    makeFile(scratch_ / "a", "xyz");
    const OwnedPlaylist list(path_);
    const auto [result, bytes] = list.read(8);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(bytes, "xyz");
    EXPECT_EQ(kvOSTellM3U8(list.get()), 3u);
}

TEST_F(PlaylistRead, AnOffsetThatNoFileHasReadsOnFromWhereItsFileStands) {
    makeFile(scratch_ / "a", "0123456789");
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:9@0xFFFFFFFFFFFFFFF0\na\n");
    const OwnedPlaylist list(path_);
    for (const char* const expected : {"012", "345"}) {
        const auto [result, bytes] = list.read(3);
        EXPECT_EQ(result, 1u);
        EXPECT_EQ(bytes, expected);
    }
}

TEST_F(PlaylistRead, TheCountIsTheLowHalfOfTheArgument) {
    const OwnedPlaylist list(path_);
    char byte[2] = "?";
    std::uint32_t got = 0;
    EXPECT_EQ(kvOSReadM3U8(list.get(), byte, (std::uint64_t{1} << 32) + 1, &got), 1u);
    EXPECT_EQ(got, 1u);
    EXPECT_STREQ(byte, "a");
}

TEST_F(PlaylistRead, ASegmentTakenOffTheListLeavesNoneToStandOn) {
    const OwnedPlaylist list(path_);
    list.read(1);
    kvM3U8Segment* const first = list.segments()[0];
    d_ListRemove(&list->list, &first->node);
    EXPECT_EQ(list.read(2).bytes, "aa");  // it is still the one that holds the position
    EXPECT_EQ(list.read(15).result, 0u);
    EXPECT_EQ(list->pCurrent, nullptr);

    list->pCurrent = first;
    kvOSSeekM3U8(list.get(), 25);
    EXPECT_EQ(list.read(1).result, 0u);
    EXPECT_EQ(list->pCurrent, nullptr);
    OwnedPlaylist::release(&first->node);
}

TEST_F(PlaylistRead, NullIsRefused) {
    std::uint32_t got = 7;
    EXPECT_EQ(kvOSReadM3U8(nullptr, nullptr, 1, &got), 0u);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(kvOSFileSizeM3U8(nullptr), 0u);
    EXPECT_EQ(kvOSSeekM3U8(nullptr, 3), ~std::uint64_t{0});
    EXPECT_EQ(kvOSTellM3U8(nullptr), ~std::uint64_t{0});
    CapturedMessages messages;
    const OwnedPlaylist list(path_);
    EXPECT_EQ(kvOSReadM3U8(list.get(), nullptr, 1, nullptr), 0u);
    char byte = 0;
    EXPECT_EQ(kvOSReadM3U8(list.get(), &byte, 1, nullptr), 1u);
    EXPECT_EQ(byte, 'a');
}

}  // namespace
