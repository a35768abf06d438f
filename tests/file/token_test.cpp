// Logging in: which file is found, what is asked for, what the answer does, and when it is done again.
//
// Each test has a home of its own, with the folder of settings in it. Servers are named "localhost" here, since no
// setting can be named by a number.
#include <cstdlib>
#include <curl/curl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

#include "errlog.h"
#include "file/owned_file.h"
#include "hosts.h"
#include "kvcfg.h"
#include "kvos/attributes.h"
#include "kvos/time.h"
#include "kvos/url.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "servers/token_server.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

const std::string kCredentials = R"({"client_id":"me","client_secret":"s&cret","refresh_token":"re/fresh"})";
const std::string kAnswer = R"({"access_token":"first","token_type":"Bearer","expires_in":3600})";

Answer answered(std::string body, int status = 200) {
    Answer answer;
    answer.status = status;
    answer.body = std::move(body);
    return answer;
}

std::string named(const std::string& host) { return "localhost" + host.substr(host.find(':')); }

/// The endpoint gives the token; what else is asked for is a file of three bytes for whoever has it.
Answer serve(const Request& request, const std::string& token, const std::string& answer) {
    if (request.target == "/token") return answered(answer);
    return answered("abc", request.header("Authorization") == "Bearer " + token ? 200 : 401);
}

class Token : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support");
        char folder[4096];
        kvOSGetConfigDir(folder, 0);
        folder_ = folder;
        std::filesystem::create_directories(folder_);
        gdwOutputToStdDebug = 0;
    }

    void writeTokenFile(const std::string& host, const std::string& text) const {
        makeFile(folder_ + host + ".json", text);
    }
    static void setEndpoint(const std::string& host, const std::string& url) {
        const std::string key = "MediaKiln\\OAuth2\\" + host;
        kvCFGAddKeyString(KVSTDCONFIG, key.c_str(), "oauth2server", url.c_str(), KVCFG_STRING, nullptr);
        ASSERT_EQ(kvCFGKeyExists(KVSTDCONFIG, (key + "\\oauth2server").c_str()), 1u);
    }
    /// Makes a server one that its visitors log in for; the URL of a file on it.
    std::string protect(const ScriptedServer& server, const std::string& credentials = kCredentials) const {
        const std::string host = named(server.host());
        writeTokenFile(host, credentials);
        setEndpoint(host, server.url("/token"));
        return "http://" + host + "/clip";
    }

    std::string folder_;
};

/// What an application that knows the record does with it.
kvOSFileHandle& recordOf(const OwnedFile& file) { return *reinterpret_cast<kvOSFileHandle*>(file.handle()); }

std::vector<std::string> bodiesOf(const ScriptedServer& server, const std::string& target) {
    std::vector<std::string> bodies;
    for (const Request& request : server.requests()) {
        if (request.target == target) bodies.push_back(request.body);
    }
    return bodies;
}

}  // namespace

TEST_F(Token, IsFetchedAndSentWithEveryRequest) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(readSome(file, 3), "abc");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(requests[0].header("Cache-Control"), "no-cache");
    EXPECT_EQ(requests[1].header("Authorization"), "Bearer first");
    EXPECT_EQ(requests[2].header("Authorization"), "Bearer first");
}

TEST_F(Token, IsSentByAPutAfterAPostThatGoesWithoutIt) {
    ScriptedServer server([](const Request& request) { return answered(request.target == "/token" ? kAnswer : ""); });
    const OwnedFile file = openFile(protect(server), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    for (const char* method : {"POST", static_cast<const char*>(nullptr)}) {
        std::uint32_t word = 0;
        auto* const how = reinterpret_cast<kvOSOverlapped*>(const_cast<char*>(method));
        EXPECT_EQ(kvOSWriteFile(file.handle(), "hello", 5, &word, how), 1u);
        EXPECT_EQ(server.requests().back().header("Authorization"), method == nullptr ? "Bearer first" : "");
    }
}

TEST_F(Token, IsNotShownByTheTalkOfReading) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const OwnedFile file = openForReading(protect(server));
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    EXPECT_EQ(readSome(file, 3), "abc");
    EXPECT_EQ(messages.count("first"), 0u);
    EXPECT_EQ(messages.count("Authorization: (not shown)\r\n"), 1u);
}

