// The comparison of two files.
#include <gtest/gtest.h>
#include <string>

#include "kvos/copy.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Verify : public ::testing::Test {
protected:
    std::uint32_t verify(std::string_view first, std::string_view second) const {
        makeFile(first_, first);
        makeFile(second_, second);
        return kvOSVerifyFile(first_.c_str(), second_.c_str());
    }

    ScratchFolder scratch_;
    std::string first_ = scratch_ / "first";
    std::string second_ = scratch_ / "second";
};

TEST_F(Verify, TheResultsAreTheseNumbers) {
    EXPECT_EQ(KVVERIFY_SAME, 0u);
    EXPECT_EQ(KVVERIFY_SIZES_DIFFER, 0x80001001u);
    EXPECT_EQ(KVVERIFY_NOT_OPENED, 0x80001002u);
    EXPECT_EQ(KVVERIFY_FIRST_EMPTY, 0x80001005u);
    EXPECT_EQ(KVVERIFY_SECOND_EMPTY, 0x80001006u);
    EXPECT_EQ(KVVERIFY_NO_MEMORY, 0x80001007u);
    EXPECT_EQ(KVVERIFY_CONTENTS_DIFFER, 0x80001008u);
}

TEST_F(Verify, EqualFilesAreTheSame) {
    for (const std::size_t size : {1u, 4096u, (1u << 20) - 1, 1u << 20, (1u << 20) + 1, 3u << 20}) {
        std::string bytes(size, 'x');
        EXPECT_EQ(verify(bytes, bytes), KVVERIFY_SAME) << size;
    }
    EXPECT_EQ(kvOSVerifyFile(first_.c_str(), first_.c_str()), KVVERIFY_SAME);
}

TEST_F(Verify, OneByteAnywhereMakesThemDiffer) {
    const std::string bytes((2 << 20) + 7, 'x');
    for (const std::size_t at : {std::size_t{0}, std::size_t{1} << 20, bytes.size() - 1}) {
        std::string other = bytes;
        other[at] = 'y';
        EXPECT_EQ(verify(bytes, other), KVVERIFY_CONTENTS_DIFFER) << at;
    }
}

TEST_F(Verify, SizesAreComparedAheadOfTheContents) {
    EXPECT_EQ(verify("abc", "xyzw"), KVVERIFY_SIZES_DIFFER);
    EXPECT_EQ(verify("abcd", "abc"), KVVERIFY_SIZES_DIFFER);
}

TEST_F(Verify, TwoEmptyFilesAreAnEmptyFirstOne) { EXPECT_EQ(verify("", ""), KVVERIFY_FIRST_EMPTY); }

TEST_F(Verify, EmptinessIsToldAheadOfTheSizes) {
    EXPECT_EQ(verify("", "x"), KVVERIFY_FIRST_EMPTY);
    EXPECT_EQ(verify("x", ""), KVVERIFY_SECOND_EMPTY);
    EXPECT_EQ(kvOSVerifyFile(first_.c_str(), "mem://second"), KVVERIFY_SECOND_EMPTY);
}

TEST_F(Verify, OnlyTheFirstOpenIsTested) {
    makeFile(first_, "x");
    CapturedMessages messages;
    EXPECT_EQ(kvOSVerifyFile((scratch_ / "none").c_str(), first_.c_str()), KVVERIFY_NOT_OPENED);
    EXPECT_EQ(kvOSVerifyFile(first_.c_str(), (scratch_ / "none").c_str()), KVVERIFY_SECOND_EMPTY);
    EXPECT_EQ(kvOSVerifyFile(nullptr, first_.c_str()), KVVERIFY_NOT_OPENED);
    EXPECT_EQ(kvOSVerifyFile(first_.c_str(), nullptr), KVVERIFY_SECOND_EMPTY);
}

TEST_F(Verify, AFirstFileThatCanNotBeReadEndsTheComparison) {
    std::filesystem::create_directory(first_);  // opens, has some size, and can't be read
    std::filesystem::create_directory(second_);
    CapturedMessages messages;
    const std::uint32_t result = kvOSVerifyFile(first_.c_str(), second_.c_str());
    EXPECT_TRUE(result == KVVERIFY_SAME || result == KVVERIFY_FIRST_EMPTY) << result;  // copy_network_test has a fault
}

}  // namespace
