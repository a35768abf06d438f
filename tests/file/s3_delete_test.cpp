// Deleting objects by name. Deletions always talk TLS, so that nginx stands for the store where one is to succeed: its
// folder "dav" is the bucket, and its documents are the objects; "moved" and "lost" are buckets of another region.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "file/s3_fixture.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "servers/nginx.h"
#include "servers/sockets.h"

namespace {

using namespace kvtest;

class S3Delete : public S3Test {
protected:
    std::string locator(const std::string& key) const {
        return "s3://ACCESS:SECRET@" + server_.secureHost() + "/dav/" + key;
    }
    std::string inBucket(const std::string& bucket, const std::string& key) const {
        return "s3://ACCESS:SECRET@" + server_.secureHost() + "/" + bucket + "/" + key;
    }
    /// Those of the requests so far, a blank behind each.
    std::string methods() const {
        std::string all;
        for (const ServedRequest& request : server_.requests()) all += request.method + ' ';
        return all;
    }
    bool exists(const std::string& key) const { return std::filesystem::exists(server_.root() + "/" + key); }

    const Nginx server_;
};

}  // namespace

TEST_F(S3Delete, ADeletedObjectGivesZeroAndAFailureAllOnes) {
    server_.makeDocument("/clip", "x");
    CapturedMessages messages;
    EXPECT_EQ(kvOSDeleteFile(locator("clip").c_str()), 0u);
    EXPECT_FALSE(exists("clip"));
    errno = 0;
    EXPECT_EQ(kvOSDeleteFile(locator("clip").c_str()), 0xFFFFFFFFu);  // this server tells that there is none
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), "");
    const auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].method, "DELETE");
    EXPECT_EQ(requests[0].target, "/dav/clip");
    EXPECT_NE(requests[0].authorization.find("Credential=ACCESS/"), std::string::npos);
}

TEST_F(S3Delete, NoSettingIsLookedAtAndNoCertificateVerified) {
    server_.makeDocument("/clip", "x");
    setSetting("S3DisableSSL", 1);
    setSetting("S3VerifySSL", 1);
    sdwS3DisableSSL = 0;
    EXPECT_EQ(kvOSDeleteFile(locator("clip").c_str()), 0u);
    EXPECT_EQ(sdwS3DisableSSL, 0u);
    EXPECT_FALSE(exists("clip"));
}

TEST_F(S3Delete, AStoreWithPlainHttpIsNotReached) {
    server_.makeDocument("/clip", "x");
    EXPECT_EQ(kvOSDeleteFile(("s3://A:S@" + server_.host() + "/dav/clip").c_str()), 0xFFFFFFFFu);
    EXPECT_NE(errno, 0);
    EXPECT_TRUE(exists("clip"));
}

TEST_F(S3Delete, WithoutABucketOrAKeyNothingIsAsked) {
    server_.makeDocument("/clip", "x");
    for (const char* end : {"", "/", "/dav", "/dav/", "//dav//"}) {
        errno = 0;
        EXPECT_EQ(kvOSDeleteFile(("s3://A:S@" + server_.secureHost() + end).c_str()), 0xFFFFFFFFu) << end;
        EXPECT_EQ(errno, EINVAL) << end;
    }
    EXPECT_EQ(server_.requests().size(), 0u);
    EXPECT_TRUE(exists("clip"));
}

