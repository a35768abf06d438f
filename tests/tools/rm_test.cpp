// kv rm.
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(Rm, DeletesFiles) {
    for (const char* name : {"a", "two words", "[a,b]", "ls"}) makeFile(name);
    expectSilentSuccess(runKv({"rm", "a", "two words", "[a,b]", "ls"}));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(Rm, AFolderIsRefusedAndStays) {
    std::filesystem::create_directory("folder");
    const Outcome run = runKv({"rm", "folder"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot delete 'folder': it is a folder, and kv rm deletes files only\n");
    EXPECT_TRUE(std::filesystem::exists("folder"));
}

TEST(Rm, OfALinkToAFolderTheLinkIsDeleted) {
    std::filesystem::create_directory("folder");
    std::filesystem::create_directory_symlink("folder", "link");
    EXPECT_EQ(runKv({"rm", "link"}).exit, 0);
    EXPECT_FALSE(std::filesystem::is_symlink("link"));
    EXPECT_TRUE(std::filesystem::exists("folder"));
}

TEST(Rm, MissingOnesAreToldAndTheOthersDeleted) {
    makeFile("a");
    makeFile("b");
    const Outcome run = runKv({"rm", "a", "none", "b"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot delete 'none': No such file or directory\n");
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(Rm, AUrlIsRefused) {
    const Outcome run = runKv({"rm", "http://host.invalid/clip"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_TRUE(run.err.starts_with("kv: cannot delete 'http://host.invalid/clip': ")) << run.err;
}

}  // namespace
