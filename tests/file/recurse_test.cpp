// The walk over a directory tree.
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/find.h"
#include "kvos/locator.h"
#include "support/scratch.h"
#include "tests/file/deep_folder.h"

namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

/// What a walk called back for, and what it is answered.
struct Visits {
    std::string top;
    Texts paths;
    std::map<std::string, std::uint32_t> attributes;
    std::map<std::string, std::uint32_t> answers;  // 0 where there is none
};

std::uint32_t visit(void* context, const char* path, std::uint32_t attributes) {
    auto& visits = *static_cast<Visits*>(context);
    const std::string below = std::string(path).substr(visits.top.size());
    visits.paths.push_back(below);
    visits.attributes[below] = attributes;
    const auto answer = visits.answers.find(below);
    return answer == visits.answers.end() ? 0 : answer->second;
}

class Recurse : public ::testing::Test {
protected:
    Recurse() {
        fs::create_directories(scratch_ / "d1/d2");
        fs::create_directory(scratch_ / "e");
        for (const char* name : {"a", "z", ".h", "d1/x", "d1/d2/y", "e/[w]"}) kvtest::makeFile(scratch_ / name);
        visits_.top = scratch_.path() + "/";
    }

    std::uint32_t walk(std::uint32_t flags) {
        return kvOSRecurseDirectory(&visits_, scratch_.path().c_str(), visit, flags);
    }

    kvtest::ScratchFolder scratch_;
    Visits visits_;
};

}  // namespace

TEST_F(Recurse, WithoutFlagsCallsBackForTheFilesOfTheDirectory) {
    EXPECT_EQ(walk(0), 0u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "z"}));
    EXPECT_EQ(visits_.attributes["a"], KVATTR_NORMAL);
}

TEST_F(Recurse, GoesIntoDirectoriesWithADoubleSlash) {
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "d1//d2//y", "d1//x", "e//[w]", "z"}));
}

TEST_F(Recurse, AGivenFinalSlashIsDoubledToo) {
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, visits_.top.c_str(), visit, 0), 0u);
    EXPECT_EQ(visits_.paths, (Texts{"/.h", "/a", "/z"}));
}

TEST_F(Recurse, CallsBackForDirectoriesAheadOfWhatTheyHold) {
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES | KVRECURSE_REPORT_DIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "d1/", "d1//d2/", "d1//d2//y", "d1//x", "e/", "e//[w]", "z"}));
    EXPECT_EQ(visits_.attributes["d1/"], KVATTR_DIRECTORY);
}

TEST_F(Recurse, ReportsDirectoriesWithoutGoingIn) {
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES | KVRECURSE_SKIP_FILES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{"d1/", "e/"}));
}

TEST_F(Recurse, SkipsFiles) {
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES | KVRECURSE_SKIP_FILES), 0u);
    EXPECT_EQ(visits_.paths, Texts{});
}

TEST_F(Recurse, AResultForADirectoryKeepsTheWalkOutOfItAlone) {
    visits_.answers["d1/"] = 5;
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES | KVRECURSE_REPORT_DIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "d1/", "e/", "e//[w]", "z"}));
}

TEST_F(Recurse, AResultForAFileEndsTheWalkAndIsReturned) {
    visits_.answers["a"] = 7;
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 7u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a"}));
}

TEST_F(Recurse, AResultInASubdirectoryEndsItsWalkAndIsIgnored) {
    visits_.answers["d1//d2//y"] = 7;
    kvtest::makeFile(scratch_ / "d1/d2/z");
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "d1//d2//y", "d1//x", "e//[w]", "z"}));
}

TEST_F(Recurse, TheLastResultIsReturned) {
    visits_.answers["e/"] = 9;
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES | KVRECURSE_SKIP_FILES), 9u);
    visits_.answers = {{"d1/", 9}};
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES | KVRECURSE_SKIP_FILES), 0u);
}

TEST_F(Recurse, OneResultOfADirectoryIsRememberedUntilAnotherFollows) {
    visits_.answers["d1/"] = 0x10000000;
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES), 0x10000000u);
    visits_.answers["e/"] = 3;
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES), 0u);
    visits_.answers["z"] = 4;
    EXPECT_EQ(walk(KVRECURSE_REPORT_DIRECTORIES), 4u);
}

TEST_F(Recurse, WhatIsNeitherFileNorDirectoryCountsAsAFile) {
    ASSERT_EQ(mkfifo((scratch_ / "pipe").c_str(), 0600), 0);
    fs::create_symlink("nowhere", scratch_ / "link");
    walk(KVRECURSE_SUBDIRECTORIES | KVRECURSE_REPORT_DIRECTORIES);
    EXPECT_EQ(visits_.attributes.at("pipe"), KVATTR_INVALID);
    EXPECT_EQ(visits_.attributes.at("link"), 0u);
}

TEST_F(Recurse, RefusesWhatIsNoDirectoryAndAMissingCallback) {
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, (scratch_ / "a").c_str(), visit, 0), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, (scratch_ / "missing").c_str(), visit, 0), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, scratch_.path().c_str(), nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, nullptr, visit, 0), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, std::string(4096, 'x').c_str(), visit, 0), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(visits_.paths, Texts{});
}

TEST_F(Recurse, AnEmptyDirectoryGivesZero) {
    fs::create_directory(scratch_ / "empty");
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, (scratch_ / "empty").c_str(), visit, 1), 0u);
    EXPECT_EQ(visits_.paths, Texts{});
}

