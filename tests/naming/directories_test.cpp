// Missing directories of a path.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "file/ordinary_user.h"
#include "kvos/attributes.h"
#include "kvos/naming.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Directories : public ::testing::Test {
protected:
    bool isFolder(const std::string& name) const { return std::filesystem::is_directory(scratch_ / name); }
    std::int32_t make(const std::string& name) const { return MakeDirStructure((scratch_ / name).c_str()); }

    ScratchFolder scratch_;
};

TEST_F(Directories, ANameWithAnExtensionIsAFileAndNotMade) {
    EXPECT_EQ(make("a/b/c.txt"), 0);
    EXPECT_TRUE(isFolder("a/b"));
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "a/b/c.txt"));
}

TEST_F(Directories, ANameWithoutOneIsADirectoryToo) {
    EXPECT_EQ(make("a/b/c"), 0);
    EXPECT_TRUE(isFolder("a/b/c"));
    EXPECT_EQ(make("d.x/e.y/"), 0);
    EXPECT_TRUE(isFolder("d.x/e.y"));
    EXPECT_EQ(make("a/b/c"), 0);
}

TEST_F(Directories, TheyAreForOwnerAndGroupToWrite) {
    EXPECT_EQ(make("a"), 0);
    struct stat status;
    ASSERT_EQ(stat((scratch_ / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0775u);
}

TEST_F(Directories, ARelativePathBeginsInTheWorkingDirectory) {
    std::filesystem::current_path(scratch_.path());
    EXPECT_EQ(MakeDirStructure("in/here"), 0);
    EXPECT_TRUE(isFolder("in/here"));
    EXPECT_EQ(MakeDirStructure("name"), 0);
    EXPECT_TRUE(isFolder("name"));
}

TEST_F(Directories, DoubleSlashesCountOnce) {
    EXPECT_EQ(make("a//b///c"), 0);
    EXPECT_TRUE(isFolder("a/b/c"));
}

TEST_F(Directories, AFileInTheWayIsToldWithItsPathAndTheFirstError) {
    makeFile(scratch_ / "file", "x");
    CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(make("file/in/it"), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(messages.text(), "Unable to make directory: " + (scratch_ / "file/in") + ", errno = 20\n");
}

TEST_F(Directories, AFolderThatRefusesIsTold) {
    openToAll(scratch_.path());
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        CapturedMessages messages;
        return make("a/b") == -1 &&
               messages.text() == "Unable to make directory: " + (scratch_ / "a") + ", errno = 13\n";
    }));
}

TEST_F(Directories, TheTopmostIsMadeOnlyWhenADeeperOneCanNotBe) {
    const std::string top = "/kvutil-test-" + std::to_string(getpid());
    if (geteuid() != 0) GTEST_SKIP() << "only root makes a directory at the top";
    EXPECT_EQ(MakeDirStructure((top + "/c.txt").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(top));  // nothing deeper was wanted
    EXPECT_EQ(MakeDirStructure((top + "/b/c.txt").c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_directory(top + "/b"));
    std::filesystem::remove_all(top);
    EXPECT_EQ(MakeDirStructure(top.c_str()), 0);  // one component counts as two
    EXPECT_TRUE(std::filesystem::is_directory(top + top));
    std::filesystem::remove_all(top);
}

TEST_F(Directories, NamesOnTheListCountAsPresent) {
    const std::string listed = scratch_ / "listed";
    gvecNames.push_back(listed.c_str());
    EXPECT_EQ(make("listed"), 0);
    gvecNames.clear();
    EXPECT_FALSE(isFolder("listed"));
}

TEST_F(Directories, WhatTheNetworkRefusesIsTold) {
    CapturedMessages messages;
    EXPECT_EQ(MakeDirStructure("s3://user@bucket/a/b"), -1);
    EXPECT_NE(messages.text().find("Unable to make directory: s3://user@bucket//a/b, errno = "), std::string::npos)
        << messages.text();
}

TEST_F(Directories, OnTheNetworkWithoutAUserTheSchemeIsWhereItBegins) {
    CapturedMessages messages;
    EXPECT_EQ(MakeDirStructure("http://127.0.0.1:1/a/b"), -1);
    EXPECT_NE(messages.text().find("Unable to make directory: http://127.0.0.1:1/a, errno = "), std::string::npos)
        << messages.text();
}

TEST_F(Directories, PathsThatCanNotBeAreRefused) {
    EXPECT_EQ(MakeDirStructure(nullptr), -1);
    EXPECT_EQ(MakeDirStructure(("/" + std::string(5000, 'x')).c_str()), -1);
    EXPECT_EQ(MakeDirStructure(("/" + std::string(3000, 'x')).c_str()), -1);
}

}  // namespace
