// Files that may well be good, but can't be read for the moment or by this user: nothing takes their place.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/stat.h>

#include "config/open_store.h"
#include "errlog.h"
#include "file/ordinary_user.h"
#include "support/captured_messages.h"
#include "support/sanitizers.h"

namespace {

using namespace kvtest;

constexpr const char* kNotOpened = "Can not save : Config not opened";

/// No descriptor is free for as long as the object lives.
class NoDescriptor {
public:
    NoDescriptor() {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
        rlimit none = before_;
        none.rlim_cur = 0;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~NoDescriptor() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptor(const NoDescriptor&) = delete;
    NoDescriptor& operator=(const NoDescriptor&) = delete;

private:
    rlimit before_{};
};

/// What kvCFGOpen gives, closed at once, with errno as it left it.
bool canBeOpened(const std::string& file, std::uint32_t flags = 0) {
    errno = 0;
    KVTiXmlConfig* const store = kvCFGOpen(file.c_str(), flags);
    if (store != nullptr) kvCFGClose(store, 0);
    return store != nullptr;
}

class Unreadable : public ::testing::Test {
protected:
    Unreadable() { makeFile(file_, good_); }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(scratch_.path())) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
    std::string backup_ = scratch_ / "a.000.xml";
    std::string good_ = configWith("<K Type=\"0\"><D Value=\"1\" Type=\"2\" /></K>");
    std::string older_ = configWith("<Older Type=\"0\" />");
};

TEST_F(Unreadable, WithoutAFreeDescriptorNothingIsTouchedAndALaterOpenSucceeds) {
    if (kAddressSanitizer) GTEST_SKIP() << "the checks of undefined behaviour need a descriptor";
    makeFile(backup_, older_);
    for (const std::uint32_t flags : {0u, KVCFG_NO_BACKUPS}) {
        const NoDescriptor none;
        EXPECT_FALSE(canBeOpened(file_, flags));
        EXPECT_EQ(errno, EMFILE);
    }
    EXPECT_EQ(contentOf(file_), good_);
    EXPECT_EQ(contentOf(backup_), older_);
    EXPECT_EQ(files(), (std::vector<std::string>{"a.000.xml", "a.xml"}));
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "K", "D"), 1u);
}

TEST_F(Unreadable, AFileThatThisUserMayNotReadIsNotPushedAside) {
    makeFile(backup_, older_);
    openToAll(scratch_.path());
    std::filesystem::permissions(scratch_.path(), std::filesystem::perms::all);
    ASSERT_EQ(chmod(file_.c_str(), 0), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        return !canBeOpened(file_) && errno == EACCES && !canBeOpened(file_, KVCFG_NO_BACKUPS) && errno == EACCES;
    }));
    ASSERT_EQ(chmod(file_.c_str(), 0600), 0);
    EXPECT_EQ(contentOf(file_), good_);
    EXPECT_EQ(contentOf(backup_), older_);
    EXPECT_EQ(files(), (std::vector<std::string>{"a.000.xml", "a.xml"}));
}

TEST_F(Unreadable, ALinkThatLeadsToItselfStays) {
    const std::string loop = scratch_ / "loop.xml";
    std::filesystem::create_symlink(loop, loop);
    makeFile(scratch_ / "loop.000.xml", older_);
    EXPECT_FALSE(canBeOpened(loop));
    EXPECT_EQ(errno, ELOOP);
    EXPECT_TRUE(std::filesystem::is_symlink(loop));
    EXPECT_EQ(contentOf(scratch_ / "loop.000.xml"), older_);
}

TEST_F(Unreadable, InAFolderThatCanNotBeEnteredAStoreLivesInMemory) {
    const std::string folder = scratch_ / "closed";
    std::filesystem::create_directory(folder);
    makeFile(folder + "/a.xml", good_);
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(folder.c_str(), 0), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        OpenStore store(folder + "/a.xml");
        return store.isOpen() && kvCFGKeyExists(store, "a") == 1;
    }));
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
    EXPECT_EQ(contentOf(folder + "/a.xml"), good_);
}

TEST_F(Unreadable, ADamagedFileStaysWhileNoBackupIsGoodAndOneCanNotBeRead) {
    for (const bool isMissing : {false, true}) {
        makeFile(file_, "<broken");
        if (isMissing) std::filesystem::remove(file_);
        makeFile(scratch_ / "a.001.xml", "<broken too");
        std::filesystem::remove(backup_);
        makeFile(backup_, configWith("<K Type=\"0\"><S Type=\"1\">&#8364;</S></K>"));
        const auto before = files();
        EXPECT_FALSE(canBeOpened(file_));
        EXPECT_EQ(errno, EILSEQ);
        EXPECT_EQ(files(), before);
        EXPECT_TRUE(isMissing || contentOf(file_) == "<broken");
    }
}

