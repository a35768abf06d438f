// One request a write: its method, its body, its range, and where the answer goes.
#include <cerrno>
#include <gtest/gtest.h>

#include "errlog.h"
#include "file/owned_file.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

Answer answered(int status, std::string body = {}) {
    Answer answer;
    answer.status = status;
    answer.reason = "Done";
    answer.body = std::move(body);
    return answer;
}

OwnedFile openForWriting(const ScriptedServer& server) {
    return openFile(server.url("/up"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
}

kvOSOverlapped* method(const char* text) { return reinterpret_cast<kvOSOverlapped*>(const_cast<char*>(text)); }

struct Written {
    std::uint32_t result;
    std::uint32_t word;
};

Written write(const OwnedFile& file, const std::string& data, const char* how, std::uint32_t room = 0) {
    Written done{0, room};
    done.result =
        kvOSWriteFile(file.handle(), data.data(), static_cast<std::uint32_t>(data.size()), &done.word, method(how));
    return done;
}

const std::string kZero(1, '\0');

}  // namespace

TEST(UrlWrite, PutSendsTheDataAndTheirTerminator) {
    ScriptedServer server([](const Request&) { return answered(201); });
    const OwnedFile file = openForWriting(server);
    const Written done = write(file, "hello", nullptr);
    EXPECT_EQ(done.result, 1u);
    EXPECT_EQ(done.word, 6u);
    EXPECT_EQ(kvOSTell(file.handle()), 6);
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].method, "PUT");
    EXPECT_EQ(server.requests()[0].target, "/up");
    EXPECT_EQ(server.requests()[0].body, "hello" + kZero);
    EXPECT_FALSE(server.requests()[0].has("Content-Range"));
}

TEST(UrlWrite, PutOfDataInReadOnlyMemoryTouchesNothing) {
    ScriptedServer server([](const Request&) { return answered(200, "an answer longer than the data"); });
    const OwnedFile file = openForWriting(server);
    std::uint32_t word = 0;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "hi", 2, &word, nullptr), 1u);
}

TEST(UrlWrite, LargePutArrivesWhole) {
    const std::string data(3 << 20, 'x');
    ScriptedServer server([](const Request&) { return answered(201); });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, data, nullptr).result, 1u);
    EXPECT_TRUE(server.requests().back().body == data + kZero);
}

TEST(UrlWrite, PutElsewhereThanAtTheEndTellsItsRange) {
    ScriptedServer server([](const Request&) { return answered(201); });
    const OwnedFile file = openForWriting(server);
    kvOSSeek(file.handle(), 100);
    EXPECT_EQ(write(file, "hello", nullptr).result, 1u);
    EXPECT_EQ(server.requests()[0].header("Content-Range"), "bytes 100-105/106");
    EXPECT_EQ(server.requests()[0].body, "hello" + kZero);
    EXPECT_EQ(kvOSTell(file.handle()), 106);
    // At the end again there is none.
    EXPECT_EQ(write(file, "more", nullptr).result, 1u);
    EXPECT_FALSE(server.requests()[1].has("Content-Range"));
    EXPECT_EQ(server.requests()[1].body, "more" + kZero);
}

TEST(UrlWrite, PutNeedsAccess) {
    ScriptedServer server([](const Request&) { return answered(200, "abc"); });
    const OwnedFile file = openForReading(server.url("/up"));
    errno = 0;
    EXPECT_EQ(write(file, "hello", nullptr).result, 0u);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(UrlWrite, NeedsTheCount) {
    ScriptedServer server([](const Request&) { return answered(200); });
    const OwnedFile file = openForWriting(server);
    errno = 0;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "x", 1, nullptr, nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
}

TEST(UrlWrite, TextIsPostedAndTheAnswerReplacesTheData) {
    ScriptedServer server([](const Request&) { return answered(200, "yes, done"); });
    const OwnedFile file = openForWriting(server);
    std::string data(64, '?');
    data.replace(0, 5, "a=1&b");
    std::uint32_t word = 64;
    EXPECT_EQ(kvOSWriteFile(file.handle(), data.data(), 5, &word, method("POST")), 1u);
    EXPECT_EQ(word, 9u);
    EXPECT_STREQ(data.c_str(), "yes, done");
    EXPECT_EQ(data[10], '?');
    EXPECT_EQ(server.requests()[0].method, "POST");
    EXPECT_EQ(server.requests()[0].body, "a=1&b" + kZero);
    EXPECT_EQ(kvOSTell(file.handle()), 9);
}

TEST(UrlWrite, MethodIsReadInAnyCaseByItsBeginning) {
    ScriptedServer server([](const Request&) { return answered(200); });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, "a", "post it").result, 1u);
    EXPECT_EQ(write(file, "a", "Patch").result, 1u);
    EXPECT_EQ(server.requests()[0].method, "POST");
    EXPECT_EQ(server.requests()[1].method, "PATCH");
}

