// Saving, its messages and its windows.
#include <cerrno>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "config/open_store.h"
#include "file/ordinary_user.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

constexpr const char* kNotOpened = "Can not save : Config not opened";

class Save : public ::testing::Test {
protected:
    Save() { makeFile(file_, configWith("<K Type=\"0\"><D Value=\"1\" Type=\"2\" /></K>")); }
    ~Save() override { kvCFGDisableSave(0); }

    std::string backup(int number) const { return scratch_ / "a.00" + std::to_string(number) + ".xml"; }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Save, WritesTheFileAndBacksItUpBeforeAndAfter) {
    const std::string before = contentOf(file_);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
    EXPECT_EQ(contentOf(backup(0)), contentOf(file_));
    EXPECT_EQ(contentOf(backup(1)), before);
    EXPECT_FALSE(std::filesystem::exists(backup(2)));
}

TEST_F(Save, KeepsFiveBackups) {
    OpenStore store(file_);
    for (std::uint32_t i = 2; i < 10; ++i) {
        setDword(store, "K", "D", i);
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(std::filesystem::exists(backup(i))) << i;
    EXPECT_FALSE(std::filesystem::exists(backup(5)));
    EXPECT_EQ(contentOf(backup(0)), contentOf(file_));
    EXPECT_EQ(contentOf(backup(1)), contentOf(backup(2)));
}

TEST_F(Save, AnUnmodifiedStoreIsNotWritten) {
    const std::string before = contentOf(file_);
    OpenStore store(file_);
    EXPECT_EQ(kvCFGSave(store, nullptr, 1), 0u);
    EXPECT_EQ(contentOf(file_), before);
    EXPECT_FALSE(std::filesystem::exists(backup(0)));
}

TEST_F(Save, DisabledItDoesNothingUnlessForced) {
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGDisableSave(1), 0u);
    EXPECT_EQ(kvCFGDisableSave(1), 1u);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_EQ(kvCFGSaveAs(store, (scratch_ / "b.xml").c_str(), 0), 0u);
    EXPECT_EQ(kvCFGSave(nullptr, nullptr, 0), 0u);  // the handle is not looked at
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "b.xml"));
    EXPECT_EQ(kvCFGSave(store, nullptr, 1), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(kvCFGDisableSave(0), 1u);
}

TEST_F(Save, DisabledItGoesToAnotherFileWhenForced) {
    const std::string other = scratch_ / "b.xml";
    const std::string third = scratch_ / "c.xml";
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    kvCFGDisableSave(1);
    EXPECT_EQ(kvCFGSaveAs(store, other.c_str(), 1), 0u);
    EXPECT_NE(contentOf(other).find("Value=\"2\""), std::string::npos);
    setDword(store, "K", "D", 3);
    EXPECT_EQ(kvCFGSave(store, third.c_str(), 1), 0u);
    EXPECT_NE(contentOf(third).find("Value=\"3\""), std::string::npos);
    EXPECT_NE(contentOf(other).find("Value=\"2\""), std::string::npos);
}

TEST_F(Save, ByItsOwnPathMakesBackups) {
    const std::string before = contentOf(file_);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSave(store, file_.c_str(), 0), 0u);
    EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
    EXPECT_EQ(contentOf(backup(0)), contentOf(file_));
    EXPECT_EQ(contentOf(backup(1)), before);
}

