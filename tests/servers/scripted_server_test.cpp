// What the scripted server promises, seen by a client that knows HTTP.
#include "servers/scripted_server.h"

#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "servers/fetch.h"
#include "servers/sockets.h"

namespace {

using namespace kvtest;
using Framing = Answer::Framing;

/// A server with one answer to everything.
ScriptedServer answering(const Answer& answer) {
    return ScriptedServer([answer](const Request&) { return answer; });
}

TEST(ScriptedServer, TellsWhatWasAskedOfIt) {
    ScriptedServer server([](const Request& request) {
        return Answer{.status = 201, .reason = "Made", .headers = {{"X-Seen", request.method}}, .body = request.body};
    });
    const Fetched got = fetch(server.url("/a?b=c"), {.headers = {"X-One: 1", "x-one: 2"}, .body = "fields"});
    EXPECT_EQ(got.status, 201);
    EXPECT_EQ(got.body, "fields");
    EXPECT_NE(got.headers.find("HTTP/1.1 201 Made\r\n"), std::string::npos) << got.headers;
    EXPECT_NE(got.headers.find("X-Seen: POST\r\n"), std::string::npos) << got.headers;

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, "/a?b=c");
    EXPECT_EQ(requests[0].body, "fields");
    EXPECT_EQ(requests[0].header("HOST"), server.host());
    EXPECT_EQ(requests[0].header("X-One"), "1, 2");
    EXPECT_EQ(requests[0].connection, 1);
    EXPECT_FALSE(requests[0].has("X-Two"));
}

TEST(ScriptedServer, KeepsAConnectionUntilAnAnswerEndsIt) {
    ScriptedServer server([](const Request& request) { return Answer{.keepAlive = request.target != "/last"}; });
    Client client;
    client.fetch(server.url("/"));
    client.fetch(server.url("/last"));
    EXPECT_EQ(server.connections(), 1);
    client.fetch(server.url("/"));
    EXPECT_EQ(server.connections(), 2);
    EXPECT_EQ(server.requests().back().connection, 2);
}

TEST(ScriptedServer, TakesAnUploadInChunksAndOneThatAsksFirst) {
    ScriptedServer server = answering({});
    const std::string content(3'000'000, 'x');
    EXPECT_EQ(fetch(server.url("/"), {.headers = {"Transfer-Encoding: chunked"}, .upload = &content}).status, 200);
    EXPECT_EQ(fetch(server.url("/"), {.headers = {"Expect: 100-continue"}, .upload = &content}).status, 200);
    for (const Request& request : server.requests()) EXPECT_TRUE(request.body == content) << request.body.size();
}

TEST(ScriptedServer, AnswersToHeadWithTheLengthAlone) {
    ScriptedServer server = answering({.body = "12345"});
    Client client;
    const Fetched got = client.fetch(server.url("/"), {.headOnly = true});
    EXPECT_EQ(got.result, CURLE_OK);
    EXPECT_NE(got.headers.find("Content-Length: 5\r\n"), std::string::npos);
    EXPECT_EQ(client.fetch(server.url("/")).body, "12345");
    EXPECT_EQ(server.connections(), 1);
}

TEST(ScriptedServer, AnnouncesALengthThatIsNotTheBodys) {
    ScriptedServer server([](const Request& request) {
        return Answer{.body = "12345", .announced = request.target == "/longer" ? 7u : 3u};
    });
    Client client;
    EXPECT_NE(client.fetch(server.url("/longer"), {.headOnly = true}).headers.find("Content-Length: 7\r\n"),
              std::string::npos);
    const Fetched cut = client.fetch(server.url("/longer"));
    EXPECT_EQ(cut.result, CURLE_PARTIAL_FILE);
    EXPECT_EQ(cut.body, "12345");
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(client.fetch(server.url("/shorter")).body, "123");
    EXPECT_EQ(server.connections(), 2);
}

