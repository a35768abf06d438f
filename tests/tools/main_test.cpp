// What all commands of kv share: help, version, usage, and whose messages are seen.
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

constexpr const char* kCommands[] = {"cat", "put", "stat", "ls", "rm", "mkdir", "split"};

TEST(Main, HelpListsEveryCommand) {
    for (const char* option : {"--help", "-h"}) {
        const Outcome run = runKv({option});
        EXPECT_EQ(run.exit, 0);
        EXPECT_EQ(run.err, "");
        for (const char* command : kCommands) {
            EXPECT_NE(run.out.find("\n  " + std::string(command) + " "), std::string::npos) << command;
        }
        EXPECT_NE(run.out.find("Example: kv "), std::string::npos);
    }
}

TEST(Main, EveryCommandHasHelpWithAnExample) {
    for (const char* command : kCommands) {
        const Outcome run = runKv({command, "--help"});
        EXPECT_EQ(run.exit, 0) << command;
        EXPECT_EQ(run.err, "") << command;
        EXPECT_NE(run.out.find("Usage: kv " + std::string(command)), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("Example: kv " + std::string(command)), std::string::npos) << run.out;
    }
}

TEST(Main, VersionIsThatOfTheLibrary) {
    const Outcome run = runKv({"--version"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "kv " KV_VERSION "\n");
    EXPECT_EQ(run.err, "");
}

TEST(Main, WrongUsageIsToldInOneLineAndEndsWithTwo) {
    const std::vector<std::vector<std::string>> wrong{{},
                                                      {"none"},
                                                      {"cat"},
                                                      {"put"},
                                                      {"stat"},
                                                      {"ls"},
                                                      {"rm"},
                                                      {"mkdir"},
                                                      {"split"},
                                                      {"cat", "a", "b"},
                                                      {"ls", "--none", "."},
                                                      {"cat", "a", "--json"},
                                                      {"--json", "ls"}};
    for (const auto& arguments : wrong) {
        const Outcome run = runKv(arguments);
        EXPECT_EQ(run.exit, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.err.starts_with("kv: ")) << run.err;
        EXPECT_NE(run.err.find("--help)\n"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    }
}

TEST(Main, WrongUsageNamesTheCommandWhoseHelpTellsMore) {
    EXPECT_NE(runKv({"mkdir"}).err.find("(see kv mkdir --help)"), std::string::npos);
    EXPECT_NE(runKv({}).err.find("(see kv --help)"), std::string::npos);
}

TEST(Main, WrongUsageNamesWhatIsWrong) {
    EXPECT_EQ(runKv({}).err, "kv: no command given (see kv --help)\n");
    EXPECT_EQ(runKv({"none"}).err, "kv: 'none' is no command (see kv --help)\n");
    EXPECT_EQ(runKv({"cat", "a", "[b]"}).err, "kv: '[b]' was not expected (see kv cat --help)\n");
    EXPECT_EQ(runKv({"ls", "--none", "."}).err, "kv: '--none' was not expected (see kv ls --help)\n");
}

TEST(Main, TheMessagesOfTheLibraryAreNotSeen) {
    const Outcome run = runKv({"cat", "none"});
    EXPECT_EQ(run.err.find("kvOSCreateFile"), std::string::npos) << run.err;
    makeFile("clip", "x");
    EXPECT_EQ(runKv({"rm", "none"}).err.find("kvOSDeleteFile"), std::string::npos);
}

TEST(Main, TheMessagesOfTheLibraryAreSeenWhenAskedFor) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"-v", "cat", "none"},
                                                                       {"cat", "-v", "none"},
                                                                       {"cat", "none", "--verbose"},
                                                                       {"--verbose", "cat", "none"}}) {
        const Outcome run = runKv(arguments);
        EXPECT_EQ(run.exit, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("kvOSCreateFile(none,0x80000000,0x00000003,0x00000003,0x00000000)-FAIL=0x00000002(2) "),
                  std::string::npos)
            << run.err;
        EXPECT_NE(run.err.find("kv: cannot open 'none': No such file or directory\n"), std::string::npos) << run.err;
    }
}

TEST(Main, MessagesNeverMixWithData) {
    makeFile("clip", "data");
    const Outcome run = runKv({"-v", "stat", "--json", "none", "clip", "also none"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json().size(), 1u);
    EXPECT_NE(run.err, "");
}

TEST(Main, NothingIsSaidOnStandardErrorWhenAllWentWell) {
    makeFile("clip", "data");
    for (const char* command : {"cat", "stat", "ls", "split"})
        EXPECT_EQ(runKv({"-v", command, "clip"}).err, "") << command;
}

TEST(Main, AFullDiskBehindATableIsTold) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (full < 0) GTEST_SKIP() << "no /dev/full here";
    makeFile("clip");
    for (const char* command : {"stat", "ls", "split"}) {
        const Outcome run = runKv({command, "clip"}, {.out = full});
        EXPECT_EQ(run.exit, 1) << command;
        EXPECT_EQ(run.err, "kv: cannot write 'standard output': No space left on device\n");
    }
    close(full);
}

}  // namespace
