// The extensions of a clip's files, and the one that stands for it.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/media_names.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

/// A path or a list in the buffer that the calls want.
struct Buffer {
    char text[4096];

    explicit Buffer(const std::string& content) { std::snprintf(text, sizeof text, "%s", content.c_str()); }
    operator char*() { return text; }
};

class ClipExtensions : public ::testing::Test {
protected:
    void make(const std::vector<const char*>& names) const {
        for (const char* name : names) makeFile(scratch_ / name);
    }
    std::string extensions(const char* name) {
        Buffer path(scratch_ / name);
        Buffer list("");
        EXPECT_EQ(FindFileExtensions(path, list), 1u);
        path_ = path.text;
        return list.text;
    }

    ScratchFolder scratch_;
    std::string path_;  // as the last call left it
};

TEST_F(ClipExtensions, AreListedInTheOrderOfTheFindCalls) {
    make({"clip.mov", "clip.a12.wav", "clip.a34.wav", "CLIP.XML", "clip", "other.mov", "clip2.mov"});
    EXPECT_EQ(extensions("clip.mov"), ".a12.wav.a34.wav.mov.XML");
    EXPECT_EQ(path_, scratch_ / "clip.mov");
    EXPECT_EQ(extensions("clip.none"), ".a12.wav.a34.wav.mov.XML");
    EXPECT_EQ(extensions("Clip"), ".a12.wav.a34.wav.mov.XML");
}

TEST_F(ClipExtensions, AreAppendedToWhatTheListHolds) {
    make({"clip.mov"});
    Buffer path(scratch_ / "clip.mov");
    Buffer list(".old");
    EXPECT_EQ(FindFileExtensions(path, list), 1u);
    EXPECT_STREQ(list, ".old.mov");
}

TEST_F(ClipExtensions, AChannelMarkOfThePathDoesNotCount) {
    make({"clip.mov", "clip.a12.wav", "clip.A1.AIF", "clip.a9a.aiff"});
    for (const char* name : {"clip.a12.wav", "clip.A12.WAV", "clip.a3.aif", "clip.afg.aiff"}) {
        EXPECT_EQ(extensions(name), ".a1.AIF.a12.wav.a9a.aiff.mov") << name;
    }
    EXPECT_EQ(extensions("clip.a12.mov"), "");
}

TEST_F(ClipExtensions, EveryMarkIsKnown) {
    std::string expected;
    make({"clip.mov"});
    for (const char* mark :
         {"a1", "a12", "a2", "a3", "a34", "a4", "a5", "a56", "a6", "a7", "a78", "a8", "a9a", "abc", "ade", "afg"}) {
        makeFile(scratch_ / ("clip." + std::string(mark) + ".wav"));
        expected += "." + std::string(mark) + ".wav";
    }
    makeFile(scratch_ / "clip.a9.wav");
    makeFile(scratch_ / "clip.a0.wav");
    EXPECT_EQ(extensions("clip.mov"), expected + ".mov");
}

TEST_F(ClipExtensions, ForAMarkAnywhereTheEndOfTheNameGoes) {
    make({"clip.a1b.wav", "clip..mov"});
    EXPECT_EQ(extensions("clip..mov"), ".mova1b.wav");  // "clip." stands for both
    EXPECT_EQ(extensions("clip.a1b.wav"), ".mova1b.wav");
    make({"x.a12.take7.wav", "x.a12.t.mov"});
    EXPECT_EQ(extensions("x.a12.t.mov"), ".movake7.wav");
}

TEST_F(ClipExtensions, ALongerMarkWinsOverAShorterOneAheadOfIt) {
    make({"clip.a1.a34.wav", "clip.a1.mov"});
    EXPECT_EQ(extensions("clip.a1.mov"), ".a34.wav.mov");
}

TEST_F(ClipExtensions, FoldersDoNotCount) {
    make({"clip.mov"});
    std::filesystem::create_directory(scratch_ / "clip.dir");
    EXPECT_EQ(extensions("clip.mov"), ".mov");
}

TEST_F(ClipExtensions, AnRtinFileStandsForTheOneWithoutTheLetter) {
    make({"clipA.rtin", "clip.rtin", "clip.wav", "clipA.mov"});
    EXPECT_EQ(extensions("clipA.rtin"), ".rtin.wav");
    EXPECT_EQ(path_, scratch_ / "clip.rtin");
    EXPECT_EQ(extensions("clipA.RTIN"), ".mov.rtin");  // "clip.RTIN" is not there
    EXPECT_EQ(path_, scratch_ / "clip.RTIN");
    EXPECT_EQ(extensions("clipa.rtin"), ".mov.rtin");
    EXPECT_EQ(path_, scratch_ / "clipa.rtin");
}

