// kv audio.
#include <filesystem>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

/// What kv audio lists beside clip.mov in a working folder of these files, "convention=path" each.
std::vector<std::string> listed(const std::vector<const char*>& files) {
    for (const char* file : files) makeFile(file);
    std::vector<std::string> found;
    for (const auto& extension : runKv({"audio", "--json", "clip.mov"}).json()) {
        for (const auto& file : extension["files"]) {
            found.push_back(std::string(file["convention"]) + "=" + std::string(file["path"]));
        }
    }
    for (const char* file : files) std::filesystem::remove(file);
    return found;
}

using Files = std::vector<std::string>;

TEST(Audio, ShowsConventionsAndFiles) {
    for (const char* name : {"clip.mov", "clip_1.wav", "clip_2.wav"}) makeFile(name);
    const Outcome run = runKv({"audio", "clip.mov"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "CONVENTION     FILE\n"
              "pair (_1, _2)  ./clip_1.wav\n"
              "pair (_1, _2)  ./clip_2.wav\n");
}

TEST(Audio, JsonHoldsTheMaskOfEachExtension) {
    for (const char* name : {"clip.a1.wav", "clip.a2.wav", "clip.aif"}) makeFile(name);
    const auto all = runKv({"audio", "--json", "clip.mov"}).json();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["extension"], ".wav");
    EXPECT_EQ(all[0]["mask"], 3);
    EXPECT_EQ(all[0]["files"].size(), 2u);
    EXPECT_EQ(all[1]["extension"], ".aif");
    EXPECT_EQ(all[1]["mask"], 8);
    EXPECT_EQ(all[1]["files"][0]["path"], "./clip.aif");
}

TEST(Audio, EveryConventionIsNamed) {
    EXPECT_EQ(listed({"clip.wav", "clip.a1.wav"}), (Files{"single=./clip.wav"}));
    EXPECT_EQ(listed({"clip.a1.wav", "clip.A2.wav"}),
              (Files{"first of a pair (.a1)=./clip.a1.wav", "second of a pair (.a2)=./clip.A2.wav"}));
    EXPECT_EQ(listed({"clipa1.wav", "clipa2.wav"}),
              (Files{"first of a pair (a1)=./clipa1.wav", "second of a pair (a2)=./clipa2.wav"}));
    EXPECT_EQ(listed({"clip.aa.wav", "clip.AA.wav"}), (Files{"both of a pair (.aa)=./clip.aa.wav"}));
    EXPECT_EQ(listed({"clip.AA.wav"}), (Files{"both of a pair (.aa)=./clip.AA.wav"}));
    EXPECT_EQ(listed({"clip.L.wav", "clip.r.wav"}),
              (Files{"left and right (.l, .r)=./clip.r.wav", "left and right (.l, .r)=./clip.L.wav"}));
    EXPECT_EQ(listed({"audio34.wav", "audio78.wav"}),
              (Files{"channels 3 and 4 of the folder=./audio34.wav", "channels 7 and 8 of the folder=./audio78.wav"}));
    EXPECT_EQ(listed({"audio12.wav"}), (Files{"channels 1 and 2 of the folder=./audio12.wav"}));
}

TEST(Audio, ConventionsThatShareBitsAreToldByTheFiles) {
    EXPECT_EQ(listed({"clip.A1234.wav"}), (Files{"channels 1 to 4=./clip.A1234.wav"}));
    EXPECT_EQ(listed({"clip.A12.wav", "clip.A34.wav"}),
              (Files{"channels 1 and 2=./clip.A12.wav", "channels 3 and 4=./clip.A34.wav"}));
}

TEST(Audio, WhatAnotherConventionDropsIsNotListed) {
    EXPECT_EQ(listed({"clip.a1.wav", "clip.l.wav"}), (Files{"left and right (.l, .r)=./clip.l.wav"}));
}

TEST(Audio, OtherExtensionsAreLookedForWhenTold) {
    makeFile("clip.mp3");
    EXPECT_EQ(runKv({"audio", "clip.mov"}).exit, 1);
    EXPECT_EQ(runKv({"audio", "-e", ".mp3", "clip.mov"}).out, "CONVENTION  FILE\nsingle      ./clip.mp3\n");
    EXPECT_EQ(runKv({"audio", "-e", ".ogg", "-e", ".mp3", "--json", "clip"}).json().size(), 1u);
}

TEST(Audio, NothingBesideAClipIsTold) {
    const Outcome table = runKv({"audio", "/no/clip.mov"});
    EXPECT_EQ(table.exit, 1);
    EXPECT_EQ(table.out, "");
    EXPECT_EQ(table.err, "kv: no audio beside '/no/clip.mov'\n");
    const Outcome json = runKv({"audio", "--json", "clip.mov"});
    EXPECT_EQ(json.exit, 1);
    EXPECT_EQ(json.json(), nlohmann::json::array());
}

TEST(Audio, APathTooLongIsToldAsSuch) {
    const std::string clip = "/" + std::string(4096, 'x');
    EXPECT_EQ(runKv({"audio", clip}).err, "kv: cannot look beside '" + clip + "': File name too long\n");
}

}  // namespace
