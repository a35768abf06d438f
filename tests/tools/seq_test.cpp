// kv seq.
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

void makeNumbered(const char* format, int first, int last) {
    for (int i = first; i <= last; ++i) {
        char name[256];
        std::snprintf(name, sizeof name, format, i);
        makeFile(name);
    }
}

TEST(Seq, ShowsATableOfWhatIsThereAndWhatIsNot) {
    makeNumbered("clip%04d.tga", 1, 16);
    makeNumbered("clip%04d.tga", 18, 99);
    makeNumbered("clip%04d.tga", 102, 110);
    makeNumbered("take%d.wav", 9, 11);
    const Outcome run = runKv({"seq", "."});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "FIRST  LAST  COUNT  WIDTH  GAPS        NAME\n"
              "    1   110    107      4  17,100-101  clip????.tga\n"
              "    9    11      3      1  none        take?.wav\n");
}

TEST(Seq, JsonHoldsTheGapsAsRanges) {
    makeNumbered("clip%03d.dpx", 5, 6);
    makeFile("clip009.dpx");
    const auto all = runKv({"seq", "--json", "clip*"}).json();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["name"], "clip???.dpx");
    EXPECT_EQ(all[0]["first"], 5);
    EXPECT_EQ(all[0]["last"], 9);
    EXPECT_EQ(all[0]["count"], 3);
    EXPECT_EQ(all[0]["width"], 3);
    EXPECT_EQ(all[0]["gaps"], (nlohmann::json::array({{{"first", 7}, {"last", 8}}})));
}

TEST(Seq, AMemberStandsForItsSequence) {
    makeNumbered("clip%04d.tga", 1, 3);
    makeNumbered("clip%04d.wav", 7, 8);
    makeNumbered("clip2_%04d.tga", 20, 21);
    for (const char* member : {"clip0002.tga", "clip9999.tga", "./clip1.tga"}) {
        const auto all = runKv({"seq", "--json", member}).json();
        ASSERT_EQ(all.size(), 1u) << member;
        EXPECT_EQ(all[0]["name"], "clip????.tga");
        EXPECT_EQ(all[0]["count"], 3);
    }
}

TEST(Seq, NumbersThatOutgrowTheirWidthStayInTheSequence) {
    makeNumbered("clip%02d.tga", 98, 101);
    const auto all = runKv({"seq", "--json", "."}).json();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["count"], 4);
    EXPECT_EQ(all[0]["width"], 2);
    EXPECT_EQ(all[0]["gaps"], nlohmann::json::array());
}

TEST(Seq, NamesOfAnyFormAreRead) {
    makeNumbered("a%03d.tga", 7, 8);      // behind a single letter
    makeNumbered("%03d.png", 4, 5);       // nothing else
    makeNumbered("shot.%04d.exr", 1, 2);  // behind a dot
    makeNumbered("[b]\\c %02d", 1, 2);    // no extension
    makeNumbered(".hidden%02d.tga", 1, 2);
    const auto all = runKv({"seq", "--json", "."}).json();
    std::string names;
    for (const auto& sequence : all) {
        names += std::string(sequence["name"]) + ":" + sequence["first"].dump() + "+" + sequence["count"].dump() + " ";
    }
    EXPECT_EQ(names, ".hidden??.tga:1+2 ???.png:4+2 [b]\\c ??:1+2 a???.tga:7+2 shot.????.exr:1+2 ");
    EXPECT_EQ(runKv({"seq", "--json", "[b]\\c 01"}).json()[0]["count"], 2);
}

TEST(Seq, FoldersAndNamesWithoutANumberDoNotCount) {
    makeFile("clip.mov");
    std::filesystem::create_directory("clip01.mov");
    const Outcome run = runKv({"seq", "."});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot find a sequence in '.': no file there has a number at the end of its name\n");
}

TEST(Seq, NothingFoundIsTold) {
    const Outcome run = runKv({"seq", "--json", "/no/clip*"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json(), nlohmann::json::array());
    EXPECT_EQ(run.err, "kv: cannot find a sequence in '/no/clip*': nothing found\n");
    EXPECT_EQ(runKv({"seq", "http://host.invalid/clip*"}).err,
              "kv: cannot find a sequence in 'http://host.invalid/clip*': a URL has no listing\n");
}

TEST(Seq, APatternTooLongIsToldAsSuch) {
    const std::string pattern = "./" + std::string(4096, 'x');
    EXPECT_EQ(runKv({"seq", pattern}).err, "kv: cannot find a sequence in '" + pattern + "': File name too long\n");
}

}  // namespace
