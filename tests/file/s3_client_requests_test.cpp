// What the S3 client sends.
#include <cerrno>
#include <cstring>

#include "file/s3_client_fixture.h"

namespace {

using namespace s3client;

TEST(S3ClientRequests, AtAnAddressTheBucketIsInThePath) {
    ScriptedServer server = answering({});
    clientOf(server)->headObject({"bucket", "key"});
    const Request request = server.requests().at(0);
    EXPECT_EQ(request.method, "HEAD");
    EXPECT_EQ(request.target, "/bucket/key");
    EXPECT_EQ(request.header("Host"), server.host());
}

TEST(S3ClientRequests, AtANameTheBucketIsInTheHost) {
    ScriptedServer server = answering({});
    const auto client = makeClient(kKeys, plainHttp(named(server, "s3.localhost")), false, true);
    EXPECT_TRUE(client->headObject({"bucket", "key"}).isSuccess());
    client->headObject({"with.dots-2", "key"});
    client->listObjects({"bucket", "", "", ""});
    const auto requests = server.requests();
    EXPECT_EQ(requests.at(0).header("Host"), named(server, "bucket.s3.localhost"));
    EXPECT_EQ(requests.at(0).target, "/key");
    EXPECT_EQ(requests.at(1).header("Host"), named(server, "with.dots-2.s3.localhost"));
    EXPECT_EQ(requests.at(2).target, "/?encoding-type=url&prefix=");
}

TEST(S3ClientRequests, ABucketThatIsNoHostNameIsInThePath) {
    ScriptedServer server = answering({});
    const auto client = makeClient(kKeys, plainHttp(named(server, "s3.localhost")), false, true);
    for (const std::string bucket : {"ab", "Bucket", "a_b_c", "-abc", "abc.", "a..b"}) {
        client->headObject({bucket, "key"});
        EXPECT_EQ(server.requests().back().target, "/" + bucket + "/key");
        EXPECT_EQ(server.requests().back().header("Host"), named(server, "s3.localhost"));
    }
    client->headObject({std::string(64, 'a'), "key"});
    EXPECT_EQ(server.requests().back().target, "/" + std::string(64, 'a') + "/key");
    client->headObject({"a/b ?", "key"});
    EXPECT_EQ(server.requests().back().target, "/a%2Fb%20%3F/key");
}

TEST(S3ClientRequests, WithoutVirtualAddressingTheBucketIsInThePath) {
    ScriptedServer server = answering({});
    makeClient(kKeys, plainHttp(named(server, "s3.localhost")), false, false)->headObject({"bucket", "key"});
    EXPECT_EQ(server.requests().at(0).target, "/bucket/key");
}

TEST(S3ClientRequests, AtANameWithoutADotTheBucketIsInThePath) {
    ScriptedServer server = answering({});
    makeClient(kKeys, plainHttp(named(server, "localhost")), false, true)->headObject({"bucket", "key"});
    EXPECT_EQ(server.requests().at(0).target, "/bucket/key");
}

TEST(S3ClientRequests, ABucketsHostWithoutAnAddressIsGivenUpForThePath) {
    ScriptedServer server = answering({});
    // This name stands for 127.0.0.1, and nothing below it stands for anything.
    const auto client = makeClient(kKeys, plainHttp(named(server, "127.1")), false, true);
    EXPECT_TRUE(client->headObject({"bucket", "key"}).isSuccess());
    EXPECT_TRUE(client->headObject({"bucket", "key"}).isSuccess());
    ASSERT_EQ(server.requests().size(), 2u);
    for (const Request& request : server.requests()) {
        EXPECT_EQ(request.target, "/bucket/key");
        EXPECT_EQ(request.header("Host"), named(server, "127.1"));
    }
}

TEST(S3ClientRequests, AreSignedForTheRegionWithThePayloadLeftOut) {
    ScriptedServer server = answering({});
    ClientConfiguration configuration = plainHttp(server.host());
    configuration.region = "eu-west-3";
    makeClient(kKeys, configuration, false, true)->putObject({"bucket", "key", "video/mxf", bytesOf("text")});
    const Request request = server.requests().at(0);
    EXPECT_EQ(request.header("x-amz-content-sha256"), "UNSIGNED-PAYLOAD");
    EXPECT_EQ(request.header("x-amz-date").size(), std::strlen("20130524T000000Z"));
    EXPECT_FALSE(request.has("x-amz-security-token"));
    const std::string day = request.header("x-amz-date").substr(0, 8);
    EXPECT_EQ(request.header("Authorization")
                  .find("AWS4-HMAC-SHA256 Credential=ACCESSKEY/" + day +
                        "/eu-west-3/s3/aws4_request,SignedHeaders=content-type;host;"
                        "x-amz-content-sha256;x-amz-date,Signature="),
              0u);
    EXPECT_EQ(request.header("Content-Type"), "video/mxf");
    EXPECT_EQ(request.header("Content-Length"), "4");
    EXPECT_FALSE(request.has("Expect"));
    EXPECT_EQ(request.body, "text");
}

TEST(S3ClientRequests, PayloadsAreSignedWhereThatIsAskedFor) {
    ScriptedServer server = answering({});
    makeClient(kKeys, plainHttp(server.host()), true, true)->putObject({"bucket", "key", "", bytesOf("abc")});
    EXPECT_EQ(server.requests().at(0).header("x-amz-content-sha256"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(S3ClientRequests, WithoutKeysAreNotSigned) {
    ScriptedServer server = answering({});
    clientOf(server, {})->headObject({"bucket", "key"});
    const Request request = server.requests().at(0);
    for (const auto& [name, value] : request.headers) {
        EXPECT_EQ(name.find("x-amz"), std::string::npos) << name;
        EXPECT_NE(name, "authorization");
    }
}

TEST(S3ClientRequests, ASessionTokenGoesWithThem) {
    ScriptedServer server = answering({});
    clientOf(server, {"A", "S", "token"})->headObject({"bucket", "key"});
    EXPECT_EQ(server.requests().at(0).header("x-amz-security-token"), "token");
}

TEST(S3ClientRequests, KeysAreEncodedOnceAndKeptWhole) {
    ScriptedServer server = answering({});
    const auto client = clientOf(server);
    const std::pair<const char*, const char*> keys[] = {
        {"a b", "a%20b"},       {"a+b", "a%2Bb"},       {"a%b", "a%25b"},       {"a%20b", "a%2520b"},
        {"a&b=c", "a%26b%3Dc"}, {"\xC3\xA9", "%C3%A9"}, {".hidden", ".hidden"}, {"folder/", "folder/"},
        {"a//b", "a//b"},       {"a/../b", "a/../b"},   {"..", ".."},           {".", "."},
        {"/first", "/first"},   {"q?x#y", "q%3Fx%23y"}, {"\\", "%5C"},          {"tab\tand\nline", "tab%09and%0Aline"}};
    for (const auto& [key, sent] : keys) {
        client->headObject({"bucket", key});
        EXPECT_EQ(server.requests().back().target, "/bucket/" + std::string(sent));
        client->putObject({"bucket", key, "", {}});
        EXPECT_EQ(server.requests().back().target, "/bucket/" + std::string(sent));
    }
}

TEST(S3ClientRequests, WithoutABodySayThatItsLengthIsZero) {
    ScriptedServer server = answering({});
    const auto client = clientOf(server);
    client->putObject({"bucket", "key", "text/plain", {}});
    client->createMultipartUpload({"bucket", "key", "text/plain"});
    client->uploadPartCopy({"bucket", "key", "id", "/bucket/a", 1});
    for (const Request& request : server.requests()) {
        EXPECT_EQ(request.header("Content-Length"), "0") << request.method << " " << request.target;
        EXPECT_FALSE(request.has("Expect"));
        EXPECT_EQ(request.body, "");
    }
    EXPECT_EQ(server.requests().at(0).header("Content-Type"), "text/plain");
    EXPECT_EQ(server.requests().at(1).header("Content-Type"), "text/plain");
    EXPECT_FALSE(server.requests().at(2).has("Content-Type"));
}

TEST(S3ClientRequests, OfEachOperationHaveItsMethodAndQuery) {
    ScriptedServer server = answering({});
    const auto client = clientOf(server);
    client->getBucketLocation({"bucket"});
    client->listObjects({"bucket", "a b/", "/", "m&"});
    client->listObjectsV2({"bucket", "", "", "t+"});
    client->deleteObject({"bucket", "key"});
    client->createMultipartUpload({"bucket", "key", ""});
    client->uploadPartCopy({"bucket", "key", "i d", "/bucket/a b%/c", 12});
    client->completeMultipartUpload({"bucket", "key", "i+d", {{"\"t\"", 1}}});
    const auto requests = server.requests();
    const std::pair<const char*, const char*> sent[] = {
        {"GET", "/bucket?location="},
        {"GET", "/bucket?delimiter=%2F&encoding-type=url&marker=m%26&prefix=a%20b%2F"},
        {"GET", "/bucket?continuation-token=t%2B&encoding-type=url&list-type=2&prefix="},
        {"DELETE", "/bucket/key"},
        {"POST", "/bucket/key?uploads="},
        {"PUT", "/bucket/key?partNumber=12&uploadId=i%20d"},
        {"POST", "/bucket/key?uploadId=i%2Bd"}};
    ASSERT_EQ(requests.size(), std::size(sent));
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i].method, sent[i].first);
        EXPECT_EQ(requests[i].target, sent[i].second);
    }
    EXPECT_EQ(requests[5].header("x-amz-copy-source"), "/bucket/a%20b%25/c");
    EXPECT_NE(requests[6].body.find("<ETag>&quot;t&quot;</ETag>"), std::string::npos);
}

TEST(S3ClientRequests, WithoutBucketOrKeyAreNotSent) {
    ScriptedServer server = answering({});
    const auto client = clientOf(server);
    errno = 0;
    EXPECT_EQ(failureOf(client->getBucketLocation({""})), "InvalidArgument");
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(failureOf(client->headObject({"", "key"})), "InvalidArgument");
    // What would be sent without a key concerns the bucket itself.
    EXPECT_EQ(failureOf(client->headObject({"bucket", ""})), "InvalidArgument");
    EXPECT_EQ(failureOf(client->deleteObject({"bucket", ""})), "InvalidArgument");
    EXPECT_EQ(failureOf(client->putObject({"bucket", "", "", {}})), "InvalidArgument");
    EXPECT_EQ(failureOf(client->createMultipartUpload({"bucket", "", ""})), "InvalidArgument");
    EXPECT_TRUE(server.requests().empty());
}

TEST(S3ClientRequests, WithLineEndsInAHeaderAreNotSent) {
    ScriptedServer server = answering({});
    EXPECT_EQ(failureOf(clientOf(server)->putObject({"bucket", "key", "a\r\nx-more: 1", {}})), "InvalidArgument");
    EXPECT_EQ(failureOf(clientOf(server, {"a\nb", "c", ""})->headObject({"bucket", "key"})), "InvalidArgument");
    EXPECT_TRUE(server.requests().empty());
}

TEST(S3ClientRequests, ToWhatIsNoHostAreNotSent) {
    ScriptedServer server = answering({});
    for (const std::string& host :
         {"user:secret@" + server.host(), server.host() + "/path?", server.host() + "#", server.host() + " ",
          std::string("a b"), std::string(":80"), std::string("host:"), std::string("host:99999"),
          std::string("host:8x"), std::string("host\r\nx: y"), std::string("[::1"), std::string("[host]")}) {
        errno = 0;
        EXPECT_EQ(failureOf(makeClient(kKeys, plainHttp(host), false, true)->headObject({"bucket", "key"})),
                  "InvalidArgument")
            << host;
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_TRUE(server.requests().empty());
}

}  // namespace
