// The client against a server that answers as told: what it sends, and what it makes of answers that are not as they
// should be. What real stores make of its requests is in s3_client_store_test.cpp.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>

#include "file/s3/client.h"
#include "servers/scripted_server.h"
#include "support/sanitizers.h"

namespace {

using namespace kv::file::s3;
using kvtest::Request;
using kvtest::ScriptedServer;
using Framing = kvtest::Answer::Framing;

const Credentials kKeys{"ACCESSKEY", "SECRETKEY", ""};
constexpr char kContent[] = "0123456789abcdefghij";

ScriptedServer answering(const kvtest::Answer& answer) {
    return ScriptedServer([answer](const Request&) { return answer; });
}

ClientConfiguration plainHttp(const std::string& host) {
    ClientConfiguration configuration;
    configuration.endpointOverride = host;
    configuration.useHttps = false;
    return configuration;
}

std::shared_ptr<Client> clientOf(const ScriptedServer& server, const Credentials& credentials = kKeys) {
    return makeClient(credentials, plainHttp(server.host()), false, true);
}

/// The server under a name that stands for this machine.
std::string named(const ScriptedServer& server, const std::string& name) {
    return name + server.host().substr(server.host().rfind(':'));
}

std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

/// The outcome of a GetObject and what stands in the destination then.
struct Got {
    std::string text;  // what was received; the error's name where it failed
    std::uint64_t contentLength = 0;
};

Got get(Client& client, const std::string& range, std::size_t room = 100) {
    std::string buffer(room, '.');
    const auto answer = client.getObject({"bucket", "key", range, std::as_writable_bytes(std::span(buffer))});
    if (!answer.isSuccess()) return {"(" + answer.error().exceptionName + ")", 0};
    const ObjectBody& body = answer.result();
    EXPECT_EQ(buffer.find_first_not_of('.', body.received), std::string::npos) << "bytes behind those received";
    return {buffer.substr(0, body.received), body.contentLength};
}

kvtest::Answer part(const std::string& contentRange, const std::string& body) {
    return {.status = 206, .reason = "Partial Content", .headers = {{"Content-Range", contentRange}}, .body = body};
}

template <class Result>
std::string failureOf(const Answer<Result>& answer) {
    return answer.isSuccess() ? "(success)" : answer.error().exceptionName;
}

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

TEST(S3ClientConnections, AreUsedAgain) {
    ScriptedServer server = answering({.body = "<ListBucketResult/>"});
    const auto client = clientOf(server);
    client->putObject({"bucket", "key", "", bytesOf("text")});
    client->listObjects({"bucket", "", "", ""});
    client->headObject({"bucket", "key"});
    get(*client, "");
    std::thread([&] { client->deleteObject({"bucket", "key"}); }).join();
    EXPECT_EQ(server.requests().size(), 5u);
    EXPECT_EQ(server.connections(), 1);
}

TEST(S3ClientConnections, ThatTheServerClosedAreMadeAnew) {
    ScriptedServer server = answering({.keepAlive = false});
    const auto client = clientOf(server);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(client->putObject({"bucket", "key", "", bytesOf("text")}).isSuccess());
    EXPECT_EQ(server.connections(), 3);
}

TEST(S3ClientConnections, ServeSeveralThreadsAtOnce) {
    ScriptedServer server([](const Request& request) { return kvtest::answerWithRange(request, kContent); });
    const auto client = clientOf(server);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 25; ++k) wrong += get(*client, "bytes=3-5").text == "345" ? 0 : 1;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(server.connections(), 4);
}

TEST(S3ClientHead, TellsLengthTypeAndTag) {
    ScriptedServer server =
        answering({.headers = {{"Content-Type", "video/mxf"}, {"ETag", "\"tag\""}}, .body = std::string(1000, 'x')});
    const auto answer = clientOf(server)->headObject({"bucket", "key"});
    ASSERT_TRUE(answer.isSuccess());
    EXPECT_EQ(answer.result().contentLength, 1000u);
    EXPECT_EQ(answer.result().contentType, "video/mxf");
    EXPECT_EQ(answer.result().eTag, "\"tag\"");
}

