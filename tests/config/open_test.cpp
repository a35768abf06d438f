// Opening, making and closing of stores by path.
#include <cerrno>
#include <sys/stat.h>

#include "config/open_store.h"
#include "kvos/attributes.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

constexpr const char* kNew =
    "<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n"
    "<KorvaneConfig>\n"
    "    <!--KorvaneConfig xml structure version 1,0-->\n"
    "    <!--Key Types 0=Key,1=String,2=Dword,3=Binary-->\n";

TEST(Open, ANewFileHoldsOneKeyNamedAfterIt) {
    const ScratchFolder scratch;
    OpenStore store(scratch / "settings.xml");
    EXPECT_EQ(contentOf(scratch / "settings.xml"),
              std::string(kNew) + "    <settings Type=\"0\"></settings>\n</KorvaneConfig>\n");
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(namesIn(store, nullptr), std::vector<std::string>{"settings"});
}

TEST(Open, BlanksInTheNameBecomeUnderscores) {
    const ScratchFolder scratch;
    OpenStore store(scratch / " my  own settings.xml");
    EXPECT_EQ(namesIn(store, nullptr), std::vector<std::string>{"my_own_settings"});
}

TEST(Open, AFileWhoseNameIsNoTagHasNoKeyAndCanBeReadAgain) {
    const ScratchFolder scratch;
    for (const char* name : {"2024.xml", "(1).xml", "a\\b.xml", "-.xml"}) {
        { OpenStore store(scratch / name); }
        EXPECT_EQ(contentOf(scratch / name), std::string(kNew) + "</KorvaneConfig>\n");
        OpenStore again(scratch / name);
        EXPECT_EQ(namesIn(again, nullptr), std::vector<std::string>{});
        EXPECT_EQ(kvCFGAddKeyString(again, "K", nullptr, nullptr, 0, nullptr), kFailed);
        EXPECT_EQ(kvCFGKeyExists(again, "K"), 1u);
    }
}

TEST(Open, TheDefaultsAreForPathsThatHoldTheNameInThisCase) {
    const ScratchFolder scratch;
    OpenStore lower(scratch / "my.config.xml.old");
    EXPECT_EQ(kvCFGKeyExists(lower, "ZMW"), 1u);
    OpenStore upper(scratch / "Config.XML");
    EXPECT_EQ(kvCFGKeyExists(upper, "ZMW"), 0u);
    EXPECT_EQ(namesIn(upper, nullptr), std::vector<std::string>{"Config"});
}

TEST(Open, AnotherRootGivesNullAndLeavesTheFile) {
    const ScratchFolder scratch;
    makeFile(scratch / "a.xml", "<Other><KorvaneConfig/></Other>");
    OpenStore store(scratch / "a.xml");
    EXPECT_FALSE(store.isOpen());
    EXPECT_EQ(contentOf(scratch / "a.xml"), "<Other><KorvaneConfig/></Other>");
}

TEST(Open, PathsThatCanNotBeAreRefused) {
    errno = 0;
    EXPECT_EQ(kvCFGOpen(nullptr, 0), nullptr);
    EXPECT_EQ(kvCFGOpen(std::string(4096, 'x').c_str(), 0), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(Open, WhereNothingCanBeWrittenAStoreLivesInMemory) {
    CapturedMessages messages;
    OpenStore store("/no/such/folder/a.xml");
    ASSERT_TRUE(store.isOpen());
    EXPECT_EQ(setDword(store, "a", "D", 1), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);  // the file is gone: meant
    EXPECT_EQ(dwordOf(store, "a", "D"), 1u);
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, FoldersAndPipesAreNoFiles) {
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch / "folder.xml");
    ASSERT_EQ(mkfifo((scratch / "pipe.xml").c_str(), 0600), 0);
    for (const char* name : {"folder.xml", "pipe.xml"}) {
        OpenStore store(scratch / name);
        EXPECT_TRUE(store.isOpen()) << name;
        EXPECT_FALSE(std::filesystem::is_regular_file(scratch / name));
    }
}

TEST(Open, ThePathIsKept) {
    const ScratchFolder scratch;
    OpenStore store(scratch / "a.xml");
    char path[4096] = "";
    EXPECT_EQ(kvCFGPath(store, path), 0u);
    EXPECT_EQ(path, scratch / "a.xml");
    EXPECT_EQ(kvCFGPath(store, nullptr), kFailed);
    EXPECT_EQ(kvCFGPath(nullptr, path), kFailed);
}

TEST(Open, TheHandleOfAStoreIsItself) {
    const ScratchFolder scratch;
    OpenStore store(scratch / "a.xml");
    EXPECT_EQ(kvCFGCheckHandle(store), store);
    EXPECT_EQ(kvCFGCheckHandle(nullptr), nullptr);
    EXPECT_EQ(kvCFGKVSTDCONFIGIsOpen(), 0u);
}

// ---- closing -----------------------------------------------------------------------------------------------------

TEST(Close, SavesOnlyIfAskedToAndWithoutBackups) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    {
        OpenStore store(file);
        setDword(store, "a", "D", 1);
        EXPECT_EQ(store.close(0), 0u);
    }
    EXPECT_EQ(contentOf(file).find("<D "), std::string::npos);
    {
        OpenStore store(file);
        setDword(store, "a", "D", 1);
        kvCFGDisableSave(1);  // does not concern the close
        EXPECT_EQ(store.close(1), 0u);
        kvCFGDisableSave(0);
    }
    EXPECT_NE(contentOf(file).find("<D Value=\"1\" Type=\"2\" />"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(scratch / "a.000.xml"));
}

TEST(Close, AReadOnlyFileIsNotSavedAndNothingIsSaid) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    OpenStore store(file);
    setDword(store, "a", "D", 1);
    ASSERT_EQ(chmod(file.c_str(), 0444), 0);
    const std::string before = contentOf(file);
    CapturedMessages messages;
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(store.close(1), 0u);
    EXPECT_EQ(contentOf(file), before);
    EXPECT_EQ(messages.text(), "");
}

TEST(Close, NullAndAStoreThatIsNotOpenedFail) {
    EXPECT_EQ(kvCFGClose(nullptr, 1), kFailed);
    KVTiXmlConfig unopened;
    EXPECT_EQ(kvCFGClose(&unopened, 1), kFailed);
    std::uint32_t value = 5;
    EXPECT_EQ(kvCFGValueDword(&unopened, "K", "D", &value, 0), kFailed);
    EXPECT_EQ(kvCFGIsModified(&unopened), 0u);
    EXPECT_EQ(kvCFGKeyExists(&unopened, "K"), 0u);
    EXPECT_EQ(unopened.SaveConfig(), 0u);
}

}  // namespace
