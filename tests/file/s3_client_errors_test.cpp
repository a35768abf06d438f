// What the S3 client makes of answers other than a body: heads, refusals, and answers that are not as they should be.
#include <cerrno>

#include "file/s3_client_fixture.h"

namespace {

using namespace s3client;

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

}  // namespace
