// What an open asks a server, what it makes of the answer, and how it goes on from a redirect.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

#include "file/owned_file.h"
#include "kvos/attributes.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"

using namespace kvtest;

namespace {

constexpr std::uint64_t kUnknown = ~std::uint64_t{0};
constexpr std::string_view kRedirectMessage =
    "\nRedirect return, likely your token authentication is not setup properly, so it is attempting a oath2 redirect\n";

Answer withBody(std::string body) {
    Answer answer;
    answer.body = std::move(body);
    return answer;
}

Answer status(int code, std::string reason) {
    Answer answer;
    answer.status = code;
    answer.reason = std::move(reason);
    return answer;
}

Answer redirect(int code, const std::string& location) {
    Answer answer = status(code, "Elsewhere");
    if (!location.empty()) answer.headers.emplace_back("Location", location);
    return answer;
}

std::uint64_t sizeOf(const OwnedFile& file) {
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file.handle(), &size);
    return size;
}

}  // namespace

TEST(UrlOpen, AsksForTheHeadersAloneAndLearnsTheSize) {
    ScriptedServer server([](const Request&) { return withBody(std::string(1234, 'a')); });
    const OwnedFile file = openForReading(server.url("/clip.mov"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(sizeOf(file), 1234u);
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].method, "HEAD");
    EXPECT_EQ(server.requests()[0].target, "/clip.mov");
    EXPECT_FALSE(server.requests()[0].has("Authorization"));
}

TEST(UrlOpen, RecordHoldsTheRedirectedTextAndThreeBuffers) {
    ScriptedServer server([](const Request&) { return withBody("abc"); });
    const OwnedFile file = openFile(server.url("/x"), KVFILE_READ, KVFILE_OPEN_EXISTING, 3);
    ASSERT_TRUE(file.isOpen());
    const kvOSFileHandle& record = file.record();
    EXPECT_EQ(record.dwType, KVFILE_CURL);
    EXPECT_EQ(record.szPath, server.url("/x"));
    EXPECT_NE(record.pCache, nullptr);
    EXPECT_NE(record.pSpare1, nullptr);
    EXPECT_NE(record.pSpare2, nullptr);
    EXPECT_EQ(record.pBuf, nullptr);
    EXPECT_EQ(record.qwBufSize, 0u);
    EXPECT_EQ(record.dwBlockSize, 0u);
}

TEST(UrlOpen, UnknownLengthIsAllOnes) {
    ScriptedServer server([](const Request&) {
        Answer answer = withBody("abc");
        answer.framing = Answer::Framing::chunked;
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/live"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(sizeOf(file), kUnknown);
    EXPECT_EQ(kvOSfeof(file.handle()), 0u);
}

TEST(UrlOpen, MissingFileIsToldAndFails) {
    ScriptedServer server([](const Request&) { return status(404, "Not Found"); });
    CapturedMessages messages;
    errno = 0;
    EXPECT_FALSE(openForReading(server.url("/none")).isOpen());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), "Error: opening <" + server.url("/none") + "> ");
}

TEST(UrlOpen, ServerThatCannotBeReachedIsToldAndFails) {
    std::string url;
    {
        ScriptedServer gone([](const Request&) { return Answer{}; });
        url = gone.url("/x");
    }
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(url).isOpen());
    EXPECT_EQ(messages.text(), "Error: opening <" + url + "> ");
}

TEST(UrlOpen, ServerThatRefusesTheHeaderRequestIsNoError) {
    for (const int code : {405, 415}) {
        SCOPED_TRACE(code);
        ScriptedServer server(
            [code](const Request& request) { return request.method == "HEAD" ? status(code, "No") : withBody("abc"); });
        const OwnedFile file = openForReading(server.url("/x"));
        ASSERT_TRUE(file.isOpen());
        EXPECT_EQ(sizeOf(file), 0u);
        EXPECT_EQ(kvOSFileExists(server.url("/x").c_str()), 1u);
        EXPECT_EQ(kvOSSeek(file.handle(), 1), -1);
    }
}

