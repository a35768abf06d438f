// The same files on real servers: nginx over HTTP and HTTPS, and an FTP server.
#include <curl/curl.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>

#include "errlog.h"
#include "file/owned_file.h"
#include "kvos/attributes.h"
#include "servers/ftp.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

constexpr std::uint32_t kMiB = 1048576;

std::string noise(std::size_t size) {
    std::mt19937 random(1121);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

/// All of a file in calls of one size.
std::string readInCallsOf(const OwnedFile& file, std::uint32_t size, std::size_t length) {
    std::string all;
    while (all.size() < length) {
        const std::string some = readSome(file, size);
        if (some.empty()) break;
        all += some;
    }
    return all;
}

/// The transfers' own talk is not what these tests look at.
class UrlOnNginx : public testing::Test {
protected:
    void SetUp() override { gdwOutputToStdDebug = 0; }

    Nginx nginx_;
};

class UrlOnFtp : public testing::Test {
protected:
    void SetUp() override { gdwOutputToStdDebug = 0; }

    FtpServer ftp_;
};

ScriptedServer::Handler leadingTo(const std::string& url) {
    return [url](const Request&) {
        Answer answer;
        answer.status = 302;
        answer.headers.emplace_back("Location", url);
        return answer;
    };
}

}  // namespace

TEST_F(UrlOnNginx, RequestsEqualTheSizeOverAMebibyteRoundedUpOnOneConnection) {
    const std::string content = noise(5 * kMiB + 123);
    nginx_.makeDocument("/clip.mov", content);
    {
        const OwnedFile file = openForReading(nginx_.url("/clip.mov"));
        EXPECT_TRUE(readInCallsOf(file, 4096, content.size()) == content);
    }
    std::size_t gets = 0;
    for (const ServedRequest& request : nginx_.requests()) gets += request.method == "GET" ? 1 : 0;
    EXPECT_EQ(gets, 6u);
    EXPECT_EQ(nginx_.connections(), 1u);
}

