// Playlists as a packager makes them, and over HTTP.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "file/owned_playlist.h"
#include "servers/nginx.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

std::string letters(char first, std::size_t size) {
    std::string text(size, first);
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(first + static_cast<int>(i % 7));
    return text;
}

TEST(PlaylistOverHttp, SegmentsLieBesideThePlaylist) {
    const Nginx server;
    server.makeDocument("/hls/a.ts", letters('a', 3000));
    server.makeDocument("/hls/b.ts", letters('A', 2000));
    server.makeDocument("/hls/list.m3u8", "#EXTM3U\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n");
    CapturedMessages messages;
    const OwnedPlaylist list(server.url("/hls/list.m3u8?token=a/b"));
    ASSERT_TRUE(list.isOpen());
    ASSERT_EQ(list.segments().size(), 2u);
    EXPECT_EQ(list.segments()[1]->szPath, server.url("/hls/b.ts"));
    EXPECT_EQ(kvOSFileSizeM3U8(list.get()), 5000u);
    EXPECT_EQ(list.read(4000).bytes, letters('a', 3000) + letters('A', 1000));
}

TEST(PlaylistOverHttp, RangesAreReadWhereTheyLie) {
    const Nginx server;
    const std::string content = letters('a', 3000);
    server.makeDocument("/hls/a.ts", content);
    server.makeDocument("/hls/list.m3u8", "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:2500@0x1F4\na.ts\n");
    CapturedMessages messages;
    const OwnedPlaylist list(server.url("/hls/list.m3u8"));
    kvOSSeekM3U8(list.get(), 200);
    EXPECT_EQ(list.read(300).bytes, content.substr(700, 300));
}

TEST(PlaylistOverHttp, WithoutLengthAndRangesItEndsWhereItsFirstRequestDoes) {
    const Nginx server;
    server.makeDocument("/chunked/a.ts", letters('a', 30));
    std::string text = "#EXTM3U\n";
    for (int i = 0; i < 400; ++i) text += "#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.ts\n";
    server.makeDocument("/list.m3u8", text);
    CapturedMessages messages;
    const OwnedPlaylist list(server.url("/chunked/list.m3u8"));
    ASSERT_TRUE(list.isOpen());
    EXPECT_GE(list.segments().size(), 200u);  // a look for a path takes 4095 bytes, which are to be there
    EXPECT_LT(list.segments().size(), 400u);
}

TEST(PlaylistOverHttp, AMissingSegmentHasNoSize) {
    const Nginx server;
    server.makeDocument("/list.m3u8", "#EXTM3U\n#EXTINF:1,\nnone.ts\n");
    CapturedMessages messages;
    const OwnedPlaylist list(server.url("/list.m3u8"));
    ASSERT_TRUE(list.isOpen());
    EXPECT_EQ(list.segments()[0]->dwLength, 0u);
    EXPECT_EQ(list.read(10).bytes, "");
    EXPECT_FALSE(OwnedPlaylist(server.url("/none.m3u8")).isOpen());
}

/// Three seconds of a test picture, cut into segments.
class PackagedPlaylist : public ::testing::Test {
protected:
    /// False where there is no packager.
    bool package(const std::string& options) const {
        if (std::system("command -v ffmpeg > /dev/null 2>&1") != 0) return false;
        const std::string command = "cd " + scratch_.path() +
                                    " && ffmpeg -nostdin -loglevel error -f lavfi -i testsrc=size=64x48:rate=10 -t 3"
                                    " -c:v mpeg2video -g 10 -f hls -hls_time 1 -hls_list_size 0 " +
                                    options + " list.m3u8";
        const int exit = std::system(command.c_str());
        EXPECT_EQ(exit, 0) << command;
        return exit == 0;
    }

    ScratchFolder scratch_;
};

TEST_F(PackagedPlaylist, IsTakenInWithTheSizesOfItsFiles) {
    if (!package("-hls_segment_filename s%03d.ts")) GTEST_SKIP() << "no ffmpeg here";
    const OwnedPlaylist list(scratch_ / "list.m3u8");
    ASSERT_TRUE(list.isOpen());
    const auto segments = list.segments();
    ASSERT_EQ(segments.size(), 3u);
    std::uint64_t total = 0;
    double time_s = 0;
    for (const auto* segment : segments) {
        EXPECT_EQ(segment->dwLength, std::filesystem::file_size(segment->szPath));
        EXPECT_EQ(segment->qwStart, total);
        EXPECT_EQ(segment->dStartTime, time_s);
        EXPECT_NEAR(segment->dDuration, 1, 0.2);
        total += segment->dwLength;
        time_s += segment->dDuration;
    }
    EXPECT_EQ(kvOSFileSizeM3U8(list.get()), total);
    const std::string first = contentOf(segments[0]->szPath);
    EXPECT_TRUE(list.read(first.size()).bytes == first);
}

TEST_F(PackagedPlaylist, OfOneFileIsTakenInWithItsRanges) {
    if (!package("-hls_flags single_file")) GTEST_SKIP() << "no ffmpeg here";
    const OwnedPlaylist list(scratch_ / "list.m3u8");
    ASSERT_TRUE(list.isOpen());
    const auto segments = list.segments();
    ASSERT_EQ(segments.size(), 3u);
    const std::string whole = contentOf(segments[0]->szPath);
    EXPECT_EQ(kvOSFileSizeM3U8(list.get()), whole.size());
    for (const auto* segment : segments) {
        EXPECT_STREQ(segment->szPath, segments[0]->szPath);
        EXPECT_EQ(segment->qwFileOffset, segment->qwStart);
    }
    EXPECT_TRUE(list.read(segments[0]->dwLength).bytes == whole.substr(0, segments[0]->dwLength));
}

}  // namespace
