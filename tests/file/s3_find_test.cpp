// Listing the folders of a bucket: entries, pages, failures, and the walk on top of them.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "file/s3_fixture.h"
#include "kvos/attributes.h"
#include "kvos/find.h"
#include "servers/nginx.h"

namespace {

using namespace kvtest;

constexpr int kEnd = -1;

/// One enumeration from its first entry to its end.
class Found {
public:
    explicit Found(const std::string& pattern) {
        std::memset(&entry_, 0xEE, sizeof entry_);
        handle_ = kvOSFindFirstFile(pattern.c_str(), &entry_);
        if (handle_ == KVFIND_INVALID) {
            error_ = errno;
            return;
        }
        do {
            names_.emplace_back(entry_.szName);
            entries_.push_back(entry_);
        } while (kvOSFindNextFile(handle_, &entry_) != 0);
        error_ = errno;
    }
    ~Found() { kvOSFindClose(handle_); }
    Found(const Found&) = delete;
    Found& operator=(const Found&) = delete;

    bool isOpen() const { return handle_ != KVFIND_INVALID; }
    std::int64_t handle() const { return handle_; }
    int error() const { return error_; }
    const std::vector<std::string>& names() const { return names_; }
    const kvOSFindData& operator[](std::size_t index) const { return entries_.at(index); }

private:
    kvOSFindData entry_;
    std::int64_t handle_;
    int error_ = 0;
    std::vector<std::string> names_;
    std::vector<kvOSFindData> entries_;
};

using Names = std::vector<std::string>;

class S3Find : public S3Test {
protected:
    Names namesOf(const std::string& keyPattern) { return Found(store_.locator(keyPattern)).names(); }

    ScriptedStore store_;
};

}  // namespace

TEST_F(S3Find, AFolderListsItsFoldersAndItsObjectsWithoutItsName) {
    for (const char* key : {"clips/b", "clips/a.wav", "clips/sub/x", "clips/sub/y", "other/z", "top"}) {
        store_.put(key, "0123456789");
    }
    const Found found(store_.locator("clips/*"));
    EXPECT_EQ(found.names(), (Names{"sub/", "a.wav", "b"}));
    EXPECT_EQ(found.error(), kEnd);
    EXPECT_EQ(found[0].dwAttributes, KVATTR_DIRECTORY);
    EXPECT_EQ(found[1].dwAttributes, KVATTR_NORMAL);
    const StoreRequest request = store_.requests().front();
    EXPECT_EQ(request.operation, "ListObjectsV2");
    EXPECT_EQ(request.query.at("prefix"), "clips/");
    EXPECT_EQ(request.query.at("delimiter"), "/");
    EXPECT_EQ(store_.requests().size(), 1u);
}

TEST_F(S3Find, WhatStandsBehindTheLastSlashIsNotLookedAt) {
    store_.put("clips/a.wav", "x");
    store_.put("clips/b.mov", "x");
    for (const char* pattern : {"clips/", "clips/*", "clips/*.mov", "clips/?.???", "clips/none", "clips\\*.*"}) {
        EXPECT_EQ(namesOf(pattern), (Names{"a.wav", "b.mov"})) << pattern;
    }
}

TEST_F(S3Find, WithoutAFolderTheWholeBucketIsListed) {
    store_.put("clips/a", "x");
    store_.put("top", "x");
    for (const char* pattern : {"", "*", "*.wav"}) EXPECT_EQ(namesOf(pattern), (Names{"clips/", "top"})) << pattern;
    EXPECT_EQ(store_.requests().front().query.at("prefix"), "");
}

TEST_F(S3Find, AFolderOfOneLetterIsNotSeen) {
    store_.put("a/clip", "x");
    store_.put("ab/clip", "x");
    EXPECT_EQ(namesOf("a/*"), (Names{"a/", "ab/"}));
    EXPECT_EQ(namesOf("ab/*"), (Names{"clip"}));
    store_.put("a/b/clip", "x");
    EXPECT_EQ(namesOf("a/b/*"), (Names{"clip"}));
}

TEST_F(S3Find, SizesAreWholeAndTimesAndReservedBytesZero) {
    store_.putPattern("clips/large", (std::uint64_t{3} << 32) + 7);
    store_.put("clips/sub/x", "x");
    const Found found(store_.locator("clips/*"));
    ASSERT_EQ(found.names(), (Names{"sub/", "large"}));
    EXPECT_EQ(found[1].dwSizeHigh, 3u);
    EXPECT_EQ(found[1].dwSizeLow, 7u);
    EXPECT_EQ(found[0].dwSizeHigh, 0u);
    EXPECT_EQ(found[0].dwSizeLow, 0u);
    for (const std::size_t index : {0u, 1u}) {
        for (const kvOSFileTime time : {found[index].ftCreation, found[index].ftAccess, found[index].ftWrite}) {
            EXPECT_EQ(time.dwLow, 0u);
            EXPECT_EQ(time.dwHigh, 0u);
        }
        for (const std::uint8_t byte : found[index].reserved) EXPECT_EQ(byte, 0u);
    }
}

