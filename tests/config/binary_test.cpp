// Values of bytes.
#include "config/open_store.h"

namespace {

using namespace kvtest;

class Binary : public ::testing::Test {
protected:
    Binary() { makeFile(file_, configWith("<K Type=\"0\"><B Type=\"3\">0102</B><T Type=\"3\" /></K>")); }

    static std::uint32_t write(KVTiXmlConfig* store, const char* key, const char* name, std::string bytes,
                               std::uint32_t* stored = nullptr) {
        auto length = static_cast<std::uint32_t>(bytes.size());
        const std::uint32_t result = kvCFGValueBinary(store, key, name, bytes.data(), &length, 1);
        if (stored != nullptr) *stored = length;
        return result;
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Binary, AWriteUnderANewKeyStoresNothingAndASecondOneStores) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "New", "B", "\x0A\xFF"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "New"), 1u);
    EXPECT_EQ(write(store, "New", "B", "\x0A\xFF"), 4u);
    EXPECT_EQ(stringOf(store, "New", "B"), "0AFF");
    EXPECT_EQ(kvCFGGetType(store, "New\\B"), KVCFG_BINARY);
}

TEST_F(Binary, AWriteUnderANewDeeperKeyMakesAnEmptyValue) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K\\New", "B", "ab"), 0u);
    EXPECT_EQ(kvCFGGetType(store, "K\\New\\B"), KVCFG_BINARY);
    EXPECT_EQ(stringOf(store, "K\\New", "B"), "");
}

TEST_F(Binary, AnExtensionOfTheOldValueIsNotStored) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K", "B", "\x01\x02\x03"), 0u);
    EXPECT_EQ(stringOf(store, "K", "B"), "0102");
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Binary, AShorterValueIsStored) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K", "B", "\x01"), 2u);
    EXPECT_EQ(stringOf(store, "K", "B"), "01");
    EXPECT_EQ(kvCFGIsModified(store), 1u);
}

TEST_F(Binary, AfterAWriteTheLengthIsThatOfTheDigits) {
    OpenStore store(file_);
    std::uint32_t length = 0;
    EXPECT_EQ(write(store, "K", "B", "\xDE\xAD\xBE\xEF", &length), 8u);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(stringOf(store, "K", "B"), "DEADBEEF");
}

TEST_F(Binary, BytesAreReadInEitherCase) {
    makeFile(file_, configWith("<K Type=\"0\"><B Type=\"3\">deADbeEf0</B></K>"));
    OpenStore store(file_);
    unsigned char bytes[8] = {};
    std::uint32_t length = 0;
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, &length, 0), 4u);  // the lone digit is none
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(bytes[0], 0xDE);
    EXPECT_EQ(bytes[3], 0xEF);
    EXPECT_EQ(bytes[4], 0);
}

TEST_F(Binary, ReadsTellMissingKeysValuesAndTextsApart) {
    OpenStore store(file_);
    unsigned char bytes[8];
    std::uint32_t length = 99;
    EXPECT_EQ(kvCFGValueBinary(store, "None", "B", bytes, &length, 0), 0u);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "None", bytes, &length, 0), kFailed);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "T", bytes, &length, 0), 0u);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", nullptr, &length, 0), 0u);
    EXPECT_EQ(kvCFGValueBinary(nullptr, "K", "B", bytes, &length, 0), 0u);
    EXPECT_EQ(length, 99u);
}

TEST_F(Binary, WhatIsNoDigitIsRefused) {
    makeFile(file_, configWith("<K Type=\"0\"><B Type=\"3\">01zz</B></K>"));
    OpenStore store(file_);
    unsigned char bytes[8] = {};
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, nullptr, 0), kFailed);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(write(store, "K", "B", "\x01\x02"), 4u);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, nullptr, 0), 2u);
}

TEST_F(Binary, AFirstChildThatIsNoTextStays) {
    makeFile(file_, configWith("<K Type=\"0\"><B Type=\"3\"><!--why-->0102</B></K>"));
    OpenStore store(file_);
    unsigned char bytes[8] = {};
    std::uint32_t length = 77;
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, &length, 0), 0u);
    EXPECT_EQ(length, 77u);
    EXPECT_EQ(write(store, "K", "B", "ab"), 4u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, &length, 0), 0u);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_NE(contentOf(file_).find("<!--why-->0102\n"), std::string::npos) << contentOf(file_);
}

TEST_F(Binary, IncompleteWritesFail) {
    OpenStore store(file_);
    char bytes[] = "ab";
    std::uint32_t length = 2;
    EXPECT_EQ(kvCFGValueBinary(store, nullptr, "B", bytes, &length, 1), kFailed);
    EXPECT_EQ(kvCFGValueBinary(store, "K", nullptr, bytes, &length, 1), kFailed);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", nullptr, &length, 1), kFailed);
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, nullptr, 1), kFailed);
    length = 0xFFFFFFFF;
    EXPECT_EQ(kvCFGValueBinary(store, "K", "B", bytes, &length, 1), kFailed);
    EXPECT_EQ(stringOf(store, "K", "B"), "0102");
}

TEST_F(Binary, NoBytesEmptyTheValue) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K", "B", ""), 0u);
    EXPECT_EQ(stringOf(store, "K", "B"), "");
}

}  // namespace
