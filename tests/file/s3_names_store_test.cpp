// Opening, listing and deleting by name on real stores.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "file/owned_file.h"
#include "kvos/attributes.h"
#include "kvos/find.h"
#include "kvos/s3.h"
#include "servers/object_store.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;
using Names = std::vector<std::string>;

class RealStore : public ::testing::TestWithParam<ObjectStore::Engine> {
protected:
    RealStore() { sdwS3DisableSSL = 1; }
    ~RealStore() override {
        sdwS3DisableSSL = 0;
        sdwS3VerifySSL = 1;
    }

    /// The store behind its own keys, in the folder of a bucket that is the test's own.
    std::string withKeys(const std::string& access, const std::string& secret, const std::string& key) const {
        return "s3://" + access + ":" + secret + "@" + store_.host() + "/" + store_.bucket() + "/" + key;
    }
    static Names namesOf(const std::string& pattern) {
        Names names;
        kvOSFindData entry;
        const std::int64_t find = kvOSFindFirstFile(pattern.c_str(), &entry);
        for (bool found = find != KVFIND_INVALID; found; found = kvOSFindNextFile(find, &entry) != 0) {
            names.emplace_back(entry.szName);
        }
        kvOSFindClose(find);
        return names;
    }

    ObjectStore store_ = ObjectStore::shared(GetParam());
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Engines, RealStore, ::testing::Values(ObjectStore::Engine::ceph, ObjectStore::Engine::swift),
                         [](const auto& row) { return row.param == ObjectStore::Engine::ceph ? "Ceph" : "Swift"; });

TEST_P(RealStore, WhatIsThereOpensAndWhatIsNotDoesNot) {
    store_.put("folder/clip.wav", "0123456789");
    CapturedMessages messages;
    const OwnedFile file = openForReading(store_.locator("folder/clip.wav"));
    ASSERT_TRUE(file.isOpen()) << messages.text();
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 10u);
    EXPECT_EQ(readAll(file), "0123456789");
    EXPECT_FALSE(openForReading(store_.locator("none")).isOpen());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(kvOSFileExists(store_.locator("folder/clip.wav").c_str()), 1u);
    EXPECT_EQ(kvOSGetFileAttributes(store_.locator("folder/").c_str()), KVATTR_DIRECTORY);
    EXPECT_EQ(kvOSGetFileAttributes(store_.locator("none").c_str()), KVATTR_INVALID);
}

TEST_P(RealStore, AStrangerAndAWrongSecretAreRefused) {
    store_.put("clip", "x");
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(store_.strangerLocator("clip")).isOpen());
    EXPECT_EQ(errno, EACCES);
    EXPECT_FALSE(openForReading(withKeys(store_.accessKey(), "wrong", "clip")).isOpen());
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(messages.count("Aws::HeadObject exception/error    ONE: "), 2u) << messages.text();
    EXPECT_FALSE(openFile(store_.strangerLocator("new"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS).isOpen());
    EXPECT_EQ(messages.count("Aws::HeadObject exception/error     TWO: AccessDenied"), 1u) << messages.text();
    EXPECT_EQ(messages.count("wrong"), 0u);
}

TEST_P(RealStore, FoldersAreListed) {
    for (const char* key : {"clips/a b.mov", "clips/c+d&e=f", "clips/sub/x", "clips/\xC3\xA4", "clips/100%", "top"}) {
        store_.put(key, "x");
    }
    EXPECT_EQ(namesOf(store_.locator("clips/*")), (Names{"sub/", "100%", "a b.mov", "c+d&e=f", "\xC3\xA4"}));
    EXPECT_EQ(namesOf(store_.locator("*")), (Names{"clips/", "top"}));
    EXPECT_EQ(namesOf(store_.locator("none/*")), Names{});
    EXPECT_EQ(namesOf(store_.strangerLocator("clips/*")), Names{});
    EXPECT_EQ(errno, EACCES);
}

TEST_P(RealStore, DeletingGoesOverTls) {
    store_.put("clip", "x");
    EXPECT_EQ(kvOSDeleteFile(store_.locator("clip").c_str()), 0xFFFFFFFFu);  // that is the plain port
    EXPECT_EQ(store_.keys(), (Names{"clip"}));
    EXPECT_EQ(kvOSDeleteFile(store_.secureLocator("clip").c_str()), 0u);
    EXPECT_EQ(store_.keys(), Names{});
}

TEST_P(RealStore, TheCertificateIsVerifiedUnlessTheVariableSaysOtherwise) {
    store_.put("clip", "0123456789");
    sdwS3DisableSSL = 0;
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(store_.secureLocator("clip")).isOpen());
    sdwS3VerifySSL = 0;
    EXPECT_TRUE(openForReading(store_.secureLocator("clip")).isOpen()) << messages.text();
}

TEST_P(RealStore, ABucketAheadOfTheHostIsReached) {
    store_.put("clip", "0123456789");
    const std::string locator = "s3://" + store_.accessKey() + ":" + store_.secretKey() + "@" + store_.bucket() + "." +
                                store_.virtualHost() + "/clip";
    CapturedMessages messages;
    const OwnedFile file = openForReading(locator);
    ASSERT_TRUE(file.isOpen()) << messages.text();
    EXPECT_EQ(file.record().qwSize, 10u);
}
