// kv sys.
#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "support/scratch.h"
#include "tools/run_kv.h"
#include "tools/running_kv.h"

namespace {

using namespace kvtest;

bool isPercentage(const nlohmann::json& value) { return value.is_number_unsigned() && value <= 100; }

void expectWhole(const nlohmann::json& look) {
    EXPECT_TRUE(look["time"].is_string());
    EXPECT_GE(look["processors"]["logical"], look["processors"]["cores"]);
    EXPECT_TRUE(isPercentage(look["load"])) << look;
    EXPECT_TRUE(isPercentage(look["memory"]["system"])) << look;
    EXPECT_TRUE(isPercentage(look["memory"]["process"])) << look;
    EXPECT_GT(look["memory"]["total"], 1u << 26);
    EXPECT_TRUE(look["gpu"].is_null() || isPercentage(look["gpu"])) << look;
    EXPECT_LE(look["volume"]["free"], look["volume"]["total"]);
}

TEST(Sys, ShowsOneLook) {
    const Outcome run = runKv({"sys"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    for (const char* row : {"Computer    ", "Processors  ", "Load        ", "Memory      ", "This run    ",
                            "GPU         ", "Volume      "}) {
        EXPECT_NE(run.out.find(row), std::string::npos) << run.out;
    }
}

TEST(Sys, JsonIsOneObject) {
    const auto look = runKv({"sys", "--json", "/"}).json();
    expectWhole(look);
    char name[128] = "";
    gethostname(name, sizeof name);
    EXPECT_EQ(look["computer"], name);
    EXPECT_EQ(look["volume"]["path"], "/");
}

TEST(Sys, WatchPrintsALineALook) {
    const Outcome run = runKv({"sys", "--watch", "0.05", "--count", "3"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3);
    EXPECT_NE(run.out.find("  load "), std::string::npos) << run.out;
    EXPECT_EQ(runKv({"sys", "-n", "1", "--watch"}).exit, 0);
}

TEST(Sys, WatchedJsonIsOneObjectALine) {
    const Outcome run = runKv({"sys", "--watch", "0.05", "-n", "2", "--json"});
    const std::size_t end = run.out.find('\n');
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(run.out.find('\n', end + 1), run.out.size() - 1);
    expectWhole(nlohmann::json::parse(run.out.substr(0, end)));
    expectWhole(nlohmann::json::parse(run.out.substr(end + 1)));
}

TEST(Sys, WatchEndsWhenItIsInterrupted) {
    RunningKv running({"sys", "--watch", "3600"});
    running.send(SIGINT);
    EXPECT_EQ(running.wait().signal, SIGINT);
}

TEST(Sys, WatchEndsWithItsReader) {
    const BrokenPipe pipe;
    signal(SIGPIPE, SIG_IGN);  // inherited: the failed write has to be noticed
    const Outcome run = runKv({"sys", "--watch", "0.05"}, {.out = pipe.end()});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "");
}

TEST(Sys, PathThatIsNotThereIsTold) {
    expectFailure(runKv({"sys", "/no/such/path"}), "kv: cannot look at '/no/such/path': No such file or directory\n");
}

TEST(Sys, WrongUsage) {
    EXPECT_EQ(runKv({"sys", "--watch", "soon"}).exit, 2);
    EXPECT_EQ(runKv({"sys", "--watch", "0"}).exit, 2);
    EXPECT_EQ(runKv({"sys", "--watch", "-1"}).exit, 2);
    EXPECT_EQ(runKv({"sys", "-n", "3"}).exit, 2);
    EXPECT_EQ(runKv({"sys", "-n", "0", "--watch", "1"}).exit, 2);
    EXPECT_EQ(runKv({"sys", "/", "/tmp"}).exit, 2);
}

}  // namespace