TEST(UrlWrite, PostAwayFromTheEndSendsAllOfItsBody) {
    ScriptedServer server([](const Request&) { return answered(200); });
    const OwnedFile file = openForWriting(server);
    kvOSSeek(file.handle(), 50);
    EXPECT_EQ(write(file, "abc", "POST").result, 1u);
    EXPECT_EQ(server.requests()[0].body, "abc" + kZero);
    EXPECT_NE(server.requests()[0].header("Content-Range").find("50-52"), std::string::npos);
}

TEST(UrlWrite, PostCountsAsDoneWhateverTheStatus) {
    ScriptedServer server([](const Request&) { return answered(500, "no"); });
    const OwnedFile file = openForWriting(server);
    const Written done = write(file, "abc", "POST", 16);
    EXPECT_EQ(done.result, 1u);
    EXPECT_EQ(done.word, 2u);
}

TEST(UrlWrite, ReadAfterAPostAsksAgain) {
    ScriptedServer server([](const Request& request) {
        return request.method == "POST" ? answered(200) : answerWithRange(request, "0123456789");
    });
    gdwOutputToStdDebug = 0;
    const OwnedFile file = openForReading(server.url("/x"));
    EXPECT_EQ(readSome(file, 2), "01");
    EXPECT_EQ(write(file, "{}", "POST").result, 1u);
    kvOSSeek(file.handle(), 9);
    const OwnedFile other = openForReading(server.url("/x"));
    EXPECT_EQ(write(other, "a", "POST").result, 1u);
    kvOSSeek(other.handle(), 4);
    EXPECT_EQ(readSome(other, 3), "456");
    EXPECT_EQ(server.requests().back().method, "GET");
    EXPECT_EQ(server.requests().back().body, "");
}

TEST(UrlWrite, JsonGoesWithoutATerminatorAndSaysWhatItIs) {
    ScriptedServer server([](const Request&) { return answered(200, "{}"); });
    const OwnedFile file = openForWriting(server);
    std::string data = "{\"a\":1}";
    for (const char* how : {"POST", "PATCH"}) {
        data = "{\"a\":1}";
        std::uint32_t word = 7;
        EXPECT_EQ(kvOSWriteFile(file.handle(), data.data(), 7, &word, method(how)), 1u);
        EXPECT_EQ(word, 2u);
        EXPECT_STREQ(data.c_str(), "{}");
        EXPECT_EQ(server.requests().back().body, "{\"a\":1}");
        EXPECT_EQ(server.requests().back().header("Content-Type"), "application/json");
    }
}

TEST(UrlWrite, JsonWithoutRoomDropsTheAnswerAndSucceeds) {
    ScriptedServer server([](const Request&) { return answered(200, "some answer"); });
    const OwnedFile file = openForWriting(server);
    CapturedMessages messages;
    const Written done = write(file, "{}", "POST");
    EXPECT_EQ(done.result, 1u);
    EXPECT_EQ(done.word, 0u);
    EXPECT_EQ(kvOSTell(file.handle()), 2);
    EXPECT_EQ(messages.count("Error - curl write callback read buffer too small\n"), 1u);
}

TEST(UrlWrite, AnswerThatDoesNotFitIsCutOffAndTheWriteSucceeds) {
    ScriptedServer server([](const Request&) { return answered(200, std::string(1000, 'a')); });
    const OwnedFile file = openForWriting(server);
    CapturedMessages messages;
    std::string data(64, '?');
    std::uint32_t word = 20;
    EXPECT_EQ(kvOSWriteFile(file.handle(), data.data(), 5, &word, method("POST")), 1u);
    EXPECT_EQ(messages.count("Error - curl write callback read buffer too small\n"), 1u);
    EXPECT_EQ(data.substr(20), std::string(44, '?'));
}

TEST(UrlWrite, StatusesThatAreNoSuccessFail) {
    ScriptedServer server([](const Request& request) { return answered(request.target == "/up" ? 500 : 200); });
    const OwnedFile file = openForWriting(server);
    const Written done = write(file, "hello", nullptr);
    EXPECT_EQ(done.result, 0u);
    EXPECT_EQ(kvOSTell(file.handle()), 0);
}

TEST(UrlWrite, OtherMethodTextSendsAsTheHandleStands) {
    ScriptedServer server([](const Request&) { return answered(200); });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, "hello", "MERGE").result, 1u);
    EXPECT_EQ(server.requests()[0].method, "PUT");
    EXPECT_EQ(server.requests()[0].body, "hello" + kZero);
}

