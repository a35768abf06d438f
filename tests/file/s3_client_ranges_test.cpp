// Bodies that the S3 client receives: whole objects and ranges, cut, too long, or of another range than asked for.
#include <cerrno>

#include "file/s3_client_fixture.h"

namespace {

using namespace s3client;

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

}  // namespace
