// Copies from and to servers. What is odd about them is meant: the read at the end of a URL fails, and a write to one
// counts the byte behind the data as well.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>

#include "kvos/copy.h"
#include "kvos/file.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::size_t kMiB = 1 << 20;

std::string bytes(std::size_t count) {
    std::string text(count, 'x');
    for (std::size_t i = 0; i < count; i += 101) text[i] = static_cast<char>(i / 101);
    return text;
}

/// Verbose transfers talk to standard error.
class CopyOverHttp : public testing::Test {
protected:
    std::uint32_t extract(const std::string& from, std::uint64_t offset, std::uint64_t count) {
        return kvOSExtractFileFast(from.c_str(), to_.c_str(), 0, offset, count, 0, &done_, &elapsed_, &permille_);
    }
    std::uint32_t copyFast(const std::string& from, std::uint64_t count) {
        done_ = count;
        return kvOSCopyFileFast(from.c_str(), to_.c_str(), KVCOPY_COUNT_GIVEN, &done_, &elapsed_, &permille_);
    }

    ScratchFolder scratch_;
    std::string to_ = scratch_ / "to";
    std::uint64_t done_ = 77;
    std::uint32_t elapsed_ = 77;
    std::uint32_t permille_ = 77;
    CapturedMessages messages_;
};

// ---- from a server -----------------------------------------------------------------------------------------------

TEST_F(CopyOverHttp, AUrlIsCopiedWithOneAlsoWhereItsSizeIsAMultipleOfAMebibyte) {
    const Nginx server;
    for (const std::size_t size : {std::size_t{3}, kMiB - 1, kMiB, kMiB + 1, 2 * kMiB}) {
        SCOPED_TRACE(size);
        server.makeDocument("/clip", bytes(size));
        EXPECT_EQ(kvOSCopyFile(server.url("/clip").c_str(), to_.c_str(), 0), 1u);
        EXPECT_TRUE(contentOf(to_) == bytes(size));
    }
}

TEST_F(CopyOverHttp, AUrlThatIsMovedIsCopiedAndStays) {
    const Nginx server;
    server.makeDocument("/clip", bytes(kMiB));
    EXPECT_EQ(kvOSMoveFile(server.url("/clip").c_str(), to_.c_str()), 1u);
    EXPECT_TRUE(contentOf(to_) == bytes(kMiB));
    EXPECT_TRUE(contentOf(server.root() + "/clip") == bytes(kMiB));
}

TEST_F(CopyOverHttp, AUrlIsComparedLikeAnyFile) {
    const Nginx server;
    for (const std::size_t size : {std::size_t{3}, 2 * kMiB, 2 * kMiB + 3}) {
        SCOPED_TRACE(size);
        server.makeDocument("/clip", bytes(size));
        const std::string url = server.url("/clip");
        makeFile(to_, bytes(size));
        EXPECT_EQ(kvOSVerifyFile(url.c_str(), to_.c_str()), KVVERIFY_SAME);
        EXPECT_EQ(kvOSVerifyFile(to_.c_str(), url.c_str()), KVVERIFY_SAME);
        makeFile(to_, bytes(size - 1) + "?");
        EXPECT_EQ(kvOSVerifyFile(url.c_str(), to_.c_str()), KVVERIFY_CONTENTS_DIFFER);
        makeFile(to_, bytes(size + 1));
        EXPECT_EQ(kvOSVerifyFile(url.c_str(), to_.c_str()), KVVERIFY_SIZES_DIFFER);
    }
    EXPECT_EQ(kvOSVerifyFile(server.url("/none").c_str(), to_.c_str()), KVVERIFY_NOT_OPENED);
    EXPECT_EQ(kvOSVerifyFile(to_.c_str(), server.url("/none").c_str()), KVVERIFY_SECOND_EMPTY);
}

/// Tells of a file, and fails to send what begins at `from` or behind.
ScriptedServer::Handler serveUpTo(const std::string& content, std::size_t from) {
    return [content, from](const Request& request) {
        const std::string range = request.header("Range");
        const bool fails = request.method == "GET" && range.size() > 6 && std::stoull(range.substr(6)) >= from;
        return fails ? Answer{.status = 500, .reason = "Fault"} : answerWithRange(request, content);
    };
}

