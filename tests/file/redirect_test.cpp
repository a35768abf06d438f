// The one redirect of the process.
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "kvcfg.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/locator.h"
#include "kvos/sync.h"
#include "support/scratch.h"

namespace {

void setRedirect(std::string* source, std::string* newDir) {
    gszReDir_Source = source == nullptr ? nullptr : source->data();
    gszReDir_NewDir = newDir == nullptr ? nullptr : newDir->data();
}

std::string redirect(const std::string& path) {
    char target[4096] = "untouched";
    kvOSReDir(path.c_str(), target);
    return target;
}

class Redirect : public ::testing::Test {
protected:
    ~Redirect() override { setRedirect(nullptr, nullptr); }
    std::string source_ = "/vol1";
    std::string newDir_ = "/vol2";
};

}  // namespace

TEST_F(Redirect, ThereIsNoneAtStart) {
    EXPECT_EQ(gszReDir_Source, nullptr);
    EXPECT_EQ(gszReDir_NewDir, nullptr);
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    EXPECT_EQ(redirect(""), "");
}

TEST_F(Redirect, ReplacesAPrefixInAnyCase) {
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(redirect("/VOL1/a"), "/vol2/a");
    EXPECT_EQ(redirect("/vol1"), "/vol2");
    EXPECT_EQ(redirect("/vol"), "/vol");
    EXPECT_EQ(redirect("x/vol1/a"), "x/vol1/a");
}

TEST_F(Redirect, TheMatchIsABarePrefix) {
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(redirect("/vol10/a"), "/vol20/a");
}

TEST_F(Redirect, NeedsBothTexts) {
    setRedirect(&source_, nullptr);
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    setRedirect(nullptr, &newDir_);
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
}

TEST_F(Redirect, TheResultIsNotMatchedAgainAndNoSeparatorIsAdded) {
    newDir_ = "/vol1/vol1";
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(redirect("/vol1a"), "/vol1/vol1a");
}

TEST_F(Redirect, AnEmptyReplacementRemovesThePrefix) {
    newDir_ = "";
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(redirect("/vol1/a"), "/a");
    EXPECT_EQ(redirect("/vol1"), "");
}

TEST_F(Redirect, ANullTargetIsLeftAndANullSourceGivesAnEmptyText) {
    kvOSReDir("/a", nullptr);
    char target[4096] = "untouched";
    errno = 0;
    kvOSReDir(nullptr, target);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_STREQ(target, "");
}

TEST_F(Redirect, WhatDoesNotFitLeavesTheTargetEmpty) {
    newDir_ = "/a longer one";
    setRedirect(&source_, &newDir_);
    errno = 0;
    EXPECT_EQ(redirect("/vol1" + std::string(4095 - newDir_.size(), 'x')).size(), 4095u);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(redirect("/vol1" + std::string(4096 - newDir_.size(), 'x')), "");
    EXPECT_EQ(errno, ENAMETOOLONG);
    errno = 0;
    EXPECT_EQ(redirect(std::string(4096, 'x')), "");
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(redirect(std::string(4095, 'x')).size(), 4095u);
}

TEST_F(Redirect, MovesAWholeTreeUnseenByTheCallsByName) {
    kvtest::ScratchFolder scratch;
    newDir_ = scratch.path();
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(kvOSMakeDir("/vol1/folder", 0), 0);
    EXPECT_EQ(kvOSSaveBuffer("/vol1/folder/a", "abc", 3), 3u);
    EXPECT_EQ(kvtest::contentOf(scratch / "folder/a"), "abc");
    EXPECT_EQ(kvOSFileExists("/VOL1/folder/a"), 1u);
    EXPECT_EQ(kvOSFileIsDir("/vol1/folder"), 1u);
    EXPECT_EQ(kvOSGetFileAttributes("/vol1/folder/a"), KVATTR_NORMAL);
    EXPECT_GT(kvOSFileTimeModified("/vol1/folder/a"), 0);
    EXPECT_EQ(kvOSRenameFile("/vol1/folder/a", "/vol1/folder/b"), 0);
    EXPECT_EQ(kvOSDeleteFile("/vol1/folder/b"), 1u);
    EXPECT_EQ(kvOSChangeDir("/vol1/folder"), 0);
    char cwd[4096];
    EXPECT_EQ(kvOSGetCWD(cwd), 0u);
    EXPECT_STREQ(cwd, (scratch / "folder").c_str());
}

TEST_F(Redirect, AttributesAndTimesAreThoseOfTheRedirectedFile) {
    kvtest::ScratchFolder scratch;
    source_ = scratch / "given";
    newDir_ = scratch / "meant";
    std::filesystem::create_directory(newDir_);
    kvtest::makeFile(newDir_ + "/clip");
    ASSERT_EQ(chmod((newDir_ + "/clip").c_str(), 0444), 0);
    setRedirect(&source_, &newDir_);
    const std::string clip = source_ + "/clip";
    EXPECT_EQ(kvOSGetFileAttributes(clip.c_str()), KVATTR_READONLY);
    EXPECT_EQ(kvOSFileIsReadOnly(clip.c_str()), 1u);
    EXPECT_EQ(kvOSSetFileReadOnly(clip.c_str(), 0), 1u);
    EXPECT_EQ(kvOSFileIsReadOnly(clip.c_str()), 0u);
    EXPECT_EQ(kvOSGetFileAttributes(clip.c_str()), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes(source_.c_str()), KVATTR_DIRECTORY);
    for (auto* time : {kvOSFileTimeCreated, kvOSFileTimeModified, kvOSFileTimeAccessed})
        EXPECT_GT(time(clip.c_str()), 0);
}