TEST_F(Unreadable, ABackupThatCanNotBeReadIsPassedOverForAGoodOne) {
    makeFile(file_, "<broken");
    makeFile(backup_, configWith("<K Type=\"0\"><S Type=\"1\">&#8364;</S></K>"));
    makeFile(scratch_ / "a.001.xml", older_);
    EXPECT_TRUE(canBeOpened(file_));
    EXPECT_EQ(contentOf(file_), older_);
    EXPECT_TRUE(std::filesystem::exists(backup_));
}

TEST_F(Unreadable, AtASaveTheChangesStayInMemoryAndTheFileIsAsItWas) {
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    KVTiXmlConfig* const handle = store;
    {
        const NoDescriptor none;
        EXPECT_EQ(handle->SaveConfig(), 0u);
    }
    EXPECT_EQ(contentOf(file_), good_);
    EXPECT_EQ(handle->SaveConfig(), 1u);
    EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
}

// ---- the default store -------------------------------------------------------------------------------------------

TEST_F(DefaultStore, WhileItsFileCanNotBeReadEveryCallFailsAndALaterOneOpensIt) {
    const std::string before = configWith(
        "<ZMW Type=\"0\"><Config Type=\"0\"><DisableSave Value=\"0\" Type=\"2\" /></Config>"
        "<D Value=\"7\" Type=\"2\" /></ZMW>");
    makeFile(path(), before);
    _ReadRegSettings();  // so that the report below is not the first use
    ASSERT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
    CapturedMessages messages;
    {
        const NoDescriptor none;
        std::uint32_t value = 5;
        char text[64] = "";
        errno = 0;
        EXPECT_EQ(kvCFGCheckHandle(KVSTDCONFIG), nullptr);
        EXPECT_EQ(errno, EMFILE);
        errno = 0;
        EXPECT_EQ(kvCFGValueDword(KVSTDCONFIG, "ZMW", "D", &value, 0), kFailed);
        EXPECT_EQ(errno, EMFILE);
        EXPECT_EQ(kvCFGValueDword(KVSTDCONFIG, "ZMW", "D", &value, 1), kFailed);
        EXPECT_EQ(kvCFGValueString(KVSTDCONFIG, "ZMW", "S", text, &value, 1), kFailed);
        EXPECT_EQ(kvCFGValueBinary(KVSTDCONFIG, "ZMW", "B", text, &value, 1), 0u);
        EXPECT_EQ(kvCFGAddKeyDword(KVSTDCONFIG, "ZMW", "N", 1, nullptr), kFailed);
        EXPECT_EQ(kvCFGAddKeyString(KVSTDCONFIG, "ZMW", "N", "x", 1, nullptr), kFailed);
        EXPECT_EQ(kvCFGDeleteValue(KVSTDCONFIG, "ZMW", "D"), kFailed);
        EXPECT_EQ(kvCFGRenameKey(KVSTDCONFIG, "ZMW", "D", "E"), kFailed);
        EXPECT_EQ(kvCFGCopyBranch(KVSTDCONFIG, "ZMW\\D", "E"), kFailed);
        EXPECT_EQ(kvCFGKeyExists(KVSTDCONFIG, "ZMW"), 0u);
        EXPECT_EQ(kvCFGGetNext(KVSTDCONFIG, nullptr, text, "", nullptr), kFailed);
        EXPECT_EQ(kvCFGDefaultZMW(KVSTDCONFIG), kFailed);
        EXPECT_EQ(kvCFGPath(KVSTDCONFIG, text), kFailed);
        EXPECT_EQ(kvCFGIsModified(KVSTDCONFIG), 0u);
        EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
        EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 0u);
        EXPECT_EQ(messages.text(), "");
        EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 1), kFailed);
        EXPECT_EQ(kvCFGSaveAs(KVSTDCONFIG, "b.xml", 1), kFailed);
        EXPECT_EQ(messages.count(kNotOpened), 2u);
    }
    EXPECT_EQ(contentOf(path()), before);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW", "D"), 7u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 0u);  // the calls that failed left no user behind
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    EXPECT_EQ(contentOf(path()), before);
}

TEST_F(DefaultStore, AFirstReportWhileItsFileCanNotBeReadLeavesTheFile) {
    if (kAddressSanitizer) GTEST_SKIP() << "the checks of undefined behaviour need a descriptor";
    const std::string before = configWith("<ZMW Type=\"0\" />");
    makeFile(path(), before);
    CapturedMessages messages;
    {
        const NoDescriptor none;
        ErrOut("%s", "first of all");
    }
    EXPECT_EQ(messages.count("first of all"), 1u);
    EXPECT_EQ(contentOf(path()), before);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
}

TEST(WithoutConfigDirectory, ADefaultStoreBelowAHomeThatCanNotBeEnteredLivesInMemory) {
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "there is one for all users here";
    const ScratchFolder scratch;
    openToAll(scratch.path());
    std::filesystem::create_directory(scratch / "home");
    ASSERT_EQ(chmod((scratch / "home").c_str(), 0), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        setenv("HOME", (scratch / "home").c_str(), 1);
        return dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn") == 6u;
    }));
    ASSERT_EQ(chmod((scratch / "home").c_str(), 0700), 0);
}

}  // namespace
