// Rings of backups in a store, where nothing is renamed: older ones are copied on, and the newest is overwritten.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/naming.h"
#include "kvos/s3.h"
#include "servers/scripted_store.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

class BackupsInAStore : public ::testing::Test {
protected:
    BackupsInAStore() { sdwS3DisableSSL = 1; }

    void backUp(const std::string& content) {
        store_.put("set/a.xml", content);
        CapturedMessages messages;
        EXPECT_EQ(MakeFileBackups(store_.locator("set/a.xml").c_str(), 3), 0);
        EXPECT_EQ(messages.count("Error backing up config"), 0u) << messages.text();
    }

    ScriptedStore store_;
};

TEST_F(BackupsInAStore, TheNewestIsNumberZeroAndOthersMoveOn) {
    const std::string longest((1 << 20) + 100, 'x');
    for (const std::string& content : {std::string("one"), longest, std::string("three"), std::string("the fourth")}) {
        backUp(content);
    }
    EXPECT_EQ(store_.content("set/a.xml"), "the fourth");
    EXPECT_EQ(store_.content("set/a.000.xml"), "the fourth");
    EXPECT_EQ(store_.content("set/a.001.xml"), "three");
    EXPECT_TRUE(store_.content("set/a.002.xml") == longest);
    EXPECT_EQ(store_.keys().size(), 4u);
}

TEST_F(BackupsInAStore, TheFirstIsACopy) {
    backUp("one");
    EXPECT_EQ(store_.content("set/a.000.xml"), "one");
    EXPECT_EQ(store_.keys(), (std::vector<std::string>{"set/a.000.xml", "set/a.xml"}));
}

}  // namespace
