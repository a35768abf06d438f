// kv m3u8.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(M3u8, ListsTheSegments) {
    makeFile("a.ts", std::string(100, 'a'));
    makeFile("b.ts", std::string(50, 'b'));
    makeFile("list.m3u8", "#EXTM3U\n#EXTINF:9.5,\na.ts\n#EXTINF:4,\nb.ts\n#EXTINF:1,\n#EXT-X-BYTERANGE:7@3\nb.ts\n");
    const Outcome run = runKv({"m3u8", "info", "list.m3u8"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              " START  SECONDS  BYTES  OFFSET  SEGMENT\n"
              " 0.000    9.500    100       0  ./a.ts\n"
              " 9.500    4.000     50       0  ./b.ts\n"
              "13.500    1.000      7       3  ./b.ts\n"
              "         14.500    157          all 3\n");
    const auto document = runKv({"m3u8", "info", "--json", "list.m3u8"}).json();
    EXPECT_EQ(document["bytes"], 157);
    EXPECT_EQ(document["seconds"], 14.5);
    ASSERT_EQ(document["segments"].size(), 3u);
    EXPECT_EQ(document["segments"][2]["offset"], 3);
    EXPECT_EQ(document["segments"][1]["path"], "./b.ts");
}

TEST(M3u8, WritesTheBytesOfFilesOfTheirOwn) {
    std::string whole;
    std::string list = "#EXTM3U\n";
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        const std::string content(static_cast<std::size_t>(letter), letter);
        makeFile(std::string(1, letter), content);
        whole += content;
        list += "#EXTINF:1,\n" + std::string(1, letter) + "\n";
    }
    makeFile("list.m3u8", list);
    const Outcome run = runKv({"m3u8", "cat", "list.m3u8"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, whole);
    EXPECT_EQ(run.err, "");
}

TEST(M3u8, WritesTheBytesOfRanges) {
    makeFile("x", "0123456789");
    makeFile("y", "abcdefghij");
    makeFile("list.m3u8",
             "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:3@1\nx\n#EXTINF:1,\n#EXT-X-BYTERANGE:2\nx\n"
             "#EXTINF:1,\n#EXT-X-BYTERANGE:2@0\ny\n#EXTINF:1,\n#EXT-X-BYTERANGE:2\ny\n#EXTINF:1,\nx\n");
    EXPECT_EQ(runKv({"m3u8", "cat", "list.m3u8"}).out, "12345abcd0123456789");
}

TEST(M3u8, AnOffsetThatIsStatedCountsAlsoWhereItIsThePlaceInTheWhole) {
    makeFile("x", "0123456789abcdefghij");
    makeFile("list.m3u8", "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:5@10\nx\n#EXTINF:1,\n#EXT-X-BYTERANGE:5@5\nx\n");
    Outcome run = runKv({"m3u8", "cat", "list.m3u8"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "abcde56789");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(runKv({"m3u8", "info", "--json", "list.m3u8"}).json()["segments"][1]["offset"], 5);
    // The same records of the library, and another file.
    makeFile("list.m3u8", "#EXTM3U\n#EXTINF:1,\n#EXT-X-BYTERANGE:5@10\nx\n#EXTINF:1,\n#EXT-X-BYTERANGE:5\nx\n");
    EXPECT_EQ(runKv({"m3u8", "cat", "list.m3u8"}).out, "abcdefghij");
    // A range that is told twice, lines between, other endings.
    makeFile("list.m3u8",
             "#EXTM3U\r\n#EXTINF:1,\r\n#EXT-X-BYTERANGE:5@10\r\nx\r\nstray\r\n#EXTINF:1,\r\n"
             "#EXT-X-BYTERANGE:9@5\r\n#EXT-X-BYTERANGE:5\r\n# comment\r\nx\r\n");
    EXPECT_EQ(runKv({"m3u8", "cat", "list.m3u8"}).out, "abcde56789");
}

TEST(M3u8, AListThatAFaultCutsOffIsNotTakenForTheWhole) {
    std::string list = "#EXTM3U\n";
    while (list.size() < (2u << 20)) list += "#EXTINF:1,\n#EXT-X-BYTERANGE:30@0\na.ts\n";
    for (const std::string_view served : {"bytes=0-", "none"}) {
        const ScriptedServer server([&](const Request& request) {
            const bool isServed = request.method == "HEAD" || request.header("Range").starts_with(served);
            return isServed ? answerWithRange(request, list) : Answer{.status = 500, .reason = "Fault"};
        });
        for (const char* const action : {"info", "cat"}) {
            expectFailure(runKv({"m3u8", action, server.url("/list.m3u8")}),
                          "kv: cannot read '" + server.url("/list.m3u8") + "': Input/output error\n");
        }
    }
}

TEST(M3u8, WritesASegmentOfAServerWhateverItTells) {
    const Nginx server;
    server.makeDocument("/hls/a.ts", everyByte());
    server.makeDocument("/hls/b.ts", "the end");
    server.makeDocument("/hls/list.m3u8", "#EXTM3U\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n");
    const Outcome run = runKv({"m3u8", "cat", server.url("/hls/list.m3u8")});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, everyByte() + "the end");
    EXPECT_EQ(run.err, "");
}

TEST(M3u8, ASegmentThatIsMissingIsTold) {
    makeFile("a.ts", "a");
    makeFile("list.m3u8", "#EXTM3U\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n");
    Outcome run = runKv({"m3u8", "cat", "list.m3u8"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "a");
    EXPECT_EQ(run.err, "kv: cannot open './b.ts': No such file or directory\n");
    makeFile("list.m3u8", "#EXTM3U\n#EXTINF:1,\n");
    run = runKv({"m3u8", "cat", "list.m3u8"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: 'list.m3u8' ends ahead of its last segment's name\n");
}

TEST(M3u8, WhatIsNoPlaylistOfSegmentsIsTold) {
    makeFile("clip", "not this");
    EXPECT_EQ(runKv({"m3u8", "info", "clip"}).err, "kv: 'clip' is no playlist\n");
    EXPECT_EQ(runKv({"m3u8", "cat", "none"}).err, "kv: cannot open 'none': No such file or directory\n");
    makeFile("master.m3u8", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\nlow.m3u8\n");
    EXPECT_EQ(runKv({"m3u8", "info", "master.m3u8"}).err, "kv: 'master.m3u8' lists no segments\n");
    EXPECT_EQ(runKv({"m3u8"}).exit, 2);
}

TEST(M3u8, WritesWhatAPackagerMade) {
    if (std::system("command -v ffmpeg > /dev/null 2>&1") != 0) GTEST_SKIP() << "no ffmpeg here";
    const std::string make =
        "ffmpeg -nostdin -loglevel error -f lavfi -i testsrc=size=64x48:rate=10 -t 3 -c:v mpeg2video -g 10 -f hls"
        " -hls_time 1 -hls_list_size 0 ";
    ASSERT_EQ(std::system((make + "-hls_segment_filename s%d.ts files.m3u8").c_str()), 0);
    EXPECT_TRUE(runKv({"m3u8", "cat", "files.m3u8"}).out ==
                contentOf("s0.ts") + contentOf("s1.ts") + contentOf("s2.ts"));
    ASSERT_EQ(std::system((make + "-hls_flags single_file one.m3u8").c_str()), 0);
    EXPECT_TRUE(runKv({"m3u8", "cat", "one.m3u8"}).out == contentOf("one.ts"));
}

}  // namespace
