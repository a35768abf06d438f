// Names and lists of endings.
#include <gtest/gtest.h>

#include "kvos/media_names.h"

namespace {

TEST(NameEndings, AnEndingFitsInAnyCase) {
    EXPECT_EQ(CheckFileExtension("CLIP.MOV", ".mov"), 1u);
    EXPECT_EQ(CheckFileExtension("clip.mov", ".MOV"), 1u);
    EXPECT_EQ(CheckFileExtension(".mov", ".mov"), 1u);
    EXPECT_EQ(CheckFileExtension("mov", ".mov"), 0u);
    EXPECT_EQ(CheckFileExtension("clip.mov.wav", ".mov"), 0u);
    EXPECT_EQ(CheckFileExtension("clip.movie", ".mov"), 0u);
    EXPECT_EQ(CheckFileExtension("remov", "mov"), 1u);
}

TEST(NameEndings, TheEmptyEndingAlwaysFits) {
    EXPECT_EQ(CheckFileExtension("clip", ""), 1u);
    EXPECT_EQ(CheckFileExtension("", ""), 1u);
}

TEST(NameEndings, LettersBeyondAsciiAreComparedAsTheyAre) {
    EXPECT_EQ(CheckFileExtension("clip.\xC3\xA4", ".\xC3\xA4"), 1u);
    EXPECT_EQ(CheckFileExtension("clip.\xC3\xA4", ".\xC3\x84"), 0u);
}

TEST(NameEndings, AnyTokenOfAListMayFit) {
    EXPECT_EQ(CheckFileExtensions("a.tif", ".tga.tif"), 1u);
    EXPECT_EQ(CheckFileExtensions("a.TGA", ".tga.tif"), 1u);
    EXPECT_EQ(CheckFileExtensions("a.png", ".tga.tif"), 0u);
    EXPECT_EQ(CheckFileExtensions("a.tif", "tif"), 1u);
    EXPECT_EQ(CheckFileExtensions("a.tif", "..tga...tif.."), 1u);
}

TEST(NameEndings, TheDotsOfAListDoNotCount) {
    EXPECT_EQ(CheckFileExtensions("a.tif", ".tif"), 1u);
    EXPECT_EQ(CheckFileExtensions("motif", ".tif"), 1u);
    EXPECT_EQ(CheckFileExtensions("tif", ".tif"), 1u);
    EXPECT_EQ(CheckFileName("motif", ".tif"), 0u);  // its first text keeps its dot
    EXPECT_EQ(CheckFileName("motif", ";tif"), 1u);
}

TEST(NameEndings, TheFirstTextOfANameListEndsAtASemicolon) {
    const char* list = "a.b;c.d";
    for (const char* name : {"xa.b", "xA.B", "xc", "xd"}) EXPECT_EQ(CheckFileName(name, list), 1u) << name;
    for (const char* name : {"xb", "x.b", "xa", "xc.", ""}) EXPECT_EQ(CheckFileName(name, list), 0u) << name;
}

TEST(NameEndings, BehindTheFirstTextASemicolonIsNoEnd) {
    EXPECT_EQ(CheckFileName("xc;d", "a;c;d"), 1u);
    EXPECT_EQ(CheckFileName("xc", "a;c;d"), 0u);
    EXPECT_EQ(CheckFileName("xd", "a;c;d"), 0u);
    EXPECT_EQ(CheckFileName("xb", ";;a;.b"), 1u);
    EXPECT_EQ(CheckFileExtensions("xa", "a;b"), 0u);
}

TEST(NameEndings, NullAndEmptyListsFitNothing) {
    EXPECT_EQ(CheckFileExtension(nullptr, ".mov"), 0u);
    EXPECT_EQ(CheckFileExtension("clip.mov", nullptr), 0u);
    for (auto* check : {CheckFileExtensions, CheckFileName}) {
        EXPECT_EQ(check(nullptr, ".mov"), 0u);
        EXPECT_EQ(check("clip.mov", nullptr), 0u);
        EXPECT_EQ(check("clip.mov", ""), 0u);
        EXPECT_EQ(check("", "mov"), 0u);
    }
    EXPECT_EQ(CheckFileExtensions("clip.", "..."), 0u);
    EXPECT_EQ(CheckFileName("clip;", ";;"), 0u);
}

}  // namespace