TEST_F(ClipExtensions, AnRtinPathIsRewrittenEvenToAFileThatIsNotThere) {
    make({"clipA.rtin", "clip.wav"});
    EXPECT_EQ(extensions("clipA.rtin"), ".rtin");
    EXPECT_EQ(path_, scratch_ / "clip.rtin");
    const std::string listed = scratch_ / "clip.rtin";
    gvecNames = {listed.c_str()};
    EXPECT_EQ(extensions("clipA.rtin"), ".wav");
    gvecNames.clear();
}

TEST_F(ClipExtensions, ADirectoryThatCanNotBeListedIsSilent) {
    CapturedMessages messages;
    Buffer path("/no/such/clip.mov");
    Buffer list(".kept");
    EXPECT_EQ(FindFileExtensions(path, list), 1u);
    EXPECT_STREQ(list, ".kept");
    EXPECT_EQ(FindFileExtensions(nullptr, list), 1u);
    EXPECT_EQ(FindFileExtensions(path, nullptr), 1u);
    EXPECT_STREQ(path, "/no/such/clip.mov");
    EXPECT_EQ(messages.text(), "");
}

TEST_F(ClipExtensions, WhatDoesNotFitIsLeftOutWhole) {
    make({"clip.longer", "clip.mov"});
    Buffer path(scratch_ / "clip.mov");
    Buffer list(std::string(4091, '.'));
    errno = 0;
    EXPECT_EQ(FindFileExtensions(path, list), 1u);
    EXPECT_STREQ(list, (std::string(4091, '.') + ".mov").c_str());
    EXPECT_EQ(errno, ENAMETOOLONG);
    Buffer tooLong("/" + std::string(4094, 'x'));
    EXPECT_EQ(FindFileExtensions(tooLong, list), 1u);
}

// ---- the choice --------------------------------------------------------------------------------------------------

/// The path that a list makes of another one, and the list as it is left.
struct Choice {
    std::string path, list;
};

Choice choose(const std::string& from, const std::string& extensions) {
    Buffer path(from);
    Buffer list(extensions);
    EXPECT_EQ(ChooseVideoExtension(path, list), 1u);
    return {path.text, std::string(list.text, extensions.size())};
}

std::string chosen(const std::string& from, const std::string& extensions) { return choose(from, extensions).path; }

TEST(VideoExtension, TheFirstOfTheListThatIsOneCounts) {
    EXPECT_EQ(chosen("/d/clip", ".wav.mov.avi"), "/d/clip.mov");
    EXPECT_EQ(chosen("/d/clip.xml", ".avi.mov"), "/d/clip.avi");
    EXPECT_EQ(chosen("/d/clip.xml", "avi"), "/d/clip.avi");
}

TEST(VideoExtension, Mp4CountsOnlyFailingOthers) {
    EXPECT_EQ(chosen("/d/clip", ".mp4.mov"), "/d/clip.mov");
    EXPECT_EQ(chosen("/d/clip", ".mp4"), "/d/clip.mp4");
    EXPECT_EQ(chosen("/d/clip", ".MP4.wav"), "/d/clip.mp4");
    EXPECT_EQ(chosen("/d/clip", ".wav.mp4"), "/d/clip.mp4");
}

TEST(VideoExtension, TheRestOfTheListIsLeftAlone) {
    EXPECT_EQ(choose("/d/clip", ".mov.mp4").list, std::string(".mov\0mp4", 8));
    EXPECT_EQ(choose("/d/clip", ".mov.mp4").path, "/d/clip.mov");
    EXPECT_EQ(choose("/d/clip", ".wav.xml.mov.avi").list, std::string(".wav\0xml\0mov\0avi", 16));
}

TEST(VideoExtension, CapitalsOfTheSameExtensionStay) {
    EXPECT_EQ(chosen("/d/A.MOV", ".mov"), "/d/A.MOV");
    EXPECT_EQ(chosen("/d/A.MOV", ".Mxf"), "/d/A.mxf");
    EXPECT_EQ(chosen("/d/A.Wav", ".WAV"), "/d/A.Wav");
}

TEST(VideoExtension, AllAreInLowerCaseButOne) {
    EXPECT_EQ(chosen("/d/clip", ".r3d"), "/d/clip.R3D");
    EXPECT_EQ(chosen("/d/clip", ".R3D"), "/d/clip.R3D");
    EXPECT_EQ(chosen("/d/clip.r3d", ".R3D"), "/d/clip.r3d");
    EXPECT_EQ(chosen("/d/clip", ".KV3D"), "/d/clip.kv3d");
}

