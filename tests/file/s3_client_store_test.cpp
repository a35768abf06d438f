// The client and real stores: that they take its requests and its signatures, and that their answers are understood.
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "file/s3/client.h"
#include "servers/object_store.h"

namespace {

using namespace kv::file::s3;
using kvtest::ObjectStore;
using Engine = ObjectStore::Engine;

std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

template <class Result>
std::string failureOf(const Answer<Result>& answer) {
    return answer.isSuccess() ? "(success)" : answer.error().exceptionName;
}

const std::vector<std::string>& oddKeys() {
    static const std::vector<std::string> keys = {"plain.mxf",
                                                  "a b",
                                                  "a+b",
                                                  "a&b",
                                                  "a=b",
                                                  "\xC3\xA9t\xC3\xA9/\xE6\x97\xA5.mxf",
                                                  ".hidden",
                                                  "folder/",
                                                  "a//b",
                                                  "//c",
                                                  "a/../b",
                                                  "..",
                                                  ".",
                                                  " lead",
                                                  "end ",
                                                  "a  b",
                                                  "q?x#y",
                                                  "<&>\"'",
                                                  "a;b,c:@$!*()",
                                                  "~t",
                                                  "tab\there",
                                                  "back\\slash"};
    return keys;
}

/// Ceph decodes the source of a copy twice, so that those with a percent sign are not found there.
const std::vector<std::string>& keysWithPercent() {
    static const std::vector<std::string> keys = {"a%b", "a%20b", "%2F", "100%"};
    return keys;
}

class S3ClientStore : public testing::TestWithParam<Engine> {
protected:
    ClientConfiguration plain(const std::string& host) const {
        ClientConfiguration configuration;
        configuration.region = store.region();
        configuration.endpointOverride = host;
        configuration.useHttps = false;
        return configuration;
    }
    Credentials keys() const { return {store.accessKey(), store.secretKey(), ""}; }
    std::string bucket() const { return store.bucket(); }

    std::string contentOf(const std::string& key) const {
        std::string buffer(1000, '.');
        const auto answer = client->getObject({bucket(), key, "", std::as_writable_bytes(std::span(buffer))});
        return answer.isSuccess() ? buffer.substr(0, answer.result().received) : failureOf(answer);
    }

    /// Joins one part, copied from `source`, into `key`; tells what failed.
    std::string copyByParts(const std::string& source, const std::string& key) const {
        const auto upload = client->createMultipartUpload({bucket(), key, "video/mxf"});
        if (!upload.isSuccess()) return "create: " + failureOf(upload);
        const std::string& id = upload.result().uploadId;
        const auto part = client->uploadPartCopy({bucket(), key, id, "/" + bucket() + "/" + source, 1});
        if (!part.isSuccess()) return "copy: " + failureOf(part);
        const auto head = client->headObject({bucket(), source});
        return failureOf(client->completeMultipartUpload({bucket(), key, id, {{head.result().eTag, 1}}}));
    }

    void roundTrip(const std::string& key) const {
        SCOPED_TRACE(key);
        const std::string content = "content of " + key;
        EXPECT_EQ(failureOf(client->putObject({bucket(), key, "video/mxf", bytesOf(content)})), "(success)");
        const auto head = client->headObject({bucket(), key});
        ASSERT_EQ(failureOf(head), "(success)");
        EXPECT_EQ(head.result().contentLength, content.size());
        EXPECT_EQ(head.result().contentType, "video/mxf");
        EXPECT_EQ(contentOf(key), content);
    }

    /// All keys of the bucket, in pages.
    std::vector<std::string> listed(bool second) const {
        std::vector<std::string> found;
        std::string next;
        for (bool goesOn = true; goesOn;) {
            const auto page = second ? client->listObjectsV2({bucket(), "", "", next})
                                     : client->listObjects({bucket(), "", "", next});
            if (!page.isSuccess()) return {failureOf(page)};
            for (const ListedObject& object : page.result().contents) found.push_back(object.key);
            next = second ? page.result().nextContinuationToken : page.result().nextMarker;
            goesOn = page.result().isTruncated;
        }
        return found;
    }