TEST(S3ClientHead, FailuresAreNamedAfterTheirStatus) {
    const std::tuple<int, const char*, int> statuses[] = {
        {404, "NotFound", ENOENT}, {403, "AccessDenied", EACCES}, {503, "HTTP 503", EIO}, {301, "HTTP 301", EIO}};
    for (const auto& [status, name, error] : statuses) {
        ScriptedServer server = answering({.status = status, .body = "<Error><Code>Unseen</Code></Error>"});
        errno = 0;
        const auto answer = clientOf(server)->headObject({"bucket", "key"});
        EXPECT_EQ(errno, error);
        EXPECT_EQ(failureOf(answer), name);
        EXPECT_EQ(answer.error().httpStatus, status);
    }
}

TEST(S3ClientGet, DeliversTheWholeObject) {
    ScriptedServer server = answering({.body = kContent});
    const Got got = get(*clientOf(server), "");
    EXPECT_EQ(got.text, kContent);
    EXPECT_EQ(got.contentLength, 20u);
    EXPECT_FALSE(server.requests().at(0).has("Range"));
}

TEST(S3ClientGet, DeliversARange) {
    ScriptedServer server([](const Request& request) { return kvtest::answerWithRange(request, kContent); });
    const auto client = clientOf(server);
    const Got got = get(*client, "bytes=2-4");
    EXPECT_EQ(got.text, "234");
    EXPECT_EQ(got.contentLength, 3u);
    EXPECT_EQ(server.requests().at(0).header("Range"), "bytes=2-4");
    EXPECT_EQ(get(*client, "bytes=18-99").text, "ij");
    EXPECT_EQ(get(*client, "bytes=18-99").contentLength, 2u);
    EXPECT_EQ(get(*client, "bytes=17-").text, "hij");
    EXPECT_EQ(get(*client, "bytes=20-25").text, "(HTTP 416)");
}

TEST(S3ClientGet, AnEmptyObjectSucceeds) {
    ScriptedServer server = answering({});
    const Got got = get(*clientOf(server), "");
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(got.contentLength, 0u);
}

TEST(S3ClientGet, ABodyThatIsLongerThanTheDestinationIsCutAndSucceeds) {
    ScriptedServer server([](const Request& request) {
        return kvtest::Answer{.body = std::string(3'000'000, 'x'),
                              .framing = request.target == "/bucket/key" ? Framing::length : Framing::chunked};
    });
    const auto client = clientOf(server);
    const Got got = get(*client, "", 10);
    EXPECT_EQ(got.text, "xxxxxxxxxx");
    EXPECT_EQ(got.contentLength, 3'000'000u);
    EXPECT_EQ(get(*client, "", 0).text, "");
    std::string buffer(10, '.');
    const auto chunked = client->getObject({"bucket", "other", "", std::as_writable_bytes(std::span(buffer))});
    EXPECT_EQ(chunked.result().received, 10u);
    EXPECT_EQ(chunked.result().contentLength, 10u);
}

TEST(S3ClientGet, EndsWithoutTheRestWhenTheDestinationIsFull) {
    // The rest would never come.
    ScriptedServer server = answering({.body = std::string(1000, 'x'), .stallAfter = 500});
    const Got got = get(*clientOf(server), "", 500);
    EXPECT_EQ(got.text.size(), 500u);
    EXPECT_EQ(got.contentLength, 1000u);
}

TEST(S3ClientGet, ABodyThatIsCutShortIsAFailure) {
    for (const Framing framing : {Framing::length, Framing::chunked}) {
        ScriptedServer server = answering({.body = std::string(5000, 'x'), .framing = framing, .cutAfter = 2000});
        errno = 0;
        EXPECT_EQ(get(*clientOf(server), "", 10000).text, "(NetworkError)");
        EXPECT_NE(errno, 0);
    }
    ScriptedServer reset =
        answering({.body = std::string(5000, 'x'), .cutAfter = 2000, .ending = kvtest::Answer::Ending::reset});
    EXPECT_EQ(get(*clientOf(reset), "", 10000).text, "(NetworkError)");
    ScriptedServer unanswered = answering({.unanswered = true});
    EXPECT_EQ(get(*clientOf(unanswered), "").text, "(NetworkError)");
}

