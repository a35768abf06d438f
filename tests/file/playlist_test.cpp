// Playlists: opening, closing and the grammar. All segments are local here.
#include "kvos/playlist.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "file/owned_playlist.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Playlist : public ::testing::Test {
protected:
    /// Opens a playlist of this text.
    OwnedPlaylist open(const std::string& text) const {
        makeFile(path_, text);
        return OwnedPlaylist(path_);
    }
    /// Its bytes are the letter.
    void makeSegment(const std::string& name, std::size_t size, char letter = 's') const {
        makeFile(scratch_ / name, std::string(size, letter));
    }

    ScratchFolder scratch_;
    std::string path_ = scratch_ / "list.m3u8";
};

TEST_F(Playlist, TakesInSegmentsInTheirOrder) {
    makeSegment("a.ts", 100);
    makeSegment("b.ts", 50);
    const OwnedPlaylist list = open("#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:9.5,first\na.ts\n#EXTINF:4,\nb.ts\n");
    ASSERT_TRUE(list.isOpen());
    const auto segments = list.segments();
    ASSERT_EQ(segments.size(), 2u);
    EXPECT_STREQ(segments[0]->szPath, (scratch_ / "a.ts").c_str());
    EXPECT_EQ(segments[0]->dDuration, 9.5);
    EXPECT_EQ(segments[0]->dStartTime, 0);
    EXPECT_EQ(segments[0]->dwLength, 100u);
    EXPECT_EQ(segments[0]->qwStart, 0u);
    EXPECT_EQ(segments[0]->hFile, 0);
    EXPECT_STREQ(segments[1]->szPath, (scratch_ / "b.ts").c_str());
    EXPECT_EQ(segments[1]->dDuration, 4);
    EXPECT_EQ(segments[1]->dStartTime, 9.5);
    EXPECT_EQ(segments[1]->dwLength, 50u);
    EXPECT_EQ(segments[1]->qwStart, 100u);
    EXPECT_EQ(list->qwTotal, 150u);
    EXPECT_EQ(kvOSFileSizeM3U8(list.get()), 150u);
    EXPECT_EQ(list->pCurrent, nullptr);
    EXPECT_EQ(kvOSTellM3U8(list.get()), 0u);
    EXPECT_EQ(d_ListCount(&list->list), 2u);
}

TEST_F(Playlist, TheFileOffsetIsThePlaceInTheWholeAlsoForFilesOfTheirOwn) {
    makeSegment("a.ts", 100);
    makeSegment("b.ts", 50);
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n");
    EXPECT_EQ(list.segments()[0]->qwFileOffset, 0u);
    EXPECT_EQ(list.segments()[1]->qwFileOffset, 100u);
}

TEST_F(Playlist, LinesEndInLineFeedCarriageReturnOrBoth) {
    for (const std::string end : {"\n", "\r", "\r\n"}) {
        makeSegment("a.ts", 7);
        makeSegment("b.ts", 8);
        const OwnedPlaylist list =
            open("#EXTM3U" + end + "#EXTINF:1," + end + "a.ts" + end + "#EXTINF:2," + end + "b.ts" + end);
        ASSERT_EQ(list.segments().size(), 2u);
        EXPECT_EQ(list->qwTotal, 15u);
    }
}

TEST_F(Playlist, ALastLineWithoutAnEndingCounts) {
    makeSegment("a.ts", 7);
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:1,\na.ts");
    EXPECT_EQ(list->qwTotal, 7u);
}

TEST_F(Playlist, OnlyTheFirstSevenCharactersOfTheFirstLineCount) {
    makeSegment("a.ts", 7);
    EXPECT_EQ(open("#EXTM3U8\n#EXTINF:1,\na.ts\n")->qwTotal, 7u);
    EXPECT_EQ(open("#EXTM3U and far more than a first look takes in\n#EXTINF:1,\na.ts\n")->qwTotal, 7u);
}

TEST_F(Playlist, TheFirstLineIsLookedAtInNineBytes) {
    makeSegment("a.ts", 7);
    EXPECT_EQ(open("#EXTM3Uxx#EXTINF:1,\na.ts\n")->qwTotal, 7u) << "what stands behind them is a line of its own";
    EXPECT_EQ(open("#EXTM3Ux#EXTINF:1,\na.ts\n")->qwTotal, 0u);
    EXPECT_EQ(open("#EXTM3Uxxx#EXTINF:1,\na.ts\n")->qwTotal, 0u);
}

TEST_F(Playlist, WhatIsBeyondNinetyNineBytesOfASegmentsTagIsItsPath) {
    const std::string tag = "#EXTINF:3,";
    CapturedMessages messages;
    const OwnedPlaylist list = open("#EXTM3U\n" + tag + std::string(89, 't') + "rest of it\na.ts\n");
    ASSERT_EQ(list.segments().size(), 1u);
    EXPECT_EQ(list.segments()[0]->dDuration, 3);
    EXPECT_EQ(list.segments()[0]->szPath, scratch_ / "rest of it");
}

