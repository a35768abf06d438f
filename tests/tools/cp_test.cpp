// kv cp.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "servers/ftp.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "support/scratch.h"
#include "tools/run_kv.h"
#include "tools/running_kv.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

constexpr std::size_t kMebi = 1 << 20;

std::string manyBytes(std::size_t size) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; i += 97) bytes[i] = static_cast<char>(i / 97);
    return bytes;
}

/// All names in the working folder, so that nothing else is left there.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class Cp : public testing::Test {
protected:
    std::string in(std::string_view name) const { return scratch_ / name; }
    Outcome cp(const std::string& from, const std::string& to) const { return runKv({"cp", from, to}); }

    ScratchFolder scratch_;
};

TEST_F(Cp, CopiesEveryByteOfEverySize) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kMebi, 4 * kMebi, 4 * kMebi + 1, 9 * kMebi}) {
        makeFile(in("from"), manyBytes(size));
        expectSilentSuccess(cp(in("from"), in("to")));
        EXPECT_TRUE(contentOf(in("to")) == manyBytes(size)) << size;
    }
    EXPECT_EQ(namesIn(scratch_.path()), (std::vector<std::string>{"from", "to"}));
}

TEST_F(Cp, ReplacesAFileAndKeepsItsPermissions) {
    makeFile(in("from"), "new");
    makeFile(in("to"), "old and longer");
    chmod(in("to").c_str(), 0640);
    expectSilentSuccess(cp(in("from"), in("to")));
    EXPECT_EQ(contentOf(in("to")), "new");
    EXPECT_EQ(fs::status(in("to")).permissions(), fs::perms(0640));
}

TEST_F(Cp, ANewFileHasThePermissionsOfItsSource) {
    makeFile(in("from"), "x");
    chmod(in("from").c_str(), 0750);
    const mode_t before = umask(022);
    expectSilentSuccess(cp(in("from"), in("to")));
    umask(before);
    EXPECT_EQ(fs::status(in("to")).permissions(), fs::perms(0750));
}

TEST_F(Cp, IntoAFolderItKeepsItsName) {
    makeFile(in("clip.mov"), "x");
    fs::create_directory(in("folder"));
    expectSilentSuccess(cp(in("clip.mov"), in("folder")));
    expectSilentSuccess(cp(in("clip.mov"), in("folder/")));
    EXPECT_EQ(contentOf(in("folder/clip.mov")), "x");
    makeFile("bare", "y");
    expectSilentSuccess(cp("bare", in("folder")));
    EXPECT_EQ(contentOf(in("folder/bare")), "y");
    expectSilentSuccess(cp(in("clip.mov"), "here"));
    EXPECT_EQ(contentOf("here"), "x");
}

TEST_F(Cp, ThroughALinkItIsTheLinkedFileThatIsReplaced) {
    makeFile(in("from"), "new");
    makeFile(in("real"), "old");
    fs::create_symlink("real", in("link"));
    expectSilentSuccess(cp(in("from"), in("link")));
    EXPECT_TRUE(fs::is_symlink(in("link")));
    EXPECT_EQ(contentOf(in("real")), "new");
}

TEST_F(Cp, AFileOntoItselfIsRefusedAndKept) {
    makeFile(in("from"), "x");
    fs::create_hard_link(in("from"), in("twin"));
    for (const char* name : {"from", "./from", "twin"}) {
        const Outcome run = cp(in("from"), in(name));
        EXPECT_EQ(run.exit, 1);
        EXPECT_EQ(run.err, "kv: '" + in("from") + "' and '" + in(name) + "' are the same file\n");
        EXPECT_EQ(contentOf(in("from")), "x");
    }
}

TEST_F(Cp, WhatCanNotBeReadLeavesTheDestinationAsItWas) {
    makeFile(in("to"), "old");
    EXPECT_EQ(cp(in("none"), in("to")).err, "kv: cannot open '" + in("none") + "': No such file or directory\n");
    EXPECT_EQ(cp(scratch_.path(), in("to")).err, "kv: cannot read '" + scratch_.path() + "': Is a directory\n");
    EXPECT_EQ(contentOf(in("to")), "old");
    EXPECT_EQ(namesIn(scratch_.path()), (std::vector<std::string>{"to"}));
}

TEST_F(Cp, AFolderThatIsMissingIsTold) {
    makeFile(in("from"), "x");
    const Outcome run = cp(in("from"), in("none/to"));
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot create '" + in("none/to") + "': No such file or directory\n");
}

TEST_F(Cp, ADeviceIsWrittenAndNotReplaced) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    makeFile(in("from"), "x");
    expectSilentSuccess(cp(in("from"), "/dev/null"));
    const Outcome run = cp(in("from"), "/dev/full");
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot finish '/dev/full': No space left on device\n");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(Cp, WhatWouldBeLostOrCanNotBeSentIsRefused) {
    makeFile(in("from"), "x");
    EXPECT_EQ(cp(in("from"), "MEM://x").err, "kv: cannot write 'MEM://x': a file in memory ends with the command\n");
    EXPECT_EQ(cp(in("from"), "ftp://host.invalid/x").err,
              "kv: cannot write 'ftp://host.invalid/x': only HTTP servers and disks can be written to\n");
    EXPECT_EQ(runKv({"cp", in("from")}).exit, 2);
}

// ---- servers -----------------------------------------------------------------------------------------------------

TEST_F(Cp, DownloadsFromAServer) {
    const Nginx server;
    const std::string content = manyBytes(9 * kMebi + 5);
    server.makeDocument("/clip.mov", content);
    expectSilentSuccess(cp(server.url("/clip.mov?a=b"), scratch_.path()));
    EXPECT_TRUE(contentOf(in("clip.mov")) == content);
}

