// The REST command against a server that tells what it was asked, and one that is real.
#include "kvos/rest.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "errlog.h"
#include "kvcfg.h"
#include "kvos/attributes.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "servers/token_server.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

constexpr std::uint32_t kUntouched = 0xABCD;

/// What one call gave back.
struct Outcome {
    std::uint32_t result = 0;
    std::optional<std::string> answer;  // nothing for a null pointer
    std::uint32_t length = 0;
};

struct Call {
    std::string method = "POST";
    std::string headers = "";
    std::optional<std::string> body = std::nullopt;
    std::uint32_t timeout_ms = 0;
};

Outcome command(const std::string& url, Call call) {
    char* answer = nullptr;
    Outcome outcome;
    outcome.length = kUntouched;
    outcome.result = kvOSHTTPCommand(
        url.c_str(), call.method.c_str(), call.headers.data(), call.body ? call.body->data() : nullptr,
        call.body ? static_cast<std::uint32_t>(call.body->size()) : 0, &answer, &outcome.length, call.timeout_ms);
    if (answer != nullptr) {
        EXPECT_EQ(answer[outcome.length], '\0');
        outcome.answer = std::string(answer, outcome.length);
    }
    std::free(answer);
    return outcome;
}

void expectUntouched(const Outcome& outcome) {
    EXPECT_EQ(outcome.result, 1u);
    EXPECT_FALSE(outcome.answer.has_value());
    EXPECT_EQ(outcome.length, kUntouched);
}

ScriptedServer answering(const Answer& answer) {
    return ScriptedServer([answer](const Request&) { return answer; });
}

Request requestOf(const Call& call) {
    ScriptedServer server = answering({.body = "answer"});
    const Outcome outcome = command(server.url("/x"), call);
    EXPECT_EQ(outcome.result, 1u);
    EXPECT_EQ(outcome.answer, "answer") << call.method;
    EXPECT_EQ(server.requests().size(), 1u);
    return server.requests().empty() ? Request{} : server.requests().front();
}

// ---- methods -----------------------------------------------------------------------------------------------------

const std::string kBody("{\"a\":\0 1}", 9);

TEST(RestCommand, EachMethodSendsItsBodyWithItsZeros) {
    for (const std::string method : {"POST", "PATCH", "PUT", "DELETE"}) {
        const Request request = requestOf({.method = method, .body = kBody});
        EXPECT_EQ(request.method, method);
        EXPECT_EQ(request.body, kBody) << method;
        EXPECT_EQ(request.header("Content-Length"), "9") << method;
    }
}

TEST(RestCommand, EachMethodGoesOutWithoutABody) {
    for (const std::string method : {"POST", "PATCH", "PUT", "DELETE"}) {
        const Request request = requestOf({.method = method});
        EXPECT_EQ(request.method, method);
        EXPECT_EQ(request.body, "") << method;
    }
}

TEST(RestCommand, GetGoesOutAsPost) {
    EXPECT_EQ(requestOf({.method = "GET"}).method, "POST");
    const Request request = requestOf({.method = "GET", .body = kBody});
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.body, kBody);
}

TEST(RestCommand, AMethodCountsByItsBeginningInAnyCase) {
    EXPECT_EQ(requestOf({.method = "posting"}).method, "POST");
    EXPECT_EQ(requestOf({.method = "Patch it"}).method, "PATCH");
    EXPECT_EQ(requestOf({.method = "PUTter"}).method, "PUT");
    EXPECT_EQ(requestOf({.method = "getaway"}).method, "POST");
    EXPECT_EQ(requestOf({.method = "deleteX"}).method, "DELETE");
}