TEST_F(Playlist, ALineWhoseEndIsCutOffByItsPieceLeavesAnEmptyPathBehind) {
    const std::string tag = "#EXTINF:3,";
    makeSegment("a.ts", 7);
    CapturedMessages messages;
    EXPECT_EQ(open("#EXTM3U\r\n" + tag + std::string(88, 't') + "\r\na.ts\r\n").segments()[0]->szPath,
              scratch_.path() + "/");
    EXPECT_EQ(open("#EXTM3U\r\n" + tag + std::string(87, 't') + "\r\na.ts\r\n")->qwTotal, 7u);
}

TEST_F(Playlist, ALoneLineFeedAheadOfACarriageReturnCostsTheNextLineAByte) {
    makeSegment("a.ts", 7);
    EXPECT_TRUE(open("#EXTM3U\r\n\n#EXTINF:3,\r\na.ts\r\n").segments().empty());
    EXPECT_EQ(open("#EXTM3U\r\n\r\n#EXTINF:3,\r\na.ts\r\n")->qwTotal, 7u);
}

TEST_F(Playlist, TellsByTheLastErrorWhetherAFaultCutItOff) {
    makeSegment("a.ts", 7);
    errno = EBADF;
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\na.ts\n#EXTINF:1,\na.ts").segments().size(), 2u);
    EXPECT_EQ(errno, 0);
    errno = EBADF;
    EXPECT_FALSE(open("no playlist").isOpen());
    EXPECT_EQ(errno, 0);
    CapturedMessages messages;
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\nmissing.ts\n").segments().size(), 1u);
    EXPECT_EQ(errno, 0) << "a segment that is missing is no fault of the playlist's";
    const OwnedPlaylist folder(scratch_.path());
    EXPECT_EQ(errno, EISDIR);
    EXPECT_TRUE(folder.isOpen());
}

TEST_F(Playlist, AnyOtherFirstLineIsNone) {
    for (const char* text :
         {"#EXTM3", "#extm3u\n", "\n#EXTM3U\n", " #EXTM3U\n", "\xEF\xBB\xBF#EXTM3U\n", "#EXT\nM3U"}) {
        EXPECT_FALSE(open(text).isOpen()) << text;
    }
}

TEST_F(Playlist, AFileWithoutAFirstLineIsAPlaylistOfNothing) {
    const OwnedPlaylist empty = open("");
    ASSERT_TRUE(empty.isOpen());
    EXPECT_TRUE(empty.segments().empty());
    EXPECT_EQ(empty->qwTotal, 0u);
    CapturedMessages messages;
    EXPECT_TRUE(OwnedPlaylist(scratch_.path()).isOpen());
    EXPECT_TRUE(OwnedPlaylist("mem://list").isOpen());
}

TEST_F(Playlist, AFileThatCanNotBeOpenedGivesNull) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSOpenM3U8((scratch_ / "none").c_str()), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
    EXPECT_EQ(kvOSOpenM3U8(nullptr), nullptr);
    EXPECT_EQ(kvOSOpenM3U8(""), nullptr);
    EXPECT_EQ(kvOSOpenM3U8(std::string(5000, 'x').c_str()), nullptr);
}

TEST_F(Playlist, APlaylistOfPlaylistsIsEmpty) {
    const OwnedPlaylist list = open("#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\nlow.m3u8\n");
    ASSERT_TRUE(list.isOpen());
    EXPECT_TRUE(list.segments().empty());
}

TEST_F(Playlist, AllOtherLinesArePassedOver) {
    makeSegment("a.ts", 7);
    const OwnedPlaylist list = open(
        "#EXTM3U\nstray.ts\n#EXT-X-KEY:METHOD=NONE\n#EXTINF:1,\n#EXT-X-DISCONTINUITY\n# comment\na.ts\nb.ts\n"
        "#EXT-X-ENDLIST\n#EXTINF:1,\na.ts\n");
    EXPECT_EQ(list.segments().size(), 2u);
    EXPECT_EQ(list->qwTotal, 14u);
}

TEST_F(Playlist, TwoByteRangesOfOneFile) {
    makeSegment("a.ts", 2000);
    const OwnedPlaylist list =
        open("#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:1000@0\na.ts\n#EXTINF:1,\n#EXT-X-BYTERANGE:1000@1000\na.ts\n");
    EXPECT_EQ(kvOSFileSizeM3U8(list.get()), 2000u);
    EXPECT_EQ(list.segments()[1]->qwFileOffset, 1000u);
}

