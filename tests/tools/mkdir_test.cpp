// kv mkdir.
#include <string>
#include <sys/stat.h>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(Mkdir, MakesAFolderThatTheGroupMayWriteTo) {
    umask(022);
    expectSilentSuccess(runKv({"mkdir", "two words"}));
    EXPECT_EQ(modeOf("two words"), 0775u);
}

TEST(Mkdir, TheModeIsTakenAsItStands) {
    umask(077);
    EXPECT_EQ(runKv({"mkdir", "-m", "750", "a"}).exit, 0);
    EXPECT_EQ(runKv({"mkdir", "b", "--mode", "01777"}).exit, 0);
    EXPECT_EQ(modeOf("a"), 0750u);
    EXPECT_EQ(modeOf("b"), 01777u);
}

TEST(Mkdir, AModeThatIsNoneIsWrongUsage) {
    for (const char* mode : {"8", "rwx", "", "0", "10000", "-1", "0x1ff"}) {
        const Outcome run = runKv({"mkdir", "--mode", mode, "folder"});
        EXPECT_EQ(run.exit, 2) << mode;
        EXPECT_TRUE(run.err.starts_with("kv: ")) << run.err;
    }
    EXPECT_FALSE(std::filesystem::exists("folder"));
}

TEST(Mkdir, OneThatIsThereIsTold) {
    std::filesystem::create_directory("folder");
    const Outcome run = runKv({"mkdir", "folder"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot make folder 'folder': File exists\n");
}

TEST(Mkdir, OnlyTheLastComponentIsMade) {
    const Outcome run = runKv({"mkdir", "none/folder"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot make folder 'none/folder': No such file or directory\n");
}

}  // namespace
