// The store that opens itself.
#include "config/open_store.h"
#include "errlog.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

TEST_F(DefaultStore, OpensItselfAtItsFirstUse) {
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn"), 6u);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 1u);
    char path_[4096];
    EXPECT_EQ(kvCFGPath(KVSTDCONFIG, path_), 0u);
    EXPECT_TRUE(std::filesystem::equivalent(path_, path()));
}

TEST_F(DefaultStore, IsModifiedWhenNewAndItsFileGetsDisableSaveWithTheFirstSave) {
    EXPECT_EQ(kvCFGIsModified(KVSTDCONFIG), 1u);
    EXPECT_EQ(contentOf(path()).find("<DisableSave"), std::string::npos);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Config", "DisableSave"), 0u);
    EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 0), 0u);
    EXPECT_NE(contentOf(path()).find("<DisableSave Value=\"0\" Type=\"2\" />"), std::string::npos);
    EXPECT_EQ(kvCFGIsModified(KVSTDCONFIG), 0u);
}

TEST_F(DefaultStore, ReadsWhetherSavingIsDisabled) {
    makeFile(path(),
             configWith("<ZMW Type=\"0\"><Config Type=\"0\"><DisableSave Value=\"5\" Type=\"2\" /></Config></ZMW>"));
    EXPECT_EQ(kvCFGIsModified(KVSTDCONFIG), 0u);
    setDword(KVSTDCONFIG, "ZMW", "D", 1);
    EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 0), 0u);
    EXPECT_EQ(contentOf(path()).find("<D "), std::string::npos);
    EXPECT_EQ(kvCFGDisableSave(0), 1u);
}

TEST_F(DefaultStore, AStoredZeroEnablesSavingAgain) {
    makeFile(path(),
             configWith("<ZMW Type=\"0\"><Config Type=\"0\"><DisableSave Value=\"0\" Type=\"2\" /></Config></ZMW>"));
    kvCFGDisableSave(1);
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGDisableSave(0), 0u);
}

TEST_F(DefaultStore, AMissingDisableSaveLeavesTheSwitchAndIsWrittenAsZero) {
    makeFile(path(), configWith("<ZMW Type=\"0\"><Config Type=\"0\" /></ZMW>"));
    kvCFGDisableSave(1);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Config", "DisableSave"), 0u);
    EXPECT_EQ(kvCFGDisableSave(0), 1u);
}

TEST_F(DefaultStore, ClosesWithItsLastUser) {
    kvCFGCheckHandle(KVSTDCONFIG);
    OpenStore second(path());  // counts as a user, though it is a store of its own
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 1u);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 1u);
    EXPECT_EQ(contentOf(path()).find("<DisableSave"), std::string::npos);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 0u);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    EXPECT_NE(contentOf(path()).find("<DisableSave"), std::string::npos);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 0u);
}

TEST_F(DefaultStore, EveryPathWithTheNameInAnyCaseCountsAsAUser) {
    const ScratchFolder scratch;
    OpenStore other(scratch / "MyConfig.XML.old");
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 1u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
}

TEST_F(DefaultStore, AnOpeningThatGivesNullCountsAsAUserToo) {
    const ScratchFolder scratch;
    makeFile(scratch / "config.xml", "<Other/>");
    EXPECT_EQ(kvCFGOpen((scratch / "config.xml").c_str(), 0), nullptr);
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 1u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
}

TEST_F(DefaultStore, ClosingAStoreByItsHandleTakesNoUserAway) {
    kvCFGCheckHandle(KVSTDCONFIG);
    { OpenStore second(path()); }
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 1u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
}

TEST_F(DefaultStore, ClosingItByItsOwnHandleTakesNoUserAway) {
    EXPECT_EQ(kvCFGClose(kvCFGCheckHandle(KVSTDCONFIG), 0), 0u);
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 1u);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 1u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
}

TEST_F(DefaultStore, ItsHandleIsToldWithoutOpeningIt) {
    EXPECT_EQ(kvCFGDefaultIfOpen(), nullptr);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    KVTiXmlConfig* store = kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_NE(store, nullptr);
    EXPECT_EQ(kvCFGDefaultIfOpen(), store);
}

TEST_F(DefaultStore, OpeningItsPathDoesNotMakeItTheDefaultStore) {
    OpenStore byPath(path());
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    EXPECT_NE(kvCFGCheckHandle(KVSTDCONFIG), byPath);
}

TEST_F(DefaultStore, ClosedByItsOwnHandleItIsGone) {
    KVTiXmlConfig* store = kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGClose(store, 0), 0u);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
}

TEST_F(DefaultStore, OpensAnewFromDisk) {
    setDword(KVSTDCONFIG, "ZMW\\Control0", "EditOn", 9);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn"), 6u);
}

TEST_F(DefaultStore, ClosingItForgetsThatAStoreWasMade) {
    KVTiXmlConfig unopened;
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(kvCFGSave(&unopened, nullptr, 0), 0u);
    kvCFGClose(KVSTDCONFIG, 0);
    EXPECT_EQ(kvCFGSave(&unopened, nullptr, 0), kFailed);
}