TEST_F(Playlist, ARangeWithoutAnOffsetGoesOnAtTheTotal) {
    const OwnedPlaylist list =
        open("#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:10\na.ts\n#EXTINF:1,\n#EXT-X-BYTERANGE:20\na.ts\n");
    EXPECT_EQ(list.segments()[1]->qwFileOffset, 10u);
    EXPECT_EQ(list.segments()[1]->dwLength, 20u);
}

TEST_F(Playlist, NumbersOfARangeAreHexadecimalAndOctalAsWell) {
    const OwnedPlaylist list = open(
        "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:0x3E8@0x10\na.ts\n#EXTINF:1,\n"
        "#EXT-X-BYTERANGE:010@020\na.ts\n");
    EXPECT_EQ(list.segments()[0]->dwLength, 1000u);
    EXPECT_EQ(list.segments()[0]->qwFileOffset, 16u);
    EXPECT_EQ(list.segments()[1]->dwLength, 8u);
    EXPECT_EQ(list.segments()[1]->qwFileOffset, 16u);
}

TEST_F(Playlist, ALengthOfNothingIsTheFilesOwn) {
    makeSegment("a.ts", 70);
    for (const char* range : {"0", "", "@5", "none", "4294967296", "18446744073709551616", "-1"}) {
        const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:" + std::string(range) + "\na.ts\n");
        EXPECT_EQ(list->qwTotal, 70u) << range;
    }
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE\na.ts\n")->qwTotal, 70u);
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:4294967295\na.ts\n")->qwTotal, 4294967295u);
}

TEST_F(Playlist, ASizeOfFourGibibytesIsNone) {
    makeSegment("a.ts", 1);
    std::filesystem::resize_file(scratch_ / "a.ts", (std::uintmax_t{1} << 32) + 5);
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\na.ts\n")->qwTotal, 0u);
    std::filesystem::resize_file(scratch_ / "a.ts", (std::uintmax_t{1} << 32) - 1);
    EXPECT_EQ(open("#EXTM3U\n#EXTINF:1,\na.ts\n")->qwTotal, 4294967295u);
}

TEST_F(Playlist, ASegmentWithoutASizeAddsNothing) {
    makeSegment("a.ts", 7);
    CapturedMessages messages;
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:5,\nnone.ts\n#EXTINF:1,\na.ts\n");
    EXPECT_EQ(list.segments()[0]->dwLength, 0u);
    EXPECT_EQ(list.segments()[1]->qwStart, 0u);
    EXPECT_EQ(list.segments()[1]->dStartTime, 5);
    EXPECT_EQ(list->qwTotal, 7u);
    EXPECT_EQ(messages.count("kvOSCreateFile(" + (scratch_ / "none.ts")), 1u);
}

TEST_F(Playlist, ASegmentWithoutAPathIsOneAllTheSame) {
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:5,\n#EXT-X-BYTERANGE:40@3\n");
    const auto segments = list.segments();
    ASSERT_EQ(segments.size(), 1u);
    EXPECT_EQ(segments[0]->szPath, nullptr);
    EXPECT_EQ(segments[0]->dDuration, 5);
    EXPECT_EQ(segments[0]->dwLength, 40u);
    EXPECT_EQ(segments[0]->qwFileOffset, 3u);
    EXPECT_EQ(list->qwTotal, 40u);
    EXPECT_EQ(open("#EXTM3U\n#EXTINF").segments().size(), 1u);
}

TEST_F(Playlist, AnEmptyLineIsAPath) {
    CapturedMessages messages;
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:5,\n\na.ts\n");
    ASSERT_EQ(list.segments().size(), 1u);
    EXPECT_EQ(list.segments()[0]->szPath, scratch_.path() + "/");
}

TEST_F(Playlist, WholePathsAndUrlsGoBehindTheFolderAsWell) {
    CapturedMessages messages;
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:1,\n/a.ts\n#EXTINF:1,\nhttp://host.invalid/b.ts\n");
    EXPECT_EQ(list.segments()[0]->szPath, scratch_.path() + "//a.ts");
    EXPECT_EQ(list.segments()[1]->szPath, scratch_.path() + "/http://host.invalid/b.ts");
}

TEST_F(Playlist, TheFolderOfABareNameIsTheName) {
    makeFile("bare.m3u8", "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:9\na.ts\n");
    const OwnedPlaylist bare("bare.m3u8");
    EXPECT_STREQ(bare.segments()[0]->szPath, "bare.m3u8/a.ts");
    const OwnedPlaylist withFolder("./bare.m3u8");
    EXPECT_STREQ(withFolder.segments()[0]->szPath, "./a.ts");
}