TEST_F(Token, RefreshGrantIsPreferredToThePassword) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    openForReading(protect(server, R"({"client_id":"m e","client_secret":"s&","refresh_token":"r/1","password":"p"})"));
    EXPECT_EQ(
        bodiesOf(server, "/token"),
        std::vector<std::string>{"client_id=m e&client_secret=s%26&refresh_token=r%2F1&grant_type=refresh_token"});
}

TEST_F(Token, PasswordGrant) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    openForReading(protect(server, R"({"client_id":"me","client_secret":"s","username":"u+","password":"p="})"));
    EXPECT_EQ(bodiesOf(server, "/token"),
              std::vector<std::string>{"client_id=me&client_secret=s&username=u%2B&password=p%3D&grant_type=password"});
}

TEST_F(Token, WithNeitherTheBearerGrantAlone) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    openForReading(protect(server, R"({"client_id":"me","client_secret":"s"})"));
    EXPECT_EQ(bodiesOf(server, "/token"),
              std::vector<std::string>{
                  "client_id=me&client_secret=s&grant_type=urn:ietf:params:oauth:grant-type:jwt-bearer"});
}

TEST_F(Token, FileWithoutAClientOrItsSecretAsksForNothing) {
    for (const char* text : {"", "{", "[]", "nonsense", R"({"client_secret":"s"})", R"({"client_id":"me"})"}) {
        SCOPED_TRACE(text);
        ScriptedServer server([](const Request&) { return answered("abc"); });
        EXPECT_TRUE(openForReading(protect(server, text)).isOpen());
        EXPECT_TRUE(bodiesOf(server, "/token").empty());
    }
}

TEST_F(Token, FileCutAnywhereDoesNoHarm) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const std::string url = protect(server);
    for (std::size_t length = 0; length < kCredentials.size(); ++length) {
        writeTokenFile(named(server.host()), kCredentials.substr(0, length));
        openForReading(url);
    }
}

TEST_F(Token, OversizedFileIsNotRead) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    const std::string url = protect(server, kCredentials + std::string(2 << 20, ' '));
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    EXPECT_TRUE(openForReading(url).isOpen());
    EXPECT_EQ(messages.count("Unable to open oauth file <" + folder_ + named(server.host()) + ".json>"), 1u);
    EXPECT_TRUE(bodiesOf(server, "/token").empty());
}

TEST_F(Token, FileThatCannotBeOpenedIsToldAndTheOpenGoesOn) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    const std::string path = folder_ + named(server.host()) + ".json";
    gvecNames.push_back(path.c_str());  // counts as there
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    EXPECT_TRUE(openForReading("http://" + named(server.host()) + "/clip").isOpen());
    EXPECT_EQ(messages.count("Unable to open oauth file <" + path + ">"), 1u);
    gvecNames.clear();
}

TEST_F(Token, ThirteenthPairIsOutOfReach) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    std::string text = "{";
    for (int i = 0; i < 11; ++i) text += "\"x" + std::to_string(i) + "\":\"y\",";
    openForReading(protect(server, text + R"("client_id":"me","client_secret":"s"})"));
    EXPECT_TRUE(bodiesOf(server, "/token").empty());
}

TEST_F(Token, KeyThatIsTheBeginningOfAWordPassesForIt) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    openForReading(protect(server, R"({"client_i":"me","client_s":"s","pass":"p","user":"u"})"));
    EXPECT_EQ(bodiesOf(server, "/token"),
              std::vector<std::string>{"client_id=me&client_secret=s&username=u&password=p&grant_type=password"});
}

