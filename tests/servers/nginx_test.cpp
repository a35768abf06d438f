// What the real web server promises.
#include "servers/nginx.h"

#include <gtest/gtest.h>

#include "servers/fetch.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

const std::string kClip(100'000, 'c');

TEST(Nginx, ServesADocumentWithItsLengthAndItsRanges) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    const Fetched all = fetch(server.url("/clip"));
    EXPECT_EQ(all.status, 200);
    EXPECT_TRUE(all.body == kClip);
    EXPECT_NE(all.headers.find("Content-Length: 100000\r\n"), std::string::npos);
    const Fetched part = fetch(server.url("/clip"), {.range = "99990-200000"});
    EXPECT_EQ(part.status, 206);
    EXPECT_EQ(part.body, std::string(10, 'c'));
    EXPECT_EQ(fetch(server.url("/clip"), {.range = "100000-100001"}).status, 416);
    EXPECT_EQ(fetch(server.url("/none")).status, 404);
}

TEST(Nginx, ServesThroughTlsWithItsOwnCertificate) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    const Fetched got = fetch(server.secureUrl("/clip"), {.certificate = server.certificate()});
    EXPECT_EQ(got.result, CURLE_OK);
    EXPECT_TRUE(got.body == kClip);
    EXPECT_EQ(fetch(server.secureUrl("/clip")).result, CURLE_PEER_FAILED_VERIFICATION);
}

TEST(Nginx, StoresWhatIsPutAndDeletesIt) {
    const Nginx server;
    const std::string content(3'000'000, 'p');
    EXPECT_EQ(fetch(server.url("/dav/new/clip"), {.upload = &content}).status, 201);
    EXPECT_TRUE(contentOf(server.root() + "/new/clip") == content);
    EXPECT_EQ(fetch(server.url("/dav/new/clip"), {.upload = &content}).status, 204);
    EXPECT_EQ(fetch(server.url("/dav/new/clip"), {.method = "DELETE"}).status, 204);
    EXPECT_EQ(fetch(server.url("/new/clip")).status, 404);
    EXPECT_EQ(fetch(server.url("/clip"), {.upload = &content}).status, 405);
}

TEST(Nginx, CompressesWhereItShouldAndThenTellsNoLength) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    const Fetched packed = fetch(server.url("/gzip/clip"), {.unpack = true});
    EXPECT_TRUE(packed.body == kClip);
    EXPECT_NE(packed.headers.find("Content-Encoding: gzip\r\n"), std::string::npos);
    EXPECT_EQ(packed.headers.find("Content-Length"), std::string::npos);
    const Fetched plain = fetch(server.url("/clip"), {.unpack = true});
    EXPECT_EQ(plain.headers.find("Content-Encoding"), std::string::npos);
}

TEST(Nginx, SendsChunksWithoutALengthAndKnowsNoRangesThere) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    const Fetched got = fetch(server.url("/chunked/clip"), {.range = "0-9"});
    EXPECT_EQ(got.status, 200);
    EXPECT_TRUE(got.body == kClip);
    EXPECT_NE(got.headers.find("Transfer-Encoding: chunked\r\n"), std::string::npos);
    EXPECT_EQ(got.headers.find("Content-Length"), std::string::npos);
    const Fetched head = fetch(server.url("/chunked/clip"), {.headOnly = true});
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.headers.find("Content-Length"), std::string::npos);
}

TEST(Nginx, RefusesHeadWhereItShould) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    EXPECT_EQ(fetch(server.url("/nohead/clip"), {.headOnly = true}).status, 405);
    EXPECT_EQ(fetch(server.url("/nohead/clip")).status, 200);
}

TEST(Nginx, WantsTheTokenOfTheTest) {
    const Nginx server("secret-1");
    server.makeDocument("clip", kClip);
    EXPECT_EQ(fetch(server.url("/protected/clip")).status, 401);
    EXPECT_EQ(fetch(server.url("/protected/clip"), {.headers = {"Authorization: Bearer token"}}).status, 401);
    const Fetched got = fetch(server.url("/protected/clip"), {.headers = {"Authorization: Bearer secret-1"}});
    EXPECT_EQ(got.status, 200);
    EXPECT_EQ(server.requests().back().authorization, "Bearer secret-1");
}

TEST(Nginx, RedirectsToTheDocument) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    for (const std::string status : {"302", "303", "307"}) {
        const std::string url = server.url("/redirect/" + status + "/clip");
        const Fetched here = fetch(url);
        EXPECT_EQ(std::to_string(here.status), status);
        EXPECT_NE(here.headers.find("Location: " + server.url("/clip") + "\r\n"), std::string::npos) << here.headers;
        EXPECT_TRUE(fetch(url, {.follows = true}).body == kClip);
    }
    EXPECT_EQ(fetch(server.url("/redirect/loop"), {.follows = true}).result, CURLE_TOO_MANY_REDIRECTS);
}

TEST(Nginx, TellsItsRequestsAndTheirConnections) {
    const Nginx server;
    server.makeDocument("clip", kClip);
    Client client;
    client.fetch(server.url("/clip"), {.range = "0-9"});
    client.fetch(server.url("/none?x"), {.headers = {"Content-Type: text/plain"}, .body = "x"});
    fetch(server.url("/clip"), {.headOnly = true});
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/clip");
    EXPECT_EQ(requests[0].status, 206);
    EXPECT_EQ(requests[0].sent, 10u);
    EXPECT_EQ(requests[0].range, "bytes=0-9");
    EXPECT_EQ(requests[0].authorization, "");
    EXPECT_EQ(requests[1].target, "/none?x");
    EXPECT_EQ(requests[1].contentType, "text/plain");
    EXPECT_EQ(requests[1].ofConnection, 2);
    EXPECT_EQ(requests[1].connection, requests[0].connection);
    EXPECT_EQ(requests[2].method, "HEAD");
    EXPECT_EQ(requests[2].sent, 0u);
    EXPECT_EQ(server.connections(), 2u);
}

TEST(Nginx, IsGoneWhenStoppedAndBackOnTheSamePortsWhenStarted) {
    Nginx server;
    server.makeDocument("clip", kClip);
    Client client;
    EXPECT_EQ(client.fetch(server.url("/clip")).status, 200);
    server.stop();
    EXPECT_EQ(client.fetch(server.url("/clip")).result, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(server.requests().size(), 1u);
    server.start();
    EXPECT_EQ(client.fetch(server.url("/clip")).status, 200);
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST(Nginx, TwoAreApart) {
    const Nginx one;
    const Nginx other;
    one.makeDocument("clip", kClip);
    EXPECT_EQ(fetch(one.url("/clip")).status, 200);
    EXPECT_EQ(fetch(other.url("/clip")).status, 404);
    EXPECT_EQ(one.requests().size(), 1u);
}

}  // namespace
