// Deleting and renaming by name.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "kvos/attributes.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kUrl = "http://127.0.0.1:1/clip";
constexpr const char* kMessage = "kvOSDeleteFile failed error = -1 ";
const std::string kTooLong(5000, 'x');

}  // namespace

TEST(DeleteFile, RemovesAFileOrALinkButNotItsTarget) {
    kvtest::ScratchFolder scratch;
    kvtest::CapturedMessages messages;
    const std::string name = scratch / "a b [1] \xC3\xA4";
    kvtest::makeFile(name);
    fs::create_symlink(name, scratch / "link");
    EXPECT_EQ(kvOSDeleteFile((scratch / "link").c_str()), 1u);
    EXPECT_TRUE(fs::exists(name));
    EXPECT_EQ(kvOSDeleteFile(name.c_str()), 1u);
    EXPECT_FALSE(fs::exists(name));
    EXPECT_EQ(messages.text(), "");
}

TEST(DeleteFile, AFailureIsReportedAndKeepsTheError) {
    kvtest::CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(kvOSDeleteFile("/nowhere/at/all"), 0u);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.count(kMessage), 1u);
}

TEST(DeleteFile, UnusablePathsFailLikeMissingFiles) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSDeleteFile(nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSDeleteFile(kTooLong.c_str()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(messages.count(kMessage), 2u);
}

TEST(DeleteFile, AUrlIsRefusedWithoutAMessage) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSDeleteFile(kUrl), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRemoveDirectory("FTP://host/a"), 0xFFFFFFFFu);
    EXPECT_EQ(messages.text(), "");
}

TEST(RemoveDirectory, RefusesARealDirectoryAndReports) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "empty");
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectory((scratch / "empty").c_str()), 0u);
    EXPECT_TRUE(fs::exists(scratch / "empty"));
    EXPECT_EQ(messages.count(kMessage), 1u);
    EXPECT_EQ(kvOSRemoveDirectory(nullptr), 0u);
    EXPECT_EQ(kvOSRemoveDirectory(kTooLong.c_str()), 0u);
    EXPECT_EQ(messages.count(kMessage), 3u);
}

TEST(RemoveDirectory, DeletesAFile) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "file");
    EXPECT_EQ(kvOSRemoveDirectory((scratch / "file").c_str()), 1u);
}

TEST(RemoveDirectoryRecursive, FindsNothingInADirectory) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "folder");
    kvtest::makeFile(scratch / "folder/a");
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive((scratch / "folder").c_str()), 0u);
    EXPECT_TRUE(fs::exists(scratch / "folder/a"));
    EXPECT_EQ(messages.text(), "");
}

TEST(RemoveDirectoryRecursive, PassesOverTheFirstEntryAndEndsWithThePathItself) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "clip");
    kvtest::makeFile(scratch / "clip*");  // what "clip\*" finds
    EXPECT_EQ(kvOSRemoveDirectoryRecursive((scratch / "clip").c_str()), 1u);
    EXPECT_FALSE(fs::exists(scratch / "clip"));
    EXPECT_TRUE(fs::exists(scratch / "clip*"));
}

TEST(RemoveDirectoryRecursive, FurtherEntriesAreLookedForBehindABackslash) {
    kvtest::ScratchFolder scratch;
    const std::string path = scratch / "c?";  // "c?\*" finds both of the next two
    kvtest::makeFile(scratch / "c1*");
    kvtest::makeFile(scratch / "c2*");
    kvtest::makeFile(path);
    kvtest::makeFile(path + "\\c2*");
    EXPECT_EQ(chmod((path + "\\c2*").c_str(), 0400), 0);
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(path.c_str()), 1u);
    EXPECT_FALSE(fs::exists(path + "\\c2*"));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(fs::exists(scratch / "c1*"));
    EXPECT_TRUE(fs::exists(scratch / "c2*"));
}

TEST(RemoveDirectoryRecursive, AnEntryThatCantBeDeletedEndsIt) {
    kvtest::ScratchFolder scratch;
    const std::string path = scratch / "c?";
    kvtest::makeFile(scratch / "c1*");
    kvtest::makeFile(scratch / "c2*");
    kvtest::makeFile(path);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(path.c_str()), 0u);
    EXPECT_EQ(messages.count(kMessage), 1u);
    EXPECT_TRUE(fs::exists(path));
}