TEST_F(Playlist, ADurationThatIsNoNumberIsNone) {
    makeSegment("a.ts", 7);
    for (const char* tag : {"#EXTINF", "#EXTINF:", "#EXTINF:x", "#EXTINFO"}) {
        EXPECT_EQ(open("#EXTM3U\n" + std::string(tag) + "\na.ts\n").segments()[0]->dDuration, 0) << tag;
    }
}

TEST_F(Playlist, AZeroByteOutsideALineEndsThePlaylist) {
    makeSegment("a.ts", 7);
    const std::string head = "#EXTM3U\n#EXTINF:1,\na.ts\n";
    EXPECT_EQ(open(head + std::string(5000, '\0')).segments().size(), 1u);
    EXPECT_EQ(open(std::string(50, '\0')).segments().size(), 0u);
    EXPECT_EQ(open(head + "#EXTINF:1,\n" + std::string(5000, '\0')).segments().back()->szPath, nullptr);
}

TEST_F(Playlist, LongLinesAreTakenInPieces) {
    makeSegment("a.ts", 7);
    // 99 bytes of another line, and what follows in it looks like a line that begins with the tag.
    const OwnedPlaylist pieces = open("#EXTM3U\n" + std::string(99, 'x') + "#EXTINF:3,\na.ts\n");
    EXPECT_EQ(pieces.segments().size(), 1u);

    CapturedMessages messages;
    const OwnedPlaylist list = open("#EXTM3U\n#EXTINF:1,\n" + std::string(100000, 'p') + "\n#EXTINF:1,\na.ts\n");
    ASSERT_EQ(list.segments().size(), 2u);
    EXPECT_EQ(list.segments()[0]->szPath, scratch_.path() + "/" + std::string(4095, 'p'));
    EXPECT_EQ(list.segments()[0]->dwLength, 0u);  // too long for a path, and not another file
    EXPECT_EQ(list->qwTotal, 7u);
    EXPECT_GE(messages.count("kvOSCreateFile("), 1u);

    EXPECT_TRUE(open("#EXTM3U" + std::string(1000000, '#')).segments().empty());
}

TEST_F(Playlist, CutAtEveryByteItOpensOrIsRefused) {
    makeSegment("a.ts", 7);
    const std::string whole =
        "#EXTM3U\r\n#EXTINF:9.009,t\r\n#EXT-X-BYTERANGE:0x10@0x20\r\na.ts\r\n#EXTINF:3\r\na.ts\r\n";
    CapturedMessages messages;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const OwnedPlaylist list = open(whole.substr(0, size));
        EXPECT_EQ(list.isOpen(), size == 0 || size >= 7) << size;
        if (!list.isOpen()) continue;
        std::uint64_t total = 0;
        for (const auto* segment : list.segments()) total += segment->dwLength;
        EXPECT_EQ(list->qwTotal, total) << size;
        list.read(100);
    }
}

TEST_F(Playlist, AnyBytesAreTakenWithoutHarm) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string_view words[] = {"#EXTINF",
                                      ":",
                                      "#EXT-X-BYTERANGE:",
                                      "@",
                                      "\n",
                                      "\r",
                                      "a.ts",
                                      "9",
                                      "0x",
                                      "-",
                                      "\xFF",
                                      std::string_view("\0", 1),
                                      "#",
                                      "18446744073709551615",
                                      "#EXTM3U"};
    makeSegment("a.ts", 7);
    CapturedMessages messages;
    for (int round = 0; round < 300; ++round) {
        std::string text = "#EXTM3U\n";
        for (int i = 0; i < 60; ++i) text += words[random() % std::size(words)];
        const OwnedPlaylist list = open(text);
        if (!list.isOpen()) continue;
        for (int i = 0; i < 4; ++i) {
            list.read(random() % 50);
            kvOSSeekM3U8(list.get(), random() % 40);
        }
    }
}

TEST_F(Playlist, TheCloseLeavesTheSegments) {
    makeSegment("a.ts", 7);
    makeFile(path_, "#EXTM3U\n#EXTINF:1,\na.ts\n");
    kvM3U8List* const list = kvOSOpenM3U8(path_.c_str());
    ASSERT_NE(list, nullptr);
    auto* const segment = reinterpret_cast<kvM3U8Segment*>(d_ListHead(&list->list));
    char byte;
    EXPECT_EQ(kvOSReadM3U8(list, &byte, 1, nullptr), 1u);
    EXPECT_EQ(kvOSCloseM3U8(list), 0u);
    EXPECT_STREQ(segment->szPath, (scratch_ / "a.ts").c_str());
    EXPECT_EQ(kvOSReadFile(segment->hFile, &byte, 1, nullptr, nullptr), 1u);
    OwnedPlaylist::release(&segment->node);
    EXPECT_EQ(kvOSCloseM3U8(nullptr), 0u);
}

}  // namespace
