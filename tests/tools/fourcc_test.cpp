// kv fourcc.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tools/run_kv.h"

namespace {

using namespace kvtest;

std::ptrdiff_t linesOf(std::string_view text) { return std::ranges::count(text, '\n'); }

TEST(Fourcc, TellsWhatIsKnownOfACode) {
    const Outcome run = runKv({"fourcc", "MJPG"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "code   'MJPG'\n"
              "value  0x47504A4D\n"
              "kind   video\n"
              "flags  0x08408000 fccFlagVideo fccFlagYUV fccFlagJpeg\n"
              "holds  fccIsSupported\n"
              "       fccIsVideo\n"
              "       fccIsYUV\n"
              "       fccIsJpeg\n"
              "       fccIsPCMAudio\n"
              "       fccPrefersYCrCb\n"
              "       fccCodecIsBuiltIn\n");
}

TEST(Fourcc, TakesTextAndHexadecimalAlike) {
    const std::string known = runKv({"fourcc", "MJPG"}).out;
    EXPECT_EQ(runKv({"fourcc", "0x47504A4D"}).out, known);
    EXPECT_EQ(runKv({"fourcc", "0X47504a4d"}).out, known);
    EXPECT_EQ(runKv({"fourcc", "--json", "DIB "}).json()["value"], 0x20424944);
    EXPECT_EQ(runKv({"fourcc", "--json", " war"}).json()["value"], 0x72617720);
    EXPECT_EQ(runKv({"fourcc", "--json", "0x55"}).json()["value"], 0x55);
    EXPECT_EQ(runKv({"fourcc", "--json", "[a,b"}).json()["code"], "[a,b");
}

TEST(Fourcc, TellsTheKind) {
    EXPECT_EQ(runKv({"fourcc", "--json", "twos"}).json()["kind"], "audio");
    EXPECT_EQ(runKv({"fourcc", "--json", "dcmt"}).json()["kind"], "information");
    EXPECT_EQ(runKv({"fourcc", "--json", "zzzz"}).json()["kind"], "unknown");
    EXPECT_NE(runKv({"fourcc", "0x1"}).out.find("\nkind   video, also audio\n"), std::string::npos);
    EXPECT_NE(runKv({"fourcc", "dcmt"}).out.find("\nflags  0x0C000000 fccFlagVideo fccFlagAudio\n"), std::string::npos);
}

TEST(Fourcc, ACodeOfTheRangeHasNoCharactersAndARule) {
    const auto document = runKv({"fourcc", "--json", "0x8800001F"}).json();
    EXPECT_EQ(document["code"], nullptr);
    EXPECT_EQ(document["kind"], "video");
    const std::vector<std::string> holds = document["holds"];
    EXPECT_NE(std::ranges::find(holds, "fccIsAvidJfif"), holds.end());
    EXPECT_NE(runKv({"fourcc", "0x8800001F"}).out.find("code   -\n"), std::string::npos);
}

TEST(Fourcc, TellsTheLargestFrame) {
    const Outcome run = runKv({"fourcc", "dvhd", "--size", "1280x720", "--rate", "50"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_NE(run.out.find("\nframe  288000 bytes at 1280x720, 24 bits, rate 50\n"), std::string::npos) << run.out;
    const auto frame =
        runKv({"fourcc", "--json", "DHFC", "--size", "100x10", "--bits", "48", "--rate", "30"}).json()["frame"];
    EXPECT_EQ(frame["bytes"], 12000);
    EXPECT_EQ(frame["width"], 100);
    EXPECT_EQ(frame["height"], 10);
    EXPECT_EQ(frame["bits"], 48);
    EXPECT_EQ(frame["rate"], 30);
    EXPECT_FALSE(runKv({"fourcc", "--json", "DHFC"}).json().contains("frame"));
}

TEST(Fourcc, ListsEveryCodeAndTheRange) {
    const Outcome run = runKv({"fourcc", "--list"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(linesOf(run.out), 1 + 680 + 7);
    EXPECT_NE(run.out.find("\n'DIB '  0x20424944  "), std::string::npos);
    EXPECT_NE(run.out.find("\n-       0x88100025-0xFFFFFFFF  video"), std::string::npos);
    const auto list = runKv({"fourcc", "--list", "--json"}).json();
    EXPECT_EQ(list.size(), 687u);
    EXPECT_EQ(list.back()["value"], 0x88100025);
    EXPECT_EQ(list.back()["last"], 0xFFFFFFFF);
}

TEST(Fourcc, ListsTheCodesForWhichAPredicateHolds) {
    const Outcome run = runKv({"fourcc", "--list", "--is", "fccIsDPX"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(linesOf(run.out), 1 + 10);
    EXPECT_EQ(runKv({"fourcc", "--list", "--is", "dpx"}).out, run.out);
    EXPECT_EQ(runKv({"fourcc", "--list", "--is", "fccisdpx"}).out, run.out);
    EXPECT_EQ(linesOf(runKv({"fourcc", "--list", "--is", "JpegXS"}).out), 1 + 9);
    EXPECT_EQ(linesOf(runKv({"fourcc", "--list", "--is", "JPEGXS"}).out), 1 + 6);
    EXPECT_EQ(linesOf(runKv({"fourcc", "--list", "--is", "halffloat"}).out), 1 + 6);
    EXPECT_EQ(linesOf(runKv({"fourcc", "--list", "--is", "IsHalfFloat"}).out), 1 + 6);
    EXPECT_EQ(runKv({"fourcc", "--list", "--is", "fccIsPCMAudio", "--json"}).json().size(), 683u);
    EXPECT_EQ(runKv({"fourcc", "--list", "--is", "fccPrefersYCrCb", "--json"}).json().size(), 271u + 5u);
    EXPECT_EQ(runKv({"fourcc", "--list", "--is", "fccIsSupported", "--json"}).json().size(), 349u + 7u);
}

TEST(Fourcc, WhatIsNoCodeNoSizeOrNoPredicateIsWrongUsage) {
    const auto complaintOf = [](const std::vector<std::string>& arguments) {
        const Outcome run = runKv(arguments);
        EXPECT_EQ(run.exit, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(run.out, "");
        return run.err;
    };
    for (const char* code : {"MJP", "MJPGX", "", "0x", "0x123456789", "0xMJ", "0x-1"}) {
        EXPECT_EQ(complaintOf({"fourcc", code}),
                  "kv: '" + std::string(code) + "' is no code: four characters, or 0x and up to eight digits\n");
    }
    for (const char* size : {"1280", "x720", "1280x", "-1x1", "1x1x1", "1280 x 720", "4294967296x1"}) {
        EXPECT_EQ(complaintOf({"fourcc", "MJPG", "--size", size}),
                  "kv: '" + std::string(size) + "' is no size: width and height in pixels, as in 1920x1080\n");
    }
    EXPECT_EQ(complaintOf({"fourcc", "--list", "--is", "nothing"}),
              "kv: 'nothing' is no predicate (see kv fourcc --help)\n");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"fourcc"},
                                               {"fourcc", "MJPG", "--list"},
                                               {"fourcc", "MJPG", "--is", "dpx"},
                                               {"fourcc", "MJPG", "--bits", "24"},
                                               {"fourcc", "--list", "--size", "1x1"}}) {
        EXPECT_NE(complaintOf(arguments).find("(see kv fourcc --help)\n"), std::string::npos);
    }
}

TEST(Fourcc, HelpNamesEveryPredicate) {
    const Outcome run = runKv({"fourcc", "--help"});
    EXPECT_EQ(run.exit, 0);
    for (const char* name : {"fccIsSupported", "IsHalfFloat", "fccPrefersv210", "fccCanDecodeTo16", "fccIsJPEGXS"}) {
        EXPECT_NE(run.out.find(name), std::string::npos) << name;
    }
}

}  // namespace
