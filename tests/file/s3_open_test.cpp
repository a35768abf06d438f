// Opening and closing S3 objects: which requests go out, what becomes of their failures, and what a handle then holds.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "file/s3_fixture.h"
#include "kvos/attributes.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "servers/sockets.h"

namespace {

using namespace kvtest;

class S3Open : public S3Test {};

const kv::file::s3::Object& objectOf(const OwnedFile& file) { return *file.record().pObject; }

}  // namespace

TEST_F(S3Open, AnObjectThatIsThereOpensWithItsSize) {
    ScriptedStore store;
    store.put("folder/clip.wav", "0123456789");
    CapturedMessages messages;
    OwnedFile file = openForReading(store.locator("folder/clip.wav"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 10u);
    EXPECT_EQ(kvOSTell(file.handle()), 0);
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(store.count("HeadObject"), 1u);
    EXPECT_EQ(store.requests().size(), 1u);
    EXPECT_EQ(messages.text(), "");
}

TEST_F(S3Open, TheRecordHoldsWhatTheLocatorSays) {
    ScriptedStore store;
    store.put("clip.wav", "x");
    const std::string locator = store.locator("clip.wav");
    const OwnedFile file(kvOSCreateFile(locator.c_str(), KVFILE_READ, 3, &store, KVFILE_OPEN_EXISTING, 7, 8));
    ASSERT_TRUE(file.isOpen());
    const kvOSFileHandle& record = file.record();
    EXPECT_EQ(record.dwType, KVFILE_S3);
    EXPECT_EQ(record.pFile, nullptr);
    EXPECT_EQ(record.szPath, locator);
    EXPECT_EQ(record.dwBlockSize, 0x3C00000u);
    EXPECT_EQ(record.pBlock, nullptr);
    EXPECT_TRUE(record.pCache != nullptr && record.pSpare1 != nullptr && record.pSpare2 != nullptr);
    EXPECT_EQ(record.dwAccess, KVFILE_READ);
    EXPECT_EQ(record.dwShare, 3u);
    EXPECT_EQ(record.pSecurity, &store);
    EXPECT_EQ(record.dwCreation, KVFILE_OPEN_EXISTING);
    EXPECT_EQ(record.dwFlags, 7u);
    EXPECT_EQ(record.hTemplate, 8);
    EXPECT_EQ(objectOf(file).bucket, "/bucket");
    EXPECT_EQ(objectOf(file).key, "clip.wav");
    EXPECT_EQ(objectOf(file).contentType, "audio/wave");
    EXPECT_EQ(objectOf(file).credentials.accessKey, "ACCESS");
    EXPECT_EQ(objectOf(file).credentials.secretKey, "SECRET");
    EXPECT_EQ(objectOf(file).credentials.sessionToken, "");
}

TEST_F(S3Open, AMissingObjectIsNotTold) {
    ScriptedStore store;
    CapturedMessages messages;
    errno = 0;
    EXPECT_FALSE(openForReading(store.locator("none")).isOpen());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), "");
}

TEST_F(S3Open, ARefusalIsTold) {
    ScriptedStore store;
    store.put("clip", "x");
    store.next("HeadObject", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(store.locator("clip")).isOpen());
    EXPECT_EQ(errno, EACCES);
    // An answer to a request for the head alone has no body that could name the reason.
    EXPECT_EQ(messages.text(), "Aws::HeadObject exception/error    ONE: AccessDenied HTTP 403\n");
}