TEST_F(CopyOverHttp, AComparisonEndsAsTheSameWithAFaultOfTheFirstFileAndAsDifferentSizesWithOneOfTheSecond) {
    const std::string content = bytes(3 * kMiB);
    makeFile(to_, std::string(content.size(), '?'));
    const ScriptedServer atOnce(serveUpTo(content, 0));
    EXPECT_EQ(kvOSVerifyFile(atOnce.url("/x").c_str(), to_.c_str()), KVVERIFY_SAME);
    EXPECT_EQ(kvOSVerifyFile(to_.c_str(), atOnce.url("/x").c_str()), 0x80001001u);
    makeFile(to_, content.substr(0, 2 * kMiB) + std::string(kMiB, '?'));
    const ScriptedServer later(serveUpTo(content, 2 * kMiB));
    EXPECT_EQ(kvOSVerifyFile(later.url("/x").c_str(), to_.c_str()), KVVERIFY_SAME);
    EXPECT_EQ(kvOSVerifyFile(to_.c_str(), later.url("/x").c_str()), 0x80001001u);
}

TEST_F(CopyOverHttp, AFastCopyOfTheWholeSizeReadsNothingBehindIt) {
    const Nginx server;
    for (const std::size_t size : {std::size_t{3}, kMiB, kMiB + 1, 3 * kMiB}) {
        SCOPED_TRACE(size);
        server.makeDocument("/clip", bytes(size));
        EXPECT_EQ(copyFast(server.url("/clip"), size), 0u) << "a read behind the end would fail";
        EXPECT_TRUE(contentOf(to_) == bytes(size));
        EXPECT_EQ(done_, size);
    }
}

TEST_F(CopyOverHttp, AFastCopyOfMoreThanTheSizeFailsWhereTheSizeIsAMultipleOfTheBlock) {
    const Nginx server;
    server.makeDocument("/clip", bytes(2 * kMiB));
    EXPECT_EQ(copyFast(server.url("/clip"), 2 * kMiB + 1), kFailed);
    server.makeDocument("/clip", bytes(2 * kMiB + 1));
    EXPECT_EQ(copyFast(server.url("/clip"), 9 * kMiB), 0u) << "the short block is the end";
    EXPECT_TRUE(contentOf(to_) == bytes(2 * kMiB + 1));
}

TEST_F(CopyOverHttp, ARangeOfAUrlIsExtracted) {
    const Nginx server;
    server.makeDocument("/clip", bytes(3 * kMiB));
    EXPECT_EQ(extract(server.url("/clip"), 1000, 2 * kMiB + 5), 1u);
    EXPECT_TRUE(contentOf(to_) == bytes(3 * kMiB).substr(1000, 2 * kMiB + 5));
    EXPECT_EQ(extract(server.url("/clip"), 3 * kMiB - 7, 7), 1u);
    EXPECT_TRUE(contentOf(to_) == bytes(3 * kMiB).substr(3 * kMiB - 7));
    EXPECT_EQ(messages_.count("FAILED"), 0u);
}

TEST_F(CopyOverHttp, ARangeThatGoesBeyondAUrlIsAReadThatFails) {
    const Nginx server;
    server.makeDocument("/clip", bytes(100));
    EXPECT_EQ(extract(server.url("/clip"), 90, 20), 1u);
    EXPECT_EQ(contentOf(to_), bytes(100).substr(90));
    EXPECT_EQ(done_, 10u);
    EXPECT_EQ(permille_, 500u);
    EXPECT_EQ(messages_.count("kvOSExtractFileFast Read FAILED "), 1u);
    EXPECT_EQ(messages_.count("ERROR:kvOSExtractFileFast("), 0u);
}

TEST_F(CopyOverHttp, AnExtractTellsHowFarItIsAfterEachBlock) {
    const ScriptedServer server(serveUpTo(bytes(4 * kMiB), 2 * kMiB));
    EXPECT_EQ(extract(server.url("/x"), 0, 4 * kMiB), 1u);
    EXPECT_EQ(done_, 2 * kMiB) << "what the two blocks ahead of the fault left";
    EXPECT_EQ(permille_, 500u);
    EXPECT_EQ(messages_.count("kvOSExtractFileFast Read FAILED 5 0x5 "), 1u);
}

