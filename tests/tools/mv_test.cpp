// kv mv.
#include <filesystem>
#include <string>
#include <sys/stat.h>

#include "servers/nginx.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

TEST(Mv, RenamesOnOneDisk) {
    const ScratchFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{1} << 20}) {
        makeFile(folder / "from", std::string(size, 'x'));
        makeFile(folder / "to", "old");
        struct stat before {
        }, after{};
        stat((folder / "from").c_str(), &before);
        const Outcome run = runKv({"mv", folder / "from", folder / "to"});
        EXPECT_EQ(run.exit, 0);
        EXPECT_EQ(run.err, "");
        stat((folder / "to").c_str(), &after);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(contentOf(folder / "to"), std::string(size, 'x'));
        EXPECT_FALSE(fs::exists(folder / "from"));
    }
}

TEST(Mv, IntoAFolderItKeepsItsName) {
    const ScratchFolder folder;
    makeFile(folder / "clip.mov", "x");
    fs::create_directory(folder / "in");
    EXPECT_EQ(runKv({"mv", folder / "clip.mov", folder / "in"}).exit, 0);
    EXPECT_EQ(contentOf(folder / "in/clip.mov"), "x");
}

TEST(Mv, AFileOntoItselfIsRefusedAndKept) {
    const ScratchFolder folder;
    makeFile(folder / "from", "x");
    EXPECT_EQ(runKv({"mv", folder / "from", folder / "./from"}).exit, 1);
    EXPECT_EQ(contentOf(folder / "from"), "x");
}

TEST(Mv, AMoveThatFailsKeepsTheSource) {
    const ScratchFolder folder;
    makeFile(folder / "from", "x");
    for (const std::string& to : {folder / "none/to", std::string("mem://x")}) {
        const Outcome run = runKv({"mv", folder / "from", to});
        EXPECT_EQ(run.exit, 1);
        EXPECT_NE(run.err, "");
        EXPECT_EQ(contentOf(folder / "from"), "x");
    }
    EXPECT_EQ(runKv({"mv", folder / "none", folder / "to"}).exit, 1);
}

TEST(Mv, ToAServerTheSourceGoesOnceTheServerHasTheFile) {
    const Nginx server;
    const ScratchFolder folder;
    makeFile(folder / "from", everyByte());
    EXPECT_EQ(runKv({"mv", folder / "from", server.url("/clip")}).exit, 1);  // which takes none there
    EXPECT_EQ(contentOf(folder / "from"), everyByte());
    EXPECT_EQ(runKv({"mv", folder / "from", server.url("/dav/clip")}).exit, 0);
    EXPECT_FALSE(fs::exists(folder / "from"));
    EXPECT_EQ(runKv({"cat", server.url("/dav/clip")}).out, everyByte());
}

TEST(Mv, ASourceThatCanNotBeDeletedIsTold) {
    const Nginx server;
    const ScratchFolder folder;
    server.makeDocument("/clip", "x");
    const Outcome run = runKv({"mv", server.url("/clip"), folder / "to"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_TRUE(run.err.starts_with("kv: copied, but cannot delete '" + server.url("/clip") + "': ")) << run.err;
    EXPECT_EQ(contentOf(folder / "to"), "x");
}

}  // namespace