TEST_F(DefaultStore, WithAnotherRootEveryCallFailsAndTheFileStays) {
    makeFile(path(), "<Other/>");
    CapturedMessages messages;
    std::uint32_t value = 5;
    char text[64] = "";
    EXPECT_EQ(kvCFGCheckHandle(KVSTDCONFIG), nullptr);
    EXPECT_EQ(kvCFGValueDword(KVSTDCONFIG, "ZMW", "D", &value, 1), kFailed);
    EXPECT_EQ(kvCFGValueString(KVSTDCONFIG, "ZMW", "D", text, &value, 1), kFailed);
    EXPECT_EQ(kvCFGValueBinary(KVSTDCONFIG, "ZMW", "D", text, &value, 1), 0u);
    EXPECT_EQ(kvCFGKeyExists(KVSTDCONFIG, "ZMW"), 0u);
    EXPECT_EQ(kvCFGGetNext(KVSTDCONFIG, nullptr, text, "", nullptr), kFailed);
    EXPECT_EQ(kvCFGIsModified(KVSTDCONFIG), 0u);
    EXPECT_EQ(kvCFGPath(KVSTDCONFIG, text), kFailed);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 0), kFailed);
    EXPECT_EQ(messages.text(), "Can not save : Config not opened");
    EXPECT_EQ(contentOf(path()), "<Other/>");
}

TEST_F(DefaultStore, ItsOpeningIsReportedWhileALogFileIsOpen) {
    makeFile(path(), configWith("<ZMW Type=\"0\" />"));
    CapturedMessages messages;
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(messages.count("Loading configuration"), 0u);
    char name[4096];
    std::snprintf(name, sizeof name, "%s", (directory_ + "log.txt").c_str());
    ErrLogSetMode(KVERRLOG_MODE_FILE, name);
    kvCFGClose(KVSTDCONFIG, 0);
    char loaded[4096];
    kvCFGPath(KVSTDCONFIG, loaded);
    EXPECT_EQ(messages.count("\nLoading configuration: '" + std::string(loaded) + "'"), 1u);
    ErrLogClose();
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);  // made once, though the report needed it as well
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
}

TEST_F(DefaultStore, IsMadeOnceAlthoughTheReportOfItsOpeningReadsSettingsFromIt) {
    makeFile(path(), configWith("<ZMW Type=\"0\" />"));
    char name[4096];
    std::snprintf(name, sizeof name, "%s", (directory_ + "log.txt").c_str());
    ErrLogSetMode(KVERRLOG_MODE_FILE, name);
    while (kvCFGClose(KVSTDCONFIG, 0) == 1) {
    }
    gfReadReg = 0;  // so that the report below is the one that reads
    CapturedMessages messages;
    KVTiXmlConfig* store = kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(gfReadReg, 1u);
    EXPECT_EQ(kvCFGDefaultIfOpen(), store);
    EXPECT_EQ(messages.count("Loading configuration"), 1u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 0), 0u);
    ErrLogClose();
}

TEST_F(DefaultStore, ItsOpeningIsNotReportedOnceTheLogFileIsClosed) {
    char name[4096];
    std::snprintf(name, sizeof name, "%s", (directory_ + "log.txt").c_str());
    CapturedMessages messages;
    ErrLogSetMode(KVERRLOG_MODE_FILE, name);
    kvCFGCheckHandle(KVSTDCONFIG);
    const std::size_t before = messages.count("Loading configuration");
    kvCFGClose(KVSTDCONFIG, 0);
    ErrLogClose();
    kvCFGCheckHandle(KVSTDCONFIG);
    EXPECT_EQ(messages.count("Loading configuration"), before);
}

TEST_F(DefaultStore, ASwitchOfTheLogWithoutItsNumberIsReadAsOneAndWrittenSo) {
    makeFile(path(), configWith("<ZMW Type=\"0\"><Advanced Type=\"0\"><Debug Type=\"0\"><DebugLevel Type=\"2\" />"
                                "</Debug></Advanced></ZMW>"));
    EXPECT_EQ(gdwDebugLevel, 0u);
    _ReadRegSettings();
    EXPECT_EQ(gdwDebugLevel, 1u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Advanced\\Debug", "DebugLevel"), 1u);
}

TEST(WithoutConfigDirectory, TheDefaultStoreLivesInMemory) {
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "there is one for all users here";
    CapturedMessages messages;
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn"), 6u);
    EXPECT_EQ(setDword(KVSTDCONFIG, "ZMW\\Control0", "EditOn", 9), 0u);
    EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 0), 0u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn"), 9u);
    EXPECT_EQ(kvCFGClose(KVSTDCONFIG, 1), 0u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, "ZMW\\Control0", "EditOn"), 6u);
    EXPECT_EQ(messages.text(), "");
}

}  // namespace