TEST_F(Save, WhatCountedAsSavedWhileTheFileWasGoneIsNotWrittenLater) {
    const std::string before = contentOf(file_);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    std::filesystem::remove(file_);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    makeFile(file_, before);
    EXPECT_EQ(kvCFGSave(store, nullptr, 1), 0u);
    EXPECT_EQ(contentOf(file_), before);
    makeFile(scratch_ / "other.xml", "<Other/>");
    EXPECT_EQ(kvCFGSaveAs(store, (scratch_ / "other.xml").c_str(), 0), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Save, ARelativePathFollowsTheWorkingDirectory) {
    std::filesystem::current_path(scratch_.path());
    OpenStore store("a.xml");
    std::filesystem::create_directory(scratch_ / "sub");
    makeFile(scratch_ / "sub/a.xml", configWith(""));
    const std::string before = contentOf(file_);
    std::filesystem::current_path(scratch_ / "sub");
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    std::filesystem::current_path(scratch_.path());
    EXPECT_EQ(contentOf(file_), before);
    EXPECT_NE(contentOf(scratch_ / "sub/a.xml").find("Value=\"2\""), std::string::npos);
}

TEST_F(Save, WithoutAStoreItSaysSo) {
    CapturedMessages messages;
    EXPECT_EQ(kvCFGSave(nullptr, nullptr, 0), kFailed);
    EXPECT_EQ(messages.text(), kNotOpened);
    EXPECT_EQ(kvCFGSaveAs(nullptr, "x", 0), kFailed);
    EXPECT_EQ(messages.count(kNotOpened), 2u);
}

TEST_F(Save, AStoreThatIsNotOpenedFailsUnlessOneWasMadeInThisProcess) {
    KVTiXmlConfig unopened;
    EXPECT_EQ(kvCFGSave(&unopened, nullptr, 0), kFailed);
    EXPECT_EQ(kvCFGSaveAs(&unopened, "x", 0), kFailed);
    { OpenStore made(scratch_ / "new.xml"); }
    EXPECT_EQ(kvCFGSave(&unopened, nullptr, 0), 0u);
    EXPECT_EQ(kvCFGSaveAs(&unopened, "x", 0), 0u);
}

TEST_F(Save, AReadOnlyFileIsRefusedWhereThePathIsGiven) {
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    ASSERT_EQ(chmod(file_.c_str(), 0444), 0);
    CapturedMessages messages;
    EXPECT_EQ(kvCFGSave(store, file_.c_str(), 0), 0xFFFFFFFEu);
    EXPECT_EQ(messages.text(), "Can not save : file is read only");
}

TEST_F(Save, AReadOnlyFileIsNotTestedWhereNoPathIsGiven) {
    openToAll(scratch_.path());
    std::filesystem::permissions(scratch_.path(), std::filesystem::perms::all);
    ASSERT_EQ(chmod(file_.c_str(), 0444), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        OpenStore store(file_);
        setDword(store, "K", "D", 2);
        CapturedMessages messages;
        return kvCFGSave(store, nullptr, 0) == kFailed && messages.text() == "Error Saving config file" &&
               store.isOpen() && dwordOf(store, "K", "D") == 2u;
    }));
    EXPECT_NE(contentOf(file_).find("Value=\"1\""), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(backup(0)));  // made ahead of the failure
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
}

TEST_F(Save, InAReadOnlyFolderTheFileIsWrittenInPlaceAndBackupsSayWhatFailed) {
    openToAll(scratch_.path());
    makeFile(backup(0), "old backup");
    ASSERT_EQ(chmod(file_.c_str(), 0666), 0);
    ASSERT_EQ(chmod(backup(0).c_str(), 0666), 0);
    ASSERT_EQ(chmod(scratch_.path().c_str(), 0555), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        OpenStore store(file_);
        setDword(store, "K", "D", 2);
        CapturedMessages messages;
        const bool saved = kvCFGSave(store, nullptr, 0) == 0;
        return saved && messages.count("\nError backing up config FALSE (13) ") == 2;
    }));
    EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
    EXPECT_EQ(contentOf(backup(0)), contentOf(file_));  // overwritten in place
}