/// Bytes that still stand in a buffer when it is closed find no room.
class NoRoomFor {
public:
    explicit NoRoomFor(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
        rlimit small = before_;
        small.rlim_cur = bytes - 1;
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~NoRoomFor() { setrlimit(RLIMIT_FSIZE, &before_); }
    NoRoomFor(const NoRoomFor&) = delete;
    NoRoomFor& operator=(const NoRoomFor&) = delete;

private:
    rlimit before_{};
};

TEST_F(CopyOverHttp, ACloseThatFailsCountsOnlyBehindTheLastBlock) {
    const std::string content = bytes(50);
    const ScriptedServer server([&](const Request& request) {
        if (request.method != "HEAD") return answerWithRange(request, content);
        return Answer{.body = std::string(2 * kMiB, 'x')};  // tells of more than it has
    });
    {
        const NoRoomFor bytes(50);
        EXPECT_EQ(extract(server.url("/x"), 0, 2 * kMiB), 1u) << "the second read failed";
        EXPECT_EQ(extract(server.url("/x"), 0, 50), 0u) << "all of it was read";
        EXPECT_EQ(errno, EFBIG);
    }
    EXPECT_EQ(done_, 50u);
}

// ---- to a server -------------------------------------------------------------------------------------------------

TEST_F(CopyOverHttp, ACopyToAUrlGivesZeroThoughItsFirstBlockArrives) {
    const Nginx server;
    const std::string from = scratch_ / "from";
    for (const std::size_t size : {std::size_t{3}, kMiB + 5}) {
        SCOPED_TRACE(size);
        makeFile(from, bytes(size));
        std::filesystem::remove(server.root() + "/clip");
        EXPECT_EQ(kvOSCopyFile(from.c_str(), server.url("/dav/clip").c_str(), 0), 0u);
        EXPECT_TRUE(contentOf(server.root() + "/clip") == bytes(std::min(size, kMiB)) + '\0');
    }
    std::filesystem::remove(server.root() + "/clip");
    EXPECT_EQ(kvOSMoveFile(from.c_str(), server.url("/dav/clip").c_str()), 0u);
    EXPECT_FALSE(std::filesystem::exists(from)) << "deleted all the same";
}

TEST_F(CopyOverHttp, AFastCopyToAUrlFailsThoughItsFirstBlockArrives) {
    const Nginx server;
    const std::string from = scratch_ / "from";
    makeFile(from, bytes(100));
    to_ = server.url("/dav/clip");
    EXPECT_EQ(copyFast(from, 100), kFailed);
    EXPECT_EQ(contentOf(server.root() + "/clip"), bytes(100) + '\0');
}

TEST_F(CopyOverHttp, AnExtractToAUrlGivesOneAndTellsOfACountThatIsAnother) {
    const Nginx server;
    const std::string from = scratch_ / "from";
    makeFile(from, bytes(100));
    to_ = server.url("/dav/clip");
    EXPECT_EQ(extract(from, 10, 50), 1u);
    EXPECT_EQ(contentOf(server.root() + "/clip"), bytes(100).substr(10, 50) + '\0');
    EXPECT_EQ(messages_.count("kvOSExtractFileFast Write FAILED"), 1u);
    EXPECT_EQ(messages_.count("kvOSExtractFileFast Write FAILED "), 0u) << "without numbers: no call failed";
    EXPECT_EQ(done_, 77u);
}

TEST_F(CopyOverHttp, ADestinationThatAServerHasIsKeptWhenAsked) {
    const Nginx server;
    const std::string from = scratch_ / "from";
    makeFile(from, "new");
    server.makeDocument("/clip", "old");
    const std::string url = server.url("/dav/clip");
    errno = 0;
    EXPECT_EQ(kvOSCopyFile(from.c_str(), url.c_str(), 1), 0u);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(server.root() + "/clip"), "old");
}

}  // namespace