    ObjectStore store = ObjectStore::shared(GetParam());
    std::shared_ptr<Client> client = makeClient(keys(), plain(store.host()), false, true);
};

INSTANTIATE_TEST_SUITE_P(Of, S3ClientStore, testing::Values(Engine::ceph, Engine::swift),
                         [](const auto& tested) { return tested.param == Engine::ceph ? "Ceph" : "Swift"; });

TEST_P(S3ClientStore, OddKeysAreStoredReadListedAndDeleted) {
    std::vector<std::string> keys = oddKeys();
    keys.insert(keys.end(), keysWithPercent().begin(), keysWithPercent().end());
    for (const std::string& key : keys) roundTrip(key);
    std::ranges::sort(keys);
    EXPECT_EQ(listed(false), keys);
    EXPECT_EQ(listed(true), keys);
    for (const std::string& key : keys) EXPECT_EQ(failureOf(client->deleteObject({bucket(), key})), "(success)") << key;
    EXPECT_EQ(listed(true), std::vector<std::string>());
}

TEST_P(S3ClientStore, WhatTheClientStoresOthersFindUnderTheSameKey) {
    for (const std::string key : {"a b+c%d&e=f", "\xC3\xA9/.g", "folder/"}) {
        roundTrip(key);
        EXPECT_EQ(store.content(key), "content of " + key);
        store.put(key, "of another");
        EXPECT_EQ(contentOf(key), "of another");
    }
}

TEST_P(S3ClientStore, PartsAreCopiedFromOddKeys) {
    std::vector<std::string> keys = oddKeys();
    if (GetParam() == Engine::swift) keys.insert(keys.end(), keysWithPercent().begin(), keysWithPercent().end());
    for (const std::string& key : keys) {
        SCOPED_TRACE(key);
        roundTrip(key);
        EXPECT_EQ(copyByParts(key, "joined/" + key), "(success)");
        EXPECT_EQ(contentOf("joined/" + key), "content of " + key);
    }
}

TEST_P(S3ClientStore, BucketsInTheHostNameAndSignedPayloadsAreTaken) {
    client = makeClient(keys(), plain(store.virtualHost()), true, true);
    roundTrip("a b%");
    EXPECT_EQ(listed(true), std::vector<std::string>{"a b%"});
    EXPECT_EQ(failureOf(client->getBucketLocation({bucket()})), "(success)");
}

TEST_P(S3ClientStore, ATlsConnectionIsVerifiedUnlessToldOtherwise) {
    ClientConfiguration configuration = plain(store.secureHost());
    configuration.useHttps = true;
    client = makeClient(keys(), configuration, false, true);
    EXPECT_EQ(failureOf(client->headObject({bucket(), "key"})), "NetworkError");
    configuration.verifySsl = false;
    client = makeClient(keys(), configuration, false, true);
    roundTrip("key");
}

TEST_P(S3ClientStore, RangesAreDelivered) {
    store.put("key", "0123456789");
    std::string buffer(10, '.');
    const auto destination = std::as_writable_bytes(std::span(buffer));
    const auto inside = client->getObject({bucket(), "key", "bytes=2-4", destination});
    EXPECT_EQ(buffer, "234.......");
    EXPECT_EQ(inside.result().contentLength, 3u);
    const auto across = client->getObject({bucket(), "key", "bytes=8-20", destination});
    EXPECT_EQ(buffer, "894.......");
    EXPECT_EQ(across.result().contentLength, 2u);
    EXPECT_EQ(failureOf(client->getObject({bucket(), "key", "bytes=10-20", destination})), "InvalidRange");
}

TEST_P(S3ClientStore, APrefixIsFoldedAtTheDelimiter) {
    for (const char* key : {"d/a%b/1", "d/a%b/2", "d/c d", "e"}) store.put(key, "x");
    for (const auto& page :
         {client->listObjects({bucket(), "d/", "/", ""}), client->listObjectsV2({bucket(), "d/", "/", ""})}) {
        ASSERT_TRUE(page.isSuccess());
        ASSERT_EQ(page.result().contents.size(), 1u);
        EXPECT_EQ(page.result().contents[0].key, "d/c d");
        EXPECT_EQ(page.result().contents[0].size, 1u);
        EXPECT_GT(page.result().contents[0].lastModified, 1'000'000'000);
        EXPECT_EQ(page.result().contents[0].eTag, "\"9dd4e461268c8034f5c8564e155c67a6\"");
        EXPECT_EQ(page.result().commonPrefixes, std::vector<std::string>{"d/a%b/"});
        EXPECT_FALSE(page.result().isTruncated);
    }
}

TEST_P(S3ClientStore, RefusalsAreNamed) {
    char byte[1];
    const auto destination = std::as_writable_bytes(std::span(byte));
    EXPECT_EQ(failureOf(client->headObject({bucket(), "missing"})), "NotFound");
    EXPECT_EQ(failureOf(client->getObject({bucket(), "missing", "", destination})), "NoSuchKey");
    EXPECT_EQ(failureOf(client->listObjects({"no-such-bucket-here", "", "", ""})), "NoSuchBucket");
    EXPECT_EQ(failureOf(client->deleteObject({bucket(), "missing"})), "(success)");

    const auto refusing = [&](const Credentials& credentials) {
        return makeClient(credentials, plain(store.host()), false, true)->getBucketLocation({bucket()});
    };
    EXPECT_EQ(failureOf(refusing({store.accessKey(), "wrong", ""})), "SignatureDoesNotMatch");
    EXPECT_EQ(failureOf(refusing({store.strangerAccessKey(), store.strangerSecretKey(), ""})), "AccessDenied");
    EXPECT_FALSE(refusing({}).isSuccess());
}

/// More objects than a page holds, with keys that a listing must encode. Ceph does not encode the marker of the next
/// page, others do.
TEST(S3ClientStorePages, OddKeysAreListedOnceEach) {
    ObjectStore store = ObjectStore::shared(Engine::ceph);
    ClientConfiguration configuration;
    configuration.endpointOverride = store.host();
    configuration.useHttps = false;
    const auto client = makeClient({store.accessKey(), store.secretKey(), ""}, configuration, false, true);
    constexpr std::size_t kKeys = 1010;
    for (std::size_t i = 0; i < kKeys; ++i) {
        const std::string key = "x%20 +" + std::to_string(i) + "/f";
        ASSERT_TRUE(client->putObject({store.bucket(), key, "", {}}).isSuccess());
    }
    for (const std::string delimiter : {"", "/"}) {
        std::vector<std::string> seen;
        std::string next;
        for (int page = 0; page < 2; ++page) {
            const auto answer = client->listObjects({store.bucket(), "", delimiter, next});
            ASSERT_TRUE(answer.isSuccess());
            for (const ListedObject& object : answer.result().contents) seen.push_back(object.key);
            for (const std::string& prefix : answer.result().commonPrefixes) seen.push_back(prefix);
            EXPECT_EQ(answer.result().isTruncated, page == 0);
            next = answer.result().nextMarker;
        }
        EXPECT_EQ(seen.size(), kKeys);
        EXPECT_EQ(std::ranges::adjacent_find(seen), seen.end());
    }
}

}  // namespace