TEST_F(Recurse, ADeepTreeIsWalkedToItsEnd) {
    // Deep enough that a path buffer a level would not fit on an ordinary stack.
    const fs::path before = fs::current_path();
    fs::current_path(scratch_ / "e");
    int depth = 0;
    const std::size_t room = 4000 - (scratch_.path().size() + 3);
    for (std::size_t length = 0; length + 3 < room; length += 3, ++depth) {
        fs::create_directory("n");
        fs::current_path("n");
    }
    kvtest::makeFile("deepest");
    fs::current_path(before);
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 0u);
    bool reached = false;
    for (const std::string& path : visits_.paths) reached = reached || path.ends_with("//deepest");
    EXPECT_TRUE(reached) << depth;
}

TEST_F(Recurse, AnEntryWhosePathDoesNotFitMakesTheWalkFail) {
    const std::string folder = kvtest::makeDeepFolder(scratch_.path(), 4080);
    const kvtest::FileNearby fits(folder, "b");
    const kvtest::FileNearby tooLong(folder, std::string(20, 'a'));
    visits_.top = folder + "/";
    errno = 0;
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, folder.c_str(), visit, 0), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(visits_.paths, Texts{"b"});
}

TEST_F(Recurse, AnEntryWhosePathDoesNotFitMakesTheWalkFailFromAnyLevel) {
    const std::string folder = kvtest::makeDeepFolder(scratch_ / "e", 3900);
    const kvtest::FileNearby tooLong(folder, std::string(200, 'a'));
    errno = 0;
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(visits_.paths, (Texts{".h", "a", "d1//d2//y", "d1//x", "e//[w]", "z"}));
}

TEST_F(Recurse, ADirectoryWithoutRoomForItsPatternMakesTheWalkFail) {
    const std::string folder = kvtest::makeDeepFolder(scratch_.path(), 4080);
    const kvtest::FileNearby file(folder, "z");
    visits_.top = folder + "/";
    fs::create_directory(folder + "/" + std::string(9, 'n'));  // two slashes and "*.*" behind it come to 4095
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, folder.c_str(), visit, KVRECURSE_SUBDIRECTORIES), 0u);
    fs::create_directory(folder + "/" + std::string(10, 'n'));
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, folder.c_str(), visit, KVRECURSE_SUBDIRECTORIES), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(visits_.paths, (Texts{"z", "z"}));
}

TEST_F(Recurse, ABackslashIsPartOfAName) {
    for (const char* folder : {"e/a\\b/c\\", "e/ab/c"}) fs::create_directories(scratch_ / folder);
    for (const char* name : {"e/a\\b/own", "e/a\\b/c\\/[d]\\*", "e/ab/other", "e/ab/c/other"}) {
        kvtest::makeFile(scratch_ / name);
    }
    visits_.top = scratch_ / "e/a\\b/";
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, (scratch_ / "e/a\\b").c_str(), visit, KVRECURSE_SUBDIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths, (Texts{"c\\//[d]\\*", "own"}));
}

TEST_F(Recurse, ADirectoryWithoutRoomForItsQuotedPatternMakesTheWalkFail) {
    const std::string folder = kvtest::makeDeepFolder(scratch_.path(), 4080);
    fs::create_directory(folder + "/" + std::string(8, 'n') + "\\");  // one byte more than fits without quoting
    visits_.top = folder + "/";
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, folder.c_str(), visit, KVRECURSE_SUBDIRECTORIES), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(Recurse, ADirectoryWithAWildcardInItsNameIsPassedOver) {
    for (const char* folder : {"q?", "s*"}) {
        fs::create_directory(scratch_ / folder);
        kvtest::makeFile((scratch_ / folder) + "/file");
    }
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES | KVRECURSE_REPORT_DIRECTORIES), 0u);
    EXPECT_EQ(visits_.paths,
              (Texts{".h", "a", "d1/", "d1//d2/", "d1//d2//y", "d1//x", "e/", "e//[w]", "q?/", "s*/", "z"}));
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, (scratch_ / "s*").c_str(), visit, 0), 0u);
    EXPECT_EQ(visits_.paths.size(), 11u);
}

TEST_F(Recurse, ALinkToADirectoryAboveIsWalkedUntilTheSystemRefusesIt) {
    fs::create_directory_symlink(".", scratch_ / "e/back");
    EXPECT_EQ(walk(KVRECURSE_SUBDIRECTORIES), 0u);
    EXPECT_GT(visits_.paths.size(), 20u);
    const bool isRefused = std::ranges::any_of(visits_.attributes, [](const auto& visited) {
        return visited.first.ends_with("//back") && visited.second == 0;
    });
    EXPECT_TRUE(isRefused);
}

TEST_F(Recurse, TestsTheRedirectedDirectoryAndListsTheOneGiven) {
    std::string source = scratch_ / "d1";
    std::string target = scratch_ / "missing";
    gszReDir_Source = source.data();
    gszReDir_NewDir = target.data();
    visits_.top = source + "/";
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, source.c_str(), visit, 0), 0xFFFFFFFFu);
    fs::create_directory(target);
    EXPECT_EQ(kvOSRecurseDirectory(&visits_, source.c_str(), visit, 0), 0u);
    gszReDir_Source = gszReDir_NewDir = nullptr;
    // The attributes are those of the redirected entries, which are not there: even "d2" counts as a file.
    EXPECT_EQ(visits_.paths, (Texts{"d2", "x"}));
    EXPECT_EQ(visits_.attributes["d2"], 0u);
}