TEST_F(S3Open, OpenAlwaysTakesAMissingObjectForAnEmptyOne) {
    ScriptedStore store;
    store.put("clip", "0123456789");
    CapturedMessages messages;
    EXPECT_EQ(openFile(store.locator("clip"), KVFILE_READ, KVFILE_OPEN_ALWAYS).record().qwSize, 10u);
    OwnedFile none = openFile(store.locator("none"), KVFILE_READ, KVFILE_OPEN_ALWAYS);
    ASSERT_TRUE(none.isOpen());
    EXPECT_EQ(none.record().qwSize, 0u);
    store.next("HeadObject", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    EXPECT_EQ(openFile(store.locator("clip"), KVFILE_READ, KVFILE_OPEN_ALWAYS).record().qwSize, 0u);
    EXPECT_EQ(store.count("CreateMultipartUpload"), 0u);
    EXPECT_EQ(messages.text(), "");
}

TEST_F(S3Open, EveryOtherCreationBeginsAnUploadWhateverTheAccess) {
    ScriptedStore store;
    store.put("clip.wav", "0123456789");
    std::size_t uploads = 0;
    for (const std::uint32_t creation : {KVFILE_CREATE_NEW, KVFILE_CREATE_ALWAYS, KVFILE_TRUNCATE_EXISTING, 0u, 99u}) {
        for (const std::uint32_t access : {KVFILE_READ, KVFILE_WRITE, KVFILE_READ | KVFILE_WRITE}) {
            SCOPED_TRACE(creation);
            OwnedFile file = openFile(store.locator("clip.wav"), access, creation);
            ASSERT_TRUE(file.isOpen());
            EXPECT_EQ(store.count("CreateMultipartUpload"), ++uploads);
            EXPECT_EQ(objectOf(file).uploadId, "upload-" + std::to_string(uploads));
            EXPECT_EQ(file.record().qwSize, 0u);
        }
    }
    EXPECT_EQ(store.count("HeadObject"), 0u);
    EXPECT_EQ(store.requests("CreateMultipartUpload").front().http.header("Content-Type"), "audio/wave");
    EXPECT_EQ(store.content("clip.wav"), "0123456789");
}

TEST_F(S3Open, AnUploadThatCannotBeginIsTold) {
    ScriptedStore store;
    store.next("CreateMultipartUpload", 1, fault::refused(403, "AccessDenied", "No writing here"));
    CapturedMessages messages;
    EXPECT_FALSE(openFile(store.locator("clip"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS).isOpen());
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(messages.text(), "Aws::HeadObject exception/error     TWO: AccessDenied No writing here\n");
}

TEST_F(S3Open, AStoreThatIsDownFailsAtOnce) {
    const std::string locator = "s3://A:S@127.0.0.1:" + std::to_string(freePort()) + "/bucket/clip";
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(locator).isOpen());
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(messages.count("Aws::HeadObject exception/error    ONE: "), 1u);
    EXPECT_FALSE(openFile(locator, KVFILE_WRITE, KVFILE_CREATE_ALWAYS).isOpen());
    EXPECT_EQ(messages.count("Aws::HeadObject exception/error     TWO: "), 1u);
}

TEST_F(S3Open, WithoutABucketOrAKeyNothingIsAsked) {
    ScriptedStore store;
    CapturedMessages messages;
    for (const char* end : {"", "/", "/bucket", "/bucket/"}) {
        errno = 0;
        EXPECT_FALSE(openForReading("s3://A:S@" + store.host() + end).isOpen()) << end;
        EXPECT_EQ(errno, EINVAL) << end;
        EXPECT_FALSE(openFile("s3://A:S@" + store.host() + end, KVFILE_WRITE, KVFILE_CREATE_ALWAYS).isOpen()) << end;
    }
    EXPECT_EQ(messages.count("    ONE: "), 4u);
    EXPECT_EQ(messages.count("     TWO: "), 4u);
    EXPECT_EQ(store.requests().size(), 0u);
}

TEST_F(S3Open, MalformedLocatorsFail) {
    CapturedMessages messages;
    for (const char* locator : {"x s3://", "s3://", "s3://@", "s3://:@:/b/k", "s3:///b", "glacier://vault/key",
                                "s3://A:S@ho st/b/k", "s3://A:S@h:port/b/k", "s3://A:S@[::/b/k", "s3://A:S@\n/b/k"}) {
        errno = 0;
        EXPECT_FALSE(openForReading(locator).isOpen()) << locator;
        EXPECT_NE(errno, 0) << locator;
    }
}

TEST_F(S3Open, APartThatDoesNotFitIsRefusedBeforeAnythingIsAsked) {
    CapturedMessages messages;
    EXPECT_FALSE(openForReading("s3://A:S@" + std::string(256, 'h') + "/b/k").isOpen());
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_FALSE(openForReading("s3://A:" + std::string(256, 's') + "@host/b/k").isOpen());
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Open, TheRedirectComesFirstAndMemoryBeforeAll) {
    ScriptedStore store;
    store.put("clip", "x");
    std::string from = "/media";
    std::string to = store.locator("");
    to.pop_back();
    gszReDir_Source = from.data();
    gszReDir_NewDir = to.data();
    const OwnedFile file = openForReading("/media/clip");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().szPath, store.locator("clip"));
    EXPECT_EQ(openNew("mem://" + store.locator("clip")).record().dwType, KVFILE_MEMORY);
}