TEST_F(UrlOnNginx, HttpsWithACertificateThatNobodySigned) {
    const std::string content = noise(kMiB + 7);
    nginx_.makeDocument("/clip.mov", content);
    const OwnedFile file = openForReading(nginx_.secureUrl("/clip.mov"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(readInCallsOf(file, 65536, content.size()) == content);
}

TEST_F(UrlOnNginx, HttpMayLeadToHttps) {
    nginx_.makeDocument("/clip.mov", "abc");
    const ScriptedServer leading(leadingTo(nginx_.secureUrl("/clip.mov")));
    EXPECT_EQ(readAll(openForReading(leading.url("/a"))), "abc");
}

TEST_F(UrlOnFtp, HttpMayLeadThere) {
    makeFile(ftp_.root() + "/clip.mov", "abc");
    const ScriptedServer leading(leadingTo(ftp_.url("/clip.mov")));
    EXPECT_EQ(readAll(openForReading(leading.url("/a"))), "abc");
}

TEST_F(UrlOnNginx, NoMethodVerifiesTheCertificate) {
    const OwnedFile file = openFile(nginx_.secureUrl("/dav/up.txt"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    for (const char* method : {"POST", "PATCH", static_cast<const char*>(nullptr)}) {
        char data[4096] = "hello";
        std::uint32_t room = sizeof data;
        auto* const how = reinterpret_cast<kvOSOverlapped*>(const_cast<char*>(method));
        EXPECT_EQ(kvOSWriteFile(file.handle(), data, 5, &room, how), 1u) << (method == nullptr ? "PUT" : method);
    }
    EXPECT_EQ(nginx_.requests().size(), 3u);
}

TEST_F(UrlOnNginx, ConnectionIsNotHandedToProgramsThatAreStarted) {
    nginx_.makeDocument("/clip.mov", "bytes");
    const OwnedFile file = openForReading(nginx_.url("/clip.mov"));
    ASSERT_EQ(readAll(file), "bytes");
    curl_socket_t socket = CURL_SOCKET_BAD;
    ASSERT_EQ(curl_easy_getinfo(file.record().pFile, CURLINFO_ACTIVESOCKET, &socket), CURLE_OK);
    EXPECT_EQ(fcntl(socket, F_GETFD), FD_CLOEXEC);
}

TEST_F(UrlOnNginx, PutLandsAndIsReadBack) {
    {
        const OwnedFile file = openFile(nginx_.url("/dav/up.txt"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
        std::uint32_t word = 0;
        ASSERT_EQ(kvOSWriteFile(file.handle(), "hello", 5, &word, nullptr), 1u);
    }
    const OwnedFile file = openForReading(nginx_.url("/dav/up.txt"));
    EXPECT_EQ(readAll(file), std::string("hello\0", 6));
}

TEST_F(UrlOnNginx, CompressedDocumentsComeAsTheyAre) {
    const std::string content(200000, 'a');
    nginx_.makeDocument("/text.txt", content);
    const OwnedFile file = openForReading(nginx_.url("/gzip/text.txt"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(readInCallsOf(file, 4096, content.size()) == content);
}

TEST_F(UrlOnNginx, ProtectedDocumentWithoutATokenIsRefused) {
    nginx_.makeDocument("/a.mov", "secret");
    EXPECT_FALSE(openForReading(nginx_.url("/protected/a.mov")).isOpen());
}

TEST_F(UrlOnNginx, ServerKilledDuringAReadAndStartedAgain) {
    const std::string content = noise(4 * kMiB);
    nginx_.makeDocument("/clip.mov", content);
    const OwnedFile file = openForReading(nginx_.url("/clip.mov"));
    EXPECT_TRUE(readSome(file, 1000) == content.substr(0, 1000));
    nginx_.stop();
    kvOSSeek(file.handle(), 2 * kMiB);
    std::string buffer(1000, '?');
    std::uint32_t got = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), buffer.data(), 1000, &got, nullptr), 0u);
    nginx_.start();
    EXPECT_TRUE(readSome(file, 1000) == content.substr(2 * kMiB, 1000));
}

TEST_F(UrlOnNginx, EmptyDocument) {
    nginx_.makeDocument("/empty", "");
    EXPECT_EQ(kvOSFileExists(nginx_.url("/empty").c_str()), 1u);
    const OwnedFile file = openForReading(nginx_.url("/empty"));
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
    EXPECT_EQ(readSome(file, 100), "");
}

TEST_F(UrlOnFtp, ReadsByRanges) {
    const std::string content = noise(3 * kMiB + 17);
    makeFile(ftp_.root() + "/clip.mov", content);
    const OwnedFile file = openForReading(ftp_.url("/clip.mov"));
    ASSERT_TRUE(file.isOpen());
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file.handle(), &size);
    EXPECT_EQ(size, content.size());
    EXPECT_TRUE(readInCallsOf(file, 65536, content.size()) == content);
    kvOSSeek(file.handle(), kMiB + 5);
    EXPECT_TRUE(readSome(file, kMiB) == content.substr(kMiB + 5, kMiB));
}

TEST_F(UrlOnFtp, MissingFileAndRefusedUser) {
    EXPECT_FALSE(openForReading(ftp_.url("/none")).isOpen());
    makeFile(ftp_.root() + "/clip.mov", "abc");
    EXPECT_FALSE(openForReading(ftp_.urlWithoutUser("/clip.mov")).isOpen());
}

TEST_F(UrlOnFtp, WritesAreAppended) {
    {
        const OwnedFile file = openFile(ftp_.url("/up.txt"), KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
        std::uint32_t word = 0;
        ASSERT_EQ(kvOSWriteFile(file.handle(), "one", 3, &word, nullptr), 1u);
        word = 0;
        ASSERT_EQ(kvOSWriteFile(file.handle(), "two", 3, &word, nullptr), 1u);
    }
    EXPECT_EQ(contentOf(ftp_.root() + "/up.txt"), std::string("one\0two\0", 8));
}
