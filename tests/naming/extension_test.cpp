// Extensions read and replaced.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/naming.h"

namespace {

/// The extension in a buffer of five bytes, or "-1" with the buffer checked to be untouched.
std::string extracted(const char* name) {
    std::vector<char> out(5, '#');
    if (ExtractFileExtension(name, out.data()) != 0) {
        EXPECT_EQ(out[0], '#');
        return "-1";
    }
    return out.data();
}

std::string changed(const std::string& path, const char* ext) {
    std::vector<char> text(4096, '#');
    std::strcpy(text.data(), path.c_str());
    EXPECT_EQ(ChangeFileExtension(text.data(), ext), 0);
    return text.data();
}

TEST(Extension, FirstDotOfTheTextDecides) {
    EXPECT_EQ(extracted("a.b.c"), "b.c");
    EXPECT_EQ(extracted("clip.mov"), "mov");
    EXPECT_EQ(extracted("a.b/c.mov"), "b/c.");
    EXPECT_EQ(extracted(".hid"), "hid");
    EXPECT_EQ(extracted("a."), "");
}

TEST(Extension, AtMostFourCharactersAreTaken) {
    EXPECT_EQ(extracted("clip.mpeg"), "mpeg");
    EXPECT_EQ(extracted("clip.mpeg2"), "mpeg");
}

TEST(Extension, ASemicolonEndsIt) {
    EXPECT_EQ(extracted("*.tga;*.bmp"), "tga");
    EXPECT_EQ(extracted("*.a;b"), "a");
    EXPECT_EQ(extracted("*.;b"), "");
    EXPECT_EQ(extracted("*.mpeg;"), "mpeg");
}

TEST(Extension, WithoutADotThereIsNone) {
    EXPECT_EQ(extracted("clip"), "-1");
    EXPECT_EQ(extracted(""), "-1");
    EXPECT_EQ(extracted(nullptr), "-1");
    EXPECT_EQ(ExtractFileExtension("a.b", nullptr), -1);
}

TEST(Extension, ChangingKeepsDriveDirectoryAndName) {
    EXPECT_EQ(changed("/d/name.ext", ".new"), "/d/name.new");
    EXPECT_EQ(changed("/d/name.ext", "new"), "/d/name.new");
    EXPECT_EQ(changed("C:/d/a.b.c", ".new"), "C:/d/a.b.new");
    EXPECT_EQ(changed("/d/name", ".new"), "/d/name.new");
    EXPECT_EQ(changed("/d/name.ext", ""), "/d/name");
}

TEST(Extension, ChangingABareNameGivesItItselfAsDirectory) {
    EXPECT_EQ(changed("name.ext", ".new"), "name.ext/name.new");
}

TEST(Extension, ChangingCutsTheNameAtItsFirstStar) {
    EXPECT_EQ(changed("/d/clip*x*.tga", ".wav"), "/d/clip.wav");
    EXPECT_EQ(changed("/d/*.tga", ".wav"), "/d/.wav");
    EXPECT_EQ(changed("/d*/clip.tga", ".wav"), "/d*/clip.wav");
}

TEST(Extension, ChangingDropsTheQueryOfALocator) {
    EXPECT_EQ(changed("http://host/a/b.mov?x=1.2", ".wav"), "http://host/a/b.wav");
}

TEST(Extension, TheNewExtensionMayBePartOfThePath) {
    char path[4096] = "/d/a.b.c";
    EXPECT_EQ(ChangeFileExtension(path, path + 4), 0);
    EXPECT_STREQ(path, "/d/a.b.b.c");
}

TEST(Extension, ChangingRefusesNull) {
    char path[4096] = "/d/a.b";
    EXPECT_EQ(ChangeFileExtension(nullptr, ".new"), -1);
    EXPECT_EQ(ChangeFileExtension(path, nullptr), -1);
    EXPECT_STREQ(path, "/d/a.b");
}

TEST(Extension, AChangeThatDoesNotFitLeavesThePath) {
    const std::string path = "/d/" + std::string(4090, 'n');
    std::vector<char> text(4096, '#');
    std::strcpy(text.data(), path.c_str());
    errno = 0;
    EXPECT_EQ(ChangeFileExtension(text.data(), ".xyz"), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(text.data(), path);
    EXPECT_EQ(ChangeFileExtension(text.data(), "x"), 0);
    EXPECT_EQ(text.data(), path + ".x");
}

}  // namespace
