// Comments of keys and values.
#include "config/open_store.h"

namespace {

using namespace kvtest;

class Comments : public ::testing::Test {
protected:
    Comments() {
        makeFile(file_, configWith("<K Type=\"0\"><S Type=\"1\">text<!--old--></S><D Value=\"1\" Type=\"2\" />"
                                   "<E Type=\"0\"><!--early--><F Type=\"0\" /></E></K>"));
    }

    static std::string read(KVTiXmlConfig* store, const char* path) {
        char buffer[64] = "untouched";
        EXPECT_EQ(kvCFGValueComment(store, path, buffer, 0), 0u);
        return buffer;
    }
    static std::uint32_t write(KVTiXmlConfig* store, const char* path, std::string text) {
        return kvCFGValueComment(store, path, text.data(), 1);
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Comments, TheLastChildIsRead) {
    OpenStore store(file_);
    EXPECT_EQ(read(store, "K\\S"), "old");
    EXPECT_EQ(read(store, "K\\D"), "untouched");
    EXPECT_EQ(read(store, "K\\E"), "untouched");  // not the last one
}

TEST_F(Comments, AWriteReplacesAppendsOrRemoves) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K\\S", "new"), 0u);
    EXPECT_EQ(read(store, "K\\S"), "new");
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(write(store, "K\\D", "first"), 0u);
    EXPECT_EQ(read(store, "K\\D"), "first");
    EXPECT_EQ(write(store, "K\\E", "late"), 0u);
    EXPECT_EQ(read(store, "K\\E"), "late");
    EXPECT_EQ(write(store, "K\\S", ""), 0u);
    EXPECT_EQ(read(store, "K\\S"), "untouched");
    EXPECT_EQ(kvCFGValueComment(store, "K\\D", nullptr, 1), 0u);
    EXPECT_EQ(read(store, "K\\D"), "untouched");
    EXPECT_EQ(stringOf(store, "K", "S"), "text");
}

TEST_F(Comments, AnEmptyCommentIsMadeWhereThereWasNone) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K\\D", ""), 0u);
    EXPECT_EQ(read(store, "K\\D"), "");
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    OpenStore again(file_);
    EXPECT_EQ(read(again, "K\\D"), "");
}

TEST_F(Comments, AMissingPathFails) {
    OpenStore store(file_);
    char buffer[] = "x";
    for (const std::uint32_t fWrite : {0u, 1u}) {
        EXPECT_EQ(kvCFGValueComment(store, "K\\None", buffer, fWrite), kFailed);
        EXPECT_EQ(kvCFGValueComment(store, nullptr, buffer, fWrite), kFailed);
        EXPECT_EQ(kvCFGValueComment(nullptr, "K", buffer, fWrite), kFailed);
    }
    EXPECT_EQ(kvCFGValueComment(store, "K\\S", nullptr, 0), 0u);
}

TEST_F(Comments, OneThatWouldEndItselfIsRefused) {
    OpenStore store(file_);
    EXPECT_EQ(write(store, "K\\S", "a --> b"), kFailed);
    EXPECT_EQ(read(store, "K\\S"), "old");
    EXPECT_EQ(kvCFGAddKeyDword(store, "K", "N", 1, "-->"), kFailed);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\N"), 0u);
}

TEST_F(Comments, DashesSurviveTheFile) {
    OpenStore store(file_);
    for (const char* text : {"-", "--", "->", "a -- b", "<&>", "ends -"}) {
        ASSERT_EQ(write(store, "K\\S", text), 0u);
        ASSERT_EQ(kvCFGSave(store, nullptr, 0), 0u);
        OpenStore again(file_);
        EXPECT_EQ(read(again, "K\\S"), text);
    }
}

}  // namespace
