// Walks through keys.
#include <cstring>
#include <tinyxml.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

class Enumerate : public ::testing::Test {
protected:
    Enumerate() {
        makeFile(file_,
                 configWith("<K Type=\"0\"><!--first--><A Type=\"0\"><Deep Type=\"0\"><S Type=\"1\">text</S></Deep></A>"
                            "<B Value=\"-2\" Type=\"2\" /><A Type=\"1\">shadow</A><C>no type</C></K><L Type=\"0\" />"));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Enumerate, ByNameInOrderToTheEnd) {
    OpenStore store(file_);
    char name[64];
    std::uint32_t type = 99;
    EXPECT_EQ(kvCFGGetNext(store, "K", name, "", &type), 1u);
    EXPECT_STREQ(name, "A");
    EXPECT_EQ(type, KVCFG_KEY);
    EXPECT_EQ(kvCFGGetNext(store, "K", name, "A", &type), 1u);
    EXPECT_STREQ(name, "B");
    EXPECT_EQ(type, KVCFG_DWORD);
    EXPECT_EQ(kvCFGGetNext(store, "K\\A", name, "Deep", &type), kFailed);
    EXPECT_STREQ(name, "B");
}

TEST_F(Enumerate, TwoChildrenThenTheEnd) {
    makeFile(file_, configWith("<K Type=\"0\"><A Type=\"0\" /><B Type=\"0\" /></K>"));
    OpenStore store(file_);
    EXPECT_EQ(namesIn(store, "K"), (std::vector<std::string>{"A", "B"}));
}

TEST_F(Enumerate, ASecondElementOfANameComesBackLater) {
    OpenStore store(file_);
    char name[64];
    std::uint32_t type = 99;
    EXPECT_EQ(kvCFGGetNext(store, "K", name, "B", &type), 1u);
    EXPECT_STREQ(name, "A");
    EXPECT_EQ(type, KVCFG_STRING);
    makeFile(file_, configWith("<K Type=\"0\"><A Type=\"0\" /><A Type=\"1\" /><B Type=\"2\" /></K>"));
    OpenStore doubled(file_);
    EXPECT_EQ(namesIn(doubled, "K"), (std::vector<std::string>{"A", "B"}));
}

TEST_F(Enumerate, AnUnknownPreviousNameEndsIt) {
    OpenStore store(file_);
    char name[64] = "x";
    EXPECT_EQ(kvCFGGetNext(store, "K", name, "Nobody", nullptr), kFailed);
    EXPECT_EQ(kvCFGGetNext(store, "Nobody", name, "", nullptr), kFailed);
    EXPECT_EQ(kvCFGGetNext(store, "", name, "", nullptr), kFailed);
    EXPECT_EQ(kvCFGGetNext(nullptr, "K", name, "", nullptr), kFailed);
    EXPECT_EQ(kvCFGGetNext(store, "K", nullptr, "", nullptr), kFailed);
}

TEST_F(Enumerate, AMissingTypeLeavesTheVariable) {
    makeFile(file_, configWith("<K Type=\"0\"><C>no type</C></K>"));
    OpenStore store(file_);
    char name[64];
    std::uint32_t type = 99;
    EXPECT_EQ(kvCFGGetNext(store, "K", name, nullptr, &type), 1u);
    EXPECT_EQ(type, 99u);
}

TEST_F(Enumerate, ANullKeyIsTheTop) {
    OpenStore store(file_);
    EXPECT_EQ(namesIn(store, nullptr), (std::vector<std::string>{"K", "L"}));
}

TEST_F(Enumerate, NamesTooLongForABufferArePassedOver) {
    const std::string tooLong(5000, 'n');
    makeFile(file_, configWith("<K Type=\"0\"><A Type=\"0\" /><" + tooLong + " /><B Type=\"0\" /></K>"));
    OpenStore store(file_);
    EXPECT_EQ(namesIn(store, "K"), (std::vector<std::string>{"A", "B"}));
}

TEST_F(Enumerate, TheWalkStoresNothingAndGivesOne) {
    OpenStore store(file_);
    for (const std::uint32_t recursive : {0u, 1u}) {
        std::uint32_t first = 11;
        std::uint32_t second = 22;
        EXPECT_EQ(kvCFGEnumKey(store, "K", &first, &second, recursive), 1u);
        EXPECT_EQ(kvCFGEnumKey(store, "", &first, &second, recursive), 1u);
        EXPECT_EQ(kvCFGEnumKey(store, nullptr, nullptr, nullptr, recursive), 1u);
        EXPECT_EQ(kvCFGEnumKey(store, "None", &first, &second, recursive), kFailed);
        EXPECT_EQ(first, 11u);
        EXPECT_EQ(second, 22u);
        EXPECT_EQ(EnumKey(nullptr, first, second, recursive), 0u);
    }
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Enumerate, AnElementIsDescribed) {
    OpenStore store(file_);
    KVTiXmlConfig* handle = store;
    std::vector<char> name(32768, '#');
    std::vector<char> value(32768, '#');
    std::uint32_t number = 5;
    KVTiXmlElement* text = GetKey(handle->pRoot, "K\\A\\Deep\\S");
    EXPECT_EQ(KeyInfo(text, name.data(), value.data(), &number, 0), KVCFG_STRING);
    EXPECT_STREQ(name.data(), "S");
    EXPECT_STREQ(value.data(), "text");
    EXPECT_EQ(number, 5u);
    EXPECT_EQ(KeyInfo(text, name.data(), nullptr, nullptr, 1), KVCFG_STRING);
    EXPECT_STREQ(name.data(), "K\\A\\Deep\\S");
    value[0] = '#';
    EXPECT_EQ(KeyInfo(GetKey(handle->pRoot, "K\\B"), name.data(), value.data(), &number, 1), KVCFG_DWORD);
    EXPECT_STREQ(name.data(), "K\\B");
    EXPECT_EQ(number, 0xFFFFFFFEu);
    EXPECT_EQ(value[0], '#');
    EXPECT_EQ(KeyInfo(GetKey(handle->pRoot, "K\\C"), nullptr, nullptr, nullptr, 0), 0u);
    EXPECT_EQ(KeyInfo(nullptr, name.data(), value.data(), &number, 0), 0u);
}

TEST_F(Enumerate, WhatDoesNotFitIsDescribedAsEmpty) {
    makeFile(file_, configWith("<K Type=\"0\"><S Type=\"1\">" + std::string(32768, 'x') + "</S></K>"));
    OpenStore store(file_);
    KVTiXmlConfig* handle = store;
    std::vector<char> value(32768, '#');
    EXPECT_EQ(KeyInfo(GetKey(handle->pRoot, "K\\S"), nullptr, value.data(), nullptr, 0), KVCFG_STRING);
    EXPECT_STREQ(value.data(), "");
    EXPECT_EQ(kvCFGEnumKey(store, nullptr, nullptr, nullptr, 1), 1u);
}

TEST_F(Enumerate, TheEmptyShellGivesZero) {
    OpenStore store(file_);
    KVTiXmlConfig* handle = store;
    EXPECT_EQ(CreateConfigStruct(handle->pRoot, 5), 0u);
    EXPECT_EQ(kvCFGXmlToReg(store, "<K/>"), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

}  // namespace