TEST_F(S3Open, OutputsCanBeAttached) {
    ScriptedStore store;
    const ScratchFolder folder;
    const OwnedFile file = openFile(store.locator("clip"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    EXPECT_EQ(kvOSAddOutputFile(file.handle(), (folder / "copy").c_str()), 1u);
    EXPECT_EQ(file.record().dwOutputCount, 1u);
}

TEST_F(S3Open, OutputsGetNothingThatIsWrittenAndTextOnce) {
    ScriptedStore store;
    const ScratchFolder folder;
    OwnedFile file = openFile(store.locator("clip"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    ASSERT_EQ(kvOSAddOutputFile(file.handle(), (folder / "copy").c_str()), 1u);
    EXPECT_EQ(kvOSWriteFile(file.handle(), "data", 4, nullptr, nullptr), 4u);
    EXPECT_EQ(kvOSfputs("text", file.handle()), 0xFFFFFFFFu);  // as the write told no 1
    file.close();
    EXPECT_EQ(kvtest::contentOf(folder / "copy"), "text");
    EXPECT_EQ(store.content("clip"), "datatext");
}

// ---- the count of users ----

TEST_F(S3Open, EachHandleIsCountedOnce) {
    ScriptedStore store;
    store.put("clip", "x");
    EXPECT_EQ(glAmazonS3Refs, 0);
    OwnedFile one = openForReading(store.locator("clip"));
    EXPECT_EQ(glAmazonS3Refs, 1);
    OwnedFile two = openForReading(store.locator("clip"));
    EXPECT_EQ(glAmazonS3Refs, 2);
    one.close();
    two.close();
    EXPECT_EQ(glAmazonS3Refs, 0);
    openForReading(store.locator("none"));
    EXPECT_EQ(glAmazonS3Refs, 0);
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
}

TEST_F(S3Open, AStopThatFindsNoUserLeavesTheCountAtZero) {
    ScriptedStore store;
    store.put("clip", "x");
    OwnedFile file = openForReading(store.locator("clip"));
    glAmazonS3Refs = -4;
    file.close();
    EXPECT_EQ(glAmazonS3Refs, 0);
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
}

TEST_F(S3Open, WithACountBelowZeroTheTextGoesOnToTheOtherKinds) {
    ScriptedStore store;
    store.put("clip", "x");
    glAmazonS3Refs = -2;
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(store.locator("clip")).isOpen());
    EXPECT_EQ(glAmazonS3Refs, -1);
    // The local file system is asked in the end, and its failure is told without the secret.
    EXPECT_EQ(messages.text(), "kvOSCreateFile(s3://ACCESS:***@" + store.host() +
                                   "/bucket/clip,0x80000000,0x00000003,0x00000003,0x00000000)-FAIL=0x00000002(2) ");
    EXPECT_EQ(store.requests().size(), 0u);
    EXPECT_FALSE(openForReading(store.locator("clip")).isOpen());
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
}

TEST_F(S3Open, ThreadsOpenAndCloseAtOnce) {
    ScriptedStore store;
    store.put("clip", "0123456789");
    std::vector<std::thread> threads;
    std::atomic<int> opened{0};
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) opened += openForReading(store.locator("clip")).isOpen() ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(opened, 120);
    EXPECT_GE(glAmazonS3Refs, 0);  // a race may lose counts
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
}

// ---- credentials ----

TEST_F(S3Open, KeysOfTheLocatorSignTheRequest) {
    ScriptedStore store;
    openForReading(store.locator("clip"));
    EXPECT_EQ(signerOf(store.requests().front()), "ACCESS");
    EXPECT_EQ(regionOf(store.requests().front()), "us-east-1");
}

TEST_F(S3Open, WithoutKeysInTheLocatorTheKeyFileHasThemAndTheRegion) {
    ScriptedStore store;
    makeFile(keys_ / "bucket.csv", "AWSAccessKeyId=FILEKEY\nAWSSecretKey=secret\nAWSRegion=eu-north-1\n");
    CapturedMessages messages;
    openForReading(anonymous(store, "clip"));
    EXPECT_EQ(signerOf(store.requests().back()), "FILEKEY");
    EXPECT_EQ(regionOf(store.requests().back()), "eu-north-1");
    openForReading("s3://ONLY:@" + store.host() + "/bucket/clip");  // half a login counts as none
    EXPECT_EQ(signerOf(store.requests().back()), "FILEKEY");
    openForReading(store.locator("clip"));  // a whole one does without the file, and its region
    EXPECT_EQ(signerOf(store.requests().back()), "ACCESS");
    EXPECT_EQ(regionOf(store.requests().back()), "us-east-1");
    EXPECT_EQ(messages.text(), "");
}

TEST_F(S3Open, AMissingKeyFileIsToldAndTheOpenGoesOnWithoutASignature) {
    ScriptedStore store;
    store.put("clip", "x");
    CapturedMessages messages;
    const OwnedFile file = openForReading(anonymous(store, "clip"));
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(store.requests().front().http.header("Authorization"), "");
    EXPECT_EQ(messages.text(), "\nKeyFile</etc/Korvane//bucket.csv> Does not exist ");
}

TEST_F(S3Open, KeyFilesBehindTheStoreThatNeedsThemAreNotSoughtThere) {
    ScriptedStore store;
    store.put("clip", "x");
    std::string to = "s3://" + store.host() + "/bucket/keys";
    gszReDir_NewDir = to.data();
    CapturedMessages messages;
    EXPECT_TRUE(openForReading(anonymous(store, "clip")).isOpen());
    EXPECT_EQ(messages.count("Does not exist"), 1u) << messages.text();
    store.put("keys/bucket.csv", "AWSAccessKeyId=FARKEY\nAWSSecretKey=secret\n");
    EXPECT_TRUE(openForReading(anonymous(store, "clip")).isOpen());
    EXPECT_EQ(signerOf(store.requests().back()), "FARKEY");
    gszReDir_NewDir = nullptr;
}

// ---- settings ----

TEST_F(S3Open, TheSettingsDecideOverTls) {
    const Nginx server;
    server.makeDocument("/bucket/clip", "x");
    const std::string locator = "s3://A:S@" + server.host() + "/bucket/clip";
    setSetting("S3DisableSSL", 0);
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(locator).isOpen());  // TLS is not what this port talks
    EXPECT_EQ(sdwS3DisableSSL, 0u);
    setSetting("S3DisableSSL", 2);
    EXPECT_TRUE(openForReading(locator).isOpen());
    EXPECT_EQ(sdwS3DisableSSL, 2u);
}

TEST_F(S3Open, ASettingThatIsMissingLeavesTheVariable) {
    ScriptedStore store;
    store.put("clip", "x");
    sdwS3DisableSSL = 7;
    sdwS3VerifySSL = 8;
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
    EXPECT_EQ(sdwS3DisableSSL, 7u);
    EXPECT_EQ(sdwS3VerifySSL, 8u);
}

TEST_F(S3Open, TheCertificateOfANamedHostIsVerifiedUnlessTheSettingsSayOtherwise) {
    const Nginx server;
    server.makeDocument("/bucket/clip", "0123456789");
    sdwS3DisableSSL = 0;
    const std::string locator = "s3://A:S@" + server.secureHost() + "/bucket/clip";
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(locator).isOpen());
    EXPECT_EQ(messages.count("    ONE: "), 1u);
    setSetting("S3VerifySSL", 0);
    const OwnedFile file = openForReading(locator);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().qwSize, 10u);
    EXPECT_FALSE(objectOf(file).clientConfig.verifySsl);
}