TEST_F(S3Find, TheObjectThatStandsForTheFolderIsPassedOver) {
    store_.put("clips/", "");
    store_.put("clips/a", "x");
    EXPECT_EQ(namesOf("clips/*"), (Names{"a"}));
    store_.remove("clips/a");
    const Found found(store_.locator("clips/*"));
    EXPECT_FALSE(found.isOpen());
    EXPECT_EQ(found.error(), kEnd);
}

TEST_F(S3Find, AnEmptyPrefixReportsADot) {
    store_.next("ListObjectsV2", 1,
                fault::garbage("<ListBucketResult><IsTruncated>false</IsTruncated>"
                               "<CommonPrefixes><Prefix>clips/</Prefix></CommonPrefixes>"
                               "<CommonPrefixes><Prefix>clips/odd</Prefix></CommonPrefixes>"
                               "<Contents><Key>clips/folder/</Key><Size>0</Size></Contents>"
                               "<Contents><Key>clips/.</Key><Size>1</Size></Contents>"
                               "<Contents><Key>cl</Key><Size>1</Size></Contents></ListBucketResult>"));
    const Found found(store_.locator("clips/*"));
    ASSERT_EQ(found.names(), (Names{".", "odd", "folder/", "."}));  // a key shorter than the prefix has no name either
    EXPECT_EQ(found[0].dwAttributes, KVATTR_DIRECTORY);
    EXPECT_EQ(found[1].dwAttributes, KVATTR_NORMAL);
    EXPECT_EQ(found[2].dwAttributes, KVATTR_DIRECTORY);
    EXPECT_EQ(found[3].dwAttributes, KVATTR_NORMAL);
}

// ---- pages ----

TEST_F(S3Find, PagesFollowEachOther) {
    Names keys;
    for (int i = 100; i < 125; ++i) {
        keys.push_back("clip" + std::to_string(i));
        store_.put("clips/" + keys.back(), "x");
    }
    store_.setPageSize(10);
    EXPECT_EQ(namesOf("clips/*"), keys);
    EXPECT_EQ(store_.count("ListObjectsV2"), 3u);
    const auto requests = store_.requests();
    EXPECT_FALSE(requests[0].query.contains("continuation-token"));
    EXPECT_TRUE(requests[1].query.contains("continuation-token"));
    EXPECT_NE(requests[1].query.at("continuation-token"), requests[2].query.at("continuation-token"));
}

TEST_F(S3Find, APageGivesItsFoldersAndThenItsObjectsBeforeTheNextIsFetched) {
    for (const char* key : {"clips/a/1", "clips/b", "clips/c/1", "clips/d", "clips/e/1", "clips/f"})
        store_.put(key, "x");
    store_.setPageSize(4);
    EXPECT_EQ(namesOf("clips/*"), (Names{"a/", "c/", "b", "d", "e/", "f"}));
}

TEST_F(S3Find, UnreadFoldersOfAPageWithoutObjectsAreLostWhenMoreFollows) {
    for (const char* folder : {"a", "b", "c", "d", "e", "f", "g", "h"}) {
        store_.put(std::string("clips/") + folder + "/1", "x");
    }
    store_.setPageSize(3);
    EXPECT_EQ(namesOf("clips/*"), (Names{"a/", "d/", "g/", "h/"}));
}

// ---- failures ----

