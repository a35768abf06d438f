// What the FTP server promises.
#include "servers/ftp.h"

#include <gtest/gtest.h>

#include "servers/fetch.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

TEST(FtpServer, GivesAFileAndAPartOfIt) {
    const FtpServer server;
    makeFile(server.root() + "/clip", "0123456789");
    EXPECT_EQ(fetch(server.url("/clip")).body, "0123456789");
    EXPECT_EQ(fetch(server.url("/clip"), {.range = "2-4"}).body, "234");
    EXPECT_EQ(fetch(server.url("/none")).result, CURLE_REMOTE_FILE_NOT_FOUND);
}

TEST(FtpServer, TellsTheSizeOfAFile) {
    const FtpServer server;
    makeFile(server.root() + "/clip", "0123456789");
    EXPECT_NE(fetch(server.url("/clip"), {.headOnly = true}).headers.find("213 10"), std::string::npos);
}

TEST(FtpServer, StoresAndAppends) {
    const FtpServer server;
    const std::string content = "abc";
    EXPECT_EQ(fetch(server.url("/clip"), {.upload = &content}).result, CURLE_OK);
    EXPECT_EQ(contentOf(server.root() + "/clip"), "abc");
    EXPECT_EQ(fetch(server.url("/clip"), {.upload = &content, .append = true}).result, CURLE_OK);
    EXPECT_EQ(contentOf(server.root() + "/clip"), "abcabc");
    EXPECT_EQ(fetch(server.url("/clip"), {.upload = &content}).result, CURLE_OK);
    EXPECT_EQ(contentOf(server.root() + "/clip"), "abc");
}

TEST(FtpServer, RefusesWhoeverIsNotTheUser) {
    const FtpServer server;
    EXPECT_EQ(fetch(server.urlWithoutUser("/clip")).result, CURLE_LOGIN_DENIED);
}

}  // namespace