TEST_F(S3Open, SettingsBehindTheStoreAreReadWithoutThem) {
    ScriptedStore store;
    store.put("clip", "x");
    std::string from = std::string(std::getenv("HOME")) + "/Library";
    std::string to = store.locator("settings");
    gszReDir_Source = from.data();
    gszReDir_NewDir = to.data();
    CapturedMessages messages;
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
    gszReDir_Source = gszReDir_NewDir = nullptr;
}

TEST_F(S3Open, SettingsBehindTheProvidersStoreAreReadWithoutTheRegion) {
    ScriptedStore store;
    store.put(atProvider("clip"), "x");
    std::string from = std::string(std::getenv("HOME")) + "/Library";
    std::string to = store.locator(atProvider("settings"));
    gszReDir_Source = from.data();
    gszReDir_NewDir = to.data();
    gszAwsRegion[0] = '\0';
    CapturedMessages messages;
    EXPECT_TRUE(openForReading(store.locator(atProvider("clip"))).isOpen());
    EXPECT_STREQ(gszAwsRegion, "us-east-1");
    gszReDir_Source = gszReDir_NewDir = nullptr;
}

// ---- the provider's own hosts ----

TEST_F(S3Open, ACompatibleStoreIsNotAskedForALocation) {
    ScriptedStore store("eu-central-1");
    store.put("clip", "x");
    EXPECT_TRUE(openForReading(store.locator("clip")).isOpen());
    EXPECT_EQ(store.count("GetBucketLocation"), 0u);
}

