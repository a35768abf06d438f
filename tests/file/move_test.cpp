// The move of a file.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "kvos/copy.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

class Move : public ::testing::Test {
protected:
    std::uint32_t move() const { return kvOSMoveFile(from_.c_str(), to_.c_str()); }

    ScratchFolder scratch_;
    std::string from_ = scratch_ / "from";
    std::string to_ = scratch_ / "to";
};

TEST_F(Move, CopiesAndDeletesTheSource) {
    makeFile(from_, "bytes");
    makeFile(to_, "old");
    EXPECT_EQ(move(), 1u);
    EXPECT_EQ(contentOf(to_), "bytes");
    EXPECT_FALSE(std::filesystem::exists(from_));
}

TEST_F(Move, AMissingSourceGivesZeroAndTheDeleteIsTried) {
    CapturedMessages messages;
    EXPECT_EQ(move(), 0u);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
    EXPECT_EQ(messages.count("kvOSDeleteFile failed error = -1 "), 1u);
}

TEST_F(Move, ACopyThatFailedCostsTheSourceAllTheSame) {
    makeFile(from_, "bytes");
    CapturedMessages messages;
    EXPECT_EQ(kvOSMoveFile(from_.c_str(), "/no/such/folder/to"), 0u);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(std::filesystem::exists(from_));
}

TEST_F(Move, AMultipleOfAMebibyteIsMovedAndGivesZero) {
    makeFile(from_, std::string(1 << 20, 'x'));
    EXPECT_EQ(move(), 0u);
    EXPECT_EQ(std::filesystem::file_size(to_), std::uintmax_t{1} << 20);
    EXPECT_FALSE(std::filesystem::exists(from_));
}

TEST_F(Move, AFileMovedOntoItselfIsLost) {
    makeFile(from_, "bytes");
    CapturedMessages messages;
    EXPECT_EQ(kvOSMoveFile(from_.c_str(), from_.c_str()), 0u);
    EXPECT_FALSE(std::filesystem::exists(from_));
}

TEST_F(Move, NullIsRefused) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSMoveFile(nullptr, to_.c_str()), 0u);
    EXPECT_EQ(errno, EINVAL);
}

}  // namespace
