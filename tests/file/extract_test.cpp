// The extract of a range.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "file/ordinary_user.h"
#include "kvos/copy.h"
#include "kvos/time.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Extract : public ::testing::Test {
protected:
    std::uint32_t extract(std::uint64_t offset, std::uint64_t bytes, std::uint64_t at = 0, std::uint32_t flags = 0) {
        const std::uint32_t start_ms = kvOSGetMs();
        const std::uint32_t result =
            kvOSExtractFileFast(from_.c_str(), to_.c_str(), flags, offset, bytes, at, &done_, &elapsed_, &permille_);
        longest_ = kvOSGetMs() - start_ms;
        return result;
    }
    static std::string failure(int error) {
        char text[100];
        std::snprintf(text, sizeof text, "\nERROR:kvOSExtractFileFast(%d, 0x%08X) ", error,
                      static_cast<unsigned>(error));
        return text;
    }

    ScratchFolder scratch_;
    std::string from_ = scratch_ / "from";
    std::string to_ = scratch_ / "to";
    std::uint64_t done_ = 77;
    static constexpr std::uint32_t kUntouched = 0xFFFFFFFF;
    std::uint32_t elapsed_ = kUntouched;
    std::uint32_t longest_ = 0;  // what it can be at most
    std::uint32_t permille_ = 77;
};

TEST_F(Extract, GivesTheRange) {
    makeFile(from_, "0123456789");
    EXPECT_EQ(extract(3, 4), 1u);
    EXPECT_EQ(contentOf(to_), "3456");
    EXPECT_EQ(done_, 4u);
    EXPECT_EQ(permille_, 1000u);
    EXPECT_LE(elapsed_, longest_);
}

TEST_F(Extract, GivesALongRange) {
    std::string bytes(5 << 20, 'x');
    for (std::size_t i = 0; i < bytes.size(); i += 97) bytes[i] = static_cast<char>(i / 97);
    makeFile(from_, bytes);
    EXPECT_EQ(extract(1000, (3 << 20) + 11), 1u);
    EXPECT_TRUE(contentOf(to_) == bytes.substr(1000, (3 << 20) + 11));
    EXPECT_EQ(extract(0, bytes.size()), 1u);
    EXPECT_TRUE(contentOf(to_) == bytes);
}

TEST_F(Extract, PutsTheRangeAtItsPlaceInAnewFile) {
    makeFile(from_, "0123456789");
    makeFile(to_, "old and longer than all that comes");
    EXPECT_EQ(extract(0, 2, 3), 1u);
    EXPECT_EQ(contentOf(to_), std::string(3, '\0') + "01");
}

TEST_F(Extract, KeepsWhatExistsWhenAsked) {
    makeFile(from_, "0123456789");
    makeFile(to_, "old");
    CapturedMessages messages;
    EXPECT_EQ(extract(0, 2, 0, KVCOPY_KEEP_EXISTING), 0u);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(to_), "old");
    EXPECT_EQ(messages.text(), "");
    std::filesystem::remove(to_);
    EXPECT_EQ(extract(0, 2, 0, KVCOPY_KEEP_EXISTING), 1u);
}

TEST_F(Extract, NothingAskedForMakesAnEmptyFile) {
    makeFile(from_, "0123456789");
    EXPECT_EQ(extract(0, 0), 1u);
    EXPECT_EQ(contentOf(to_), "");
    EXPECT_EQ(done_, 77u);
    EXPECT_EQ(permille_, 77u);
    EXPECT_EQ(elapsed_, kUntouched);
}

TEST_F(Extract, ASourceThatEndsFirstIsToldAndGivesZero) {
    makeFile(from_, "0123456789");
    for (const std::uint64_t offset : {8u, 10u, 5000u}) {
        CapturedMessages messages;
        std::filesystem::remove(to_);  // which leaves a last error
        EXPECT_EQ(extract(offset, 5), 0u);
        EXPECT_EQ(errno, 0);
        EXPECT_EQ(messages.count(failure(0)), 1u);
    }
    extract(8, 5);
    EXPECT_EQ(contentOf(to_), "89");
    EXPECT_EQ(done_, 2u);
    EXPECT_EQ(permille_, 400u);
}

TEST_F(Extract, ACountThatNoFileHasEndsWithTheSource) {
    makeFile(from_, "0123456789");
    CapturedMessages messages;
    EXPECT_EQ(extract(0, ~std::uint64_t{0}), 0u);
    EXPECT_EQ(contentOf(to_), "0123456789");
    EXPECT_EQ(permille_, 0u);
}

TEST_F(Extract, APlaceThatNoFileHasIsRefused) {
    makeFile(from_, "0123456789");
    CapturedMessages messages;
    EXPECT_EQ(extract(~std::uint64_t{0}, 1), 0u);
    EXPECT_EQ(messages.count(failure(EINVAL)), 1u);
    EXPECT_EQ(extract(0, 1, ~std::uint64_t{0}), 0u);
    EXPECT_EQ(contentOf(to_), "");
}

TEST_F(Extract, OpensThatFailAreTold) {
    CapturedMessages messages;
    EXPECT_EQ(extract(0, 1), 0u);
    EXPECT_EQ(messages.count(failure(ENOENT)), 1u);
    makeFile(from_, "x");
    to_ = "/no/such/folder/to";
    EXPECT_EQ(extract(0, 1), 0u);
    EXPECT_EQ(messages.count(failure(ENOENT)), 2u);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSExtractFileFast(nullptr, to_.c_str(), 0, 0, 1, 0, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(kvOSExtractFileFast(from_.c_str(), nullptr, 0, 0, 1, 0, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(messages.count(failure(EINVAL)), 2u);
}

TEST_F(Extract, AReadThatFailsIsToldAndGivesOne) {
    std::filesystem::create_directory(from_);
    CapturedMessages messages;
    EXPECT_EQ(extract(0, 5), 1u);
    char text[100];
    std::snprintf(text, sizeof text, "kvOSExtractFileFast Read FAILED %d 0x%X ", EISDIR, EISDIR);
    EXPECT_EQ(messages.count(text), 1u);
    EXPECT_EQ(contentOf(to_), "");
    EXPECT_EQ(kvOSExtractFileFast("mem://x", to_.c_str(), 0, 0, 1, 0, nullptr, nullptr, nullptr), 1u);
}

TEST_F(Extract, AFullDiskIsToldByTheWriteWithOneOrByTheCloseWithZero) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    makeFile(from_, std::string(100000, 'x'));
    std::filesystem::create_symlink("/dev/full", to_);
    // The link itself is what would be deleted, so the extract goes to a folder that keeps it.
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(scratch_.path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(from_.c_str(), 0644), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        CapturedMessages messages;
        const bool byWrite =
            extract(0, 100000) == 1 && messages.count("kvOSExtractFileFast Write FAILED 28 0x1C ") == 1;
        return byWrite && extract(0, 10) == 0;
    }));
}

TEST_F(Extract, TheTellingWordsMayBeNull) {
    makeFile(from_, "0123456789");
    EXPECT_EQ(kvOSExtractFileFast(from_.c_str(), to_.c_str(), 0, 0, 10, 0, nullptr, nullptr, nullptr), 1u);
    EXPECT_EQ(contentOf(to_), "0123456789");
}

}  // namespace
