// kv cat.
#include <csignal>
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(Cat, WritesAFileByteForByte) {
    const ScratchFolder folder;
    makeFile(folder / "clip", everyByte());
    const Outcome run = runKv({"cat", folder / "clip"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, everyByte());
    EXPECT_EQ(run.err, "");
}

TEST(Cat, AFileLongerThanABlockComesWhole) {
    const ScratchFolder folder;
    std::string content;
    while (content.size() < (std::size_t{5} << 19) + 7) content += everyByte() + std::to_string(content.size());
    makeFile(folder / "clip", content);
    EXPECT_TRUE(runKv({"cat", folder / "clip"}).out == content);
}

TEST(Cat, AFileOfWholeBlocksEndsWhereItEnds) {
    const ScratchFolder folder;
    const std::string content(std::size_t{1} << 20, 'x');
    makeFile(folder / "clip", content);
    const Outcome run = runKv({"cat", folder / "clip"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_TRUE(run.out == content);
}

TEST(Cat, AnEmptyFileIsNoFailure) {
    const ScratchFolder folder;
    makeFile(folder / "empty");
    expectSilentSuccess(runKv({"cat", folder / "empty"}));
}

TEST(Cat, AFileInMemoryIsEmpty) { expectSilentSuccess(runKv({"cat", "mem://clip"})); }

TEST(Cat, NamesWithBlanksAndLettersOfAnyLanguageWork) {
    const ScratchFolder folder;
    for (const char* name :
         {"two words.txt", "gr\u00FC\u00DFe \u65E5\u672C.txt", "[a,b]", "ls", "-", "it's \"so\" $HOME"}) {
        makeFile(folder / name, name);
        EXPECT_EQ(runKv({"cat", folder / name}).out, name);
    }
}

TEST(Cat, ANameThatLooksLikeAnythingElseIsANameBehindTwoDashes) {
    for (const char* name : {"-v", "--help", "[a,b]", "stat"}) {
        makeFile(name, name);
        EXPECT_EQ(runKv({"cat", "--", name}).out, name);
    }
    EXPECT_EQ(runKv({"cat", "stat"}).out, "stat");
    EXPECT_EQ(runKv({"cat", "[a,b]"}).out, "[a,b]");
}

TEST(Cat, AMissingFileIsToldInOneLine) {
    const ScratchFolder folder;
    expectFailure(runKv({"cat", folder / "none"}),
                  "kv: cannot open '" + (folder / "none") + "': No such file or directory\n");
}

TEST(Cat, AnEmptyNameIsRefused) {
    const Outcome run = runKv({"cat", ""});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot open '': refused\n");
}

TEST(Cat, APathTooLongIsToldAsSuch) {
    const std::string path = "/" + std::string(4096, 'x');
    EXPECT_EQ(runKv({"cat", path}).err, "kv: cannot open '" + path + "': File name too long\n");
}

TEST(Cat, AReadFaultEndsWithAMessageAndAnExitCode) {
    const ScratchFolder folder;
    expectFailure(runKv({"cat", folder.path()}), "kv: cannot read '" + folder.path() + "': Is a directory\n");
}

TEST(Cat, ALocatorThatTheLibraryRefusesIsToldPlainly) {
    const Outcome run = runKv({"cat", "ftp://host.invalid/clip"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("kv: cannot open 'ftp://host.invalid/clip': ")) << run.err;
}

TEST(Cat, ALineEndInANameDoesNotBreakTheLineOfAMessage) {
    EXPECT_EQ(runKv({"cat", "a\nb\033c"}).err, "kv: cannot open 'a\\x0Ab\\x1Bc': No such file or directory\n");
}

TEST(Cat, AFullDiskBehindStandardOutputIsTold) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (full < 0) GTEST_SKIP() << "no /dev/full here";
    makeFile("clip", "data");
    const Outcome run = runKv({"cat", "clip"}, {.out = full});
    close(full);
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write 'standard output': No space left on device\n");
}

TEST(Cat, AReaderThatGoesAwayEndsItQuietly) {
    std::signal(SIGPIPE, SIG_DFL);  // a parent may have had it ignored
    makeFile("clip", everyByte());
    const BrokenPipe pipe;
    const Outcome run = runKv({"cat", "clip"}, {.out = pipe.end()});
    EXPECT_EQ(run.signal, SIGPIPE);
    EXPECT_EQ(run.err, "");
}

TEST(Cat, AReaderThatGoesAwayEndsItQuietlyWithoutTheSignal) {
    makeFile("clip", everyByte());
    const BrokenPipe pipe;
    std::signal(SIGPIPE, SIG_IGN);
    const Outcome run = runKv({"cat", "clip"}, {.out = pipe.end()});
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "");
}

}  // namespace