TEST_F(Save, AFileThatIsGoneOrDamagedCountsAsSaved) {
    OpenStore store(file_);
    for (const char* content : {"", "<broken", "<Other/>"}) {
        makeFile(file_, content);
        setDword(store, "K", "D", dwordOf(store, "K", "D").value_or(0) + 1);
        CapturedMessages messages;
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u) << content;
        EXPECT_EQ(contentOf(file_), content);
        EXPECT_EQ(kvCFGIsModified(store), 0u);
        EXPECT_EQ(messages.text(), "");
    }
    std::filesystem::remove(file_);
    setDword(store, "K", "D", 99);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(Save, TheMemberTellsWhatItDid) {
    OpenStore store(file_);
    KVTiXmlConfig* handle = store;
    EXPECT_EQ(handle->SaveConfig(), 0u);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(handle->SaveConfig(), 1u);
    EXPECT_EQ(handle->fModified, 0u);
    EXPECT_FALSE(std::filesystem::exists(backup(0)));
    setDword(store, "K", "D", 3);
    makeFile(file_, "<Other/>");
    EXPECT_EQ(handle->SaveConfig(), 0u);
    EXPECT_EQ(handle->fModified, 1u);
}

TEST_F(Save, ModeAndLinkOfTheFileStay) {
    ASSERT_EQ(chmod(file_.c_str(), 0640), 0);
    std::filesystem::create_symlink(file_, scratch_ / "link.xml");
    OpenStore store(scratch_ / "link.xml");
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_TRUE(std::filesystem::is_symlink(scratch_ / "link.xml"));
    EXPECT_NE(contentOf(file_).find("Value=\"2\""), std::string::npos);
    struct stat status;
    ASSERT_EQ(stat(file_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0640u);
    for (const auto& entry : std::filesystem::directory_iterator(scratch_.path())) {
        EXPECT_NE(entry.path().extension(), ".new") << entry.path();
    }
}

TEST_F(Save, ALinkToAFileThatIsNotThereYetStays) {
    const std::string target = scratch_ / "target.xml";
    std::filesystem::create_symlink(target, scratch_ / "link.xml");
    { OpenStore made(scratch_ / "link.xml"); }
    EXPECT_TRUE(std::filesystem::is_symlink(scratch_ / "link.xml"));
    EXPECT_TRUE(contentOf(target).ends_with("</KorvaneConfig>\n"));
}

TEST_F(Save, WhatTheEffectiveUserMayNotWriteStays) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can be two users at once";
    openToAll(scratch_.path());
    ASSERT_EQ(chown(scratch_.path().c_str(), kUnknownUser, kUnknownUser), 0);
    ASSERT_EQ(chown(file_.c_str(), kUnknownUser, kUnknownUser), 0);
    ASSERT_EQ(chmod(file_.c_str(), 0444), 0);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    KVTiXmlConfig* handle = store;
    ASSERT_EQ(seteuid(kUnknownUser), 0);
    const std::uint32_t saved = handle->SaveConfig();
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(saved, kFailed);
    EXPECT_NE(contentOf(file_).find("Value=\"1\""), std::string::npos);
}

// ---- to another file ---------------------------------------------------------------------------------------------

TEST_F(Save, ToAnotherPathMovesTheStoreThere) {
    const std::string other = scratch_ / "b.xml";
    const std::string before = contentOf(file_);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSave(store, other.c_str(), 0), 0u);
    EXPECT_EQ(contentOf(file_), before);
    EXPECT_NE(contentOf(other).find("Value=\"2\""), std::string::npos);
    char path[4096];
    EXPECT_EQ(kvCFGPath(store, path), 0u);
    EXPECT_EQ(path, other);
    EXPECT_FALSE(std::filesystem::exists(backup(0)));
}