TEST(ScriptedServer, SendsABodyWithoutALength) {
    const std::string content(2500, 'x');
    for (const Framing framing : {Framing::chunked, Framing::untilClose, Framing::asGiven}) {
        ScriptedServer server = answering({.body = content, .framing = framing});
        const Fetched got = fetch(server.url("/"));
        EXPECT_EQ(got.result, CURLE_OK);
        EXPECT_EQ(got.body, content);
        EXPECT_EQ(got.headers.find("Content-Length"), std::string::npos);
        EXPECT_EQ(got.headers.find("chunked") != std::string::npos, framing == Framing::chunked);
    }
}

TEST(ScriptedServer, CutsAnAnswerShort) {
    ScriptedServer server = answering({.body = "0123456789", .cutAfter = 4});
    const Fetched got = fetch(server.url("/"));
    EXPECT_EQ(got.result, CURLE_PARTIAL_FILE);
    EXPECT_EQ(got.body, "0123");
}

TEST(ScriptedServer, CutsAnAnswerWithAReset) {
    ScriptedServer server = answering({.body = "0123456789", .cutAfter = 4, .ending = Answer::Ending::reset});
    EXPECT_EQ(fetch(server.url("/")).result, CURLE_RECV_ERROR);
}

TEST(ScriptedServer, ClosesWithoutAnAnswer) {
    ScriptedServer server = answering({.unanswered = true});
    EXPECT_EQ(fetch(server.url("/")).result, CURLE_GOT_NOTHING);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(ScriptedServer, SendsBytesThatAreNoHttp) {
    ScriptedServer server = answering({.raw = "What?\r\n"});
    EXPECT_EQ(fetch(server.url("/")).result, CURLE_UNSUPPORTED_PROTOCOL);
}

TEST(ScriptedServer, AStalledAnswerComesWhenItIsReleased) {
    ScriptedServer server = answering({.body = "0123456789", .stallAfter = 4});
    Fetched got;
    std::thread client([&] { got = fetch(server.url("/")); });
    EXPECT_TRUE(server.waitForRequests(1));
    server.release();
    client.join();
    EXPECT_EQ(got.result, CURLE_OK);
    EXPECT_EQ(got.body, "0123456789");
}

TEST(ScriptedServer, EndsWhileItStallsOrWaits) {
    for (const Answer& answer : {Answer{.stall = true}, Answer{.delay = std::chrono::hours(1)}}) {
        auto server = std::make_unique<ScriptedServer>([answer](const Request&) { return answer; });
        Fetched got;
        std::thread client([&got, url = server->url("/")] { got = fetch(url); });
        EXPECT_TRUE(server->waitForRequests(1));
        server.reset();
        client.join();
        EXPECT_NE(got.result, CURLE_OK);
    }
}

TEST(ScriptedServer, LeavesAClientThatTalksTls) {
    ScriptedServer server = answering({});
    EXPECT_EQ(fetch("https://" + server.host() + "/").result, CURLE_SSL_CONNECT_ERROR);
    EXPECT_EQ(server.requests().size(), 0u);
}

TEST(ScriptedServer, EndsWithAConnectionThatAsksNothing) {
    auto server = std::make_unique<ScriptedServer>([](const Request&) { return Answer{}; });
    const std::string host = server->host();
    const auto port = static_cast<std::uint16_t>(std::stoi(host.substr(host.find(':') + 1)));
    const Socket idle = connectTo(port);
    EXPECT_TRUE(idle.isOpen());
    server.reset();
    EXPECT_FALSE(connectTo(port).isOpen());
}

TEST(ScriptedServer, ServesRanges) {
    ScriptedServer server([](const Request& request) { return answerWithRange(request, "0123456789"); });
    EXPECT_EQ(fetch(server.url("/")).body, "0123456789");
    const Fetched part = fetch(server.url("/"), {.range = "2-4"});
    EXPECT_EQ(part.status, 206);
    EXPECT_EQ(part.body, "234");
    EXPECT_NE(part.headers.find("Content-Range: bytes 2-4/10\r\n"), std::string::npos);
    EXPECT_EQ(fetch(server.url("/"), {.range = "8-20"}).body, "89");
    EXPECT_EQ(fetch(server.url("/"), {.range = "8-"}).body, "89");
    EXPECT_EQ(fetch(server.url("/"), {.range = "10-20"}).status, 416);
}

}  // namespace