TEST_F(Token, HostThatIsANumberSharesOneFile) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    writeTokenFile(server.host().substr(server.host().find(':')), R"({"client_id":"me"})");
    const OwnedFile file = openForReading(server.url("/clip"));
    ASSERT_TRUE(file.isOpen());
    ASSERT_NE(file.record().szClientId, nullptr);
    EXPECT_STREQ(file.record().szClientId, "me");
    EXPECT_STREQ(file.record().szOAuthServer, KVUTIL_TOKEN_ENDPOINT);
}

TEST_F(Token, WholeHostIsSoughtAheadOfTheNameAlone) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    writeTokenFile(server.host(), R"({"client_id":"whole"})");
    writeTokenFile(server.host().substr(server.host().find(':')), R"({"client_id":"name"})");
    const OwnedFile file = openForReading(server.url("/clip"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_STREQ(file.record().szClientId, "whole");
}

TEST_F(Token, FileOfAnotherPortIsNotFound) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    writeTokenFile("localhost", R"({"client_id":"me"})");
    const OwnedFile file = openForReading("http://" + named(server.host()) + "/clip");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().szClientId, nullptr);
    EXPECT_EQ(file.record().szOAuthServer, nullptr);
}

TEST_F(Token, ExpiryIsInMillisecondsOfTheMonotonicClock) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const std::uint32_t before = kvOSGetMs();
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    EXPECT_GE(file.record().dwTokenExpiry, before + 3600000);
    EXPECT_LE(file.record().dwTokenExpiry, kvOSGetMs() + 3600000);
    EXPECT_STREQ(file.record().szTokenType, "Bearer");
    EXPECT_EQ(bodiesOf(server, "/token").size(), 1u);
}

TEST_F(Token, IsNotFetchedAnewBeforeItsTimeIsOver) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    kvOSFileHandle& record = recordOf(file);
    EXPECT_EQ(kvOSOAuthRefresh(&record), 0u);
    EXPECT_EQ(bodiesOf(server, "/token").size(), 1u);
    record.dwTokenExpiry = kvOSGetMs() - 1;
    EXPECT_EQ(kvOSOAuthRefresh(&record), 0u);
    EXPECT_EQ(bodiesOf(server, "/token").size(), 2u);
    EXPECT_EQ(kvOSOAuthAuthorize(&record), 0u);  // whatever the time
    EXPECT_EQ(bodiesOf(server, "/token").size(), 3u);
}