TEST_F(Save, AsWritesAnUnmodifiedStoreToo) {
    const std::string other = scratch_ / "b.xml";
    OpenStore store(file_);
    EXPECT_EQ(kvCFGSaveAs(store, other.c_str(), 0), 0u);
    OpenStore copy(other);
    EXPECT_EQ(dwordOf(copy, "K", "D"), 1u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Save, AsIntoAStoreKeepsWhatElseIsThere) {
    const std::string other = scratch_ / "b.xml";
    makeFile(other, "<!--mine--><KorvaneConfig><Old/></KorvaneConfig>");
    OpenStore store(file_);
    EXPECT_EQ(kvCFGSaveAs(store, other.c_str(), 0), 0u);
    EXPECT_TRUE(contentOf(other).starts_with("<!--mine-->"));
    EXPECT_EQ(contentOf(other).find("Old"), std::string::npos);
}

TEST_F(Save, AsIntoSomethingElseWritesNothingAndSucceeds) {
    const std::string other = scratch_ / "b.xml";
    makeFile(other, "no settings");
    OpenStore store(file_);
    EXPECT_EQ(kvCFGSaveAs(store, other.c_str(), 0), 0u);
    EXPECT_EQ(contentOf(other), "no settings");
}

TEST_F(Save, AsMakesTheCopyOfAReadOnlyFileWritable) {
    const std::string other = scratch_ / "b.xml";
    ASSERT_EQ(chmod(file_.c_str(), 0444), 0);
    OpenStore store(file_);
    setDword(store, "K", "D", 2);
    EXPECT_EQ(kvCFGSaveAs(store, other.c_str(), 0), 0u);
    EXPECT_EQ(access(other.c_str(), W_OK), 0);
}

TEST_F(Save, AsWhereNothingCanBeWrittenSaysSo) {
    const std::string other = scratch_ / "b.xml";
    makeFile(other, configWith(""));
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(other.c_str(), 0444), 0);
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        OpenStore store(file_);
        CapturedMessages messages;
        char path[4096];
        return kvCFGSaveAs(store, other.c_str(), 0) == kFailed && messages.text() == "Confg save failed" &&
               kvCFGPath(store, path) == 0 && path == other;
    }));
}

TEST_F(Save, AsRefusesPathsThatCanNotBe) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGSaveAs(store, nullptr, 0), kFailed);
    EXPECT_EQ(kvCFGSaveAs(store, std::string(4096, 'x').c_str(), 0), kFailed);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(kvCFGSave(store, std::string(5000, 'x').c_str(), 0), kFailed);
    setDword(store, "K", "D", 2);
    CapturedMessages messages;
    for (auto* const saveTo : {kvCFGSave, kvCFGSaveAs}) {
        errno = 0;
        EXPECT_EQ(saveTo(store, "", 1), kFailed);
        EXPECT_EQ(errno, ENOENT);
    }
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    char path[4096];
    EXPECT_EQ(kvCFGPath(store, path), 0u);
    EXPECT_EQ(path, file_);
}

// ---- a full disk -------------------------------------------------------------------------------------------------

/// A disk of 64 KiB for as long as the object lives; not mounted where that is not allowed.
class SmallDisk {
public:
    explicit SmallDisk(std::string folder) : folder_(std::move(folder)) {
        std::filesystem::create_directory(folder_);
        mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return mounted_; }
    void fill() const { makeFileOf(std::string(1 << 20, 'x')); }

private:
    void makeFileOf(const std::string& bytes) const {
        std::ofstream(folder_ + "/filler", std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    std::string folder_;
    bool mounted_;
};

TEST_F(Save, OnAFullDiskItFailsAndTheFileStaysAsItWas) {
    const SmallDisk disk(scratch_ / "disk");
    if (!disk.isMounted()) GTEST_SKIP() << "no file system can be mounted here";
    const std::string file = scratch_ / "disk/a.xml";
    makeFile(file, configWith("<K Type=\"0\"><D Value=\"1\" Type=\"2\" /></K>"));
    const std::string before = contentOf(file);
    OpenStore store(file);
    setDword(store, "K", "D", 2);
    disk.fill();
    CapturedMessages messages;
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), kFailed);
    EXPECT_EQ(messages.count("Error Saving config file"), 1u);
    EXPECT_EQ(contentOf(file), before);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    std::filesystem::remove(scratch_ / "disk/filler");
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_NE(contentOf(file).find("Value=\"2\""), std::string::npos);
}

}  // namespace