TEST_F(S3Open, EitherDomainOfTheProviderAsksForTheLocation) {
    ScriptedStore store;
    store.put("amazon.com/clip", "x");
    store.put("amazonaws.com/clip", "x");
    EXPECT_TRUE(openForReading(store.locator("amazon.com/clip")).isOpen());
    EXPECT_EQ(store.count("GetBucketLocation"), 1u);
    EXPECT_TRUE(openForReading(store.locator("amazonaws.com/clip")).isOpen());
    EXPECT_EQ(store.count("GetBucketLocation"), 2u);
}

TEST_F(S3Open, ALocationWithoutAConstraintIsTheFirstRegion) {
    ScriptedStore store;
    store.put(atProvider("clip"), "x");
    std::string("eu-west-1").copy(gszAwsRegion, 10);
    EXPECT_TRUE(openForReading(store.locator(atProvider("clip"))).isOpen());
    const auto asked = store.requests("GetBucketLocation");
    ASSERT_EQ(asked.size(), 2u);  // once with each region
    EXPECT_EQ(regionOf(asked[0]), "eu-west-1");
    EXPECT_EQ(regionOf(asked[1]), "us-east-1");
    EXPECT_EQ(regionOf(store.requests("HeadObject").front()), "us-east-1");
}

TEST_F(S3Open, TheTextOfAConstraintIsNotUsed) {
    ScriptedStore store("eu-central-1");
    store.put(atProvider("clip"), "x");
    EXPECT_TRUE(openForReading(store.locator(atProvider("clip"))).isOpen());
    EXPECT_EQ(store.count("GetBucketLocation"), 1u);
    EXPECT_EQ(regionOf(store.requests("HeadObject").front()), "us-east-1");
}

TEST_F(S3Open, AWrongRegionCostsOneMoreRequest) {
    ScriptedStore store("eu-central-1");
    store.put(atProvider("clip"), "0123456789");
    store.next("GetBucketLocation", 1, fault::wrongRegion("us-east-1", "eu-central-1"));
    CapturedMessages messages;
    const OwnedFile file = openForReading(store.locator(atProvider("clip")));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().qwSize, 10u);
    const auto asked = store.requests("GetBucketLocation");
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(regionOf(asked[0]), "us-east-1");
    EXPECT_EQ(regionOf(asked[1]), "eu-central-1");
    EXPECT_EQ(regionOf(store.requests("HeadObject").front()), "eu-central-1");
    EXPECT_STREQ(gszAwsRegion, "us-east-1");
    EXPECT_EQ(messages.text(), "");
}

