// Sound beside a clip. The order of the search as a whole is in audio_search_test.cpp.
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/media_names.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

struct Found {
    std::uint32_t mask;
    std::string base;

    bool operator==(const Found&) const = default;
};

void PrintTo(const Found& found, std::ostream* out) { *out << std::hex << found.mask << " " << found.base; }

Found find(const std::string& video) {
    char base[4096] = "as it was";
    const std::uint32_t mask = FindAudioForVideo(video.c_str(), ".wav", base);
    EXPECT_EQ(FindAudioForVideo(video.c_str(), ".wav", nullptr), mask);
    return {mask, base};
}

/// What is found beside base.mov in a folder of these files, "/d" standing for the folder.
Found findAmong(const std::vector<std::string>& files, const char* video = "base.mov") {
    const ScratchFolder scratch;
    for (const std::string& file : files) makeFile(scratch / file);
    Found found = find(scratch / video);
    EXPECT_TRUE(found.base.starts_with(scratch.path()));
    found.base.replace(0, scratch.path().size(), "/d");
    return found;
}

TEST(AudioFiles, EachConventionIsToldByItsBits) {
    EXPECT_EQ(findAmong({}), (Found{0, "/d/base"}));
    EXPECT_EQ(findAmong({"base.wav"}), (Found{0x8, "/d/base"}));
    EXPECT_EQ(findAmong({"base.a1.wav", "base.a2.wav"}), (Found{0x3, "/d/base"}));
    EXPECT_EQ(findAmong({"base.a1.wav", "base.a2.wav", "base.A1.wav"}), (Found{0x1, "/d/base"}));
    EXPECT_EQ(findAmong({"base.a2.wav", "base.A2.wav"}), (Found{0x2, "/d/base"}));
    EXPECT_EQ(findAmong({"basea1.wav", "base.a2.wav"}), (Found{0x01000000, "/d/base"}));
    EXPECT_EQ(findAmong({"base.a2.wav", "basea2.wav"}), (Found{0x02000002, "/d/base"}));
    EXPECT_EQ(findAmong({"basea2.wav", "base.aa.wav"}), (Found{0x4, "/d/base"}));
    EXPECT_EQ(findAmong({"base.a1.wav", "base.aa.wav"}), (Found{0x1, "/d/base"}));
    EXPECT_EQ(findAmong({"base_1.wav"}), (Found{0, "/d/base"}));
    EXPECT_EQ(findAmong({"base_1.wav", "base_2.wav", "base.a1.wav"}), (Found{0x30, "/d/base"}));
    EXPECT_EQ(findAmong({"base.l.wav", "base.a1.wav"}), (Found{0x10000000, "/d/base"}));
    EXPECT_EQ(findAmong({"audio12.wav"}), (Found{0x30000, "/d/"}));
    EXPECT_EQ(findAmong({"audio12.wav", "base.a1.wav"}), (Found{0x30001, "/d/base"}));
    EXPECT_EQ(findAmong({"audio34.wav", "audio12.wav"}), (Found{0xF0000, "/d/"}));
}

TEST(AudioFiles, TheConventionsOfManyChannelsShareBits) {
    EXPECT_EQ(findAmong({"base.A1234.wav"}).mask, 0x180u);
    EXPECT_EQ(findAmong({"base.A12.wav"}).mask, 0xC0u);
    EXPECT_EQ(findAmong({"base.A34.wav"}).mask, 0x300u);
    EXPECT_EQ(findAmong({"base.A56.wav"}).mask, 0xC00u);
    EXPECT_EQ(findAmong({"base.A78.wav"}).mask, 0x3000u);
    EXPECT_EQ(findAmong({"base.A12.wav", "base.A34.wav", "base.A56.wav", "base.A78.wav"}).mask, 0x3FC0u);
    EXPECT_EQ(findAmong({"audio56.wav", "audio78.wav"}), (Found{0xF00000, "/d/base"}));
}

