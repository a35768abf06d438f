// Byte ranges, the cache of small reads, and servers that answer other than they were asked.
#include <cerrno>
#include <gtest/gtest.h>
#include <random>

#include "errlog.h"
#include "file/owned_file.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"

using namespace kvtest;

namespace {

constexpr std::uint32_t kMiB = 1048576;
constexpr std::string_view kTooSmall = "Error - curl write callback read buffer too small\n";

std::string noise(std::size_t size) {
    std::mt19937 random(20261121);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

ScriptedServer::Handler serve(const std::string& content) {
    return [&content](const Request& request) { return answerWithRange(request, content); };
}

std::vector<std::string> ranges(const ScriptedServer& server) {
    std::vector<std::string> all;
    for (const Request& request : server.requests()) {
        if (request.method == "GET") all.push_back(request.header("Range"));
    }
    return all;
}

struct Read {
    std::uint32_t result;
    std::uint32_t count;
};

Read read(const OwnedFile& file, std::string& buffer, std::uint32_t count) {
    Read done{0, 0xEEEEEEEE};
    done.result = kvOSReadFile(file.handle(), buffer.data(), count, &done.count, nullptr);
    return done;
}

/// Verbose transfers talk to standard error; tests that look at messages of their own keep them apart.
class UrlRead : public testing::Test {
protected:
    CapturedMessages messages_;
};

}  // namespace

TEST_F(UrlRead, OneByteCostsARequestForAMebibyteAndTheRestOfItCostsNone) {
    const std::string content = noise(2 * kMiB);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    std::string got;
    for (std::uint32_t i = 0; i < kMiB; ++i) {
        char byte = 0;
        std::uint32_t count = 0;
        ASSERT_EQ(kvOSReadFile(file.handle(), &byte, 1, &count, nullptr), 1u);
        ASSERT_EQ(count, 1u);
        got += byte;
    }
    EXPECT_EQ(ranges(server), std::vector<std::string>{"bytes=0-1048575"});
    EXPECT_TRUE(got == content.substr(0, kMiB));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(UrlRead, SmallReadsAskOncePerMebibyte) {
    const std::string content = noise(3 * kMiB + 1000);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    std::string got;
    for (std::string block; (block = readSome(file, 4096)).size() > 0 && got.size() < content.size();) got += block;
    EXPECT_TRUE(got == content);
    EXPECT_EQ(ranges(server).size(), 5u);  // the last one is behind the end, and fails
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(UrlRead, JustUnderAMebibyteGoesThroughTheCacheAndAMebibyteDoesNot) {
    const std::string content = noise(4 * kMiB);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    EXPECT_TRUE(readSome(file, kMiB - 1) == content.substr(0, kMiB - 1));
    EXPECT_EQ(file.record().dwCacheLen, kMiB);
    EXPECT_TRUE(readSome(file, kMiB) == content.substr(kMiB - 1, kMiB));
    EXPECT_EQ(file.record().qwCacheStart, 0u);
    EXPECT_EQ(ranges(server), (std::vector<std::string>{"bytes=0-1048575", "bytes=1048575-2097150"}));
}

TEST_F(UrlRead, LargeReadAtTheEndAsksForWhatIsLeft) {
    const std::string content = noise(kMiB + 100);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(2 * kMiB, '?');
    const Read all = read(file, buffer, 2 * kMiB);
    EXPECT_EQ(all.result, 1u);
    EXPECT_EQ(all.count, kMiB + 100);
    EXPECT_TRUE(buffer.substr(0, content.size()) == content);
    EXPECT_EQ(ranges(server), std::vector<std::string>{"bytes=0-1048675"});
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
}

TEST_F(UrlRead, AtTheEndFails) {
    const std::string content = noise(100);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    kvOSSeekEnd(file.handle());
    std::string buffer(kMiB, '?');
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(read(file, buffer, kMiB).result, 0u);
    EXPECT_EQ(kvOSTell(file.handle()), 100);
}

TEST_F(UrlRead, BehindTheEndFailsAndTouchesNothing) {
    const std::string content = noise(100);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    kvOSSetFilePointer(file.handle(), 1000, nullptr, 0);
    std::string buffer(64, '?');
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(buffer, std::string(64, '?'));
}

TEST_F(UrlRead, AfterARefusedSeekFails) {
    const std::string content = noise(100);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    ASSERT_EQ(readSome(file, 50).size(), 50u);
    ASSERT_EQ(kvOSSeek(file.handle(), 101), -1);
    std::string buffer(64, '?');
    errno = 0;
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(errno, EINVAL);
    ASSERT_EQ(kvOSSeek(file.handle(), 90), 90);
    EXPECT_EQ(readSome(file, 10), content.substr(90));
}

TEST_F(UrlRead, SeekCostsNothingAndTheNextReadAsksThere) {
    const std::string content = noise(3 * kMiB);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    kvOSSeek(file.handle(), 2 * kMiB + 5);
    EXPECT_TRUE(ranges(server).empty());
    EXPECT_EQ(readSome(file, 100), content.substr(2 * kMiB + 5, 100));
    kvOSSeek(file.handle(), 2 * kMiB + 50);
    EXPECT_EQ(readSome(file, 10), content.substr(2 * kMiB + 50, 10));
    kvOSSeek(file.handle(), 10);
    EXPECT_EQ(readSome(file, 10), content.substr(10, 10));
    EXPECT_EQ(ranges(server), (std::vector<std::string>{"bytes=2097157-3145732", "bytes=10-1048585"}));
}

TEST_F(UrlRead, RandomPositionsGiveTheFilesBytes) {
    const std::string content = noise(3 * kMiB + 77);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    constexpr unsigned kSeed = 4711;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    for (int i = 0; i < 200; ++i) {
        const auto at = static_cast<std::uint32_t>(random() % content.size());
        const auto count = static_cast<std::uint32_t>(random() % (i % 4 == 0 ? 2 * kMiB : 5000) + 1);
        ASSERT_EQ(kvOSSeek(file.handle(), at), static_cast<std::int64_t>(at));
        ASSERT_TRUE(readSome(file, count) == content.substr(at, count)) << at << " " << count;
    }
}

TEST_F(UrlRead, OfNoBytesIsDoneWithoutARequest) {
    const std::string content = noise(100);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(1, '?');
    const Read none = read(file, buffer, 0);
    EXPECT_EQ(none.result, 1u);
    EXPECT_EQ(none.count, 0u);
    EXPECT_TRUE(ranges(server).empty());
}

TEST_F(UrlRead, EmptyFileGivesNoBytes) {
    ScriptedServer server([](const Request&) { return Answer{}; });
    const OwnedFile file = openForReading(server.url("/empty"));
    std::string buffer(10, '?');
    const Read none = read(file, buffer, 10);
    EXPECT_EQ(none.result, 1u);
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
}

TEST_F(UrlRead, OfUnknownLengthCountsAsWantedWhenLessComes) {
    ScriptedServer server([](const Request&) {
        Answer answer;
        answer.body = "abc";
        answer.framing = Answer::Framing::chunked;
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/live"));
    std::string buffer(10, '?');
    const Read some = read(file, buffer, 10);
    EXPECT_EQ(some.result, 1u);
    EXPECT_EQ(some.count, 10u);
    EXPECT_EQ(buffer, std::string("abc\0\0\0\0\0\0\0", 10));
    EXPECT_EQ(kvOSfeof(file.handle()), 0u);
}

TEST_F(UrlRead, LargeOneOfUnknownLengthCountsWhatCame) {
    ScriptedServer server([](const Request&) {
        Answer answer;
        answer.body = "abc";
        answer.framing = Answer::Framing::untilClose;
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/live"));
    std::string buffer(kMiB, '?');
    const Read some = read(file, buffer, kMiB);
    EXPECT_EQ(some.result, 1u);
    EXPECT_EQ(some.count, 3u);
}

TEST_F(UrlRead, ServerThatIgnoresTheRangeOfALargerFileFails) {
    const std::string content = noise(kMiB + 1);
    ScriptedServer server([&content](const Request&) {
        Answer answer;
        answer.body = content;
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(10, '?');
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(messages_.count(kTooSmall), 1u);
}

TEST_F(UrlRead, ServerThatIgnoresTheRangeDoesNotPassItsFirstBytesForOthers) {
    ScriptedServer server([](const Request&) {
        Answer answer;
        answer.body = "0123456789";
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    kvOSSeek(file.handle(), 5);
    std::string buffer(5, '?');
    EXPECT_EQ(read(file, buffer, 5).result, 0u);
    kvOSSeek(file.handle(), 0);
    EXPECT_EQ(readSome(file, 10), "0123456789");
}

TEST_F(UrlRead, MoreThanWasAskedForFails) {
    const std::string content = noise(4 * kMiB);
    ScriptedServer server([&content](const Request& request) {
        Answer answer = answerWithRange(request, content);
        if (request.method == "GET") answer.body += "and more";
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(kMiB + 10, '?');
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(read(file, buffer, kMiB).result, 0u);
    EXPECT_EQ(messages_.count(kTooSmall), 2u);
    EXPECT_EQ(buffer.substr(kMiB), std::string(10, '?'));
}

TEST_F(UrlRead, BodyCutMidwayFailsAndTheNextReadStartsAfresh) {
    const std::string content = noise(2 * kMiB);
    for (const auto ending : {Answer::Ending::close, Answer::Ending::reset}) {
        int failures = 1;
        ScriptedServer server([&](const Request& request) {
            Answer answer = answerWithRange(request, content);
            if (request.method == "GET" && failures-- > 0) {
                answer.cutAfter = 1000;
                answer.ending = ending;
            }
            return answer;
        });
        const OwnedFile file = openForReading(server.url("/x"));
        std::string buffer(100, '?');
        errno = 0;
        EXPECT_EQ(read(file, buffer, 100).result, 0u);
        EXPECT_NE(errno, 0);
        EXPECT_EQ(kvOSTell(file.handle()), 0);
        EXPECT_EQ(readSome(file, 100), content.substr(0, 100));
    }
}

TEST_F(UrlRead, ConnectionThatEndsWithoutAnAnswerFails) {
    const std::string content = noise(1000);
    ScriptedServer server([&](const Request& request) {
        Answer answer = answerWithRange(request, content);
        answer.unanswered = request.method == "GET";
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(100, '?');
    EXPECT_EQ(read(file, buffer, 100).result, 0u);
}

TEST_F(UrlRead, AnswerThatIsNoHttpFails) {
    const std::string content = noise(1000);
    ScriptedServer server([&](const Request& request) {
        Answer answer = answerWithRange(request, content);
        if (request.method == "GET") answer.raw = "this is not it\r\n\r\n";
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    std::string buffer(100, '?');
    EXPECT_EQ(read(file, buffer, 100).result, 0u);
}

TEST_F(UrlRead, SlowServerIsWaitedFor) {
    const std::string content = noise(1000);
    ScriptedServer server([&](const Request& request) {
        Answer answer = answerWithRange(request, content);
        if (request.method == "GET") answer.delay = std::chrono::milliseconds(300);
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x"));
    EXPECT_EQ(readSome(file, 1000), content);
}

TEST_F(UrlRead, TalksOnStandardErrorUnlessThatIsOff) {
    const std::string content = noise(1000);
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/x"));
    EXPECT_EQ(messages_.text(), "");
    ASSERT_EQ(readSome(file, 10).size(), 10u);
    EXPECT_EQ(messages_.count("> GET /x HTTP/1.1\r\n"), 1u);
    const std::size_t before = messages_.text().size();
    gdwOutputToStdDebug = 0;
    const OwnedFile other = openForReading(server.url("/x"));
    ASSERT_EQ(readSome(other, 10).size(), 10u);
    EXPECT_EQ(messages_.text().size(), before);
}

TEST_F(UrlRead, TalkShowsNoSignatureOfAPresignedUrl) {
    ScriptedServer server([&server](const Request& request) {
        Answer answer = answerWithRange(request, "abc");
        if (request.method == "HEAD" || request.target.starts_with("/there")) return answer;
        answer.status = 302;
        answer.headers.emplace_back("Location", server.url("/there?X-Amz-Signature=0feed1"));
        return answer;
    });
    const OwnedFile file = openForReading(server.url("/x?X-Amz-Signature=0feed0&X-Amz-Date=1"));
    EXPECT_EQ(readSome(file, 3), "abc");
    EXPECT_EQ(messages_.count("> GET /x?X-Amz-Signature=***&X-Amz-Date=1 HTTP/1.1\r\n"), 1u);
    EXPECT_EQ(messages_.count("< Location: " + server.url("/there?X-Amz-Signature=***\r\n")), 1u);
    EXPECT_EQ(messages_.count("0feed"), 0u);
}

TEST_F(UrlRead, WhatIsOpenForWritingIsNotRead) {
    ScriptedServer server(serve("abc"));
    const OwnedFile file = openFile(server.url("/x"), KVFILE_READ | KVFILE_WRITE, KVFILE_OPEN_ALWAYS);
    std::string buffer(10, '?');
    errno = 0;
    EXPECT_EQ(read(file, buffer, 10).result, 0u);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(UrlRead, LinesComeThroughTheCacheUntilTheLastBytesOfIt) {
    const std::string content = "first\r\nsecond\n" + std::string(20, 'x') + "\nlast";
    ScriptedServer server(serve(content));
    const OwnedFile file = openForReading(server.url("/list.txt"));
    char line[12];
    ASSERT_NE(kvOSfgets(line, sizeof line, file.handle()), nullptr);
    EXPECT_STREQ(line, "first");
    ASSERT_NE(kvOSfgets(line, sizeof line, file.handle()), nullptr);
    EXPECT_STREQ(line, "second");
    EXPECT_EQ(ranges(server).size(), 1u);
    // A line is sought in as many bytes as the buffer takes; those are no longer all held.
    kvOSSeek(file.handle(), 35);
    ASSERT_NE(kvOSfgets(line, sizeof line, file.handle()), nullptr);
    EXPECT_STREQ(line, "last");
    EXPECT_EQ(ranges(server).size(), 2u);
}