TEST_F(S3Open, ARefusalWithoutARegionStaysWithTheOneAskedFor) {
    ScriptedStore store;
    store.put(atProvider("clip"), "x");
    std::string("eu-west-1").copy(gszAwsRegion, 10);
    store.next("GetBucketLocation", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    EXPECT_TRUE(openForReading(store.locator(atProvider("clip"))).isOpen());
    EXPECT_EQ(store.count("GetBucketLocation"), 1u);
    EXPECT_EQ(regionOf(store.requests("HeadObject").front()), "eu-west-1");
}

TEST_F(S3Open, ARegionThatRefusesTheSecondTimeTooEndsTheOpen) {
    ScriptedStore store;
    store.put(atProvider("clip"), "x");
    store.next("GetBucketLocation", 1, fault::wrongRegion("us-east-1", "eu-central-1"));
    store.next("GetBucketLocation", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    EXPECT_FALSE(openForReading(store.locator(atProvider("clip"))).isOpen());
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(store.count("HeadObject"), 0u);
    EXPECT_EQ(glAmazonS3Refs, 0);
}

TEST_F(S3Open, WhatCannotBeARegionIsNotTakenForOne) {
    for (const std::string text : {"evil.host/", "", "a b", "x'y"}) {
        ScriptedStore store;
        store.put(atProvider("clip"), "x");
        store.next("GetBucketLocation", 1, fault::wrongRegion("us-east-1", text));
        EXPECT_TRUE(openForReading(store.locator(atProvider("clip"))).isOpen()) << text;
        EXPECT_EQ(store.count("GetBucketLocation"), 1u) << text;
        EXPECT_EQ(regionOf(store.requests("HeadObject").front()), "us-east-1") << text;
    }
}

TEST_F(S3Open, TheSearchForTheRegionStartsAtTheKeyFilesThenAtTheVariableThenAtTheSettings) {
    ScriptedStore store("eu-central-1");
    const std::string locator = anonymous(store, atProvider("clip"));
    const auto firstRegion = [&] {
        CapturedMessages messages;
        openForReading(locator);
        return regionOf(store.requests().back());
    };
    makeFile(keys_ / "bucket.csv", "AWSAccessKeyId=K\nAWSSecretKey=S\nAWSRegion=of-the-file\n");
    EXPECT_EQ(firstRegion(), "of-the-file");
    makeFile(keys_ / "bucket.csv", "AWSAccessKeyId=K\nAWSSecretKey=S\n");
    std::string("of-the-variable").copy(gszAwsRegion, 16);
    gszAwsRegion[15] = '\0';
    EXPECT_EQ(firstRegion(), "of-the-variable");
    std::string stored = "of-the-settings";
    std::uint32_t length = 0;
    kvCFGValueString(KVSTDCONFIG, "MediaKiln\\Default", "AWSRegion", stored.data(), &length, 1);
    gszAwsRegion[0] = '\0';
    EXPECT_EQ(firstRegion(), "of-the-settings");
    EXPECT_STREQ(gszAwsRegion, "of-the-settings");
}

TEST_F(S3Open, TheGlobalHostStandsForTheEndpointOfTheRegion) {
    // No request leaves the machine: a proxy on it answers for the provider.
    std::vector<std::string> targets;
    std::mutex lock;
    const ScriptedServer proxy([&](const Request& request) {
        const std::lock_guard locked(lock);
        targets.push_back(request.method + " " + request.target);
        Answer answer;
        if (request.method == "HEAD") answer.announced = 10;
        if (request.target.ends_with("?location=")) answer.body = "<LocationConstraint/>";
        return answer;
    });
    setenv("http_proxy", ("http://" + proxy.host()).c_str(), 1);
    unsetenv("no_proxy");
    setSetting("S3VerifySSL", 0);
    const OwnedFile file = openForReading("https://A:S@my-bucket.s3.amazonaws.com/clip");
    unsetenv("http_proxy");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().qwSize, 10u);
    EXPECT_TRUE(objectOf(file).clientConfig.verifySsl);  // the setting is for hosts that a locator names
    const std::lock_guard locked(lock);
    ASSERT_EQ(targets.size(), 2u);
    EXPECT_EQ(targets[0].find("GET http://my-bucket.s3."), 0u) << targets[0];
    EXPECT_NE(targets[0].find("amazonaws.com/?location"), std::string::npos) << targets[0];
    EXPECT_EQ(targets[1].find("HEAD http://my-bucket.s3."), 0u) << targets[1];
    EXPECT_TRUE(targets[1].ends_with("amazonaws.com/clip")) << targets[1];
}

TEST_F(S3Open, ABucketAheadOfTheHostIsReachedThere) {
    ScriptedStore store;
    store.put("clip", "0123456789");
    for (const char* login : {"", "A:S@"}) {
        CapturedMessages messages;
        const OwnedFile file = openForReading(std::string("s3://") + login + "bucket." + store.virtualHost() + "/clip");
        ASSERT_TRUE(file.isOpen()) << messages.text();
        EXPECT_EQ(file.record().qwSize, 10u);
        EXPECT_TRUE(store.requests().back().byHostName);
    }
}

// ---- by name ----

TEST_F(S3Open, ExistenceAndSizeByName) {
    ScriptedStore store;
    store.put("clip", "0123456789");
    store.put("empty", "");
    EXPECT_EQ(kvOSFileExists(store.locator("clip").c_str()), 1u);
    EXPECT_EQ(kvOSFileExistsInternal(store.locator("empty").c_str()), 1u);
    EXPECT_EQ(kvOSFileExists(store.locator("none").c_str()), 0u);
    EXPECT_EQ(kvOSGetFileSizeName(store.locator("clip").c_str()), 10u);
    EXPECT_EQ(kvOSGetFileSizeName(store.locator("none").c_str()), 0u);
    store.next("HeadObject", 1, fault::announcing(std::uint64_t{5} << 32));
    EXPECT_EQ(kvOSGetFileSizeName(store.locator("clip").c_str()), std::uint64_t{5} << 32);
}

TEST_F(S3Open, AttributesComeFromTheSizeAndTheText) {
    ScriptedStore store;
    store.put("clip", "x");
    store.put("empty", "");
    store.put("folder/clip", "x");
    store.put("marked/", "");
    const auto attributes = [&](const char* key) {
        CapturedMessages messages;
        return kvOSGetFileAttributes(store.locator(key).c_str());
    };
    EXPECT_EQ(attributes("clip"), KVATTR_NORMAL);
    EXPECT_EQ(attributes("empty"), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes("marked/"), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes("folder/"), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes("folder\\"), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes("none/"), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes(""), KVATTR_DIRECTORY);
    EXPECT_EQ(attributes("folder"), KVATTR_INVALID);
    EXPECT_EQ(kvOSFileIsDir(store.locator("folder/").c_str()), 1u);
    EXPECT_EQ(kvOSFileIsDir(store.locator("clip").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsDir(store.locator("none").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsHidden(store.locator("clip").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsSystem(store.locator("clip").c_str()), 0u);
}

TEST_F(S3Open, WhatANameAloneAnswersIsNotAskedOfTheStore) {
    ScriptedStore store;
    store.put("clip", "x");
    const std::string locator = store.locator("clip");
    EXPECT_EQ(kvOSFileTimeCreated(locator.c_str()), KVFILETIME_NETWORK);
    EXPECT_EQ(kvOSFileTimeModified(locator.c_str()), KVFILETIME_NETWORK);
    EXPECT_EQ(kvOSFileTimeAccessed(locator.c_str()), KVFILETIME_NETWORK);
    EXPECT_EQ(kvOSFileIsReadOnly(locator.c_str()), 0u);
    EXPECT_EQ(kvOSSetFileReadOnly(locator.c_str(), 1), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSRenameFile(locator.c_str(), "/tmp/x"), -1);
    EXPECT_EQ(kvOSMakeDir(locator.c_str(), 0), -1);
    EXPECT_EQ(store.requests().size(), 0u);
}