TEST(RestCommand, AnyOtherMethodMakesNoRequestAndSucceeds) {
    ScriptedServer server = answering({.body = "answer"});
    for (const std::string method : {"HEAD", "OPTIONS", " GET", "", "PU"}) {
        expectUntouched(command(server.url("/x"), {.method = method}));
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST(RestCommand, ALargeBodyArrivesByEachMethod) {
    std::string body(3'000'000, '\0');
    for (std::size_t i = 0; i < body.size(); ++i) body[i] = static_cast<char>(i % 251);
    for (const std::string method : {"POST", "PATCH", "PUT"}) {
        EXPECT_TRUE(requestOf({.method = method, .body = body}).body == body) << method;
    }
}

TEST(RestCommand, ALengthWithoutABodySendsNone) {
    for (const char* method : {"POST", "PATCH", "PUT", "GET", "DELETE"}) {
        ScriptedServer server = answering({.body = "answer"});
        char headers[] = "";
        char* answer = nullptr;
        std::uint32_t length = 0;
        EXPECT_EQ(kvOSHTTPCommand(server.url("/").c_str(), method, headers, nullptr, 100, &answer, &length, 0), 1u);
        EXPECT_STREQ(answer, "answer");
        std::free(answer);
        EXPECT_EQ(server.requests().front().body, "");
    }
}

// ---- the URL -----------------------------------------------------------------------------------------------------

TEST(RestCommand, EveryPlusAndEverySharpIsSentEscapedAndNothingElseIs) {
    ScriptedServer server = answering({.body = "answer"});
    command(server.url("/a+b#c%2Bd?q=1+2&r=#&s=%20~"), {});
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].target, "/a%2bb%23c%2Bd?q=1%2b2&r=%23&s=%20~");
}

TEST(RestCommand, AUrlOfNothingButPlusesArrivesWhole) {
    ScriptedServer server = answering({.body = "answer"});
    command(server.url("/" + std::string(6000, '+')), {});
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].target.size(), 18001u);
}

TEST(RestCommand, ABlankIsNotEscaped) {
    // The transfer library of some systems sends it, that of others refuses the URL.
    ScriptedServer server = answering({.body = "answer"});
    command(server.url("/a b"), {});
    for (const Request& request : server.requests()) EXPECT_EQ(request.target, "/a b");
}

// ---- headers -----------------------------------------------------------------------------------------------------

TEST(RestCommand, ATextWithoutASectionSignIsOneHeader) {
    const Request request = requestOf({.headers = "X-One: 1; X-Two: 2"});
    EXPECT_EQ(request.header("X-One"), "1; X-Two: 2");
}

TEST(RestCommand, SectionSignsPartHeadersAndEmptyOnesVanish) {
    for (const std::string method : {"POST", "PATCH", "PUT", "GET", "DELETE"}) {
        const Request request = requestOf({.method = method, .headers = "§X-One: 1§§X-Two: 2§"});
        EXPECT_EQ(request.header("X-One"), "1") << method;
        EXPECT_EQ(request.header("X-Two"), "2") << method;
    }
}

TEST(RestCommand, EitherByteOfASectionSignPartsHeaders) {
    // The first letter behind "X-Two: " is another one, whose first byte is the same.
    const Request request = requestOf({.headers = "X-One: 1\xA7X-Two: \xC2\xB5m"});
    EXPECT_EQ(request.header("X-One"), "1");
    EXPECT_EQ(request.header("X-Two"), "");
}

TEST(RestCommand, TheHeaderTextIsChanged) {
    ScriptedServer server = answering({.body = "answer"});
    std::string headers = "X-One: 1§X-Two: 2";
    char* answer = nullptr;
    std::uint32_t length = 0;
    kvOSHTTPCommand(server.url("/").c_str(), "POST", headers.data(), nullptr, 0, &answer, &length, 0);
    std::free(answer);
    EXPECT_STREQ(headers.c_str(), "X-One: 1");
}

