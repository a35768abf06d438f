// Memory written to a file.
#include <csignal>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "kvos/naming.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using kvtest::contentOf;
using kvtest::ScratchFolder;

// More than a stream buffers, so that it reaches the system while it is written.
const std::string kMegabyte(std::size_t{1} << 20, 'k');

TEST(DumpFile, BytesArriveInANewFile) {
    const ScratchFolder folder;
    const std::string bytes("a\0b\n\xFF", 5);
    EXPECT_EQ(DumpFileBin((folder / "dump").c_str(), bytes.data(), bytes.size()), 0);
    EXPECT_EQ(contentOf(folder / "dump"), bytes);
}

TEST(DumpFile, AnOlderFileIsReplaced) {
    const ScratchFolder folder;
    kvtest::makeFile(folder / "dump", "something longer");
    EXPECT_EQ(DumpFileBin((folder / "dump").c_str(), "abc", 3), 0);
    EXPECT_EQ(contentOf(folder / "dump"), "abc");
}

TEST(DumpFile, NoBytesMakeAnEmptyFile) {
    const ScratchFolder folder;
    EXPECT_EQ(DumpFileBin((folder / "dump").c_str(), nullptr, 0), 0);
    EXPECT_EQ(access((folder / "dump").c_str(), F_OK), 0);
    EXPECT_EQ(contentOf(folder / "dump"), "");
}

TEST(DumpFile, AFileThatCannotBeCreatedIsMinusOne) {
    const ScratchFolder folder;
    const kvtest::CapturedMessages messages;
    EXPECT_EQ(DumpFileBin((folder / "none/dump").c_str(), "abc", 3), -1);
    EXPECT_EQ(DumpFileBin("", "abc", 3), -1);
}

TEST(DumpFile, NullPointersAreMinusOneAndMakeNoFile) {
    const ScratchFolder folder;
    EXPECT_EQ(DumpFileBin(nullptr, "abc", 3), -1);
    EXPECT_EQ(DumpFileBin((folder / "dump").c_str(), nullptr, 3), -1);
    EXPECT_NE(access((folder / "dump").c_str(), F_OK), 0);
}

TEST(DumpFile, AWriteThatFailsIsMinusOne) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "this system has no /dev/full";
    const kvtest::CapturedMessages messages;
    EXPECT_EQ(DumpFileBin("/dev/full", kMegabyte.data(), kMegabyte.size()), -1);
}

TEST(DumpFile, FewerBytesThanAskedForAreMinusTwo) {
    const ScratchFolder folder;
    const kvtest::CapturedMessages messages;
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit half{kMegabyte.size() / 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &half), 0);
    EXPECT_EQ(DumpFileBin((folder / "dump").c_str(), kMegabyte.data(), kMegabyte.size()), -2);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(contentOf(folder / "dump").size(), kMegabyte.size() / 2);
}

TEST(DumpFile, AFullDiskThatShowsAtTheCloseIsMinusTwo) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "this system has no /dev/full";
    const kvtest::CapturedMessages messages;
    EXPECT_EQ(DumpFileBin("/dev/full", "abc", 3), -2);
}

}  // namespace