TEST(RemoveDirectoryRecursive, ADirectoryAmongTheEntriesIsEnteredAndEndsItWhenNothingIsFound) {
    kvtest::ScratchFolder scratch;
    const std::string path = scratch / "c?";
    kvtest::makeFile(scratch / "c1*");
    fs::create_directory(scratch / "c2*");
    kvtest::makeFile(path);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(path.c_str()), 0u);
    EXPECT_EQ(messages.text(), "");
    EXPECT_TRUE(fs::exists(path));
}

// Its attributes, all ones, hold the bit of a directory.
TEST(RemoveDirectoryRecursive, WhatIsNeitherFileNorDirectoryIsEnteredAndEndsIt) {
    kvtest::ScratchFolder scratch;
    const std::string path = scratch / "c?";
    kvtest::makeFile(scratch / "c1*");
    ASSERT_EQ(mkfifo((scratch / "c2*").c_str(), 0600), 0);
    kvtest::makeFile(path);
    kvtest::makeFile(path + "\\c2*");  // what would be deleted of a file "c2*"
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(path.c_str()), 0u);
    EXPECT_EQ(messages.text(), "");
    EXPECT_TRUE(fs::exists(path + "\\c2*"));
    EXPECT_TRUE(fs::exists(scratch / "c2*"));
    EXPECT_TRUE(fs::exists(path));
}

TEST(RemoveDirectoryRecursive, BehindASlashThePatternFindsAnAsteriskInTheDirectory) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "folder");
    kvtest::makeFile(scratch / "folder/a");
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive((scratch / "folder/").c_str()), 0u);
    EXPECT_EQ(messages.text(), "");
    kvtest::makeFile(scratch / "folder/*");
    EXPECT_EQ(kvOSRemoveDirectoryRecursive((scratch / "folder/").c_str()), 0u);
    EXPECT_EQ(messages.count(kMessage), 1u);  // of the directory itself, which comes after the entry passed over
    EXPECT_TRUE(fs::exists(scratch / "folder/*"));
    EXPECT_TRUE(fs::exists(scratch / "folder/a"));
}

TEST(RemoveDirectoryRecursive, UnusablePathsFail) {
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(("/" + std::string(4093, 'x')).c_str()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(kUrl), 0u);
}

TEST(RenameFile, GivesZeroOnSuccessAndReplacesTheTarget) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "a", "new");
    kvtest::makeFile(scratch / "b", "old");
    EXPECT_EQ(kvOSRenameFile((scratch / "a").c_str(), (scratch / "b").c_str()), 0);
    EXPECT_EQ(kvtest::contentOf(scratch / "b"), "new");
    EXPECT_EQ(kvOSRenameFile((scratch / "a").c_str(), (scratch / "b").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(RenameFile, ANetworkOldPathIsRefusedEvenIfALocalFileHasThatName) {
    kvtest::ScratchFolder scratch;
    fs::create_directories(scratch / "http:/host");
    fs::current_path(scratch.path());
    kvtest::makeFile("http:/host/clip");
    EXPECT_EQ(kvOSRenameFile("http://host/clip", "a"), -1);
    EXPECT_TRUE(fs::exists("http:/host/clip"));
    EXPECT_EQ(kvOSRenameFile("http:/host/clip", "a"), 0);
}

TEST(RenameFile, AUrlTextAsNewPathIsALocalName) {
    kvtest::ScratchFolder scratch;
    fs::create_directories(scratch / "http:/host");
    fs::current_path(scratch.path());
    kvtest::makeFile("a", "abc");
    EXPECT_EQ(kvOSRenameFile("a", "http://host/clip"), 0);
    EXPECT_EQ(kvtest::contentOf("http:/host/clip"), "abc");
}

TEST(RenameFile, UnusablePathsFail) {
    for (const char* path : {static_cast<const char*>(nullptr), kTooLong.c_str()}) {
        const int expected = path == nullptr ? EINVAL : ENAMETOOLONG;
        EXPECT_EQ(kvOSRenameFile(path, "a"), -1);
        EXPECT_EQ(errno, expected);
        EXPECT_EQ(kvOSRenameFile("a", path), -1);
        EXPECT_EQ(errno, expected);
    }
}
