// Keys and values as a whole.
#include <cerrno>

#include "config/open_store.h"

namespace {

using namespace kvtest;

class Keys : public ::testing::Test {
protected:
    Keys() {
        makeFile(file_, configWith("<K Type=\"0\"><A Type=\"0\"><D Value=\"7\" Type=\"2\" /></A><B Type=\"1\">b</B>"
                                   "<C>none</C></K>"));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Keys, ExistHaveTypesAndChildren) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\A\\D"), 1u);
    EXPECT_EQ(kvCFGGetType(store, "K\\A"), KVCFG_KEY);
    EXPECT_EQ(kvCFGGetType(store, "K\\A\\D"), KVCFG_DWORD);
    EXPECT_EQ(kvCFGGetType(store, "K\\C"), kFailed);
    EXPECT_EQ(kvCFGGetType(store, "K\\None"), kFailed);
    EXPECT_EQ(kvCFGHasSubKey(store, "K\\A"), 1u);
    EXPECT_EQ(kvCFGHasSubKey(store, "K\\B"), 0u);
    EXPECT_EQ(kvCFGHasSubKey(store, "K\\None"), 0u);
}

TEST_F(Keys, WithATrailingBackslashAKeyIsNotThere) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\A"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\A\\"), 0u);
}

TEST_F(Keys, RemovingAKeyRemovesAllInIt) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGDeleteValue(store, "K", "A"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\A\\D"), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(kvCFGDeleteValue(store, "K", "A"), kFailed);
    EXPECT_EQ(kvCFGDeleteValue(store, "None", "A"), kFailed);
    EXPECT_EQ(kvCFGDeleteValue(store, "K", nullptr), kFailed);
    EXPECT_EQ(namesIn(store, "K"), (std::vector<std::string>{"B", "C"}));
}

TEST_F(Keys, RemovingByANameWithBackslashesRemovesNothingAndSucceeds) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGDeleteValue(store, "K", "A\\D"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\A\\D"), 1u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Keys, RenamingKeepsPlaceAndContentAndMindsNoClash) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGRenameKey(store, "K", "A", "Longer"), 6u);
    EXPECT_EQ(dwordOf(store, "K\\Longer", "D"), 7u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(namesIn(store, "K"), (std::vector<std::string>{"Longer", "B", "C"}));
    EXPECT_EQ(kvCFGRenameKey(store, "K", "B", "Longer"), 6u);
    EXPECT_EQ(kvCFGGetType(store, "K\\Longer"), KVCFG_KEY);
    EXPECT_EQ(kvCFGRenameKey(store, "K", "None", "X"), kFailed);
    EXPECT_EQ(kvCFGRenameKey(store, "None", "B", "X"), kFailed);
}

TEST_F(Keys, NamesThatWouldSpoilTheFileAreRefused) {
    OpenStore store(file_);
    for (const char* name : {"", "a b", "1", "a\\b", "<"}) {
        EXPECT_EQ(kvCFGRenameKey(store, "K", "A", name), kFailed) << name;
        EXPECT_EQ(kvCFGCopyBranch(store, "K\\A", name), kFailed) << name;
    }
    EXPECT_EQ(kvCFGRenameKey(store, "K", "A", nullptr), kFailed);
    EXPECT_EQ(kvCFGCopyBranch(store, "K\\A", nullptr), kFailed);
    EXPECT_EQ(kvCFGRenameKey(store, "K", "A", std::string(64, 'a').c_str()), kFailed);
    EXPECT_EQ(kvCFGRenameKey(store, "K", "A", std::string(63, 'a').c_str()), 63u);
}

TEST_F(Keys, ABranchIsCopiedToTheEndOfItsKey) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGCopyBranch(store, "K\\A", "A2"), 0u);
    EXPECT_EQ(namesIn(store, "K"), (std::vector<std::string>{"A", "B", "C", "A2"}));
    EXPECT_EQ(dwordOf(store, "K\\A2", "D"), 7u);
    EXPECT_EQ(setDword(store, "K\\A2", "D", 8), 0u);
    EXPECT_EQ(dwordOf(store, "K\\A", "D"), 7u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(kvCFGCopyBranch(store, "K", "K2"), 0u);
    EXPECT_EQ(namesIn(store, nullptr), (std::vector<std::string>{"K", "K2"}));
    EXPECT_EQ(kvCFGCopyBranch(store, "None", "X"), kFailed);
}

std::string built(const char* path, std::int32_t number, const char* tail) {
    char buffer[4096];
    std::snprintf(buffer, sizeof buffer, "%s", path);
    EXPECT_EQ(RegBuildKey(buffer, number, tail), buffer);
    return buffer;
}

TEST(BuiltKeys, HaveTheNumberAndTheTail) {
    EXPECT_EQ(built("ZMW\\Control", 0, "Debug"), "ZMW\\Control0\\Debug");
    EXPECT_EQ(built("ZMW\\Control", 12, nullptr), "ZMW\\Control12");
    EXPECT_EQ(built("ZMW\\Control", -5, ""), "ZMW\\Control-5\\");
    EXPECT_EQ(built("", INT32_MIN, nullptr), "-2147483648");
}

TEST(BuiltKeys, ThatDoNotFitAreRefused) {
    char buffer[4096];
    std::snprintf(buffer, sizeof buffer, "%s", std::string(4090, 'k').c_str());
    errno = 0;
    EXPECT_EQ(RegBuildKey(buffer, 1, "12345"), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(std::string(buffer), std::string(4090, 'k'));
    EXPECT_EQ(RegBuildKey(buffer, 1, "123"), buffer);
    EXPECT_EQ(RegBuildKey(buffer, 1, std::string(100000, 'k').c_str()), nullptr);
    EXPECT_EQ(RegBuildKey(nullptr, 1, nullptr), nullptr);
}

}  // namespace