TEST(VideoExtension, AllOfThemAreKnown) {
    const char* all =
        "3gp 3g2 263 264 265 arc asf avi avs bmp braw cine crm dif dhdr divx dng dps dpx kv3d dv dvs flv gen gfx exr "
        "h264 hdr hevc ihss ismv j2c j2k jp2 js krw ltv lxf m2v m2ts mkv mlv mov movie mpd mp2 mp4 mpg mpeg mts mtv "
        "mxf ntv omf omv png pgx R3D raw rm rgb rtv tif tiff tga ts tvs vcap vcs webm wmv xvid y4m yuv";
    std::istringstream words(all);
    int count = 0;
    for (std::string word; words >> word; ++count) {
        EXPECT_EQ(chosen("/d/clip", ".xml." + word + ".wav"), "/d/clip." + word);
    }
    EXPECT_EQ(count, 74);
}

TEST(VideoExtension, FailingThatTheFirstOfTheListMayCount) {
    for (const char* ext : {".aif", ".aiff", ".ogg", ".mp3", ".mpa", ".wav", ".rtin"}) {
        EXPECT_EQ(chosen("/no/clip", ext), "/no/clip" + std::string(ext));
    }
    EXPECT_EQ(chosen("/d/clip", ".WAV.xml"), "/d/clip.wav");
    EXPECT_EQ(chosen("/d/clip", ".wav.aif"), "/d/clip.wav");
}

TEST(VideoExtension, AacStandsForAaf) {
    EXPECT_EQ(chosen("/d/clip", ".aac"), "/d/clip.aaf");
    EXPECT_EQ(chosen("/d/clip.aac", ".AAC"), "/d/clip.aaf");
}

TEST(VideoExtension, AChannelMarkGoesFromTheName) {
    EXPECT_EQ(chosen("/d/clip.a12.wav", ".mov.a12.wav"), "/d/clip.mov");
    EXPECT_EQ(chosen("/d/clip.A1.aif", ".a1.aif.mov"), "/d/clip.mov");
    EXPECT_EQ(chosen("/d/clip.a12.mov", ".avi"), "/d/clip.a12.avi");
    EXPECT_EQ(chosen("/d/clip.a12.wav", ".wav"), "/d/clip.wav");
}

TEST(VideoExtension, AListThatHoldsNoneIsReported) {
    CapturedMessages messages;
    const Choice choice = choose("/d/clip.a12.wav", ".xml.wav");
    EXPECT_EQ(choice.path, "/d/clip.a12.wav");
    EXPECT_EQ(messages.count("\nCant find ext : /d/clip.a12.wav (.xml)"), 1u);
    EXPECT_EQ(chosen("/d/clip", "wav"), "/d/clip");  // without its dot
    EXPECT_EQ(messages.count("\nCant find ext : /d/clip (wav)"), 1u);
    EXPECT_EQ(chosen("/d/clip", ".."), "/d/clip");
    EXPECT_EQ(messages.count("\nCant find ext : /d/clip (..)"), 1u);
}

TEST(VideoExtension, AnEmptyListIsFilledForTheCallerToSee) {
    const ScratchFolder scratch;
    makeFile(scratch / "clipA.rtin");
    makeFile(scratch / "clipA.mov");
    makeFile(scratch / "clip.rtin");
    CapturedMessages messages;
    Buffer path(scratch / "clipA.mov");
    Buffer list("");
    EXPECT_EQ(ChooseVideoExtension(path, list), 1u);
    EXPECT_STREQ(list, ".mov.rtin");
    EXPECT_EQ(messages.count("\nCant find ext : " + scratch / "clipA.mov" + " ()"), 1u);
    Buffer rtin(scratch / "clipA.rtin");
    list.text[0] = '\0';
    EXPECT_EQ(ChooseVideoExtension(rtin, list), 1u);
    EXPECT_STREQ(list, ".rtin");
    EXPECT_EQ(std::string(rtin), scratch / "clipA.rtin");
}

TEST(VideoExtension, ForRtinTheListIsCompleted) {
    const ScratchFolder scratch;
    for (const char* name : {"clipA.rtin", "clip.rtin", "clip.wav"}) makeFile(scratch / name);
    Buffer path(scratch / "clipA.rtin");
    Buffer list(".rtin.xml");
    EXPECT_EQ(ChooseVideoExtension(path, list), 1u);
    EXPECT_STREQ(list, ".rtin.rtin.wav");
    EXPECT_EQ(std::string(path), scratch / "clipA.rtin");
}

TEST(VideoExtension, ABareNameBecomesItsOwnDirectory) { EXPECT_EQ(chosen("clip.xml", ".mov"), "clip.xml/clip.mov"); }

TEST(VideoExtension, APathThatDoesNotFitStaysAsItIs) {
    const std::string path = "/" + std::string(4088, 'x') + "/y.a";
    errno = 0;
    EXPECT_EQ(chosen(path, ".movie"), path);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(VideoExtension, NullIsLeftAlone) {
    Buffer text(".mov");
    EXPECT_EQ(ChooseVideoExtension(nullptr, text), 1u);
    EXPECT_EQ(ChooseVideoExtension(text, nullptr), 1u);
    EXPECT_STREQ(text, ".mov");
}

}  // namespace