TEST_F(Token, ItsHeaderTakesThePlaceOfAllOthers) {
    ScriptedServer server([](const Request& request) { return serve(request, "first", kAnswer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    kvOSFileHandle& record = recordOf(file);
    record.pHeaders = curl_slist_append(record.pHeaders, "X-Another: line");
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> transfer(curl_easy_init(), curl_easy_cleanup);
    EXPECT_EQ(kvOSOAuthAddHeader(&record, transfer.get()), 0u);
    ASSERT_NE(record.pHeaders, nullptr);
    EXPECT_STREQ(record.pHeaders->data, "Authorization: Bearer first");
    EXPECT_EQ(record.pHeaders->next, nullptr);
}

TEST_F(Token, WithoutOneTheHeadersStayAsTheyAre) {
    ScriptedServer server([](const Request&) { return answered("abc"); });
    const OwnedFile file = openForReading(server.url("/clip"));
    ASSERT_TRUE(file.isOpen());
    kvOSFileHandle& record = recordOf(file);
    curl_slist* const before = record.pHeaders = curl_slist_append(record.pHeaders, "X-Another: line");
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> transfer(curl_easy_init(), curl_easy_cleanup);
    EXPECT_EQ(kvOSOAuthAddHeader(&record, transfer.get()), 0u);
    EXPECT_EQ(record.pHeaders, before);
    EXPECT_EQ(server.requests().size(), 1u);  // that of the open
}

TEST_F(Token, NullIsPassedOver) {
    kvOSFileHandle record{};
    EXPECT_EQ(kvOSOAuthAuthorize(nullptr), 0u);
    EXPECT_EQ(kvOSOAuthRefresh(nullptr), 0u);
    EXPECT_EQ(kvOSOAuthAddHeader(nullptr, nullptr), 0u);
    EXPECT_EQ(kvOSOAuthAddHeader(&record, nullptr), 0u);
    EXPECT_EQ(record.pHeaders, nullptr);
}

TEST_F(Token, WithoutAnExpiryIsFetchedAtEachTest) {
    const std::string answer = R"({"access_token":"first"})";
    ScriptedServer server([&](const Request& request) { return serve(request, "first", answer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(bodiesOf(server, "/token").size(), 3u);  // the login, its second look, and the header
    EXPECT_EQ(readSome(file, 3), "abc");
    EXPECT_EQ(bodiesOf(server, "/token").size(), 4u);
}

TEST_F(Token, RevokedDuringReadingIsFetchedAnewOnce) {
    std::string valid = "first";
    std::size_t fetched = 0;
    ScriptedServer server([&](const Request& request) {
        if (request.target == "/token") {
            ++fetched;
            return answered(R"({"access_token":")" + valid + R"(","expires_in":3600})");
        }
        if (request.header("Authorization") != "Bearer " + valid) return answered("", 401);
        return answerWithRange(request, "0123456789");
    });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    valid = "second";
    EXPECT_EQ(readSome(file, 10), "0123456789");
    EXPECT_EQ(fetched, 2u);
    kvOSSeek(file.handle(), 5);
    EXPECT_EQ(readSome(file, 2), "56");  // held
}

TEST_F(Token, SecondFailureOfAReadEndsIt) {
    bool revoked = false;
    ScriptedServer server([&](const Request& request) {
        if (request.target == "/token") return answered(kAnswer);
        return revoked ? answered("", 401) : answerWithRange(request, "0123456789");
    });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    revoked = true;
    const std::size_t before = server.requests().size();
    EXPECT_EQ(readSome(file, 10), "");
    EXPECT_EQ(server.requests().size(), before + 3);  // refused, a new token, refused
}

TEST_F(Token, EndpointThatRefusesIsTold) {
    const std::string answer = R"({"error":"invalid_grant","error_description":"gone"})";
    ScriptedServer server(
        [&](const Request& request) { return request.target == "/token" ? answered(answer, 400) : answered("abc"); });
    const std::string url = protect(server);
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    const OwnedFile file = openForReading(url);
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(messages.count("ERROR(kvFile): ERROR-Type: invalid_grant\n\r"), 2u);  // it asks twice
    EXPECT_EQ(messages.count("ERROR(kvFile): ERROR-Desc: gone\n\r"), 2u);
    EXPECT_EQ(file.record().szAccessToken, nullptr);
}

TEST_F(Token, ValueOfAnErrorIsLookedAtAsAKey) {
    const std::string answer = R"({"error":"access_token","x":"y","token_type":"T"})";
    ScriptedServer server([&](const Request& request) { return serve(request, "x", answer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    EXPECT_STREQ(file.record().szAccessToken, "x");
}

TEST_F(Token, AnswerThatIsCutOrNoJsonDoesNoHarm) {
    std::string answer;
    ScriptedServer server(
        [&](const Request& request) { return request.target == "/token" ? answered(answer) : answered("abc"); });
    const std::string url = protect(server);
    for (std::size_t length = 0; length < kAnswer.size(); length += 3) {
        answer = kAnswer.substr(0, length);
        EXPECT_TRUE(openForReading(url).isOpen());
    }
    answer = std::string(100000, '{');
    EXPECT_TRUE(openForReading(url).isOpen());
}

TEST_F(Token, LongAnswerIsReadAsFarAsTheBufferReaches) {
    const std::string answer = R"({"access_token":"first","expires_in":3600,"id_token":")" + std::string(10000, 'i') +
                               R"(","rest":")" + std::string(10000, 'r') + R"("})";
    ScriptedServer server([&](const Request& request) { return serve(request, "first", answer); });
    const OwnedFile file = openForReading(protect(server));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(std::string(file.record().szIdToken), std::string(10000, 'i'));
}

TEST_F(Token, EndpointThatNeverAnswersIsGivenUp) {
    ScriptedServer server([](const Request& request) {
        Answer answer = answered("abc");
        answer.stall = request.target == "/token";
        return answer;
    });
    const std::string url = protect(server, R"({"client_id":"me","client_secret":"s"})");
    const OwnedFile file = openForReading(url);
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().szAccessToken, nullptr);
}

TEST_F(Token, FtpTakesNoPart) {
    ScriptedServer endpoint([](const Request&) { return answered(kAnswer); });
    writeTokenFile("localhost:1", kCredentials);
    setEndpoint("localhost:1", endpoint.url("/token"));
    EXPECT_FALSE(openForReading("ftp://localhost:1/x").isOpen());
    EXPECT_EQ(endpoint.connections(), 0);
}

TEST_F(Token, HostWithDigitsAheadOfItsNameReadsTheSettingOfTheNameAlone) {
    ScriptedServer endpoint([](const Request&) { return answered(kAnswer); });
    const std::string port = named(endpoint.host()).substr(9);
    writeTokenFile("localhost" + port, kCredentials);
    setEndpoint("localhost" + port, endpoint.url("/token"));
    // The host itself need not be there: the login comes first.
    openForReading("http://10.1.localhost" + port + "/clip");
    EXPECT_GE(bodiesOf(endpoint, "/token").size(), 1u);
}

TEST_F(Token, BareNumberIsServedByTheFileWithoutAName) {
    const std::string path = folder_ + ".json";
    gvecNames.push_back(path.c_str());  // counts as there
    gdwOutputToStdDebug = 1;
    CapturedMessages messages;
    openForReading("http://127.0.0.1/clip");
    EXPECT_EQ(messages.count("Unable to open oauth file <" + path + ">"), 1u);
    gvecNames.clear();
}

TEST_F(Token, IsNotTakenAlongToAnotherHost) {
    ScriptedServer other([](const Request&) { return answered("abc"); });
    ScriptedServer server([&](const Request& request) {
        if (request.target == "/token") return answered(kAnswer);
        const int step = std::stoi(request.target.substr(1));
        Answer answer = answered("", 302);
        const bool last = step == 30;
        answer.headers.emplace_back("Location", last ? other.url("/x") : "/" + std::to_string(step + 1));
        return answer;
    });
    protect(server);
    EXPECT_TRUE(openForReading("http://" + named(server.host()) + "/0").isOpen());
    ASSERT_FALSE(other.requests().empty());
    for (const Request& request : other.requests()) EXPECT_FALSE(request.has("Authorization"));
}

TEST_F(Token, OfARealEndpointOpensARealProtectedFile) {
    if (!TokenServer::isInstalled()) GTEST_SKIP() << "npm could not fetch oauth2-mock-server (scripts/setup)";
    TokenServer endpoint;
    Nginx nginx("the-token");
    nginx.makeDocument("/clip.mov", "secret bytes");
    const std::string host = named(nginx.host());
    setEndpoint(host, endpoint.endpoint());
    endpoint.setToken("the-token");
    for (const char* grant : {R"("refresh_token":"r")", R"("username":"u","password":"p")", R"("x":"y")"}) {
        SCOPED_TRACE(grant);
        writeTokenFile(host, std::string(R"({"client_id":"me","client_secret":"s",)") + grant + "}");
        const OwnedFile file = openForReading("http://" + host + "/protected/clip.mov");
        ASSERT_TRUE(file.isOpen());
        EXPECT_EQ(readSome(file, 12), "secret bytes");
    }
    EXPECT_EQ(endpoint.requests().size(), 3u);
}