TEST_F(Cp, DownloadsWhatTellsNoLength) {
    const Nginx server;
    for (const std::size_t size : {std::size_t{1}, 4 * kMebi - 1, 4 * kMebi, 4 * kMebi + 1, 20 * kMebi}) {
        server.makeDocument("/clip", manyBytes(size));
        expectSilentSuccess(cp(server.url("/chunked/clip"), in("to")));
        EXPECT_TRUE(contentOf(in("to")) == manyBytes(size)) << size;
    }
}

TEST_F(Cp, DownloadsAnEmptyFile) {
    const Nginx server;
    server.makeDocument("/empty", "");
    expectSilentSuccess(cp(server.url("/empty"), in("to")));
    EXPECT_EQ(contentOf(in("to")), "");
}

TEST_F(Cp, DownloadsFromAnFtpServer) {
    const FtpServer server;
    const std::string content = manyBytes(5 * kMebi);
    makeFile(server.root() + "/clip", content);
    expectSilentSuccess(cp(server.url("/clip"), in("to")));
    EXPECT_TRUE(contentOf(in("to")) == content);
}

TEST_F(Cp, UploadsExactlyTheBytes) {
    const Nginx server;
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, 5 * kMebi}) {
        makeFile(in("from"), manyBytes(size));
        expectSilentSuccess(cp(in("from"), server.url("/dav/new/clip")));
        EXPECT_EQ(runKv({"verify", in("from"), server.url("/dav/new/clip")}).exit, 0) << size;
    }
}

TEST_F(Cp, AServerThatDoesNotTakeTheFileIsFoundOut) {
    const Nginx server;
    server.makeDocument("/clip", "old");
    makeFile(in("from"), "new");  // of the same length as what stays there
    const Outcome run = cp(in("from"), server.url("/clip"));
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err,
              "kv: cannot write '" + server.url("/clip") + "': the server was sent the file and does not have it\n");
}

TEST_F(Cp, ADownloadThatBreaksLeavesTheDestinationAsItWas) {
    makeFile(in("to"), "old");
    ScriptedServer server([](const Request& request) {
        if (request.method == "HEAD") return Answer{.body = std::string(100, 'x')};
        return Answer{.raw = "HTTP/1.1 206 Partial Content\r\nContent-Length: 100\r\n\r\nonly this"};
    });
    const Outcome run = cp(server.url("/clip"), in("to"));
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err.substr(0, 10), "kv: cannot") << run.err;
    EXPECT_EQ(contentOf(in("to")), "old");
    EXPECT_EQ(namesIn(scratch_.path()), (std::vector<std::string>{"to"}));
}

TEST_F(Cp, ASignalLeavesTheDestinationAsItWasAndSaysSo) {
    makeFile(in("to"), "old");
    for (const int signal : {SIGINT, SIGTERM}) {
        ScriptedServer server([](const Request& request) {
            return request.method == "HEAD" ? Answer{.body = std::string(100, 'x')} : Answer{.stall = true};
        });
        std::signal(signal, SIG_DFL);  // a parent may have had it ignored
        RunningKv kv({"cp", server.url("/clip"), in("to")});
        ASSERT_TRUE(server.waitForRequests(2));
        kv.send(signal);
        const Outcome run = kv.wait();
        EXPECT_EQ(run.signal, signal);
        EXPECT_EQ(run.err, "kv: interrupted; '" + in("to") + "' is as it was\n");
        EXPECT_EQ(contentOf(in("to")), "old");
        EXPECT_EQ(namesIn(scratch_.path()), (std::vector<std::string>{"to"}));
    }
}

#ifdef RAISE_IN_RENAME
TEST_F(Cp, ASignalDuringTheLastStepComesBehindItAndSaysNothingFalse) {
    makeFile(in("from"), "new");
    makeFile(in("to"), "old");
    std::signal(SIGTERM, SIG_DFL);
    setenv("LD_PRELOAD", RAISE_IN_RENAME, 1);
    RunningKv kv({"cp", in("from"), in("to")});
    unsetenv("LD_PRELOAD");
    const Outcome run = kv.wait();
    EXPECT_EQ(run.signal, SIGTERM);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(contentOf(in("to")), "new");
    EXPECT_EQ(namesIn(scratch_.path()), (std::vector<std::string>{"from", "to"}));
}
#endif

TEST_F(Cp, ASignalDuringAnUploadIsSaid) {
    makeFile(in("from"), "x");
    ScriptedServer server([](const Request&) { return Answer{.stall = true}; });
    std::signal(SIGINT, SIG_DFL);
    RunningKv kv({"cp", in("from"), server.url("/clip")});
    ASSERT_TRUE(server.waitForRequests(1));
    kv.send(SIGINT);
    const Outcome run = kv.wait();
    EXPECT_EQ(run.signal, SIGINT);
    EXPECT_EQ(run.err, "kv: interrupted; '" + server.url("/clip") + "' may be there, whole or in part, or not\n");
}

TEST_F(Cp, OnATerminalItShowsHowFarItIs) {
    makeFile(in("from"), manyBytes(9 * kMebi));
    RunningKv kv({"cp", in("from"), in("to")}, RunningKv::Errors::terminal);
    const Outcome run = kv.wait();
    EXPECT_EQ(run.exit, 0);
    EXPECT_NE(run.err.find(" 44 %  4.0 MiB of 9.0 MiB  "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("/s"), std::string::npos) << run.err;
    EXPECT_TRUE(run.err.ends_with("\r\033[K")) << run.err;  // and takes it away
}

}  // namespace