TEST_F(Redirect, DecidesWhatIsANetworkPath) {
    source_ = "/vol1";
    newDir_ = "http://127.0.0.1:1";
    setRedirect(&source_, &newDir_);
    EXPECT_EQ(kvOSFileTimeModified("/vol1/a"), KVFILETIME_NETWORK);
    EXPECT_EQ(kvOSMakeDir("/vol1/a", 0), -1);
    EXPECT_EQ(kvOSDeleteFile("/vol1/a"), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSSetFileReadOnly("/vol1/a", 1), 0xFFFFFFFFu);
    gvecNames = {"http://127.0.0.1:1/a/"};  // this list is asked with the redirected text
    EXPECT_EQ(kvOSGetFileAttributes("/vol1/a/"), KVATTR_DIRECTORY);
    gvecNames.clear();
}

TEST_F(Redirect, ADirectoryRemovalRedirectsTwice) {
    kvtest::ScratchFolder scratch;
    std::filesystem::create_directories(scratch / "in/in");
    source_ = scratch.path();
    newDir_ = scratch / "in";
    setRedirect(&source_, &newDir_);
    kvtest::makeFile(scratch / "in/once");
    kvtest::makeFile(scratch / "in/in/once");
    EXPECT_EQ(kvOSRemoveDirectory((scratch / "once").c_str()), 1u);
    EXPECT_TRUE(std::filesystem::exists(scratch / "in/once"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "in/in/once"));
}

// ---- from the settings -------------------------------------------------------------------------------------------

namespace {

class RedirectFromSettings : public ::testing::Test {
protected:
    static void set(const char* name, std::string text) {
        std::uint32_t length = 0;
        kvCFGValueString(KVSTDCONFIG, "MediaKiln\\Advanced", name, text.data(), &length, 1);
    }
};

}  // namespace

TEST_F(RedirectFromSettings, NoCallOpensTheStoreForIt) {
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
}

TEST_F(RedirectFromSettings, IsReadByTheFirstCallAfterTheStoreWasOpened) {
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    EXPECT_EQ(redirect("/VOL1/a"), "/vol2/a");
    EXPECT_STREQ(gszReDir_Source, "/vol1");
    EXPECT_STREQ(gszReDir_NewDir, "/vol2");
}

TEST_F(RedirectFromSettings, WhatIsSetLaterIsNotSeenAndWhatWasReadStays) {
    set("ReDir_Source", "/vol1");
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");  // one of the two is not enough
    set("ReDir_NewDir", "/vol2");
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    kvCFGClose(KVSTDCONFIG, 0);
    EXPECT_STREQ(gszReDir_Source, "/vol1");
    EXPECT_EQ(gszReDir_NewDir, nullptr);
}

TEST_F(RedirectFromSettings, AHostsSourceIsReplaced) {
    std::string mine = "/mine";
    gszReDir_Source = mine.data();
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    EXPECT_EQ(redirect("/vol1/a"), "/vol2/a");
    EXPECT_EQ(redirect("/mine/a"), "/mine/a");
}

TEST_F(RedirectFromSettings, AHostsReplacementCostsTheSourceThatWasRead) {
    std::string mine = "/mine";
    gszReDir_NewDir = mine.data();
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    EXPECT_EQ(redirect("/vol1/a"), "/vol1/a");
    EXPECT_EQ(gszReDir_Source, nullptr);
    EXPECT_STREQ(gszReDir_NewDir, "/vol2");
}

TEST_F(RedirectFromSettings, AMissingOneLeavesTheHosts) {
    std::string mine = "/mine";
    gszReDir_NewDir = mine.data();
    set("ReDir_Source", "/vol1");
    EXPECT_EQ(redirect("/vol1/a"), "/mine/a");
}

TEST_F(RedirectFromSettings, IsReadByACallWithoutATargetAsWell) {
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    kvOSReDir("/vol1/a", nullptr);
    EXPECT_STREQ(gszReDir_Source, "/vol1");
    EXPECT_STREQ(gszReDir_NewDir, "/vol2");
}

TEST_F(RedirectFromSettings, NoThreadGoesOnWithoutItWhileAnotherReads) {
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    constexpr int kThreads = 8;
    std::atomic<int> begun{0};
    std::vector<std::string> results(kThreads);
    std::vector<std::thread> threads;
    {
        const CDAutoLock noneReadsYet(&kvCFGDefaultIfOpen()->lock);
        for (std::string& result : results) {
            threads.emplace_back([&] {
                begun.fetch_add(1);
                result = redirect("/vol1/a");
            });
        }
        while (begun.load() < kThreads) std::this_thread::yield();
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& result : results) EXPECT_EQ(result, "/vol2/a");
}

TEST_F(RedirectFromSettings, TheThreadThatHoldsTheStoreReadsItWhileOthersWaitForIt) {
    set("ReDir_Source", "/vol1");
    set("ReDir_NewDir", "/vol2");
    std::atomic<bool> hasBegun{false};
    std::string others;
    std::string mine;
    std::thread other;
    {
        const CDAutoLock held(&kvCFGDefaultIfOpen()->lock);
        other = std::thread([&] {
            hasBegun.store(true);
            others = redirect("/vol1/a");
        });
        while (!hasBegun.load()) std::this_thread::yield();
        mine = redirect("/vol1/a");
    }
    other.join();
    EXPECT_EQ(mine, "/vol2/a");
    EXPECT_EQ(others, "/vol2/a");
}
