// Names, roots and separators of paths as text.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/naming.h"

namespace {

std::string merged(const std::string& path, const std::string& name) {
    std::vector<char> target(4096, '#');
    std::strcpy(target.data(), path.c_str());
    EXPECT_EQ(MergePath(target.data(), name.c_str()), target.data());
    return target.data();
}

/// The root, or "null" with the target checked to be untouched.
std::string rootOf(const char* path) {
    std::vector<char> target(4096, '#');
    if (SplitPathRoot(target.data(), path) == nullptr) {
        EXPECT_EQ(target[0], '#');
        return "null";
    }
    return target.data();
}

TEST(PathText, NameFollowsTheLastSlashOrColon) {
    EXPECT_STREQ(SplitPathName("/a/b.c"), "b.c");
    EXPECT_STREQ(SplitPathName("C:b.c"), "b.c");
    EXPECT_STREQ(SplitPathName("/a/b:c"), "c");
    EXPECT_STREQ(SplitPathName("/a/"), "");
    EXPECT_STREQ(SplitPathName(""), "");
}

TEST(PathText, NameOfAPathWithoutSeparatorIsThePath) {
    const char* path = "name.ext";
    EXPECT_EQ(SplitPathName(path), path);
}

TEST(PathText, ExtensionBeginsAtTheLastDotOfTheName) {
    EXPECT_STREQ(SplitPathExt("/a/b.c.d"), ".d");
    EXPECT_STREQ(SplitPathExt("C:b.c"), ".c");
    EXPECT_STREQ(SplitPathExt("/a.b/c"), "");
    EXPECT_STREQ(SplitPathExt("a.b:c"), "");
}

TEST(PathText, ADotAtTheStartOfTheNameIsAnExtension) {
    EXPECT_STREQ(SplitPathExt(".hid"), ".hid");
    EXPECT_STREQ(SplitPathExt("/a/.hid"), ".hid");
}

TEST(PathText, WithoutADotTheExtensionIsTheTerminator) {
    const char* path = "/a/b";
    EXPECT_EQ(SplitPathExt(path), path + 4);
}

TEST(PathText, BackslashesBecomeSlashes) {
    char path[] = "\\\\srv\\a/b\\";
    EXPECT_EQ(FixPathName(path), path);
    EXPECT_STREQ(path, "//srv/a/b/");
}

TEST(PathText, MergingAddsASlashWhereOneIsMissing) {
    EXPECT_EQ(merged("/a", "b"), "/a/b");
    EXPECT_EQ(merged("/a/", "b"), "/a/b");
    EXPECT_EQ(merged("C:", "b"), "C:b");
    EXPECT_EQ(merged("", "b"), "b");
    EXPECT_EQ(merged("/a", ""), "/a/");
    EXPECT_EQ(merged("/a", "/b"), "/a//b");
}

TEST(PathText, MergingWhatDoesNotFitLeavesThePath) {
    const std::string dir(4090, 'd');
    EXPECT_EQ(merged(dir, "1234"), dir + "/1234");
    std::vector<char> target(4096, '#');
    std::strcpy(target.data(), dir.c_str());
    errno = 0;
    EXPECT_EQ(MergePath(target.data(), "12345"), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(target.data(), dir);
}

TEST(PathText, RootOfADriveIsItsLetterAndASlash) {
    EXPECT_EQ(rootOf("C:/a/b"), "C:/");
    EXPECT_EQ(rootOf("z:"), "z:/");
    EXPECT_EQ(rootOf("z:name"), "z:/");
    EXPECT_EQ(rootOf("1:/a"), "null");
    EXPECT_EQ(rootOf("\xC3:/a"), "null");
}

TEST(PathText, RootOfAServerIsServerAndShare) {
    EXPECT_EQ(rootOf("//srv/share/dir/x"), "//srv/share/");
    EXPECT_EQ(rootOf("//srv/share"), "//srv/share/");
    EXPECT_EQ(rootOf("//srv"), "//srv/");
}

TEST(PathText, RootOfAServerAlwaysGetsItsFinalSlash) {
    EXPECT_EQ(rootOf("//srv/"), "//srv//");
    EXPECT_EQ(rootOf("//srv//x"), "//srv//");
    EXPECT_EQ(rootOf("//"), "///");
}

TEST(PathText, OtherPathsHaveNoRoot) {
    EXPECT_EQ(rootOf("/a/b"), "null");
    EXPECT_EQ(rootOf("a"), "null");
    EXPECT_EQ(rootOf(""), "null");
    EXPECT_EQ(rootOf(nullptr), "null");
}

TEST(PathText, ARootThatDoesNotFitIsRefused) {
    errno = 0;
    EXPECT_EQ(rootOf(("//" + std::string(4094, 's')).c_str()), "null");
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(rootOf(("//" + std::string(4092, 's')).c_str()), "//" + std::string(4092, 's') + "/");
}

TEST(PathText, NullPathsGiveNull) {
    char text[4096] = "a";
    EXPECT_EQ(SplitPathName(nullptr), nullptr);
    EXPECT_EQ(SplitPathExt(nullptr), nullptr);
    EXPECT_EQ(FixPathName(nullptr), nullptr);
    EXPECT_EQ(MergePath(nullptr, "a"), nullptr);
    EXPECT_EQ(MergePath(text, nullptr), nullptr);
    EXPECT_EQ(SplitPathRoot(nullptr, "C:/"), nullptr);
    EXPECT_STREQ(text, "a");
}

}  // namespace