TEST_F(S3Find, AnEmptyFolderIsNotFound) {
    const Found found(store_.locator("clips/*"));
    EXPECT_FALSE(found.isOpen());
    EXPECT_EQ(found.error(), kEnd);
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Find, ARefusalIsAFailureThatSaysWhyAndIsNotTold) {
    store_.put("clips/a", "x");
    store_.next("ListObjectsV2", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    CapturedMessages messages;
    const Found found(store_.locator("clips/*"));
    EXPECT_FALSE(found.isOpen());
    EXPECT_EQ(found.error(), EACCES);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Find, APageThatCannotBeFetchedEndsTheListingWithItsReason) {
    store_.setPageSize(2);
    for (const char* key : {"clips/a", "clips/b", "clips/c"}) store_.put(key, "x");
    store_.next([](const StoreRequest& request) { return request.query.contains("continuation-token"); }, 1,
                fault::refused(403, "AccessDenied", "Access Denied"));
    const Found found(store_.locator("clips/*"));
    EXPECT_EQ(found.names(), (Names{"a", "b"}));
    EXPECT_EQ(found.error(), EACCES);
    kvOSFindData entry;
    EXPECT_EQ(kvOSFindNextFile(found.handle(), &entry), 0u);  // and stays at its end
    EXPECT_EQ(errno, kEnd);
    EXPECT_EQ(store_.count("ListObjectsV2"), 2u);
}

TEST_F(S3Find, APageThatSendsBackToItselfEndsTheListing) {
    store_.next("ListObjectsV2", ScriptedStore::kAlways,
                fault::garbage("<ListBucketResult><IsTruncated>true</IsTruncated>"
                               "<NextContinuationToken>same</NextContinuationToken>"
                               "<Contents><Key>clips/a</Key><Size>1</Size></Contents></ListBucketResult>"));
    const Found found(store_.locator("clips/*"));
    EXPECT_EQ(found.names(), (Names{"a"}));
    EXPECT_EQ(found.error(), EBADMSG);
    EXPECT_EQ(store_.count("ListObjectsV2"), 2u);
}

TEST_F(S3Find, WhatIsNoListingIsAFailure) {
    for (const char* text :
         {"", "x", "<Listing/>", "<ListBucketResult><IsTruncated>true</IsTruncated></ListBucketResult>"}) {
        store_.next("ListObjectsV2", 1, fault::garbage(text));
        const Found found(store_.locator("clips/*"));
        EXPECT_FALSE(found.isOpen()) << text;
    }
}

TEST_F(S3Find, NullAndPartsThatDoNotFitAreRefused) {
    kvOSFindData entry;
    EXPECT_EQ(kvOSFindFirstFile(store_.locator("clips/*").c_str(), nullptr), KVFIND_INVALID);
    EXPECT_EQ(errno, kEnd);
    EXPECT_EQ(kvOSFindFirstFile(store_.locator(std::string(4096, 'k')).c_str(), &entry), KVFIND_INVALID);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(glAmazonS3Refs, 0);
    EXPECT_EQ(store_.requests().size(), 0u);
}

TEST_F(S3Find, ANameThatDoesNotFitIsLeftOutAndTheEndSaysSo) {
    store_.next("ListObjectsV2", 1,
                fault::garbage("<ListBucketResult><IsTruncated>false</IsTruncated><Contents><Key>clips/" +
                               std::string(4096, 'a') + "</Key><Size>1</Size></Contents><Contents><Key>clips/" +
                               std::string(4097, 'b') + "</Key><Size>1</Size></Contents></ListBucketResult>"));
    const Found found(store_.locator("clips/*"));
    EXPECT_EQ(found.names(), (Names{std::string(4096, 'a')}));
    EXPECT_EQ(found.error(), ENAMETOOLONG);
}

// ---- the handle ----

TEST_F(S3Find, EachEnumerationIsCountedOnce) {
    store_.put("clips/a", "x");
    {
        const Found one(store_.locator("clips/*"));
        EXPECT_EQ(glAmazonS3Refs, 1);
        const Found two(store_.locator("clips/*"));
        EXPECT_EQ(glAmazonS3Refs, 2);
    }
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Find, TheHandleClosesAndHasASeparator) {
    store_.put("clips/a", "x");
    kvOSFindData entry;
    const std::int64_t find = kvOSFindFirstFile(store_.locator("clips/*").c_str(), &entry);
    ASSERT_NE(find, KVFIND_INVALID);
    EXPECT_STREQ(kvOSFindGetSeparator(find), "/");
    EXPECT_EQ(kvOSFindGetSeparatorChar(find), '/');
    EXPECT_EQ(kvOSFindNextFile(find, nullptr), 0u);
    EXPECT_EQ(FindClose(find), 1u);
}

// ---- settings, credentials, regions ----

TEST_F(S3Find, SettingsAndKeysAreThoseOfAnOpen) {
    store_.put("clips/a", "x");
    sdwS3DisableSSL = 0;
    setSetting("S3DisableSSL", 1);
    makeFile(keys_ / "bucket.csv", "AWSAccessKeyId=FILEKEY\nAWSSecretKey=secret\nAWSRegion=eu-north-1\n");
    EXPECT_EQ(Found(anonymous(store_, "clips/*")).names(), (Names{"a"}));
    EXPECT_EQ(signerOf(store_.requests().back()), "FILEKEY");
    EXPECT_EQ(regionOf(store_.requests().back()), "eu-north-1");
    EXPECT_EQ(store_.count("GetBucketLocation"), 0u);
}

TEST_F(S3Find, TheCertificateOfANamedHostIsVerifiedUnlessTheSettingsSayOtherwise) {
    const Nginx server;
    server.makeDocument("/bucket",
                        "<ListBucketResult><Contents><Key>clips/a</Key><Size>1</Size></Contents></ListBucketResult>");
    sdwS3DisableSSL = 0;
    const std::string pattern = "s3://A:S@" + server.secureHost() + "/bucket/clips/*";
    EXPECT_FALSE(Found(pattern).isOpen());
    EXPECT_TRUE(server.requests().empty());
    setSetting("S3VerifySSL", 0);
    EXPECT_EQ(Found(pattern).names(), (Names{"a"}));
    EXPECT_EQ(sdwS3VerifySSL, 0u);
}

TEST_F(S3Find, TheGeneralDomainOfTheProviderAsksForTheLocationToo) {
    store_.put("amazon.com/a", "x");
    EXPECT_EQ(namesOf("amazon.com/*"), (Names{"a"}));
    EXPECT_EQ(store_.count("GetBucketLocation"), 1u);
}

TEST_F(S3Find, TheRegionIsSoughtAtTheProvider) {
    store_.put(atProvider("a"), "x");
    store_.next("GetBucketLocation", 1, fault::wrongRegion("us-east-1", "eu-central-1"));
    EXPECT_EQ(namesOf(atProvider("*")), (Names{"a"}));
    EXPECT_EQ(store_.count("GetBucketLocation"), 2u);
    EXPECT_EQ(regionOf(store_.requests("ListObjectsV2").front()), "eu-central-1");
}

TEST_F(S3Find, ARefusalWithoutARegionMeansTheFirstOne) {
    store_.put(atProvider("a"), "x");
    std::strcpy(gszAwsRegion, "eu-west-1");
    store_.next("GetBucketLocation", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    EXPECT_EQ(namesOf(atProvider("*")), (Names{"a"}));
    const auto asked = store_.requests("GetBucketLocation");
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(regionOf(asked[1]), "us-east-1");
    EXPECT_EQ(regionOf(store_.requests("ListObjectsV2").front()), "us-east-1");
}

TEST_F(S3Find, ARegionThatRefusesTheSecondTimeTooEndsTheListing) {
    store_.put(atProvider("a"), "x");
    std::strcpy(gszAwsRegion, "eu-west-1");
    store_.next("GetBucketLocation", 2, fault::refused(403, "AccessDenied", "Access Denied"));
    const Found found(store_.locator(atProvider("*")));
    EXPECT_FALSE(found.isOpen());
    EXPECT_EQ(found.error(), EACCES);
    EXPECT_EQ(store_.count("ListObjectsV2"), 0u);
    EXPECT_EQ(glAmazonS3Refs, 0);
}

// ---- on top of it ----

namespace {

std::uint32_t note(void* context, const char* path, std::uint32_t attributes) {
    static_cast<Names*>(context)->push_back(path + std::string(attributes == KVATTR_DIRECTORY ? " (folder)" : ""));
    return 0;
}

}  // namespace

TEST_F(S3Find, AWalkGoesThroughTheFolders) {
    for (const char* key : {"clips/a", "clips/sub/b", "clips/sub/deep/c"}) store_.put(key, "x");
    Names visited;
    EXPECT_EQ(kvOSRecurseDirectory(&visited, store_.locator("clips/").c_str(), note,
                                   KVRECURSE_SUBDIRECTORIES | KVRECURSE_REPORT_DIRECTORIES),
              0u);
    const std::string top = store_.locator("clips/");
    ASSERT_EQ(visited.size(), 5u);
    for (std::string& path : visited) {
        ASSERT_TRUE(path.starts_with(top)) << path;
        for (std::size_t at = 0; (at = path.find("//", top.size() - 1)) != std::string::npos;) path.erase(at, 1);
    }
    EXPECT_EQ(visited,
              (Names{top + "sub/ (folder)", top + "sub/deep/ (folder)", top + "sub/deep/c", top + "sub/b", top + "a"}));
}

TEST_F(S3Find, AQuestionMarkInTheFolderOfAWalkIsPartOfTheKey) {
    for (const char* key : {"clips/a", "clips/sub?x=1/b"}) store_.put(key, "x");
    Names visited;
    const std::string folder = store_.locator("clips/sub?x=1/");
    EXPECT_EQ(kvOSRecurseDirectory(&visited, folder.c_str(), note, 0), 0u);
    EXPECT_EQ(visited, (Names{folder + "/b"}));
}

TEST_F(S3Find, AWalkFromWhatIsNoFolderFails) {
    Names visited;
    store_.put("clips/a", "x");
    EXPECT_EQ(kvOSRecurseDirectory(&visited, store_.locator("clips/a").c_str(), note, 0), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRecurseDirectory(&visited, store_.locator("clips").c_str(), note, 0), 0xFFFFFFFFu);
}
