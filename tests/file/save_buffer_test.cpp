// A whole buffer written to a file in one call.
#include <cerrno>
#include <gtest/gtest.h>

#include "kvos/file.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

TEST(SaveBuffer, ReplacesTheFileAndTellsTheBytes) {
    const ScratchFolder folder;
    makeFile(folder / "a", "something longer");
    EXPECT_EQ(kvOSSaveBuffer((folder / "a").c_str(), "abc", 3), 3u);
    EXPECT_EQ(contentOf(folder / "a"), "abc");
}

TEST(SaveBuffer, FileThatCanNotBeMadeGivesZero) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSSaveBuffer("/no/such/folder/a", "abc", 3), 0u);
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
    EXPECT_EQ(kvOSSaveBuffer(nullptr, "abc", 3), 0u);
}

TEST(SaveBuffer, BytesThatDoNotReachTheDiskCountAsAFailure) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSSaveBuffer("/dev/full", "abc", 3), 0u);
    EXPECT_EQ(errno, ENOSPC);
}