TEST(UrlWrite, PutAfterAPostSendsItsOwnData) {
    ScriptedServer server([](const Request&) { return answered(200); });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, "{\"a\":1}", "POST").result, 1u);
    kvOSSeek(file.handle(), 0);
    write(file, "mine", nullptr);
    EXPECT_EQ(server.requests().back().method, "PUT");
    EXPECT_EQ(server.requests().back().body, "mine" + kZero);
}

TEST(UrlWrite, OutputsGetTheBytesFirst) {
    ScriptedServer server([](const Request&) { return answered(201); });
    const ScratchFolder folder;
    OwnedFile file = openForWriting(server);
    ASSERT_EQ(kvOSAddOutputFile(file.handle(), (folder / "copy").c_str()), 1u);
    EXPECT_EQ(write(file, "hello", nullptr).result, 1u);
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(contentOf((folder / "copy")), "hello");
}

TEST(UrlWrite, EarlyRefusalOfALargeBodyFails) {
    ScriptedServer server([](const Request&) {
        Answer answer = answered(413);
        answer.keepAlive = false;
        return answer;
    });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, std::string(8 << 20, 'x'), nullptr).result, 0u);
}

TEST(UrlWrite, PutAfterAPostFailsWhereItIsRefused) {
    ScriptedServer server([](const Request& request) { return answered(request.method == "PUT" ? 403 : 200); });
    for (const char* how : {"POST", "PATCH"}) {
        const OwnedFile file = openForWriting(server);
        EXPECT_EQ(write(file, "abc", how).result, 1u);
        errno = 0;
        EXPECT_EQ(write(file, "abc", nullptr).result, 0u);
        EXPECT_EQ(errno, EACCES);
    }
}

TEST(UrlWrite, RedirectedPutSendsAllOfItsDataAgain) {
    ScriptedServer server([](const Request& request) {
        Answer answer = answered(request.method == "PUT" && request.target == "/up" ? 307 : 200);
        if (answer.status == 307) answer.headers.emplace_back("Location", "/there");
        return answer;
    });
    const auto putsWhole = [&](const OwnedFile& file) {
        EXPECT_EQ(write(file, "abc", nullptr).result, 1u);
        EXPECT_EQ(server.requests().back().target, "/there");
        EXPECT_EQ(server.requests().back().body, "abc" + kZero);
    };
    putsWhole(openForWriting(server));
    const OwnedFile behindTheStart = openForWriting(server);
    kvOSSeek(behindTheStart.handle(), 100);
    putsWhole(behindTheStart);
    const OwnedFile behindAPost = openForWriting(server);
    EXPECT_EQ(write(behindAPost, "abc", "POST").result, 1u);
    putsWhole(behindAPost);
}

TEST(UrlWrite, PostFollowsNoRedirect) {
    ScriptedServer server([](const Request&) {
        Answer answer = answered(302);
        answer.headers.emplace_back("Location", "/there");
        return answer;
    });
    const OwnedFile file = openForWriting(server);
    EXPECT_EQ(write(file, "abc", "POST").result, 1u);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(UrlWrite, ReadAfterAPostGivesUpACircleAsBefore) {
    ScriptedServer server([](const Request& request) {
        Answer answer = answered(request.method == "GET" ? 302 : 200, "abc");
        if (answer.status == 302) answer.headers.emplace_back("Location", "/again");
        return answer;
    });
    gdwOutputToStdDebug = 0;
    const OwnedFile file = openForReading(server.url("/x"));
    const auto requestsOfARead = [&] {
        const std::size_t before = server.requests().size();
        char byte = 0;
        std::uint32_t got = 0;
        EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, &got, nullptr), 0u);
        return server.requests().size() - before;
    };
    EXPECT_EQ(requestsOfARead(), 31u);
    EXPECT_EQ(write(file, "a", "POST").result, 1u);
    kvOSSeek(file.handle(), 0);
    EXPECT_EQ(requestsOfARead(), 31u);
}

TEST(UrlWrite, TextOfTheStdioCallsInReadOnlyMemoryIsNotTouchedForAnOutput) {
    ScriptedServer server([](const Request&) { return answered(200, "an answer"); });
    const ScratchFolder folder;
    const OwnedFile file = openFile(folder / "main", KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    ASSERT_EQ(kvOSAddOutputFile(file.handle(), (folder / "copy").c_str()), 1u);
    ASSERT_EQ(kvOSAddOutputFile(file.handle(), server.url("/up").c_str()), 1u);
    EXPECT_EQ(kvOSfputs("hello", file.handle()), 1u);
    for (const Request& request : server.requests()) EXPECT_EQ(request.body, "hello" + kZero);
    EXPECT_EQ(server.requests().size(), 2u);
}