TEST(UrlOpen, ReadAfterARefusedHeaderRequestGivesWhatTheOptionsOfTheOpenLeave) {
    ScriptedServer server(
        [](const Request& request) { return request.method == "HEAD" ? status(405, "No") : withBody("abc"); });
    const OwnedFile file = openForReading(server.url("/x"));
    ASSERT_TRUE(file.isOpen());
    // Headers are wanted and no body: the headers of the answer are what comes.
    EXPECT_EQ(readSome(file, 12), "HTTP/1.1 200");
    EXPECT_EQ(server.requests().back().method, "GET");
}

TEST(UrlOpen, OtherErrorsFail) {
    for (const int code : {400, 401, 403, 410, 416, 500, 503}) {
        SCOPED_TRACE(code);
        ScriptedServer server([code](const Request&) { return status(code, "No"); });
        CapturedMessages messages;
        EXPECT_FALSE(openForReading(server.url("/x")).isOpen());
        EXPECT_EQ(messages.count("Error: opening <"), 1u);
    }
}

TEST(UrlOpen, ForWritingSendsNothing) {
    ScriptedServer server([](const Request&) { return status(500, "No"); });
    for (const std::uint32_t access : {KVFILE_WRITE, KVFILE_READ | KVFILE_WRITE}) {
        const OwnedFile file = openFile(server.url("/x"), access, KVFILE_CREATE_ALWAYS);
        ASSERT_TRUE(file.isOpen());
        EXPECT_EQ(sizeOf(file), 0u);
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST(UrlOpen, FollowsRedirectsAndKeepsQuiet) {
    ScriptedServer server(
        [](const Request& request) { return request.target == "/b" ? withBody("four") : redirect(302, "/b"); });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/a"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(sizeOf(file), 4u);
    EXPECT_EQ(messages.text(), "");
}

TEST(UrlOpen, RedirectWithoutALocationIsToldAndTakenAsItIs) {
    for (const int code : {302, 303, 307}) {
        SCOPED_TRACE(code);
        ScriptedServer server([code](const Request&) { return redirect(code, ""); });
        CapturedMessages messages;
        const OwnedFile file = openForReading(server.url("/a"));
        EXPECT_TRUE(file.isOpen());
        EXPECT_EQ(messages.count(kRedirectMessage), 1u);
        EXPECT_EQ(messages.count("HTTP/1.1 " + std::to_string(code)), 1u);
        EXPECT_EQ(server.requests().size(), 1u);
    }
}

TEST(UrlOpen, AnswerThatBeginsWithAThreeHundredTakesTheBranchToo) {
    ScriptedServer server([](const Request&) { return redirect(304, ""); });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/a"));
    EXPECT_EQ(messages.count(kRedirectMessage), 1u);
}

TEST(UrlOpen, CircleOfRedirectsEndsAfterSixAttempts) {
    ScriptedServer server([](const Request&) { return redirect(302, "/again"); });
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(server.url("/again")).isOpen());
    EXPECT_EQ(messages.count(kRedirectMessage), 6u);
    EXPECT_EQ(messages.count("Error: opening <"), 1u);
    EXPECT_LT(server.requests().size(), 400u);
}

TEST(UrlOpen, GoesOnFromARedirectThatWasNotFollowed) {
    // Thirty redirects are followed in one attempt; the next attempt begins where the first one ended.
    ScriptedServer server([&server](const Request& request) {
        const int step = std::stoi(request.target.substr(1));
        return step == 40 ? withBody("found") : redirect(302, server.url("/" + std::to_string(step + 1)));
    });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/0"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(messages.count(kRedirectMessage), 1u);
    EXPECT_EQ(readSome(file, 5), "found");
}

TEST(UrlOpen, LocationMayBeLongerThanTheUrl) {
    const std::string longer = "/" + std::string(3000, 'x');
    ScriptedServer server([&](const Request& request) {
        if (request.target == longer) return withBody("found");
        const int step = std::stoi(request.target.substr(1));
        return redirect(307, step == 30 ? server.url(longer) : server.url("/" + std::to_string(step + 1)));
    });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/0"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(sizeOf(file), 5u);
    EXPECT_EQ(messages.count(kRedirectMessage), 1u);
}

TEST(UrlOpen, ServerCannotSendUsToAFileOfThisMachine) {
    ScriptedServer server([](const Request&) { return redirect(302, "file:///etc/passwd"); });
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(server.url("/a")).isOpen());
    EXPECT_EQ(messages.count("Error: opening <"), 1u);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(UrlOpen, PercentSignsInHeadersOfARedirectAreNoConversions) {
    ScriptedServer server([](const Request&) {
        Answer answer = redirect(302, "");
        answer.headers.emplace_back("X-Text", "%s%n%s%n%d");
        return answer;
    });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/a"));
    EXPECT_EQ(messages.count("X-Text: %s%n%s%n%d"), 1u);
}

TEST(UrlOpen, SignaturesAndPasswordsInHeadersOfARedirectAreNotShown) {
    ScriptedServer server([&server](const Request&) {
        return redirect(302, "http://me:secret@" + server.host() + "/again?X-Amz-Signature=0feed0&X-Amz-Date=1");
    });
    CapturedMessages messages;
    EXPECT_FALSE(openForReading(server.url("/again")).isOpen());
    EXPECT_EQ(messages.count("/again?X-Amz-Signature=***&X-Amz-Date=1\r\n"), 6u);
    EXPECT_EQ(messages.count("http://me:***@"), 6u);
    EXPECT_EQ(messages.count("0feed0"), 0u);
    EXPECT_EQ(messages.count("secret"), 0u);
}

TEST(UrlOpen, HeadersLargerThanTheBufferAreCut) {
    ScriptedServer server([](const Request&) {
        Answer answer = redirect(302, "");
        for (int i = 0; i < 80; ++i) answer.headers.emplace_back("X-Fill", std::string(2000, 'f'));
        return answer;
    });
    CapturedMessages messages;
    const OwnedFile file = openForReading(server.url("/a"));
    EXPECT_EQ(messages.count(kRedirectMessage), 1u);
}

TEST(UrlOpen, AttributesAndExistenceAskTheServer) {
    ScriptedServer server([](const Request& request) {
        return request.target.starts_with("/there") ? withBody("abc") : status(404, "Not Found");
    });
    EXPECT_EQ(kvOSFileExists(server.url("/there").c_str()), 1u);
    EXPECT_EQ(kvOSGetFileAttributes(server.url("/there").c_str()), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes(server.url("/there/").c_str()), KVATTR_DIRECTORY);
    EXPECT_EQ(kvOSFileIsDir(server.url("/there/").c_str()), 1u);
    EXPECT_EQ(kvOSGetFileSizeName(server.url("/there").c_str()), 3u);
    CapturedMessages messages;
    EXPECT_EQ(kvOSFileExists(server.url("/none").c_str()), 0u);
    EXPECT_EQ(kvOSGetFileAttributes(server.url("/none").c_str()), KVATTR_INVALID);
    EXPECT_EQ(kvOSGetFileSizeName(server.url("/none").c_str()), 0u);
    EXPECT_EQ(messages.count("Error: opening <"), 3u);
}

TEST(UrlOpen, NamesOnTheListExistWithoutARequest) {
    ScriptedServer server([](const Request&) { return status(404, "Not Found"); });
    const std::string url = server.url("/listed/");
    gvecNames.push_back(url.c_str());
    EXPECT_EQ(kvOSFileExists(url.c_str()), 1u);
    EXPECT_EQ(kvOSGetFileAttributes(url.c_str()), KVATTR_DIRECTORY);
    EXPECT_EQ(server.connections(), 0);
}

TEST(UrlOpen, TimesOfAUrlNeedNoRequest) {
    ScriptedServer server([](const Request&) { return withBody("abc"); });
    EXPECT_EQ(kvOSFileTimeModified(server.url("/x").c_str()), KVFILETIME_NETWORK);
    EXPECT_EQ(server.connections(), 0);
}

TEST(UrlOpen, ThousandOpensLeaveNoDescriptorBehind) {
    ScriptedServer server([](const Request&) { return withBody("abc"); });
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    ASSERT_TRUE(openForReading(server.url("/x")).isOpen());
    // The server ends its side of a connection when it sees ours ended, which may take a moment.
    const auto before = descriptors();
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(openForReading(server.url("/x")).isOpen());
    EXPECT_LT(descriptors(), before + 100);
}
