// The walk along a path.
#include "config/open_store.h"

namespace {

using namespace kvtest;

class Walk : public ::testing::Test {
protected:
    Walk() {
        makeFile(file_, configWith("<ZMW Type=\"0\"><A Type=\"0\"><B Value=\"1\" Type=\"2\" /></A>"
                                   "<A Type=\"0\"><C Value=\"2\" Type=\"2\" /></A></ZMW>"
                                   "<Twice Type=\"0\"><Twice Value=\"3\" Type=\"2\" /></Twice>"));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Walk, APathIsNestedElements) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\A"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\A\\B"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "A"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "zmw\\A"), 0u);
}

TEST_F(Walk, ATrailingBackslashDescendsTwiceWithTheLastName) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\A\\"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "Twice\\"), 1u);
    EXPECT_EQ(kvCFGGetType(store, "Twice\\"), KVCFG_DWORD);
    EXPECT_EQ(kvCFGKeyExists(store, "Twice\\\\"), 0u);
}

TEST_F(Walk, AValuesNameMayHoldBackslashes) {
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "ZMW", "A\\B"), 1u);
}

TEST_F(Walk, OfTwoOfOneNameTheFirstIsReached) {
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "ZMW\\A", "C"), std::nullopt);
}

TEST_F(Walk, EmptyAndLeadingNamesAreMissing) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, ""), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "\\"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "\\ZMW"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, nullptr), 0u);
}

TEST_F(Walk, ANameOf63BytesIsFoundAndOneOf64Missing) {
    const std::string longest(63, 'n');
    const std::string tooLong(64, 'n');
    makeFile(file_, configWith("<" + longest + " Type=\"0\" /><" + tooLong + " Type=\"0\"><B Type=\"0\" /></" +
                               tooLong + ">"));
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, longest.c_str()), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, tooLong.c_str()), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, (tooLong + "\\B").c_str()), 0u);
    EXPECT_EQ(kvCFGAddKeyDword(store, longest.c_str(), tooLong.c_str(), 1, nullptr), kFailed);
    EXPECT_EQ(kvCFGAddKeyDword(store, longest.c_str(), longest.c_str(), 1, nullptr), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, std::string(100000, 'n').c_str()), 0u);
}

TEST_F(Walk, GetKeyWalksFromAnElement) {
    OpenStore store(file_);
    KVTiXmlConfig* handle = store;
    KVTiXmlElement* key = GetKey(handle->pRoot, "ZMW\\A");
    ASSERT_NE(key, nullptr);
    EXPECT_NE(GetKey(key, "B"), nullptr);
    EXPECT_EQ(GetKey(key, "C"), nullptr);
    EXPECT_EQ(GetKey(nullptr, "B"), nullptr);
    EXPECT_EQ(GetKey(key, nullptr), nullptr);
}

}  // namespace
