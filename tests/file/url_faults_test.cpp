// Connections that are reset, in every phase of a transfer, and readers that take their time.
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "file/owned_file.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

constexpr std::uint32_t kMiB = 1048576;

std::string letters(std::size_t size) {
    std::string text(size, ' ');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + i % 23 + i / 1000 % 3);
    return text;
}

/// Serves a document, and resets the connection of its first GET, or of its HEADs, as `fault` makes the answer.
class Faulty {
public:
    Faulty(std::string content, std::string method, void (*fault)(Answer&))
        : content_(std::move(content)), method_(std::move(method)), fault_(fault) {}

    Answer operator()(const Request& request) {
        Answer answer = answerWithRange(request, content_);
        if (request.method == method_ && !isOver_) {
            isOver_ = true;
            answer.ending = Answer::Ending::reset;
            fault_(answer);
        }
        return answer;
    }

private:
    std::string content_;
    std::string method_;
    void (*fault_)(Answer&);
    bool isOver_ = false;  // one client, so one connection at a time
};

struct Row {
    const char* phase;
    void (*fault)(Answer&);
};

class UrlReset : public testing::Test {
protected:
    CapturedMessages messages_;
};

TEST_F(UrlReset, DuringTheOpenFailsIt) {
    const Row rows[] = {
        {"ahead of the answer", [](Answer& answer) { answer.unanswered = true; }},
        {"in the first line", [](Answer& answer) { answer.raw = "HTTP/1.1 20"; }},
        {"in the headers", [](Answer& answer) { answer.raw = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\nAccept-R"; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.phase);
        const ScriptedServer server(Faulty(letters(100), "HEAD", row.fault));
        errno = 0;
        EXPECT_EQ(openForReading(server.url("/x")).handle(), KVFILE_INVALID);
        EXPECT_NE(errno, 0);
        const OwnedFile again = openForReading(server.url("/x"));
        EXPECT_EQ(readSome(again, 100), letters(100)) << "the next open has a connection of its own";
    }
    EXPECT_EQ(messages_.count("Error: opening <http://127.0.0.1:"), 3u);
}

TEST_F(UrlReset, DuringAReadFailsItAndTheNextOneHasTheBytes) {
    const Row rows[] = {
        {"ahead of the headers", [](Answer& answer) { answer.unanswered = true; }},
        {"in the headers", [](Answer& answer) { answer.raw = "HTTP/1.1 206 Partial Content\r\nContent-Le"; }},
        {"ahead of the first byte", [](Answer& answer) { answer.cutAfter = 0; }},
        {"behind the first byte", [](Answer& answer) { answer.cutAfter = 1; }},
        {"in the middle", [](Answer& answer) { answer.cutAfter = answer.body.size() / 2; }},
        {"ahead of the last byte", [](Answer& answer) { answer.cutAfter = answer.body.size() - 1; }},
    };
    const std::string content = letters(2 * kMiB + 5);
    for (const Row& row : rows) {
        for (const std::uint32_t count : {1000u, 2 * kMiB}) {  // through the cache, and past it
            SCOPED_TRACE(testing::Message() << row.phase << ", " << count << " bytes");
            ScriptedServer server(Faulty(content, "GET", row.fault));
            const OwnedFile file = openForReading(server.url("/x"));
            ASSERT_TRUE(file.isOpen());
            ASSERT_EQ(kvOSSeek(file.handle(), 3), 3);
            std::string block(count, '?');
            std::uint32_t got = 0;
            errno = 0;
            std::uint32_t result = kvOSReadFile(file.handle(), block.data(), count, &got, nullptr);
            // A connection that was kept, and ends ahead of any answer, is one that a server had given up meanwhile:
            // the transfer is begun once more, by itself.
            const bool isBegunAgain = row.phase == std::string_view("ahead of the headers");
            if (!isBegunAgain) {
                EXPECT_EQ(result, 0u);
                EXPECT_NE(errno, 0);
                EXPECT_EQ(kvOSTell(file.handle()), 3) << "nothing counts as read";
                result = kvOSReadFile(file.handle(), block.data(), count, &got, nullptr);
            }
            EXPECT_EQ(result, 1u);
            EXPECT_EQ(got, count);
            EXPECT_TRUE(block == content.substr(3, count));
        }
    }
}

TEST_F(UrlReset, BetweenTwoRequestsIsNotNoticed) {
    const std::string content = letters(kMiB + 10);
    const ScriptedServer server([&](const Request& request) {
        if (request.method != "HEAD") return answerWithRange(request, content);
        // A whole answer that promises to keep the connection.
        return Answer{.ending = Answer::Ending::reset,
                      .raw = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(content.size()) + "\r\n\r\n"};
    });
    const OwnedFile file = openForReading(server.url("/x"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(readSome(file, 2 * kMiB) == content);
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(UrlReset, DuringTheBodyOfAPutFailsIt) {
    const std::string content = letters(8 * kMiB);
    for (const std::size_t behind : {std::size_t{0}, std::size_t{1}, content.size() / 2}) {
        SCOPED_TRACE(behind);
        ScriptedServer server([](const Request&) { return Answer{.status = 201, .reason = "Created"}; });
        server.resetBodiesBehind(behind);
        const OwnedFile file = openFile(server.url("/x"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
        std::uint32_t written = 0;
        errno = 0;
        EXPECT_EQ(kvOSWriteFile(file.handle(), content.data(), 8 * kMiB, &written, nullptr), 0u);
        EXPECT_NE(errno, 0);
        EXPECT_EQ(kvOSTell(file.handle()), 0);
        EXPECT_TRUE(server.requests().empty());
        server.resetBodiesBehind(2 * content.size());
        written = 0;
        EXPECT_EQ(kvOSWriteFile(file.handle(), content.data(), 8 * kMiB, &written, nullptr), 1u) << "the next one";
        EXPECT_TRUE(server.requests().back().body == content + '\0');
    }
}

TEST_F(UrlReset, AheadOfTheAnswerToAPutFailsItThoughAllOfItCame) {
    const Row rows[] = {
        {"ahead of the answer", [](Answer& answer) { answer.unanswered = true; }},
        {"in the headers", [](Answer& answer) { answer.raw = "HTTP/1.1 201 Crea"; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.phase);
        const ScriptedServer server(Faulty("", "PUT", row.fault));
        const OwnedFile file = openFile(server.url("/x"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
        std::uint32_t written = 0;
        errno = 0;
        EXPECT_EQ(kvOSWriteFile(file.handle(), "abc", 3, &written, nullptr), 0u);
        EXPECT_NE(errno, 0);
        EXPECT_EQ(kvOSTell(file.handle()), 0);
        ASSERT_EQ(server.requests().size(), 1u) << "and is not sent again by itself";
        EXPECT_EQ(server.requests()[0].body, std::string("abc\0", 4));
    }
}

TEST(UrlSlowReader, KeepsItsConnectionWhileOthersReadWhatTheyWant) {
    CapturedMessages messages;
    const std::string content = letters(3 * kMiB + 77);
    const ScriptedServer server([&](const Request& request) { return answerWithRange(request, content); });
    const OwnedFile slow = openForReading(server.url("/slow"));
    std::string all;
    while (all.size() < content.size()) {
        const std::string piece = readSome(slow, 65536);
        ASSERT_FALSE(piece.empty());
        all += piece;
        const OwnedFile other = openForReading(server.url("/other"));
        ASSERT_EQ(readSome(other, 10), content.substr(0, 10));
    }
    EXPECT_TRUE(all == content);
    int gets = 0;
    for (const Request& request : server.requests()) {
        if (request.target != "/slow") continue;
        EXPECT_EQ(request.connection, 1);
        if (request.method == "GET") ++gets;
    }
    EXPECT_EQ(gets, 4) << "one a MiB that it comes to, however long it stays there";
}

TEST(UrlSlowReader, IsNotHurriedByAServerThatHoldsItsAnswerBack) {
    CapturedMessages messages;
    const std::string content = letters(kMiB + 3);
    ScriptedServer server([&](const Request& request) {
        Answer answer = answerWithRange(request, content);
        if (request.method == "GET") answer.stallAfter = 1000;
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    std::thread reader([&] { EXPECT_TRUE(readSome(file, 2 * kMiB) == content); });
    EXPECT_TRUE(server.waitForRequests(2));
    server.release();
    reader.join();
}

}  // namespace