TEST(S3ClientGet, ARangeThatEndsEarlyWithoutALengthIsAFailure) {
    kvtest::Answer answer = part("bytes 0-9/20", "01234");
    answer.framing = Framing::untilClose;
    ScriptedServer server = answering(answer);
    errno = 0;
    EXPECT_EQ(get(*clientOf(server), "bytes=0-9").text, "(IncompleteBody)");
    EXPECT_EQ(errno, EBADMSG);
}

TEST(S3ClientGet, ABodyWithoutALengthIsAsLongAsItIs) {
    for (const Framing framing : {Framing::chunked, Framing::untilClose}) {
        ScriptedServer server = answering({.body = kContent, .framing = framing});
        const Got got = get(*clientOf(server), "");
        EXPECT_EQ(got.text, kContent);
        EXPECT_EQ(got.contentLength, 20u);
    }
}

TEST(S3ClientGet, ARangeIsTakenOutOfAWholeObjectWhereTheStoreIgnoresRanges) {
    for (const Framing framing : {Framing::length, Framing::chunked, Framing::untilClose}) {
        ScriptedServer server = answering({.body = kContent, .framing = framing});
        const auto client = clientOf(server);
        const Got got = get(*client, "bytes=2-4");
        EXPECT_EQ(got.text, "234");
        EXPECT_EQ(got.contentLength, 3u);
        EXPECT_EQ(get(*client, "bytes=17-").text, "hij");
        EXPECT_EQ(get(*client, "bytes=0-99").text, kContent);
        EXPECT_EQ(get(*client, "bytes=4-9", 2).text, "45");
    }
    ScriptedServer server = answering({.body = kContent});
    EXPECT_EQ(get(*clientOf(server), "bytes=20-25").text, "(InvalidRange)");
    EXPECT_EQ(get(*clientOf(server), "bytes=15-25").contentLength, 5u);
}

TEST(S3ClientGet, ARangeThatStartsElsewhereIsAFailure) {
    for (const char* range : {"bytes 0-9/20", "bytes 6-14/20", "bytes */20", "bytes x", "items 5-14/20", ""}) {
        ScriptedServer server = answering(part(range, "0123456789"));
        errno = 0;
        EXPECT_EQ(get(*clientOf(server), "bytes=5-14").text, "(UnexpectedRange)") << range;
        EXPECT_NE(errno, 0);
    }
    ScriptedServer server = answering(part("bytes 0-19/20", kContent));
    EXPECT_EQ(get(*clientOf(server), "").text, "(UnexpectedRange)");
}

TEST(S3ClientGet, BytesBehindTheRangeAreDropped) {
    ScriptedServer server = answering(part("bytes 5-14/20", "56789abcde"));
    EXPECT_EQ(get(*clientOf(server), "bytes=5-7").text, "567");
}

TEST(S3ClientGet, ARangeThatIsNoneIsRefused) {
    ScriptedServer server = answering({.body = kContent});
    for (const char* range : {"bytes=-5", "bytes=5-2", "bytes=a-b", "5-9", "bytes=1-2,4-5", "bytes=0-99\r\nx: y",
                              "bytes=0-18446744073709551615", "bytes=99999999999999999999-"}) {
        EXPECT_EQ(get(*clientOf(server), range).text, "(InvalidArgument)") << range;
    }
    EXPECT_TRUE(server.requests().empty());
}

TEST(S3ClientGet, AnErrorsTextIsNoPartOfTheObject) {
    ScriptedServer server = answering({.status = 500, .body = "<Error><Code>InternalError</Code></Error>"});
    EXPECT_EQ(get(*clientOf(server), "").text, "(InternalError)");
}

TEST(S3ClientErrors, TellCodeMessageStatusAndErrno) {
    ScriptedServer server = answering(
        {.status = 403, .body = "<Error><Code>RequestTimeTooSkewed</Code><Message>Too late</Message></Error>"});
    errno = 0;
    const auto answer = clientOf(server)->deleteObject({"bucket", "key"});
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(failureOf(answer), "RequestTimeTooSkewed");
    EXPECT_EQ(answer.error().message, "Too late");
    EXPECT_EQ(answer.error().httpStatus, 403);
}