TEST(RestCommand, ThreadsDoNotMixTheirHeaders) {
    ScriptedServer server([](const Request& request) { return Answer{.body = request.header("X-Number")}; });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&server, t] {
            for (int i = 0; i < 20; ++i) {
                const std::string number = std::to_string(t) + "-" + std::to_string(i);
                EXPECT_EQ(command(server.url("/"), {.headers = "X-Other: 1§X-Number: " + number}).answer, number);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// ---- the answer --------------------------------------------------------------------------------------------------

TEST(RestCommand, TheBodyOfARefusalIsDeliveredLikeAnyOther) {
    ScriptedServer server = answering({.status = 404, .reason = "Not Found", .body = "not here"});
    for (const std::string method : {"POST", "PATCH", "PUT", "GET", "DELETE"}) {
        const Outcome outcome = command(server.url("/"), {.method = method});
        EXPECT_EQ(outcome.result, 1u);
        EXPECT_EQ(outcome.answer, "not here") << method;
    }
}

TEST(RestCommand, ARedirectIsNotFollowed) {
    ScriptedServer server = answering({.status = 302, .headers = {{"Location", "/other"}}, .body = "elsewhere"});
    EXPECT_EQ(command(server.url("/"), {}).answer, "elsewhere");
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(RestCommand, AnEmptyAnswerLeavesTheResultAsItWasAndHasNoLength) {
    ScriptedServer server = answering({});
    char headers[] = "";
    char own[] = "mine";
    char* result = own;
    std::uint32_t length = 77;
    EXPECT_EQ(kvOSHTTPCommand(server.url("/").c_str(), "POST", headers, nullptr, 0, &result, &length, 0), 1u);
    EXPECT_EQ(result, own);
    EXPECT_EQ(length, 0u);
}

TEST(RestCommand, ALongAnswerWithZerosArrivesWhole) {
    std::string content(2'000'003, 'x');
    for (std::size_t i = 1; i < content.size(); i += 977) content[i] = '\0';
    ScriptedServer server = answering({.body = content, .framing = Answer::Framing::chunked});
    const Outcome outcome = command(server.url("/"), {});
    EXPECT_EQ(outcome.length, content.size());
    EXPECT_TRUE(outcome.answer == content);
}

TEST(RestCommand, WhatCameIsDeliveredWhenATransferThatBeganWellFails) {
    for (const int status : {200, 201, 216}) {
        ScriptedServer server = answering({.status = status, .body = "0123456789", .cutAfter = 4});
        const Outcome outcome = command(server.url("/"), {});
        EXPECT_EQ(outcome.result, 1u);
        EXPECT_EQ(outcome.answer, "0123") << status;
        EXPECT_EQ(outcome.length, 4u);
    }
}

TEST(RestCommand, NothingIsDeliveredWhenAnyOtherTransferFails) {
    for (const int status : {202, 206, 215, 404, 500}) {
        ScriptedServer server = answering({.status = status, .body = "0123456789", .cutAfter = 4});
        expectUntouched(command(server.url("/"), {}));
    }
}

TEST(RestCommand, AServerThatIsNotThereLeavesTheOutputsAlone) {
    std::string url;
    {
        const ScriptedServer server = answering({});
        url = server.url("/");
    }
    CapturedMessages messages;
    errno = 0;
    expectUntouched(command(url, {}));
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(messages.text(), "");
}

TEST(RestCommand, ATextThatIsNoUrlLeavesTheOutputsAlone) {
    expectUntouched(command("", {}));
    expectUntouched(command("no such thing://", {}));
    errno = 0;
    expectUntouched(command("nosuch://host/", {}));
    EXPECT_EQ(errno, EPROTONOSUPPORT);
}

TEST(RestCommand, TheTimeLimitEndsARequestThatGetsNoAnswer) {
    ScriptedServer server = answering({.stall = true});
    errno = 0;
    expectUntouched(command(server.url("/"), {.timeout_ms = 200}));
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST(RestCommand, TheTimeLimitCutsAnAnswerThatCameInPart) {
    ScriptedServer server = answering({.body = "0123456789", .stallAfter = 4});
    EXPECT_EQ(command(server.url("/"), {.timeout_ms = 1000}).answer, "0123");
}

TEST(RestCommand, WithoutALengthNoAnswerIsGivenBack) {
    ScriptedServer server = answering({.body = "answer"});
    char own = 'x';
    char* answer = &own;
    char headers[] = "";
    EXPECT_EQ(kvOSHTTPCommand(server.url("/").c_str(), "POST", headers, nullptr, 0, &answer, nullptr, 0), 1u);
    EXPECT_EQ(answer, &own);
    EXPECT_EQ(kvOSHTTPCommand(server.url("/").c_str(), "POST", headers, nullptr, 0, nullptr, nullptr, 0), 1u);
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST(RestCommand, NullTextsAreRefused) {
    char headers[] = "";
    char* answer = nullptr;
    std::uint32_t length = kUntouched;
    errno = 0;
    EXPECT_EQ(kvOSHTTPCommand(nullptr, "POST", headers, nullptr, 0, &answer, &length, 0), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSHTTPCommand("http://127.0.0.1/", nullptr, headers, nullptr, 0, &answer, &length, 0), 0u);
    EXPECT_EQ(kvOSHTTPCommand("http://127.0.0.1/", "POST", nullptr, nullptr, 0, &answer, &length, 0), 0u);
    EXPECT_EQ(kvOSHTTPCommand("http://127.0.0.1/", "POST", headers, nullptr, 0, nullptr, &length, 0), 0u);
    EXPECT_EQ(length, kUntouched);
}

TEST(RestCommand, OnlyGetTellsItsSteps) {
    ScriptedServer server = answering({.body = "answer"});
    for (const std::string method : {"POST", "PATCH", "PUT", "DELETE"}) {
        CapturedMessages messages;
        command(server.url("/"), {.method = method});
        EXPECT_EQ(messages.text(), "") << method;
    }
    CapturedMessages messages;
    command(server.url("/told"), {.method = "GET"});
    EXPECT_GT(messages.count("POST /told HTTP/1.1"), 0u);
    gdwOutputToStdDebug = 0;
    command(server.url("/untold"), {.method = "GET"});
    gdwOutputToStdDebug = 1;
    EXPECT_EQ(messages.count("/untold"), 0u);
}

// ---- login -------------------------------------------------------------------------------------------------------

/// Makes a server one that its visitors log in for, at an endpoint of its own; its name then.
class RestLogin : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support");
        std::array<char, 4096> folder{};
        kvOSGetConfigDir(folder.data(), 0);
        folder_ = folder.data();
        std::filesystem::create_directories(folder_);
    }

    /// A name with letters, since no setting can be named by a number.
    static std::string nameOf(const ScriptedServer& server) {
        const std::string host = server.host();
        return "localhost" + host.substr(host.find(':'));
    }
    static void setEndpoint(const ScriptedServer& server, const std::string& url) {
        const std::string key = "MediaKiln\\OAuth2\\" + nameOf(server);
        kvCFGAddKeyString(KVSTDCONFIG, key.c_str(), "oauth2server", url.c_str(), KVCFG_STRING, nullptr);
        ASSERT_EQ(kvCFGKeyExists(KVSTDCONFIG, (key + "\\oauth2server").c_str()), 1u);
    }
    std::string tokenFileOf(const ScriptedServer& server) const { return folder_ + nameOf(server) + ".json"; }

    std::string folder_;
};

TEST_F(RestLogin, TheTokenStandsAheadOfTheHeadersForEveryMethod) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer tokens;
    tokens.setToken("mine");
    ScriptedServer server = answering({.body = "answer"});
    setEndpoint(server, tokens.endpoint());
    makeFile(tokenFileOf(server), R"({"client_id":"a","client_secret":"b","password":"c","username":"d"})");
    int times = 0;
    for (const std::string method : {"POST", "PATCH", "PUT", "GET", "DELETE"}) {
        const std::string url = "http://" + nameOf(server) + "/";
        EXPECT_EQ(command(url, {.method = method, .headers = "X-One: 1§Authorization: other"}).answer, "answer");
        const Request request = server.requests().back();
        EXPECT_EQ(request.header("Authorization"), "Bearer mine, other") << method;
        EXPECT_EQ(request.header("X-One"), "1") << method;
        EXPECT_EQ(tokens.requests().size(), static_cast<std::size_t>(++times));
    }
}

TEST_F(RestLogin, ATokenWhoseTimeIsOverIsAskedForAgain) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer tokens;
    tokens.setExpiresIn(std::nullopt);
    ScriptedServer server = answering({.body = "answer"});
    setEndpoint(server, tokens.endpoint());
    makeFile(tokenFileOf(server), R"({"client_id":"a","client_secret":"b"})");
    EXPECT_EQ(command("http://" + nameOf(server) + "/", {}).answer, "answer");
    ASSERT_EQ(tokens.tokens().size(), 3u);  // the login, its second look, and the header's
    EXPECT_EQ(server.requests().back().header("Authorization"), "Bearer " + tokens.tokens().back());
}

TEST_F(RestLogin, ARefusedLoginSendsTheRequestWithoutAToken) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer tokens;
    tokens.refuse("invalid_client", "not you");
    ScriptedServer server = answering({.status = 401, .body = "who?"});
    setEndpoint(server, tokens.endpoint());
    makeFile(tokenFileOf(server), R"({"client_id":"a","client_secret":"b"})");
    CapturedMessages messages;
    EXPECT_EQ(command("http://" + nameOf(server) + "/", {}).answer, "who?");
    EXPECT_GT(messages.count("ERROR-Type: invalid_client"), 0u);
    EXPECT_FALSE(server.requests().back().has("Authorization"));
}

