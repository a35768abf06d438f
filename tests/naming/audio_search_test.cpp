// The search for sound beside a clip: random folders against a model of its order, and what it asks the system for.
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/media_names.h"
#include "naming/watched_files.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;
using Paths = std::vector<std::string>;

const Paths kSuffixes{"base",     "base.a1",  "base.a2",  "base.A1",  "base.A2", "basea1",  "basea2",  "base.aa",
                      "base.AA",  "base_1",   "base_2",   "base.r",   "base.l",  "base.R",  "base.L",  "base.A1234",
                      "base.A12", "base.A34", "base.A56", "base.A78", "audio12", "audio34", "audio56", "audio78"};

/// The search told as a story, over a set of names instead of a folder. `asked` keeps the names it looked for.
struct Model {
    std::set<std::string> there;
    Paths asked;
    bool baseIsFolder = false;

    bool has(const std::string& name) {
        asked.push_back(name + ".wav");
        return there.contains(name);
    }

    std::uint32_t search() {
        std::uint32_t mask = 0;
        if (has("base")) return 0x8;
        if (has("base.a1")) mask = 1;
        if (has("base.a2")) mask |= 2;
        if (has("base.A1")) mask = 1;
        if (has("base.A2")) mask |= 2;
        if (has("basea1")) mask = 0x01000000;
        const std::uint32_t pairs = mask;
        if (has("basea2")) mask |= 0x02000000;
        if ((pairs & 3) == 0) {
            if (has("base.aa")) return 4;
            if (has("base.AA")) return 4;
        }
        if (has("base_1")) {
            if (has("base_2")) mask = 0x30;
        }
        bool side = false;
        for (const char* name : {"base.r", "base.l", "base.R", "base.L"}) side = has(name) || side;
        if (side) mask = 0x10000000;
        if (has("base.A1234")) mask |= 0x180;
        if (has("base.A12")) mask |= 0xC0;
        if (has("base.A34")) mask |= 0x300;
        if (has("base.A56")) mask |= 0xC00;
        if (has("base.A78")) mask |= 0x3000;
        if (has("audio12")) {
            baseIsFolder = mask == 0;
            mask |= 0x30000;
        }
        if (has("audio34")) mask |= 0xC0000;
        if (has("audio56")) mask |= 0x300000;
        if (has("audio78")) mask |= 0xC00000;
        return mask;
    }
};

class AudioSearch : public ::testing::Test {
protected:
    ~AudioSearch() override { gvecNames.clear(); }

    std::uint32_t search() {
        askedFor().clear();
        return FindAudioForVideo((scratch_ / "base.mov").c_str(), ".wav", base_);
    }
    Paths inFolder(const Paths& names) const {
        Paths paths;
        for (const std::string& name : names) paths.push_back(scratch_ / name);
        return paths;
    }

    ScratchFolder scratch_;
    char base_[4096] = "";
};

TEST_F(AudioSearch, RandomFoldersGiveWhatTheOrderGivesWithNoQuestionMore) {
    std::random_device entropy;
    const auto seed = entropy();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 1000; ++round) {
        Model model;
        const auto one = 2 + random() % 12;  // from every second name to few
        for (const std::string& suffix : kSuffixes) {
            if (suffix == "base" ? random() % 20 == 0 : random() % one == 0) model.there.insert(suffix);
        }
        std::string folder;
        for (const std::string& name : model.there) {
            makeFile(scratch_ / (name + ".wav"));
            folder += name + " ";
        }
        SCOPED_TRACE(folder);
        const std::uint32_t expected = model.search();
        ASSERT_EQ(search(), expected);
        ASSERT_EQ(askedFor(), inFolder(model.asked));
        ASSERT_EQ(std::string(base_), model.baseIsFolder ? scratch_ / "" : scratch_ / "base");
        for (const std::string& name : model.there) std::filesystem::remove(scratch_ / (name + ".wav"));
    }
}

TEST_F(AudioSearch, NamesOnTheListAreNotAskedFor) {
    const std::string first = scratch_ / "base_1.wav";
    const std::string second = scratch_ / "base_2.wav";
    gvecNames = {first.c_str(), nullptr, second.c_str()};
    EXPECT_EQ(search(), 0x30u);
    Model model;
    model.there = {"base_1", "base_2"};
    model.search();
    std::erase_if(model.asked, [](const std::string& name) { return name.starts_with("base_"); });
    EXPECT_EQ(askedFor(), inFolder(model.asked));
}

TEST_F(AudioSearch, TheListIsComparedInItsOwnCaseAndWithTheExtension) {
    const std::string capitals = scratch_ / "BASE.wav";
    const std::string bare = scratch_ / "base";
    gvecNames = {capitals.c_str(), bare.c_str()};
    EXPECT_EQ(search(), 0u);
}

TEST_F(AudioSearch, ASingleFileEndsTheSearchAtOnce) {
    makeFile(scratch_ / "base.wav");
    EXPECT_EQ(search(), 8u);
    EXPECT_EQ(askedFor(), inFolder({"base.wav"}));
}

TEST_F(AudioSearch, TheSecondOfANumberedPairIsAskedForOnlyWithTheFirst) {
    makeFile(scratch_ / "base_2.wav");
    EXPECT_EQ(search(), 0u);
    for (const std::string& path : askedFor()) EXPECT_NE(path, scratch_ / "base_2.wav");
    EXPECT_EQ(askedFor().size(), 23u);
}

class ExtensionSearch : public AudioSearch {
protected:
    std::size_t askedForShorter(const char* file) {
        char path[4096], list[4096] = "";
        std::snprintf(path, sizeof path, "%s", (scratch_ / file).c_str());
        askedFor().clear();
        EXPECT_EQ(FindFileExtensions(path, list), 1u);
        std::size_t count = 0;
        for (const std::string& asked : askedFor()) count += asked == scratch_ / "clip.rtin" ? 1 : 0;
        return count;
    }
};

TEST_F(ExtensionSearch, OnlyTheShorterNameOfAnRtinFileIsAskedFor) {
    makeFile(scratch_ / "clipA.rtin");
    EXPECT_EQ(askedForShorter("clipA.rtin"), 1u);
    EXPECT_EQ(askedForShorter("clipA.mov"), 0u);
    EXPECT_EQ(askedForShorter("clipB.rtin"), 0u);
    const std::string shorter = scratch_ / "clip.rtin";
    gvecNames = {shorter.c_str()};
    EXPECT_EQ(askedForShorter("clipA.rtin"), 0u);
}

}  // namespace
