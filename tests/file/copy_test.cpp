// The plain copy of a file.
#include "kvos/copy.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utility>

#include "file/ordinary_user.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Copy : public ::testing::Test {
protected:
    static std::string bytes(std::size_t count) {
        std::string text(count, 'x');
        for (std::size_t i = 0; i < count; i += 101) text[i] = static_cast<char>(i / 101);
        return text;
    }
    std::uint32_t copy(std::uint32_t failIfExists = 0) const {
        return kvOSCopyFile(from_.c_str(), to_.c_str(), failIfExists);
    }

    ScratchFolder scratch_;
    std::string from_ = scratch_ / "from";
    std::string to_ = scratch_ / "to";
};

TEST_F(Copy, CopiesEveryByte) {
    for (const std::size_t size : {1u, 4095u, 1048575u, 1048577u, 2097153u, 3000000u}) {
        const std::string content = bytes(size);
        makeFile(from_, content);
        EXPECT_EQ(copy(), 1u) << size;
        EXPECT_TRUE(contentOf(to_) == content) << size;
    }
}

TEST_F(Copy, MultiplesOfAMebibyteAreCopiedAndGiveZero) {
    for (const std::size_t size : {0u, 1u << 20, 2u << 20}) {
        const std::string content = bytes(size);
        makeFile(from_, content);
        CapturedMessages messages;
        EXPECT_EQ(copy(), 0u) << size;
        EXPECT_TRUE(contentOf(to_) == content) << size;
        EXPECT_EQ(messages.text(), "");
    }
}

TEST_F(Copy, AnExistingDestinationIsReplacedOrRefused) {
    makeFile(from_, "new");
    makeFile(to_, "old and longer");
    EXPECT_EQ(copy(1), 0u);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(to_), "old and longer");
    EXPECT_EQ(copy(0), 1u);
    EXPECT_EQ(contentOf(to_), "new");
    std::filesystem::remove(to_);
    EXPECT_EQ(copy(1), 1u);
}

TEST_F(Copy, AnExistingDestinationIsDeletedAheadOfALookAtTheSource) {
    makeFile(to_, "old");
    CapturedMessages messages;
    EXPECT_EQ(copy(), 0u);
    EXPECT_FALSE(std::filesystem::exists(to_));
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
}

TEST_F(Copy, AFileCopiedOntoItselfIsLost) {
    makeFile(from_, "bytes");
    CapturedMessages messages;
    EXPECT_EQ(kvOSCopyFile(from_.c_str(), from_.c_str(), 0), 0u);
    EXPECT_FALSE(std::filesystem::exists(from_));
    makeFile(from_, "bytes");
    EXPECT_EQ(kvOSCopyFile(from_.c_str(), from_.c_str(), 1), 0u);
    EXPECT_EQ(contentOf(from_), "bytes");
}

TEST_F(Copy, AWriteThatFailsAtAWholeBlockGivesZero) {
    makeFile(from_, bytes(3 << 20));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    for (const rlim_t room : {rlim_t{0}, rlim_t{512} << 10, rlim_t{1536} << 10, rlim_t{2} << 20}) {
        rlimit small = before;
        small.rlim_cur = room;
        CapturedMessages messages;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const std::uint32_t copied = copy();
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(copied, 0u) << room;
        EXPECT_EQ(std::filesystem::file_size(to_), room);
    }
}

TEST_F(Copy, ASourceThatCanNotBeReadGivesOne) {
    std::filesystem::create_directory(from_);
    CapturedMessages messages;
    EXPECT_EQ(copy(), 1u);
    EXPECT_EQ(contentOf(to_), "");
}

TEST_F(Copy, ADestinationThatCanNotBeMadeShowsAtTheFirstBlock) {
    constexpr const char* kNoPlace = "/no/such/folder/to";
    for (const std::size_t size : {1u << 20, (1u << 20) + 1}) {
        makeFile(from_, bytes(size));
        CapturedMessages messages;
        EXPECT_EQ(kvOSCopyFile(from_.c_str(), kNoPlace, 0), 0u);
        EXPECT_EQ(messages.count("kvOSCreateFile(/no/such/folder/to"), 1u);
        EXPECT_EQ(messages.count("kvOSWriteFile(INVALID_HANDLE_VALUE) "), 1u);
    }
    makeFile(from_, "abc");
    CapturedMessages messages;
    EXPECT_EQ(kvOSCopyFile(from_.c_str(), kNoPlace, 0), 0u);
    EXPECT_EQ(messages.count("kvOSCreateFile(/no/such/folder/to"), 2u) << "the last block has an open of its own";
    EXPECT_EQ(messages.count("kvOSWriteFile("), 0u);
    EXPECT_EQ(errno, ENOENT);
    std::filesystem::resize_file(from_, 0);
    EXPECT_EQ(kvOSCopyFile(from_.c_str(), kNoPlace, 0), 0u);
    EXPECT_EQ(messages.count("kvOSCreateFile(/no/such/folder/to"), 3u);
}

TEST_F(Copy, NullIsRefused) {
    for (const auto& [from, to] : {std::pair<const char*, const char*>{nullptr, to_.c_str()},
                                   std::pair<const char*, const char*>{from_.c_str(), nullptr}}) {
        errno = 0;
        EXPECT_EQ(kvOSCopyFile(from, to, 0), 0u);
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST_F(Copy, AFullDiskGivesZero) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    makeFile(from_, "bytes");
    std::filesystem::create_symlink("/dev/full", to_);
    // The link itself is what would be deleted, so the copy goes to a folder that keeps it.
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(scratch_.path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(from_.c_str(), 0644), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        CapturedMessages messages;
        return copy() == 0;
    }));
}

}  // namespace