TEST_F(RestLogin, ATokenFileThatCanNotBeReadIsPassedOverWithoutAWord) {
    ScriptedServer server = answering({.body = "answer"});
    std::filesystem::create_directory(tokenFileOf(server));
    CapturedMessages messages;
    EXPECT_EQ(command("http://" + nameOf(server) + "/", {}).answer, "answer");
    EXPECT_EQ(messages.count("oauth"), 0u) << messages.text();
    EXPECT_FALSE(server.requests().front().has("Authorization"));
}

// ---- a real server -----------------------------------------------------------------------------------------------

TEST(RestCommand, PutsAndDeletesOnARealServer) {
    const Nginx server;
    const std::string content(1'500'000, 'p');
    command(server.url("/dav/clip"), {.method = "PUT", .body = content});
    EXPECT_TRUE(contentOf(server.root() + "/clip") == content);
    command(server.url("/dav/clip"), {.method = "DELETE"});
    EXPECT_FALSE(std::filesystem::exists(server.root() + "/clip"));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].status, 201);
    EXPECT_EQ(requests[1].status, 204);
}

TEST(RestCommand, ARealServerOfFilesRefusesAGet) {
    const Nginx server;
    server.makeDocument("clip", "content");
    const Outcome outcome = command(server.url("/clip"), {.method = "GET"});
    EXPECT_NE(outcome.answer.value_or("").find("405 Not Allowed"), std::string::npos);
    EXPECT_EQ(server.requests().back().method, "POST");
}

TEST(RestCommand, PatchAloneVerifiesWhoSignedTheCertificate) {
    const Nginx server;
    for (const std::string method : {"POST", "PUT", "GET", "DELETE"}) {
        EXPECT_TRUE(command(server.secureUrl("/none"), {.method = method}).answer.has_value()) << method;
    }
    expectUntouched(command(server.secureUrl("/none"), {.method = "PATCH"}));
    EXPECT_EQ(server.requests().size(), 4u);
}

TEST(RestCommand, EveryMethodChecksTheNameOfTheHost) {
    const Nginx server;
    const std::string port = server.secureHost().substr(server.secureHost().find(':'));
    for (const std::string method : {"POST", "PATCH", "PUT", "GET", "DELETE"}) {
        expectUntouched(command("https://other.localhost" + port + "/none", {.method = method}));
    }
    EXPECT_TRUE(server.requests().empty());
}

}  // namespace