TEST(AudioFiles, BareNamesLetTheJointOnesBeLookedFor) {
    EXPECT_EQ(findAmong({"base.a1.wav", "basea1.wav", "base.aa.wav"}).mask, 0x4u);
    EXPECT_EQ(findAmong({"base.a1.wav", "basea1.wav", "base.AA.wav"}).mask, 0x4u);
    EXPECT_EQ(findAmong({"base.a1.wav", "basea1.wav"}).mask, 0x01000000u);
}

TEST(AudioFiles, OneOfANumberedPairIsNothing) {
    EXPECT_EQ(findAmong({"base_2.wav"}).mask, 0u);
    EXPECT_EQ(findAmong({"base_1.wav", "base.a1.wav"}).mask, 1u);
}

TEST(AudioFiles, AStarAtTheEndOfTheNameIsLeftOut) {
    EXPECT_EQ(findAmong({"base.wav"}, "base*.mov"), (Found{0x8, "/d/base"}));
    EXPECT_EQ(findAmong({"base*.wav"}, "base**.mov"), (Found{0x8, "/d/base*"}));
    EXPECT_EQ(findAmong({"base.wav"}, "ba*se.mov").mask, 0u);
}

TEST(AudioFiles, TheClipItselfNeedNotBeThereNorHaveAnExtension) {
    EXPECT_EQ(findAmong({"base.wav"}, "base"), (Found{0x8, "/d/base"}));
    EXPECT_EQ(findAmong({"base.v1.wav"}, "base.v1.mov"), (Found{0x8, "/d/base.v1"}));
}

TEST(AudioFiles, ABareNameIsItsOwnDirectory) {
    makeFile("base.wav");
    EXPECT_EQ(find("base.mov"), (Found{0, "base.mov/base"}));
    std::filesystem::create_directory("base.mov");
    makeFile("base.mov/base.wav");
    EXPECT_EQ(find("base.mov"), (Found{0x8, "base.mov/base"}));
    EXPECT_EQ(find("./base.mov"), (Found{0x8, "./base"}));
}

TEST(AudioFiles, ADirectoryWithoutANameIsLookedThroughAsWell) {
    const ScratchFolder scratch;
    makeFile(scratch / "audio12.wav");
    EXPECT_EQ(find(scratch.path() + "/"), (Found{0x30000, scratch.path() + "/"}));
}

TEST(AudioFiles, NamesOnTheListCountAsThere) {
    gvecNames = {"/none/base.a1.wav", "/none/audio34.wav"};
    EXPECT_EQ(find("/none/base.mov"), (Found{0xC0001, "/none/base"}));
    gvecNames.clear();
    EXPECT_EQ(find("/none/base.mov"), (Found{0, "/none/base"}));
}

TEST(AudioFiles, TheExtensionIsTakenAsItIs) {
    const ScratchFolder scratch;
    makeFile(scratch / "base.a1aif");
    EXPECT_EQ(FindAudioForVideo((scratch / "base.mov").c_str(), "aif", nullptr), 1u);
    EXPECT_EQ(FindAudioForVideo((scratch / "base.a1aif").c_str(), "", nullptr), 0u);
}

TEST(AudioFiles, WhatDoesNotFitIsNotThere) {
    const std::string longest = "/" + std::string(4090, 'x') + "/y";
    char base[4097];
    base[4096] = '#';
    EXPECT_EQ(FindAudioForVideo(longest.c_str(), ".wav", base), 0u);
    EXPECT_EQ(std::string(base), longest);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(FindAudioForVideo(("/" + std::string(4095, 'x')).c_str(), ".wav", base), 0u);
    EXPECT_STREQ(base, "");
    EXPECT_EQ(base[4096], '#');
}

TEST(AudioFiles, NullFindsNothing) {
    char base[4096] = "kept";
    EXPECT_EQ(FindAudioForVideo(nullptr, ".wav", base), 0u);
    EXPECT_EQ(FindAudioForVideo("/d/base.mov", nullptr, base), 0u);
    EXPECT_STREQ(base, "kept");
    EXPECT_EQ(FindAudioForVideo("", ".none", base), 0u);
}

}  // namespace
