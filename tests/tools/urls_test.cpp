// cat, stat and ls on URLs.
#include <string>

#include "servers/ftp.h"
#include "servers/nginx.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

std::string manyBytes(std::size_t size) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; i += 97) bytes[i] = static_cast<char>(i / 97);
    return bytes;
}

void expectOutput(const Outcome& run, const std::string& out) {
    EXPECT_EQ(run.exit, 0);
    EXPECT_TRUE(run.out == out) << run.out.size();
    EXPECT_EQ(run.err, "");
}

TEST(UrlCommands, CatGivesExactlyTheBytesWhetherOrNotTheLengthIsTold) {
    const Nginx server;
    for (const std::size_t size : {1u, 1000u, 1u << 20, 4u << 20, (4u << 20) + 1, 17u << 20}) {
        SCOPED_TRACE(size);
        server.makeDocument("/clip", manyBytes(size));
        expectOutput(runKv({"cat", server.url("/clip")}), manyBytes(size));
        expectOutput(runKv({"cat", server.url("/chunked/clip")}), manyBytes(size));
        expectOutput(runKv({"cat", server.url("/gzip/clip")}), manyBytes(size));
        expectOutput(runKv({"cat", server.url("/redirect/302/clip")}), manyBytes(size));
    }
}

TEST(UrlCommands, CatOfAnEmptyFileEnds) {
    const Nginx server;
    server.makeDocument("/empty", "");
    expectOutput(runKv({"cat", server.url("/empty")}), "");
    expectOutput(runKv({"cat", server.url("/chunked/empty")}), "");
    const FtpServer ftp;
    makeFile(ftp.root() + "/empty");
    expectOutput(runKv({"cat", ftp.url("/empty")}), "");
}

TEST(UrlCommands, CatOverFtp) {
    const FtpServer server;
    makeFile(server.root() + "/clip", manyBytes(5 << 20));
    expectOutput(runKv({"cat", server.url("/clip")}), manyBytes(5 << 20));
}

TEST(UrlCommands, WhatIsMissingOrProtectedIsToldInOneLine) {
    const Nginx server;
    server.makeDocument("/clip", "x");
    EXPECT_EQ(runKv({"cat", server.url("/none")}).err,
              "kv: cannot open '" + server.url("/none") + "': No such file or directory\n");
    EXPECT_EQ(runKv({"cat", server.url("/protected/clip")}).err,
              "kv: cannot open '" + server.url("/protected/clip") + "': Permission denied\n");
    EXPECT_EQ(runKv({"stat", server.url("/none")}).exit, 1);
    EXPECT_EQ(runKv({"ls", server.url("/")}).err, "kv: cannot list '" + server.url("/") + "': a URL has no listing\n");
}

TEST(UrlCommands, TheTransferIsTalkedAboutOnlyWhenAskedFor) {
    const Nginx server;
    server.makeDocument("/clip", "x");
    EXPECT_EQ(runKv({"cat", server.url("/clip")}).err, "");
    const Outcome run = runKv({"-v", "cat", server.url("/clip")});
    EXPECT_EQ(run.out, "x");
    EXPECT_NE(run.err.find("HTTP/1.1"), std::string::npos);
}

TEST(UrlCommands, StatTellsTypeAndSize) {
    const Nginx server;
    server.makeDocument("/clip", std::string(1234, 'x'));
    Outcome run = runKv({"stat", "--json", server.url("/clip")});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.json()[0]["type"], "file");
    EXPECT_EQ(run.json()[0]["size"], 1234);
    EXPECT_TRUE(run.json()[0]["modified"].is_null());
    run = runKv({"stat", "--json", server.url("/chunked/clip")});
    EXPECT_TRUE(run.json()[0]["size"].is_null());
}

TEST(UrlCommands, HeadersAreNotTakenForTheFileWhereAServerRefusesToTellOfIt) {
    const Nginx server;
    server.makeDocument("/clip", manyBytes(1000));
    expectFailure(runKv({"cat", server.url("/nohead/clip")}),
                  "kv: cannot read '" + server.url("/nohead/clip") +
                      "': the server refuses to tell of files without sending them\n");
}

}  // namespace