TEST_F(S3Delete, APartThatDoesNotFitIsRefused) {
    EXPECT_EQ(kvOSDeleteFile(("s3://A:S@" + std::string(256, 'h') + "/b/k").c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(S3Delete, AStoreThatIsDownFailsAtOnce) {
    EXPECT_EQ(kvOSDeleteFile(("s3://A:S@127.0.0.1:" + std::to_string(freePort()) + "/b/k").c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ECONNREFUSED);
}

TEST_F(S3Delete, EachDeletionIsCountedAndNoneStaysCounted) {
    server_.makeDocument("/clip", "x");
    kvOSDeleteFile(locator("clip").c_str());
    EXPECT_EQ(glAmazonS3Refs, 0);
    glAmazonS3Refs = 3;
    kvOSDeleteFile(locator("none").c_str());
    EXPECT_EQ(glAmazonS3Refs, 3);
}

TEST_F(S3Delete, WithoutKeysInTheLocatorTheKeyFileHasThem) {
    server_.makeDocument("/clip", "x");
    makeFile(keys_ / "dav.csv", "AWSAccessKeyId=FILEKEY\nAWSSecretKey=secret\nAWSRegion=eu-north-1\n");
    EXPECT_EQ(kvOSDeleteFile(("s3://" + server_.secureHost() + "/dav/clip").c_str()), 0u);
    EXPECT_NE(server_.requests().back().authorization.find("Credential=FILEKEY/"), std::string::npos);
    EXPECT_NE(server_.requests().back().authorization.find("/eu-north-1/s3/"), std::string::npos);
}

TEST_F(S3Delete, TheRegionIsSoughtAtTheProvider) {
    server_.makeDocument("/" + atProvider("clip"), "x");
    EXPECT_EQ(kvOSDeleteFile(locator(atProvider("clip")).c_str()), 0u);
    const auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_TRUE(requests[0].target.starts_with("/dav?location") || requests[0].target.starts_with("/dav/?location"))
        << requests[0].target;
    EXPECT_EQ(requests[1].method, "DELETE");
}

TEST_F(S3Delete, TheGeneralDomainOfTheProviderAsksForTheLocationToo) {
    server_.makeDocument("/amazon.com/clip", "x");
    EXPECT_EQ(kvOSDeleteFile(locator("amazon.com/clip").c_str()), 0u);
    EXPECT_EQ(methods(), "GET DELETE ");
}

TEST_F(S3Delete, AWrongRegionCostsOneMoreRequestAndTheDeletionGoesToTheRightOne) {
    server_.makeDocument("/" + atProvider("clip"), "x");
    EXPECT_EQ(kvOSDeleteFile(inBucket("moved", atProvider("clip")).c_str()), 0u);
    EXPECT_FALSE(exists(atProvider("clip")));
    EXPECT_EQ(methods(), "GET GET DELETE ");
    const auto requests = server_.requests();
    EXPECT_NE(requests[0].authorization.find("/us-east-1/s3/"), std::string::npos);
    EXPECT_NE(requests[1].authorization.find("/eu-central-1/s3/"), std::string::npos);
    EXPECT_NE(requests[2].authorization.find("/eu-central-1/s3/"), std::string::npos);
}

TEST_F(S3Delete, ARegionThatRefusesTheSecondTimeTooEndsTheDeletion) {
    server_.makeDocument("/" + atProvider("clip"), "x");
    errno = 0;
    EXPECT_EQ(kvOSDeleteFile(inBucket("lost", atProvider("clip")).c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EACCES);
    EXPECT_TRUE(exists(atProvider("clip")));
    EXPECT_EQ(methods(), "GET GET ");
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Delete, RemovingADirectoryIsADeletion) {
    server_.makeDocument("/clip", "x");
    EXPECT_EQ(kvOSRemoveDirectory(locator("clip").c_str()), 0u);
    EXPECT_FALSE(exists("clip"));
}

TEST_F(S3Delete, ARecursiveRemovalTakesTheSuccessOfADeletionForItsFailure) {
    // A document in the place of the bucket is what every request for a listing gets.
    server_.makeDocument("/dav",
                         "<ListBucketResult><IsTruncated>false</IsTruncated>"
                         "<Contents><Key>clips/a</Key><Size>1</Size></Contents>"
                         "<Contents><Key>clips/b</Key><Size>1</Size></Contents>"
                         "<Contents><Key>clips/c</Key><Size>1</Size></Contents></ListBucketResult>");
    // What is deleted is named with a backslash, which is no separator of keys.
    for (const char* key : {"/clips\\a", "/clips\\b", "/clips\\c", "/clips/b"}) server_.makeDocument(key, "x");
    sdwS3DisableSSL = 0;
    sdwS3VerifySSL = 0;
    EXPECT_EQ(kvOSRemoveDirectoryRecursive(locator("clips").c_str()), 0u);
    EXPECT_TRUE(exists("clips\\a"));  // the first entry is passed over
    EXPECT_FALSE(exists("clips\\b"));
    EXPECT_TRUE(exists("clips\\c"));
    EXPECT_TRUE(exists("clips/b"));
}

TEST_F(S3Delete, AMoveDeletesItsSource) {
    server_.makeDocument("/clip", "0123456789");
    const ScratchFolder folder;
    sdwS3DisableSSL = 0;
    sdwS3VerifySSL = 0;
    CapturedMessages messages;
    EXPECT_EQ(kvOSMoveFile(locator("clip").c_str(), (folder / "copy").c_str()), 1u);
    EXPECT_EQ(contentOf(folder / "copy"), "0123456789");
    EXPECT_FALSE(exists("clip"));
}
