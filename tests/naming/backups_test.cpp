// Rings of backups.
#include <cerrno>
#include <cstring>
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

class Backups : public ::testing::Test {
protected:
    std::string backup(int number, const char* ext = "xml") const {
        char name[32];
        std::snprintf(name, sizeof name, "a.%03d.%s", number, ext);
        return scratch_ / name;
    }
    static bool exists(const std::string& path) { return std::filesystem::exists(path); }

    /// The name that a path gets, or the result where that is not 0.
    static std::string found(const std::string& path, std::int32_t index, std::uint32_t maxLength = 4096) {
        char buffer[4096];
        std::snprintf(buffer, sizeof buffer, "%s", path.c_str());
        const std::int32_t result = GetFileBackups(buffer, maxLength, index);
        if (result != 0) {
            EXPECT_EQ(buffer, path);
        }
        return result == 0 ? buffer : std::to_string(result);
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Backups, TheNewestIsNumberZeroAndOthersMoveOn) {
    for (const char* content : {"one", "two", "three", "four"}) {
        makeFile(file_, content);
        EXPECT_EQ(MakeFileBackups(file_.c_str(), 3), 0);
    }
    EXPECT_EQ(contentOf(backup(0)), "four");
    EXPECT_EQ(contentOf(backup(1)), "three");
    EXPECT_EQ(contentOf(backup(2)), "two");
    EXPECT_FALSE(exists(backup(3)));
    EXPECT_EQ(contentOf(file_), "four");
}

TEST_F(Backups, TheNumberBehindTheRingIsDeleted) {
    makeFile(file_, "new");
    makeFile(backup(3), "beyond");
    makeFile(backup(4), "further");
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 3), 0);
    EXPECT_FALSE(exists(backup(3)));
    EXPECT_TRUE(exists(backup(4)));
}

TEST_F(Backups, GapsStayGaps) {
    makeFile(file_, "new");
    makeFile(backup(1), "older");
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 5), 0);
    EXPECT_EQ(contentOf(backup(0)), "new");
    EXPECT_FALSE(exists(backup(1)));
    EXPECT_EQ(contentOf(backup(2)), "older");
}

TEST_F(Backups, CountsOfZeroAndOneKeepOneAndDeleteTheNext) {
    for (const std::uint32_t count : {0u, 1u}) {
        makeFile(file_, "new");
        makeFile(backup(0), "older");
        makeFile(backup(1), "oldest");
        EXPECT_EQ(MakeFileBackups(file_.c_str(), count), 0);
        EXPECT_EQ(contentOf(backup(0)), "new");
        EXPECT_FALSE(exists(backup(1)));
    }
}

TEST_F(Backups, TheCountIsAtMost999) {
    makeFile(file_, "new");
    makeFile(backup(997), "old");
    makeFile(backup(999), "beyond");
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 5000), 0);
    EXPECT_EQ(contentOf(backup(998)), "old");
    EXPECT_FALSE(exists(backup(999)));
    EXPECT_FALSE(exists(scratch_ / "a.1000.xml"));
}

TEST_F(Backups, AnAbsentFileIsNoFailure) {
    makeFile(backup(0), "old");
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 5), 0);
    EXPECT_EQ(contentOf(backup(0)), "old");
    EXPECT_EQ(MakeFileBackups(nullptr, 5), -1);
    EXPECT_EQ(MakeFileBackups("", 5), 0);
}

TEST_F(Backups, AnEmptyFileIsBackedUpAsItIs) {
    makeFile(file_);
    CapturedMessages messages;
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 2), 0);
    EXPECT_EQ(MakeFileBackups(file_.c_str(), 2), 0);
    EXPECT_TRUE(exists(backup(0)) && exists(backup(1)));
    EXPECT_EQ(messages.text(), "");
}

TEST_F(Backups, OtherExtensionsAndNoneLieBesideTheFileToo) {
    for (const char* ext : {"edl", "log"}) {
        makeFile(scratch_ / ("a." + std::string(ext)), ext);
        EXPECT_EQ(MakeFileBackups((scratch_ / ("a." + std::string(ext))).c_str(), 2), 0);
        EXPECT_EQ(contentOf(backup(0, ext)), ext);
    }
    makeFile(scratch_ / "bare", "x");
    EXPECT_EQ(MakeFileBackups((scratch_ / "bare").c_str(), 2), 0);
    EXPECT_EQ(contentOf(scratch_ / "bare.000."), "x");
}

