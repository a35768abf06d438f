// New keys and values.
#include <tinyxml.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

class Add : public ::testing::Test {
protected:
    Add() { makeFile(file_, configWith("<K Type=\"0\"><D Value=\"7\" Type=\"2\" /></K>")); }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Add, AKeyOfOneNameFailsAndIsThereAndDoesNotModify) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyString(store, "Top", "S", "x", KVCFG_STRING, nullptr), kFailed);
    EXPECT_EQ(kvCFGKeyExists(store, "Top"), 1u);
    EXPECT_EQ(kvCFGGetType(store, "Top"), KVCFG_KEY);
    EXPECT_EQ(kvCFGKeyExists(store, "Top\\S"), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "Top", "S", "x", KVCFG_STRING, nullptr), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
}

TEST_F(Add, UnderAMissingTopKeyTheFirstCallMakesThatAloneAndTheSecondAllTheRest) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyDword(store, "A\\B\\C", "D", 1, nullptr), kFailed);
    EXPECT_EQ(kvCFGKeyExists(store, "A"), 1u);
    EXPECT_EQ(kvCFGHasSubKey(store, "A"), 0u);
    EXPECT_EQ(kvCFGAddKeyDword(store, "A\\B\\C", "D", 1, nullptr), 0u);
    EXPECT_EQ(dwordOf(store, "A\\B\\C", "D"), 1u);
    EXPECT_EQ(kvCFGGetType(store, "A\\B"), KVCFG_KEY);
}

TEST_F(Add, WhatIsThereIsLeftAndFails) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyDword(store, "K", "D", 8, nullptr), kFailed);
    EXPECT_EQ(kvCFGAddKeyString(store, "K", "D", "x", KVCFG_STRING, nullptr), kFailed);
    EXPECT_EQ(dwordOf(store, "K", "D"), 7u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Add, ANullNameMakesTheKeyAlone) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyString(store, "K\\Sub", nullptr, nullptr, KVCFG_KEY, nullptr), 0u);
    EXPECT_EQ(kvCFGGetType(store, "K\\Sub"), KVCFG_KEY);
    EXPECT_EQ(kvCFGHasSubKey(store, "K\\Sub"), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "Top", nullptr, nullptr, KVCFG_KEY, nullptr), kFailed);
    EXPECT_EQ(kvCFGKeyExists(store, "Top"), 1u);
}

TEST_F(Add, ElementsLookAsTheFormatSays) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyDword(store, "K", "Number", 5, "why"), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "K", "Text", "a<b", KVCFG_STRING, "why not"), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "K", "None", nullptr, KVCFG_STRING, nullptr), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "K", "Odd", "x", 77, nullptr), 0u);
    EXPECT_EQ(kvCFGAddKeyString(store, "K\\New", nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_EQ(contentOf(file_),
              "<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n"
              "<KorvaneConfig>\n"
              "    <K Type=\"0\">\n"
              "        <D Value=\"7\" Type=\"2\" />\n"
              "        <Number Value=\"5\" Type=\"2\">\n"
              "            <!--why-->\n"
              "        </Number>\n"
              "        <Text Type=\"1\">a&lt;b\n"
              "            <!--why not-->\n"
              "        </Text>\n"
              "        <None Type=\"1\" />\n"
              "        <Odd Type=\"77\">x</Odd>\n"
              "        <New Type=\"0\"></New>\n"
              "    </K>\n"
              "</KorvaneConfig>\n");
}

TEST_F(Add, AKeyBeginsWithAnEmptyText) {
    OpenStore store(file_);
    kvCFGAddKeyString(store, "Top", nullptr, nullptr, 0, nullptr);
    kvCFGAddKeyString(store, "Top\\Sub", nullptr, nullptr, 0, nullptr);
    KVTiXmlConfig* handle = store;
    for (const char* key : {"Top", "Top\\Sub"}) {
        const TiXmlElement* element = GetKey(handle->pRoot, key);
        ASSERT_NE(element, nullptr);
        ASSERT_NE(element->FirstChild(), nullptr);
        ASSERT_NE(element->FirstChild()->ToText(), nullptr);
        EXPECT_EQ(element->FirstChild()->ValueStr(), "");
    }
}

TEST_F(Add, AMissingKeyThatEndsInABackslashIsNotMade) {
    OpenStore store(file_);
    for (const char* name : {"D", static_cast<const char*>(nullptr)}) {
        kvCFGAddKeyDword(store, "K\\New\\", name, 1, nullptr);
        EXPECT_EQ(namesIn(store, "K"), std::vector<std::string>{"D"});
    }
}

TEST_F(Add, ANullNameSucceedsForADeeperKeyThatCanNotBeMade) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGAddKeyString(store, "K\\a b", nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(kvCFGAddKeyDword(store, "K\\a b", nullptr, 1, nullptr), 0u);
    std::string deep = "K";
    for (int i = 0; i < 256; ++i) deep += "\\k";
    EXPECT_EQ(kvCFGAddKeyString(store, deep.c_str(), nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, deep.c_str()), 0u);
}

TEST_F(Add, NamesThatWouldSpoilTheFileAreRefused) {
    OpenStore store(file_);
    for (const char* name : {"", "a b", "<a", "1a", "-a", "a\\", "none\\b", "a\tb", "a/b", "a&b", ".a", "\x01"}) {
        EXPECT_EQ(kvCFGAddKeyDword(store, "K", name, 1, nullptr), kFailed) << name;
        EXPECT_EQ(kvCFGAddKeyString(store, "K", name, "x", 1, nullptr), kFailed) << name;
        EXPECT_EQ(setString(store, "K", name, "x") == 0, false) << name;
    }
    for (const char* key : {"", "\\", "a b", "\\Top", "Top\\", "K\\a b", "K\\1\\b"}) {
        EXPECT_EQ(kvCFGAddKeyDword(store, key, "D", 1, nullptr), kFailed) << key;
        EXPECT_EQ(kvCFGAddKeyDword(store, key, "D", 1, nullptr), kFailed) << key;
    }
    for (const char* name : {"_a", "a-b.c:d1", "\xC3\xA4", "D:"}) {
        EXPECT_EQ(kvCFGAddKeyDword(store, "K", name, 1, nullptr), 0u) << name;
    }
    EXPECT_EQ(namesIn(store, nullptr), std::vector<std::string>{"K"});
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    OpenStore again(file_);
    EXPECT_EQ(dwordOf(again, "K", "\xC3\xA4"), 1u);
}

TEST_F(Add, NoStoreBecomesDeeperThanCanBeReadAgain) {
    std::string key = "K";
    for (int i = 1; i < 256; ++i) key += "\\k";
    {
        OpenStore store(file_);
        EXPECT_EQ(kvCFGAddKeyString(store, key.c_str(), nullptr, nullptr, 0, nullptr), 0u);
        EXPECT_EQ(kvCFGKeyExists(store, key.c_str()), 1u);
        EXPECT_EQ(kvCFGAddKeyDword(store, key.c_str(), "D", 1, nullptr), kFailed);
        EXPECT_EQ(setDword(store, key.substr(0, key.size() - 2).c_str(), "D", 1), 0u);
        std::string far;
        for (int i = 0; i < 1000000; ++i) far += "K\\";
        EXPECT_EQ(kvCFGAddKeyDword(store, far.c_str(), "D", 1, nullptr), kFailed);
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    OpenStore again(file_);
    EXPECT_EQ(kvCFGKeyExists(again, key.c_str()), 1u);
}

}  // namespace
