// The new file beside the old one: its name may be taken, by what a killed process left or by what somebody planted.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

class ReplaceFile : public ::testing::Test {
protected:
    ReplaceFile() { makeFile(file_, configWith("<K Type=\"0\"><D Value=\"1\" Type=\"2\" /></K>")); }

    /// The names that this process gives to its new files, one after the other.
    std::string nameOf(int number) const {
        return std::filesystem::canonical(file_).string() + "." + std::to_string(getpid()) + "-" +
               std::to_string(number) + ".new";
    }

    void expectSaved() const {
        OpenStore store(file_);
        setDword(store, "K", "D", 2);
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
        EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
        EXPECT_FALSE(std::filesystem::is_symlink(file_));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(ReplaceFile, APlantedLinkIsNotFollowedNorTakenAway) {
    const std::string victim = scratch_ / "victim";
    makeFile(victim, "precious");
    ASSERT_EQ(chmod(victim.c_str(), 0600), 0);
    for (int number = 0; number < 3; ++number) std::filesystem::create_symlink(victim, nameOf(number));
    std::filesystem::create_symlink(scratch_ / "nothing yet", nameOf(3));
    expectSaved();
    EXPECT_EQ(contentOf(victim), "precious");
    struct stat status;
    ASSERT_EQ(stat(victim.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0600u);
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "nothing yet"));
    for (int number = 0; number < 4; ++number) EXPECT_TRUE(std::filesystem::is_symlink(nameOf(number))) << number;
}

TEST_F(ReplaceFile, AFileOfAnotherProcessIsNeitherWrittenNorRenamed) {
    makeFile(nameOf(0), "half a");
    makeFile(nameOf(1), "");
    struct stat before, after;
    ASSERT_EQ(stat(file_.c_str(), &before), 0);
    const int kept = open(file_.c_str(), O_RDONLY | O_CLOEXEC);  // so that the number of its inode is not given again
    expectSaved();
    ASSERT_EQ(stat(file_.c_str(), &after), 0);
    close(kept);
    EXPECT_NE(after.st_ino, before.st_ino);  // the next name was free: not written in place
    EXPECT_EQ(contentOf(nameOf(0)), "half a");
    EXPECT_EQ(contentOf(nameOf(1)), "");
    EXPECT_FALSE(std::filesystem::exists(nameOf(2)));
}

TEST_F(ReplaceFile, WithAHundredNamesTakenTheFileIsWrittenInPlace) {
    for (int number = 0; number < 100; ++number) makeFile(nameOf(number), "left");
    struct stat before, after;
    ASSERT_EQ(stat(file_.c_str(), &before), 0);
    expectSaved();
    ASSERT_EQ(stat(file_.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    for (int number = 0; number < 100; ++number) EXPECT_EQ(contentOf(nameOf(number)), "left") << number;
}

}  // namespace