TEST_F(Backups, ANameWithoutFolderHasItsBackupsBesideItself) {
    std::filesystem::current_path(scratch_.path());
    makeFile("a.xml", "x");
    EXPECT_EQ(MakeFileBackups("a.xml", 2), 0);
    EXPECT_EQ(contentOf("a.000.xml"), "x");
    EXPECT_EQ(found("a.xml", 0), "a.000.xml");
}

TEST_F(Backups, WhereNamesCanNotChangeTheNewestIsOverwrittenAndTheFailureTold) {
    makeFile(file_, "new");
    makeFile(backup(0), "older");
    ASSERT_EQ(chmod(backup(0).c_str(), 0666), 0);
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(scratch_.path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(file_.c_str(), 0644), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        CapturedMessages messages;
        return MakeFileBackups(file_.c_str(), 3) == 0 && messages.count("\nError backing up config FALSE (13) ") == 1;
    }));
    EXPECT_EQ(contentOf(backup(0)), "new");
}

TEST_F(Backups, AreFoundByTheirNumber) {
    makeFile(backup(0), "x");
    makeFile(backup(998), "x");
    EXPECT_EQ(found(file_, 0), backup(0));
    EXPECT_EQ(found(file_, 998), backup(998));
    EXPECT_EQ(found(file_, 1), "-1");
    EXPECT_EQ(GetFileBackups(nullptr, 4096, 0), -1);
}

TEST_F(Backups, NumbersOutsideMeanTheLast) {
    EXPECT_EQ(found(file_, -1), "-1");
    makeFile(backup(999), "x");
    for (const std::int32_t index : {-1, 999, 1000, INT32_MIN, INT32_MAX}) EXPECT_EQ(found(file_, index), backup(999));
}

TEST_F(Backups, ANameLongerThanTheLimitLeavesTheBuffer) {
    makeFile(backup(0), "x");
    const auto length = static_cast<std::uint32_t>(backup(0).size());
    EXPECT_EQ(found(file_, 0, length), backup(0));
    EXPECT_EQ(found(file_, 0, length - 1), "-2");
}

TEST_F(Backups, NamesOnTheListCountAsPresent) {
    const std::string name = backup(7);
    gvecNames.push_back(name.c_str());
    EXPECT_EQ(found(file_, 7), name);
    gvecNames.clear();
}

TEST_F(Backups, PathsThatDoNotFitAreNotThere) {
    EXPECT_EQ(found("/" + std::string(4093, 'x'), 0), "-1");
    EXPECT_EQ(MakeFileBackups(std::string(5000, 'x').c_str(), 5), 0);
}

// ---- contents ----------------------------------------------------------------------------------------------------

TEST_F(Backups, ContentsAreOverwrittenInPlace) {
    const std::string target = scratch_ / "target";
    for (const char* old : {"", "short", "much longer than the source is"}) {
        makeFile(target, old);
        makeFile(file_, "the source");
        struct stat before;
        struct stat after;
        ASSERT_EQ(stat(target.c_str(), &before), 0);
        DuplicateContents(target.c_str(), file_.c_str());
        ASSERT_EQ(stat(target.c_str(), &after), 0);
        EXPECT_EQ(contentOf(target), "the source");
        EXPECT_EQ(before.st_ino, after.st_ino);
    }
}

TEST_F(Backups, AnEmptySourceOrAMissingOneLeavesTheContents) {
    const std::string target = scratch_ / "target";
    makeFile(target, "kept");
    makeFile(file_);
    CapturedMessages messages;
    DuplicateContents(target.c_str(), file_.c_str());
    DuplicateContents(target.c_str(), (scratch_ / "none").c_str());
    DuplicateContents(nullptr, file_.c_str());
    DuplicateContents(target.c_str(), nullptr);
    EXPECT_EQ(contentOf(target), "kept");
}

TEST_F(Backups, LargeContentsArriveWhole) {
    std::string large(5 << 20, 'x');
    for (std::size_t i = 0; i < large.size(); i += 997) large[i] = static_cast<char>(i);
    makeFile(file_, large);
    makeFile(scratch_ / "target", "old");
    DuplicateContents((scratch_ / "target").c_str(), file_.c_str());
    EXPECT_TRUE(contentOf(scratch_ / "target") == large);
}

}  // namespace