TEST(S3ClientErrors, CountAlthoughTheirTextIsCutOff) {
    ScriptedServer server = answering({.status = 503, .body = std::string(1000, 'x'), .cutAfter = 10});
    EXPECT_EQ(failureOf(clientOf(server)->deleteObject({"bucket", "key"})), "HTTP 503");
}

TEST(S3ClientErrors, ARedirectIsOneAndNotFollowed) {
    for (const int status : {301, 307}) {
        ScriptedServer server =
            answering({.status = status,
                       .headers = {{"Location", "/elsewhere"}},
                       .body = "<Error><Code>PermanentRedirect</Code><Message>Use another endpoint</Message></Error>"});
        const auto answer = clientOf(server)->getBucketLocation({"bucket"});
        EXPECT_EQ(failureOf(answer), "PermanentRedirect");
        EXPECT_EQ(answer.error().message, "Use another endpoint");
        EXPECT_EQ(server.requests().size(), 1u);
    }
}

TEST(S3ClientErrors, NothingIsTriedAgain) {
    ScriptedServer server = answering({.status = 503});
    const auto client = clientOf(server);
    get(*client, "");
    client->putObject({"bucket", "key", "", bytesOf("text")});
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST(S3ClientErrors, AStoreThatIsDownIsANetworkError) {
    std::string host;
    {
        ScriptedServer server = answering({});
        host = server.host();
    }
    errno = 0;
    const auto answer = makeClient(kKeys, plainHttp(host), false, true)->headObject({"bucket", "key"});
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(failureOf(answer), "NetworkError");
    EXPECT_EQ(answer.error().httpStatus, 0);
    EXPECT_NE(answer.error().message, "");
}

TEST(S3ClientErrors, InAnAnswerThatBeganAsASuccessAreFailures) {
    ScriptedServer server = answering({.body = "<Error><Code>SlowDown</Code><Message>m</Message></Error>"});
    const auto client = clientOf(server);
    EXPECT_EQ(failureOf(client->uploadPartCopy({"bucket", "key", "id", "/bucket/a", 1})), "SlowDown");
    errno = 0;
    EXPECT_EQ(failureOf(client->completeMultipartUpload({"bucket", "key", "id", {{"t", 1}}})), "SlowDown");
    EXPECT_EQ(errno, EBADMSG);
}

TEST(S3ClientErrors, AnAnswerWithoutEndIsOne) {
    ScriptedServer server = answering({.body = std::string(70'000'000, ' ')});
    errno = 0;
    EXPECT_EQ(failureOf(clientOf(server)->listObjects({"bucket", "", "", ""})), "NetworkError");
    EXPECT_EQ(errno, EFBIG);
}

TEST(S3ClientErrors, ASuccessLeavesErrnoAlone) {
    ScriptedServer server = answering({.body = kContent});
    errno = EXDEV;
    get(*clientOf(server), "");
    EXPECT_EQ(errno, EXDEV);
}

TEST(S3ClientErrors, NeverHoldTheKeys) {
    ScriptedServer server = answering({.status = 403});
    const auto client = clientOf(server);
    const auto refused = client->headObject({"bucket", "key"});
    const auto down = makeClient(kKeys, plainHttp("127.0.0.1:1"), false, true)->headObject({"bucket", "key"});
    for (const Error& error : {refused.error(), down.error()}) {
        EXPECT_EQ((error.exceptionName + error.message).find("KEY"), std::string::npos);
    }
}

TEST(S3ClientListing, ThatGoesOnWithoutSayingWhereIsAFailure) {
    ScriptedServer server = answering({.body = "<ListBucketResult><IsTruncated>true</IsTruncated>"
                                               "<Contents><Key>a</Key></Contents></ListBucketResult>"});
    EXPECT_EQ(failureOf(clientOf(server)->listObjectsV2({"bucket", "", "", ""})), "MalformedAnswer");
    EXPECT_EQ(clientOf(server)->listObjects({"bucket", "", "", ""}).result().nextMarker, "a");
}

/// What a handler tells the test.
struct Waiting : AsyncCallerContext {
    explicit Waiting(const std::string& identifier) : AsyncCallerContext(identifier) {}
    std::string buffer = std::string(100, '.');
    mutable std::promise<std::string> outcome;
    mutable std::thread::id thread;
    mutable sigset_t blocked;

    std::span<std::byte> destination() { return std::as_writable_bytes(std::span(buffer)); }
};

void tellOutcome(Client&, const GetObjectRequest& request, const Answer<ObjectBody>& outcome,
                 const std::shared_ptr<const AsyncCallerContext>& context) {
    const auto& waiting = static_cast<const Waiting&>(*context);
    waiting.thread = std::this_thread::get_id();
    pthread_sigmask(SIG_SETMASK, nullptr, &waiting.blocked);
    waiting.outcome.set_value(request.key + " " + failureOf(outcome));
}

TEST(S3ClientAsync, TheHandlerRunsOnAnotherThreadWithSignalsBlocked) {
    ScriptedServer server = answering({.body = kContent});
    const auto client = clientOf(server);
    const auto context = std::make_shared<Waiting>("7");
    client->getObjectAsync({"bucket", "key", "bytes=0-3", context->destination()}, &tellOutcome, context);
    EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
    EXPECT_EQ(context->buffer.substr(0, 5), "0123.");
    EXPECT_NE(context->thread, std::this_thread::get_id());
    for (const int number : {SIGINT, SIGTERM, SIGALRM, SIGUSR1, SIGCHLD, SIGPIPE}) {
        EXPECT_EQ(sigismember(&context->blocked, number), 1) << number;
    }
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

TEST(S3ClientAsync, AFailureReachesTheHandler) {
    ScriptedServer server = answering({.status = 404, .body = "<Error><Code>NoSuchKey</Code></Error>"});
    const auto context = std::make_shared<Waiting>("7");
    clientOf(server)->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    EXPECT_EQ(context->outcome.get_future().get(), "key NoSuchKey");
}

TEST(S3ClientAsync, TheClientLivesUntilTheHandlerHasRun) {
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto context = std::make_shared<Waiting>("7");
    auto client = clientOf(server);
    client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    ASSERT_TRUE(server.waitForRequests(1));
    const std::weak_ptr<Client> watched = client;
    client.reset();
    EXPECT_FALSE(watched.expired());
    shutdownApi();
    server.release();
    EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
}

TEST(S3ClientAsync, ManyRequestsRunAtOnce) {
    constexpr int kRequests = 20;
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto client = clientOf(server);
    std::vector<std::shared_ptr<Waiting>> contexts;
    for (int i = 0; i < kRequests; ++i) {
        contexts.push_back(std::make_shared<Waiting>(std::to_string(i)));
        client->getObjectAsync({"bucket", "key", "", contexts.back()->destination()}, &tellOutcome, contexts.back());
    }
    EXPECT_TRUE(server.waitForRequests(kRequests));
    server.release();
    for (const auto& context : contexts) EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
}

TEST(S3ClientAsync, WithoutAThreadTheHandlerRunsAtOnceWithAnError) {
    // Threads want a stack as large as the whole address space.
    pthread_attr_t before;
    pthread_attr_t huge;
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 46), 0);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    const auto context = std::make_shared<Waiting>("7");
    const auto client = makeClient(kKeys, plainHttp("127.0.0.1:1"), false, true);
    client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    pthread_setattr_default_np(&before);
    EXPECT_EQ(context->thread, std::this_thread::get_id());
    EXPECT_EQ(context->outcome.get_future().get(), "key NoThread");
}

TEST(S3ClientAsync, AProcessEndsWithARequestInFlight) {
    if (kvtest::kThreadSanitizer) GTEST_SKIP() << "it refuses to fork a process with threads";
    ScriptedServer server = answering({.body = kContent, .stallAfter = 5});
    EXPECT_EXIT(
        {
            const auto context = std::make_shared<Waiting>("7");
            const auto client = clientOf(server);
            client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(S3ClientApi, StartsAndStopsInAnyOrder) {
    shutdownApi();
    initApi();
    initApi();
    shutdownApi();
    shutdownApi();
    ScriptedServer server = answering({.body = kContent});
    EXPECT_EQ(get(*clientOf(server), "").text, kContent);
}

}  // namespace
