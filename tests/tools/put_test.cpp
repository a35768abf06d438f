// kv put.
#include <string>

#include "servers/nginx.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(Put, WritesItsInputByteForByte) {
    const ScratchFolder folder;
    expectSilentSuccess(runKv({"put", folder / "clip"}, {.in = everyByte()}));
    EXPECT_EQ(contentOf(folder / "clip"), everyByte());
}

TEST(Put, WhatItWroteCatGivesBack) {
    const ScratchFolder folder;
    std::string content;
    while (content.size() < (std::size_t{5} << 19) + 7) content += everyByte() + std::to_string(content.size());
    EXPECT_EQ(runKv({"put", folder / "two words"}, {.in = content}).exit, 0);
    EXPECT_TRUE(runKv({"cat", folder / "two words"}).out == content);
}

TEST(Put, ReplacesALongerFile) {
    makeFile("clip", "something longer");
    EXPECT_EQ(runKv({"put", "clip"}, {.in = "short"}).exit, 0);
    EXPECT_EQ(contentOf("clip"), "short");
}

TEST(Put, EmptyInputMakesAnEmptyFile) {
    EXPECT_EQ(runKv({"put", "clip"}).exit, 0);
    EXPECT_TRUE(std::filesystem::exists("clip"));
    EXPECT_EQ(std::filesystem::file_size("clip"), 0u);
}

TEST(Put, AFullDiskIsToldWhereTheWriteMeetsIt) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const Outcome run = runKv({"put", "/dev/full"}, {.in = std::string(100000, 'x')});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write '/dev/full': No space left on device\n");
}

TEST(Put, AFullDiskIsToldWhereOnlyTheCloseMeetsIt) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const Outcome run = runKv({"put", "/dev/full"}, {.in = "x"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot finish '/dev/full': No space left on device\n");
}

TEST(Put, AFolderThatIsMissingIsTold) {
    const Outcome run = runKv({"put", "none/clip"}, {.in = "x"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot create 'none/clip': No such file or directory\n");
}

TEST(Put, AnInputThatCanNotBeReadIsTold) {
    const int folder = open(".", O_RDONLY | O_CLOEXEC);
    const Outcome run = runKv({"put", "clip"}, {.input = folder});
    close(folder);
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot read 'standard input': Is a directory\n");
}

TEST(Put, AFileInMemoryTakesTheBytesAndItIsSaidThatTheyAreGone) {
    const Outcome run = runKv({"put", "MEM://clip"}, {.in = std::string(2048, 'x')});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "kv: 'MEM://clip' took 2.0 KiB and is gone: a file in memory ends with the command\n");
}

TEST(PutOnServer, SendsExactlyTheBytes) {
    const Nginx server;
    for (const std::string& content : {std::string(), everyByte(), std::string((std::size_t{5} << 19) + 7, 'x')}) {
        const Outcome run = runKv({"put", server.url("/dav/clip")}, {.in = content});
        EXPECT_EQ(run.exit, 0);
        EXPECT_EQ(run.err, "");
        EXPECT_TRUE(contentOf(server.root() + "/clip") == content) << content.size();
    }
}

TEST(PutOnServer, WhatTheServerDoesNotTakeIsTold) {
    const Nginx server;
    const Outcome run = runKv({"put", server.url("/clip")}, {.in = "x"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.err, "");
    EXPECT_EQ(runKv({"put", "ftp://host.invalid/x"}, {.in = "x"}).err,
              "kv: cannot write 'ftp://host.invalid/x': only HTTP servers and disks can be written to\n");
}

}  // namespace
