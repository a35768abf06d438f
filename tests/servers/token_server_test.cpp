// What the token server promises.
#include "servers/token_server.h"

#include <gtest/gtest.h>

#include "servers/fetch.h"

namespace {

using namespace kvtest;

Fetched ask(const TokenServer& server, const std::string& body) { return fetch(server.endpoint(), {.body = body}); }

TEST(TokenServer, GivesTokensForAllThreeGrants) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    const TokenServer server;
    const std::vector<std::string> bodies{
        "client_id=a&client_secret=b&refresh_token=c&grant_type=refresh_token",
        "client_id=a&client_secret=b&username=u&password=p&grant_type=password",
        "client_id=a&client_secret=b&grant_type=urn:ietf:params:oauth:grant-type:jwt-bearer"};
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const Fetched got = ask(server, bodies[i]);
        EXPECT_EQ(got.status, 200) << bodies[i] << "\n" << got.body;
        ASSERT_EQ(server.tokens().size(), i + 1);
        EXPECT_NE(got.body.find("\"access_token\":\"" + server.tokens()[i] + "\""), std::string::npos) << got.body;
        EXPECT_NE(got.body.find("\"expires_in\":3600"), std::string::npos) << got.body;
    }
    EXPECT_EQ(server.requests(), bodies);
    EXPECT_NE(server.tokens()[0], server.tokens()[1]);
    EXPECT_EQ(ask(server, "client_id=a&grant_type=other").status, 400);
}

TEST(TokenServer, GivesTheTokenAndTheTimeThatItWasTold) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer server;
    server.setToken("mine");
    server.setExpiresIn(7);
    const Fetched got = ask(server, "grant_type=refresh_token");
    EXPECT_NE(got.body.find("\"access_token\":\"mine\""), std::string::npos) << got.body;
    EXPECT_NE(got.body.find("\"expires_in\":7"), std::string::npos) << got.body;
    server.setExpiresIn(std::nullopt);
    EXPECT_EQ(ask(server, "grant_type=refresh_token").body.find("expires_in"), std::string::npos);
}

TEST(TokenServer, RefusesWhileItIsToldTo) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer server;
    server.refuse("invalid_client", "not you");
    const Fetched refused = ask(server, "grant_type=refresh_token");
    EXPECT_EQ(refused.status, 400);
    EXPECT_EQ(refused.body, R"({"error":"invalid_client","error_description":"not you"})");
    EXPECT_TRUE(server.tokens().empty());
    server.accept();
    EXPECT_EQ(ask(server, "grant_type=refresh_token").status, 200);
}

}  // namespace
